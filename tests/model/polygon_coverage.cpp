// How much of each pixel of a line a polygon covers.
//
// SPDX-License-Identifier: MIT
#include "polygon_steps.h"

namespace model {

namespace {

// Part of `pixel`, 0..4096, right of an upright edge at x, 1/4096 pixel.
int64_t right_of_upright(int64_t x, int64_t pixel) { return std::clamp<int64_t>((pixel + 1) * 4096 - x, 0, kFull); }

// Part of `pixel` right of an edge that runs from a to b, a < b, while the line passes.
int64_t right_of_ramp(int64_t a, int64_t b, int64_t pixel) {
    const int64_t begin = pixel * 4096;
    const int64_t end = begin + 4096;
    if (pixel < a >> 12) {
        return 0;
    }
    if (pixel >= (b + 4095) >> 12) {
        return kFull;
    }
    if (a >= begin && b <= end) {
        return (end * 2 - a - b) >> 1;
    }
    const float k = single(4096.0 / static_cast<double>(b - a));
    const auto square = [](int64_t value) { return static_cast<double>(value * value); };
    if (a >= begin) {
        return truncate_held(square(end - a) * double{k}) >> 13;
    }
    if (b <= end) {
        return kFull - (truncate_held(square(b - begin) * double{k}) >> 13);
    }
    return truncate_held(static_cast<double>(begin + 2048 - a) * double{k});
}

Coverage cover(const Crossings& crossings, int sub_lines, int32_t width) {
    Coverage coverage(static_cast<size_t>(width), 0);
    for (size_t i = 0; i + 1 < crossings.size(); i += 2) {
        const Ramp left = ramp_over(crossings[i], sub_lines);
        const Ramp right = ramp_over(crossings[i + 1], sub_lines);
        for (int32_t x = 0; x < width; ++x) {
            coverage[static_cast<size_t>(x)] += left.right_of(x) - right.right_of(x);
        }
    }
    for (int64_t& c : coverage) {
        c = std::clamp<int64_t>(c, 0, kFull);
    }
    return coverage;
}

}  // namespace

int64_t Ramp::right_of(int64_t pixel) const {
    if (lo == hi) {
        return right_of_upright(lo, pixel);
    }
    return ((lo - a) * right_of_upright(lo, pixel) + (hi - lo) * right_of_ramp(lo, hi, pixel) +
            (b - hi) * right_of_upright(hi, pixel)) /
           (b - a);
}

Ramp ramp_over(const Crossing& crossing, int sub_lines) {
    const double x = crossing.x;
    const double slope = crossing.edge->x_slope;
    Ramp ramp = {};
    ramp.a = truncate_held((x - 0.5 * slope) * 4096.0);
    ramp.b = truncate_held((x + (sub_lines - 0.5) * slope) * 4096.0);
    if (ramp.a > ramp.b) {
        std::swap(ramp.a, ramp.b);
    }
    ramp.lo = std::clamp(ramp.a, crossing.edge->min_x, crossing.edge->max_x);
    ramp.hi = std::clamp(ramp.b, crossing.edge->min_x, crossing.edge->max_x);
    return ramp;
}

bool is_whole(const SubLines& sub_lines) {
    const auto same_edges = [](const Crossings& one, const Crossings& other) {
        return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                          [](const Crossing& a, const Crossing& b) { return a.edge == b.edge; });
    };
    return same_edges(sub_lines[0], sub_lines[1]) && same_edges(sub_lines[0], sub_lines[2]);
}

Coverage cover_line(const SubLines& sub_lines, int32_t width) {
    if (is_whole(sub_lines)) {
        return cover(sub_lines[0], 3, width);
    }
    const Coverage c0 = cover(sub_lines[0], 1, width);
    const Coverage c1 = cover(sub_lines[1], 1, width);
    const Coverage c2 = cover(sub_lines[2], 1, width);
    Coverage mean(c0.size());
    for (size_t x = 0; x < mean.size(); ++x) {
        mean[x] = (c0[x] + c1[x] + c2[x]) / 3;
    }
    return mean;
}

}  // namespace model
