/// \file
/// From the edges on a line to the coverage of its pixels.
///
/// An edge's coverage of a pixel is the part of the pixel's area that lies right of it, 0..4096. A pair of edges covers
/// a pixel with the left one's coverage minus the right one's; pairs add up, and the sum is held to 0..4096.
#pragma once

#include "mapping/polygon/arena.h"
#include "mapping/polygon/spans.h"

namespace zepbmp {

/// An edge on a stretch of lines, as far as it goes: past its own ends it counts as upright.
struct EdgeCover {
    int32_t begin, end;  ///< x at the top and the bottom of the stretch, in rising order, 1/4096 pixel
    int32_t low, high;   ///< the two, held to the range of the edge
    PixelRange pixels;   ///< that are partly left of it, within the line; those behind them lie right of it

    EdgeCover() = default;
    /// `x`: at the centre of the stretch's first line, of `lines`.
    EdgeCover(const Crossing& crossing, int lines, int32_t width);
};

/// Pixels of a line that are covered; the first one is even.
struct CoverSegment {
    PixelRange pixels;
    bool full;  ///< every coverage is 4096, and the end is even
};

/// The coverage of one line after the other.
class CoverageLine {
public:
    static uint64_t bytes(int32_t width, uint64_t edges);

    /// Takes its storage from the arena. Every edge lies in pixels `reach`.
    CoverageLine(Arena& arena, int32_t width, uint64_t edges, const PixelRange& reach);

    /// Of one stretch of lines, crossed by `count` edges in this order.
    void cover(const EdgeCover* edges, int32_t count);
    /// The mean, cut, of three.
    void cover_mean(const EdgeCover* const (&edges)[kSubLines], const int32_t (&count)[kSubLines]);

    const CoverSegment* begin() const { return segments_; }
    const CoverSegment* end() const { return segments_ + segment_count_; }
    /// Of pixel 0 first; set in the segments that are not full.
    const uint16_t* coverage() const { return coverage_; }

private:
    bool cover_apart(const EdgeCover& left, const EdgeCover& right);
    void add(int sub_line, const EdgeCover* edges, int32_t count);
    template <int kLines>
    void sum_up();
    void add_run(int32_t first, int32_t end, int32_t value);
    void add_segment(int32_t first, int32_t end);

    int32_t width_;
    uint16_t *coverage_, *ramp_;
    int32_t* change_[kSubLines];  // of coverage from a pixel to the next; 0 between two calls
    PixelRange* reaches_;         // where coverage changes, even pixels
    CoverSegment* segments_;
    int32_t reach_count_ = 0, segment_count_ = 0;
};

}  // namespace zepbmp
