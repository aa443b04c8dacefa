#include "simd/lanes_mmx.h"
//
#include "core/line_inl.h"

namespace zepbmp {

extern constexpr LineKernels kLineMmx = line_set<Lanes64>();

}  // namespace zepbmp
