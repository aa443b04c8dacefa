/// \file
/// Sine and cosine that are the same to the last bit everywhere: the C library's differ from system to system.
#pragma once

namespace zepbmp::effects {

/// By its power series; for angles within a quarter turn, in radians, exact to a few units in the last place.
constexpr double sine(double angle) {
    double term = angle, sum = angle;
    for (int n = 1; n < 14; ++n) {
        term *= -angle * angle / ((2 * n) * (2 * n + 1));
        sum += term;
    }
    return sum;
}

/// 1 - 2 sin^2(angle / 2), for the same angles; exact to a few units of the last place of 1.
constexpr double cosine(double angle) {
    const double half = sine(angle / 2);
    return 1 - 2 * half * half;
}

}  // namespace zepbmp::effects
