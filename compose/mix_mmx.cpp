#include "simd/lanes_mmx.h"
//
#include "compose/mix_inl.h"

namespace zepbmp {

extern constexpr ComposeSlots kComposeMmx = compose_set<Lanes64, Whole>(color_rgbq);

}  // namespace zepbmp
