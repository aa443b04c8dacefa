/// \file
/// bmp_set_palette, bmp_display.
#include "core/dib_info.h"
#include "core/export.h"
#include "platform/device_context.h"

using namespace zepbmp;

BMP_EXPORT void BMP_CALL bmp_set_palette(Bitmap* bitmap, int32_t index, uint32_t color) {
    DibHeader* const header = dib_info_of(*bitmap);
    if (header && bitmap->format == BMP_FMT_RGB8 && index >= 0 && index < kPaletteColors)
        palette_of(header)[index] = color;
}

BMP_EXPORT int32_t BMP_CALL bmp_display(void* device_context, int32_t dest_x, int32_t dest_y, int32_t width,
                                        int32_t height, Bitmap* bitmap, int32_t src_x, int32_t start_line) {
    const DibHeader* const header = dib_info_of(*bitmap);
    return set_bits_to_device(device_context, {dest_x, dest_y, width, height}, src_x, start_line, *bitmap, header);
}
