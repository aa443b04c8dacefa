/// \file
/// The supersampled pixels of a hard circle's edge, one line at a time.
#pragma once

#include <cstdint>

namespace zepbmp {

struct HardEdgeLine {
    static constexpr int kSide = 4;  ///< samples a pixel, in each direction
    double cx;
    double reach_squared[kSide];  ///< radius^2 - dy^2 of each row of samples

    /// `line_dy`: from the centre to the line's upper edge, in pixels.
    HardEdgeLine(double cx, double radius, double line_dy, double aspect);
};

/// weights[x] for x = first .. end-1 of the line that starts at `weights`: 256 for every sample inside.
void hard_edge(uint16_t* weights, int32_t first, int32_t end, const HardEdgeLine& line);

}  // namespace zepbmp
