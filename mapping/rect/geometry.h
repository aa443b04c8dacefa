/// \file
/// From the arguments of bmp_map_rect to two axes in whole units.
#pragma once

#include <cstdint>

#include "core/bitmap.h"
#include "mapping/rect/axis.h"

namespace zepbmp {

/// A rectangle in pixels and lines; pixel i covers i..i+1.
struct FloatRect {
    float x0, y0, x1, y1;
};

/// The lines of a source that a call reads: all, or those of one field.
struct SourceLines {
    const uint8_t* pixels;  ///< of the first one
    ptrdiff_t pitch;        ///< bytes from one to the next
    int32_t width, height;
    bool is_field;
};

struct RectMapping {
    SourceLines source;
    Axis columns, lines;
};

/// Clips both rectangles' start corners to the sizes, and takes the result to units. False where nothing is to be
/// drawn: an empty rectangle, a source without pixels, a start before the destination.
///
/// `dest_size` is the bitmap whose size the destination is clipped to.
bool map_to_units(const Bitmap& dest_size, FloatRect dest, const Bitmap& source, FloatRect sampled, uint32_t flags,
                  RectMapping* mapping);

}  // namespace zepbmp
