/// \file
/// Calls of bmp_map_polygon, and polygons and sources for them.
#pragma once

#include <span>
#include <vector>

#include "pictures.h"

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

inline OwnedBitmap make_depth(int width, int height, float depth) {
    OwnedBitmap bitmap = make_bitmap(width, height, BMP_FMT_QUAD3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < bitmap->pitch / 4; ++x)
            reinterpret_cast<float*>(line(bitmap, y))[x] = depth;
    return bitmap;
}

inline float* depths(const OwnedBitmap& bitmap, int y) { return reinterpret_cast<float*>(line(bitmap, y)); }

}  // namespace zepbmp::test
