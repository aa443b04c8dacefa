/// \file
/// What the two paths of bmp_alpha_rect share. Positions are 1/64 pixels and 1/64 lines.
#pragma once

#include "core/bitmap.h"

namespace zepbmp {

constexpr int kSubpixelBits = 6;
constexpr int kSubpixels = 1 << kSubpixelBits;

/// Toward zero.
int32_t to_subpixels(double pixels);

struct Box {
    int32_t x0, y0, x1, y1;
};

/// The low ends raised to 0, the high ends lowered to the bitmap's size.
Box clipped(const Box& box, const Bitmap& bitmap);

/// The lines of a box that begins at `top`: with BMP_FIELD every second one, from the first of the wanted parity on.
struct BoxLines {
    int32_t first, step;

    BoxLines(int32_t top, uint32_t flags) : first(top), step(1) {
        if (flags & BMP_FIELD) {
            step = 2;
            first += static_cast<int32_t>((static_cast<uint32_t>(top) ^ flags) & 1);
        }
    }
};

/// A bitmap's size in 1/64, for comparing: it may pass 32 bits.
struct Limits {
    int64_t width, height;
    explicit Limits(const Bitmap& bitmap)
        : width(int64_t{bitmap.width} * kSubpixels), height(int64_t{bitmap.height} * kSubpixels) {}
};

/// Draws a clipped box; every weight becomes the larger of what it was and the pixel's covered fraction.
void draw_box_by_maximum(const Bitmap& bitmap, const Box& box, uint32_t flags);

/// Corner radii.
struct Radii {
    int32_t x, y;
};

/// The radii as given where both leave something of the sides straight; else shrunk to half the rectangle, keeping
/// their ratio. Arguments in pixels.
Radii fitted_radii(double width, double height, double radius_x, double radius_y);

/// Draws a box with elliptical corners; every weight becomes the larger one. Radii below 1 make plain corners.
void draw_elliptic(const Bitmap& bitmap, const Box& box, Radii radii, uint32_t flags);

}  // namespace zepbmp
