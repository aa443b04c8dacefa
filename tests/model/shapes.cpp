// Rectangles and circles in weight maps.
//
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "arithmetic.h"
#include "model.h"

namespace model {

namespace {

constexpr int32_t kFull = 4096;

uint16_t weight_at(const Bitmap* bitmap, int32_t x, int32_t y) {
    return load_u16(model::bmp_pointer(bitmap, 0, y) + 2 * static_cast<std::ptrdiff_t>(x));
}

void set_weight(Bitmap* bitmap, int32_t x, int32_t y, int32_t weight) {
    store_u16(model::bmp_pointer(bitmap, 0, y) + 2 * static_cast<std::ptrdiff_t>(x), static_cast<uint16_t>(weight));
}

void keep_larger(Bitmap* bitmap, int32_t x, int32_t y, int32_t weight) {
    if (weight_at(bitmap, x, y) < weight) {
        set_weight(bitmap, x, y, weight);
    }
}

// ---------------------------------------------------------------- rectangle

// In 1/64 pixel and 1/64 line. x0, y0 are at least 0; x1, y1 at most the bitmap's size, but may be negative.
struct Box {
    int32_t x0;
    int32_t y0;
    int32_t x1;
    int32_t y1;
};

enum class Combine {
    kAdd,           // partly covered pixels add up, whole ones become full
    kLarger,        // partly covered pixels keep the larger weight, whole ones become full
    kNeverLowered,  // every pixel keeps the larger weight
};

void put_partial(Bitmap* bitmap, int32_t x, int32_t y, int32_t weight, Combine combine) {
    if (combine == Combine::kAdd) {
        set_weight(bitmap, x, y, (weight_at(bitmap, x, y) + weight) & 0xffff);
    } else {
        keep_larger(bitmap, x, y, weight);
    }
}

void put_full(Bitmap* bitmap, int32_t x, int32_t y, Combine combine) {
    if (combine == Combine::kNeverLowered) {
        keep_larger(bitmap, x, y, kFull);
    } else {
        set_weight(bitmap, x, y, kFull);
    }
}

int32_t floor_to_pixel(int32_t position) { return position >> 6; }

int32_t ceil_to_pixel(int32_t position) { return wrap_add(position, 63) >> 6; }

// The field's first line at or after the given one.
int32_t first_line_of_field(int32_t line, uint32_t flags) {
    if ((flags & BMP_FIELD) && ((static_cast<uint32_t>(line) ^ flags) & 1)) {
        return line + 1;
    }
    return line;
}

// One row. vertical: covered part of the line in 64ths; whole: a full row, its inner run is set rather than combined.
void draw_row(Bitmap* bitmap, int32_t y, const Box& box, int32_t vertical, bool whole, Combine combine) {
    const int32_t xa = floor_to_pixel(box.x0);
    const int32_t xb = ceil_to_pixel(box.x0);
    const int32_t xc = floor_to_pixel(box.x1);
    const int32_t xd = ceil_to_pixel(box.x1);
    if (xa < xb) {
        put_partial(bitmap, xa, y, (64 - (box.x0 & 63)) * vertical, combine);
    }
    for (int32_t x = xb; x < xc; ++x) {
        if (whole) {
            put_full(bitmap, x, y, combine);
        } else {
            put_partial(bitmap, x, y, 64 * vertical, combine);
        }
    }
    if (xc < xd) {
        put_partial(bitmap, xc, y, (box.x1 & 63) * vertical, combine);
    }
}

void draw_box(Bitmap* bitmap, const Box& box, uint32_t flags, Combine combine) {
    const int32_t ya = floor_to_pixel(box.y0);
    const int32_t yb = ceil_to_pixel(box.y0);
    const int32_t yc = floor_to_pixel(box.y1);
    const int32_t yd = ceil_to_pixel(box.y1);
    if (ceil_to_pixel(box.x1) <= floor_to_pixel(box.x0) || yd <= ya) {
        return;
    }
    const int32_t step = (flags & BMP_FIELD) ? 2 : 1;
    int32_t y = first_line_of_field(ya, flags);
    if (y < yb) {
        draw_row(bitmap, y, box, 64 - (box.y0 & 63), false, combine);
        y += step;
    }
    while (y < yc) {
        draw_row(bitmap, y, box, 64, true, combine);
        y += step;
    }
    if (y < yd) {
        draw_row(bitmap, y, box, box.y1 & 63, false, combine);
    }
}

// ---------------------------------------------------------------- elliptical corners

// A corner's ellipse in 1/64 units; the centre may lie outside the bitmap.
struct Ellipse {
    int64_t centre_x;
    int64_t centre_y;
    int64_t radius_x;
    int64_t radius_y;
};

// dx, dy: distances from the centre, dy already stretched so that the ellipse is a circle of radius_x.
bool inside(const Ellipse& ellipse, int64_t dx, int64_t dy) {
    const int64_t r = ellipse.radius_x;
    return dx <= r && dy <= r && dx * dx + dy * dy <= r * r;
}

// Samples at a quarter and three quarters of the pixel, each way. -> 0 none inside, 4096 all inside.
int32_t corner_weight(const Ellipse& ellipse, int32_t x, int32_t y) {
    const int64_t dx_a = std::abs(int64_t{x} * 64 + 16 - ellipse.centre_x);
    const int64_t dx_b = std::abs(int64_t{x} * 64 + 48 - ellipse.centre_x);
    const int64_t dy_a = std::abs(int64_t{y} * 64 + 16 - ellipse.centre_y) * ellipse.radius_x / ellipse.radius_y;
    const int64_t dy_b = std::abs(int64_t{y} * 64 + 48 - ellipse.centre_y) * ellipse.radius_x / ellipse.radius_y;
    const int64_t near_dx = std::min(dx_a, dx_b);
    const int64_t far_dx = std::max(dx_a, dx_b);
    const int64_t near_dy = std::min(dy_a, dy_b);
    const int64_t far_dy = std::max(dy_a, dy_b);
    if (inside(ellipse, far_dx, far_dy)) {
        return kFull;
    }
    if (!inside(ellipse, near_dx, near_dy)) {
        return 0;
    }
    int32_t weight = 1024;
    if (inside(ellipse, near_dx, far_dy)) {
        weight += 1024;
    }
    if (inside(ellipse, far_dx, near_dy)) {
        weight += 1024;
    }
    return weight;
}

// Pixels from first toward end (not included), outward; the first one that is outside ends the row.
void draw_corner_row(Bitmap* bitmap, int32_t y, int32_t first, int32_t end, int32_t step, const Ellipse& ellipse) {
    for (int32_t x = first; step > 0 ? x < end : x > end; x += step) {
        const int32_t weight = corner_weight(ellipse, x, y);
        if (weight == 0) {
            return;
        }
        keep_larger(bitmap, x, y, weight);
    }
}

struct Radii {
    double x;
    double y;
};

// Shrinks the radii, keeping their ratio, until the ellipse fits half the rectangle.
Radii fit_radii(double width, double height, double radius_x, double radius_y) {
    if (2 * radius_x < width && 2 * radius_y < height) {
        return {radius_x, radius_y};
    }
    const double t = height * radius_x / radius_y;
    if (width > t) {
        return {t / 2, height / 2};
    }
    return {width / 2, (width / 2) * radius_y / radius_x};
}

int32_t hold(int64_t value, int32_t low, int32_t high) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, low, high));
}

