#include "effects/pinned_quad.h"

namespace zepbmp::effects {

namespace {

constexpr double kLeastArea = 1.0 / 64;  // square pixels, doubled, of a corner's triangle

double doubled_area(const PixelPoint& a, const PixelPoint& b, const PixelPoint& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// 1 / distance of each corner, in units of the first one's. The four points of a plane's rectangle keep
/// z0 p0 - z1 p1 + z2 p2 - z3 p3 = 0 (p = (x, y, 1)), so that a corner's distance z is to the others' as the area of the
/// triangle without it.
std::array<double, 4> nearness(const std::array<PixelPoint, 4>& p) {
    const std::array<double, 4> areas = {doubled_area(p[1], p[2], p[3]), doubled_area(p[0], p[2], p[3]),
                                         doubled_area(p[0], p[1], p[3]), doubled_area(p[0], p[1], p[2])};
    const double side = areas[0] < 0 ? -1 : 1;  // mirrored pictures run the other way round
    for (const double area : areas) {
        if (!(side * area >= kLeastArea))
            return {1, 1, 1, 1};
    }
    return {1, areas[0] / areas[1], areas[0] / areas[2], areas[0] / areas[3]};
}

}  // namespace

Quad pinned(const std::array<PixelPoint, 4>& corners, int width, int height) {
    const std::array<double, 4> near = nearness(corners);
    const float right = static_cast<float>(width), bottom = static_cast<float>(height);
    const float u[] = {0, right, right, 0}, v[] = {0, 0, bottom, bottom};
    Quad quad;
    for (std::size_t i = 0; i < quad.size(); ++i)
        quad[i] = {u[i], v[i], static_cast<float>(near[i]), static_cast<float>(corners[i].x),
                   static_cast<float>(corners[i].y)};
    return quad;
}

}  // namespace zepbmp::effects
