// Fills, copies, blits, field interpolation.
//
// SPDX-License-Identifier: MIT
#include "arithmetic.h"
#include "model.h"

namespace model {

namespace {

// 4-byte words from left to right, then the last 0 to 3 bytes. Where the spans overlap, this order shows.
void copy_bytes(uint8_t* to, const uint8_t* from, size_t bytes) {
    size_t i = 0;
    for (; i + 4 <= bytes; i += 4) {
        uint32_t word;
        std::memcpy(&word, from + i, 4);
        std::memcpy(to + i, &word, 4);
    }
    for (; i < bytes; ++i) {
        to[i] = from[i];
    }
}

}  // namespace

void bmp_clear(Bitmap* bitmap, uint32_t flags) {
    const int64_t first = flags & BMP_FIELD_ODD;
    const int64_t step = (flags & BMP_FIELD) ? 2 : 1;
    for (int64_t y = first; y < bitmap->height; y += step) {
        uint8_t* line = model::bmp_pointer(bitmap, 0, static_cast<int32_t>(y));
        for (int32_t i = 0; i < bitmap->pitch; ++i) {
            line[i] = 0;
        }
    }
}

void bmp_copy(Bitmap* destination, const Bitmap* source, uint32_t flags) {
    if (!(flags & BMP_FIELD)) {
        const size_t bytes =
            static_cast<size_t>(static_cast<uint32_t>(source->pitch)) * static_cast<uint32_t>(source->height);
        copy_bytes(destination->pixels, source->pixels, bytes);
        return;
    }
    const int32_t first = flags & BMP_FIELD_ODD;
    const int32_t lines = wrap_add(wrap_sub(destination->height, first), 1) >> 1;
    for (int32_t k = 0; k < lines; ++k) {
        const int32_t y = first + 2 * k;
        copy_bytes(model::bmp_pointer(destination, 0, y), model::bmp_pointer(source, 0, y),
                   static_cast<size_t>(destination->pitch));
    }
}

void bmp_blt(Bitmap* destination, int32_t dest_x, int32_t dest_y, int32_t width, int32_t height, const Bitmap* source,
             int32_t src_x, int32_t src_y, uint32_t flags) {
    if (width < 1 || height < 1) {
        return;  // a rectangle without pixels
    }
    const int32_t src_right = wrap_add(src_x, width);
    const int32_t src_bottom = wrap_add(src_y, height);
    if (src_x >= source->width || src_y >= source->height || src_right < 1 || src_bottom < 1) {
        return;
    }
    if (src_x < 0) {
        width = src_right;
        dest_x = wrap_sub(dest_x, src_x);
        src_x = 0;
    }
    if (src_y < 0) {
        height = src_bottom;
        dest_y = wrap_sub(dest_y, src_y);
        src_y = 0;
    }
    if (src_right > source->width) {
        width = wrap_sub(width, wrap_sub(src_right, source->width));
    }
    if (src_bottom > source->height) {
        height = wrap_sub(height, wrap_sub(src_bottom, source->height));
    }

    const int32_t dest_right = wrap_add(dest_x, width);
    const int32_t dest_bottom = wrap_add(dest_y, height);
    if (dest_x >= destination->width || dest_y >= destination->height || dest_right < 1 || dest_bottom < 1) {
        return;
    }
    // The source origin stays: the left (top) pixels land at 0, the right (bottom) ones are dropped.
    if (dest_x < 0) {
        width = dest_right;
        dest_x = 0;
    }
    if (dest_y < 0) {
        height = dest_bottom;
        dest_y = 0;
    }
    if (dest_right > destination->width) {
        width = wrap_sub(width, wrap_sub(dest_right, destination->width));
    }
    if (dest_bottom > destination->height) {
        height = wrap_sub(height, wrap_sub(dest_bottom, destination->height));
    }

    int32_t step = 1;
    if (flags & BMP_FIELD) {
        step = 2;
        if ((static_cast<uint32_t>(dest_y) ^ flags) & 1) {
            src_y = wrap_add(src_y, 1);
            dest_y = wrap_add(dest_y, 1);
            height = wrap_sub(height, 1);
        }
        height = wrap_add(height, 1) / 2;
    }
    if (width < 1 || height < 1) {
        return;
    }

    const size_t bytes = static_cast<size_t>(destination->bytes_per_pixel) * static_cast<size_t>(width);
    for (int32_t k = 0; k < height; ++k) {
        copy_bytes(model::bmp_pointer(destination, dest_x, dest_y + k * step),
                   model::bmp_pointer(source, src_x, src_y + k * step), bytes);
    }
}

// Lines of both bitmaps are found with the destination's pitch.
void bmp_interporate(Bitmap* destination, const Bitmap* source, uint32_t flags) {
    const int32_t height = destination->height;
    const int32_t field = flags & BMP_FIELD_ODD;
    const size_t pitch = static_cast<size_t>(destination->pitch);
    if (field >= height) {
        return;
    }
    const auto to = [&](int32_t y) { return destination->pixels + static_cast<size_t>(y) * pitch; };
    const auto from = [&](int32_t y) { return source->pixels + static_cast<size_t>(y) * pitch; };

    if (field == 1) {
        copy_bytes(to(0), from(1), pitch);
    }
    copy_bytes(to(field), from(field), pitch);

    int32_t last_copied = field;
    while (height - last_copied > 2) {
        const uint8_t* above = from(last_copied);
        const uint8_t* below = from(last_copied + 2);
        uint8_t* between = to(last_copied + 1);
        for (size_t i = 0; i < pitch; ++i) {
            between[i] = static_cast<uint8_t>((above[i] + below[i] + 1) >> 1);
        }
        copy_bytes(to(last_copied + 2), below, pitch);
        last_copied += 2;
    }
    if (height - last_copied == 2) {
        copy_bytes(to(last_copied + 1), from(last_copied), pitch);
    }
}

}  // namespace model