// The straight parts are two boxes that cross: full width between the upper and the lower corners, full height between
// the left and the right ones. Pixels that an inner bound cuts belong to a corner as well.
void draw_elliptical(Bitmap* bitmap, const Box& unclamped, int32_t radius_x, int32_t radius_y, uint32_t flags) {
    const int32_t limit_x = wrap_mul(bitmap->width, 64);
    const int32_t limit_y = wrap_mul(bitmap->height, 64);
    const Box outer = {std::max(unclamped.x0, 0), std::max(unclamped.y0, 0), std::min(unclamped.x1, limit_x),
                       std::min(unclamped.y1, limit_y)};
    const int32_t xa = floor_to_pixel(outer.x0);
    const int32_t xd = ceil_to_pixel(outer.x1);
    const int32_t ya = floor_to_pixel(outer.y0);
    const int32_t yd = ceil_to_pixel(outer.y1);
    if (xd <= xa || yd <= ya) {
        return;
    }
    // A radius below 1/64 pixel in either direction leaves square corners.
    if (radius_x < 1 || radius_y < 1) {
        draw_box(bitmap, outer, flags, Combine::kNeverLowered);
        return;
    }

    const int64_t left = int64_t{unclamped.x0} + radius_x;
    const int64_t right = int64_t{unclamped.x1} - radius_x;
    const int64_t top = int64_t{unclamped.y0} + radius_y;
    const int64_t bottom = int64_t{unclamped.y1} - radius_y;
    const Box inner = {hold(left, 0, limit_x), hold(top, 0, limit_y), hold(right, 0, limit_x),
                       hold(bottom, 0, limit_y)};

    draw_box(bitmap, {outer.x0, inner.y0, outer.x1, inner.y1}, flags, Combine::kNeverLowered);
    draw_box(bitmap, {inner.x0, outer.y0, inner.x1, outer.y1}, flags, Combine::kNeverLowered);

    const int32_t left_first = ceil_to_pixel(inner.x0) - 1;
    const int32_t right_first = floor_to_pixel(inner.x1);
    const int32_t top_end = ceil_to_pixel(inner.y0);
    const int32_t bottom_first = floor_to_pixel(inner.y1);
    const int32_t step = (flags & BMP_FIELD) ? 2 : 1;
    for (int32_t y = first_line_of_field(ya, flags); y < yd; y += step) {
        if (y < top_end) {
            draw_corner_row(bitmap, y, left_first, xa - 1, -1, {left, top, radius_x, radius_y});
            draw_corner_row(bitmap, y, right_first, xd, 1, {right, top, radius_x, radius_y});
        }
        if (y >= bottom_first) {
            draw_corner_row(bitmap, y, left_first, xa - 1, -1, {left, bottom, radius_x, radius_y});
            draw_corner_row(bitmap, y, right_first, xd, 1, {right, bottom, radius_x, radius_y});
        }
    }
}

}  // namespace

