#include "simd/lanes_avx512.h"
//
#include "mapping/polygon/cover_inl.h"

namespace zepbmp {

extern constexpr CoverKernels kCoverAvx512 = cover_set<Lanes512, Doubles512>();

}  // namespace zepbmp
