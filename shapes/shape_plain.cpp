/// \file
/// The plain kernels of the shapes.
#include <cmath>

#include "core/bitmap.h"
#include "shapes/ramp.h"
#include "shapes/shape_kernels.h"

namespace zepbmp {
namespace {

void add_run(uint16_t* weights, int32_t count, int32_t v) {
    for (int32_t i = 0; i < count; ++i)
        weights[i] = static_cast<uint16_t>(weights[i] + v);
}

void max_run(uint16_t* weights, int32_t count, int32_t v) {
    for (int32_t i = 0; i < count; ++i)
        weights[i] = static_cast<uint16_t>(weights[i] < v ? v : weights[i]);
}

}  // namespace

void ramp_plain(uint16_t* weights, int32_t first, int32_t end, const RampLine& line) {
    for (int32_t x = first; x < end; ++x) {
        const double dx = x - line.cx + 0.5;
        const double distance = std::sqrt(dx * dx + line.dy * line.dy);
        weights[x] = line.table[ramp_step(distance, line.radius, line.scale)];
    }
}

void soft_edge_plain(uint16_t* weights, int32_t first, int32_t end, const SoftEdgeLine& line) {
    const RampLine& ramp = line.ramp;
    for (int32_t x = first; x < end; ++x) {
        int sum = 0;
        for (int j = 0; j < 2; ++j) {
            const double dx = x - ramp.cx + 0.25 + 0.5 * j;
            for (const double dy_squared : line.dy_squared) {
                const double distance_squared = dx * dx + dy_squared;
                if (distance_squared <= line.inner_radius_squared)
                    sum += kWeightFull;
                else if (distance_squared <= line.radius_squared)
                    sum += ramp.table[ramp_step(std::sqrt(distance_squared), ramp.radius, ramp.scale)];
            }
        }
        weights[x] = static_cast<uint16_t>(sum / 4);
    }
}

const ShapeKernels kShapesPlain = {
    .add_run = add_run,
    .max_run = max_run,
    .ramp = ramp_plain,
    .soft_edge = soft_edge_plain,
};

}  // namespace zepbmp
