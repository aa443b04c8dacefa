/// \file
/// How large a shape has to be before it covers the whole frame. Pixels.
#pragma once

#include <algorithm>
#include <cmath>

namespace zepbmp::effects {

/// From a point to the frame's farther side in each direction; of a centre in the frame, half its size to its size.
struct Reach {
    double x;
    double y;

    Reach(double centre_x, double centre_y, double width, double height)
        : x(std::max(std::abs(centre_x), std::abs(width - centre_x))),
          y(std::max(std::abs(centre_y), std::abs(height - centre_y))) {}

    /// To the farthest corner: a disc of this radius covers the frame.
    double corner() const { return std::sqrt(x * x + y * y); }
};

/// What an arc of `radius` cuts off a box's corner, on its diagonal, in each direction.
inline double cut_by_arc(double radius) { return radius * (1 - std::sqrt(0.5)); }

}  // namespace zepbmp::effects
