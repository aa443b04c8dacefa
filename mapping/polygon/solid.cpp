/// \file
/// Polygons filled with one colour at one level, with anti-aliased edges.
#include "mapping/polygon/antialiased_walk.h"

namespace zepbmp {
namespace {

/// The bytes of a pair, in memory order, of 0x00YYUUVV.
uint32_t yuy2_pair(uint32_t color) {
    const uint32_t y = color >> 16 & 0xff, u = color >> 8 & 0xff, v = color & 0xff;
    return y | u << 8 | y << 16 | v << 24;
}

/// How a destination's pixels are written.
struct Painter {
    CoverKernels::Paint* paint;  ///< null: this format is not drawn
    uint32_t value;              ///< four bytes, repeated
    int pixel_bytes;
};

Painter painter_of(const Bitmap& picture, uint32_t color) {
    switch (picture.format) {
        case BMP_FMT_YUY2: return {cover_kernels.paint_yuy2, yuy2_pair(color), 2};
        case BMP_FMT_RGBQ: return {cover_kernels.paint_rgbq, color, 4};
        default: return {};
    }
}

void draw_line(uint8_t* line, const Painter& painter, const Plane& plane, int32_t level, const AntialiasedWalk& walk) {
    const uint16_t* const coverage = walk.coverage().coverage();
    for (const CoverSegment& segment : walk.coverage()) {
        const int32_t count = segment.pixels.end - segment.pixels.first;
        uint8_t* const at = line + ptrdiff_t{segment.pixels.first} * painter.pixel_bytes;
        if (!segment.full) {
            painter.paint(at, painter.value, coverage + segment.pixels.first, count, level);
            plane.blend(walk.line(), segment.pixels, coverage, level);
        } else if (level < kWeightFull) {
            cover_kernels.fade_bytes(at, painter.value, count * painter.pixel_bytes, level);
            plane.fade(walk.line(), segment.pixels, level);
        } else {
            line_kernels.fill[kStoreCached](at, static_cast<size_t>(count) * static_cast<size_t>(painter.pixel_bytes),
                                            painter.value);
            plane.mark(walk.line(), segment.pixels);
        }
    }
}

}  // namespace

void draw_solid(const Target& target, uint32_t color, int32_t level, const Polygon& polygon) {
    const Painter painter = painter_of(target.picture, color);
    if (!painter.paint || target.picture.width <= 0 || level <= 0 || level > kWeightFull ||
        !is_finite(polygon.vertices, polygon.count))
        return;
    Arena arena;
    if (!arena.reserve(AntialiasedWalk::bytes(target, polygon)))
        return;
    AntialiasedWalk walk(arena, target, polygon);
    const Plane plane(target.plane);
    while (walk.next())
        draw_line(line_address(target.picture, walk.line()), painter, plane, level, walk);
}

}  // namespace zepbmp
