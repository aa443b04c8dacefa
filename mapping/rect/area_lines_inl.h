/// \file
/// Sums of lines: the first half of an area kernel. Part of area_inl.h.
#pragma once

#include "mapping/rect/area_kernels.h"

namespace zepbmp {
namespace {

constexpr int32_t kMostLines = 8;  ///< that are added up before the low plane's sums are carried to the high one's

/// Some lines with their weights, in pairs. A byte's weighted sum is 16 * high + low; high is at most 255 * 128, low,
/// with eight lines, 255 * 15 * 8.
template <class L>
struct LinePairs {
    const uint8_t* line[kMostLines];
    typename L::Two high[kMostLines / 2], low[kMostLines / 2];
    int32_t pairs;
    bool has_low;  ///< a weight is no multiple of 16
};

struct WeightedLine {
    const uint8_t* line;
    int32_t weight;
};

/// Lines `from` .. `from + count - 1` of the span, from byte `offset` on. A line alone may weigh 2048, which is more
/// than a byte holds in sixteenths: it is taken twice.
template <class L>
LinePairs<L> line_pairs(const AreaLines& lines, ptrdiff_t offset, int32_t from, int32_t count) {
    WeightedLine all[kMostLines];
    for (int32_t i = 0; i < count; ++i) {
        const int32_t at = from + i;
        all[i].line = lines.pixels + lines.pitch * (lines.span.first + at) + offset;
        all[i].weight = at == 0                      ? lines.span.first_weight
                        : at + 1 == lines.span.count ? lines.span.last_weight
                                                     : lines.inner_weight;
    }
    if (count == 1) {
        all[1] = {all[0].line, all[0].weight / 2};
        all[0].weight -= all[1].weight;
    } else if (count % 2 != 0) {
        all[count] = {all[count - 1].line, 0};
    }
    LinePairs<L> result;
    result.pairs = (count + 1) / 2;
    result.has_low = false;
    constexpr int32_t kLowMask = (1 << kLowBits) - 1;
    for (int32_t k = 0; k < result.pairs; ++k) {
        const WeightedLine a = all[2 * k], b = all[2 * k + 1];
        result.line[2 * k] = a.line;
        result.line[2 * k + 1] = b.line;
        result.high[k] = L::two_weights(a.weight >> kLowBits, b.weight >> kLowBits);
        result.low[k] = L::two_weights(a.weight & kLowMask, b.weight & kLowMask);
        result.has_low |= ((a.weight | b.weight) & kLowMask) != 0;
    }
    return result;
}

/// Sums of one register's bytes. `accumulate` adds to what the planes hold.
template <class L, int kPairs, bool kLow, bool kAccumulate>
void weigh_bytes(const typename L::Two (&bytes)[kPairs], const LinePairs<L>& lines, uint16_t* high, uint16_t* low) {
    auto h = L::weigh_two(bytes[0], lines.high[0]);
    for (int k = 1; k < kPairs; ++k)
        h = L::add(h, L::weigh_two(bytes[k], lines.high[k]));
    if constexpr (kLow) {
        auto l = L::weigh_two(bytes[0], lines.low[0]);
        for (int k = 1; k < kPairs; ++k)
            l = L::add(l, L::weigh_two(bytes[k], lines.low[k]));
        if constexpr (kAccumulate) {
            l = L::add(l, L::load(low));
            h = L::add(h, L::add(L::load(high), L::template shift_right<kLowBits>(l)));
            l = L::bit_and(l, L::words((1 << kLowBits) - 1));
        }
        L::store(low, l);
    }
    L::store(high, h);
}

/// Words of the even and of the odd bytes go to planes of their own.
struct SplitBytes {
    static constexpr int kPlaneWords = kStepBytes / 2;  ///< of a step, in each plane

    template <class L, int kPairs, bool kLow, bool kAccumulate>
    static void step(const uint8_t* const* line, ptrdiff_t x, const LinePairs<L>& lines, AreaScratch& scratch,
                     ptrdiff_t word) {
        for (int at = 0; at < kStepBytes; at += L::kBytes, word += L::kBytes / 2) {
            typename L::Two even[kPairs], odd[kPairs];
            for (int k = 0; k < kPairs; ++k) {
                const auto a = L::load(line[2 * k] + x + at), b = L::load(line[2 * k + 1] + x + at);
                even[k] = L::even_bytes_of_two(a, b);
                odd[k] = L::odd_bytes_of_two(a, b);
            }
            weigh_bytes<L, kPairs, kLow, kAccumulate>(even, lines, scratch.even.high + word, scratch.even.low + word);
            weigh_bytes<L, kPairs, kLow, kAccumulate>(odd, lines, scratch.odd.high + word, scratch.odd.low + word);
        }
    }
};

/// All words go to the even plane.
struct AllBytes {
    static constexpr int kPlaneWords = kStepBytes;

