/// \file
/// The vector kernels of composition, written once over a lane type (simd/lanes.md) and included by one file per
/// instruction set. Everything here is local to the including file.
///
/// Their arithmetic differs from the plain kernels' by design: each product is cut on its own, in 16-bit words, sums
/// are held to 0..255, and all four bytes of an RGBQ pixel are mixed. docs/rounding.md has the formulas side by side.
/// A weight is a signed 16-bit number; complements and pair sums wrap at 16 bits.
///
/// Memory is touched in groups of four bytes, an RGBQ pixel or a YUY2 pair: what does not fill a register at a line's
/// end is loaded and stored group by group, so nothing past the line is read or written.
#pragma once

#include <cstddef>
#include <cstdint>

#include "compose/compose_kernels.h"
#include "core/pixels.h"

namespace zepbmp {
namespace {

// ---------------------------------------------------------------- where in the line a step works

struct Whole {  ///< a full register at group x
    int32_t x;
};
struct WholeAligned {  ///< the same, every address a multiple of 16
    int32_t x;
};
struct Rest {  ///< n groups, fewer than fill a register, at group x
    int32_t x;
    int32_t n;
};

// ---------------------------------------------------------------- inputs: a running line pointer each

/// How many groups ahead streamed calls prefetch: 1 KB of pixels. The processor's own prefetching stops at every 4 KB
/// page.
constexpr int kGroupsAhead = 256;

/// Four bytes a group: pixels, and the 16-bit weights of YUY2.
template <class L>
struct Groups {
    const uint8_t* line;
    ptrdiff_t step;
    static constexpr int kBytesPerGroup = 4;

    typename L::V read(Whole at) const { return L::load(line + 4 * static_cast<ptrdiff_t>(at.x)); }
    typename L::V read(WholeAligned at) const { return L::load_aligned(line + 4 * static_cast<ptrdiff_t>(at.x)); }
    typename L::V read(Rest at) const { return L::load_dwords(line + 4 * static_cast<ptrdiff_t>(at.x), at.n); }
    void prefetch(int32_t x) const { L::prefetch(line + 4 * (static_cast<ptrdiff_t>(x) + kGroupsAhead)); }
    void next() { line += step; }
    bool is_dense(ptrdiff_t groups) const { return step == kBytesPerGroup * groups; }
};

/// Narrower weights, widened on the way in; a rest is widened from a copy that is as long as a whole.
template <class L, template <class> class Widen>
struct Weights {
    const uint8_t* line;
    ptrdiff_t step;
    static constexpr int kBytesPerGroup = Widen<L>::kBytesPerGroup;

