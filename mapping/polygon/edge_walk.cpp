#include "mapping/polygon/edge_walk.h"

#include <algorithm>

#include "core/arithmetic.h"

namespace zepbmp {

void EdgeWalk::sort() {
    std::sort(active_, active_ + count_, [](const Edge* a, const Edge* b) { return a->before(*b); });
}

void EdgeWalk::leave() {
    ++line_;
    int32_t kept = 0;
    for (int32_t i = 0; i < count_; ++i) {
        Edge* const edge = active_[i];
        if (edge->end <= line_)
            continue;
        edge->x = single(edge->x + edge->slope);
        active_[kept++] = edge;
    }
    count_ = kept;
    if (count_ == 0 && next_ != end_)
        line_ = next_->first;
}

}  // namespace zepbmp
