/// \file
/// Rectangles with elliptical corners: two crossing boxes and, around each corner ellipse's centre, 2 x 2 samples a
/// pixel.
#include "shapes/alpha_rect.h"

namespace zepbmp {

Radii fitted_radii(double width, double height, double radius_x, double radius_y) {
    if (!(2 * radius_x < width && 2 * radius_y < height)) {
        if (width > height * radius_x / radius_y) {
            radius_x = height * radius_x / radius_y / 2;
            radius_y = height / 2;
        } else {
            radius_y = width / 2 * radius_y / radius_x;
            radius_x = width / 2;
        }
    }
    return {to_subpixels(radius_x), to_subpixels(radius_y)};
}

namespace {

/// A pixel's samples lie a quarter and three quarters into it.
constexpr int kNearSample = kSubpixels / 4, kFarSample = 3 * kSubpixels / 4;
constexpr int kSampleWeight = kWeightFull / 4;

/// Distances of a pixel's two samples from an ellipse's centre, in one direction, in 1/64 pixel.
struct SampleDistances {
    int64_t nearest, farthest;

    SampleDistances(int32_t pixel, int64_t centre) {
        const int64_t low = magnitude(int64_t{pixel} * kSubpixels + kNearSample - centre);
        const int64_t high = magnitude(int64_t{pixel} * kSubpixels + kFarSample - centre);
        nearest = low < high ? low : high;
        farthest = low < high ? high : low;
    }

    static int64_t magnitude(int64_t x) { return x < 0 ? -x : x; }
};

/// The circle of radius R that the ellipse becomes when vertical distances are scaled by RX / RY.
class Circle {
public:
    explicit Circle(Radii radii) : radii_(radii) {}

    /// Toward zero.
    int64_t scaled(int64_t vertical) const { return vertical * radii_.x / radii_.y; }

    bool contains(int64_t dx, int64_t dy) const {
        return dx <= radii_.x && dy <= radii_.x && dx * dx + dy * dy <= int64_t{radii_.x} * radii_.x;
    }

private:
    Radii radii_;
};

void keep_larger(uint16_t& weight, int32_t v) {
    if (weight < v)
        weight = static_cast<uint16_t>(v);
}

/// Pixels first, first + step, ... before end, outward from the straight part, until one lies outside.
void draw_corner_line(uint16_t* line, int32_t first, int32_t end, int32_t step, int64_t centre_x, const Circle& circle,
                      int64_t dy_nearest, int64_t dy_farthest) {
    for (int32_t x = first; x != end; x += step) {
        const SampleDistances dx(x, centre_x);
        if (circle.contains(dx.farthest, dy_farthest)) {
            keep_larger(line[x], kWeightFull);
            continue;
        }
        if (!circle.contains(dx.nearest, dy_nearest))
            return;
        keep_larger(line[x], kSampleWeight * (1 + circle.contains(dx.farthest, dy_nearest) +
                                              circle.contains(dx.nearest, dy_farthest)));
    }
}

/// `value` held to low..high and to 32 bits.
int32_t held(int64_t value, int64_t low, int64_t high) {
    const int64_t most = high < INT32_MAX ? high : INT32_MAX;
    return static_cast<int32_t>(value < low ? low : value > most ? most : value);
}

int64_t round_up_to_pixel(int64_t subpixels) { return (subpixels + kSubpixels - 1) >> kSubpixelBits; }

}  // namespace

void draw_elliptic(const Bitmap& bitmap, const Box& box, Radii radii, uint32_t flags) {
    const Box drawn = clipped(box, bitmap);
    const int32_t left = drawn.x0 >> kSubpixelBits, right = static_cast<int32_t>(round_up_to_pixel(drawn.x1));
    const int32_t top = drawn.y0 >> kSubpixelBits, bottom = static_cast<int32_t>(round_up_to_pixel(drawn.y1));
    if (right <= left || bottom <= top)
        return;
    if (radii.x < 1 || radii.y < 1) {
        draw_box_by_maximum(bitmap, drawn, flags);
        return;
    }

    // The ellipses' centres belong to the box as it was given: clipping does not bend a corner.
    const int64_t centre_left = int64_t{box.x0} + radii.x, centre_right = int64_t{box.x1} - radii.x;
    const int64_t centre_top = int64_t{box.y0} + radii.y, centre_bottom = int64_t{box.y1} - radii.y;
    const Limits limits(bitmap);
    const Box inner = {held(centre_left, 0, limits.width), held(centre_top, 0, limits.height),
                       held(centre_right, 0, limits.width), held(centre_bottom, 0, limits.height)};
    draw_box_by_maximum(bitmap, {drawn.x0, inner.y0, drawn.x1, inner.y1}, flags);
    draw_box_by_maximum(bitmap, {inner.x0, drawn.y0, inner.x1, drawn.y1}, flags);

    // Corner pixels are those with any part beyond a centre, also where they share it with the straight part.
    const int32_t left_corner_end = held(round_up_to_pixel(centre_left), left, right);
    const int32_t right_corner_begin = held(centre_right >> kSubpixelBits, left, right);
    const Circle circle(radii);
    const BoxLines lines(top, flags);
    for (int32_t y = lines.first; y < bottom; y += lines.step) {
        auto* const line = reinterpret_cast<uint16_t*>(line_address(bitmap, y));
        const auto draw_both = [&](int64_t centre_y) {
            const SampleDistances dy(y, centre_y);
            const int64_t nearest = circle.scaled(dy.nearest), farthest = circle.scaled(dy.farthest);
            draw_corner_line(line, left_corner_end - 1, left - 1, -1, centre_left, circle, nearest, farthest);
            draw_corner_line(line, right_corner_begin, right, 1, centre_right, circle, nearest, farthest);
        };
        if (y < round_up_to_pixel(centre_top))
            draw_both(centre_top);
        if (y >= centre_bottom >> kSubpixelBits)
            draw_both(centre_bottom);
    }
}

}  // namespace zepbmp
