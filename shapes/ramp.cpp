#include "shapes/ramp.h"

#include "core/bitmap.h"

namespace zepbmp {
namespace {

constexpr RampTable make_linear() {
    RampTable table{};
    for (int k = 0; k <= kRampSteps; ++k)
        table.weight[k] = static_cast<uint16_t>(k * (kWeightFull / kRampSteps));
    return table;
}

/// sin^2 by its power series, at compile time: the C library's cosine differs from system to system. Up to pi/4 the
/// first twelve terms are exact to a few units in the last place of a double; no table value lies within 1e-6 of a
/// rounding boundary other than those that the symmetry below fixes.
constexpr double sine_squared(double x) {
    double term = x, sum = x;
    for (int n = 1; n < 12; ++n) {
        term *= -x * x / ((2 * n) * (2 * n + 1));
        sum += term;
    }
    return sum * sum;
}

/// (1 - cos(2a)) / 2 = sin^2(a), and the second half mirrors the first: weight[1024 - k] = 4096 - weight[k].
constexpr RampTable make_cosine() {
    constexpr double kPi = 3.14159265358979323846;
    RampTable table{};
    for (int k = 0; k <= kRampSteps / 2; ++k) {
        const double weight = kWeightFull * sine_squared(kPi * k / (2 * kRampSteps));
        table.weight[k] = static_cast<uint16_t>(weight + 0.5);
        table.weight[kRampSteps - k] = static_cast<uint16_t>(kWeightFull - table.weight[k]);
    }
    return table;
}

}  // namespace

constexpr RampTable kLinearRamp = make_linear();
constexpr RampTable kCosineRamp = make_cosine();
static_assert(kCosineRamp.weight[128] == 156 && kCosineRamp.weight[512] == 2048 && kCosineRamp.weight[1024] == 4096);

}  // namespace zepbmp
