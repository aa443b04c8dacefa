/// \file
/// A polygon's edges: from vertices to lines. A line is one of the destination, or with anti-aliasing one of its three
/// sub-lines; an edge counts on the lines whose centre lies between its ends.
#pragma once

#include <cstdint>

#include "mapping/polygon/units.h"
#include "zepbmp.h"

namespace zepbmp {

struct Edge {
    int32_t first, end;  ///< lines, `end` exclusive
    float x;             ///< pixels, at the centre of the line that has been reached; to begin with of `first`
    float slope;         ///< pixels a line; added to x for each line, in single precision
    int32_t low, high;   ///< the range of x, units
    int32_t order;       ///< in which it was built; equal x are taken in this order

    bool before(const Edge& other) const { return x < other.x || (x == other.x && order < other.order); }
};

/// A quantity along an edge.
struct Interpolant {
    double slope;  ///< a line
    double value;  ///< extrapolated to y = 0

    double at(int32_t line) const { return slope * (line + 0.5) + value; }
};

/// Texture coordinates along an edge, 16.16 units; in perspective u and v are multiplied by w.
struct EdgeMapping {
    Interpolant u, v, w;
};

/// A polygon with a position that is not a finite number draws nothing.
bool is_finite(const BmpVertex* vertices, int32_t count);

/// Writes the edges that cross a line of 0..line_limit-1, at most `count`, sorted by their first line, cut to these
/// lines; returns how many.
///   sub_lines   lines to a line of the destination: 1 or kSubLines
int32_t build_edges(const BmpVertex* vertices, int32_t count, int sub_lines, int32_t line_limit, Edge* edges);

/// How texture coordinates run along the edge of that `order`.
///   line_scale    texture lines to a line of v
///   perspective   u and v are multiplied by w; otherwise w is 1
EdgeMapping map_edge(const BmpVertex* vertices, int32_t count, int32_t order, int sub_lines, double line_scale,
                     bool perspective);

}  // namespace zepbmp
