/// \file
/// Showing pixels on a device context.
#pragma once

#include <cstdint>

#include "core/dib_info.h"

namespace zepbmp {

/// In pixels of the device.
struct DeviceRect {
    int32_t x, y;
    int32_t width, height;
};

/// Shows lines of the bitmap, all of them counted from `first_line` on, at a device context's rectangle, from the source
/// pixel (src_x, 0) on. Returns how many lines were set: 0 without a header, and where no device context exists.
int32_t set_bits_to_device(void* device_context, const DeviceRect& rect, int32_t src_x, int32_t first_line,
                           const Bitmap& bitmap, const DibHeader* header);

}  // namespace zepbmp
