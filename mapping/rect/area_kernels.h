/// \file
/// The kernel sets for area resampling, and the memory they work in.
///
/// A vector kernel adds up lines first, then columns. Samples count from -128, so that they are signed bytes. Lines:
/// a channel's weighted sum V over them, |V| <= 2048 * 128, becomes one dword of two words, V = 8 * high + low.
/// Columns: times a weight w, that is one multiply-add of (high, low) with (8 w, w); weights go up to 4096, and since
/// 8 * 4096 is no word, both are taken negative. What 128 has left out is added at the end.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

constexpr uint32_t kSampleZero = 128;  ///< samples count from here
constexpr int32_t kLowBits = 3;        ///< of a line's weight, in the low word
constexpr int32_t kStepBytes = 64;     ///< of a line, that are added up at a time

/// How a run's pixels come by their columns.
enum class AreaWay : uint8_t {
    kOneByOne,         ///< without a plan
    kSameScale,        ///< pixel i has two columns, from the i-th on
    kHalfScale,        ///< pixel i has two columns, from the 2i-th on
    kLookUp,           ///< pixels look them up among registers of columns, kMostLookedUp at most
    kLookUpOneWindow,  ///< all of a group's at once
    kBlocks,           ///< each pixel reads blocks of them
};

/// A run's columns and their weights; a group of pixels fills a register.
template <int32_t kPixels>
struct AreaPlan {
    int32_t base[kPixels];  ///< the first column: kBlocks of each pixel, kLookUp of each group, else of all
    alignas(64) uint32_t index[kPixels];  ///< kLookUp: from the group's first column to a pixel's
    /// A pair of words each, as the registers come: of each group and each of a pixel's columns, kHalfScale of each two
    /// registers of columns, kBlocks of each group and block.
    alignas(64) uint32_t weights[kAreaBlockColumns * kPixels];
};

struct AreaScratch {
    int32_t first, columns;  ///< source columns under the run
    int32_t reach;           ///< columns of a pixel, at most
    AreaWay way;
    bool halves;    ///< kHalfScale with equal weights: where a line's are equal, too, its pixels are means of 2 x 2
    bool has_more;  ///< some of more_weights are not 0
    AreaPlan<kAreaPixels> pixels;
    AreaPlan<kAreaPixels / 2> pairs;  ///< of YUY2: pairs of pixels from pairs of columns
    /// What pairs' weights above kMostWeight are too large by.
    alignas(64) uint32_t more_weights[kAreaBlockColumns * kAreaPixels / 2];
    alignas(64) uint8_t line[2 * kAreaPixels];  ///< pixels that are to be stored past the caches
    /// Line sums: B, G, R of every column; Y of every column and U, V of every pair; the one channel of RGB8.
    alignas(64) uint32_t plane[3][kAreaColumns + 2 * kStepBytes];
};

extern const AreaKernels kAreaPlain;
extern const AreaKernels kAreaSse2;
extern const AreaKernels kAreaAvx2;
extern const AreaKernels kAreaAvx512;

}  // namespace zepbmp
