/// \file
/// bmp_blt: a clipped rectangle from one bitmap to another.
#include <cstring>

#include "core/arithmetic.h"
#include "core/bitmap.h"
#include "core/export.h"
#include "core/kernel_tables.h"

namespace zepbmp {
namespace {

struct Rectangle {
    int32_t dest_x, dest_y, width, height, src_x, src_y;
};

/// Clips against the source; what is cut off its left and top moves the destination. Edge sums wrap at 32 bits. False:
/// nothing is left.
bool clip_to_source(Rectangle& r, const Bitmap& source) {
    const int32_t right = wrapping_add(r.src_x, r.width), bottom = wrapping_add(r.src_y, r.height);
    if (r.src_x >= source.width || r.src_y >= source.height || right < 1 || bottom < 1)
        return false;
    if (r.src_x < 0) {
        r.width = right;
        r.dest_x = wrapping_sub(r.dest_x, r.src_x);
        r.src_x = 0;
    }
    if (r.src_y < 0) {
        r.height = bottom;
        r.dest_y = wrapping_sub(r.dest_y, r.src_y);
        r.src_y = 0;
    }
    if (right > source.width)
        r.width = wrapping_sub(r.width, wrapping_sub(right, source.width));
    if (bottom > source.height)
        r.height = wrapping_sub(r.height, wrapping_sub(bottom, source.height));
    return true;
}

/// Clips against the destination. What is cut off its left and top is taken from the rectangle's far end: the source's
/// origin stays.
bool clip_to_destination(Rectangle& r, const Bitmap& destination) {
    const int32_t right = wrapping_add(r.dest_x, r.width), bottom = wrapping_add(r.dest_y, r.height);
    if (r.dest_x >= destination.width || r.dest_y >= destination.height || right < 1 || bottom < 1)
        return false;
    if (r.dest_x < 0) {
        r.width = right;
        r.dest_x = 0;
    }
    if (r.dest_y < 0) {
        r.height = bottom;
        r.dest_y = 0;
    }
    if (right > destination.width)
        r.width = wrapping_sub(r.width, wrapping_sub(right, destination.width));
    if (bottom > destination.height)
        r.height = wrapping_sub(r.height, wrapping_sub(bottom, destination.height));
    return true;
}

/// Keeps the lines whose destination has the parity that `flags` asks for: every second one from there on.
void select_field(Rectangle& r, uint32_t flags) {
    if ((static_cast<uint32_t>(r.dest_y) ^ flags) & 1) {
        ++r.src_y;
        ++r.dest_y;
        --r.height;
    }
    r.height = (r.height + 1) / 2;
}

bool overlap(const uint8_t* a, const uint8_t* b, size_t bytes) {
    const auto p = reinterpret_cast<uintptr_t>(a), q = reinterpret_cast<uintptr_t>(b);
    return (p > q ? p - q : q - p) < bytes;
}

/// Four-byte words from left to right, then single bytes: what a line gets that overlaps its own source.
void copy_words_forward(uint8_t* dst, const uint8_t* src, size_t bytes) {
    for (; bytes >= 4; dst += 4, src += 4, bytes -= 4) {
        uint32_t word;
        std::memcpy(&word, src, sizeof word);
        std::memcpy(dst, &word, sizeof word);
    }
    for (; bytes; --bytes)
        *dst++ = *src++;
}

}  // namespace
}  // namespace zepbmp

using namespace zepbmp;

BMP_EXPORT void BMP_CALL bmp_blt(Bitmap* destination, int32_t dest_x, int32_t dest_y, int32_t width, int32_t height,
                                 const Bitmap* source, int32_t src_x, int32_t src_y, uint32_t flags) {
    if (width < 1 || height < 1)  // edge sums of such a rectangle could wrap to something that looks like one
        return;
    Rectangle r = {dest_x, dest_y, width, height, src_x, src_y};
    if (!clip_to_source(r, *source) || !clip_to_destination(r, *destination))
        return;
    if (flags & BMP_FIELD)
        select_field(r, flags);
    if (r.width < 1 || r.height < 1)
        return;

    const int step = (flags & BMP_FIELD) ? 2 : 1;
    const ptrdiff_t src_step = static_cast<ptrdiff_t>(source->pitch) * step;
    const ptrdiff_t dst_step = static_cast<ptrdiff_t>(destination->pitch) * step;
    const uint8_t* src = pixel_address(*source, r.src_x, r.src_y);
    uint8_t* dst = pixel_address(*destination, r.dest_x, r.dest_y);
    const size_t bytes = static_cast<size_t>(r.width) * static_cast<uint32_t>(destination->bytes_per_pixel);
    const StoreKind store = store_kind(2 * bytes * static_cast<size_t>(r.height));
    const auto copy = line_kernels.copy[store];
    for (int32_t y = 0; y < r.height; ++y, src += src_step, dst += dst_step) {
        if (overlap(dst, src, bytes))
            copy_words_forward(dst, src, bytes);
        else
            copy(dst, src, bytes);
    }
    if (store == kStoreStreamed)
        line_kernels.end_stream();
}
