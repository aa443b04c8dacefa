/// \file
/// Device contexts of the Windows graphics interface.
#include <windows.h>

#include <cstddef>

#include "platform/device_context.h"

namespace zepbmp {

static_assert(sizeof(DibHeader) == sizeof(BITMAPINFOHEADER));
static_assert(offsetof(DibHeader, bits_per_pixel) == offsetof(BITMAPINFOHEADER, biBitCount));
static_assert(offsetof(DibHeader, colors_used) == offsetof(BITMAPINFOHEADER, biClrUsed));

int32_t set_bits_to_device(void* device_context, const DeviceRect& rect, int32_t src_x, int32_t first_line,
                           const Bitmap& bitmap, const DibHeader* header) {
    constexpr int kSourceY = 0;
    return SetDIBitsToDevice(static_cast<HDC>(device_context), rect.x, rect.y, static_cast<DWORD>(rect.width),
                             static_cast<DWORD>(rect.height), src_x, kSourceY, static_cast<UINT>(first_line),
                             static_cast<UINT>(bitmap.height), bitmap.pixels,
                             reinterpret_cast<const BITMAPINFO*>(header), DIB_RGB_COLORS);
}

}  // namespace zepbmp
