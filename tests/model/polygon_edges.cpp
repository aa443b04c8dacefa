// From corners to edges.
//
// SPDX-License-Identifier: MIT
#include "polygon_steps.h"

namespace model {

namespace {

int64_t first_line_from(int64_t y) { return (y + 0x7ff) >> 12; }

Interpolant interpolate(const Corner& upper, const Corner& lower, double a0, double a1, double line_scale,
                        double value_scale) {
    const double slope = (a1 - a0) * line_scale / static_cast<double>(lower.y - upper.y);
    return {slope, a0 * value_scale - slope * (static_cast<double>(upper.y) / 4096.0)};
}

}  // namespace

std::vector<Edge> build_edges(const std::vector<Corner>& corners, int64_t lines) {
    std::vector<Edge> edges;
    for (size_t i = 0; i < corners.size(); ++i) {
        const Corner* upper = &corners[i == 0 ? corners.size() - 1 : i - 1];
        const Corner* lower = &corners[i];
        if (lower->y < upper->y) {
            std::swap(upper, lower);
        }
        Edge edge = {};
        edge.first_line = first_line_from(upper->y);
        edge.end_line = first_line_from(lower->y);
        if (edge.first_line == edge.end_line || edge.first_line >= lines) {
            continue;
        }
        const double k = static_cast<double>(lower->x - upper->x) / static_cast<double>(lower->y - upper->y);
        const double down = static_cast<double>(edge.first_line * 4096 + 2048 - upper->y);
        edge.x_slope = single(k);
        edge.x = single((static_cast<double>(upper->x) + k * down) / 4096);
        edge.end_line = std::min(edge.end_line, lines);
        edge.min_x = std::min(upper->x, lower->x);
        edge.max_x = std::max(upper->x, lower->x);
        edge.u = interpolate(*upper, *lower, upper->u, lower->u, 268435456.0, 65536.0);
        edge.v = interpolate(*upper, *lower, upper->v, lower->v, 268435456.0, 65536.0);
        edge.w = interpolate(*upper, *lower, upper->w, lower->w, 4096.0, 1.0);
        edges.push_back(edge);
    }
    return edges;
}

std::vector<Corner> place_corners(const BmpVertex* vertices, int32_t count, double units_per_line) {
    std::vector<Corner> corners;
    for (int32_t i = 0; i < count; ++i) {
        corners.push_back({truncate_held(double{vertices[i].x} * 4096.0),
                           truncate_held(double{vertices[i].y} * units_per_line), 0, 0, 0});
    }
    return corners;
}

}  // namespace model
