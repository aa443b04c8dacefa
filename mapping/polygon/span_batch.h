/// \file
/// The order in which a polygon's spans are drawn.
#pragma once

#include "mapping/polygon/spans.h"

namespace zepbmp {

/// Spans of some lines, drawn together in upright strips of a kernel's block: a strip's lines share most of their
/// texels, and of the pages that these lie on, and both are few enough for the first-level caches.
class SpanBatch {
public:
    explicit SpanBatch(const SpanDrawer& drawer) : drawer_(drawer) {}

    void add(const Span& span) {
        spans_[count_++] = span;
        if (count_ == kMost)
            draw();
    }
    /// What has been added since the last time; needed after the last span, too.
    void draw();

private:
    static constexpr int kMost = 32;

    const SpanDrawer& drawer_;
    int count_ = 0;
    Span spans_[kMost];
};

}  // namespace zepbmp
