#include "mapping/rect/axis.h"

namespace zepbmp {
namespace {

int32_t at_most(int64_t value, int32_t most) { return value < most ? static_cast<int32_t>(value) : most; }

}  // namespace

Cursor::Cursor(int64_t position, int64_t step, int32_t size) : step_(at_most(step, kEndless)), last_(size - 1) {
    if (position < 0) {  // before the source: its first pixel reaches back to here
        index_ = 0;
        left_ = last_ == 0 || position < -int64_t{kEndless} ? kEndless : at_most(step - position, kEndless);
        return;
    }
    const int64_t index = position / step;
    enter(at_most(index, last_));
    if (index < last_)
        left_ = at_most(step - position % step, kEndless);
}

AreaSpan Cursor::take(int32_t units) {
    AreaSpan span = {index_, 1, units < left_ ? units : left_, 0};
    units -= span.first_weight;
    left_ -= span.first_weight;
    while (units > 0) {
        enter(index_ + 1);
        span.last_weight = units < left_ ? units : left_;
        ++span.count;
        units -= span.last_weight;
        left_ -= span.last_weight;
    }
    if (left_ < 1)
        enter(index_ + 1);
    return span;
}

}  // namespace zepbmp
