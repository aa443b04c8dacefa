/// \file
/// Units of positions: on the destination, and on the texture.
#pragma once

#include <cstdint>

namespace zepbmp {

constexpr int kPixelBits = 12;
constexpr int32_t kPixelUnits = 1 << kPixelBits;  ///< of a pixel and of a line or sub-line; also a pixel's whole area
constexpr int kSubLines = 3;                      ///< of an anti-aliased line

constexpr int kTexelBits = 16;
constexpr int32_t kTexel = 1 << kTexelBits;  ///< positions on the texture are 16.16

}  // namespace zepbmp
