#include "mapping/polygon/plane.h"

#include "core/kernel_tables.h"

namespace zepbmp {
namespace {

constexpr uint32_t kMaskMark = kMaskFull * 0x01010101u;
constexpr uint32_t kWeightMark = kWeightFull * 0x00010001u;

}  // namespace

Plane::Plane(const Bitmap* bitmap)
    : bitmap_(bitmap && (bitmap->format == BMP_FMT_A8 || bitmap->format == BMP_FMT_PWRW) ? bitmap : nullptr),
      words_(bitmap_ && bitmap_->format == BMP_FMT_PWRW) {}

void Plane::mark(int32_t line, const PixelRange& pixels) const {
    if (!bitmap_)
        return;
    const size_t bytes = static_cast<size_t>(pixels.end - pixels.first) << (words_ ? 1 : 0);
    line_kernels.fill[kStoreCached](pixel_address(*bitmap_, pixels.first, line), bytes,
                                    words_ ? kWeightMark : kMaskMark);
}

void Plane::blend(int32_t line, const PixelRange& pixels, const uint16_t* coverage, int32_t level) const {
    if (!bitmap_)
        return;
    uint8_t* const at = pixel_address(*bitmap_, pixels.first, line);
    (words_ ? cover_kernels.paint_pwrw : cover_kernels.paint_a8)(
        at, words_ ? kWeightMark : kMaskMark, coverage + pixels.first, pixels.end - pixels.first, level);
}

void Plane::fade(int32_t line, const PixelRange& pixels, int32_t level) const {
    if (!bitmap_)
        return;
    uint8_t* const at = pixel_address(*bitmap_, pixels.first, line);
    (words_ ? cover_kernels.fade_words : cover_kernels.fade_bytes)(at, words_ ? kWeightMark : kMaskMark,
                                                                   pixels.end - pixels.first, level);
}

}  // namespace zepbmp
