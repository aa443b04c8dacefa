/// \file
/// The vector kernels of the shapes, written once over a lane type (simd/lanes.md) and included by one file per
/// instruction set. Everything here is local to the including file.
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

/// The longest distance whose square single precision holds, with room to spare.
constexpr double kLongestDistance = 1e18;

/// How far a ramp step computed in single precision may be from the reference's, which is computed in double
/// precision, for offsets dx of at most `widest` and dy of at most `highest` pixels.
///
/// Let N be the lanes and M the longest distance. A distance is off by at most 2^-24 (7M + 2N): the rounded offsets,
/// the squares, their sum and the root. The step (radius - distance) * scale + 0.5 is then off by at most 2^-24
/// (scale * (11M + 5 radius + 2N) + 4). What is added to that here covers the reference's own error many times.
template <class F>
double ramp_error_bound(const RampLine& line, double widest, double highest) {
    const double longest = __builtin_sqrt(widest * widest + highest * highest);
    const double terms = line.scale * (12 * longest + 6 * line.radius + 3 * F::kLanes) + 8;
    return line.radius > 0 && longest < kLongestDistance ? terms / (1 << 24) : 1;
}

double magnitude(double x) { return x < 0 ? -x : x; }

double larger(double a, double b) { return a > b ? a : b; }

/// A squared distance that single precision can't tell from 0.
constexpr float kOnCentre = 1e-6f;

/// Ramp steps in single precision. One whose fraction stays further from 0 and 1 than the error bound truncates to
/// the reference's integer; the few others are done again by the reference.
template <class F>
class SingleRamp {
public:
    /// False for a ramp so steep or so far away that single precision settles too little.
    static bool serves(double bound) { return bound < 0.25; }

    SingleRamp(const RampLine& line, double bound)
        : line_(line),
          radius_(F::all(static_cast<float>(line.radius))),
          scale_(F::all(static_cast<float>(line.scale))),
          settled_(F::all(static_cast<float>(0.5 - bound))) {}

    /// Weights at these squared distances; sets the bits of the lanes that are not settled.
    typename F::I weights(typename F::F distance_squared, uint32_t& unsettled) const {
        const auto half = F::all(0.5f);
        const auto exact = F::add(F::mul(F::sub(radius_, F::root(distance_squared)), scale_), half);
        // Below 1 is step 0, from kRampSteps on it is kRampSteps: both are moved to where they are settled.
        const auto step = F::hold(exact, half, F::all(kRampSteps + 0.5f));
        const auto k = F::truncate(step);
        unsettled = F::magnitude_above(F::sub(F::sub(step, F::to_float(k)), half), settled_);
        return line_.linear ? F::template shift_left<2>(k) : F::look_up(line_.table, k);
    }

private:
    const RampLine& line_;
    typename F::F radius_, scale_, settled_;
};

template <class F>
void ramp(uint16_t* weights, int32_t first, int32_t end, const RampLine& line) {
    const double widest = larger(magnitude(first - line.cx), magnitude(end - line.cx));
    const double bound = ramp_error_bound<F>(line, widest, magnitude(line.dy));
    if (!SingleRamp<F>::serves(bound))
        return ramp_plain(weights, first, end, line);

    const SingleRamp<F> single(line, bound);
    const auto dy_squared = F::all(static_cast<float>(line.dy * line.dy));
    for (int32_t x = first; x < end; x += F::kLanes) {
        const auto dx = F::add(F::all(static_cast<float>(x - line.cx + 0.5)), F::counting());
        uint32_t unsettled;
        const auto weight = single.weights(F::add(F::mul(dx, dx), dy_squared), unsettled);
        const int32_t n = end - x;
        if (n >= F::kLanes) {
            F::store_words(weights + x, weight);
        } else {
            F::store_first_words(weights + x, weight, n);
            unsettled &= (1u << n) - 1;
        }
        for (; unsettled; unsettled &= unsettled - 1) {
            const int32_t at = x + __builtin_ctz(unsettled);
            ramp_plain(weights, at, at + 1, line);
        }
    }
    F::finish();
}

/// A pixel's four samples are four lanes. The ramp's own ends give the weights beyond them: step 0 outside the
/// radius, the last step within the inner one. Only a sample on the very centre may count otherwise, where there is
/// no inner circle.
template <class F>
void soft_edge(uint16_t* weights, int32_t first, int32_t end, const SoftEdgeLine& line) {
    constexpr int kPixels = F::kLanes / 4;
    const double widest = larger(magnitude(first - line.ramp.cx), magnitude(end - line.ramp.cx));
    const double highest_squared = larger(line.dy_squared[0], line.dy_squared[1]);
    const double bound = ramp_error_bound<F>(line.ramp, widest, __builtin_sqrt(highest_squared));
    if (!SingleRamp<F>::serves(bound))
        return soft_edge_plain(weights, first, end, line);

    const SingleRamp<F> single(line.ramp, bound);
    const auto dy_squared =
        F::alternating(static_cast<float>(line.dy_squared[0]), static_cast<float>(line.dy_squared[1]));
    for (int32_t x = first; x < end; x += kPixels) {
        const auto dx = F::add(F::all(static_cast<float>(x - line.ramp.cx + 0.25)), F::half_pixels());
        const auto distance_squared = F::add(F::mul(dx, dx), dy_squared);
        uint32_t unsettled;
        int32_t sample[F::kLanes];
        F::store(sample, single.weights(distance_squared, unsettled));
        unsettled |= ~F::magnitude_above(distance_squared, F::all(kOnCentre));
        const int32_t n = end - x < kPixels ? end - x : kPixels;
        for (int32_t i = 0; i < n; ++i) {
            const int32_t* const s = sample + 4 * i;
            if (unsettled >> (4 * i) & 15)
                soft_edge_plain(weights, x + i, x + i + 1, line);
            else
                weights[x + i] = static_cast<uint16_t>((s[0] + s[1] + s[2] + s[3]) / 4);
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
        .soft_edge = soft_edge<F>,
    };
}

}  // namespace
}  // namespace zepbmp
