#include "simd/lanes_avx512.h"
//
#include "core/line_inl.h"

namespace zepbmp {

extern constexpr LineKernels kLineAvx512 = line_set<Lanes512>();

}  // namespace zepbmp
