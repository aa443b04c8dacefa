#include "mapping/polygon/kernel_choice.h"

#include "core/kernel_tables.h"

namespace zepbmp {
namespace {

constexpr int32_t kAnyFormat = -1;

struct Row {
    uint32_t texture;
    int32_t destination;
    int texel_bytes;  ///< a destination's pixels are at least as large
    int affine, perspective, depth, tint;
};

// clang-format off
constexpr Row kRows[] = {
    // texture     destination   bytes  affine           perspective     with depth      BMP_MAP_EXTRA
    {BMP_FMT_YUY2, kAnyFormat,   2,     kSpanYuy2Affine, kSpanYuy2Persp, kSpanYuy2Depth, kNoGroup},
    {BMP_FMT_RGBQ, kAnyFormat,   4,     kSpanRgbqAffine, kSpanRgbqPersp, kSpanRgbqDepth, kNoGroup},
    {BMP_FMT_PWRW, BMP_FMT_PWRW, 2,     kSpanPwrwAffine, kSpanPwrwPersp, kNoGroup,       kNoGroup},
    {BMP_FMT_A8,   BMP_FMT_YUY2, 1,     kNoGroup,        kNoGroup,       kNoGroup,       kSpanA8TintYuy2},
    {BMP_FMT_A8,   BMP_FMT_RGBQ, 1,     kNoGroup,        kNoGroup,       kNoGroup,       kSpanA8TintRgbq},
};
// clang-format on

bool fits(const Row& row, const Bitmap& destination, const Bitmap& texture) {
    return row.texture == texture.format && destination.bytes_per_pixel >= row.texel_bytes &&
           (row.destination == kAnyFormat || destination.format == static_cast<uint32_t>(row.destination));
}

/// Whether every vertex has the same perspective weight.
bool is_affine(const Polygon& polygon) {
    for (int32_t i = 0; i < polygon.count; ++i) {
        if (polygon.vertices[i].w != polygon.vertices[0].w)
            return false;
    }
    return true;
}

}  // namespace

KernelChoice choose_kernels(const Bitmap& destination, const Bitmap& texture, bool has_depth, const Polygon& polygon) {
    const uint32_t edge_flags = polygon.flags & (BMP_MAP_ANTIALIAS | BMP_MAP_NO_FILTER);
    const bool antialiased = edge_flags == BMP_MAP_ANTIALIAS && !has_depth;
    for (const Row& row : kRows) {
        if (!fits(row, destination, texture))
            continue;
        if (has_depth)
            return {row.depth, true, false};
        if (polygon.flags & BMP_MAP_EXTRA)
            return {antialiased ? kNoGroup : row.tint, true, false};
        if (is_affine(polygon))
            return {row.affine, false, antialiased};
        return {row.perspective, true, antialiased};
    }
    return {kNoGroup, false, false};
}

}  // namespace zepbmp
