#include "core/raster.h"

namespace zepbmp {

void draw_walk(uint8_t* first, const LineWalk& walk, RasterOp op) {
    ptrdiff_t at = 0;
    int32_t error = walk.major / 2;
    for (int32_t i = 0; i < walk.major; ++i) {
        first[at] = static_cast<uint8_t>((first[at] & op.keep) ^ op.flip);
        error -= walk.minor;
        const bool turns = error <= 0;
        error += turns ? walk.major : 0;
        at += walk.major_step + (turns ? walk.minor_step : 0);
    }
}

}  // namespace zepbmp
