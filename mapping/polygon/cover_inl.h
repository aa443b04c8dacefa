/// \file
/// The coverage kernels, written once over a lane type (simd/lanes.md) and included by one file per instruction set.
/// Everything here is local to the including file.
///
/// RGBQ and YUY2 go through registers in groups of four bytes, a pixel or a pair: even words of a register carry bytes
/// 0 and 2 of a group, odd ones bytes 1 and 3. What does not fill a register at the end is loaded and stored group by
/// group, so nothing past the pixels is read or written.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/pixels.h"
#include "mapping/polygon/cover_kernels.h"
#include "mapping/polygon/ramp_area.h"
#include "simd/lanes_sse2.h"

namespace zepbmp {
namespace {

// ---------------------------------------------------------------- ramps

/// Only the first and the last pixel may hold an end of the ramp. Between them the area grows by the same amount from
/// pixel to pixel: positions are integers below 2^34, so double precision rounds the products alone.
template <class L, class D>
void ramp(uint16_t* coverage, int32_t first, int32_t end, const CoverRamp& ramp) {
    if (first >= end)
        return;
    coverage[first] = ramp_area(first, ramp);
    const int32_t last = end - 1;
    if (last == first)
        return;
    coverage[last] = ramp_area(last, ramp);
    int32_t x = first + 1;
    if (x + D::kLanes <= last) {
        const auto k = D::all(ramp.k), step = D::all(double{kPixelUnits} * D::kLanes);
        auto position = D::add(D::all(double(int64_t{x} * kPixelUnits + kPixelUnits / 2 - ramp.a)),
                               D::mul(D::counting(), D::all(kPixelUnits)));
        for (; x + D::kLanes <= last; x += D::kLanes) {
            D::store_truncated_words(coverage + x, D::mul(position, k));
            position = D::add(position, step);
        }
        L::finish();
    }
    for (; x < last; ++x)
        coverage[x] = ramp_area(x, ramp);
}

/// ramp_area() for any pixels, in double precision. Operands are whole numbers below 2^53, so only the product with k
/// is rounded; a shift is a scaling by a power of two, cut at the end. Beside the edge the triangle has no side left.
template <class D>
typename D::D areas_right_of(int32_t first, const CoverRamp& ramp) {
    constexpr double kShift = 1.0 / (2 * kPixelUnits);  // >> (kPixelBits + 1)
    const auto zero = D::all(0), pixel = D::all(kPixelUnits), k = D::all(ramp.k);
    const auto a = D::all(ramp.a), b = D::all(ramp.b);
    const auto left = D::mul(D::add(D::all(first), D::counting()), pixel), right = D::add(left, pixel);
    const auto begins_here = D::at_least(a, left), ends_here = D::at_least(right, b);
    const auto side = D::hold(D::select(begins_here, D::sub(right, a), D::sub(b, left)), zero, pixel);
    const auto triangle = D::mul(D::mul(D::mul(side, side), k), D::all(kShift));
    const auto trapezoid = D::mul(D::sub(D::add(left, D::all(kPixelUnits / 2)), a), k);
    const auto within = D::hold(D::mul(D::add(D::sub(right, a), D::sub(right, b)), D::all(0.5)), zero, pixel);
    const auto part = D::whole(
        D::select(begins_here, D::select(ends_here, within, triangle), D::select(ends_here, triangle, trapezoid)));
    return D::select(begins_here, part, D::select(ends_here, D::sub(pixel, part), part));
}

template <class L, class D>
void ends(uint16_t* coverage, int32_t first, const CoverRamp& left, int32_t last, const CoverRamp& right) {
    for (int i = 0; i < kCoverEnd; i += D::kLanes)
        D::store_truncated_words(coverage + first + i, areas_right_of<D>(first + i, left));
    for (int i = 0; i < kCoverEnd; i += D::kLanes)
        D::store_truncated_words(coverage + last + i, D::sub(D::all(kPixelUnits), areas_right_of<D>(last + i, right)));
    L::finish();
}

// ---------------------------------------------------------------- what is blended in

/// A line of the destination's layout.
template <class L>
struct Line {
    using V = typename L::V;
    struct Bytes {
        V v;
        V even() const { return L::template even_bytes<4>(v); }
        V odd() const { return L::template odd_bytes<4>(v); }
    };
    const uint8_t* pixels;

