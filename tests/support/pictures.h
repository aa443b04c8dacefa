/// \file
/// Bitmaps with contents that a test knows, and their lines as numbers.
#pragma once

#include <vector>

#include "owned_bitmap.h"

namespace zepbmp::test {

struct Area {
    float left, top, right, bottom;
};

inline Area whole(const OwnedBitmap& bitmap) {
    return {0, 0, static_cast<float>(bitmap->width), static_cast<float>(bitmap->height)};
}

/// Weight 100 y + x at (x, y).
inline OwnedBitmap numbered_weights(int width, int height, uint32_t flags = 0) {
    OwnedBitmap bitmap = make_bitmap(width, height, BMP_FMT_PWRW, flags | BMP_CREATE_ZERO);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            weights(bitmap, y)[x] = static_cast<uint16_t>(100 * y + x);
    return bitmap;
}

/// Byte `first + 50 y + i` at byte i of line y, padding included.
inline OwnedBitmap numbered_bytes(int width, int height, int format, int first, uint32_t flags = 0) {
    OwnedBitmap bitmap = make_bitmap(width, height, format, flags | BMP_CREATE_ZERO);
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < bitmap->pitch; ++i)
            line(bitmap, y)[i] = static_cast<uint8_t>(first + 50 * y + i);
    return bitmap;
}

/// A picture with these bytes as its lines; 0xaa behind them, to the pitch.
inline OwnedBitmap make_picture(int width, int format, const std::vector<std::vector<int>>& lines, uint32_t flags = 0) {
    OwnedBitmap bitmap = make_bitmap(width, static_cast<int>(lines.size()), format, flags | BMP_CREATE_ZERO);
    std::memset(bitmap->pixels, 0xaa, lines_of(bitmap.get()).size());
    for (size_t y = 0; y < lines.size(); ++y)
        for (size_t i = 0; i < lines[y].size(); ++i)
            line(bitmap, static_cast<int>(y))[i] = static_cast<uint8_t>(lines[y][i]);
    return bitmap;
}

inline std::vector<int> bytes_of_line(const OwnedBitmap& bitmap, int y) {
    return bytes_at(line(bitmap, y), bitmap->width * bitmap->bytes_per_pixel);
}

inline std::vector<std::vector<int>> all_weights(const OwnedBitmap& bitmap) {
    std::vector<std::vector<int>> lines;
    for (int y = 0; y < bitmap->height; ++y)
        lines.push_back(weights_of_line(bitmap, y));
    return lines;
}

}  // namespace zepbmp::test
