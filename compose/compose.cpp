/// \file
/// bmp_compose and bmp_compose_color: which lines, which pixels, which kernel.
#include "core/bitmap.h"
#include "core/export.h"
#include "core/kernel_tables.h"

namespace zepbmp {
namespace {

/// The first line that an operation visits of one bitmap, and how a kernel gets from one to the next.
struct Plane {
    uint8_t* first;
    ptrdiff_t skip;

    Plane(const Bitmap& bitmap, FieldLines lines, int32_t bytes_per_line)
        : first(line_address(bitmap, lines.first)),
          skip(static_cast<ptrdiff_t>(bitmap.pitch) * lines.step - bytes_per_line) {}

    const uint16_t* weights() const { return reinterpret_cast<const uint16_t*>(first); }
};

bool is_aligned(const Bitmap& bitmap) {
    const auto bits = reinterpret_cast<uintptr_t>(bitmap.pixels) | static_cast<uintptr_t>(bitmap.pitch);
    return bits % kLineAlignment == 0;
}

int32_t round_up(int32_t value, int32_t multiple) {
    return static_cast<int32_t>((static_cast<uint32_t>(value) + static_cast<uint32_t>(multiple - 1)) &
                                ~static_cast<uint32_t>(multiple - 1));
}

void compose_at_level(const Bitmap& dest, const Bitmap& src1, const Bitmap& src2, int32_t level, FieldLines lines) {
    const bool aligned = is_aligned(dest) && is_aligned(src1) && is_aligned(src2);
    const int32_t bytes = aligned ? dest.pitch : round_up(dest.pitch, 4);
    const Plane d(dest, lines, bytes), a(src1, lines, bytes), b(src2, lines, bytes);
    ComposeLevelKernel* const kernel = aligned ? compose_slot.level_aligned : compose_slot.level;
    kernel(bytes, lines.count(dest.height), d.first, d.skip, a.first, a.skip,
           static_cast<int32_t>(static_cast<uint32_t>(kWeightFull) - static_cast<uint32_t>(level)), b.first, b.skip,
           level);
}

/// A kernel, and the pixels of a line that it is given: rounded up into the padding, to whole vector groups.
struct MaskedPath {
    ComposeMixKernel* kernel;
    int32_t count;
};

MaskedPath masked_path(const Bitmap& dest, const Bitmap& src1, const Bitmap& src2, const Bitmap& mask) {
    const bool bytes = mask.format == BMP_FMT_A8;
    if (dest.format == BMP_FMT_RGBQ)
        return bytes ? MaskedPath{compose_slot.rgbq_a8, round_up(dest.width, 2)}
                     : MaskedPath{compose_slot.rgbq_w16, dest.width};
    // The alignment of an 8-bit mask does not matter: its kernels load half a register of it.
    const bool aligned = is_aligned(dest) && is_aligned(src1) && is_aligned(src2) && (bytes || is_aligned(mask));
    if (aligned)
        return {bytes ? compose_slot.yuy2_a8_aligned : compose_slot.yuy2_w16_aligned, round_up(dest.width, 8)};
    return {bytes ? compose_slot.yuy2_a8 : compose_slot.yuy2_w16, round_up(dest.width, 4)};
}

int32_t pixel_bytes(const Bitmap& dest) { return dest.format == BMP_FMT_RGBQ ? 4 : 2; }

bool can_compose(const Bitmap& dest) { return dest.format == BMP_FMT_RGBQ || dest.format == BMP_FMT_YUY2; }

void compose_masked(const Bitmap& dest, const Bitmap& src1, const Bitmap& src2, const Bitmap& mask, FieldLines lines) {
    const MaskedPath path = masked_path(dest, src1, src2, mask);
    const int32_t bytes = path.count * pixel_bytes(dest);
    const int32_t mask_bytes = path.count * (mask.format == BMP_FMT_A8 ? 1 : 2);
    const Plane d(dest, lines, bytes), a(src1, lines, bytes), b(src2, lines, bytes), m(mask, lines, mask_bytes);
    path.kernel(path.count, lines.count(dest.height), d.first, d.skip, a.first, a.skip, b.first, b.skip, m.first,
                m.skip);
}

}  // namespace
}  // namespace zepbmp

using namespace zepbmp;

BMP_EXPORT int32_t BMP_CALL bmp_compose(Bitmap* dest, const Bitmap* src1, const Bitmap* src2, const void* mask,
                                        uint32_t flags) {
    const FieldLines lines = field_lines(flags);
    if (flags & BMP_COMPOSE_LEVEL)
        compose_at_level(*dest, *src1, *src2, static_cast<int32_t>(reinterpret_cast<intptr_t>(mask)), lines);
    else if (can_compose(*dest))
        compose_masked(*dest, *src1, *src2, *static_cast<const Bitmap*>(mask), lines);
    return 0;
}

BMP_EXPORT int32_t BMP_CALL bmp_compose_color(Bitmap* dest, const Bitmap* src1, const Bitmap* src2, const Bitmap* mask1,
                                              const Bitmap* mask2, uint32_t color, uint32_t flags) {
    if (!can_compose(*dest))
        return 0;
    const bool rgbq = dest->format == BMP_FMT_RGBQ;
    const FieldLines lines = field_lines(flags);
    const int32_t count = dest->width, line_count = lines.count(dest->height);
    const int32_t bytes = count * pixel_bytes(*dest), mask_bytes = count * 2;
    const Plane d(*dest, lines, bytes), a(*src1, lines, bytes), m1(*mask1, lines, mask_bytes);
    if (mask2) {
        const Plane b(*src2, lines, bytes), m2(*mask2, lines, mask_bytes);
        ComposeBandKernel* const kernel = rgbq ? compose_slot.color_rgbq_band : compose_slot.color_yuy2_band;
        kernel(count, line_count, d.first, d.skip, a.first, a.skip, b.first, b.skip, m1.weights(), m1.skip,
               m2.weights(), m2.skip, color);
    } else {
        ComposeColorKernel* const kernel = rgbq ? compose_slot.color_rgbq : compose_slot.color_yuy2;
        kernel(count, line_count, d.first, d.skip, a.first, a.skip, m1.weights(), m1.skip, color);
    }
    return 0;
}
