#include "shapes/circle_samples.h"

#include <cmath>

#include "core/bitmap.h"
#include "shapes/ramp.h"

namespace zepbmp {
namespace {

/// The middle of part i of a side cut into `parts`.
constexpr double sample_offset(int i, int parts) { return (i + 0.5) / parts; }

}  // namespace

HardSamples::HardSamples(double centre, double radius, double line_dy, double aspect) : cx(centre) {
    for (int k = 0; k < kSide; ++k) {
        const double dy = line_dy + aspect * sample_offset(k, kSide);
        reach_squared[k] = radius * radius - dy * dy;
    }
}

SoftSamples::SoftSamples(const RampLine& line, double inner_radius, double line_dy, double aspect)
    : ramp(line), radius_squared(line.radius * line.radius), inner_radius_squared(inner_radius * inner_radius) {
    for (int k = 0; k < kSide; ++k) {
        const double dy = line_dy + aspect * sample_offset(k, kSide);
        dy_squared[k] = dy * dy;
    }
}

void sample_hard_edge(uint16_t* weights, int32_t first, int32_t end, const HardSamples& samples) {
    constexpr int kSide = HardSamples::kSide;
    constexpr int kSampleWeight = kWeightFull / (kSide * kSide);
    for (int32_t x = first; x < end; ++x) {
        int inside = 0;
        for (int j = 0; j < kSide; ++j) {
            const double dx = x - samples.cx + sample_offset(0, kSide) + j * (1.0 / kSide);
            for (int k = 0; k < kSide; ++k)
                inside += dx * dx <= samples.reach_squared[k];
        }
        weights[x] = static_cast<uint16_t>(inside * kSampleWeight);
    }
}

void sample_soft_edge(uint16_t* weights, int32_t first, int32_t end, const SoftSamples& samples) {
    constexpr int kSide = SoftSamples::kSide;
    const RampLine& ramp = samples.ramp;
    for (int32_t x = first; x < end; ++x) {
        int sum = 0;
        for (int j = 0; j < kSide; ++j) {
            const double dx = x - ramp.cx + sample_offset(0, kSide) + j * (1.0 / kSide);
            for (int k = 0; k < kSide; ++k) {
                const double distance_squared = dx * dx + samples.dy_squared[k];
                if (distance_squared <= samples.inner_radius_squared)
                    sum += kWeightFull;
                else if (distance_squared <= samples.radius_squared)
                    sum += ramp.table[ramp_step(std::sqrt(distance_squared), ramp.radius, ramp.scale)];
            }
        }
        weights[x] = static_cast<uint16_t>(sum / (kSide * kSide));
    }
}

}  // namespace zepbmp
