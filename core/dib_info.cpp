#include "core/dib_info.h"

#include <cstdlib>

namespace zepbmp {
namespace {

constexpr uint32_t kUncompressed = 0;  // BI_RGB, whatever the format: the display converts no colours

/// Toward zero; 0 where there is no quotient. Formats that are not known have pixels of any size.
int32_t quotient(int32_t a, int32_t b) {
    if (b == 0)
        return 0;
    return static_cast<int32_t>(int64_t{a} / b);
}

DibHeader describe(const Bitmap& bitmap, uint32_t colors) {
    const auto bytes_per_pixel = static_cast<uint32_t>(bitmap.bytes_per_pixel);
    return {
        .header_bytes = sizeof(DibHeader),
        .width = quotient(bitmap.pitch, bitmap.bytes_per_pixel),
        .height = static_cast<int32_t>(0 - static_cast<uint32_t>(bitmap.height)),
        .planes = 1,
        .bits_per_pixel = static_cast<uint16_t>(bytes_per_pixel * 8),
        .compression = kUncompressed,
        .image_bytes = 0,
        .pixels_per_meter_x = 0,
        .pixels_per_meter_y = 0,
        .colors_used = colors,
        .colors_important = 0,
    };
}

DibHeader* build(const Bitmap& bitmap) {
    const DibHeader header = describe(bitmap, bitmap.format == BMP_FMT_RGB8 ? kPaletteColors : 0);
    // Windows reads a whole table behind every 8-bit header, also where no colour counts as used.
    const uint32_t colors = header.bits_per_pixel == 8 ? kPaletteColors : 0;
    auto* const built = static_cast<DibHeader*>(std::malloc(sizeof(DibHeader) + colors * sizeof(uint32_t)));
    if (!built)
        return nullptr;
    *built = header;
    for (uint32_t i = 0; i < colors; ++i)
        palette_of(built)[i] = i * 0x010101;
    return built;
}

}  // namespace

DibHeader* dib_info_of(Bitmap& bitmap) {
    if (!bitmap.dib_info)
        bitmap.dib_info = build(bitmap);
    return static_cast<DibHeader*>(bitmap.dib_info);
}

}  // namespace zepbmp
