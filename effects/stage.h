/// \file
/// Pictures placed in space, and how they are seen.
#pragma once

#include <array>
#include <cstddef>

#include "zepbmp.h"

namespace zepbmp::effects {

/// A picture in space as bmp_map_polygon takes it. Corners: top left, top right, bottom right, bottom left.
using Quad = std::array<BmpVertex, 4>;

/// Places pictures of the frame's size in space and looks at them from one frame width before the frame's centre; from
/// a quarter of the height where that is more.
/// Space is measured in pixel widths from that centre: x to the right, y down, z away from the viewer. In the frame's
/// plane (z = 0) a picture is as large as the frame.
class Stage {
public:
    /// line_height_px   height of a line in pixel widths
    Stage(int width, int height, double line_height_px);

    /// The picture on its way from far away, turned to the side and next to nothing (progress near 0), to the whole
    /// frame (1). `margin` of its width and height is added on each side, where u and v lie outside the texture; the
    /// picture itself stays as it is.
    Quad flying(double progress, double margin) const;

    /// A side of a cube as wide as the frame, which turns by `turn` quarters about its upright axis, from its front (0)
    /// to its right side (1). The edge between them stays in the frame's plane, everything else is behind it.
    Quad cube_front(double turn) const { return cube_side(turn, 0); }
    Quad cube_right(double turn) const { return cube_side(turn, 1); }

private:
    struct Point {
        double x;
        double y;
        double z;
    };

    Quad cube_side(double turn, int side) const;

    /// Where a point is seen, and which texture position is seen there. w is 1 in the frame's plane, less behind it.
    BmpVertex seen(const Point& point, double u, double v) const;

    double width_px_;
    double height_px_;
    double line_height_px_;
    double distance_px_;  // from the viewer to the frame
};

/// How thin a quad is on the frame, in pixels and lines: the smallest distance from a corner to a side that does not
/// begin or end there.
double thickness(const Quad& quad);

}  // namespace zepbmp::effects
