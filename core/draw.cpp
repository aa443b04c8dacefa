/// \file
/// bmp_draw_rect, bmp_draw_line, bmp_translate_color.
#include <algorithm>

#include "core/arithmetic.h"
#include "core/bitmap.h"
#include "core/export.h"
#include "core/kernel_tables.h"
#include "core/raster.h"

namespace zepbmp {
namespace {

/// Modes of bmp_draw_rect, compared as a whole.
constexpr uint32_t kRectSet = 0, kRectOr = 16, kRectAnd = 32;

/// Where bmp_draw_line's mode holds its operation.
constexpr uint32_t kLineOpMask = 0x70;

constexpr size_t kLinesAhead = 2;  ///< that are asked for, because a rectangle's lines are no long stream

/// Calls `draw(dst, bytes)` for each line of the rectangle, as much of it as lies in the bitmap, or once where its lines
/// follow each other without a gap.
template <class Draw>
void for_each_run(const Bitmap& bitmap, int32_t left, int32_t top, int32_t right, int32_t bottom, Draw draw) {
    left = std::max(left, 0);
    top = std::max(top, 0);
    right = std::min(right, bitmap.width);
    bottom = std::min(bottom, bitmap.height);
    if (left >= right || top >= bottom)
        return;
    const auto lines = static_cast<size_t>(bottom - top);
    const auto bytes = static_cast<size_t>(right - left) * static_cast<size_t>(bitmap.bytes_per_pixel);
    uint8_t* const first = pixel_address(bitmap, left, top);
    const StoreKind store = store_kind(bytes * lines);
    if (bytes == static_cast<size_t>(bitmap.pitch)) {
        draw(first, bytes * lines, store);
    } else {
        const auto pitch = static_cast<size_t>(bitmap.pitch);
        for (size_t y = 0; y < lines; ++y) {
            if (store == kStoreCached)
                line_kernels.prefetch(first + (y + kLinesAhead) * pitch, bytes, 0, 1);
            draw(first + y * pitch, bytes, store);
        }
    }
    if (store == kStoreStreamed)
        line_kernels.end_stream();
}

/// False where the mode has no operation.
bool line_op(uint32_t mode, uint8_t value, RasterOp& op) {
    switch (mode & kLineOpMask) {
        case 0x00: op = RasterOp::set(value); return true;
        case 0x10: op = RasterOp::bit_or(value); return true;
        case 0x20: op = RasterOp::bit_and(value); return true;
        case 0x30: op = RasterOp::bit_xor(value); return true;
        default: return false;
    }
}

void draw_run(uint8_t* dst, size_t bytes, RasterOp op) {
    if (op.keep == 0)
        line_kernels.fill[kStoreCached](dst, bytes, op.flip * 0x01010101u);
    else
        line_kernels.combine(dst, bytes, op.keep, op.flip);
}

struct Delta {
    int32_t length;
    int32_t sign;
};

Delta delta(int32_t from, int32_t to) {
    return to < from ? Delta{wrapping_sub(from, to), -1} : Delta{wrapping_sub(to, from), 1};
}

}  // namespace
}  // namespace zepbmp

using namespace zepbmp;

BMP_EXPORT void BMP_CALL bmp_draw_rect(Bitmap* bitmap, int32_t left, int32_t top, int32_t right, int32_t bottom,
                                       uint32_t color, uint32_t mode) {
    const auto fill = [&](uint32_t value) {
        for_each_run(*bitmap, left, top, right, bottom,
                     [=](uint8_t* dst, size_t bytes, StoreKind store) { line_kernels.fill[store](dst, bytes, value); });
    };
    const auto combine = [&](RasterOp op) {
        for_each_run(*bitmap, left, top, right, bottom, [=](uint8_t* dst, size_t bytes, StoreKind) {
            line_kernels.combine(dst, bytes, op.keep, op.flip);
        });
    };
    const auto value = static_cast<uint8_t>(color);
    switch (bitmap->format) {
        case BMP_FMT_RGBQ:
            if (mode == kRectSet)
                fill(color);
            break;
        case BMP_FMT_PWRW:
            if (mode == kRectSet)
                fill((color & 0xffff) * 0x00010001u);
            break;
        case BMP_FMT_RGB8:  // can be masked, not set
            if (mode == kRectOr)
                combine(RasterOp::bit_or(value));
            else if (mode == kRectAnd)
                combine(RasterOp::bit_and(value));
            break;
        default: break;
    }
}

BMP_EXPORT void BMP_CALL bmp_draw_line(Bitmap* bitmap, int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint32_t color,
                                       uint32_t mode) {
    RasterOp op;
    if (bitmap->format != BMP_FMT_RGB8 || !line_op(mode, static_cast<uint8_t>(color), op))
        return;
    const Delta x = delta(x0, x1), y = delta(y0, y1);
    uint8_t* const first = pixel_address(*bitmap, x0, y0);
    if (y.length == 0) {
        const auto pixels = static_cast<size_t>(x.length);
        draw_run(x.sign > 0 ? first : first - x.length + 1, pixels, op);
        return;
    }
    const ptrdiff_t x_step = x.sign, y_step = ptrdiff_t{y.sign} * bitmap->pitch;
    if (y.length > x.length)
        draw_walk(first, {y.length, x.length, y_step, x_step}, op);
    else
        draw_walk(first, {x.length, y.length, x_step, y_step}, op);
}

BMP_EXPORT uint32_t BMP_CALL bmp_translate_color(const void*, uint32_t color) { return __builtin_bswap32(color) >> 8; }
