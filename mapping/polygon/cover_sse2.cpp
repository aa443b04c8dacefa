#include "simd/lanes_sse2.h"
//
#include "mapping/polygon/cover_inl.h"

namespace zepbmp {

extern constexpr CoverKernels kCoverSse2 = cover_set<Lanes128, Doubles128>();

}  // namespace zepbmp
