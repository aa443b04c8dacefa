/// \file
/// Sums of lines: the first half of an area kernel. Part of area_inl.h.
#pragma once

#include "mapping/rect/area_errands_inl.h"
#include "mapping/rect/area_kernels.h"

namespace zepbmp {
namespace {

constexpr int32_t kMostLines = 8;  ///< that are added up in registers

/// Some lines with their weights, in pairs.
template <class L>
struct LinePairs {
    const uint8_t* line[kMostLines];
    typename L::TwoWeights weights[kMostLines / 2];
    int32_t pairs;
};

struct WeightedLine {
    const uint8_t* line;
    int32_t weight;
};

/// Lines `from` .. `from + count - 1` of the span, from byte `offset` on. A line alone may weigh 2048, which is more
/// than a byte holds in eighths: it is taken twice.
template <class L>
LinePairs<L> line_pairs(const AreaLines& lines, ptrdiff_t offset, int32_t from, int32_t count) {
    WeightedLine all[kMostLines + 1];
    for (int32_t i = 0; i < count; ++i) {
        all[i].line = lines.pixels + lines.pitch * (lines.span.first + from + i) + offset;
        all[i].weight = weight_of(lines.span, from + i, lines.inner_weight);
    }
    if (count == 1) {
        all[1] = {all[0].line, all[0].weight / 2};
        all[0].weight -= all[1].weight;
    } else {
        all[count] = {all[count - 1].line, 0};
    }
    LinePairs<L> result;
    result.pairs = (count + 1) / 2;
    constexpr int32_t kLowMask = (1 << kLowBits) - 1;
    for (int32_t k = 0; k < result.pairs; ++k) {
        const WeightedLine a = all[2 * k], b = all[2 * k + 1];
        result.line[2 * k] = a.line;
        result.line[2 * k + 1] = b.line;
        result.weights[k] = L::two_weights(a.weight >> kLowBits, b.weight >> kLowBits,  //
                                           a.weight & kLowMask, b.weight & kLowMask);
    }
    return result;
}

/// Sums of one register, to be added to what the plane holds where `kAccumulate`. Then low words are carried at once:
/// they would outgrow theirs.
template <class L, int kPairs, bool kAccumulate>
void weigh_lines(const typename L::V (&bytes)[kPairs], const LinePairs<L>& lines, uint32_t* plane) {
    auto sum = L::weigh_two(bytes[0], lines.weights[0]);
    for (int k = 1; k < kPairs; ++k)
        sum = L::add(sum, L::weigh_two(bytes[k], lines.weights[k]));
    if constexpr (kAccumulate) {
        sum = L::add(sum, L::load(plane));
        const auto carry = L::template shift_right_dwords<16>(L::template shift_right_signed<kLowBits>(sum));
        sum = L::bit_and(L::add(sum, carry), L::dwords(0xffff | ((1 << kLowBits) - 1) << 16));
    }
    L::store(plane, sum);
}

/// What a step over kStepBytes of the lines adds up, by format. `column` is that of its first byte.
struct RgbqLines {
    static constexpr int kColumns = kStepBytes / 4;

    template <class L, int kPairs, bool kAccumulate>
    static void step(const uint8_t* const* line, ptrdiff_t x, const LinePairs<L>& lines, AreaScratch& s,
                     ptrdiff_t column) {
        for (int at = 0; at < kStepBytes; at += L::kBytes, column += L::kDwords) {
            typename L::V blue[kPairs], green[kPairs], red[kPairs];
            for (int k = 0; k < kPairs; ++k) {
                const auto a = L::load(line[2 * k] + x + at), b = L::load(line[2 * k + 1] + x + at);
                const auto even = L::even_bytes_of_two(a, b);
                blue[k] = L::even_words_twice(even);
                red[k] = L::odd_words_twice(even);
                green[k] = L::even_words_twice(L::odd_bytes_of_two(a, b));
            }
            weigh_lines<L, kPairs, kAccumulate>(blue, lines, s.plane[0] + column);
            weigh_lines<L, kPairs, kAccumulate>(green, lines, s.plane[1] + column);
            weigh_lines<L, kPairs, kAccumulate>(red, lines, s.plane[2] + column);
        }
    }
};

struct Yuy2Lines {
    static constexpr int kColumns = kStepBytes / 2;

