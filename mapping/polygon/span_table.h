/// \file
/// How a row of the span selection table looks.
#pragma once

#include "mapping/polygon/span_kernels.h"

namespace zepbmp {

/// One for each column of the selection tables, see kernel_column().
struct SpanRow {
    SpanGroup group;
    const SpanSet* column[kKernelColumns];
};

extern const SpanRow kSpanRows[kSpanGroups];

/// Fills each row's group: the kernels of its set, where that has none the plain ones.
void select_spans(const SpanRow (&rows)[kSpanGroups], int column);

}  // namespace zepbmp
