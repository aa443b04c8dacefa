/// \file
/// bmp_alpha_circle: line by line, where the disc's edges cross, and which kernel fills what lies between.
#include <cmath>

#include "core/arithmetic.h"
#include "core/bitmap.h"
#include "core/export.h"
#include "core/float_scope.h"
#include "core/kernel_tables.h"
#include "shapes/hard_edge.h"
#include "shapes/ramp.h"

namespace zepbmp {
namespace {

/// Just below 1, so that truncation rounds up all but whole numbers.
constexpr double kAlmostOne = 0.99999;

/// [begin, end) in columns; begin may be negative.
struct Span {
    int32_t begin = 0, end = 0;
};

/// The chord at vertical distance `e`; ends are cut at the bitmap's width. Empty where the chord is.
class Chord {
public:
    Chord(double cx, double radius, int32_t width) : cx_(cx), radius_(radius), width_(width) {}

    bool misses(double e) const { return e >= radius_; }

    /// Every column that the chord touches.
    Span touched(double e) const {
        if (misses(e))
            return {};
        const double half = half_width(e);
        return {cut(cx_ - half), cut(cx_ + half + kAlmostOne)};
    }

    /// Every column that lies within it.
    Span covered(double e) const {
        if (misses(e))
            return {};
        const double half = half_width(e);
        return {cut(cx_ - half + kAlmostOne), cut(cx_ + half)};
    }

private:
    double half_width(double e) const { return std::sqrt(radius_ * radius_ - e * e); }
    int32_t cut(double x) const {
        const int32_t column = trunc_to_int32(x);
        return column < width_ ? column : width_;
    }

    double cx_, radius_;
    int32_t width_;
};

/// Distances from the centre of a line's two edges: the one nearer to it and the one farther. On the line that holds
/// the centre the nearer one may be negative.
struct LineEdges {
    double nearer, farther;
};

/// Where the lines lie: line y covers y * aspect .. (y + 1) * aspect.
class Lines {
public:
    Lines(double cy, double aspect, int32_t height) : cy_(cy), aspect_(aspect) {
        const int32_t split = trunc_to_int32(cy / aspect);
        split_ = split < height ? split : height;
    }

    double from_centre(int32_t y) const { return y * aspect_ - cy_; }

    LineEdges edges(int32_t y) const {
        const double top = y * aspect_;
        if (y >= split_)
            return {top - cy_, top - cy_ + aspect_};
        return {cy_ - (top + aspect_), cy_ - top};
    }

    double aspect() const { return aspect_; }

private:
    double cy_, aspect_;
    int32_t split_;
};

/// Writes a line from left to right. A range that begins before the current position begins there; one that has
/// nothing left is skipped.
class LineWriter {
public:
    LineWriter(uint16_t* line, StoreKind store) : line_(line), fill_(line_kernels.fill[store]) {}

    void fill(int32_t end, uint32_t weight) {
        if (end <= at_)
            return;
        fill_(reinterpret_cast<uint8_t*>(line_ + at_), static_cast<size_t>(end - at_) * sizeof *line_,
              weight * 0x10001u);
        at_ = end;
    }

    template <class Kernel, class Line>
    void run(int32_t end, Kernel kernel, const Line& line) {
        if (end <= at_)
            return;
        kernel(line_, at_, end, line);
        at_ = end;
    }

private:
    uint16_t* line_;
    void (*fill_)(uint8_t*, size_t, uint32_t);
    int32_t at_ = 0;
};

/// The lines that a call draws, and how it stores them.
struct Target {
    const Bitmap& bitmap;
    FieldLines lines;
    StoreKind store;

    Target(const Bitmap& target, uint32_t flags)
        : bitmap(target),
          lines(field_lines(flags)),
          store(store_kind(static_cast<size_t>(lines.count(target.height)) * static_cast<uint32_t>(target.width) * 2)) {
    }

