#include "mapping/polygon/span_batch.h"

namespace zepbmp {

void SpanBatch::draw() {
    int32_t strip = INT32_MAX, last = -1;
    for (int i = 0; i < count_; ++i) {
        strip = spans_[i].first < strip ? spans_[i].first : strip;
        last = spans_[i].last > last ? spans_[i].last : last;
    }
    for (strip &= -kSpanBlock; strip <= last; strip += kSpanBlock) {
        const int32_t strip_last = strip + (kSpanBlock - 1);
        for (int i = 0; i < count_; ++i) {
            Span part = spans_[i];
            part.first = part.first > strip ? part.first : strip;
            part.last = part.last < strip_last ? part.last : strip_last;
            if (part.first <= part.last)
                drawer_.draw(part);
        }
    }
    count_ = 0;
}

}  // namespace zepbmp
