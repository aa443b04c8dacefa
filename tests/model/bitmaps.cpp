// Creation, release, addressing.
//
// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "arithmetic.h"
#include "model.h"

namespace model {

namespace {

constexpr bool kTargetIs64Bit = sizeof(void*) == 8;

int32_t bytes_per_pixel_of(int32_t format, int32_t height) {
    switch (format) {
        case BMP_FMT_YUY2:
        case BMP_FMT_PWRW: return 2;
        case BMP_FMT_RGBQ:
        case BMP_FMT_QUAD3:
        case BMP_FMT_QUAD4:
        case BMP_FMT_QUAD5: return 4;
        case BMP_FMT_RGB8:
        case BMP_FMT_A8: return 1;
        default: return height;
    }
}

}  // namespace

Bitmap* bmp_create(int32_t width, int32_t height, int32_t format, uint32_t flags) {
    const int32_t bytes_per_pixel = bytes_per_pixel_of(format, height);
    int32_t pitch;
    size_t block_size;
    if (kTargetIs64Bit) {
        if (width < 0 || height < 0) {
            return nullptr;
        }
        const uint64_t line_bytes = static_cast<uint64_t>(bytes_per_pixel) * static_cast<uint64_t>(width);
        const uint64_t wide_pitch = (line_bytes + 15) & ~UINT64_C(15);
        if (wide_pitch > INT32_MAX) {
            return nullptr;
        }
        pitch = static_cast<int32_t>(wide_pitch);
        block_size = static_cast<size_t>(wide_pitch) * static_cast<size_t>(height) + sizeof(Bitmap) + 16;
    } else {
        pitch = wrap_add(wrap_mul(bytes_per_pixel, width), 15) & ~15;
        block_size = static_cast<uint32_t>(pitch) * static_cast<uint32_t>(height) + 64u;
    }

    void* block = (flags & BMP_CREATE_ZERO) ? std::calloc(block_size, 1) : std::malloc(block_size);
    if (block == nullptr) {
        return nullptr;
    }

    Bitmap* bitmap = static_cast<Bitmap*>(block);
    const uintptr_t after_header = reinterpret_cast<uintptr_t>(block) + sizeof(Bitmap);
    bitmap->pitch = pitch;
    bitmap->width = width;
    bitmap->pixels = reinterpret_cast<uint8_t*>((after_header + 15) & ~static_cast<uintptr_t>(15));
    bitmap->height = height;
    bitmap->bytes_per_pixel = bytes_per_pixel;
    bitmap->format = static_cast<uint32_t>(format);
    bitmap->dib_info = nullptr;
    bitmap->create_flags = flags & 3;
    bitmap->bit_count = wrap_mul(bytes_per_pixel, 8);

    if (format == BMP_FMT_YUY2) {
        bitmap->fourcc = 0x32595559;
    } else if (format == BMP_FMT_RGBQ) {
        bitmap->fourcc = 0x51424752;
    } else if (format == BMP_FMT_PWRW) {
        bitmap->fourcc = 0x57525750;
    } else if (format == BMP_FMT_RGB8) {
        bitmap->fourcc = 0x38424752;
    }

    if (bitmap->create_flags == 0) {
        bitmap->interlace = 0;
    } else if (bitmap->create_flags == 2) {
        bitmap->interlace = 1;
    } else if (bitmap->create_flags == 3) {
        bitmap->interlace = 2;
    }
    return bitmap;
}

void bmp_destroy(Bitmap* bitmap) {
    if (bitmap == nullptr) {
        return;
    }
    std::free(bitmap->dib_info);
    std::free(bitmap);
}

// On integers: an address outside the block is a legal answer. On a 32-bit target the sum wraps at 32 bits.
uint8_t* bmp_pointer(const Bitmap* bitmap, int32_t x, int32_t y) {
    const uintptr_t line = static_cast<uintptr_t>(intptr_t{y}) * static_cast<uintptr_t>(intptr_t{bitmap->pitch});
    const uintptr_t column =
        static_cast<uintptr_t>(intptr_t{x}) * static_cast<uintptr_t>(intptr_t{bitmap->bytes_per_pixel});
    return reinterpret_cast<uint8_t*>(reinterpret_cast<uintptr_t>(bitmap->pixels) + line + column);
}

}  // namespace model
