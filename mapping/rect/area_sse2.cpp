#include "simd/areas_sse2.h"
//
#include "mapping/rect/area_inl.h"

namespace zepbmp {

extern constexpr AreaKernels kAreaSse2 = area_set<Areas128>();

}  // namespace zepbmp
