#include "mapping/polygon/coverage.h"

#include <algorithm>

#include "core/arithmetic.h"
#include "core/bitmap.h"

namespace zepbmp {
namespace {

constexpr int32_t kShortRun = 16;  // pixels; a shorter run of full coverage is blended with what lies around it

int32_t held(int64_t value, int32_t low, int32_t high) {
    return static_cast<int32_t>(value < low ? low : value > high ? high : value);
}

int32_t even_below(int32_t x) { return x & ~1; }
int32_t even_above(int32_t x) { return (x + 1) & ~1; }

/// The part of pixel x right of an upright edge.
int32_t upright(int32_t edge, int32_t x) { return held((int64_t{x} + 1) * kPixelUnits - edge, 0, kPixelUnits); }

/// coverage[x] for the edge's own pixels.
void cover_pixels(const EdgeCover& edge, uint16_t* coverage) {
    const auto [first, end] = edge.pixels;
    if (edge.low == edge.high) {
        for (int32_t x = first; x < end; ++x)
            coverage[x] = static_cast<uint16_t>(upright(edge.low, x));
        return;
    }
    const CoverRamp ramp = {edge.low, edge.high,
                            static_cast<float>(double{kPixelUnits} / double(int64_t{edge.high} - edge.low))};
    cover_kernels.ramp(coverage, first, end, ramp);
    if (edge.begin == edge.low && edge.end == edge.high)
        return;
    const int64_t before = int64_t{edge.low} - edge.begin, within = int64_t{edge.high} - edge.low,
                  behind = int64_t{edge.end} - edge.high;
    for (int32_t x = first; x < end; ++x) {
        const int64_t sum = before * upright(edge.low, x) + within * coverage[x] + behind * upright(edge.high, x);
        coverage[x] = static_cast<uint16_t>(sum / (before + within + behind));
    }
}

/// What cover_pixels() gives, from full.
void cover_pixels_left(const EdgeCover& edge, uint16_t* coverage) {
    cover_pixels(edge, coverage);
    for (int32_t x = edge.pixels.first; x < edge.pixels.end; ++x)
        coverage[x] = static_cast<uint16_t>(kWeightFull - coverage[x]);
}

void set(uint16_t* coverage, int32_t first, int32_t end, int32_t value) {
    for (int32_t x = first; x < end; ++x)
        coverage[x] = static_cast<uint16_t>(value);
}

// The comparison stands in a function of this file alone, so that what the standard library makes of it does too.
void sort_by_first_pixel(PixelRange* ranges, int32_t count) {
    std::sort(ranges, ranges + count, [](const PixelRange& a, const PixelRange& b) { return a.first < b.first; });
}

}  // namespace

EdgeCover::EdgeCover(const Crossing& crossing, int lines, int32_t width) {
    const Edge& edge = *crossing.edge;
    const double slope = edge.slope;
    const int32_t top = hold_to_int32((crossing.x - 0.5 * slope) * kPixelUnits);
    const int32_t bottom = hold_to_int32((crossing.x + (lines - 0.5) * slope) * kPixelUnits);
    begin = top < bottom ? top : bottom;
    end = top < bottom ? bottom : top;
    low = held(begin, edge.low, edge.high);
    high = held(end, edge.low, edge.high);
    pixels = {held(low >> 12, 0, width), held((int64_t{high} + (kPixelUnits - 1)) >> 12, 0, width)};
}

uint64_t CoverageLine::bytes(int32_t width, uint64_t edges) {
    const uint64_t pixels = static_cast<uint64_t>(width) + 2;
    return 2 * Arena::bytes<uint16_t>(pixels) + kSubLines * Arena::bytes<int32_t>(pixels) +
           Arena::bytes<PixelRange>(kSubLines * edges) + Arena::bytes<CoverSegment>(2 * kSubLines * edges + 2);
}

CoverageLine::CoverageLine(Arena& arena, int32_t width, uint64_t edges, const PixelRange& reach) : width_(width) {
    const uint64_t pixels = static_cast<uint64_t>(width) + 2;
    coverage_ = arena.array<uint16_t>(pixels);
    ramp_ = arena.array<uint16_t>(pixels);
    for (int32_t*& change : change_) {
        change = arena.array<int32_t>(pixels);
        for (int32_t x = even_below(reach.first); x < reach.end + 2 && x < width + 2; ++x)
            change[x] = 0;
    }
    reaches_ = arena.array<PixelRange>(kSubLines * edges);
    segments_ = arena.array<CoverSegment>(2 * kSubLines * edges + 2);
}

void CoverageLine::add_segment(int32_t first, int32_t end) {
    if (end > width_)
        end = width_;
    if (first >= end)
        return;
    if (segment_count_ > 0 && !segments_[segment_count_ - 1].full && segments_[segment_count_ - 1].pixels.end == first)
        segments_[segment_count_ - 1].pixels.end = end;
    else
        segments_[segment_count_++] = {{first, end}, false};
}

/// Pixels of one coverage. Both ends are even, or the end is the line's.
void CoverageLine::add_run(int32_t first, int32_t end, int32_t value) {
    if (first >= end || value == 0)
        return;
    const int32_t full_end = value == kWeightFull && end - first >= kShortRun ? even_below(end) : first;
    if (first < full_end)
        segments_[segment_count_++] = {{first, full_end}, true};
    set(coverage_, full_end, end, value);
    add_segment(full_end, end);
}

/// Two edges that share no pixel. False: they do, and nothing is done.
bool CoverageLine::cover_apart(const EdgeCover& left, const EdgeCover& right) {
    if (left.pixels.end > right.pixels.first)
        return false;
    const int32_t first = even_below(left.pixels.first), end = even_above(right.pixels.end);
    const int32_t run_first = even_above(left.pixels.end), run_end = even_below(right.pixels.first);
    set(coverage_, first, left.pixels.first, 0);
    cover_pixels(left, coverage_);
    cover_pixels_left(right, coverage_);
    set(coverage_, right.pixels.end, end, 0);
    if (run_end - run_first < kShortRun) {
        set(coverage_, left.pixels.end, right.pixels.first, kWeightFull);
        add_segment(first, end);
        return true;
    }
    set(coverage_, left.pixels.end, run_first, kWeightFull);
    set(coverage_, run_end, right.pixels.first, kWeightFull);
    add_segment(first, run_first);
    segments_[segment_count_++] = {{run_first, run_end}, true};
    add_segment(run_end, end);
    return true;
}

void CoverageLine::add(int sub_line, const EdgeCover* edges, int32_t count) {
    int32_t* const change = change_[sub_line];
    for (int32_t i = 0; i < count; ++i) {
        const auto [first, end] = edges[i].pixels;
        if (first >= width_)
            continue;
        const int32_t sign = i % 2 ? -1 : 1;
        cover_pixels(edges[i], ramp_);
        int32_t reached = 0;
        for (int32_t x = first; x < end; ++x) {
            change[x] = wrapping_add(change[x], sign * (ramp_[x] - reached));
            reached = ramp_[x];
        }
        change[end] = wrapping_add(change[end], sign * (kWeightFull - reached));
        reaches_[reach_count_++] = {even_below(first), even_below(end) + 2};
    }
}

template <int kLines>
void CoverageLine::sum_up() {
    sort_by_first_pixel(reaches_, reach_count_);
    int32_t sum[kLines] = {};
    const auto mean = [&] {
        int32_t total = 0;
        for (const int32_t value : sum)
            total += held(value, 0, kWeightFull);
        return total / kLines;
    };
    int32_t at = 0;
    for (int32_t i = 0; i < reach_count_; ++i) {
        const PixelRange reach = {std::max(reaches_[i].first, at), std::min(reaches_[i].end, width_ + 1)};
        if (reach.empty())
            continue;
        add_run(at, reach.first, mean());
        for (at = reach.first; at < reach.end; ++at) {
            for (int line = 0; line < kLines; ++line) {
                sum[line] = wrapping_add(sum[line], change_[line][at]);
                change_[line][at] = 0;
            }
            coverage_[at] = static_cast<uint16_t>(mean());
        }
        add_segment(reach.first, reach.end);
    }
    add_run(at, width_, mean());
    reach_count_ = 0;
}

void CoverageLine::cover(const EdgeCover* edges, int32_t count) {
    segment_count_ = 0;
    if (count == 2 && cover_apart(edges[0], edges[1]))
        return;
    add(0, edges, count);
    sum_up<1>();
}

void CoverageLine::cover_mean(const EdgeCover* const (&edges)[kSubLines], const int32_t (&count)[kSubLines]) {
    segment_count_ = 0;
    for (int line = 0; line < kSubLines; ++line)
        add(line, edges[line], count[line]);
    sum_up<kSubLines>();
}

}  // namespace zepbmp
