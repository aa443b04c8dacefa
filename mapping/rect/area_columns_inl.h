/// \file
/// From line sums to pixels: the second half of an area kernel. Part of area_inl.h.
#pragma once

#include "mapping/rect/area_lines_inl.h"
#include "mapping/rect/area_plan_inl.h"

namespace zepbmp {
namespace {

/// Columns times their weights, those from `at` on.
template <class L, bool kMore, class Plan>
typename L::V weighted(typename L::V columns, const Plan& plan, const AreaScratch& s, ptrdiff_t at) {
    const auto product = L::multiply_pairs(columns, L::load(plan.weights + at));
    if constexpr (kMore)
        return L::add_dwords(product, L::multiply_pairs(columns, L::load(s.more_weights + at)));
    else
        return product;
}

/// A way to add up a group's columns gives the sum over them of line sum times -weight, for one plane.
///
/// This one reads each pixel's columns block by block: kBlocks, or, where that is 0, as many as the plan has.
template <class L, int kBlocks>
struct ByBlocks {
    using V = typename L::V;

    template <bool kMore, class Plan>
    static V group_sums(const uint32_t* plane, const Plan& plan, const AreaScratch& s, int32_t group) {
        const int32_t blocks = kBlocks > 0 ? kBlocks : blocks_of(s);
        const int32_t* const base = plan.base + group * L::kDwords;
        const ptrdiff_t at = ptrdiff_t{group} * blocks * kBlock;
        V a = weigh<kMore, 0>(plane, base, plan, s, at), b = weigh<kMore, 1>(plane, base, plan, s, at);
        V c = weigh<kMore, 2>(plane, base, plan, s, at), d = weigh<kMore, 3>(plane, base, plan, s, at);
        for (int32_t k = 1; k < blocks; ++k) {
            const uint32_t* const next = plane + k * kAreaBlockColumns;
            a = L::add_dwords(a, weigh<kMore, 0>(next, base, plan, s, at + k * kBlock));
            b = L::add_dwords(b, weigh<kMore, 1>(next, base, plan, s, at + k * kBlock));
            c = L::add_dwords(c, weigh<kMore, 2>(next, base, plan, s, at + k * kBlock));
            d = L::add_dwords(d, weigh<kMore, 3>(next, base, plan, s, at + k * kBlock));
        }
        return L::sums_of_quarters(a, b, c, d);
    }

private:
    static constexpr ptrdiff_t kBlock = kAreaBlockColumns * L::kDwords;  // weights of a group

    template <bool kMore, int kDword, class Plan>
    static V weigh(const uint32_t* plane, const int32_t* base, const Plan& plan, const AreaScratch& s, ptrdiff_t at) {
        return weighted<L, kMore>(L::template load_columns<kDword>(plane, base), plan, s, at + kDword * L::kDwords);
    }
};

/// This one has columns that go on regularly, two for each pixel: the next pixel's kStride, 1 or 2, further on.
template <class L, int kStride>
struct ByScale {
    using V = typename L::V;

    template <bool kMore, class Plan>
    static V group_sums(const uint32_t* plane, const Plan& plan, const AreaScratch& s, int32_t group) {
        const uint32_t* const from = plane + plan.base[0] + ptrdiff_t{group} * kStride * L::kDwords;
        const ptrdiff_t at = ptrdiff_t{group} * 2 * L::kDwords, second = kStride == 1 ? 1 : L::kDwords;
        const V a = weighted<L, kMore>(L::load(from), plan, s, at);
        const V b = weighted<L, kMore>(L::load(from + second), plan, s, at + L::kDwords);
        return kStride == 1 ? L::add_dwords(a, b) : L::sums_of_neighbours(a, b);
    }
};

/// This one looks them up in registers, kColumns for each pixel. kOneWindow: one window holds all of them.
template <class L, int kColumns, bool kOneWindow>
struct ByLookup {
    using V = typename L::V;

    template <bool kMore, class Plan>
    static V group_sums(const uint32_t* plane, const Plan& plan, const AreaScratch& s, int32_t group) {
        const ptrdiff_t at = ptrdiff_t{group} * kColumns * L::kDwords;
        const uint32_t* const window = plane + plan.base[group];
        const V index = L::load(plan.index + group * L::kDwords);
        V sum = weighted<L, kMore>(look_up<0>(window, index), plan, s, at);
        sum = L::add_dwords(sum, weighted<L, kMore>(look_up<1>(window, index), plan, s, at + L::kDwords));
        if constexpr (kColumns > 2)
            sum = L::add_dwords(sum, weighted<L, kMore>(look_up<2>(window, index), plan, s, at + 2 * L::kDwords));
        return sum;
    }

private:
    template <int kColumn>
    static V look_up(const uint32_t* window, V index) {
        if constexpr (kOneWindow)
            return L::look_up(window, L::add_dwords(index, L::dwords(kColumn)));
        else
            return L::look_up(window + kColumn, index);
    }
};

/// A group's means, (total - sums) >> kBits. The total is kSampleZero times all weights, and half a unit where means
/// are rounded.
template <class L, class W, int kBits, bool kMore = false, class Plan>
typename L::V group_means(const uint32_t* plane, const Plan& plan, const AreaScratch& s, int32_t group,
                          typename L::V total) {
    return L::template shift_right_dwords<kBits>(
        L::sub_dwords(total, W::template group_sums<kMore>(plane, plan, s, group)));
}

struct Rgbq {
    static constexpr int kBytes = 4;
    static constexpr bool kKeepsBytes = true;
    static constexpr bool kPairs = false;
    using Lines = RgbqLines;

