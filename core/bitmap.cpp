/// \file
/// bmp_create, bmp_destroy, bmp_pointer: the record and its block.
#include "core/bitmap.h"

#include <cstdlib>

#include "core/export.h"

namespace zepbmp {
namespace {

static_assert(sizeof(void*) != 4 || sizeof(Bitmap) == 48, "twelve words on a 32-bit target");

constexpr uint32_t kCreateFlagsKept = 3;

/// Bytes per pixel; a format that is not known takes the height for it.
int32_t pixel_bytes(uint32_t format, int32_t height) {
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

constexpr uint32_t fourcc(const char (&code)[5]) {
    uint32_t word = 0;
    for (int i = 3; i >= 0; --i)
        word = word << 8 | static_cast<uint8_t>(code[i]);
    return word;
}

/// Line length and block size in bytes.
struct Layout {
    int32_t bytes_per_pixel;
    int32_t pitch;
    size_t block_bytes;
};

/// The header and, for the worst alignment that an allocator gives, what lies between it and line 0.
constexpr size_t kHeaderBytes = sizeof(Bitmap) + kLineAlignment;

/// False where a 64-bit target can't hold the size; a 32-bit target wraps, as hosts have always seen it.
bool lay_out(int32_t width, int32_t height, uint32_t format, Layout& layout) {
    layout.bytes_per_pixel = pixel_bytes(format, height);
    if constexpr (sizeof(size_t) == 4) {
        const uint32_t line_bytes = static_cast<uint32_t>(layout.bytes_per_pixel) * static_cast<uint32_t>(width);
        const uint32_t pitch = (line_bytes + (kLineAlignment - 1)) & ~static_cast<uint32_t>(kLineAlignment - 1);
        layout.pitch = static_cast<int32_t>(pitch);
        layout.block_bytes = pitch * static_cast<uint32_t>(height) + kHeaderBytes;
        return true;
    } else {
        if (width < 0 || height < 0)
            return false;
        const int64_t line_bytes = static_cast<int64_t>(layout.bytes_per_pixel) * width;
        if (line_bytes > INT32_MAX - (kLineAlignment - 1))
            return false;
        layout.pitch = static_cast<int32_t>((line_bytes + (kLineAlignment - 1)) & ~int64_t{kLineAlignment - 1});
        layout.block_bytes = static_cast<size_t>(int64_t{layout.pitch} * height) + kHeaderBytes;
        return true;
    }
}

/// From the record to line 0: the first 16-byte boundary at or after its end.
constexpr size_t kFirstLine = (sizeof(Bitmap) + (kLineAlignment - 1)) & ~size_t{kLineAlignment - 1};

/// The widest registers and the cache lines. A record is placed so that its line 0 begins at a multiple of it; what the
/// allocator gave is kept in the word before the record.
constexpr size_t kBestAlignment = 64;
constexpr size_t kPlacement = sizeof(void*) + kBestAlignment - 1;

void*& allocation_of(void* block) { return static_cast<void**>(block)[-1]; }

void* allocate_block(size_t bytes, bool zero) {
    if (bytes < kHeaderBytes)  // a size that wrapped
        bytes = kHeaderBytes;
    if (bytes > SIZE_MAX - kPlacement)
        return nullptr;
    void* const allocation = zero ? std::calloc(1, bytes + kPlacement) : std::malloc(bytes + kPlacement);
    if (!allocation)
        return nullptr;
    const uintptr_t line = (reinterpret_cast<uintptr_t>(allocation) + kPlacement + kFirstLine) & ~(kBestAlignment - 1);
    void* const block = reinterpret_cast<void*>(line - kFirstLine);
    allocation_of(block) = allocation;
    return block;
}

void describe_format(Bitmap& bitmap) {
    switch (bitmap.format) {
        case BMP_FMT_YUY2: bitmap.fourcc = fourcc("YUY2"); break;
        case BMP_FMT_RGBQ: bitmap.fourcc = fourcc("RGBQ"); break;
        case BMP_FMT_PWRW: bitmap.fourcc = fourcc("PWRW"); break;
        case BMP_FMT_RGB8: bitmap.fourcc = fourcc("RGB8"); break;
        default: break;  // stays as allocated
    }
    switch (bitmap.create_flags) {
        case 0: bitmap.interlace = 0; break;
        case 2: bitmap.interlace = 1; break;
        case 3: bitmap.interlace = 2; break;
        default: break;  // stays as allocated
    }
}

}  // namespace
}  // namespace zepbmp

using namespace zepbmp;

BMP_EXPORT Bitmap* BMP_CALL bmp_create(int32_t width, int32_t height, int32_t format, uint32_t flags) {
    Layout layout;
    if (!lay_out(width, height, static_cast<uint32_t>(format), layout))
        return nullptr;
    void* const block = allocate_block(layout.block_bytes, (flags & BMP_CREATE_ZERO) != 0);
    if (!block)
        return nullptr;
    Bitmap* const bitmap = static_cast<Bitmap*>(block);
    bitmap->width = width;
    bitmap->height = height;
    bitmap->pitch = layout.pitch;
    bitmap->bit_count = static_cast<int32_t>(static_cast<uint32_t>(layout.bytes_per_pixel) * 8);
    bitmap->pixels = static_cast<uint8_t*>(block) + kFirstLine;
    bitmap->dib_info = nullptr;
    bitmap->bytes_per_pixel = layout.bytes_per_pixel;
    bitmap->create_flags = flags & kCreateFlagsKept;
    bitmap->format = static_cast<uint32_t>(format);
    describe_format(*bitmap);
    return bitmap;
}

BMP_EXPORT void BMP_CALL bmp_destroy(Bitmap* bitmap) {
    if (!bitmap)
        return;
    std::free(bitmap->dib_info);
    std::free(allocation_of(bitmap));
}

BMP_EXPORT uint8_t* BMP_CALL bmp_pointer(const Bitmap* bitmap, int32_t x, int32_t y) {
    return pixel_address(*bitmap, x, y);
}