    template <class L, int kPairs, bool kAccumulate>
    static void step(const uint8_t* const* line, ptrdiff_t x, const LinePairs<L>& lines, AreaScratch& s,
                     ptrdiff_t column) {
        for (int at = 0; at < kStepBytes; at += L::kBytes, column += 2 * L::kDwords) {
            typename L::V first[kPairs], last[kPairs], u[kPairs], v[kPairs];
            for (int k = 0; k < kPairs; ++k) {
                const auto a = L::load(line[2 * k] + x + at), b = L::load(line[2 * k + 1] + x + at);
                const auto luma = L::even_bytes_of_two(a, b), chroma = L::odd_bytes_of_two(a, b);
                first[k] = L::first_words_twice(luma);
                last[k] = L::last_words_twice(luma);
                u[k] = L::even_words_twice(chroma);
                v[k] = L::odd_words_twice(chroma);
            }
            weigh_lines<L, kPairs, kAccumulate>(first, lines, s.plane[0] + column);
            weigh_lines<L, kPairs, kAccumulate>(last, lines, s.plane[0] + column + L::kDwords);
            weigh_lines<L, kPairs, kAccumulate>(u, lines, s.plane[1] + column / 2);
            weigh_lines<L, kPairs, kAccumulate>(v, lines, s.plane[2] + column / 2);
        }
    }
};

struct Rgb8Lines {
    static constexpr int kColumns = kStepBytes;

    template <class L, int kPairs, bool kAccumulate>
    static void step(const uint8_t* const* line, ptrdiff_t x, const LinePairs<L>& lines, AreaScratch& s,
                     ptrdiff_t column) {
        for (int at = 0; at < kStepBytes; at += L::kDwords, column += L::kDwords) {
            typename L::V bytes[kPairs];
            for (int k = 0; k < kPairs; ++k)
                bytes[k] = L::bytes_of_two(line[2 * k] + x + at, line[2 * k + 1] + x + at);
            weigh_lines<L, kPairs, kAccumulate>(bytes, lines, s.plane[0] + column);
        }
    }
};

/// `bytes` of every line. Reads up to the next multiple of kStepBytes, but not from `end` on.
template <class L, class Lines, int kPairs, bool kAccumulate>
void sum_lines(const LinePairs<L>& lines, ptrdiff_t bytes, const uint8_t* end, Errands<L>& errands,
               AreaScratch& scratch) {
    const ptrdiff_t rounded = (bytes + kStepBytes - 1) & -ptrdiff_t{kStepBytes};
    const uint8_t* const last_line = lines.line[2 * kPairs - 1];
    const ptrdiff_t inside = end - last_line < rounded ? bytes & -ptrdiff_t{kStepBytes} : rounded;
    ptrdiff_t x = 0, column = 0;
    for (; x < inside; x += kStepBytes, column += Lines::kColumns) {
        errands.step();
        Lines::template step<L, kPairs, kAccumulate>(lines.line, x, lines, scratch, column);
    }
    if (x == rounded)
        return;
    uint8_t tail[2 * kPairs][kStepBytes] = {};
    const uint8_t* tails[2 * kPairs];
    for (int i = 0; i < 2 * kPairs; ++i) {
        __builtin_memcpy(tail[i], lines.line[i] + x, static_cast<size_t>(bytes - x));
        tails[i] = tail[i];
    }
    Lines::template step<L, kPairs, kAccumulate>(tails, 0, lines, scratch, column);
}

template <class L, class Lines, bool kAccumulate>
void sum_line_pairs(const LinePairs<L>& lines, ptrdiff_t bytes, const uint8_t* end, Errands<L>& errands,
                    AreaScratch& scratch) {
    switch (lines.pairs) {
        case 1: return sum_lines<L, Lines, 1, kAccumulate>(lines, bytes, end, errands, scratch);
        case 2: return sum_lines<L, Lines, 2, kAccumulate>(lines, bytes, end, errands, scratch);
        case 3: return sum_lines<L, Lines, 3, kAccumulate>(lines, bytes, end, errands, scratch);
        default: return sum_lines<L, Lines, 4, kAccumulate>(lines, bytes, end, errands, scratch);
    }
}

int32_t rounds_of(const AreaLines& lines) { return (lines.span.count + kMostLines - 1) / kMostLines; }

/// `bytes` from `offset` on of all lines of the span.
template <class L, class Lines>
void sum_span(const AreaLines& lines, ptrdiff_t offset, ptrdiff_t bytes, Errands<L>& errands, AreaScratch& scratch) {
    for (int32_t from = 0; from < lines.span.count; from += kMostLines) {
        const int32_t left = lines.span.count - from;
        const auto pairs = line_pairs<L>(lines, offset, from, left < kMostLines ? left : kMostLines);
        if (from == 0)
            sum_line_pairs<L, Lines, false>(pairs, bytes, lines.end, errands, scratch);
        else
            sum_line_pairs<L, Lines, true>(pairs, bytes, lines.end, errands, scratch);
    }
}

}  // namespace
}  // namespace zepbmp