    const uint8_t* group(int32_t x) const { return line + kBytesPerGroup * static_cast<ptrdiff_t>(x); }
    typename L::V read(Whole at) const { return Widen<L>::words(group(at.x)); }
    typename L::V read(WholeAligned at) const { return read(Whole{at.x}); }
    typename L::V read(Rest at) const {
        uint8_t padded[kBytesPerGroup * L::kDwords] = {};
        for (int32_t i = 0; i < kBytesPerGroup * at.n; ++i)
            padded[i] = group(at.x)[i];
        return Widen<L>::words(padded);
    }
    void prefetch(int32_t x) const { L::prefetch(group(x) + kBytesPerGroup * kGroupsAhead); }
    void next() { line += step; }
    bool is_dense(ptrdiff_t groups) const { return step == kBytesPerGroup * groups; }
};

template <class L>
struct WordTwice {  ///< 16-bit weights of RGBQ
    static constexpr int kBytesPerGroup = 2;
    static typename L::V words(const uint8_t* p) { return L::words_twice(p); }
};
template <class L>
struct WordAsDword {  ///< 16-bit weights of RGBQ, for 32-bit arithmetic
    static constexpr int kBytesPerGroup = 2;
    static typename L::V words(const uint8_t* p) { return L::words_as_dwords(p); }
};
template <class L>
struct ByteTwice {  ///< 8-bit weights of RGBQ
    static constexpr int kBytesPerGroup = 1;
    static typename L::V words(const uint8_t* p) { return L::bytes_twice(p); }
};
template <class L>
struct TwoBytes {  ///< 8-bit weights of YUY2
    static constexpr int kBytesPerGroup = 2;
    static typename L::V words(const uint8_t* p) { return L::bytes_as_words(p); }
};

// ---------------------------------------------------------------- the loop over lines and groups

uint8_t* group(uint8_t* line, int32_t x) { return line + 4 * static_cast<ptrdiff_t>(x); }

/// Groups x .. end-1 of one line. Inlined, so that the running pointers stay in registers: stores of bytes may alias
/// whatever lies in memory.
template <class L, class At, class Step>
__attribute__((always_inline)) inline void write_cached(Step step, uint8_t* dst, int32_t x, int32_t end) {
    for (; x <= end - L::kDwords; x += L::kDwords) {
        if constexpr (__is_same(At, WholeAligned))
            L::store_aligned(group(dst, x), step.at(At{x}));
        else
            L::store(group(dst, x), step.at(At{x}));
    }
    if (x < end)
        L::store_dwords(group(dst, x), step.at(Rest{x, end - x}), end - x);
}

template <class L, class At, class Step>
void run_cached(Step step, int32_t groups, int32_t lines, uint8_t* dst, ptrdiff_t dst_step) {
    for (int32_t y = 0; y < lines; ++y, dst += dst_step, step.next())
        write_cached<L, At>(step, dst, 0, groups);
}

/// Past the caches, whole cache lines only: what lies before the first and behind the last one of a line is stored
/// the other way.
template <class L, class Step>
void run_streamed(Step step, int32_t groups, int32_t lines, uint8_t* dst, ptrdiff_t dst_step) {
    constexpr int32_t kGroupsPerCacheLine = kCacheLineBytes / 4;
    for (int32_t y = 0; y < lines; ++y, dst += dst_step, step.next()) {
        const auto head = static_cast<int32_t>((0 - reinterpret_cast<uintptr_t>(dst)) % kCacheLineBytes / 4);
        const int32_t first = head < groups ? head : groups;
        const int32_t end = first + (groups - first) / kGroupsPerCacheLine * kGroupsPerCacheLine;
        write_cached<L, Whole>(step, dst, 0, first);
        for (int32_t x = first; x < end; x += kGroupsPerCacheLine) {
            step.prefetch(x);
            for (int32_t k = 0; k < kGroupsPerCacheLine; k += L::kDwords)
                L::store_streamed(group(dst, x + k), step.at(Whole{x + k}));
        }
        write_cached<L, Whole>(step, dst, end, groups);
    }
    L::end_stream();
}

template <class L, class At, class Step>
void run(const Step& step, int32_t groups, int32_t lines, uint8_t* dst, ptrdiff_t dst_step) {
    if (groups <= 0 || lines <= 0)
        return;
    if (dst_step == 4 * static_cast<ptrdiff_t>(groups) && step.is_dense(groups) && groups <= INT32_MAX / lines) {
        groups *= lines;  // nothing between the lines: one long line
        lines = 1;
    }
    if constexpr (L::kStreams) {
        const size_t touched =
            (Step::kBytesPerGroup + size_t{4}) * static_cast<size_t>(groups) * static_cast<size_t>(lines);
        const bool on_groups = ((reinterpret_cast<uintptr_t>(dst) | static_cast<uintptr_t>(dst_step)) & 3) == 0;
        if (touched > stream_threshold_bytes && on_groups)
            return run_streamed<L>(step, groups, lines, dst, dst_step);
    }
    run_cached<L, At>(step, groups, lines, dst, dst_step);
}

// ---------------------------------------------------------------- which weight goes to which byte

/// Even words of a register carry bytes 0 and 2 of a group, odd words bytes 1 and 3.
template <class L>
struct Rgbq {
    static constexpr int kPixelBytes = 4;
    static typename L::V even(typename L::V w) { return w; }
    static typename L::V odd(typename L::V w) { return w; }
};

/// Luma with its own weight, chroma with the weight of the pair's first pixel.
template <class L>
struct Yuy2 {
    static constexpr int kPixelBytes = 2;
    static typename L::V even(typename L::V w) { return w; }
    static typename L::V odd(typename L::V w) { return L::even_words_twice(w); }
};

// ---------------------------------------------------------------- arithmetic

/// floor(a * (4096 - w) / 4096) + floor(b * w / 4096): bytes scaled by 16, upper halves of the products.
template <class L>
struct Mix12 {
    using V = typename L::V;
    static V words(V a, V b, V w) {
        return L::add(L::mul_high(a, L::sub(L::words(kWeightFull), w)), L::mul_high(b, w));
    }
    static V even(V a, V b, V w) { return words(L::template even_bytes<4>(a), L::template even_bytes<4>(b), w); }
    static V odd(V a, V b, V w) { return words(L::template odd_bytes<4>(a), L::template odd_bytes<4>(b), w); }
};

/// (a * ((128 - w) mod 256) + b * w) >> 7, products and sum modulo 2^16.
template <class L>
struct Mix7 {
    using V = typename L::V;
    static V words(V a, V b, V w) {
        const V complement = L::bit_and(L::sub(L::words(kMaskFull), w), L::words(0xff));
        return L::template shift_right<7>(L::add(L::mul_low(a, complement), L::mul_low(b, w)));
    }
    static V even(V a, V b, V w) { return words(L::template even_bytes<0>(a), L::template even_bytes<0>(b), w); }
    static V odd(V a, V b, V w) { return words(L::template odd_bytes<0>(a), L::template odd_bytes<0>(b), w); }
};

/// (x + 1) >> 1, arithmetic.
template <class L>
typename L::V halve_rounded(typename L::V x) {
    return L::template shift_right_signed<1>(L::add(x, L::words(1)));
}

// ---------------------------------------------------------------- two sources under a mask

template <class L, class Mask, template <class> class Layout, template <class> class Mix>
struct MaskStep {
    Groups<L> a, b;
    Mask mask;
    static constexpr int kBytesPerGroup = 8 + Mask::kBytesPerGroup;

