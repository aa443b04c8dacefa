/// \file
/// The roles that the arguments of a polygon mapping play once they are sorted out.
#pragma once

#include <cstdint>

#include "core/bitmap.h"

namespace zepbmp {

struct KernelChoice;
struct Texture;

struct Polygon {
    const BmpVertex* vertices;
    int32_t count;
    uint32_t flags;  ///< BMP_FIELD..., BMP_MAP_...
};

/// The smallest and the largest coordinates of a polygon's corners.
struct Bounds {
    float left, top, right, bottom;

    explicit Bounds(const Polygon& polygon)
        : left(polygon.vertices[0].x), top(polygon.vertices[0].y), right(left), bottom(top) {
        for (int32_t i = 1; i < polygon.count; ++i) {
            const float x = polygon.vertices[i].x, y = polygon.vertices[i].y;
            left = x < left ? x : left;
            right = x > right ? x : right;
            top = y < top ? y : top;
            bottom = y > bottom ? y : bottom;
        }
    }
};

/// With BMP_FIELD the lines of BMP_FIELD_ODD's parity, else all.
class SelectedLines {
public:
    explicit SelectedLines(uint32_t flags)
        : mask_(flags & BMP_FIELD ? 1 : 0), parity_(flags & BMP_FIELD ? static_cast<int32_t>(flags & 1) : 0) {}

    bool operator()(int32_t line) const { return (line & mask_) == parity_; }
    int32_t step() const { return mask_ + 1; }

private:
    int32_t mask_, parity_;
};

/// What is drawn into, and beside it the plane that is marked where something is drawn, or null.
struct Target {
    const Bitmap& picture;
    const Bitmap* plane;
};

void draw_textured(const Target& target, const Bitmap* depth, const Bitmap& texture, uint32_t tint,
                   const Polygon& polygon);
void draw_antialiased(const Target& target, const Texture& texture, const KernelChoice& kernels,
                      const Polygon& polygon);

/// level   0..4096; otherwise nothing is drawn
void draw_solid(const Target& target, uint32_t color, int32_t level, const Polygon& polygon);

}  // namespace zepbmp
