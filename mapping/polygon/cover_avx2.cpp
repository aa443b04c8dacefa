#include "simd/lanes_avx2.h"
//
#include "mapping/polygon/cover_inl.h"

namespace zepbmp {

extern constexpr CoverKernels kCoverAvx2 = cover_set<Lanes256, Doubles256>();

}  // namespace zepbmp
