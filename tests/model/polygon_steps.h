// The steps from a polygon to its pixels, in their order: source, filter, edges, crossings, spans, coverage.
//
// What is single precision goes through `single` after every operation. Everything else is double.
//
// SPDX-License-Identifier: MIT
#ifndef ZEPBMP_TESTS_MODEL_POLYGON_STEPS_H
#define ZEPBMP_TESTS_MODEL_POLYGON_STEPS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "arithmetic.h"
#include "model.h"

namespace model {

constexpr int32_t kFull = 4096;  // of a coverage, a level, a weight

inline float add(float a, float b) { return single(double{a} + double{b}); }
inline float multiply(float a, float b) { return single(double{a} * double{b}); }
inline float divide(float a, float b) { return single(double{a} / double{b}); }

// Toward zero, held to the 32-bit range. Not for NaN.
inline int64_t truncate_held(double value) {
    if (value >= 2147483647.0) {
        return INT32_MAX;
    }
    if (value <= -2147483648.0) {
        return INT32_MIN;
    }
    return static_cast<int64_t>(value);
}

// ---------------------------------------------------------------- source and filter: polygon_filter.cpp

struct Source {
    uint32_t format;
    const uint8_t* base;
    int64_t pitch;
    int32_t width;
    int32_t height;  // of the field, where the bitmap is a field source
    double vertical_scale;
    int32_t vertical_offset;  // 16.16
};

Source prepare_source(const Bitmap* texture, uint32_t flags);

// Such a source draws nothing.
inline bool is_empty(const Source& source) { return source.width < 1 || source.height < 1; }

struct Filter {
    int index;
    int32_t u_offset;  // 16.16, the field offset included
    int32_t v_offset;
    int32_t u_max;  // 16.16
    int32_t v_max;
};

Filter choose_filter(const Source& source, const BmpVertex* vertices, int32_t count, uint32_t flags);

// ---------------------------------------------------------------- edges: polygon_edges.cpp

// Linear in the line number: slope * (line + 0.5) + value.
struct Interpolant {
    double slope = 0;
    double value = 0;

    double at_centre(int64_t line) const { return slope * (static_cast<double>(line) + 0.5) + value; }
};

// "Line" is a sub-line where lines are walked in thirds.
struct Edge {
    int64_t first_line;
    int64_t end_line;
    float x_slope;
    float x;        // at the first line's centre
    int64_t min_x;  // of the end points, 1/4096 pixel
    int64_t max_x;
    Interpolant u, v, w;
};

struct Corner {
    int64_t x;  // 1/4096 pixel
    int64_t y;  // 1/4096 line
    double u, v, w;
};

// Positions alone; u, v, w stay 0.
std::vector<Corner> place_corners(const BmpVertex* vertices, int32_t count, double units_per_line);

// `lines`: of the destination; three times its lines where the corners' y counts sub-lines.
std::vector<Edge> build_edges(const std::vector<Corner>& corners, int64_t lines);

struct Crossing {
    const Edge* edge;
    float x;  // at the line's centre
};

// From left to right, equal ones in building order. Each two of them bound a span.
using Crossings = std::vector<Crossing>;

// Calls `on_line(line, crossings)` for every line from 0 to lines - 1.
template <class OnLine>
void walk_lines(const std::vector<Edge>& edges, int64_t lines, OnLine on_line) {
    struct Walker {
        const Edge* edge;
        int64_t line;
        float x;

        void step() {
            x = add(x, edge->x_slope);
            ++line;
        }
    };
    std::vector<Walker> walkers;
    for (const Edge& edge : edges) {
        walkers.push_back({&edge, edge.first_line, edge.x});
    }
    for (Walker& walker : walkers) {
        while (walker.line < 0 && walker.line < walker.edge->end_line) {
            walker.step();
        }
    }
    for (int64_t line = 0; line < lines; ++line) {
        Crossings crossings;
        for (Walker& walker : walkers) {
            if (walker.line == line && line < walker.edge->end_line) {
                crossings.push_back({walker.edge, walker.x});
                walker.step();
            }
        }
        std::stable_sort(crossings.begin(), crossings.end(),
                         [](const Crossing& a, const Crossing& b) { return a.x < b.x; });
        on_line(line, crossings);
    }
}

// ---------------------------------------------------------------- spans: polygon_spans.cpp

// u, v of an affine span; u*w, v*w and w of the others. `start` is the value at destination x = 0.
struct SpanArguments {
    float du, dv, dw;
    float u_start, v_start, w_start;
};

struct Mapping {
    Source source;
    Filter filter;
    uint32_t destination_format;
    bool affine;
    uint32_t colour;  // of a tint
};

SpanArguments set_up_span(const Mapping& mapping, const Crossing& left, const Crossing& right, int64_t line);

// Pixels first .. end - 1 of a line.
void draw_span(const Mapping& mapping, const SpanArguments& span, uint8_t* line, int64_t first, int64_t end);
void draw_span_with_depth(const Mapping& mapping, const SpanArguments& span, uint8_t* line, uint8_t* depth_line,
                          int64_t first, int64_t end);

// ---------------------------------------------------------------- coverage: polygon_coverage.cpp

// Where an edge runs while a line passes, 1/4096 pixel.
struct Ramp {
    int64_t a, b;    // a <= b, the edge taken as endless
    int64_t lo, hi;  // the same, held to the edge's own ends

    int64_t first_pixel() const { return lo >> 12; }
    int64_t end_pixel() const { return (hi + 4095) >> 12; }

    // Part of `pixel`, 0..4096, right of the edge.
    int64_t right_of(int64_t pixel) const;
};

// From the top of the sub-line whose centre the crossing is on, over `sub_lines` of them.
Ramp ramp_over(const Crossing& crossing, int sub_lines);

// A destination line's crossings at the centres of its three sub-lines.
using SubLines = std::array<Crossings, 3>;

// Whether the same edges cross all three in the same order.
bool is_whole(const SubLines& sub_lines);

using Coverage = std::vector<int64_t>;  // 0..4096, one for each pixel of a line

Coverage cover_line(const SubLines& sub_lines, int32_t width);

}  // namespace model

#endif  // ZEPBMP_TESTS_MODEL_POLYGON_STEPS_H
