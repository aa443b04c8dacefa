/// \file
/// Integer arithmetic whose result is fixed for every input.
#pragma once

#include <cstdint>

namespace zepbmp {

/// Toward zero; a NaN or a value outside 32 bits gives INT32_MIN.
inline int32_t trunc_to_int32(double value) {
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
}

/// As above, but a value that is too large becomes the nearest that fits. Not for a NaN.
inline int32_t hold_to_int32(double value) {
    constexpr double kLeast = INT32_MIN, kMost = INT32_MAX;
    value = value > kLeast ? value : kLeast;
    return static_cast<int32_t>(value < kMost ? value : kMost);
}

inline int32_t held(int32_t value, int32_t least, int32_t most) {
    return value < least ? least : value > most ? most : value;
}

/// Single precision as written: x87 registers hold more, so there the value passes through memory. Static, because
/// files for wide registers include this header.
static inline float single(float value) {
#if defined(__i386__) && !defined(__SSE_MATH__)
    asm("" : "+m"(value));
#endif
    return value;
}

/// Sums and differences modulo 2^32, as signed values.
inline int32_t wrapping_add(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t wrapping_sub(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

}  // namespace zepbmp
