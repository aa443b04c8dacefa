/// \file
/// The walk over a polygon's lines: which edges cross a line, from left to right.
#pragma once

#include "mapping/polygon/edges.h"

namespace zepbmp {

/// Goes through the lines from the first edge's down. On each: enter(), look at the active edges, leave().
class EdgeWalk {
public:
    /// `edges`: sorted by first line, moved along by the walk. `active`: room for as many.
    EdgeWalk(Edge* edges, int32_t count, Edge** active)
        : next_(edges), end_(edges + count), active_(active), line_(count > 0 ? edges->first : 0) {}

    bool done() const { return next_ == end_ && count_ == 0; }
    int32_t line() const { return line_; }

    /// Takes in the edges that begin on this line and puts all in order.
    void enter() {
        while (next_ != end_ && next_->first == line_)
            active_[count_++] = next_++;
        for (int32_t i = 1; i < count_; ++i) {
            if (active_[i]->before(*active_[i - 1])) {
                sort();
                break;
            }
        }
    }

    int32_t count() const { return count_; }
    const Edge& operator[](int32_t i) const { return *active_[i]; }

    /// Moves on to the next line that an edge crosses.
    void leave();

private:
    void sort();

    Edge *next_, *end_;  // those that have not begun yet
    Edge** active_;
    int32_t count_ = 0;
    int32_t line_;
};

}  // namespace zepbmp
