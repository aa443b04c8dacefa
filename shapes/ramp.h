/// \file
/// The two profiles of a circle's soft edge.
#pragma once

#include <cstdint>

#include "core/arithmetic.h"
#include "core/kernel_tables.h"

namespace zepbmp {

/// How far into the soft edge a point lies that is `distance` from the centre: trunc((radius - distance) * scale +
/// 0.5), held to 0..kRampSteps.
inline int32_t ramp_step(double distance, double radius, double scale) {
    const int32_t step = trunc_to_int32((radius - distance) * scale + 0.5);
    return step < 0 ? 0 : step > kRampSteps ? kRampSteps : step;
}

/// Weights by step, 0 at the outer edge; one word of slack behind the last.
struct RampTable {
    uint16_t weight[kRampSteps + 2];
};

extern const RampTable kLinearRamp;  ///< 4 * k
extern const RampTable kCosineRamp;  ///< round(4096 * (1 - cos(pi * k / 1024)) / 2)

}  // namespace zepbmp
