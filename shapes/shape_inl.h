/// \file
/// The vector kernels of the shapes, written once over a lane type (simd/lanes.md) and included by one file per instruction
/// set. Everything here is local to the including file.
#pragma once

#include <cstdint>

#include "shapes/shape_kernels.h"

namespace zepbmp {
namespace {

/// weights[i] = combine(weights[i], v).
template <class L, class Combine, class CombineOne>
void combine_run(uint16_t* weights, int32_t count, int32_t v, Combine combine, CombineOne combine_one) {
    constexpr int kWords = L::kBytes / 2;
    const auto all = L::words(v);
    int32_t i = 0;
    for (; i + kWords <= count; i += kWords)
        L::store(weights + i, combine(L::load(weights + i), all));
    for (; i < count; ++i)
        weights[i] = static_cast<uint16_t>(combine_one(weights[i], v));
    L::finish();
}

template <class L>
void add_run(uint16_t* weights, int32_t count, int32_t v) {
    using V = typename L::V;
    combine_run<L>(
        weights, count, v, [](V a, V b) { return L::add(a, b); }, [](int32_t a, int32_t b) { return a + b; });
}

template <class L>
void max_run(uint16_t* weights, int32_t count, int32_t v) {
    using V = typename L::V;
    combine_run<L>(
        weights, count, v, [](V a, V b) { return L::max_words(a, b); },
        [](int32_t a, int32_t b) { return a < b ? b : a; });
}

double magnitude(double x) { return x < 0 ? -x : x; }

/// How far a ramp step computed in single precision may be from the reference's, which is computed in double precision.
///
/// Let N be the lanes and M no less than the distance of any pixel of the span. The distance is off by at most 2^-24 (5M + 2N):
/// the rounded offsets, the two squares, their sum and the root. The step (radius - distance) * scale + 0.5 is then off by at most
/// 2^-24 (scale * (9M + 5 radius + 2N) + 4). What is added to that here covers the reference's own error many times.
template <class F>
double ramp_error_bound(const RampLine& line, double farthest) {
    const double terms = line.scale * (12 * farthest + 8 * magnitude(line.radius) + 4 * F::kLanes) + 16;
    return terms / (1 << 24);
}

/// Steps in single precision. One whose fraction stays further from 0 and 1 than the error bound truncates to the reference's
/// integer; the few others are done again by the reference.
template <class F>
void ramp(uint16_t* weights, int32_t first, int32_t end, const RampLine& line) {
    const double dx_first = first - line.cx + 0.5, dx_last = end - line.cx + 0.5;
    const double widest = magnitude(dx_first) > magnitude(dx_last) ? magnitude(dx_first) : magnitude(dx_last);
    const double bound = ramp_error_bound<F>(line, widest + magnitude(line.dy));
    if (!(bound < 0.25))
        return ramp_plain(weights, first, end, line);

    const auto dy = F::all(static_cast<float>(line.dy)), dy_squared = F::mul(dy, dy);
    const auto radius = F::all(static_cast<float>(line.radius)), scale = F::all(static_cast<float>(line.scale));
    const auto half = F::all(0.5f), settled = F::all(static_cast<float>(0.5 - bound));
    for (int32_t x = first; x < end; x += F::kLanes) {
        const auto dx = F::add(F::all(static_cast<float>(x - line.cx + 0.5)), F::counting());
        const auto distance = F::sqrt(F::add(F::mul(dx, dx), dy_squared));
        const auto exact_step = F::add(F::mul(F::sub(radius, distance), scale), half);
        // Below 1 is step 0, from kRampSteps on it is kRampSteps, both far from another step.
        const auto step = F::hold(exact_step, half, F::all(kRampSteps + 0.5f));
        const auto k = F::truncate(step);
        uint32_t unsettled = F::magnitude_above(F::sub(F::sub(step, F::to_float(k)), half), settled);
        const auto weight = line.linear ? F::template shift_left<2>(k) : F::look_up(line.table, k);
        const int32_t n = end - x;
        if (n >= F::kLanes) {
            F::store_words(weights + x, weight);
        } else {
            uint16_t rest[F::kLanes];
            F::store_words(rest, weight);
            for (int32_t i = 0; i < n; ++i)
                weights[x + i] = rest[i];
            unsettled &= (1u << n) - 1;
        }
        for (; unsettled; unsettled &= unsettled - 1) {
            const int32_t at = x + __builtin_ctz(unsettled);
            ramp_plain(weights, at, at + 1, line);
        }
    }
    F::finish();
}

template <class L, class F>
constexpr ShapeKernels shape_set() {
    return {
        .add_run = add_run<L>,
        .max_run = max_run<L>,
        .ramp = ramp<F>,
    };
}

}  // namespace
}  // namespace zepbmp
