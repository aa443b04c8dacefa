#include "simd/lanes_sse2.h"
//
#include "core/line_inl.h"

namespace zepbmp {

extern constexpr LineKernels kLineSse2 = line_set<Lanes128>();

}  // namespace zepbmp