    /// The register with the run's pixels from `block` registers on. `total` is that of a whole pixel.
    template <class L, class W, bool kMore>
    static typename L::V block(const AreaScratch& s, int32_t block, uint32_t total, typename L::V old) {
        const auto all = L::dwords(total);
        const auto blue = group_means<L, W, kAreaBits>(s.plane[0], s.pixels, s, block, all);
        const auto green = group_means<L, W, kAreaBits>(s.plane[1], s.pixels, s, block, all);
        const auto red = group_means<L, W, kAreaBits>(s.plane[2], s.pixels, s, block, all);
        const auto pixels =
            L::bit_or(L::bit_or(blue, L::template shift_left_dwords<8>(green)), L::template shift_left_dwords<16>(red));
        return L::bit_or(pixels, L::bit_and(old, L::dwords(0xff000000)));
    }
};

struct Yuy2 {
    static constexpr int kBytes = 2;
    static constexpr bool kKeepsBytes = false;
    static constexpr bool kPairs = true;  ///< whose weights may be above kMostWeight
    using Lines = Yuy2Lines;

    template <class L, class W, bool kMore>
    static typename L::V block(const AreaScratch& s, int32_t block, uint32_t total, typename L::V) {
        const auto luma_total = L::dwords(total + (1u << (kAreaBits - 1)));
        const auto chroma_total = L::dwords(2 * total + (1u << kAreaBits));
        const auto luma =
            L::dwords_to_words(group_means<L, W, kAreaBits>(s.plane[0], s.pixels, s, 2 * block, luma_total),
                               group_means<L, W, kAreaBits>(s.plane[0], s.pixels, s, 2 * block + 1, luma_total));
        const auto u = group_means<L, W, kAreaBits + 1, kMore>(s.plane[1], s.pairs, s, block, chroma_total);
        const auto v = group_means<L, W, kAreaBits + 1, kMore>(s.plane[2], s.pairs, s, block, chroma_total);
        return L::bit_or(luma, L::bit_or(L::template shift_left_dwords<8>(u), L::template shift_left_dwords<24>(v)));
    }
};

struct Rgb8 {
    static constexpr int kBytes = 1;
    static constexpr bool kKeepsBytes = false;
    static constexpr bool kPairs = false;
    using Lines = Rgb8Lines;

    template <class L, class W, bool kMore>
    static typename L::V block(const AreaScratch& s, int32_t block, uint32_t total, typename L::V) {
        const auto all = L::dwords(total);
        return L::dwords_to_bytes(group_means<L, W, kAreaBits>(s.plane[0], s.pixels, s, 4 * block, all),
                                  group_means<L, W, kAreaBits>(s.plane[0], s.pixels, s, 4 * block + 1, all),
                                  group_means<L, W, kAreaBits>(s.plane[0], s.pixels, s, 4 * block + 2, all),
                                  group_means<L, W, kAreaBits>(s.plane[0], s.pixels, s, 4 * block + 3, all));
    }
};

/// `count` pixels, register by register; where the target streams, through the scratch line and past the caches.
/// `make(block, old)` gives a whole register, `make_rest(block, pixels, old)` the last one's first pixels.
template <class L, class Format, class Make, class MakeRest>
void store_pixels(const AreaTarget& target, int32_t count, Errands<L>& errands, AreaScratch& scratch, Make make,
                  MakeRest make_rest) {
    const bool streams = !Format::kKeepsBytes && target.store == kStoreStreamed;
    uint8_t* const dst = streams ? scratch.line : target.pixels;
    const ptrdiff_t bytes = ptrdiff_t{count} * Format::kBytes;
    PixelStream<L> stream(target.pixels, dst, streams ? bytes : 0);
    ptrdiff_t x = 0;
    int32_t block = 0;
    for (; x + L::kBytes <= bytes; x += L::kBytes, ++block) {
        errands.step();
        if (streams)
            stream.drawn_to(x);
        else
            L::prefetch(dst + x + target.later_pixels);
        L::store(dst + x, make(block, L::load(dst + x)));
    }
    if (x < bytes) {
        const auto left = static_cast<size_t>(bytes - x);
        uint8_t rest[L::kBytes] = {};
        __builtin_memcpy(rest, dst + x, left);
        L::store(rest, make_rest(block, static_cast<int32_t>(bytes - x) / Format::kBytes, L::load(rest)));
        __builtin_memcpy(dst + x, rest, left);
    }
    if (streams)
        stream.finish();
}

/// `count` pixels from planes that stand.
template <class L, class Format, class W, bool kMore>
void draw_columns(const AreaTarget& target, int32_t count, uint32_t total, Errands<L>& errands, AreaScratch& scratch) {
    using V = typename L::V;
    const AreaScratch* const s = &scratch;
    const auto make = [=](int32_t block, V old) { return Format::template block<L, W, kMore>(*s, block, total, old); };
    store_pixels<L, Format>(target, count, errands, scratch, make,
                            [=](int32_t block, int32_t, V old) { return make(block, old); });
}

}  // namespace
}  // namespace zepbmp