    template <class At>
    typename L::V at(At at) const {
        const auto p = a.read(at), q = b.read(at), w = mask.read(at);
        return L::interleave_saturated(Mix<L>::even(p, q, Layout<L>::even(w)), Mix<L>::odd(p, q, Layout<L>::odd(w)));
    }
    void prefetch(int32_t x) const { a.prefetch(x), b.prefetch(x), mask.prefetch(x); }
    void next() { a.next(), b.next(), mask.next(); }
    bool is_dense(ptrdiff_t groups) const { return a.is_dense(groups) && b.is_dense(groups) && mask.is_dense(groups); }
};

template <class L, class At, class Mask, template <class> class Layout, template <class> class Mix>
void mix_kernel(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                ptrdiff_t src1_skip, const uint8_t* src2, ptrdiff_t src2_skip, const void* mask, ptrdiff_t mask_skip) {
    constexpr int kPixelBytes = Layout<L>::kPixelBytes;
    constexpr int kMaskBytes = Mask::kBytesPerGroup * kPixelBytes / 4;
    const ptrdiff_t n = count;
    const MaskStep<L, Mask, Layout, Mix> step = {
        {src1, kPixelBytes * n + src1_skip},
        {src2, kPixelBytes * n + src2_skip},
        {static_cast<const uint8_t*>(mask), kMaskBytes * n + mask_skip},
    };
    run<L, At>(step, count / (4 / kPixelBytes), lines, dst, kPixelBytes * n + dst_skip);
    L::finish();
}

// ---------------------------------------------------------------- two sources at a level

/// (floor(a * w1 / 1024) + floor(b * w2 / 1024) + 2) >> 2: bytes scaled by 64, upper halves of the products.
template <class L>
struct LevelStep {
    using V = typename L::V;
    Groups<L> a, b;
    V w1, w2;
    static constexpr int kBytesPerGroup = 8;

