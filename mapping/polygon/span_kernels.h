/// \file
/// The span kernels' tables: one for each instruction set, all writing the same bytes.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

struct SpanSet {
    SpanKernel* kernel[kSpanGroups][kSpanFilters];  ///< null: the plain kernel serves
};

extern const SpanSet kSpansPlain, kSpansSse2, kSpansAvx2, kSpansAvx512;

}  // namespace zepbmp
