/// \file
/// Which filter a polygon is mapped with: the reduction from texture to destination, turned so that the polygon's
/// longest edge lies alike in both, picks a class of box in each direction.
#pragma once

#include "mapping/polygon/texture.h"

namespace zepbmp {

struct FilterChoice {
    int index;                   ///< in a span group
    int32_t u_offset, v_offset;  ///< added to positions, 16.16: box and field
    float u_max, v_max;          ///< the farthest positions, 16.16
};

/// Index 0: no box.
FilterChoice unfiltered(const Texture& texture);

/// A class whose box is larger than the texture gives way to the next smaller one, at last to index 0.
FilterChoice choose_filter(const Texture& texture, const BmpVertex* vertices, int32_t count);

}  // namespace zepbmp