void bmp_alpha_rect(Bitmap* bitmap, float x, float y, float width, float height, float radius_x, float radius_y,
                    uint32_t flags) {
    const double left = x;
    const double top = y;
    const Box unclamped = {truncate_to_int(left * 64), truncate_to_int(top * 64),
                           truncate_to_int((left + double{width}) * 64), truncate_to_int((top + double{height}) * 64)};

    if ((flags & BMP_SHAPE_ELLIPTIC) && (flags & (BMP_SHAPE_ELLIPTIC_PLAIN | BMP_SHAPE_ELLIPTIC_EDGES))) {
        const Radii radii = fit_radii(width, height, radius_x, radius_y);
        draw_elliptical(bitmap, unclamped, truncate_to_int(radii.x * 64), truncate_to_int(radii.y * 64), flags);
        return;
    }

    const Box box = {std::max(unclamped.x0, 0), std::max(unclamped.y0, 0),
                     std::min(unclamped.x1, wrap_mul(bitmap->width, 64)),
                     std::min(unclamped.y1, wrap_mul(bitmap->height, 64))};
    const uint32_t mode = flags & 0x70;
    if (mode == BMP_SHAPE_ADD) {
        draw_box(bitmap, box, flags, Combine::kAdd);
    } else if (mode == BMP_SHAPE_MAX) {
        draw_box(bitmap, box, flags, Combine::kLarger);
    }
}

// ---------------------------------------------------------------- circle

uint16_t linear_ramp(int32_t k) { return static_cast<uint16_t>(4 * k); }

uint16_t cosine_ramp(int32_t k) {
    constexpr double kPi = 3.14159265358979323846;
    return static_cast<uint16_t>(std::floor(4096 * (1 - std::cos(kPi * k / 1024)) / 2 + 0.5));
}

namespace {

struct Span {
    int32_t first;
    int32_t end;
};

// Vertical distances of a line's edges from the centre; on the centre's own line the nearer one may be negative.
struct LineEdges {
    double nearer;
    double farther;
};

LineEdges edges_of_line(int32_t y, double cy, double aspect, int32_t split) {
    const double top = y * aspect;
    if (y >= split) {
        const double a = top - cy;
        return {a, a + aspect};
    }
    return {cy - (top + aspect), cy - top};
}

// Columns that a circle touches on a line, from the line's nearer edge.
Span touching_span(double cx, double r, double e, int32_t width) {
    if (e >= r) {
        return {0, 0};
    }
    const double h = std::sqrt(r * r - e * e);
    return {std::min(truncate_to_int(cx - h), width), std::min(truncate_to_int(cx + h + 0.99999), width)};
}

// Columns that a circle covers wholly on a line, from the line's farther edge.
Span covered_span(double cx, double r, double e, int32_t width) {
    if (e >= r) {
        return {0, 0};
    }
    const double h = std::sqrt(r * r - e * e);
    return {std::min(truncate_to_int(cx - h + 0.99999), width), std::min(truncate_to_int(cx + h), width)};
}

// Writes a line's pixels from left to right; a range starts no earlier than the last one ended.
class LineWriter {
public:
    LineWriter(Bitmap* bitmap, int32_t y) : bitmap_(bitmap), y_(y) {}

