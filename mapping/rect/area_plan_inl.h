/// \file
/// Which columns a register's pixels read, and their weights. Part of area_inl.h.
#pragma once

#include "mapping/rect/area_kernels.h"

namespace zepbmp {
namespace {

/// Pixels of a group: each has a dword for every channel.
template <class L, int kChannels>
constexpr int kGroup = L::kDwords / kChannels;

/// Windows of a group.
template <class L, int kChannels>
constexpr int kWindows = kGroup<L, kChannels> / L::template kWindowPixels<kChannels>;

/// The source pixel (or pair) behind the last one that a run covers.
int32_t columns_end(const AreaSpan* spans, int32_t count) { return spans[count - 1].first + spans[count - 1].count; }

int32_t weight_at(const AreaSpan& span, int32_t i, int32_t inner_weight) {
    return i >= span.count ? 0 : i == 0 ? span.first_weight : i + 1 == span.count ? span.last_weight : inner_weight;
}

/// The most columns under a pixel, and the most words that a window's pixels read at once.
struct Reach {
    int32_t columns, words;
};

template <class L, int kChannels>
Reach reach_of(const AreaSpan* spans, int32_t count) {
    constexpr int kPixels = L::template kWindowPixels<kChannels>;
    Reach reach = {0, 0};
    for (int32_t i = 0; i < count; ++i) {
        const int32_t words = (spans[i].first - spans[i - i % kPixels].first + 2) * kChannels;
        reach.columns = spans[i].count > reach.columns ? spans[i].count : reach.columns;
        reach.words = words > reach.words ? words : reach.words;
    }
    return reach;
}

/// Whether a run from column `first` to `end` - 1 can be planned, and how: one way for all its plans.
template <class L>
bool choose_way(int32_t first, int32_t end, Reach reach, AreaScratch& scratch) {
    scratch.first = first;
    scratch.columns = end - first;
    scratch.pairs = 0;
    scratch.wide = reach.words > L::kWindowWords;
    if (scratch.columns > kPlaneColumns || reach.columns > 2 * kMostPairs ||
        reach.words > (L::kWideWindows ? 2 : 1) * L::kWindowWords)
        return false;
    scratch.pairs = (reach.columns + 1) / 2;
    if (scratch.wide && scratch.pairs == 1)
        scratch.pairs = 2;
    return true;
}

/// Pixels behind `count`, up to a multiple of kMultiple, have no weight. The planes begin with column `first`.
template <class L, int kChannels, int kMultiple>
void make_plan(const AreaSpan* spans, int32_t count, int32_t inner_weight, int32_t first, int32_t pairs,
               AreaPlan& plan) {
    constexpr int kPixels = L::template kWindowPixels<kChannels>;
    constexpr AreaSpan kNone = {0, 0, 0, 0};
    const int32_t padded = (count + kMultiple - 1) / kMultiple * kMultiple;
    for (int32_t i = 0; i < padded; ++i) {
        const AreaSpan& span = i < count ? spans[i] : kNone;
        const int32_t window = i / kPixels, leader = window * kPixels;
        const int32_t window_first = leader < count ? spans[leader].first : first;
        plan.base[window] = (window_first - first) * kChannels;
        const int32_t column = i < count ? span.first - window_first : 0;
        const int32_t group = i / kGroup<L, kChannels>;
        for (int channel = 0; channel < kChannels; ++channel) {
            const int dword = i % kGroup<L, kChannels> * kChannels + channel;
            const int32_t word = column * kChannels + channel;
            L::set_order(plan.order + group * L::kOrderBytes, dword, word, word + kChannels);
            for (int32_t k = 0; k < pairs; ++k)
                plan.weights[(group * pairs + k) * L::kDwords + dword] = static_cast<uint32_t>(
                    weight_at(span, 2 * k, inner_weight) | weight_at(span, 2 * k + 1, inner_weight) << 16);
        }
    }
}

}  // namespace
}  // namespace zepbmp