    template <class L, int kPairs, bool kLow, bool kAccumulate>
    static void step(const uint8_t* const* line, ptrdiff_t x, const LinePairs<L>& lines, AreaScratch& scratch,
                     ptrdiff_t word) {
        for (int at = 0; at < kStepBytes; at += L::kBytes / 2, word += L::kBytes / 2) {
            typename L::Two all[kPairs];
            for (int k = 0; k < kPairs; ++k)
                all[k] = L::bytes_of_two(line[2 * k] + x + at, line[2 * k + 1] + x + at);
            weigh_bytes<L, kPairs, kLow, kAccumulate>(all, lines, scratch.even.high + word, scratch.even.low + word);
        }
    }
};

/// Where the lines that come next will be read.
struct LaterLines {
    const uint8_t* first;
    ptrdiff_t pitch;
    int32_t count;
};

/// `bytes` of every line. Reads up to the next multiple of kStepBytes, but not from `end` on.
template <class L, class Bytes, int kPairs, bool kLow, bool kAccumulate>
void sum_lines(const LinePairs<L>& lines, ptrdiff_t bytes, const uint8_t* end, const LaterLines& later,
               AreaScratch& scratch) {
    const ptrdiff_t rounded = (bytes + kStepBytes - 1) & -ptrdiff_t{kStepBytes};
    const uint8_t* const last_line = lines.line[2 * kPairs - 1];
    const ptrdiff_t inside = end - last_line < rounded ? bytes & -ptrdiff_t{kStepBytes} : rounded;
    ptrdiff_t x = 0, word = 0;
    for (; x < inside; x += kStepBytes, word += Bytes::kPlaneWords) {
        const uint8_t* ahead = later.first + x;
        for (int32_t i = 0; i < later.count; ++i, ahead += later.pitch)
            L::prefetch_far(ahead);
        Bytes::template step<L, kPairs, kLow, kAccumulate>(lines.line, x, lines, scratch, word);
    }
    if (x == rounded)
        return;
    uint8_t tail[2 * kPairs][kStepBytes];
    const uint8_t* tails[2 * kPairs];
    for (int i = 0; i < 2 * kPairs; ++i) {
        __builtin_memcpy(tail[i], lines.line[i] + x, static_cast<size_t>(bytes - x));
        tails[i] = tail[i];
    }
    Bytes::template step<L, kPairs, kLow, kAccumulate>(tails, 0, lines, scratch, word);
}

template <class L, class Bytes, bool kLow, bool kAccumulate>
void sum_line_pairs(const LinePairs<L>& lines, ptrdiff_t bytes, const uint8_t* end, const LaterLines& later,
                    AreaScratch& scratch) {
    switch (lines.pairs) {
        case 1: return sum_lines<L, Bytes, 1, kLow, kAccumulate>(lines, bytes, end, later, scratch);
        case 2: return sum_lines<L, Bytes, 2, kLow, kAccumulate>(lines, bytes, end, later, scratch);
        case 3: return sum_lines<L, Bytes, 3, kLow, kAccumulate>(lines, bytes, end, later, scratch);
        default: return sum_lines<L, Bytes, 4, kLow, kAccumulate>(lines, bytes, end, later, scratch);
    }
}

/// `bytes` from `offset` on of all lines of the span. Whether the low plane is needed; else it is not written.
template <class L, class Bytes>
bool sum_span(const AreaLines& lines, ptrdiff_t offset, ptrdiff_t bytes, AreaScratch& scratch) {
    const LaterLines later = {lines.pixels + lines.pitch * lines.later + offset, lines.pitch, lines.ahead};
    if (lines.span.count <= kMostLines) {
        const auto pairs = line_pairs<L>(lines, offset, 0, lines.span.count);
        if (pairs.has_low)
            sum_line_pairs<L, Bytes, true, false>(pairs, bytes, lines.end, later, scratch);
        else
            sum_line_pairs<L, Bytes, false, false>(pairs, bytes, lines.end, later, scratch);
        return pairs.has_low;
    }
    sum_line_pairs<L, Bytes, true, false>(line_pairs<L>(lines, offset, 0, kMostLines), bytes, lines.end, later,
                                          scratch);
    for (int32_t from = kMostLines; from < lines.span.count; from += kMostLines) {
        const int32_t left = lines.span.count - from;
        sum_line_pairs<L, Bytes, true, true>(line_pairs<L>(lines, offset, from, left < kMostLines ? left : kMostLines),
                                             bytes, lines.end, {later.first, later.pitch, 0}, scratch);
    }
    return true;
}

}  // namespace
}  // namespace zepbmp
