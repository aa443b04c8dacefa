/// \file
/// The display header of a bitmap: what the graphics interface of Windows needs to know of its pixels.
#pragma once

#include <cstdint>

#include "zepbmp.h"

namespace zepbmp {

/// Field by field a BITMAPINFOHEADER.
struct DibHeader {
    uint32_t header_bytes;
    int32_t width;   ///< of a stored line, padding included, in pixels
    int32_t height;  ///< negative: line 0 is at the top
    uint16_t planes;
    uint16_t bits_per_pixel;
    uint32_t compression;
    uint32_t image_bytes;
    int32_t pixels_per_meter_x;
    int32_t pixels_per_meter_y;
    uint32_t colors_used;
    uint32_t colors_important;
};
static_assert(sizeof(DibHeader) == 40);

constexpr int32_t kPaletteColors = 256;

/// The colour table of an 8-bit bitmap, behind its header: blue in bits 0..7, green 8..15, red 16..23.
inline uint32_t* palette_of(DibHeader* header) { return reinterpret_cast<uint32_t*>(header + 1); }

/// The bitmap's header, built on first need; an 8-bit picture's colour table starts as a grey ramp. Null when memory is
/// short: the next call tries again. bmp_destroy frees it.
DibHeader* dib_info_of(Bitmap& bitmap);

}  // namespace zepbmp
