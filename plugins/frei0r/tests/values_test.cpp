/// \file
/// What counts as a change of a parameter: effects keep what they have drawn until there is one.
#include <gtest/gtest.h>

#include <limits>

#include "plugins/frei0r/plugin.h"

namespace zepbmp::frei0r {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr float kFloatNan = std::numeric_limits<float>::quiet_NaN();

enum { kNumber, kFlag, kColor, kPlace };

constexpr Parameter kParameters[] = {
    {"Number", "", 0.5},
    {"Flag", "", false},
    {"Colour", "", f0r_param_color_t{1, 0.5f, 0}},
    place("Place", "", 0.25, 0.75),
};

/// How many changes it is to set this value, and then again.
template <class T>
std::pair<uint64_t, uint64_t> changes(Values& values, size_t index, const T& value) {
    const uint64_t before = values.version();
    values.set(index, &value);
    const uint64_t once = values.version();
    values.set(index, &value);
    return {once - before, values.version() - once};
}

constexpr std::pair<uint64_t, uint64_t> kNone = {0, 0}, kOne = {1, 0};

TEST(ValuesTest, OnlyAnotherValueIsAChange) {
    Values values(kParameters);
    EXPECT_EQ(changes(values, kNumber, 0.5), kNone) << "the initial value";
    EXPECT_EQ(changes(values, kNumber, 0.75), kOne);
    EXPECT_EQ(changes(values, kNumber, 0.5), kOne);
    EXPECT_EQ(changes(values, kFlag, 0.0), kNone);
    EXPECT_EQ(changes(values, kFlag, 1.0), kOne);
    EXPECT_EQ(changes(values, kFlag, 0.875), kNone) << "set, too";
    EXPECT_EQ(changes(values, kColor, f0r_param_color_t{1, 0.5f, 0}), kNone);
    EXPECT_EQ(changes(values, kColor, f0r_param_color_t{1, 0.5f, 0.125f}), kOne);
    EXPECT_EQ(changes(values, kPlace, f0r_param_position_t{0.25, 0.75}), kNone);
    EXPECT_EQ(changes(values, kPlace, f0r_param_position_t{0.25, 0.5}), kOne);
    EXPECT_EQ(values.number(kNumber), 0.5);
    EXPECT_TRUE(values.flag(kFlag));
    EXPECT_EQ(values.color(kColor), 0xff2080ffu);
}

TEST(ValuesTest, AValueHeldToTheSameEndIsNone) {
    Values values(kParameters);
    EXPECT_EQ(changes(values, kNumber, 7.0), kOne);
    EXPECT_EQ(changes(values, kNumber, 1e300), kNone);
    EXPECT_EQ(changes(values, kPlace, f0r_param_position_t{-3, 9}), kOne);
    EXPECT_EQ(changes(values, kPlace, f0r_param_position_t{-1, 2}), kNone);
}

TEST(ValuesTest, WhatIsNotANumberIsNone) {
    Values values(kParameters);
    EXPECT_EQ(changes(values, kNumber, kNan), kNone);
    EXPECT_EQ(changes(values, kFlag, kNan), kNone);
    EXPECT_EQ(changes(values, kColor, f0r_param_color_t{0, 0, kFloatNan}), kNone);
    EXPECT_EQ(changes(values, kPlace, f0r_param_position_t{kNan, 0}), kNone);
}

}  // namespace
}  // namespace zepbmp::frei0r
