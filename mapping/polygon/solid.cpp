/// \file
/// Polygons filled with one colour at one level, with anti-aliased edges.
#include "core/kernel_tables.h"
#include "mapping/polygon/antialiased_walk.h"

namespace zepbmp {
namespace {

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

/// Lines are covered in batches before they are drawn: meanwhile their memory arrives, and the coverage, written pixel
/// by pixel, reaches the cache, where wide loads find it whole.
constexpr int kBatchLines = 8;

/// Draws covered lines.
class SolidDrawer {
public:
    SolidDrawer(const Target& target, const Painter& painter, int32_t level, StoreKind store)
        : picture_(target.picture),
          plane_(target.plane),
          painter_(painter),
          level_(level),
          fill_(line_kernels.fill[store]),
          streams_(store == kStoreStreamed) {}

    /// Asks for the memory that draw() will need.
    void prefetch(const CoveredLine& covered) const {
        const uint8_t* const pixels = line_address(picture_, covered.line());
        PixelRange run = {0, 0};
        const auto ask = [&] {
            if (!run.empty())
                line_kernels.prefetch(pixels + bytes_to(run.first), static_cast<size_t>(bytes_to(run.end - run.first)),
                                      0, 1);
        };
        for (const CoverSegment& segment : covered) {
            if (segment.full && streams_)
                continue;
            if (segment.pixels.first != run.end) {
                ask();
                run.first = segment.pixels.first;
            }
            run.end = segment.pixels.end;
        }
        ask();
    }

    void draw(const CoveredLine& covered) const {
        uint8_t* const pixels = line_address(picture_, covered.line());
        for (const CoverSegment& segment : covered) {
            const auto [first, end] = segment.pixels;
            uint8_t* const at = pixels + bytes_to(first);
            const ptrdiff_t bytes = bytes_to(end) - bytes_to(first);
            if (!segment.full) {
                painter_.paint(at, painter_.value, covered.coverage() + first, end - first, level_);
                plane_.blend(covered.line(), segment.pixels, covered.coverage(), level_);
            } else if (level_ < kWeightFull) {
                cover_kernels.fade_bytes(at, painter_.value, static_cast<int32_t>(bytes), level_);
                plane_.fade(covered.line(), segment.pixels, level_);
            } else {
                fill_(at, static_cast<size_t>(bytes), painter_.value);
                plane_.mark(covered.line(), segment.pixels);
            }
        }
    }

private:
    ptrdiff_t bytes_to(int32_t pixel) const { return ptrdiff_t{pixel} * painter_.pixel_bytes; }

    const Bitmap& picture_;
    Plane plane_;
    Painter painter_;
    int32_t level_;
    void (*fill_)(uint8_t* dst, size_t bytes, uint32_t value);
    bool streams_;  // full segments
};

/// At most so many pixels are drawn, but where the polygon crosses itself.
double area_of(const Target& target, const Polygon& polygon) {
    double twice = 0;
    const BmpVertex* before = &polygon.vertices[polygon.count - 1];
    for (int32_t i = 0; i < polygon.count; before = &polygon.vertices[i++])
        twice += double{before->x} * polygon.vertices[i].y - double{polygon.vertices[i].x} * before->y;
    const double area = (twice < 0 ? -twice : twice) / 2;
    const double picture = double(target.picture.width) * double(target.picture.height);
    return area < picture ? area : picture > 0 ? picture : 0;
}

/// What a small polygon may touch is asked for before anything is computed. False: it is too large for that.
bool prefetch_all(const Target& target, int pixel_bytes, const Polygon& polygon) {
    constexpr int64_t kMostBytes = 24 << 10;  // half a first-level cache
    const Bounds bounds(polygon);
    const auto held = [](float at, int32_t end) {
        const int32_t whole = hold_to_int32(double{at});
        return whole < 0 ? 0 : whole < end ? whole : end;
    };
    const int32_t width = target.picture.width, height = target.picture.height;
    const int32_t first = held(bounds.left, width - 1), last = held(bounds.right, width - 1),
                  top = held(bounds.top, height - 1), bottom = held(bounds.bottom, height - 1);
    const int64_t bytes = int64_t{last + 1 - first} * pixel_bytes;
    if (bytes * (bottom + 1 - top) > kMostBytes)
        return false;
    line_kernels.prefetch(line_address(target.picture, top) + ptrdiff_t{first} * pixel_bytes,
                          static_cast<size_t>(bytes), target.picture.pitch, bottom + 1 - top);
    return true;
}

}  // namespace

void draw_solid(const Target& target, uint32_t color, int32_t level, const Polygon& polygon) {
    const Painter painter = painter_of(target.picture, color);
    if (!painter.paint || target.picture.width <= 0 || target.picture.height <= 0 || level <= 0 ||
        level > kWeightFull || !is_finite(polygon.vertices, polygon.count))
        return;
    const bool prefetched = prefetch_all(target, painter.pixel_bytes, polygon);
    Arena arena;
    if (!arena.reserve(AntialiasedWalk::bytes(target, polygon, kBatchLines)))
        return;
    AntialiasedWalk walk(arena, target, polygon, kBatchLines);
    const auto bytes = static_cast<size_t>(area_of(target, polygon) * painter.pixel_bytes);
    const StoreKind store = level == kWeightFull ? store_kind(bytes) : kStoreCached;
    const SolidDrawer drawer(target, painter, level, store);
    for (bool more = true; more;) {
        int ready = 0;
        while (ready < kBatchLines && (more = walk.next())) {
            if (!prefetched)
                drawer.prefetch(walk.coverage());
            ++ready;
        }
        while (ready > 0)
            drawer.draw(walk.coverage(--ready));
    }
    if (store == kStoreStreamed)
        line_kernels.end_stream();
}

}  // namespace zepbmp
