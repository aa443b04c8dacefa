/// \file
/// bmp_map_rect: which calls draw.
#include "core/export.h"
#include "core/float_scope.h"
#include "mapping/rect/geometry.h"
#include "mapping/rect/lines.h"

namespace zepbmp {
namespace {

bool is_drawn(const Bitmap& dest, bool has_weights) {
    return has_weights ? dest.format == BMP_FMT_YUY2 || dest.format == BMP_FMT_RGBQ : dest.format == BMP_FMT_RGB8;
}

__attribute__((noinline)) void map_rect(const Bitmap& dest, const Bitmap* weights, const FloatRect& drawn,
                                        const Bitmap& source, const FloatRect& sampled, uint32_t flags) {
    RectMapping mapping;
    if (map_to_units(weights ? *weights : dest, drawn, source, sampled, flags, &mapping))
        draw_rect_lines(dest, weights, mapping, flags);
}

}  // namespace
}  // namespace zepbmp

using namespace zepbmp;

BMP_EXPORT void BMP_CALL bmp_map_rect(Bitmap* dest, Bitmap* weight_map, float dx0, float dy0, float dx1, float dy1,
                                      const Bitmap* src, const int32_t* src_size, float sx0, float sy0, float sx1,
                                      float sy1, uint32_t flags) {
    if (src_size || !is_drawn(*dest, weight_map != nullptr))
        return;
    const FloatScope scope;
    map_rect(*dest, weight_map, {dx0, dy0, dx1, dy1}, *src, {sx0, sy0, sx1, sy1}, flags);
}
