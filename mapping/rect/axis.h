/// \file
/// One axis of a rectangle's mapping. Along it a destination pixel measures `unit` units, a source pixel `step`: both
/// grids in whole numbers, so that every overlap is exact.
#pragma once

#include <cstdint>

#include "core/kernel_tables.h"

namespace zepbmp {

struct Axis {
    int32_t unit;    ///< of a destination pixel
    int32_t step;    ///< of a source pixel, 1 or more
    int32_t begin;   ///< the destination pixel in which the rectangle begins, 0 or more
    int32_t first;   ///< units of it that the rectangle covers, 1..unit
    int32_t extent;  ///< units of the rectangle, `first` or more
    int64_t origin;  ///< where it begins in the source, units from the source's first pixel on
    int32_t size;    ///< source pixels, 1 or more

    /// The destination pixels that the rectangle touches.
    int32_t pixels() const { return 1 + (extent - first) / unit + ((extent - first) % unit != 0); }
    /// From the rectangle's begin to that of its pixel i; the first pixel is 0.
    int32_t units_before(int32_t i) const { return i == 0 ? 0 : first + (i - 1) * unit; }
    /// What the rectangle covers of its pixel i.
    int32_t cover(int32_t i) const {
        const int32_t before = units_before(i), left = extent - before, whole = i == 0 ? first : unit;
        return left < whole ? left : whole;
    }
};

/// Walks along source pixels of `step` units. Outside the source lie copies of its first and of its last pixel.
class Cursor {
public:
    Cursor(int64_t position, int64_t step, int32_t size);

    /// The source pixels under the next `units` units.
    AreaSpan take(int32_t units);

private:
    void enter(int32_t index) {
        index_ = index < last_ ? index : last_;
        left_ = index < last_ ? step_ : kEndless;
    }

    static constexpr int32_t kEndless = INT32_MAX;  ///< no less than a rectangle's extent
    int32_t step_, last_;
    int32_t index_, left_;  ///< the current pixel and what is left of it
};

}  // namespace zepbmp
