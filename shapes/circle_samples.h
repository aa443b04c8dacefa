/// \file
/// Supersampled pixels of a circle's edges, one line at a time.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

/// 4 x 4 samples against a hard edge.
struct HardSamples {
    static constexpr int kSide = 4;
    double cx;
    double reach_squared[kSide];  ///< radius^2 - dy^2 of each row of samples

    /// `line_dy`: from the centre to the line's upper edge, in pixels.
    HardSamples(double cx, double radius, double line_dy, double aspect);
};

/// 2 x 2 samples of a soft edge.
struct SoftSamples {
    static constexpr int kSide = 2;
    const RampLine& ramp;
    double radius_squared, inner_radius_squared;
    double dy_squared[kSide];  ///< of each row of samples

    SoftSamples(const RampLine& ramp, double inner_radius, double line_dy, double aspect);
};

/// weights[x] for x = first .. end-1 of the line that starts at `weights`: 256 for every sample inside.
void sample_hard_edge(uint16_t* weights, int32_t first, int32_t end, const HardSamples& samples);

/// The same: a quarter of the sum of the samples' ramp weights, truncated.
void sample_soft_edge(uint16_t* weights, int32_t first, int32_t end, const SoftSamples& samples);

}  // namespace zepbmp
