/// \file
/// The walk over a polygon's lines for anti-aliased drawing: three sub-lines to a line, and the line's coverage.
#pragma once

#include "mapping/polygon/coverage.h"
#include "mapping/polygon/edge_walk.h"
#include "mapping/polygon/plane.h"
#include "mapping/polygon/polygon.h"

namespace zepbmp {

/// A line whose three sub-lines are crossed by the same edges in the same order is whole: its coverage is that of the
/// line. On others it is the mean of the sub-lines'.
class AntialiasedWalk {
public:
    static constexpr int kMostKept = 8;

    /// What the polygon can cover of the picture.
    static LineCoverer::Extent extent_of(const Target& target, const Polygon& polygon);

    /// lines_kept: the lines whose coverage stays, 1..kMostKept.
    static uint64_t bytes(const LineCoverer::Extent& extent, int lines_kept = 1);

    AntialiasedWalk(Arena& arena, const Target& target, const Polygon& polygon, const LineCoverer::Extent& extent,
                    int lines_kept = 1);

    const Edge* edges() const { return edges_; }
    int32_t edge_count() const { return edge_count_; }

    /// Goes to the next line that the flags select and that the polygon may touch. False: there is none.
    bool next();

    int32_t line() const { return line_; }
    bool whole() const { return whole_; }
    const CoveredLine& coverage() const { return covered_[at_]; }
    /// Of the line that was reached `back` lines before this one, back < lines_kept.
    const CoveredLine& coverage(int back) const {
        return covered_[at_ >= back ? at_ - back : at_ - back + lines_kept_];
    }

    /// The edges on a sub-line, 0 to 2 of the line.
    int32_t count(int sub_line) const { return count_[sub_line]; }
    const Crossing* crossings(int sub_line) const { return crossings_[sub_line]; }
    /// Their coverages: on a whole line only of sub-line 0, and those of the line. The next call overwrites them.
    const EdgeCover* covers(int sub_line) const;

private:
    void cross_sub_lines();

    int32_t width_;
    SelectedLines selected_;
    int lines_kept_;
    Edge* edges_;
    int32_t edge_count_;
    EdgeWalk walk_;
    LineCoverer coverer_;
    CoveredLine covered_[kMostKept];
    Crossing* crossings_[kSubLines];
    EdgeCover* covers_;
    int32_t count_[kSubLines];
    int32_t line_ = 0;
    int at_ = 0;  // this line's coverage
    bool whole_ = false;
};

}  // namespace zepbmp
