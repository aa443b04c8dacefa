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
    static uint64_t bytes(const Target& target, const Polygon& polygon);

    AntialiasedWalk(Arena& arena, const Target& target, const Polygon& polygon);

    const Edge* edges() const { return edges_; }
    int32_t edge_count() const { return edge_count_; }

    /// Goes to the next line that the flags select and that the polygon may touch. False: there is none.
    bool next();

    int32_t line() const { return line_; }
    bool whole() const { return whole_; }
    const CoverageLine& coverage() const { return coverage_; }

    /// The edges on a sub-line, 0 to 2 of the line.
    int32_t count(int sub_line) const { return count_[sub_line]; }
    const Crossing* crossings(int sub_line) const { return crossings_[sub_line]; }
    /// Their coverages: on a whole line only of sub-line 0, and those of the line.
    const EdgeCover* covers(int sub_line) const { return covers_[sub_line]; }

private:
    AntialiasedWalk(Arena& arena, const Target& target, const Polygon& polygon, uint64_t most);
    void cross_sub_lines();
    bool is_whole() const;
    void set_covers(int sub_line, int lines);

    int32_t width_;
    SelectedLines selected_;
    Edge* edges_;
    int32_t edge_count_;
    EdgeWalk walk_;
    CoverageLine coverage_;
    Crossing* crossings_[kSubLines];
    EdgeCover* covers_[kSubLines];
    int32_t count_[kSubLines];
    int32_t line_ = 0;
    bool whole_ = false;
};

}  // namespace zepbmp
