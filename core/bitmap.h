/// \file
/// What every subsystem knows of a bitmap: addressing, which lines a field flag selects.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/pixels.h"
#include "zepbmp.h"

namespace zepbmp {

constexpr int kLineAlignment = 16;  ///< bytes; of `pixels` and of `pitch`

constexpr uint32_t kHoldsFields = 2;  ///< of create_flags: the picture is interlaced

/// The lines that an operation visits: first, first + step, ... below the bitmap's height.
struct FieldLines {
    int32_t first;
    int32_t step;

    /// How many of them lie below `height`; 0 where there is none.
    int32_t count(int32_t height) const { return height > first ? (height - first - 1) / step + 1 : 0; }
};

inline FieldLines field_lines(uint32_t flags) {
    return {static_cast<int32_t>(flags & BMP_FIELD_ODD), (flags & BMP_FIELD) ? 2 : 1};
}

/// The address of pixel (x, y), in wrapping arithmetic of the pointer's own width: nothing is checked.
inline uint8_t* pixel_address(const Bitmap& bitmap, int32_t x, int32_t y) {
    const auto extend = [](int32_t value) { return static_cast<uintptr_t>(static_cast<intptr_t>(value)); };
    return reinterpret_cast<uint8_t*>(reinterpret_cast<uintptr_t>(bitmap.pixels) + extend(y) * extend(bitmap.pitch) +
                                      extend(x) * extend(bitmap.bytes_per_pixel));
}

inline uint8_t* line_address(const Bitmap& bitmap, int32_t y) { return pixel_address(bitmap, 0, y); }

}  // namespace zepbmp
