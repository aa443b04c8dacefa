/// \file
/// Half the size both ways, pixel on pixel: each pixel is the mean of two by two of the source, which needs no plan and
/// no line sums. Part of area_inl.h.
#pragma once

#include "mapping/rect/area_columns_inl.h"

namespace zepbmp {
namespace {

/// Whether each of the pixels (or pairs) has two columns, half of its `units` each.
bool are_halves(const AreaSpan* spans, int32_t count, int32_t units) {
    for (int32_t i = 0; i < count; ++i)
        if (spans[i].count != 2 || spans[i].first_weight != units / 2 || spans[i].last_weight != units / 2)
            return false;
    return true;
}

bool are_halves(const AreaLines& lines) { return are_halves(&lines.span, 1, kLineUnits); }

/// The even (odd) bytes of a and b added up, as words.
template <class L>
typename L::V even_sums(typename L::V a, typename L::V b) {
    return L::add(L::template even_bytes<0>(a), L::template even_bytes<0>(b));
}
template <class L>
typename L::V odd_sums(typename L::V a, typename L::V b) {
    return L::add(L::template odd_bytes<0>(a), L::template odd_bytes<0>(b));
}

/// Each two neighbouring dwords of `low`, then of `high`, as sums of their words; not in order yet.
template <class L>
typename L::V neighbours(typename L::V low, typename L::V high) {
    return L::add(L::even_dwords(low, high), L::odd_dwords(low, high));
}

/// Two registers of the upper line and of the lower one become a register of pixels.
template <class L>
struct TwoByTwo {
    using V = typename L::V;
    V upper[2], lower[2];

    TwoByTwo(const uint8_t* above, const uint8_t* below)
        : upper{L::load(above), L::load(above + L::kBytes)}, lower{L::load(below), L::load(below + L::kBytes)} {}

    V even(int half) const { return even_sums<L>(upper[half], lower[half]); }
    V odd(int half) const { return odd_sums<L>(upper[half], lower[half]); }

    V means(Rgbq, V old) const {
        const V blue_red = L::template shift_right<2>(neighbours<L>(even(0), even(1)));
        const V green = L::template shift_right<2>(neighbours<L>(odd(0), odd(1)));
        const V pixels = L::in_order(L::bit_or(blue_red, L::template shift_left_words<8>(green)));
        return L::bit_or(L::bit_and(pixels, L::dwords(0x00ffffff)), L::bit_and(old, L::dwords(0xff000000)));
    }
    V means(Yuy2, V) const {
        const V two = L::words(2), ones = L::words(1);
        const V luma = L::dwords_to_words(
            L::template shift_right_dwords<2>(L::add_dwords(L::multiply_pairs(even(0), ones), L::dwords(2))),
            L::template shift_right_dwords<2>(L::add_dwords(L::multiply_pairs(even(1), ones), L::dwords(2))));
        const V chroma = L::template shift_right<2>(L::add(neighbours<L>(odd(0), odd(1)), two));
        return L::bit_or(luma, L::template shift_left_words<8>(L::in_order(chroma)));
    }
    V means(Rgb8, V) const {
        return L::words_to_bytes(L::template shift_right<2>(L::add(even(0), odd(0))),
                                 L::template shift_right<2>(L::add(even(1), odd(1))));
    }
};

template <class L, class Format>
void draw_halves(const AreaTarget& target, const AreaLines& lines, int32_t count, Errands<L>& errands,
                 AreaScratch& scratch) {
    const uint8_t* const above =
        lines.pixels + lines.pitch * lines.span.first + ptrdiff_t{scratch.first} * Format::kBytes;
    const uint8_t* const below = above + lines.pitch;
    store_pixels<L, Format>(
        target, count, errands, scratch,
        [=](int32_t block, typename L::V old) {
            const ptrdiff_t x = ptrdiff_t{block} * 2 * L::kBytes;
            return TwoByTwo<L>(above + x, below + x).means(Format{}, old);
        },
        [=](int32_t block, int32_t pixels, typename L::V old) {
            const ptrdiff_t x = ptrdiff_t{block} * 2 * L::kBytes;
            const auto bytes = static_cast<size_t>(2 * pixels * Format::kBytes);
            uint8_t upper[2 * L::kBytes] = {}, lower[2 * L::kBytes] = {};
            __builtin_memcpy(upper, above + x, bytes);
            __builtin_memcpy(lower, below + x, bytes);
            return TwoByTwo<L>(upper, lower).means(Format{}, old);
        });
}

}  // namespace
}  // namespace zepbmp
