#include "simd/areas_avx512.h"
//
#include "mapping/rect/area_inl.h"

namespace zepbmp {

extern constexpr AreaKernels kAreaAvx512 = area_set<Areas512>();

}  // namespace zepbmp
