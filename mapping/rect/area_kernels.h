/// \file
/// The kernel sets for area resampling, and the memory they work in.
///
/// A vector kernel adds up lines first, then columns. Lines: each byte position's weighted sum V over the lines, at
/// most 2048 * 255, is split into two words, V = 16 * high + low. Columns: a pixel's sums of both words are 16 bits
/// times 16 bits; 16 * sum(high) + sum(low) is exact again.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

constexpr int32_t kLowBits = 4;                          ///< of a line's weight, in the low plane
constexpr int32_t kMostPairs = 3;                        ///< of columns under a pixel; more are added up one by one
constexpr int32_t kStepBytes = 64;                       ///< of a line, that are added up at a time
constexpr int32_t kPlaneColumns = 4 * kAreaPixels + 64;  ///< that a run of pixels may cover
constexpr int32_t kWidestBytes = 64;                     ///< of a register

/// Line sums of columns `first` .. `first + columns - 1` of the source: the words of one channel after the other's.
struct AreaPlane {
    alignas(kStepBytes) uint16_t high[2 * (kPlaneColumns + kStepBytes)];
    alignas(kStepBytes) uint16_t low[2 * (kPlaneColumns + kStepBytes)];
};

/// How columns become pixels. A register's pixels are a group; they read pairs of neighbouring columns.
struct AreaPlan {
    int32_t base[kAreaPixels];  ///< the word with which a window begins
    alignas(kStepBytes) uint8_t order[8 * kAreaPixels * 2];
    /// Per group and pair of columns a register: both columns' weights in each dword.
    alignas(kStepBytes) uint32_t weights[kMostPairs * 2 * kAreaPixels];
};

struct AreaScratch {
    int32_t first, columns;  ///< source columns under the run
    int32_t pairs;           ///< of columns that a pixel covers, at most; 0: there is no plan
    bool wide;               ///< a group's columns do not fit into one window
    AreaPlan pixels;
    AreaPlan pair_pixels;  ///< of YUY2: pairs of pixels from pairs of columns
    AreaPlane even, odd;   ///< of the even bytes of a line, and of the odd ones; RGB8 has the even plane only
};

extern const AreaKernels kAreaPlain;
extern const AreaKernels kAreaSse2;
extern const AreaKernels kAreaAvx2;
extern const AreaKernels kAreaAvx512;

}  // namespace zepbmp
