// Number helpers of the model.
//
// SPDX-License-Identifier: MIT
#ifndef ZEPBMP_TESTS_MODEL_ARITHMETIC_H
#define ZEPBMP_TESTS_MODEL_ARITHMETIC_H

#include <cstdint>
#include <cstring>

namespace model {

// 32-bit arithmetic that wraps.
inline int32_t wrap_add(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t wrap_sub(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

inline int32_t wrap_mul(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Toward zero; a NaN or a result outside 32 bits gives INT32_MIN.
inline int32_t truncate_to_int(double value) {
    if (value > -2147483649.0 && value < 2147483648.0) {
        return static_cast<int32_t>(value);
    }
    return INT32_MIN;
}

// One rounding to single precision, whatever the registers hold. A product, sum or quotient of two singles that was
// rounded to double first comes out as if it had been rounded once.
inline float single(double value) {
    volatile float rounded = static_cast<float>(value);
    return rounded;
}

// 16-bit weights in memory; masks of other formats may be read at odd addresses.
inline uint16_t load_u16(const uint8_t* address) {
    uint16_t value;
    std::memcpy(&value, address, sizeof value);
    return value;
}

inline void store_u16(uint8_t* address, uint16_t value) { std::memcpy(address, &value, sizeof value); }

}  // namespace model

#endif  // ZEPBMP_TESTS_MODEL_ARITHMETIC_H
