#include "simd/lanes_avx2.h"
//
#include "core/line_inl.h"

namespace zepbmp {

extern constexpr LineKernels kLineAvx2 = line_set<Lanes256>();

}  // namespace zepbmp
