/// \file
/// A picture whose corners are pinned to four points of the frame.
#pragma once

#include "effects/stage.h"

namespace zepbmp::effects {

struct PixelPoint {
    double x;
    double y;
};

/// The picture of width x height pixels, seen in perspective through the four points: top left, top right, bottom right,
/// bottom left. Where they make no convex quad, or one with a corner of next to no area, no perspective shows them: the
/// picture is then stretched between them without.
Quad pinned(const std::array<PixelPoint, 4>& corners, int width, int height);

}  // namespace zepbmp::effects
