/// \file
/// The kernel sets for lines of bytes.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

extern const LineKernels kLinePlain;
extern const LineKernels kLineMmx;
extern const LineKernels kLineMmxExt;
extern const LineKernels kLineSse2;
extern const LineKernels kLineAvx2;
extern const LineKernels kLineAvx512;

}  // namespace zepbmp
