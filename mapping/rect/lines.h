/// \file
/// Draws a mapped rectangle line by line.
#pragma once

#include "mapping/rect/geometry.h"

namespace zepbmp {

/// `weights` belongs to dest; null for RGB8. Draws nothing outside of either.
void draw_rect_lines(const Bitmap& dest, const Bitmap* weights, const RectMapping& mapping, uint32_t flags);

}  // namespace zepbmp
