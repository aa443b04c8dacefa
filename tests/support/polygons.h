/// \file
/// Calls of bmp_map_polygon, and polygons and sources for them.
#pragma once

#include <span>
#include <vector>

#include "owned_bitmap.h"

namespace zepbmp::test {

using Polygon = std::vector<BmpVertex>;

/// The arguments but for the polygon; what is not named is null or 0.
struct MapArguments {
    Bitmap* dst = nullptr;
    Bitmap* dst2 = nullptr;
    Bitmap* aux = nullptr;
    const void* tex_a = nullptr;
    const void* tex_b = nullptr;
    uint32_t flags = 0;
};

inline void map_polygon(const MapArguments& arguments, const Polygon& polygon) {
    library().map_polygon(arguments.dst, arguments.dst2, arguments.aux, arguments.tex_a, arguments.tex_b,
                          polygon.data(), static_cast<int32_t>(polygon.size()), arguments.flags);
}

struct Area {
    float left, top, right, bottom;
};

inline Area whole(const OwnedBitmap& bitmap) {
    return {0, 0, static_cast<float>(bitmap->width), static_cast<float>(bitmap->height)};
}

/// The rectangle `to` showing the rectangle `from` of the source; begins top left and runs clockwise.
inline Polygon quad(const Area& to, const Area& from, float w = 1) {
    return {{from.left, from.top, w, to.left, to.top},
            {from.right, from.top, w, to.right, to.top},
            {from.right, from.bottom, w, to.right, to.bottom},
            {from.left, from.bottom, w, to.left, to.bottom}};
}

/// The rectangle `area`, each pixel showing the source pixel at its own place.
inline Polygon in_place(const Area& area) { return quad(area, area); }

/// A polygon whose source does not matter: u = x, v = y.
inline Polygon outline(std::initializer_list<std::pair<float, float>> corners) {
    Polygon polygon;
    for (const auto& [x, y] : corners)
        polygon.push_back({x, y, 1, x, y});
    return polygon;
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

inline OwnedBitmap make_depth(int width, int height, float depth) {
    OwnedBitmap bitmap = make_bitmap(width, height, BMP_FMT_QUAD3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < bitmap->pitch / 4; ++x)
            reinterpret_cast<float*>(line(bitmap, y))[x] = depth;
    return bitmap;
}

inline float* depths(const OwnedBitmap& bitmap, int y) { return reinterpret_cast<float*>(line(bitmap, y)); }

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