    Bytes bytes(ptrdiff_t at) const { return {L::load(pixels + at)}; }
    Bytes bytes(ptrdiff_t at, int groups) const { return {L::load_dwords(pixels + at, groups)}; }
    V words(ptrdiff_t at) const { return L::load(pixels + at); }
    V words(ptrdiff_t at, int groups) const { return L::load_dwords(pixels + at, groups); }
    uint32_t byte(ptrdiff_t at) const { return pixels[at]; }
    uint32_t word(ptrdiff_t at) const { return pixels[at] | uint32_t{pixels[at + 1]} << 8; }
};

/// The same four bytes in every group, or, of words, the same word.
template <class L>
class Value {
public:
    using V = typename L::V;
    explicit Value(uint32_t value)
        : value_(value),
          all_(L::dwords(value)),
          bytes_{L::template even_bytes<4>(all_), L::template odd_bytes<4>(all_)} {}

    class Bytes {
    public:
        Bytes(V even, V odd) : even_(even), odd_(odd) {}
        V even() const { return even_; }
        V odd() const { return odd_; }

    private:
        V even_, odd_;
    };

    Bytes bytes(ptrdiff_t, int = 0) const { return bytes_; }
    V words(ptrdiff_t, int = 0) const { return all_; }
    uint32_t byte(ptrdiff_t at) const { return value_ >> 8 * (at & 3) & 0xff; }
    uint32_t word(ptrdiff_t) const { return value_ & 0xffff; }

private:
    uint32_t value_;
    V all_;
    Bytes bytes_;
};

// ---------------------------------------------------------------- how much of it

/// Coverage as it is.
template <class L>
struct Opaque {
    typename L::V operator()(typename L::V coverage) const { return coverage; }
    int32_t operator()(int32_t coverage) const { return coverage; }
};

/// coverage * level >> 12: both times four, the upper half of the product.
template <class L>
class Scaled {
public:
    explicit Scaled(int32_t level) : level_(level), times_four_(L::words(4 * level)) {}

    typename L::V operator()(typename L::V coverage) const {
        return L::mul_high(L::template shift_left_words<2>(coverage), times_four_);
    }
    int32_t operator()(int32_t coverage) const { return coverage * level_ >> kWeightBits; }

private:
    int32_t level_;
    typename L::V times_four_;
};

template <class L>
struct Weights {
    typename L::V even, odd;
};

/// A pixel's weight goes to all its bytes.
template <class L>
struct Rgbq {
    static constexpr int kGroupPixels = 1;

    template <class Level>
    static Weights<L> weights(const uint16_t* coverage, Level level) {
        const auto w = level(L::words_twice(coverage));
        return {w, w};
    }
    template <class Level>
    static Weights<L> weights(const uint16_t* coverage, int groups, Level level) {
        const auto w = level(L::words_twice(coverage, groups));
        return {w, w};
    }
};

/// Chroma takes the mean of its pair.
template <class L>
struct Yuy2 {
    static constexpr int kGroupPixels = 2;

