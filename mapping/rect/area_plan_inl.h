/// \file
/// Which columns a register's pixels read, and their weights. Part of area_inl.h.
#pragma once

#include "mapping/rect/area_kernels.h"
#include "mapping/rect/units.h"

namespace zepbmp {
namespace {

constexpr int32_t kMostLookedUp = 3;  ///< columns of a pixel

constexpr int32_t kMostWeight = kColumnUnits;  ///< of one multiply-add

/// The source pixel (or pair) behind the last one that a run covers.
int32_t columns_end(const AreaSpan* spans, int32_t count) { return spans[count - 1].first + spans[count - 1].count; }

/// The words (-8 w, -w).
uint32_t weight_words(int32_t weight) {
    return (static_cast<uint32_t>(-weight) << kLowBits & 0xffff) | static_cast<uint32_t>(-weight) << 16;
}

/// What decides the way.
struct Reach {
    int32_t columns;   ///< under a pixel, at most
    int32_t distance;  ///< from a group's first column to a pixel's first one, at most
    int32_t stride;    ///< from each pixel's first column to the next one's; -1 where it varies
};

template <class L>
Reach reach_of(const AreaSpan* spans, int32_t count) {
    Reach reach = {0, 0, count > 1 ? spans[1].first - spans[0].first : -1};
    for (int32_t i = 0; i < count; ++i) {
        const int32_t distance = spans[i].first - spans[i - i % L::kDwords].first;
        reach.columns = spans[i].count > reach.columns ? spans[i].count : reach.columns;
        reach.distance = distance > reach.distance ? distance : reach.distance;
        if (spans[i].first != spans[0].first + i * reach.stride)
            reach.stride = -1;
    }
    return reach;
}

Reach reach_of_both(Reach a, Reach b) {
    return {a.columns > b.columns ? a.columns : b.columns, a.distance > b.distance ? a.distance : b.distance,
            a.stride == b.stride ? a.stride : -1};
}

int32_t blocks_of(const AreaScratch& scratch) { return (scratch.reach + kAreaBlockColumns - 1) / kAreaBlockColumns; }

template <class L>
AreaWay way_of(int32_t columns, Reach reach) {
    if (columns == 2 && reach.stride == 1)
        return AreaWay::kSameScale;
    if (columns == 2 && reach.stride == 2)
        return AreaWay::kHalfScale;
    if (!L::kLooksUp || columns > kMostLookedUp || reach.distance >= L::kWindow)
        return AreaWay::kBlocks;
    return reach.distance + columns <= L::kWindow ? AreaWay::kLookUpOneWindow : AreaWay::kLookUp;
}

/// Settles how a run of `count` pixels over columns `first` .. `end` - 1 is drawn, one way for all its plans. They cover
/// pixels up to a multiple of kMultiple.
template <class L, int kMultiple>
void choose_way(int32_t first, int32_t end, int32_t count, Reach reach, AreaScratch& scratch) {
    scratch.first = first;
    scratch.columns = end - first;
    scratch.reach = reach.columns < 2 ? 2 : reach.columns;
    scratch.has_more = false;
    const int32_t padded = (count + kMultiple - 1) / kMultiple * kMultiple;
    const bool fits =
        scratch.columns <= kAreaColumns && scratch.reach <= kAreaColumns && padded * blocks_of(scratch) <= kAreaBlocks;
    scratch.way = fits ? way_of<L>(scratch.reach, reach) : AreaWay::kOneByOne;
    if (!fits)
        return;
    for (auto& plane : scratch.plane)  // what is read behind the last column has no weight, but a value
        __builtin_memset(plane + scratch.columns, 0, 2 * kStepBytes * sizeof plane[0]);
}

/// Where the weight of a pixel's column k stands, that of pixel `i` of a group.
template <class L>
int32_t weight_place(const AreaScratch& scratch, int32_t group, int32_t i, int32_t k) {
    constexpr int32_t kGroup = L::kDwords;
    switch (scratch.way) {
        case AreaWay::kHalfScale: return group * 2 * kGroup + 2 * i + k;
        case AreaWay::kBlocks: {  // pixel 4q + j has quarter q of a block's register j
            const int32_t block = group * blocks_of(scratch) + k / kAreaBlockColumns;
            return (block * kAreaBlockColumns + i % 4) * kGroup + i / 4 * 4 + k % kAreaBlockColumns;
        }
        default: return (group * scratch.reach + k) * kGroup + i;
    }
}

/// Pixels behind `count`, up to a multiple of kMultiple, have no weight. Where no weight is above kMostWeight,
/// more_weights may be null. The planes begin with column `first`.
template <class L, int kMultiple, int32_t kPixels>
void make_plan(const AreaSpan* spans, int32_t count, int32_t inner_weight, int32_t first, AreaScratch& scratch,
               AreaPlan<kPixels>& plan, uint32_t* more_weights) {
    constexpr int32_t kGroup = L::kDwords;
    constexpr AreaSpan kNone = {0, 0, 0, 0};
    const bool by_blocks = scratch.way == AreaWay::kBlocks;
    const int32_t columns = by_blocks ? blocks_of(scratch) * kAreaBlockColumns : scratch.reach;
    const int32_t padded = (count + kMultiple - 1) / kMultiple * kMultiple;
    for (int32_t i = 0; i < padded; ++i) {
        const AreaSpan& span = i < count ? spans[i] : kNone;
        const int32_t group = i / kGroup, in_group = i % kGroup;
        const int32_t from = i < count ? span.first - first : 0;
        if (by_blocks) {
            plan.base[i] = from;
        } else {
            if (in_group == 0)
                plan.base[group] = from;
            if (L::kLooksUp)
                plan.index[i] = i < count ? static_cast<uint32_t>(from - plan.base[group]) : 0;
        }
        for (int32_t k = 0; k < columns; ++k) {
            const int32_t weight = weight_of(span, k, inner_weight);
            const int32_t part = weight < kMostWeight ? weight : kMostWeight;
            const int32_t at = weight_place<L>(scratch, group, in_group, k);
            plan.weights[at] = weight_words(part);
            if (more_weights) {
                more_weights[at] = weight_words(weight - part);
                scratch.has_more |= weight > part;
            }
        }
    }
}

}  // namespace
}  // namespace zepbmp