    V words(V p, V q) const {
        const V sum = L::add(L::mul_high(p, w1), L::mul_high(q, w2));
        return L::template shift_right_signed<2>(L::add(sum, L::words(2)));
    }
    template <class At>
    V at(At at) const {
        const V p = a.read(at), q = b.read(at);
        return L::interleave_saturated(words(L::template even_bytes<6>(p), L::template even_bytes<6>(q)),
                                       words(L::template odd_bytes<6>(p), L::template odd_bytes<6>(q)));
    }
    void prefetch(int32_t x) const { a.prefetch(x), b.prefetch(x); }
    void next() { a.next(), b.next(); }
    bool is_dense(ptrdiff_t groups) const { return a.is_dense(groups) && b.is_dense(groups); }
};

/// Level 2048: the formula above is (2a + 2b + 2) >> 2.
template <class L>
struct AverageStep {
    Groups<L> a, b;
    static constexpr int kBytesPerGroup = 8;

    template <class At>
    typename L::V at(At at) const {
        return L::average_bytes(a.read(at), b.read(at));
    }
    void prefetch(int32_t x) const { a.prefetch(x), b.prefetch(x); }
    void next() { a.next(), b.next(); }
    bool is_dense(ptrdiff_t groups) const { return a.is_dense(groups) && b.is_dense(groups); }
};

/// Levels 0 and 4096: the formula above is (4a + 2) >> 2 of one source.
template <class L>
struct CopyStep {
    Groups<L> a;
    static constexpr int kBytesPerGroup = 4;

    template <class At>
    typename L::V at(At at) const {
        return a.read(at);
    }
    void prefetch(int32_t x) const { a.prefetch(x); }
    void next() { a.next(); }
    bool is_dense(ptrdiff_t groups) const { return a.is_dense(groups); }
};

/// The formula of LevelStep for one byte.
uint8_t level_byte(int a, int b, int16_t w1, int16_t w2) {
    const int sum = ((a * w1) >> 10) + ((b * w2) >> 10);
    const int value = (sum + 2) >> 2;
    return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

template <class L, class At>
void level_kernel(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                  ptrdiff_t src1_skip, int32_t weight1, const uint8_t* src2, ptrdiff_t src2_skip, int32_t level) {
    const int32_t groups = count / 4;
    const Groups<L> a = {src1, count + src1_skip}, b = {src2, count + src2_skip};
    const ptrdiff_t dst_step = count + dst_skip;
    const auto w1 = static_cast<int16_t>(weight1), w2 = static_cast<int16_t>(level);
    // The bytes behind the last whole group go first: an in-place call has not overwritten them yet.
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 4 * groups; x < count; ++x)
            dst[y * dst_step + x] = level_byte(a.line[y * a.step + x], b.line[y * b.step + x], w1, w2);
    }
    if (w1 == kWeightFull && w2 == 0) {
        if (src1 != dst || src1_skip != dst_skip)
            run<L, At>(CopyStep<L>{a}, groups, lines, dst, dst_step);
    } else if (w1 == 0 && w2 == kWeightFull) {
        if (src2 != dst || src2_skip != dst_skip)
            run<L, At>(CopyStep<L>{b}, groups, lines, dst, dst_step);
    } else if (w1 == kWeightFull / 2 && w2 == kWeightFull / 2) {
        run<L, At>(AverageStep<L>{a, b}, groups, lines, dst, dst_step);
    } else {
        run<L, At>(LevelStep<L>{a, b, L::words(w1), L::words(w2)}, groups, lines, dst, dst_step);
    }
    L::finish();
}

// ---------------------------------------------------------------- two sources and a colour band

/// One product per input, each cut on its own: floor(byte * 2^scale * weight / 2^16).
template <class L>
typename L::V three_terms(typename L::V p, typename L::V wp, typename L::V q, typename L::V wq, typename L::V c,
                          typename L::V wc) {
    return L::add(L::add(L::mul_high(p, wp), L::mul_high(q, wq)), L::mul_high(c, wc));
}

/// src1 * (4096 - b) + colour * (b - a) + src2 * a, terms of floor(x * w / 4096).
template <class L>
struct RgbqBandStep {
    using V = typename L::V;
    Groups<L> src1, src2;
    Weights<L, WordTwice> mask1, mask2;
    V color_even, color_odd;  ///< times 16
    static constexpr int kBytesPerGroup = 12;

