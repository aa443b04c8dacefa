/// \file
/// Scales of weights and masks, and the colour argument of YUY2.
///
/// Static, because files for wide registers include this header: a shared inline function would be kept once by the
/// linker, maybe in its wide form.
#pragma once

#include <cstdint>

namespace zepbmp {

constexpr int kWeightBits = 12;
constexpr int kWeightFull = 1 << kWeightBits;  ///< a BMP_FMT_PWRW pixel that is fully covered; the top of a level
constexpr int kMaskBits = 7;
constexpr int kMaskFull = 1 << kMaskBits;  ///< a BMP_FMT_A8 mask pixel that is fully covered

/// A YUY2 colour argument (Y bits 16..23, U 8..15, V 0..7) as a pair of pixels.
static inline uint32_t yuy2_pair(uint32_t color) {
    const uint32_t y = color >> 16 & 0xff, u = color >> 8 & 0xff, v = color & 0xff;
    return y | u << 8 | y << 16 | v << 24;
}

}  // namespace zepbmp