    template <class Level>
    static Weights<L> of_pairs(typename L::V w, Level level) {
        return {level(w), level(L::template shift_right<1>(L::pair_sums(w)))};
    }
    template <class Level>
    static Weights<L> weights(const uint16_t* coverage, Level level) {
        return of_pairs(L::load(coverage), level);
    }
    template <class Level>
    static Weights<L> weights(const uint16_t* coverage, int groups, Level level) {
        return of_pairs(L::load_dwords(coverage, groups), level);
    }
};

// ---------------------------------------------------------------- the arithmetic

/// d + ((s - d) * weight >> 12): differences times 16, the upper halves of the products. Both bytes of a word are added
/// at once; neither sum leaves 0..255, so no carry is left between them.
template <class L, class Source>
typename L::V mixed_bytes(typename L::V d, Source s, const Weights<L>& weights) {
    const auto even = L::mul_high(L::sub(s.even(), L::template even_bytes<4>(d)), weights.even);
    const auto odd = L::mul_high(L::sub(s.odd(), L::template odd_bytes<4>(d)), weights.odd);
    return L::add(d, L::add(even, L::template shift_left_words<8>(odd)));
}

/// The same of unsigned words, as signed ones: s * weight + d * (4096 - weight) moves by 4096 * 32768.
template <class L>
typename L::V mixed_words(typename L::V d, typename L::V s, typename L::V weight) {
    const auto bias = L::words(0x8000);
    const auto rest = L::sub(L::words(kWeightFull), weight);
    d = L::bit_xor(d, bias);
    s = L::bit_xor(s, bias);
    const auto low = L::multiply_pairs(L::interleave_low_words(s, d), L::interleave_low_words(weight, rest));
    const auto high = L::multiply_pairs(L::interleave_high_words(s, d), L::interleave_high_words(weight, rest));
    return L::bit_xor(L::pack_dwords(L::template shift_right_signed_dwords<kWeightBits>(low),
                                     L::template shift_right_signed_dwords<kWeightBits>(high)),
                      bias);
}

void mix_byte(uint8_t& d, uint32_t s, int32_t weight) {
    d = static_cast<uint8_t>(d + ((static_cast<int32_t>(s) - d) * weight >> kWeightBits));
}

void mix_word(uint8_t* dst, uint32_t s, int32_t weight) {
    const uint32_t d = dst[0] | uint32_t{dst[1]} << 8;
    const uint32_t mixed =
        (s * static_cast<uint32_t>(weight) + d * static_cast<uint32_t>(kWeightFull - weight)) >> kWeightBits;
    dst[0] = static_cast<uint8_t>(mixed);
    dst[1] = static_cast<uint8_t>(mixed >> 8);
}

// ---------------------------------------------------------------- loops

template <class L, template <class> class Layout, class Source, class Level>
void mix_groups(uint8_t* dst, const Source& src, const uint16_t* coverage, int32_t groups, const Level& level) {
    using Pixels = Layout<L>;
    ptrdiff_t x = 0;
    for (; x + L::kDwords <= groups; x += L::kDwords)
        L::store(dst + 4 * x, mixed_bytes<L>(L::load(dst + 4 * x), src.bytes(4 * x),
                                             Pixels::weights(coverage + Pixels::kGroupPixels * x, level)));
    if (x < groups) {
        const int n = static_cast<int>(groups - x);
        L::store_dwords(dst + 4 * x,
                        mixed_bytes<L>(L::load_dwords(dst + 4 * x, n), src.bytes(4 * x, n),
                                       Pixels::weights(coverage + Pixels::kGroupPixels * x, n, level)),
                        n);
    }
    L::finish();
}

template <class L, class Source, class Level>
void mix_rgbq(uint8_t* dst, const Source& src, const uint16_t* coverage, int32_t pixels, const Level& level) {
    mix_groups<L, Rgbq>(dst, src, coverage, pixels, level);
}

template <class L, class Source, class Level>
void mix_yuy2(uint8_t* dst, const Source& src, const uint16_t* coverage, int32_t pixels, const Level& level) {
    mix_groups<L, Yuy2>(dst, src, coverage, pixels / 2, level);
    if (pixels % 2 == 1) {
        const ptrdiff_t at = 2 * ptrdiff_t{pixels - 1};
        const int32_t weight = level(int32_t{coverage[pixels - 1]});
        constexpr int kOfPair[] = {0, 1, 3};  // first luma, U, V
        for (const int byte : kOfPair)
            mix_byte(dst[at + byte], src.byte(at + byte), weight);
    }
    L::finish();
}

/// What each word weighs: by coverage, or all the same.
template <class L, class Level>
struct CoveredWords {
    const uint16_t* coverage;
    const Level& level;

    typename L::V words(ptrdiff_t x) const { return level(L::load(coverage + x)); }
    typename L::V words(ptrdiff_t x, int groups) const { return level(L::load_dwords(coverage + x, groups)); }
    int32_t word(ptrdiff_t x) const { return level(int32_t{coverage[x]}); }
};

template <class L>
struct EqualWords {
    int32_t weight;
    typename L::V all = L::words(weight);

