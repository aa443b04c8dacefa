#include "simd/lanes_mmx.h"
//
#include "core/line_inl.h"

namespace zepbmp {

extern constexpr LineKernels kLineMmxExt = line_set<Lanes64Ext>();

}  // namespace zepbmp
