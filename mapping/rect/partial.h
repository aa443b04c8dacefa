/// \file
/// Pixels that are covered in part, or mixed with what the destination holds.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

struct PartialColumns {
    int32_t count;          ///< of pixels
    const AreaSpan* spans;  ///< one a pixel
    int32_t inner_weight;
    bool second;  ///< the first pixel is a pair's second one
};

/// The first pixel stands at dst, its weight at weights. T is what the pixel's and the line's weights multiply to, p
/// the pixel's entry in the weight map: a byte becomes (sum + byte * p * 2048) / (T + p * 2048), toward zero, and the
/// weight (T + p * 2048) >> 11, modulo 2^16.
using DrawPartial = void(uint8_t* dst, uint16_t* weights, const AreaLines& lines, const PartialColumns& columns);

/// Pixels that are wholly covered, T = 2^23, forget what was there. Byte 3 stays.
DrawPartial draw_partial_rgbq;

/// For the chroma of a pixel's pair p is the sum of its two weights, as they are when the pixel is drawn.
DrawPartial draw_partial_yuy2;

/// No weights: a byte becomes sum >> 23.
DrawPartial draw_partial_rgb8;

}  // namespace zepbmp