    typename L::V words(ptrdiff_t, int = 0) const { return all; }
    int32_t word(ptrdiff_t) const { return weight; }
};

template <class L, class Source, class WordWeights>
void mix_words(uint8_t* dst, const Source& src, const WordWeights& weights, int32_t words) {
    constexpr int kWords = L::kBytes / 2;
    ptrdiff_t x = 0;
    for (; x + kWords <= words; x += kWords)
        L::store(dst + 2 * x, mixed_words<L>(L::load(dst + 2 * x), src.words(2 * x), weights.words(x)));
    if (x + 1 < words) {
        const int n = static_cast<int>(words - x) / 2;
        L::store_dwords(dst + 2 * x,
                        mixed_words<L>(L::load_dwords(dst + 2 * x, n), src.words(2 * x, n), weights.words(x, n)), n);
        x += 2 * n;
    }
    if (x < words)
        mix_word(dst + 2 * x, src.word(2 * x), weights.word(x));
    L::finish();
}

template <class L, class Source, class Level>
void mix_pwrw(uint8_t* dst, const Source& src, const uint16_t* coverage, int32_t pixels, const Level& level) {
    mix_words<L>(dst, src, CoveredWords<L, Level>{coverage, level}, pixels);
}

template <class L>
typename L::V mixed_as_words(typename L::V d, typename L::V s, typename L::V weight) {
    return L::add(d, L::mul_high(L::template shift_left_words<4>(L::sub(s, d)), weight));
}

/// One word a byte; returns how many were done.
template <class L>
ptrdiff_t mix_bytes(uint8_t* dst, uint32_t value, const uint16_t* coverage, ptrdiff_t x, ptrdiff_t end,
                    const Scaled<L>& scaled) {
    const auto s = L::words(static_cast<int>(value & 0xff));
    for (; x + 2 * L::kDwords <= end; x += 2 * L::kDwords)
        L::store_as_bytes(dst + x, mixed_as_words<L>(L::bytes_as_words(dst + x), s, scaled(L::load(coverage + x))));
    return x;
}

template <class L>
void paint_a8(uint8_t* dst, uint32_t value, const uint16_t* coverage, int32_t pixels, int32_t level) {
    const Scaled<L> scaled(level);
    ptrdiff_t x = mix_bytes<L>(dst, value, coverage, 0, pixels, scaled);
    x = mix_bytes<Lanes128>(dst, value, coverage, x, pixels, Scaled<Lanes128>(level));
    for (; x < pixels; ++x)
        mix_byte(dst[x], value & 0xff, scaled(int32_t{coverage[x]}));
    L::finish();
}

/// The last register's worth ends with the line; it may overlap the one before, so it is computed first.
template <class L>
void fade_bytes(uint8_t* dst, uint32_t value, int32_t bytes, int32_t level) {
    const auto w = L::words(level);
    const Weights<L> weights = {w, w};
    const Value<L> src(value);
    if (bytes >= L::kBytes) {
        const ptrdiff_t tail = ptrdiff_t{bytes} - L::kBytes;
        const uint32_t turn = 8 * (tail & 3);
        const auto last =
            mixed_bytes<L>(L::load(dst + tail), Value<L>(value >> turn | value << (-turn & 31)).bytes(0), weights);
        for (ptrdiff_t i = 0; i < tail; i += L::kBytes)
            L::store(dst + i, mixed_bytes<L>(L::load(dst + i), src.bytes(i), weights));
        L::store(dst + tail, last);
    } else {
        const int groups = bytes / 4;
        if (groups > 0)
            L::store_dwords(dst, mixed_bytes<L>(L::load_dwords(dst, groups), src.bytes(0), weights), groups);
        for (int32_t i = 4 * groups; i < bytes; ++i)
            mix_byte(dst[i], src.byte(i), level);
    }
    L::finish();
}

/// One word as four bytes.
template <class L>
Value<L> word_value(uint32_t value) {
    return Value<L>((value & 0xffff) * 0x10001);
}

template <class L>
void fade_words(uint8_t* dst, uint32_t value, int32_t words, int32_t level) {
    mix_words<L>(dst, word_value<L>(value), EqualWords<L>{level}, words);
}

// ---------------------------------------------------------------- the set

template <class L>
struct Blends {
    static void rgbq(uint8_t* dst, const uint8_t* src, const uint16_t* coverage, int32_t pixels) {
        mix_rgbq<L>(dst, Line<L>{src}, coverage, pixels, Opaque<L>());
    }
    static void yuy2(uint8_t* dst, const uint8_t* src, const uint16_t* coverage, int32_t pixels) {
        mix_yuy2<L>(dst, Line<L>{src}, coverage, pixels, Opaque<L>());
    }
    static void pwrw(uint8_t* dst, const uint8_t* src, const uint16_t* coverage, int32_t pixels) {
        mix_pwrw<L>(dst, Line<L>{src}, coverage, pixels, Opaque<L>());
    }
};

template <class L>
struct Paints {
    static void rgbq(uint8_t* dst, uint32_t value, const uint16_t* coverage, int32_t pixels, int32_t level) {
        mix_rgbq<L>(dst, Value<L>(value), coverage, pixels, Scaled<L>(level));
    }
    static void yuy2(uint8_t* dst, uint32_t value, const uint16_t* coverage, int32_t pixels, int32_t level) {
        mix_yuy2<L>(dst, Value<L>(value), coverage, pixels, Scaled<L>(level));
    }
    static void pwrw(uint8_t* dst, uint32_t value, const uint16_t* coverage, int32_t pixels, int32_t level) {
        mix_pwrw<L>(dst, word_value<L>(value), coverage, pixels, Scaled<L>(level));
    }
};

template <class L, class D>
constexpr CoverKernels cover_set() {
    return {
        .ramp = ramp<L, D>,
        .ends = ends<L, D>,
        .blend_rgbq = Blends<L>::rgbq,
        .blend_yuy2 = Blends<L>::yuy2,
        .blend_pwrw = Blends<L>::pwrw,
        .paint_rgbq = Paints<L>::rgbq,
        .paint_yuy2 = Paints<L>::yuy2,
        .paint_pwrw = Paints<L>::pwrw,
        .paint_a8 = paint_a8<L>,
        .fade_bytes = fade_bytes<L>,
        .fade_words = fade_words<L>,
    };
}

}  // namespace
}  // namespace zepbmp
