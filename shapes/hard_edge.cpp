#include "shapes/hard_edge.h"

#include "core/bitmap.h"

namespace zepbmp {
namespace {

constexpr int kSide = HardEdgeLine::kSide;
constexpr double kSampleStep = 1.0 / kSide;
constexpr double kFirstSample = kSampleStep / 2;

}  // namespace

HardEdgeLine::HardEdgeLine(double centre, double radius, double line_dy, double aspect) : cx(centre) {
    for (int k = 0; k < kSide; ++k) {
        const double dy = line_dy + aspect * (kFirstSample + kSampleStep * k);
        reach_squared[k] = radius * radius - dy * dy;
    }
}

void hard_edge(uint16_t* weights, int32_t first, int32_t end, const HardEdgeLine& line) {
    constexpr int kSampleWeight = kWeightFull / (kSide * kSide);
    for (int32_t x = first; x < end; ++x) {
        int inside = 0;
        for (int j = 0; j < kSide; ++j) {
            const double dx = x - line.cx + kFirstSample + kSampleStep * j;
            for (const double reach_squared : line.reach_squared)
                inside += dx * dx <= reach_squared;
        }
        weights[x] = static_cast<uint16_t>(inside * kSampleWeight);
    }
}

}  // namespace zepbmp
