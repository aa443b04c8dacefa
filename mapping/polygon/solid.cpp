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

/// Lines are covered in batches before they are drawn: meanwhile their memory arrives, and the coverage, written bit by
/// bit, reaches the cache, where wide loads find it whole.
constexpr int kBatchLines = 8;
static_assert(kBatchLines <= AntialiasedWalk::kMostKept);

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
    const Bitmap& picture = target.picture;
    const Bounds bounds(polygon);
    const auto pixel = [](float at, int32_t size) { return held(hold_to_int32(double{at}), 0, size - 1); };
    const int32_t left = pixel(bounds.left, picture.width), right = pixel(bounds.right, picture.width);
    const SelectedLines selected(polygon.flags);
    int32_t top = pixel(bounds.top, picture.height);
    top += selected(top) ? 0 : 1;
    const int32_t lines = (pixel(bounds.bottom, picture.height) - top) / selected.step() + 1;
    const int64_t bytes = int64_t{right + 1 - left} * pixel_bytes;
    if (bytes * lines > kMostBytes)
        return false;
    line_kernels.prefetch(line_address(picture, top) + ptrdiff_t{left} * pixel_bytes, static_cast<size_t>(bytes),
                          ptrdiff_t{picture.pitch} * selected.step(), lines);
    return true;
}

}  // namespace

void draw_solid(const Target& target, uint32_t color, int32_t level, const Polygon& polygon) {
    const Painter painter = painter_of(target.picture, color);
    if (!painter.paint || target.picture.width <= 0 || target.picture.height <= 0 || level <= 0 ||
        level > kWeightFull || !is_finite(polygon.vertices, polygon.count))
        return;
    const bool prefetched = prefetch_all(target, painter.pixel_bytes, polygon);
    const LineCoverer::Extent extent = AntialiasedWalk::extent_of(target, polygon);
    Arena arena;
    if (!arena.reserve(AntialiasedWalk::bytes(extent, kBatchLines)))
        return;
    AntialiasedWalk walk(arena, target, polygon, extent, kBatchLines);
    const auto bytes = static_cast<size_t>(area_of(target, polygon) * painter.pixel_bytes);
    const StoreKind store = level == kWeightFull ? store_kind(bytes) : kStoreCached;
    const SolidDrawer drawer(target, painter, level, store);
    int ready;
    do {
        for (ready = 0; ready < kBatchLines && walk.next(); ++ready) {
            if (!prefetched)
                drawer.prefetch(walk.coverage());
        }
        for (int back = ready - 1; back >= 0; --back)
            drawer.draw(walk.coverage(back));
    } while (ready == kBatchLines);
    if (store == kStoreStreamed)
        line_kernels.end_stream();
}

}  // namespace zepbmp
