#include "simd/lanes_sse2.h"
//
#include "compose/mix_inl.h"

namespace zepbmp {

extern constexpr ComposeSlots kComposeSse2 = compose_set<Lanes128, WholeAligned>(color_rgbq);

}  // namespace zepbmp
