/// \file
/// Compiled with -ffast-math, where comparisons take every number for finite.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

#include "zepbmp.hpp"

namespace {

TEST(CppFastMath, WhatIsNotANumberIsStillRefused) {
    zepbmp::Bitmap map(8, 8, zepbmp::Format::pwrw);
    for (const uint32_t word : {0x7fc00000u, 0xffc00000u, 0x7f800001u, 0x7f800000u, 0xff800000u}) {
        const volatile uint32_t kept = word;  // the compiler does not know the float
        const float value = std::bit_cast<float>(uint32_t{kept});
        EXPECT_THROW(zepbmp::alpha_circle(map, {.cx = value, .radius = 3}), zepbmp::OutOfRange) << word;
        EXPECT_THROW(zepbmp::alpha_circle(map, {.radius = 3, .feather = value}), zepbmp::OutOfRange) << word;
        EXPECT_THROW(zepbmp::alpha_circle(map, {.radius = 3, .aspect = value}), zepbmp::OutOfRange) << word;
    }
}

}  // namespace
