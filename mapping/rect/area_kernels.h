/// \file
/// The kernel sets for area resampling.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

/// A reduction that covers more source pixels than this in a run of kAreaPixels is drawn in shorter runs.
constexpr int32_t kAreaColumns = 4 * kAreaPixels;

struct AreaScratch {
    int dummy;
};

extern const AreaKernels kAreaPlain;

}  // namespace zepbmp
