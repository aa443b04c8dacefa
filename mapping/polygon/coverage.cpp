#include "mapping/polygon/coverage.h"

#include <algorithm>

#include "core/bitmap.h"
#include "core/kernel_tables.h"
#include "mapping/polygon/ramp_area.h"

namespace zepbmp {
namespace {

constexpr int32_t kShortRun = 16;    // pixels; a shorter run of full coverage is blended with what lies around it
constexpr int32_t kShortRamp = 8;    // pixels
constexpr int32_t kShortReach = 64;  // pixels; so much is summed up from end to end

int32_t even_below(int32_t x) { return x & ~1; }
int32_t even_above(int32_t x) { return (x + 1) & ~1; }

/// The part of pixel x right of an upright edge.
int32_t upright(int32_t edge, int32_t x) {
    const int64_t part = (int64_t{x} + 1) * kPixelUnits - edge;
    return static_cast<int32_t>(part < 0 ? 0 : part > kPixelUnits ? kPixelUnits : part);
}

/// An edge that ends within the stretch: part of the way it is upright.
void mix_with_upright(const EdgeCover& edge, uint16_t* coverage) {
    const int64_t before = int64_t{edge.low} - edge.begin, within = int64_t{edge.high} - edge.low,
                  behind = int64_t{edge.end} - edge.high;
    for (int32_t x = edge.pixels.first; x < edge.pixels.end; ++x) {
        const int64_t sum = before * upright(edge.low, x) + within * coverage[x] + behind * upright(edge.high, x);
        coverage[x] = static_cast<uint16_t>(sum / (before + within + behind));
    }
}

CoverRamp ramp_of(const EdgeCover& edge) {
    const double width = double(int64_t{edge.high} - edge.low);
    return {edge.low, edge.high, width > 0 ? static_cast<float>(kPixelUnits / width) : 0};
}

/// An edge that ends within the stretch or the line, or has many pixels.
__attribute__((noinline)) void cover_any_pixels(const EdgeCover& edge, uint16_t* coverage) {
    const auto [first, end] = edge.pixels;
    if (edge.low < edge.high)
        cover_kernels.ramp(coverage, first, end, ramp_of(edge));
    else if (first < end)
        coverage[first] = static_cast<uint16_t>(upright(edge.low, first));
    if (edge.low < edge.high && (edge.begin != edge.low || edge.end != edge.high))
        mix_with_upright(edge, coverage);
}

/// coverage[x] for the edge's own pixels.
inline void cover_pixels(const EdgeCover& edge, uint16_t* coverage) {
    const int32_t first = edge.pixels.first, last = edge.pixels.end - 1;
    if (!edge.inside || last - first >= kShortRamp) {
        cover_any_pixels(edge, coverage);
        return;
    }
    const int32_t from = edge.low - first * kPixelUnits, to = edge.high - last * kPixelUnits;
    if (last <= first) {
        if (last == first)
            coverage[first] = static_cast<uint16_t>((2 * kPixelUnits - from - to) >> 1);
        return;
    }
    const double k = ramp_of(edge).k;
    coverage[first] = static_cast<uint16_t>(ramp_triangle(kPixelUnits - from, k));
    for (int32_t x = first + 1; x < last; ++x)
        coverage[x] = ramp_trapezoid((x - first) * kPixelUnits + kPixelUnits / 2 - from, k);
    coverage[last] = static_cast<uint16_t>(kWeightFull - ramp_triangle(to, k));
}

constexpr int32_t kSetPixels = 4;  // written at a time
static_assert(kSetPixels * sizeof(uint16_t) == sizeof(uint64_t));

__attribute__((noinline)) void set_many(uint16_t* coverage, int32_t first, int32_t end, uint64_t values) {
    for (; first < end; first += kSetPixels)
        __builtin_memcpy(coverage + first, &values, sizeof values);
}

/// Up to kSetPixels pixels behind the end are written, too.
inline void set(uint16_t* coverage, int32_t first, int32_t end, uint64_t value) {
    const uint64_t values = value * 0x0001000100010001;
    __builtin_memcpy(coverage + first, &values, sizeof values);
    if (end - first > kSetPixels)
        set_many(coverage, first + kSetPixels, end, values);
}

/// Whether kCoverEnd pixels from an even one on hold all that the edge touches.
bool fits_end(const EdgeCover& edge) {
    return edge.inside && edge.pixels.end <= even_below(edge.pixels.first) + kCoverEnd;
}

bool fit_ends(const EdgeCover& left, const EdgeCover& right) {
    return even_below(left.pixels.first) + kCoverEnd <= even_below(right.pixels.first) && fits_end(left) &&
           fits_end(right);
}

/// Sets both ends of a pair that fits them, and the run of full pixels between them where it is shorter than short_run.
/// Returns the run; the pair begins with the even pixel kCoverEnd before it.
inline PixelRange cover_ends(uint16_t* coverage, const EdgeCover& left, const EdgeCover& right, int32_t short_run) {
    const int32_t first = even_below(left.pixels.first);
    const PixelRange run = {first + kCoverEnd, even_below(right.pixels.first)};
    if (run.first < run.end && run.end - run.first < short_run)
        set(coverage, run.first, run.end, kWeightFull);
    cover_kernels.ends(coverage, first, ramp_of(left), run.end, ramp_of(right));
    return run;
}

// The comparison stands in a function of this file alone, so that what the standard library makes of it does too.
void sort_by_first_pixel(PixelRange* ranges, int32_t count) {
    std::sort(ranges, ranges + count, [](const PixelRange& a, const PixelRange& b) { return a.first < b.first; });
}

/// The room for `reach`: whole pairs, and what set() or an end may write behind them.
uint64_t pixels_of(const PixelRange& reach) {
    return static_cast<uint64_t>(even_above(reach.end) + kCoverEnd - even_below(reach.first));
}
static_assert(kSetPixels <= kCoverEnd);

uint64_t segments_of(const LineCoverer::Extent& extent) {
    return std::min(2 * kSubLines * extent.edges + 2, pixels_of(extent.reach) / 2);
}

/// Pixel 0 of a line of which the reach has room.
template <class T>
T* line_of(Arena& arena, const PixelRange& reach) {
    return arena.array<T>(pixels_of(reach)) - even_below(reach.first);
}

}  // namespace

// ---------------------------------------------------------------- lines

void CoveredLine::add(int32_t first, int32_t end, int32_t width) {
    if (end > width)
        end = width;
    if (first >= end)
        return;
    if (count_ > 0 && !segments_[count_ - 1].full && segments_[count_ - 1].pixels.end == first)
        segments_[count_ - 1].pixels.end = end;
    else
        segments_[count_++] = {{first, end}, false};
}

/// Of these pixels `run` is full; where it is short its coverage is set like that of the others.
void CoveredLine::add_around(const PixelRange& pixels, const PixelRange& run, int32_t width) {
    if (run.end - run.first < kShortRun) {
        add(pixels.first, pixels.end, width);
    } else {
        add(pixels.first, run.first, width);
        add_full(run.first, run.end);
        add(run.end, pixels.end, width);
    }
}

uint64_t LineCoverer::line_bytes(const Extent& extent) {
    return Arena::bytes<uint16_t>(pixels_of(extent.reach)) + Arena::bytes<CoverSegment>(segments_of(extent));
}

CoveredLine LineCoverer::new_line(Arena& arena, const Extent& extent) {
    CoveredLine line;
    line.coverage_ = line_of<uint16_t>(arena, extent.reach);
    line.segments_ = arena.array<CoverSegment>(segments_of(extent));
    return line;
}

uint64_t LineCoverer::bytes(const Extent& extent) {
    const uint64_t pixels = pixels_of(extent.reach);
    return 2 * Arena::bytes<uint16_t>(pixels) + kSubLines * Arena::bytes<int32_t>(pixels) +
           Arena::bytes<PixelRange>(kSubLines * extent.edges);
}

LineCoverer::LineCoverer(Arena& arena, const Extent& extent, int32_t width)
    : width_(width),
      reach_(extent.reach),
      edge_(line_of<uint16_t>(arena, extent.reach)),
      pair_(line_of<uint16_t>(arena, extent.reach)),
      reaches_(arena.array<PixelRange>(kSubLines * extent.edges)) {
    for (int32_t*& change : change_)
        change = line_of<int32_t>(arena, extent.reach);
}

void LineCoverer::need_rows(int rows) {
    for (; clear_rows_ < rows; ++clear_rows_)
        std::fill_n(change_[clear_rows_] + even_below(reach_.first), pixels_of(reach_), 0);
}

// ---------------------------------------------------------------- pairs of edges

/// Sets the pixels of both edges and those between; returns them.
inline PixelRange LineCoverer::cover_pair(uint16_t* coverage, const EdgeCover& left, const EdgeCover& right) {
    if (fit_ends(left, right)) {
        cover_ends(coverage, left, right, INT32_MAX);
        return {left.pixels.first, right.pixels.end};
    }
    const int32_t first = std::min(left.pixels.first, right.pixels.first),
                  end = std::max(left.pixels.end, right.pixels.end);
    set(coverage, first, left.pixels.first, 0);
    cover_pixels(left, coverage);
    set(coverage, left.pixels.end, end, kWeightFull);
    cover_pixels(right, edge_);
    for (int32_t x = right.pixels.first; x < right.pixels.end; ++x)
        coverage[x] = static_cast<uint16_t>(coverage[x] > edge_[x] ? coverage[x] - edge_[x] : 0);
    set(coverage, right.pixels.end, end, 0);
    return {first, end};
}

/// A pair that shares no pixel with what has been covered. False: it does, and nothing is done.
inline bool LineCoverer::cover_alone(CoveredLine& covered, const EdgeCover& left, const EdgeCover& right) {
    const int32_t first = even_below(std::min(left.pixels.first, right.pixels.first)),
                  end = even_above(std::max(left.pixels.end, right.pixels.end));
    if (first >= end || first >= width_)
        return true;
    if (covered.count_ > 0 && first < covered.segments_[covered.count_ - 1].pixels.end)
        return false;
    uint16_t* const coverage = covered.coverage_;
    PixelRange run = {even_above(left.pixels.end), even_below(right.pixels.first)};
    if (fit_ends(left, right)) {
        run = cover_ends(coverage, left, right, kShortRun);
    } else if (run.end - run.first < kShortRun) {
        set(coverage, first, first + 1, 0);
        const PixelRange pair = cover_pair(coverage, left, right);
        set(coverage, pair.end, end, 0);
    } else {
        set(coverage, first, left.pixels.first, 0);
        cover_pixels(left, coverage);
        set(coverage, left.pixels.end, run.first, kWeightFull);
        set(coverage, run.end, right.pixels.first, kWeightFull);
        cover_pixels(right, coverage);
        for (int32_t x = right.pixels.first; x < right.pixels.end; ++x)
            coverage[x] = static_cast<uint16_t>(kWeightFull - coverage[x]);
        set(coverage, right.pixels.end, end, 0);
    }
    covered.add_around({first, end}, run, width_);
    return true;
}

// ---------------------------------------------------------------- sums of edges

/// Adds coverage that is as given for some pixels, 0 before them and `finally` behind them.
void LineCoverer::add_change(int32_t* change, const uint16_t* coverage, const PixelRange& pixels, int32_t finally,
                             int32_t sign) {
    int32_t reached = 0;
    for (int32_t x = pixels.first; x < pixels.end; ++x) {
        change[x] = wrapping_add(change[x], sign * (coverage[x] - reached));
        reached = coverage[x];
    }
    change[pixels.end] = wrapping_add(change[pixels.end], sign * (finally - reached));
    reaches_[reach_count_++] = {even_below(pixels.first), even_below(pixels.end) + 2};
}

void LineCoverer::add_edge(int32_t* change, const EdgeCover& edge, int32_t sign) {
    if (edge.pixels.first >= width_)
        return;
    cover_pixels(edge, edge_);
    add_change(change, edge_, edge.pixels, kWeightFull, sign);
}

inline void LineCoverer::add_pair(int32_t* change, const EdgeCover& left, const EdgeCover& right) {
    if (right.pixels.first - left.pixels.end < kShortRun) {
        const PixelRange pixels = cover_pair(pair_, left, right);
        if (!pixels.empty())
            add_change(change, pair_, pixels, 0, 1);
    } else {
        add_edge(change, left, 1);
        add_edge(change, right, -1);
    }
}

/// Pixels of one coverage. Both ends are even, or the end is the line's.
void LineCoverer::add_run(CoveredLine& covered, int32_t first, int32_t end, int32_t value) const {
    if (first >= end || value == 0)
        return;
    const int32_t full_end = value == kWeightFull && end - first >= kShortRun ? even_below(end) : first;
    if (first < full_end)
        covered.add_full(first, full_end);
    set(covered.coverage_, full_end, end, static_cast<uint64_t>(value));
    covered.add(full_end, end, width_);
}

/// Sums of kLines lines' changes in kRows rows, each row held, give the mean.
template <int kRows, int kLines>
void LineCoverer::sum_up(CoveredLine& covered) {
    if (reach_count_ > 1) {
        PixelRange all = reaches_[0];
        for (int32_t i = 1; i < reach_count_; ++i)
            all = {std::min(all.first, reaches_[i].first), std::max(all.end, reaches_[i].end)};
        if (all.end - all.first <= kShortReach) {
            reaches_[0] = all;
            reach_count_ = 1;
        } else {
            sort_by_first_pixel(reaches_, reach_count_);
        }
    }
    int32_t sum[kRows] = {};
    const auto mean = [&] {
        constexpr int32_t kMost = kWeightFull * kLines / kRows;
        uint32_t total = 0;
        for (const int32_t value : sum)
            total += static_cast<uint32_t>(held(value, 0, kMost));
        return static_cast<int32_t>(total / kLines);
    };
    int32_t at = 0;
    for (int32_t i = 0; i < reach_count_; ++i) {
        const PixelRange reach = {std::max(reaches_[i].first, at), std::min(reaches_[i].end, width_ + 1)};
        if (reach.empty())
            continue;
        add_run(covered, at, reach.first, mean());
        for (at = reach.first; at < reach.end; ++at) {
            for (int row = 0; row < kRows; ++row) {
                sum[row] = wrapping_add(sum[row], change_[row][at]);
                change_[row][at] = 0;
            }
            covered.coverage_[at] = static_cast<uint16_t>(mean());
        }
        covered.add(reach.first, reach.end, width_);
    }
    add_run(covered, at, width_, mean());
    reach_count_ = 0;
}

// ---------------------------------------------------------------- a few pixels

/// The mean, cut, of pairs on some of the sub-lines. False: they span too many pixels, and nothing is done.
bool LineCoverer::cover_narrow(CoveredLine& covered, const EdgeCover (*pairs)[2], int count) {
    PixelRange all = {width_, 0};
    for (int i = 0; i < count; ++i) {
        for (const EdgeCover& edge : pairs[i])
            all = {std::min(all.first, edge.pixels.first), std::max(all.end, edge.pixels.end)};
    }
    all = {even_below(all.first), even_above(all.end)};
    if (all.end - all.first > kShortReach)
        return false;
    uint16_t* const coverage = covered.coverage_;
    std::fill(coverage + all.first, coverage + std::max(all.first, all.end), uint16_t{0});
    for (int i = 0; i < count; ++i) {
        const PixelRange pixels = cover_pair(pair_, pairs[i][0], pairs[i][1]);
        for (int32_t x = pixels.first; x < pixels.end; ++x)
            coverage[x] = static_cast<uint16_t>(coverage[x] + pair_[x]);
    }
    for (int32_t x = all.first; x < all.end; ++x)
        coverage[x] = static_cast<uint16_t>(coverage[x] / kSubLines);
    covered.add(all.first, all.end, width_);
    return true;
}

// ---------------------------------------------------------------- a line

void LineCoverer::cover(CoveredLine& covered, int32_t line, const Crossing* crossings, int32_t count) {
    const auto edge = [&](int32_t i) { return EdgeCover(crossings[i], kSubLines, width_); };
    covered.restart(line);
    int32_t i = 0;
    while (i + 1 < count && cover_alone(covered, edge(i), edge(i + 1)))
        i += 2;
    if (i >= count)
        return;
    covered.restart(line);
    need_rows(1);
    for (i = 0; i < count; ++i)
        add_edge(change_[0], edge(i), i % 2 ? -1 : 1);
    sum_up<1, 1>(covered);
}

void LineCoverer::cover_mean(CoveredLine& covered, int32_t line, const Crossing* const (&crossings)[kSubLines],
                             const int32_t (&count)[kSubLines]) {
    const auto edge = [&](int sub_line, int32_t i) { return EdgeCover(crossings[sub_line][i], 1, width_); };
    const auto is_pair = [](int32_t edge_count) { return edge_count == 0 || edge_count == 2; };
    covered.restart(line);
    if (is_pair(count[0]) && is_pair(count[1]) && is_pair(count[2])) {
        EdgeCover pairs[kSubLines][2];
        int pair_count = 0;
        for (int sub_line = 0; sub_line < kSubLines; ++sub_line) {
            if (count[sub_line] != 2)
                continue;
            pairs[pair_count][0] = edge(sub_line, 0);
            pairs[pair_count++][1] = edge(sub_line, 1);
        }
        if (cover_narrow(covered, pairs, pair_count))
            return;
        need_rows(1);
        for (int i = 0; i < pair_count; ++i)
            add_pair(change_[0], pairs[i][0], pairs[i][1]);
        sum_up<1, kSubLines>(covered);
        return;
    }
    need_rows(kSubLines);
    for (int sub_line = 0; sub_line < kSubLines; ++sub_line) {
        for (int32_t i = 0; i < count[sub_line]; ++i)
            add_edge(change_[sub_line], edge(sub_line, i), i % 2 ? -1 : 1);
    }
    sum_up<kSubLines, kSubLines>(covered);
}

}  // namespace zepbmp
