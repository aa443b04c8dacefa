/// \file
/// The kernel sets of the shapes, and what their plain and vector forms share.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

extern const ShapeKernels kShapesPlain;
extern const ShapeKernels kShapesSse2;
extern const ShapeKernels kShapesAvx2;
extern const ShapeKernels kShapesAvx512;

/// The meaning of ShapeKernels::ramp and ::soft_edge; vector forms call them for pixels they can't settle in single
/// precision.
void ramp_plain(uint16_t* weights, int32_t first, int32_t end, const RampLine& line);
void soft_edge_plain(uint16_t* weights, int32_t first, int32_t end, const SoftEdgeLine& line);

}  // namespace zepbmp
