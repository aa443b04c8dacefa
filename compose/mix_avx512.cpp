#include "simd/lanes_avx512.h"
//
#include "compose/mix_inl.h"

namespace zepbmp {

extern constexpr ComposeSlots kComposeAvx512 = compose_set<Lanes512, Whole>(color_rgbq_exact<Lanes512>);

}  // namespace zepbmp
