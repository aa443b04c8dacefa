/// \file
/// From line sums to pixels: the second half of an area kernel. Part of area_inl.h.
#pragma once

#include "mapping/rect/area_lines_inl.h"
#include "mapping/rect/area_plan_inl.h"

namespace zepbmp {
namespace {

/// What a plan settles for all groups of a run, and the lines for both planes.
template <int kColumnPairs, bool kWideWindows, bool kLowPlane>
struct Way {
    static constexpr int kPairs = kColumnPairs;
    static constexpr bool kWide = kWideWindows;
    static constexpr bool kLow = kLowPlane;
    /// Without the low plane sums are left in sixteenths.
    static constexpr int kShift = kLowPlane ? 0 : kLowBits;
};

template <class L, int kChannels, class W>
typename L::V weigh_columns(const uint16_t* plane, const AreaPlan& plan, int32_t group) {
    const int32_t* const base = plan.base + group * kWindows<L, kChannels>;
    const uint8_t* const order = plan.order + group * L::kOrderBytes;
    const uint32_t* const weights = plan.weights + group * W::kPairs * L::kDwords;
    auto sum = L::multiply_pairs(L::template gather<kChannels, W::kWide>(plane, base, order), L::load(weights));
    for (int k = 1; k < W::kPairs; ++k)
        sum = L::add_dwords(
            sum, L::multiply_pairs(L::template gather<kChannels, W::kWide>(plane + 2 * kChannels * k, base, order),
                                   L::load(weights + k * L::kDwords)));
    return sum;
}

/// A group's means: sum >> kBits, rounded to nearest or cut.
template <class L, int kChannels, class W, int kBits, bool kRounded>
typename L::V group_means(const AreaPlane& plane, const AreaPlan& plan, int32_t group) {
    auto sum = weigh_columns<L, kChannels, W>(plane.high, plan, group);
    if constexpr (W::kLow)
        sum = L::add_dwords(L::template shift_left_dwords<kLowBits>(sum),
                            weigh_columns<L, kChannels, W>(plane.low, plan, group));
    constexpr int bits = kBits - W::kShift;
    if constexpr (kRounded)
        sum = L::add_dwords(sum, L::dwords(1u << (bits - 1)));
    return L::template shift_right_dwords<bits>(sum);
}

/// Two neighbouring groups, as words.
template <class L, int kChannels, class W, int kBits, bool kRounded>
typename L::V two_groups(const AreaPlane& plane, const AreaPlan& plan, int32_t group) {
    return L::pack_to_words(group_means<L, kChannels, W, kBits, kRounded>(plane, plan, group),
                            group_means<L, kChannels, W, kBits, kRounded>(plane, plan, group + 1));
}

constexpr int kPixelBits = 23;  // of a whole pixel's weights, 4096 * 2048

struct Rgbq {
    static constexpr int kBytes = 4;
    using Lines = SplitBytes;

    /// The register with the run's pixels from `block` registers on.
    template <class L, class W>
    static typename L::V block(const AreaScratch& s, int32_t block, typename L::V old) {
        const auto even = two_groups<L, 2, W, kPixelBits, false>(s.even, s.pixels, 2 * block);
        const auto odd = two_groups<L, 2, W, kPixelBits, false>(s.odd, s.pixels, 2 * block);
        const auto pixels = L::ordered_words(L::bit_or(even, L::template shift_left_words<8>(odd)));
        const auto colors = L::dwords(0x00ffffff);
        return L::bit_or(L::bit_and(pixels, colors), L::bit_and(old, L::dwords(0xff000000)));
    }
};

struct Yuy2 {
    static constexpr int kBytes = 2;
    using Lines = SplitBytes;

    template <class L, class W>
    static typename L::V block(const AreaScratch& s, int32_t block, typename L::V) {
        const auto luma = two_groups<L, 1, W, kPixelBits, true>(s.even, s.pixels, 2 * block);
        const auto chroma = two_groups<L, 2, W, kPixelBits + 1, true>(s.odd, s.pair_pixels, 2 * block);
        return L::ordered_words(L::bit_or(luma, L::template shift_left_words<8>(chroma)));
    }
};

struct Rgb8 {
    static constexpr int kBytes = 1;
    using Lines = AllBytes;

    template <class L, class W>
    static typename L::V block(const AreaScratch& s, int32_t block, typename L::V) {
        return L::ordered_bytes(
            L::pack_to_bytes(two_groups<L, 1, W, kPixelBits, false>(s.even, s.pixels, 4 * block),
                             two_groups<L, 1, W, kPixelBits, false>(s.even, s.pixels, 4 * block + 2)));
    }
};

/// `count` pixels from planes that stand.
template <class L, class Format, class W>
void draw_columns(uint8_t* dst, int32_t count, const AreaScratch& scratch) {
    constexpr int32_t kPixels = L::kBytes / Format::kBytes;
    int32_t block = 0;
    for (; count >= kPixels; count -= kPixels, ++block, dst += L::kBytes)
        L::store(dst, Format::template block<L, W>(scratch, block, L::load(dst)));
    if (count > 0) {
        const auto bytes = static_cast<size_t>(count * Format::kBytes);
        uint8_t rest[L::kBytes] = {};
        __builtin_memcpy(rest, dst, bytes);
        L::store(rest, Format::template block<L, W>(scratch, block, L::load(rest)));
        __builtin_memcpy(dst, rest, bytes);
    }
}

}  // namespace
}  // namespace zepbmp
