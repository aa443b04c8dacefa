/// \file
/// The area of one pixel right of a ramp.
///
/// Static, because files for wide registers include this header.
#pragma once

#include "core/kernel_tables.h"
#include "mapping/polygon/units.h"

namespace zepbmp {

/// The area of a right-angled triangle with this side along the line; side <= kPixelUnits.
static inline int32_t ramp_triangle(int32_t side, double k) {
    return static_cast<int32_t>(double(side * side) * k) >> (kPixelBits + 1);
}

/// The area of a pixel whose centre lies `distance` from the ramp's beginning, both ends being outside.
static inline uint16_t ramp_trapezoid(int64_t distance, double k) {
    return static_cast<uint16_t>(static_cast<int32_t>(double(distance) * k));
}

/// Pixel x touches the ramp. Triangles and trapezoids; the products are double precision.
static inline uint16_t ramp_area(int32_t x, const CoverRamp& ramp) {
    const int64_t left = int64_t{x} * kPixelUnits, right = left + kPixelUnits;
    int64_t area;
    if (ramp.a >= left) {
        if (ramp.b <= right)
            area = (2 * right - ramp.a - ramp.b) >> 1;
        else
            area = ramp_triangle(static_cast<int32_t>(right - ramp.a), ramp.k);
    } else if (ramp.b <= right) {
        area = kPixelUnits - ramp_triangle(static_cast<int32_t>(ramp.b - left), ramp.k);
    } else {
        return ramp_trapezoid(left + kPixelUnits / 2 - ramp.a, ramp.k);
    }
    return static_cast<uint16_t>(area);
}

}  // namespace zepbmp
