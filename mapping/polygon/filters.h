/// \file
/// The prefilters of polygon mapping: which there are, what they weigh, how far they reach.
///
/// A filter averages a box that is placed on the texture at a precision of 1/128 texel. In each direction the box's
/// length is one of a few classes; a texel weighs as much as the box covers of it, in 1/128.
#pragma once

#include <cstdint>

#include "core/kernel_tables.h"
#include "mapping/polygon/units.h"

namespace zepbmp {
namespace {

constexpr int kFractionBits = 7;  ///< of a box's place within a texel
constexpr int kFractions = 1 << kFractionBits;

/// The length of a box in one direction.
struct FilterClass {
    int box;         ///< 1/128 texel
    double below;    ///< taken for reductions below this
    int32_t offset;  ///< from a pixel's centre on the texture to the box's start, 16.16
    int32_t margin;  ///< what the last place lies before the last texel, 16.16
};

// clang-format off
//                                             box  reduction    offset   margin
constexpr FilterClass kColumnClasses[] = {  {  128,      1.34,   -32768,      16},
                                            {  256,      2.01,   -65536,   65552},
                                            {  384,      2.68,   -98304,  131088},
                                            {  512,      5.36,  -131072,  196624},
                                            { 1024,  __builtin_inf(),  -262144,  458768}};
constexpr FilterClass kRowClasses[] =    {  {  128,     1.005,   -32768,      16},
                                            {  192,      1.34,   -49152,   32784},
                                            {  256,      2.68,   -65536,   65552},
                                            {  512,  __builtin_inf(),  -131072,  196624}};
// clang-format on

constexpr int kColumnClassCount = sizeof kColumnClasses / sizeof *kColumnClasses;
constexpr int kRowClassCount = sizeof kRowClasses / sizeof *kRowClasses;

/// The filter's index in a span group. Index 0 is the one without a box.
constexpr int filter_index(int row_class, int column_class) { return 1 + kColumnClassCount * row_class + column_class; }

/// How many texels a box can touch.
constexpr int taps(int box) { return (box + 2 * kFractions - 2) / kFractions; }

/// What texel `tap` weighs in a box that starts at `place` (1/128 texel) of texel 0.
constexpr int tap_weight(int tap, int place, int box) {
    const int begin = place > tap * kFractions ? place : tap * kFractions;
    const int end = place + box < (tap + 1) * kFractions ? place + box : (tap + 1) * kFractions;
    return end > begin ? end - begin : 0;
}

/// A box is centred on the pixel, whose centre lies half a texel right of its position; its last place is the one from
/// which the last texel is only just not left behind.
template <int kClasses>
constexpr bool follow_from_the_boxes(const FilterClass (&classes)[kClasses]) {
    for (const FilterClass& c : classes) {
        const int32_t length = c.box * (kTexel / kFractions);
        if (c.offset != -length / 2 || c.margin != length - kTexel + 16)
            return false;
    }
    return true;
}
static_assert(follow_from_the_boxes(kColumnClasses) && follow_from_the_boxes(kRowClasses));
static_assert(kSpanFilters == 1 + kColumnClassCount * kRowClassCount);

static_assert(taps(128) == 2 && taps(192) == 3 && taps(256) == 3 && taps(1024) == 9);

}  // namespace
}  // namespace zepbmp