    template <class At>
    V at(At at) const {
        const V p = src1.read(at), q = src2.read(at), a = mask1.read(at), b = mask2.read(at);
        const V w1 = L::sub(L::words(kWeightFull), b), wc = L::sub(b, a);
        return L::interleave_saturated(
            three_terms<L>(L::template even_bytes<4>(p), w1, L::template even_bytes<4>(q), a, color_even, wc),
            three_terms<L>(L::template odd_bytes<4>(p), w1, L::template odd_bytes<4>(q), a, color_odd, wc));
    }
    void prefetch(int32_t x) const { src1.prefetch(x), src2.prefetch(x), mask1.prefetch(x), mask2.prefetch(x); }
    void next() { src1.next(), src2.next(), mask1.next(), mask2.next(); }
    bool is_dense(ptrdiff_t groups) const {
        return src1.is_dense(groups) && src2.is_dense(groups) && mask1.is_dense(groups) && mask2.is_dense(groups);
    }
};

/// Luma: terms of floor(x * w / 2048); chroma: terms of floor(x * W / 4096), W the sums of the pair's weights; then
/// (sum + 1) >> 1.
template <class L>
struct Yuy2BandStep {
    using V = typename L::V;
    Groups<L> src1, src2, mask1, mask2;
    V luma, chroma;  ///< the colour's, times 32 and times 16
    static constexpr int kBytesPerGroup = 16;