    template <class DrawLine>
    void for_each_line(DrawLine draw_line) const {
        const int32_t count = lines.count(bitmap.height);
        for (int32_t k = 0; k < count; ++k) {
            const int32_t y = lines.first + k * lines.step;
            LineWriter writer(reinterpret_cast<uint16_t*>(line_address(bitmap, y)), store);
            draw_line(y, writer);
            writer.fill(bitmap.width, 0);
        }
        if (store == kStoreStreamed)
            line_kernels.end_stream();
    }
};

void draw_hard(const Target& target, double cx, double radius, const Lines& lines) {
    const Chord outer(cx, radius, target.bitmap.width);
    target.for_each_line([&](int32_t y, LineWriter& writer) {
        const LineEdges edge = lines.edges(y);
        if (outer.misses(edge.nearer))
            return;
        const Span touched = outer.touched(edge.nearer), covered = outer.covered(edge.farther);
        const HardEdgeLine hard(cx, radius, lines.from_centre(y), lines.aspect());
        writer.fill(touched.begin, 0);
        writer.run(covered.begin, hard_edge, hard);
        writer.fill(covered.end, kWeightFull);
        writer.run(touched.end, hard_edge, hard);
    });
}

void draw_soft(const Target& target, double cx, double radius, double feather, const RampTable& ramp,
               const Lines& lines) {
    const double inside = radius - feather, inner_radius = inside > 0 ? inside : 0;
    const Chord outer(cx, radius, target.bitmap.width), inner(cx, inner_radius, target.bitmap.width);
    const double scale = kRampSteps / feather;
    target.for_each_line([&](int32_t y, LineWriter& writer) {
        const LineEdges edge = lines.edges(y);
        if (outer.misses(edge.nearer))
            return;
        const Span touched = outer.touched(edge.nearer), covered = outer.covered(edge.farther);
        const Span inner_touched = inner.touched(edge.nearer), inner_covered = inner.covered(edge.farther);
        const double top = lines.from_centre(y);
        const RampLine soft = {.cx = cx,
                               .dy = top + 0.5 * lines.aspect(),
                               .radius = radius,
                               .scale = scale,
                               .table = ramp.weight,
                               .linear = &ramp == &kLinearRamp};
        const double dy_upper = top + lines.aspect() * 0.25, dy_lower = top + lines.aspect() * 0.75;
        const SoftEdgeLine sampled = {.ramp = soft,
                                      .radius_squared = radius * radius,
                                      .inner_radius_squared = inner_radius * inner_radius,
                                      .dy_squared = {dy_upper * dy_upper, dy_lower * dy_lower}};
        writer.fill(touched.begin, 0);
        writer.run(covered.begin, shape_kernels.soft_edge, sampled);
        writer.run(inner_touched.begin, shape_kernels.ramp, soft);
        writer.run(inner_covered.begin, shape_kernels.soft_edge, sampled);
        writer.fill(inner_covered.end, kWeightFull);
        writer.run(inner_touched.end, shape_kernels.soft_edge, sampled);
        writer.run(covered.end, shape_kernels.ramp, soft);
        writer.run(touched.end, shape_kernels.soft_edge, sampled);
    });
}

// Takes the floats as they came: widening them is floating point already.
__attribute__((noinline)) void draw_circle(const Bitmap& bitmap, float cx, float cy, float radius, float feather,
                                           float aspect, uint32_t flags) {
    const Target target(bitmap, flags);
    const Lines lines(cy, aspect, bitmap.height);
    if (feather <= 0)
        draw_hard(target, cx, radius <= 0 ? 0 : radius, lines);
    else
        draw_soft(target, cx, radius, feather, (flags & BMP_SHAPE_COSINE) ? kCosineRamp : kLinearRamp, lines);
}

}  // namespace
}  // namespace zepbmp

using namespace zepbmp;

BMP_EXPORT void BMP_CALL bmp_alpha_circle(Bitmap* bitmap, float cx, float cy, float radius, float feather, float aspect,
                                          uint32_t flags) {
    const FloatScope scope;
    draw_circle(*bitmap, cx, cy, radius, feather, aspect, flags);
}
