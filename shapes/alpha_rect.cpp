/// \file
/// bmp_alpha_rect: rectangles with edges at 1/64 pixel, and the choice of the path with elliptical corners.
#include "shapes/alpha_rect.h"

#include "core/arithmetic.h"
#include "core/export.h"
#include "core/float_scope.h"
#include "core/kernel_tables.h"

namespace zepbmp {

Box clipped(const Box& box, const Bitmap& bitmap) {
    const Limits limits(bitmap);
    const auto at_most = [](int32_t value, int64_t limit) {
        return static_cast<int32_t>(value < limit ? value : limit);
    };
    return {box.x0 < 0 ? 0 : box.x0, box.y0 < 0 ? 0 : box.y0, at_most(box.x1, limits.width),
            at_most(box.y1, limits.height)};
}

namespace {

/// One direction of a clipped box, in pixels. Partly covered pixels: [touched_begin, whole_begin) at the low end, at
/// most one, and [whole_end, touched_end) at the high end.
struct Extent {
    int32_t touched_begin, whole_begin, whole_end, touched_end;
    int32_t low_coverage, high_coverage;  ///< of those pixels, in 64ths

    Extent(int32_t begin, int32_t end)
        : touched_begin(begin >> kSubpixelBits),
          whole_begin(wrapping_add(begin, kSubpixels - 1) >> kSubpixelBits),
          whole_end(end >> kSubpixelBits),
          touched_end(wrapping_add(end, kSubpixels - 1) >> kSubpixelBits),
          low_coverage(kSubpixels - (begin & (kSubpixels - 1))),
          high_coverage(end & (kSubpixels - 1)) {}

    bool empty() const { return touched_end <= touched_begin; }
};

using RunWriter = void (*)(uint16_t* weights, int32_t count, int32_t v);

void set_run(uint16_t* weights, int32_t count, int32_t v) {
    line_kernels.fill[kStoreCached](reinterpret_cast<uint8_t*>(weights), static_cast<size_t>(count) * sizeof *weights,
                                    static_cast<uint32_t>(v) * 0x10001u);
}

/// A line with vertical coverage `coverage`, in 64ths.
void draw_line(uint16_t* line, const Extent& x, int32_t coverage, RunWriter edge, RunWriter interior) {
    if (x.touched_begin < x.whole_begin)
        edge(line + x.touched_begin, 1, x.low_coverage * coverage);
    if (x.whole_begin < x.whole_end)
        interior(line + x.whole_begin, x.whole_end - x.whole_begin, kSubpixels * coverage);
    if (x.whole_end < x.touched_end)
        edge(line + x.whole_end, 1, x.high_coverage * coverage);
}

/// `edge` writes partly covered pixels and lines, `interior` the whole pixels of whole lines.
void draw_box(const Bitmap& bitmap, const Box& box, uint32_t flags, RunWriter edge, RunWriter interior) {
    const Extent x(box.x0, box.x1), y(box.y0, box.y1);
    if (x.empty() || y.empty())
        return;
    const BoxLines lines(y.touched_begin, flags);
    const auto line = [&](int32_t at) { return reinterpret_cast<uint16_t*>(line_address(bitmap, at)); };

    int32_t at = lines.first;
    if (at < y.whole_begin) {
        draw_line(line(at), x, y.low_coverage, edge, edge);
        at += lines.step;
    }
    for (; at < y.whole_end; at += lines.step)
        draw_line(line(at), x, kSubpixels, edge, interior);
    if (at < y.touched_end)
        draw_line(line(at), x, y.high_coverage, edge, edge);
}

constexpr uint32_t kModeMask = 0x70;

bool has_elliptical_corners(uint32_t flags) {
    return (flags & BMP_SHAPE_ELLIPTIC) && (flags & (BMP_SHAPE_ELLIPTIC_PLAIN | BMP_SHAPE_ELLIPTIC_EDGES));
}

// Takes the floats as they came: widening them is floating point already.
__attribute__((noinline)) void draw_rect(const Bitmap& bitmap, float x, float y, float width, float height,
                                         float radius_x, float radius_y, uint32_t flags) {
    const Box box = {to_subpixels(x), to_subpixels(y), to_subpixels(double{x} + width),
                     to_subpixels(double{y} + height)};
    if (has_elliptical_corners(flags)) {
        draw_elliptic(bitmap, box, fitted_radii(width, height, radius_x, radius_y), flags);
        return;
    }
    const uint32_t mode = flags & kModeMask;
    if (mode == BMP_SHAPE_ADD)
        draw_box(bitmap, clipped(box, bitmap), flags, shape_kernels.add_run, set_run);
    else if (mode == BMP_SHAPE_MAX)
        draw_box(bitmap, clipped(box, bitmap), flags, shape_kernels.max_run, set_run);
}

}  // namespace

int32_t to_subpixels(double pixels) { return trunc_to_int32(pixels * kSubpixels); }

void draw_box_by_maximum(const Bitmap& bitmap, const Box& box, uint32_t flags) {
    draw_box(bitmap, box, flags, shape_kernels.max_run, shape_kernels.max_run);
}

}  // namespace zepbmp

using namespace zepbmp;

BMP_EXPORT void BMP_CALL bmp_alpha_rect(Bitmap* bitmap, float x, float y, float width, float height, float radius_x,
                                        float radius_y, uint32_t flags) {
    const FloatScope scope;
    draw_rect(*bitmap, x, y, width, height, radius_x, radius_y, flags);
}
