/// \file
/// Raster operations: a value combined with the 8-bit pixels that are there.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zepbmp {

/// pixel = (pixel & keep) ^ flip, which is set, AND, OR and XOR, according to what is kept.
struct RasterOp {
    uint8_t keep;
    uint8_t flip;

    static constexpr RasterOp set(uint8_t value) { return {0, value}; }
    static constexpr RasterOp bit_and(uint8_t value) { return {value, 0}; }
    static constexpr RasterOp bit_or(uint8_t value) { return {static_cast<uint8_t>(~value), value}; }
    static constexpr RasterOp bit_xor(uint8_t value) { return {0xff, value}; }
};

/// The pixels of a line: one for each step along its major axis, which is the longer one.
struct LineWalk {
    int32_t major, minor;              ///< pixels, major >= minor >= 0
    ptrdiff_t major_step, minor_step;  ///< bytes
};

/// The pixels of `walk` from `first` on, which is the first; the last step's end is not drawn. A step along the minor
/// axis comes where an error term, major / 2 at first and less by `minor` with each pixel, is not above 0.
void draw_walk(uint8_t* first, const LineWalk& walk, RasterOp op);

}  // namespace zepbmp
