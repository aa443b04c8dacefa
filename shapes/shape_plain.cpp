/// \file
/// The plain kernels of the shapes.
#include <cmath>

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

const ShapeKernels kShapesPlain = {
    .add_run = add_run,
    .max_run = max_run,
    .ramp = ramp_plain,
};

}  // namespace zepbmp
