/// \file
/// Which columns a register's pixels read, and their weights. Part of area_inl.h.
#pragma once

#include "mapping/rect/area_kernels.h"

namespace zepbmp {
namespace {

constexpr int32_t kMostLookedUp = 3;  ///< columns of a pixel

constexpr int32_t kMostWeight = 4096;  ///< of one multiply-add

/// The source pixel (or pair) behind the last one that a run covers.
int32_t columns_end(const AreaSpan* spans, int32_t count) { return spans[count - 1].first + spans[count - 1].count; }

int32_t weight_at(const AreaSpan& span, int32_t i, int32_t inner_weight) {
    return i >= span.count ? 0 : i == 0 ? span.first_weight : i + 1 == span.count ? span.last_weight : inner_weight;
}

/// The words (-8 w, -w).
uint32_t weight_words(int32_t weight) {
    return (static_cast<uint32_t>(-weight) << kLowBits & 0xffff) | static_cast<uint32_t>(-weight) << 16;
}

/// The most columns under a pixel, and the farthest from a group's first column to a pixel's first one.
struct Reach {
    int32_t columns, distance;
};

template <class L>
Reach reach_of(const AreaSpan* spans, int32_t count) {
    Reach reach = {0, 0};
    for (int32_t i = 0; i < count; ++i) {
        const int32_t distance = spans[i].first - spans[i - i % L::kDwords].first;
        reach.columns = spans[i].count > reach.columns ? spans[i].count : reach.columns;
        reach.distance = distance > reach.distance ? distance : reach.distance;
    }
    return reach;
}

int32_t blocks_of(const AreaScratch& scratch) { return (scratch.reach + kAreaBlockColumns - 1) / kAreaBlockColumns; }

/// How a run of `count` pixels over columns `first` .. `end` - 1 is drawn: one way for all its plans. False where it does not fit.
template <class L>
bool choose_way(int32_t first, int32_t end, int32_t count, Reach reach, AreaScratch& scratch) {
    scratch.first = first;
    scratch.columns = end - first;
    scratch.reach = reach.columns < 2 ? 2 : reach.columns;
    const int32_t padded = (count + kAreaTogether - 1) / kAreaTogether * kAreaTogether;
    scratch.planned =
        scratch.columns <= kAreaColumns && scratch.reach <= kAreaColumns && padded * blocks_of(scratch) <= kAreaBlocks;
    scratch.looked_up = L::kLooksUp && scratch.reach <= kMostLookedUp && reach.distance < L::kWindow;
    scratch.one_window = reach.distance + scratch.reach <= L::kWindow;
    scratch.has_more = false;
    return scratch.planned;
}

/// Pixels behind `count`, up to a multiple of kMultiple, have no weight. Where no weight is above kMostWeight,
/// more_weights may be null. The planes begin with column `first`.
template <class L, int kMultiple, int32_t kPixels>
void make_plan(const AreaSpan* spans, int32_t count, int32_t inner_weight, int32_t first, AreaScratch& scratch,
               AreaPlan<kPixels>& plan, uint32_t* more_weights) {
    constexpr int32_t kGroup = L::kDwords;
    constexpr AreaSpan kNone = {0, 0, 0, 0};
    const int32_t blocks = blocks_of(scratch);
    const int32_t padded = (count + kMultiple - 1) / kMultiple * kMultiple;
    for (int32_t i = 0; i < padded; ++i) {
        const AreaSpan& span = i < count ? spans[i] : kNone;
        const int32_t group = i / kGroup, in_group = i % kGroup;
        const int32_t from = i < count ? span.first - first : 0;
        if (scratch.looked_up) {
            if (in_group == 0)
                plan.base[group] = from;
            plan.index[i] = i < count ? static_cast<uint32_t>(from - plan.base[group]) : 0;
        } else {
            plan.base[i] = from;
        }
        const int32_t weights = scratch.looked_up ? scratch.reach : blocks * kAreaBlockColumns;
        for (int32_t k = 0; k < weights; ++k) {
            const int32_t weight = weight_at(span, k, inner_weight);
            const int32_t part = weight < kMostWeight ? weight : kMostWeight;
            // Read by blocks, pixel 4q + j of a group has quarter q of register j.
            const int32_t at =
                scratch.looked_up
                    ? (group * weights + k) * kGroup + in_group
                    : ((group * blocks + k / kAreaBlockColumns) * kAreaBlockColumns + in_group % 4) * kGroup +
                          in_group / 4 * 4 + k % kAreaBlockColumns;
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
