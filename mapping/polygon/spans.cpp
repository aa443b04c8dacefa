#include "mapping/polygon/spans.h"

#include "core/arithmetic.h"
#include "mapping/polygon/filter_choice.h"
#include "mapping/polygon/filters.h"

namespace zepbmp {
namespace {

/// The first pixel whose centre is at or right of x, which counts to 1/4096.
int64_t pixel_from(float x) {
    const int64_t units = hold_to_int32(double{x} * -kPixelUnits);
    return (kPixelUnits / 2 - 1 - units) >> kPixelBits;
}

/// A quantity along a span.
struct Slope {
    double step;   ///< a pixel
    double start;  ///< at x = 0, pixel 0's centre being at 0.5
};

Slope slope_between(double left, double right, float left_x, float right_x) {
    const double width = double{right_x} - left_x;
    const double step = width > 0 ? (right - left) / width : 0;
    return {step, left - step * (left_x - 0.5)};
}

constexpr int32_t kPrefetchedSpan = 16;  // pixels; a shorter span is not worth it

}  // namespace

PixelRange pixels_between(float left, float right, int32_t width) {
    const int64_t first = pixel_from(left), end = pixel_from(right);
    if (first >= width || end <= 0)
        return {0, 0};
    return {first < 0 ? 0 : static_cast<int32_t>(first), end > width ? width : static_cast<int32_t>(end)};
}

SpanDrawer::SpanDrawer(const Texture& texture, const KernelChoice& kernels, const Polygon& polygon, int sub_lines,
                       const Edge* edges, int32_t edge_count, EdgeMapping* mappings)
    : perspective_(kernels.perspective),
      later_lines_(kLaterTexelLines * SelectedLines(polygon.flags).step() * sub_lines),
      edges_(edges),
      mappings_(mappings) {
    const FilterChoice filter = polygon.flags & BMP_MAP_NO_FILTER
                                    ? unfiltered(texture)
                                    : choose_filter(texture, polygon.vertices, polygon.count);
    kernel_ = span_group[kernels.group][filter.index];
    texture_ = {texture.pixels, texture.pitch, texture.columns, texture.rows, filter.u_max, filter.v_max};
    texel_bytes_ = texture.texel_bytes;
    u_offset_ = filter.u_offset;
    v_offset_ = filter.v_offset;
    for (int32_t i = 0; i < edge_count; ++i)
        mappings[i] =
            map_edge(polygon.vertices, polygon.count, edges[i].order, sub_lines, texture.line_scale, perspective_);
}

Span SpanDrawer::between(const Crossing& left, const Crossing& right, int32_t line, const PixelRange& pixels) const {
    const EdgeMapping &l = mapping_of(left), &r = mapping_of(right);
    const auto along = [&](const Interpolant& from, const Interpolant& to) {
        return slope_between(from.at(line), to.at(line), left.x, right.x);
    };
    const Slope u = along(l.u, r.u), v = along(l.v, r.v);
    Span span{};
    span.first = pixels.first;
    span.last = pixels.end - 1;
    span.du = static_cast<float>(u.step);
    span.dv = static_cast<float>(v.step);
    if (perspective_) {
        const Slope w = along(l.w, r.w);
        span.u_start = static_cast<float>(u.start);
        span.v_start = static_cast<float>(v.start);
        span.dw = static_cast<float>(w.step);
        span.w_start = static_cast<float>(w.start);
        span.u_off = static_cast<float>(u_offset_);
        span.v_off = static_cast<float>(v_offset_);
    } else {
        span.u_start = static_cast<float>(u.start + u_offset_);
        span.v_start = static_cast<float>(v.start + v_offset_);
    }
    if (pixels.end - pixels.first >= kPrefetchedSpan)
        span.later_texels = bytes_to_later_lines(span, l, left.edge->slope);
    return span;
}

/// How far the texels under the middle of a span lie from those under the same pixel some lines further down.
ptrdiff_t SpanDrawer::bytes_to_later_lines(const Span& span, const EdgeMapping& mapping, float edge_slope) const {
    const auto by_line = [&](const Interpolant& along_edge, float step) {
        return along_edge.slope - step * edge_slope;
    };
    double u = by_line(mapping.u, span.du), v = by_line(mapping.v, span.dv);
    if (perspective_) {
        const double x = 0.5 * (static_cast<double>(span.first) + span.last);
        const double w_by_line = by_line(mapping.w, span.dw), w = x * span.dw + span.w_start;
        u = (u - (x * span.du + span.u_start) / w * w_by_line) / w;
        v = (v - (x * span.dv + span.v_start) / w * w_by_line) / w;
    }
    const auto texels = [&](double units) {
        return static_cast<uintptr_t>(intptr_t{trunc_to_int32(units * (later_lines_ / kTexel))});
    };
    return static_cast<ptrdiff_t>(texels(v) * static_cast<uintptr_t>(texture_.pitch) +
                                  texels(u) * static_cast<uintptr_t>(texel_bytes_));
}

}  // namespace zepbmp
