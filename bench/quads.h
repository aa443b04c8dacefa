/// \file
/// The polygons that are measured, and the map from a textured one to its texture.
#pragma once

#include <vector>

#include "matrix3.h"
#include "subject.h"

namespace zepbmp::bench {

using Polygon = std::vector<BmpVertex>;

/// A rectangle of a texture; begins and ends at even columns.
struct TexturePart {
    int32_t x, y, width, height;
};

/// A quad of a frame, and what it shows.
struct TexturedQuad {
    Polygon outline;
    Matrix3 to_texture;  ///< homogeneous, frame to texture; pixels, their centres at integer + 0.5
    TexturePart part;
};

enum class View { kAffine, kPerspective };

/// The middle of a texture of this size, turned by 17 degrees around the frame's middle and cut off by its borders, so
/// that it covers 70 % of the frame. `reduction` is in texels a pixel. In perspective the left side is nearer: w runs
/// from 1.3 to 0.7, and the reduction is that of the middle.
TexturedQuad turned_quad(Size frame, Size texture, double reduction, View view);

/// Five points, ten corners; 1000 pixels from the left point to the right one.
Polygon star(Size frame);

/// 1000 x 600 pixels, turned by 17 degrees.
Polygon solid_quad(Size frame);

/// Squares anywhere in the frame, at any angle.
std::vector<Polygon> small_quads(Size frame, int count, double side);

/// The area inside the frame. Sides of the polygon do not cross.
double covered_pixels(const Polygon& polygon, Size frame);

}  // namespace zepbmp::bench
