#include "simd/lanes_mmx.h"
//
#include "compose/mix_inl.h"

namespace zepbmp {

extern constexpr ComposeSlots kComposeMmxExt = compose_set<Lanes64Ext, Whole>(color_rgbq);

}  // namespace zepbmp
