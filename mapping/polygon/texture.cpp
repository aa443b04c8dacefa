#include "mapping/polygon/texture.h"

#include "mapping/polygon/units.h"

namespace zepbmp {
namespace {

constexpr int32_t kQuarterLine = kTexel / 4;

int32_t at_most_limit(int32_t size) { return size < kTextureLimit ? size : kTextureLimit; }

}  // namespace

Texture texture_of(const Bitmap& bitmap, uint32_t flags) {
    const int32_t columns = at_most_limit(bitmap.width);
    if (!(bitmap.create_flags & kHoldsFields))
        return {bitmap.pixels, bitmap.pitch,           columns, at_most_limit(bitmap.height),
                bitmap.format, bitmap.bytes_per_pixel, 1.0,     0};
    const bool odd = flags & BMP_FIELD_ODD;
    return {bitmap.pixels + (odd ? bitmap.pitch : 0),
            ptrdiff_t{2} * bitmap.pitch,
            columns,
            at_most_limit(bitmap.height / 2),
            bitmap.format,
            bitmap.bytes_per_pixel,
            0.5,
            odd ? -kQuarterLine : kQuarterLine};
}

}  // namespace zepbmp