    template <class At>
    V at(At at) const {
        const V p = src1.read(at), q = src2.read(at), a = mask1.read(at), b = mask2.read(at);
        const V a_sum = L::pair_sums(a), b_sum = L::pair_sums(b);
        const V even = three_terms<L>(L::template even_bytes<5>(p), L::sub(L::words(kWeightFull), b),
                                      L::template even_bytes<5>(q), a, luma, L::sub(b, a));
        const V odd = three_terms<L>(L::template odd_bytes<4>(p), L::sub(L::words(2 * kWeightFull), b_sum),
                                     L::template odd_bytes<4>(q), a_sum, chroma, L::sub(b_sum, a_sum));
        return L::interleave_saturated(halve_rounded<L>(even), halve_rounded<L>(odd));
    }
    void prefetch(int32_t x) const { src1.prefetch(x), src2.prefetch(x), mask1.prefetch(x), mask2.prefetch(x); }
    void next() { src1.next(), src2.next(), mask1.next(), mask2.next(); }
    bool is_dense(ptrdiff_t groups) const {
        return src1.is_dense(groups) && src2.is_dense(groups) && mask1.is_dense(groups) && mask2.is_dense(groups);
    }
};

template <class L>
void color_rgbq_band(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                     ptrdiff_t src1_skip, const uint8_t* src2, ptrdiff_t src2_skip, const uint16_t* mask1,
                     ptrdiff_t mask1_skip, const uint16_t* mask2, ptrdiff_t mask2_skip, uint32_t color) {
    const ptrdiff_t n = count;
    const auto colors = L::dwords(color);
    const RgbqBandStep<L> step = {
        {src1, 4 * n + src1_skip},
        {src2, 4 * n + src2_skip},
        {reinterpret_cast<const uint8_t*>(mask1), 2 * n + mask1_skip},
        {reinterpret_cast<const uint8_t*>(mask2), 2 * n + mask2_skip},
        L::template even_bytes<4>(colors),
        L::template odd_bytes<4>(colors),
    };
    run<L, Whole>(step, count, lines, dst, 4 * n + dst_skip);
    L::finish();
}

// A YUY2 line of odd width leaves its last pixel alone; pointers pass over it.
template <class L>
void color_yuy2_band(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                     ptrdiff_t src1_skip, const uint8_t* src2, ptrdiff_t src2_skip, const uint16_t* mask1,
                     ptrdiff_t mask1_skip, const uint16_t* mask2, ptrdiff_t mask2_skip, uint32_t color) {
    const ptrdiff_t n = count;
    const auto colors = L::dwords(yuy2_pair(color));
    const Yuy2BandStep<L> step = {
        {src1, 2 * n + src1_skip},
        {src2, 2 * n + src2_skip},
        {reinterpret_cast<const uint8_t*>(mask1), 2 * n + mask1_skip},
        {reinterpret_cast<const uint8_t*>(mask2), 2 * n + mask2_skip},
        L::template even_bytes<5>(colors),
        L::template odd_bytes<4>(colors),
    };
    run<L, Whole>(step, count / 2, lines, dst, 2 * n + dst_skip);
    L::finish();
}

// ---------------------------------------------------------------- one source over a flat colour

/// As the band, with the source's weight w and the colour's 4096 - w (8192 - W for chroma).
template <class L>
struct Yuy2ColorStep {
    using V = typename L::V;
    Groups<L> src, mask;
    V luma, chroma;  ///< the colour's, times 32 and times 16
    static constexpr int kBytesPerGroup = 8;

    template <class At>
    V at(At at) const {
        const V p = src.read(at), w = mask.read(at), w_sum = L::pair_sums(w);
        const V even =
            L::add(L::mul_high(L::template even_bytes<5>(p), w), L::mul_high(luma, L::sub(L::words(kWeightFull), w)));
        const V odd = L::add(L::mul_high(L::template odd_bytes<4>(p), w_sum),
                             L::mul_high(chroma, L::sub(L::words(2 * kWeightFull), w_sum)));
        return L::interleave_saturated(halve_rounded<L>(even), halve_rounded<L>(odd));
    }
    void prefetch(int32_t x) const { src.prefetch(x), mask.prefetch(x); }
    void next() { src.next(), mask.next(); }
    bool is_dense(ptrdiff_t groups) const { return src.is_dense(groups) && mask.is_dense(groups); }
};

template <class L>
void color_yuy2(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src, ptrdiff_t src_skip,
                const uint16_t* mask, ptrdiff_t mask_skip, uint32_t color) {
    const ptrdiff_t n = count;
    const auto colors = L::dwords(yuy2_pair(color));
    const Yuy2ColorStep<L> step = {
        {src, 2 * n + src_skip},
        {reinterpret_cast<const uint8_t*>(mask), 2 * n + mask_skip},
        L::template even_bytes<5>(colors),
        L::template odd_bytes<4>(colors),
    };
    run<L, Whole>(step, count / 2, lines, dst, 2 * n + dst_skip);
    L::finish();
}

/// The plain kernel's own formula and bytes: trunc((byte * w + colour * (4096 - w)) / 4096), its low 8 bits, for
/// every 16-bit w; the fourth byte stays.
template <class L>
struct RgbqColorStep {
    using V = typename L::V;
    Groups<L> src, dst;
    Weights<L, WordAsDword> mask;
    uint32_t color;
    static constexpr int kBytesPerGroup = 10;

