/// \file
/// The walk over a polygon's lines: which edges cross a line, from left to right.
#pragma once

#include "core/arithmetic.h"
#include "mapping/polygon/crossing.h"

namespace zepbmp {

/// Goes through the lines from the first edge's down. On each: enter(), look at the active edges, leave().
class EdgeWalk {
public:
    /// `edges`: sorted by first line, moved along by the walk. `active`: room for as many.
    EdgeWalk(Edge* edges, int32_t count, Edge** active)
        : next_(edges), end_(edges + count), active_(active), line_(count > 0 ? edges->first : 0) {}

    bool done() const { return next_ == end_ && count_ == 0; }
    int32_t line() const { return line_; }

    /// Takes in the edges that begin on this line and puts all in order. True: they are those of the line before, in
    /// the same order.
    bool enter() {
        if (next_ != end_ && next_->first == line_)
            add();
        for (int32_t i = 1; i < count_; ++i) {
            if (active_[i]->before(*active_[i - 1])) {
                sort();
                break;
            }
        }
        const bool same = same_;
        same_ = true;
        return same;
    }

    /// Goes through several lines at once, where no edge begins or ends on them and their order stays; crossings[i][j]
    /// is edge j's on the i-th. False: it is otherwise, and nothing is done.
    template <int kLines>
    bool pass(Crossing* const (&crossings)[kLines]) {
        const int32_t end = line_ + kLines;
        if (first_end_ <= end || (next_ != end_ && next_->first < end))
            return false;
        for (int32_t i = 0; i < count_; ++i) {
            const Edge& edge = *active_[i];
            float x = edge.x;
            for (int line = 0; line < kLines; ++line) {
                if (i > 0 && !(x > crossings[line][i - 1].x) &&
                    (x < crossings[line][i - 1].x || edge.order < active_[i - 1]->order))
                    return false;
                crossings[line][i] = {&edge, x};
                x = single(x + edge.slope);
            }
        }
        for (int32_t i = 0; i < count_; ++i)
            active_[i]->x = single(crossings[kLines - 1][i].x + active_[i]->slope);
        line_ = end;
        same_ = true;
        return true;
    }

    int32_t count() const { return count_; }
    const Edge& operator[](int32_t i) const { return *active_[i]; }

    /// Moves on to the next line that an edge crosses.
    void leave() {
        if (++line_ == first_end_)
            remove();
        for (int32_t i = 0; i < count_; ++i)
            active_[i]->x = single(active_[i]->x + active_[i]->slope);
        if (count_ == 0 && next_ != end_)
            line_ = next_->first;
    }

private:
    void add();
    void remove();
    void sort();

    Edge *next_, *end_;  // those that have not begun yet
    Edge** active_;
    int32_t count_ = 0;
    int32_t line_;
    int32_t first_end_ = INT32_MAX;  // of the active edges
    bool same_ = false;              // since the line before nothing was added, removed or sorted
};

}  // namespace zepbmp
