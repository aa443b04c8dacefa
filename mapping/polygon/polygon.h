/// \file
/// The roles that the arguments of a polygon mapping play once they are sorted out.
#pragma once

#include <cstdint>

#include "core/bitmap.h"

namespace zepbmp {

struct Polygon {
    const BmpVertex* vertices;
    int32_t count;
    uint32_t flags;  ///< BMP_FIELD..., BMP_MAP_...
};

/// What is drawn into, and beside it the plane that is marked where something is drawn, or null.
struct Target {
    const Bitmap& picture;
    const Bitmap* plane;
};

void draw_textured(const Target& target, const Bitmap* depth, const Bitmap& texture, uint32_t tint,
                   const Polygon& polygon);
void draw_antialiased(const Target& target, const Bitmap& texture, const struct KernelChoice& kernels,
                      const Polygon& polygon);

/// level   0..4096; otherwise nothing is drawn
void draw_solid(const Target& target, uint32_t color, int32_t level, const Polygon& polygon);

}  // namespace zepbmp