    /// Byte k of each pixel, mixed, in place. (byte - colour) * w is exact as the sum of two products of words: the
    /// difference times the weight's low 2 bits, and 4 times it times the other 14.
    template <int k>
    V mixed(V pixels, V split_weight) const {
        const V byte = L::dwords(0xff);
        const uint32_t c = color >> (8 * k) & 0xff;
        const V difference =
            L::sub_dwords(L::bit_and(L::template shift_right_dwords<8 * k>(pixels), byte), L::dwords(c));
        const V pair =
            L::bit_or(L::bit_and(difference, L::dwords(0xffff)), L::template shift_left_dwords<18>(difference));
        const V sum = L::add_dwords(L::multiply_pairs(pair, split_weight), L::dwords(c * kWeightFull));
        const V toward_zero = L::template shift_right_dwords<20>(L::template shift_right_signed_dwords<31>(sum));
        const V value = L::template shift_right_signed_dwords<12>(L::add_dwords(sum, toward_zero));
        return L::template shift_left_dwords<8 * k>(L::bit_and(value, byte));
    }

    template <class At>
    V at(At at) const {
        const V pixels = src.read(at), w = mask.read(at);
        const V split_weight = L::bit_or(L::bit_and(w, L::dwords(3)),
                                         L::bit_and(L::template shift_left_dwords<14>(w), L::dwords(0xffff0000)));
        const V kept = L::bit_and(dst.read(at), L::dwords(0xff000000));
        return L::bit_or(L::bit_or(kept, mixed<0>(pixels, split_weight)),
                         L::bit_or(mixed<1>(pixels, split_weight), mixed<2>(pixels, split_weight)));
    }
    void prefetch(int32_t x) const { src.prefetch(x), dst.prefetch(x), mask.prefetch(x); }
    void next() { src.next(), dst.next(), mask.next(); }
    bool is_dense(ptrdiff_t groups) const {
        return src.is_dense(groups) && dst.is_dense(groups) && mask.is_dense(groups);
    }
};

template <class L>
void color_rgbq_exact(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src,
                      ptrdiff_t src_skip, const uint16_t* mask, ptrdiff_t mask_skip, uint32_t color) {
    const ptrdiff_t n = count;
    const RgbqColorStep<L> step = {
        {src, 4 * n + src_skip},
        {dst, 4 * n + dst_skip},
        {reinterpret_cast<const uint8_t*>(mask), 2 * n + mask_skip},
        color,
    };
    run<L, Whole>(step, count, lines, dst, 4 * n + dst_skip);
    L::finish();
}

/// A set whose aligned slots use accesses of kind `Aligned`; Whole makes them the kernels of their unaligned twins.
template <class L, class Aligned>
constexpr ComposeSlots compose_set(ComposeColorKernel* color_rgbq) {
    return {
        .rgbq_w16 = mix_kernel<L, Whole, Weights<L, WordTwice>, Rgbq, Mix12>,
        .rgbq_a8 = mix_kernel<L, Whole, Weights<L, ByteTwice>, Rgbq, Mix7>,
        .yuy2_w16 = mix_kernel<L, Whole, Groups<L>, Yuy2, Mix12>,
        .yuy2_w16_aligned = mix_kernel<L, Aligned, Groups<L>, Yuy2, Mix12>,
        .yuy2_a8 = mix_kernel<L, Whole, Weights<L, TwoBytes>, Yuy2, Mix7>,
        .yuy2_a8_aligned = mix_kernel<L, Aligned, Weights<L, TwoBytes>, Yuy2, Mix7>,
        .level = level_kernel<L, Whole>,
        .level_aligned = level_kernel<L, Aligned>,
        .color_rgbq_band = color_rgbq_band<L>,
        .color_yuy2_band = color_yuy2_band<L>,
        .color_rgbq = color_rgbq,
        .color_yuy2 = color_yuy2<L>,
    };
}

}  // namespace
}  // namespace zepbmp
