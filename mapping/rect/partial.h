/// \file
/// Pixels that are mixed with what the destination holds, in proportion to the weight map.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

/// Pixels first .. first + count - 1 of `columns`, the first one at dst and weights. With T the pixel's share of the
/// line and p its weight, a byte becomes (sum + byte * p * 2048) / (T + p * 2048), toward zero, and the weight
/// (T + p * 2048) >> 11, modulo 2^16.
///
/// RGBQ pixels that are wholly covered, T = 2^23, forget what was there. Byte 3 stays.
void draw_partial_rgbq(uint8_t* dst, uint16_t* weights, const AreaLines& lines, const AreaSpan* spans, int32_t count,
                       int32_t inner_weight);

/// The chroma of a pixel's pair takes the sum of its two weights for p, as they are when the pixel is drawn. Where
/// `second`, the first pixel is a pair's second one.
void draw_partial_yuy2(uint8_t* dst, uint16_t* weights, const AreaLines& lines, const AreaSpan* spans, int32_t count,
                       int32_t inner_weight, bool second);

}  // namespace zepbmp