    template <class WeightOfColumn>
    void write_to(int32_t end, WeightOfColumn weight) {
        for (; x_ < end; ++x_) {
            set_weight(bitmap_, x_, y_, weight(x_));
        }
    }

private:
    Bitmap* bitmap_;
    int32_t y_;
    int32_t x_ = 0;
};

int32_t nothing(int32_t) { return 0; }

int32_t full(int32_t) { return kFull; }

void draw_hard_line(Bitmap* bitmap, int32_t y, double cx, double cy, double r, double aspect, int32_t split) {
    const int32_t width = bitmap->width;
    const LineEdges edges = edges_of_line(y, cy, aspect, split);
    LineWriter line(bitmap, y);
    if (edges.nearer >= r) {
        line.write_to(width, nothing);
        return;
    }
    const auto sampled = [&](int32_t x) {
        int32_t weight = 0;
        for (int k = 0; k < 4; ++k) {
            for (int j = 0; j < 4; ++j) {
                const double dx = x - cx + 0.125 + 0.25 * j;
                const double dy = (y * aspect - cy) + aspect * (0.125 + 0.25 * k);
                if (dx * dx <= r * r - dy * dy) {
                    weight += 256;
                }
            }
        }
        return weight;
    };
    const Span touched = touching_span(cx, r, edges.nearer, width);
    const Span covered = covered_span(cx, r, edges.farther, width);
    line.write_to(touched.first, nothing);
    line.write_to(covered.first, sampled);
    line.write_to(covered.end, full);
    line.write_to(touched.end, sampled);
    line.write_to(width, nothing);
}

void draw_soft_line(Bitmap* bitmap, int32_t y, double cx, double cy, double r, double feather, double aspect,
                    int32_t split, bool cosine) {
    const int32_t width = bitmap->width;
    const double ri = std::max(r - feather, 0.0);
    const double scale = 1024 / feather;
    const LineEdges edges = edges_of_line(y, cy, aspect, split);
    LineWriter line(bitmap, y);
    if (edges.nearer >= r) {
        line.write_to(width, nothing);
        return;
    }
    const auto ramp_value = [&](double d) -> int32_t {
        const int32_t k = std::clamp(truncate_to_int((r - d) * scale + 0.5), 0, 1024);
        return cosine ? cosine_ramp(k) : linear_ramp(k);
    };
    const auto ramp = [&](int32_t x) {
        const double dx = x - cx + 0.5;
        const double dy = y * aspect - cy + 0.5 * aspect;
        return ramp_value(std::sqrt(dx * dx + dy * dy));
    };
    const auto sampled = [&](int32_t x) {
        int32_t sum = 0;
        for (int k = 0; k < 2; ++k) {
            for (int j = 0; j < 2; ++j) {
                const double dx = x - cx + 0.25 + 0.5 * j;
                const double dy = (y * aspect - cy) + aspect * (0.25 + 0.5 * k);
                const double d2 = dx * dx + dy * dy;
                if (d2 <= r * r) {
                    sum += d2 <= ri * ri ? kFull : ramp_value(std::sqrt(d2));
                }
            }
        }
        return sum / 4;
    };
    const Span touched = touching_span(cx, r, edges.nearer, width);
    const Span covered = covered_span(cx, r, edges.farther, width);
    const Span inner_touched = touching_span(cx, ri, edges.nearer, width);
    const Span inner_covered = covered_span(cx, ri, edges.farther, width);
    line.write_to(touched.first, nothing);
    line.write_to(covered.first, sampled);
    line.write_to(inner_touched.first, ramp);
    line.write_to(inner_covered.first, sampled);
    line.write_to(inner_covered.end, full);
    line.write_to(inner_touched.end, sampled);
    line.write_to(covered.end, ramp);
    line.write_to(touched.end, sampled);
    line.write_to(width, nothing);
}

}  // namespace

void bmp_alpha_circle(Bitmap* bitmap, float cx, float cy, float radius, float feather, float aspect, uint32_t flags) {
    const int64_t first = flags & BMP_FIELD_ODD;
    const int64_t step = (flags & BMP_FIELD) ? 2 : 1;
    const int32_t split = std::min(truncate_to_int(double{cy} / double{aspect}), bitmap->height);
    for (int64_t line = first; line < bitmap->height; line += step) {
        const int32_t y = static_cast<int32_t>(line);
        if (feather <= 0) {
            const double r = radius <= 0 ? 0.0 : double{radius};
            draw_hard_line(bitmap, y, cx, cy, r, aspect, split);
        } else {
            draw_soft_line(bitmap, y, cx, cy, radius, feather, aspect, split, (flags & BMP_SHAPE_COSINE) != 0);
        }
    }
}

}  // namespace model
