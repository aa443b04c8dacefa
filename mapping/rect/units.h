/// \file
/// The grid of a mapped rectangle. Constants only: kernels for wide registers include this.
#pragma once

#include <cstdint>

namespace zepbmp {

constexpr int kColumnBits = 12;
constexpr int32_t kColumnUnits = 1 << kColumnBits;  ///< of a destination pixel, across
constexpr int kLineBits = 11;
constexpr int32_t kLineUnits = 1 << kLineBits;      ///< of a destination line, down
constexpr int kAreaBits = kColumnBits + kLineBits;  ///< of a whole pixel's weights

}  // namespace zepbmp
