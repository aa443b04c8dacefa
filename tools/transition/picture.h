#pragma once

#include <memory>
#include <new>

#include "zepbmp.h"

namespace zepbmp::transition {

struct BitmapDeleter {
    void operator()(Bitmap* bitmap) const { bmp_destroy(bitmap); }
};
using BitmapPtr = std::unique_ptr<Bitmap, BitmapDeleter>;

/// Creation flag of a picture whose two fields are of different moments: mapping takes one of them as its source.
constexpr unsigned kTwoFields = 2;

inline BitmapPtr make_bitmap(int width, int height, int format, unsigned create_flags = 0) {
    BitmapPtr bitmap(bmp_create(width, height, format, BMP_CREATE_ZERO | create_flags));
    if (!bitmap)
        throw std::bad_alloc();
    return bitmap;
}

/// The two fields of an interlaced frame, as the flags that select their lines.
constexpr unsigned kWholeFrame = 0;
constexpr unsigned kTopField = BMP_FIELD;
constexpr unsigned kBottomField = BMP_FIELD | BMP_FIELD_ODD;

enum class FieldOrder { kProgressive, kTopFirst, kBottomFirst };

}  // namespace zepbmp::transition
