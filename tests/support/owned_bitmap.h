/// \file
/// Bitmaps that the library made and frees.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "frame.h"
#include "library.h"

namespace zepbmp::test {

struct DestroyBitmap {
    void operator()(Bitmap* bitmap) const { library().destroy(bitmap); }
};
using OwnedBitmap = std::unique_ptr<Bitmap, DestroyBitmap>;

inline OwnedBitmap make_bitmap(int width, int height, int format, uint32_t flags = BMP_CREATE_ZERO) {
    OwnedBitmap bitmap(library().create(width, height, format, flags));
    if (!bitmap)
        ADD_FAILURE() << "no bitmap of " << width << " x " << height;
    return bitmap;
}

/// Every byte of every line, padding included.
inline OwnedBitmap make_filled(int width, int height, int format, int byte) {
    OwnedBitmap bitmap = make_bitmap(width, height, format);
    std::memset(bitmap->pixels, byte, lines_of(bitmap.get()).size());
    return bitmap;
}

inline OwnedBitmap make_noise(int width, int height, int format, uint64_t seed) {
    OwnedBitmap bitmap = make_bitmap(width, height, format);
    Random random(seed);
    fill_noise(random, lines_of(bitmap.get()));
    return bitmap;
}

inline OwnedBitmap make_weights(int width, int height, int weight) {
    OwnedBitmap bitmap = make_bitmap(width, height, BMP_FMT_PWRW);
    for (int i = 0; i < bitmap->pitch / 2 * height; ++i)
        reinterpret_cast<uint16_t*>(bitmap->pixels)[i] = static_cast<uint16_t>(weight);
    return bitmap;
}

inline uint8_t* line(const OwnedBitmap& bitmap, int y) { return bitmap->pixels + y * bitmap->pitch; }
inline uint16_t* weights(const OwnedBitmap& bitmap, int y) { return reinterpret_cast<uint16_t*>(line(bitmap, y)); }

inline std::vector<int> weights_of_line(const OwnedBitmap& bitmap, int y) {
    return {weights(bitmap, y), weights(bitmap, y) + bitmap->width};
}
inline std::vector<int> bytes_at(const uint8_t* bytes, int count) { return {bytes, bytes + count}; }
inline std::vector<uint8_t> snapshot(const OwnedBitmap& bitmap) {
    const std::span<uint8_t> lines = lines_of(bitmap.get());
    return {lines.begin(), lines.end()};
}

}  // namespace zepbmp::test
