/// \file
/// From the edges on a line to the coverage of its pixels.
///
/// An edge's coverage of a pixel is the part of the pixel's area that lies right of it, 0..4096. A pair of edges covers
/// a pixel with the left one's coverage minus the right one's; pairs add up, and the sum is held to 0..4096.
#pragma once

#include "core/arithmetic.h"
#include "mapping/polygon/arena.h"
#include "mapping/polygon/crossing.h"

namespace zepbmp {

/// An edge on a stretch of lines, as far as it goes: past its own ends it counts as upright.
struct EdgeCover {
    int32_t begin, end;  ///< x at the top and the bottom of the stretch, in rising order, 1/4096 pixel
    int32_t low, high;   ///< the two, held to the range of the edge
    PixelRange pixels;   ///< that are partly left of it, within the line; those behind them lie right of it
    bool inside;         ///< begin and end are low and high, and within the line

    EdgeCover() = default;
    /// `x`: at the centre of the stretch's first line, of `lines`.
    EdgeCover(const Crossing& crossing, int lines, int32_t width) {
        const Edge& edge = *crossing.edge;
        const double x = crossing.x, slope = edge.slope;
        const double top = (x - 0.5 * slope) * kPixelUnits, bottom = (x + (lines - 0.5) * slope) * kPixelUnits;
        low = begin = hold_to_int32(top < bottom ? top : bottom);
        high = end = hold_to_int32(top < bottom ? bottom : top);
        inside = true;
        if (begin < edge.low || end > edge.high) {
            low = held(begin, edge.low, edge.high);
            high = held(end, edge.low, edge.high);
            inside = false;
        }
        pixels = {low >> kPixelBits, (high >> kPixelBits) + ((high & (kPixelUnits - 1)) != 0)};
        if (pixels.first < 0 || pixels.end > width) {
            pixels = {held(pixels.first, 0, width), held(pixels.end, 0, width)};
            inside = false;
        }
    }
};

/// Pixels of a line that are covered; the first one is even.
struct CoverSegment {
    PixelRange pixels;
    bool full;  ///< every coverage is 4096, and the end is even
};

/// The covered pixels of a line, segment by segment from left to right.
class CoveredLine {
public:
    const CoverSegment* begin() const { return segments_; }
    const CoverSegment* end() const { return segments_ + count_; }
    /// Of pixel 0 first; set in the segments that are not full.
    const uint16_t* coverage() const { return coverage_; }
    int32_t line() const { return line_; }

private:
    friend class LineCoverer;

    void restart(int32_t line) {
        line_ = line;
        count_ = 0;
    }
    void add_full(int32_t first, int32_t end) { segments_[count_++] = {{first, end}, true}; }
    void add(int32_t first, int32_t end, int32_t width);
    void add_around(const PixelRange& pixels, const PixelRange& run, int32_t width);

    uint16_t* coverage_;
    CoverSegment* segments_;
    int32_t line_ = 0, count_ = 0;
};

/// Computes the coverage of lines.
class LineCoverer {
public:
    /// What there is to be covered.
    struct Extent {
        PixelRange reach;  ///< that edges can touch
        uint64_t edges;    ///< at most
    };
    static uint64_t bytes(const Extent& extent);
    static uint64_t line_bytes(const Extent& extent);

    /// Both take their storage from the arena.
    LineCoverer(Arena& arena, const Extent& extent, int32_t width);
    static CoveredLine new_line(Arena& arena, const Extent& extent);

    /// Of one line, crossed by these edges in this order; the crossings are those of the first sub-line.
    void cover(CoveredLine& covered, int32_t line, const Crossing* crossings, int32_t count);
    /// The mean, cut, of the three sub-lines.
    void cover_mean(CoveredLine& covered, int32_t line, const Crossing* const (&crossings)[kSubLines],
                    const int32_t (&count)[kSubLines]);

private:
    PixelRange cover_pair(uint16_t* coverage, const EdgeCover& left, const EdgeCover& right);
    bool cover_alone(CoveredLine& covered, const EdgeCover& left, const EdgeCover& right);
    void add_change(int32_t* change, const uint16_t* coverage, const PixelRange& pixels, int32_t finally, int32_t sign);
    void add_edge(int32_t* change, const EdgeCover& edge, int32_t sign);
    void add_pair(int32_t* change, const EdgeCover& left, const EdgeCover& right);
    bool cover_narrow(CoveredLine& covered, const EdgeCover (*pairs)[2], int count);
    void need_rows(int rows);
    template <int kRows, int kLines>
    void sum_up(CoveredLine& covered);
    void add_run(CoveredLine& covered, int32_t first, int32_t end, int32_t value) const;

    int32_t width_;
    PixelRange reach_;
    uint16_t *edge_, *pair_;      // coverage by one edge, by one pair
    int32_t* change_[kSubLines];  // of coverage from a pixel to the next; 0 between two calls
    int clear_rows_ = 0;          // of change_, the others are not needed yet
    PixelRange* reaches_;         // where coverage changes, even pixels
    int32_t reach_count_ = 0;
};

}  // namespace zepbmp
