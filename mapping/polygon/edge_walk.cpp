#include "mapping/polygon/edge_walk.h"

#include <algorithm>

namespace zepbmp {
namespace {

/// Few edges change places from a line to the next. False: here it is many, and they are in some order.
bool insert_by_position(Edge** edges, int32_t count) {
    constexpr int kMovesPerEdge = 8;  // with more, sorting anew is faster
    int64_t moves_left = int64_t{kMovesPerEdge} * count;
    for (int32_t i = 1; i < count; ++i) {
        Edge* const edge = edges[i];
        int32_t at = i;
        for (; at > 0 && edge->before(*edges[at - 1]); --at)
            edges[at] = edges[at - 1];
        edges[at] = edge;
        moves_left -= i - at;
        if (moves_left < 0)
            return false;
    }
    return true;
}

// A function of this file alone, so that what the standard library makes of the comparison is, too.
void sort_by_position(Edge** edges, int32_t count) {
    std::sort(edges, edges + count, [](const Edge* a, const Edge* b) { return a->before(*b); });
}

}  // namespace

void EdgeWalk::add() {
    same_ = false;
    for (; next_ != end_ && next_->first == line_; ++next_) {
        active_[count_++] = next_;
        first_end_ = std::min(first_end_, next_->end);
    }
}

void EdgeWalk::remove() {
    same_ = false;
    first_end_ = INT32_MAX;
    int32_t kept = 0;
    for (int32_t i = 0; i < count_; ++i) {
        Edge* const edge = active_[i];
        if (edge->end <= line_)
            continue;
        first_end_ = std::min(first_end_, edge->end);
        active_[kept++] = edge;
    }
    count_ = kept;
}

void EdgeWalk::sort() {
    same_ = false;
    if (!insert_by_position(active_, count_))
        sort_by_position(active_, count_);
}

}  // namespace zepbmp
