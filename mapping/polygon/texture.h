/// \file
/// The source of a mapping as it is sampled: a frame, or one field of an interlaced one.
#pragma once

#include "core/bitmap.h"

namespace zepbmp {

struct Texture {
    const uint8_t* pixels;  ///< of the first line sampled
    ptrdiff_t pitch;        ///< bytes from a line sampled to the next
    int32_t columns, rows;  ///< at most kTextureLimit of each; where one is below 1 there is nothing to sample
    uint32_t format;        ///< BMP_FMT_...
    int32_t texel_bytes;
    double line_scale;    ///< lines sampled to a frame line: 1, or 0.5 in a field
    int32_t line_offset;  ///< 16.16: where the field's lines lie against the frame's
};

constexpr int32_t kTextureLimit = 32768;  ///< the most columns or rows that 16.16 positions reach

/// `flags` picks the field of a bitmap that was created as interlaced.
Texture texture_of(const Bitmap& bitmap, uint32_t flags);

}  // namespace zepbmp
