#include "simd/areas_avx2.h"
//
#include "mapping/rect/area_inl.h"

namespace zepbmp {

extern constexpr AreaKernels kAreaAvx2 = area_set<Areas256>();

}  // namespace zepbmp
