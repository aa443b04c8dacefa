#include "simd/lanes_avx2.h"
//
#include "compose/mix_inl.h"

namespace zepbmp {

extern constexpr ComposeSlots kComposeAvx2 = compose_set<Lanes256, Whole>(color_rgbq_exact<Lanes256>);

}  // namespace zepbmp
