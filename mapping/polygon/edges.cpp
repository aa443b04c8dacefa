#include "mapping/polygon/edges.h"

#include <algorithm>
#include <bit>

#include "core/arithmetic.h"

namespace zepbmp {
namespace {

/// 1/4096: of a pixel, and of a line or sub-line.
struct Point {
    int32_t x, y;
};

Point to_units(const BmpVertex& vertex, int sub_lines) {
    return {hold_to_int32(double{vertex.x} * kPixelUnits), hold_to_int32(double{vertex.y} * (kPixelUnits * sub_lines))};
}

/// The first line whose centre is at or below y.
int32_t line_from(int32_t y) { return static_cast<int32_t>((int64_t{y} + (kPixelUnits / 2 - 1)) >> kPixelBits); }

/// An edge's vertices, the upper one first.
struct Ends {
    const BmpVertex *upper, *lower;
    Point from, to;
};

/// The edge to vertex `order` from the one before it.
Ends ends_of(const BmpVertex* vertices, int32_t count, int32_t order, int sub_lines) {
    const BmpVertex* const a = &vertices[order > 0 ? order - 1 : count - 1];
    const BmpVertex* const b = &vertices[order];
    const Point at_a = to_units(*a, sub_lines), at_b = to_units(*b, sub_lines);
    return at_b.y < at_a.y ? Ends{b, a, at_b, at_a} : Ends{a, b, at_a, at_b};
}

double height_of(const Ends& ends) { return double(int64_t{ends.to.y} - ends.from.y); }

/// The exponent of a number and its sign.
uint32_t binade(float value) { return std::bit_cast<uint32_t>(value) >> 23; }

/// x after so many additions of slope, each of which rounds. As long as x stays in one binade the sum of a step is
/// always rounded alike, but for the first: a tie goes to even once and stays there. So all steps but those next to a
/// power of two are taken at once.
float advanced(float x, float slope, int32_t lines) {
    while (lines > 0) {
        const float a = single(x + slope), b = single(a + slope), c = single(b + slope);
        if (lines <= 3 || binade(a) != binade(c) || (binade(a) & 0xff) == 0) {
            x = a;
            --lines;
            continue;
        }
        const double step = double{c} - b;
        if (step == 0)
            return c;
        lines -= 3;
        const float lower =
            std::bit_cast<float>(binade(c) << 23);  // the binade's end next to 0; the other is twice that
        const double room = (step < 0) == (c < 0) ? 2.0 * lower - c : double{lower} - c;
        const double steps = room / step - 1;  // short of the end
        const int32_t jump = steps < lines ? steps > 0 ? static_cast<int32_t>(steps) : 0 : lines;
        x = static_cast<float>(c + jump * step);
        lines -= jump;
    }
    return x;
}

/// False: it crosses none of the lines.
bool make_edge(const Ends& ends, int32_t order, int32_t line_limit, Edge& edge) {
    const int32_t first = line_from(ends.from.y), last = line_from(ends.to.y);
    const int32_t end = last < line_limit ? last : line_limit;
    if (first >= end || end <= 0)
        return false;
    const double slope = double(int64_t{ends.to.x} - ends.from.x) / height_of(ends);
    const double below = double(int64_t{first} * kPixelUnits + kPixelUnits / 2 - ends.from.y);
    edge = {.first = first,
            .end = end,
            .x = static_cast<float>((ends.from.x + slope * below) / kPixelUnits),
            .slope = static_cast<float>(slope),
            .low = ends.from.x < ends.to.x ? ends.from.x : ends.to.x,
            .high = ends.from.x < ends.to.x ? ends.to.x : ends.from.x,
            .order = order};
    if (first < 0) {
        edge.x = advanced(edge.x, edge.slope, -first);
        edge.first = 0;
    }
    return true;
}

// Comparisons stand in functions of this file alone, so that what the standard library makes of them does too.
void sort_by_first_line(Edge* edges, int32_t count) {
    std::sort(edges, edges + count, [](const Edge& a, const Edge& b) {
        return a.first < b.first || (a.first == b.first && a.order < b.order);
    });
}

}  // namespace

bool is_finite(const BmpVertex* vertices, int32_t count) {
    const auto finite = [](double value) { return value - value == 0; };
    for (int32_t i = 0; i < count; ++i) {
        if (!finite(vertices[i].x) || !finite(vertices[i].y))
            return false;
    }
    return true;
}

int32_t build_edges(const BmpVertex* vertices, int32_t count, int sub_lines, int32_t line_limit, Edge* edges) {
    int32_t built = 0;
    for (int32_t order = 0; order < count; ++order) {
        if (make_edge(ends_of(vertices, count, order, sub_lines), order, line_limit, edges[built]))
            ++built;
    }
    sort_by_first_line(edges, built);
    return built;
}

EdgeMapping map_edge(const BmpVertex* vertices, int32_t count, int32_t order, int sub_lines, double line_scale,
                     bool perspective) {
    const Ends ends = ends_of(vertices, count, order, sub_lines);
    const double height = height_of(ends);
    const auto interpolant = [&](double upper, double lower, double scale) {
        const double slope = (lower - upper) * (scale * kPixelUnits) / height;
        return Interpolant{slope, upper * scale - slope * (ends.from.y / double{kPixelUnits})};
    };
    if (!perspective)
        return {interpolant(ends.upper->u, ends.lower->u, kTexel),
                interpolant(ends.upper->v * line_scale, ends.lower->v * line_scale, kTexel),
                {0, 1}};
    const double upper_w = ends.upper->w, lower_w = ends.lower->w;
    return {interpolant(ends.upper->u * upper_w, ends.lower->u * lower_w, kTexel),
            interpolant(ends.upper->v * line_scale * upper_w, ends.lower->v * line_scale * lower_w, kTexel),
            interpolant(upper_w, lower_w, 1)};
}

}  // namespace zepbmp
