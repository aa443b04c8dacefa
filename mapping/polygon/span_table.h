/// \file
/// How a row of the span selection table looks.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

struct SpanRow {
    SpanGroup group;
    const SpanKernel* column[2];  ///< tables of at least kSpanFilters kernels: for levels 0 and 1, for levels 2 to 4
};

extern const SpanRow kSpanRows[kSpanGroups];

/// The column that a level takes: 0 or 1.
int span_column(int level);

/// Copies exactly kSpanFilters kernels of each row's table into its group.
void select_spans(const SpanRow (&rows)[kSpanGroups], int level);

}  // namespace zepbmp
