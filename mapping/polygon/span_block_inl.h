/// \file
/// What the passes of a vector span kernel work on. Local to the including file, like all of them.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {
namespace {

/// What a sampler reads of a line for a pixel. It reads windows of whole registers, which may hold more texels than
/// have a weight.
struct Windows {
    int texel_shift;       ///< log2 of a texel's bytes
    int columns, lines;    ///< that the filter touches
    int texels_to_window;  ///< 1: a window begins with any texel; 2: with the first of a pair
    int bytes;             ///< 0: nothing but what has a weight
    bool taps_inside;      ///< from every position up to the maxima, where those are exact
};

/// Where a texture ends for a sampler. Where a window would pass the end it is moved back, and the box has a larger
/// place in it.
struct Geometry {
    int texel_shift;
    int32_t last_column, last_row;  ///< from which all taps lie inside
    int32_t last_offset;            ///< at which the last window may begin
    bool serves;                    ///< false: too small for windows, or too large for offsets
};

Geometry geometry_of(const SpanTexture& texture, const Windows& windows) {
    const int64_t columns = (texture.columns + windows.texels_to_window - 1) & -windows.texels_to_window;
    const int64_t bytes = (int64_t{texture.rows} - 1) * texture.pitch + (columns << windows.texel_shift);
    const int64_t last_offset =
        windows.bytes == 0 ? INT32_MAX : bytes - (windows.lines - 1) * int64_t{texture.pitch} - windows.bytes;
    const int32_t last_column = texture.columns - windows.columns, last_row = texture.rows - windows.lines;
    return {windows.texel_shift, last_column, last_row, static_cast<int32_t>(last_offset),
            last_column >= 0 && last_row >= 0 && last_offset >= 0 && bytes <= INT32_MAX && texture.pitch > 0 &&
                texture.pitch % 4 == 0};
}

/// Where the pixels of a block lie.
struct Places {
    alignas(64) int32_t offset[kSpanBlock];  ///< bytes from the texture's first texel to the window
    alignas(
        64) uint32_t fraction[kSpanBlock];  ///< where the box begins in the window: 1/128 texel, v in the upper half
};

/// What the passes over a block share. Its first pixel may lie left of the span.
struct Block {
    int32_t first;
    int count;
    float w;          ///< depth of the span's next pixel
    uintptr_t later;  ///< where the block lies on a later line
    int pixel_bytes;  ///< of the destination
    Places places;
    alignas(64) uint32_t drawn[kSpanBlock];       ///< all ones where a pixel passes the depth test, else 0
    alignas(64) uint8_t out[kSpanBlock * 4 + 4];  ///< pixels, or strengths of a tint
};

using Pass = void(const SpanTexture& texture, const Geometry& geometry, const Span& span, Block& block);

}  // namespace
}  // namespace zepbmp
