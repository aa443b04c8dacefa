/// \file
/// Second pass of a vector span kernel: what the texture has where a block's pixels lie.
#pragma once

#include <utility>

#include "mapping/polygon/filters.h"
#include "mapping/polygon/span_block_inl.h"

namespace zepbmp {
namespace {

constexpr int kPrefetchPixels = 4;  // apart from each other

/// Texture lines are cold memory that hardware does not foresee: asks for what a later line needs.
template <class T>
void prefetch_ahead(const uint8_t* pixels, const Span& span, const int32_t* offset) {
    const uintptr_t later = reinterpret_cast<uintptr_t>(pixels) + static_cast<uintptr_t>(span.later_texels);
    for (int k = 0; k < T::kPixels; k += kPrefetchPixels)
        T::prefetch(reinterpret_cast<const void*>(later + static_cast<uintptr_t>(intptr_t{offset[k]})));
}

/// The nearest texel.
template <int kTexelShift>
struct Nearest {
    static constexpr Windows kWindows = {kTexelShift, 1, 1, 1, 0, true};

    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        constexpr int kBytes = 1 << kTexelShift;
        const uint8_t* const pixels = texture.pixels;
        for (int i = 0; i < block.count; i += T::kPixels) {
            const int32_t* const offset = block.places.offset + i;
            prefetch_ahead<T>(pixels, span, offset);
            for (int k = 0; k < T::kPixels; ++k)
                __builtin_memcpy(block.out + (i + k) * kBytes, pixels + offset[k], kBytes);
        }
    }
};

/// Two lumas, and the chroma of the first one's pair.
struct NearestPair {
    static constexpr Windows kWindows = {1, 1, 1, 1, 0, true};

    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        constexpr uint32_t kChroma = 0xff00ff00;
        const uint8_t* const pixels = texture.pixels;
        for (int i = 0; i < block.count; i += T::kPixels) {
            const int32_t* const offset = block.places.offset + i;
            prefetch_ahead<T>(pixels, span, offset);
            for (int k = 0; k < T::kPixels; k += 2) {
                const uint8_t *const even = pixels + offset[k], *const odd = pixels + offset[k + 1];
                uint32_t pair;
                __builtin_memcpy(&pair, even - (offset[k] & 2), sizeof pair);
                pair = (pair & kChroma) | *even | static_cast<uint32_t>(*odd) << 16;
                __builtin_memcpy(block.out + 2 * (i + k), &pair, sizeof pair);
            }
        }
    }
};

// A box is summed up a column at a time first: its lines in words, each the sum of (byte - 128) * weight so that it
// fits, then its columns in 32 bits. A window is read in pieces of 16 bytes,
// which give 16 words in two halves; the last piece may be a half.

/// Where a word's texels begin and end in the window, 1/128 texel.
struct WordTexels {
    alignas(16) int16_t begin[8], end[8];
};

struct RgbqTexels {
    static constexpr int kTexelShift = 2, kTexelsToWindow = 1;
    static constexpr int kHalfTexels = 2;  ///< of half a window

    /// Sums by channel: both texels' words stand side by side.
    template <class T>
    static auto arrange(typename T::V words) {
        return T::arrange_rgbq(words);
    }
    static constexpr WordTexels word_texels(int half) {
        WordTexels texels{};
        for (int i = 0; i < 8; ++i) {
            texels.begin[i] = static_cast<int16_t>((half * kHalfTexels + i % 2) * kFractions);
            texels.end[i] = static_cast<int16_t>(texels.begin[i] + kFractions);
        }
        return texels;
    }
    template <class T>
    static auto total(typename T::V sums) {
        return sums;
    }
    static constexpr int kPixelBytes = 4;
    template <class T>
    static void store(uint8_t* out, typename T::V pixels) {
        T::store(out, pixels);
    }
};

/// The words of half a window: Y0 Y1 U0 U1 Y2 Y3 V0 V1. A pair's chroma weighs as much as its texels together.
struct Yuy2Texels {
    static constexpr int kTexelShift = 1, kTexelsToWindow = 2;
    static constexpr int kHalfTexels = 4;

    template <class T>
    static auto arrange(typename T::V words) {
        return T::arrange_yuy2(words);
    }
    static constexpr WordTexels word_texels(int half) {
        WordTexels texels{};
        for (int i = 0; i < 8; ++i) {
            const bool luma = i % 4 < 2;
            const int texel = half * kHalfTexels + (luma ? i / 4 * 2 + i % 2 : i % 2 * 2);
            texels.begin[i] = static_cast<int16_t>(texel * kFractions);
            texels.end[i] = static_cast<int16_t>((texel + (luma ? 1 : 2)) * kFractions);
        }
        return texels;
    }
    /// From Y01 U Y23 V to Y U (anything) V.
    template <class T>
    static auto total(typename T::V sums) {
        return T::add_dwords(sums, T::third_dword_first(sums));
    }
    static constexpr int kPixelBytes = 2;
    /// Of two pixels in a row: Y U . V, and Y . . . of the second.
    template <class T>
    static void store(uint8_t* out, typename T::V pixels) {
        const auto first = T::bit_and(pixels, T::dwords(0xff00ffff));
        const auto second = T::bit_and(T::template shift_right_qwords<16>(pixels), T::dwords(0x00ff0000));
        T::store_even_dwords(out, T::bit_or(first, second));
    }
};

template <class Format, int kHalf>
constexpr WordTexels kWordTexels = Format::word_texels(kHalf);

constexpr uint32_t kGrey = 128;

/// sum / kTotal, rounded to nearest, for a sum of bytes whose weights add up to kTotal and of which kGrey has been
/// taken off. A division by 3 or 9 is a multiplication: exact for what comes here, see the check below.
template <class T, uint32_t kTotal>
typename T::V normalised(typename T::V sum) {
    constexpr int kShift = __builtin_ctz(kTotal);
    constexpr uint32_t kOdd = kTotal >> kShift;
    const auto value =
        T::template shift_right_dwords<kShift>(T::add_dwords(sum, T::dwords(kTotal * kGrey + kTotal / 2)));
    if constexpr (kOdd == 1)
        return value;
    else
        return T::mul_high_unsigned(value, T::dwords(0x10000 / kOdd + 1));
}

constexpr bool divides_by_product(uint32_t divisor) {
    for (uint32_t value = 0; value < 256 * divisor; ++value) {
        if (value * (0x10000 / divisor + 1) >> 16 != value / divisor)
            return false;
    }
    return true;
}
static_assert(divides_by_product(3) && divides_by_product(9));

/// What the lines of a box weigh, two to a word: the first line in the lower byte. One word of each dword counts.
template <class T, int kRowBox>
struct LineWeights {
    static_assert(kRowBox == 128 || kRowBox == 192 || kRowBox == 256 || kRowBox == 512,
                  "two or three lines, or five whose inner ones are full");
    using V = typename T::V;

    V first_two, third;  ///< lines 0 and 1; 2, or of five lines 4

    explicit LineWeights(V fraction) {
        const V full = T::words(kFractions);
        if constexpr (kRowBox == kFractions) {
            first_two = T::add(T::mul_low(fraction, T::words(0xff)), full);  // 256 f + (128 - f)
            third = first_two;
        } else if constexpr (kRowBox == 192) {
            const V first = T::sub_to_zero_words(full, fraction),
                    last = T::sub_to_zero_words(fraction, T::words(kFractions / 2));
            first_two = pair(first, T::sub(T::words(kRowBox), T::add(first, last)));
            third = last;
        } else {
            first_two = pair(T::sub(full, fraction), full);
            third = fraction;
        }
    }

private:
    static V pair(V first, V second) { return T::bit_or(first, T::template shift_left_words<8>(second)); }
};

/// The average of a box.
template <class Format, int kColumnBox, int kRowBox>
struct BoxSampler {
    static constexpr int kRows = taps(kRowBox);
    static constexpr int kWindowTexels = taps(kColumnBox) + Format::kTexelsToWindow - 1;
    static constexpr int kHalves = (kWindowTexels + Format::kHalfTexels - 1) / Format::kHalfTexels;
    /// Two lines of half a window fit into one.
    static constexpr bool kRowsInOne = kRows == 2 && kHalves == 1;
    /// Every texel of a window weighs something somewhere.
    static constexpr bool kExact = kRowsInOne && kWindowTexels == Format::kHalfTexels && Format::kTexelsToWindow == 1;
    static constexpr Windows kWindows = {
        .texel_shift = Format::kTexelShift,
        .columns = taps(kColumnBox),
        .lines = kRows,
        .texels_to_window = Format::kTexelsToWindow,
        .bytes = kExact ? 0 : kHalves * 8,
        .taps_inside = kRowBox != 192,  // its last place needs two lines of three
    };

    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        using V = typename T::V;
        for (int i = 0; i < block.count; i += T::kPixels) {
            const int32_t* const offset = block.places.offset + i;
            prefetch_ahead<T>(texture.pixels, span, offset);
            const V fraction = T::load(block.places.fraction + i);
            const LineWeights<T, kRowBox> lines(fraction);
            const V columns = kExact ? lines.first_two : fraction;
            const V a = pixels<T, 0>(texture, offset, columns, lines),
                    b = pixels<T, 1>(texture, offset, columns, lines),
                    c = pixels<T, 2>(texture, offset, columns, lines),
                    d = pixels<T, 3>(texture, offset, columns, lines);
            Format::template store<T>(block.out + i * Format::kPixelBytes, T::pack(a, b, c, d));
        }
    }

private:
    /// Of the columns of every word: where the box begins, or in an exact window the weights themselves, which are made
    /// like those of two lines.
    template <class T, int kDword>
    static typename T::V column_places(typename T::V columns) {
        if constexpr (kExact)
            return T::template spread_low_bytes<kDword>(columns);
        else
            return T::template spread_low<kDword>(columns);
    }

    template <class T, int kHalf>
    static typename T::V column_weights(typename T::V place) {
        if constexpr (kExact) {
            return place;
        } else {
            constexpr const WordTexels& texels = kWordTexels<Format, kHalf>;
            return T::sub_to_zero_words(T::min_signed_words(T::repeat(texels.end), T::add(place, T::words(kColumnBox))),
                                        T::max_signed_words(T::repeat(texels.begin), place));
        }
    }

    /// The pixels kDword, kDword + 4, ... of a register.
    template <class T, int kDword>
    static typename T::V pixels(const SpanTexture& texture, const int32_t* offset, typename T::V columns,
                                const LineWeights<T, kRowBox>& lines) {
        LineWeights<T, kRowBox> weights = lines;
        weights.first_two = T::template spread_high<kDword>(lines.first_two);
        weights.third = T::template spread_high<kDword>(lines.third);
        const auto place = column_places<T, kDword>(columns);
        auto sum = T::dwords(0);
        if constexpr (kRowsInOne) {
            const auto rows = T::template load_rows<kDword>(texture.pixels, offset, texture.pitch);
            sum = T::multiply_pairs(Format::template arrange<T>(T::weigh_rows(rows, weights.first_two)),
                                    column_weights<T, 0>(place));
        } else {
            add_windows<T, kDword>(sum, texture, offset, place, weights,
                                   std::make_integer_sequence<int, (kHalves + 1) / 2>());
        }
        return normalised<T, uint32_t{kColumnBox} * kRowBox>(Format::template total<T>(sum));
    }

    template <class T, int kDword, int... kWindow>
    static void add_windows(typename T::V& sum, const SpanTexture& texture, const int32_t* offset, typename T::V place,
                            const LineWeights<T, kRowBox>& weights, std::integer_sequence<int, kWindow...>) {
        (add_window<T, kDword, kWindow>(sum, texture, offset, place, weights), ...);
    }

    template <class T, int kDword, int kWindow>
    static void add_window(typename T::V& sum, const SpanTexture& texture, const int32_t* offset, typename T::V place,
                           const LineWeights<T, kRowBox>& weights) {
        constexpr bool kWholeWindow = 2 * kWindow + 1 < kHalves;
        typename T::V row[kRows];
        const uint8_t* base = texture.pixels + 16 * kWindow;
        for (int i = 0; i < kRows; ++i, base += texture.pitch)
            row[i] = kWholeWindow ? T::template load_windows<kDword>(base, offset)
                                  : T::template load_half_windows<kDword>(base, offset);
        add_half<T, 2 * kWindow>(sum, row, place, weights,
                                 [](auto a, auto b, auto w) { return T::weigh_low(a, b, w); });
        if constexpr (kWholeWindow)
            add_half<T, 2 * kWindow + 1>(sum, row, place, weights,
                                         [](auto a, auto b, auto w) { return T::weigh_high(a, b, w); });
    }

    /// Weights of at most 256 a word: (byte - 128) * 256 fits.
    template <class T, int kHalf, class Weigh>
    static void add_half(typename T::V& sum, const typename T::V (&row)[kRows], typename T::V place,
                         const LineWeights<T, kRowBox>& weights, Weigh weigh) {
        const auto columns = column_weights<T, kHalf>(place);
        auto words = weigh(row[0], row[1], weights.first_two);
        if constexpr (kRows > 2)
            words = T::add(words, weigh(row[kRows - 1], row[kRows - 1], weights.third));
        sum = T::add_dwords(sum, T::multiply_pairs(Format::template arrange<T>(words), columns));
        if constexpr (kRows == 5) {
            const auto inner = weigh(row[2], row[3], T::words(kFractions * 0x101));
            sum = T::add_dwords(sum, T::multiply_pairs(Format::template arrange<T>(inner), columns));
        }
    }
};

constexpr int kTapBits = 2 * kFractionBits;  // of what the four taps of a bilinear sample weigh together
constexpr uint32_t kTapRound = 1u << (kTapBits - 1);

/// The weights of those taps.
template <class T>
struct TapWeights {
    typename T::V upper, lower;  ///< words: the left texel's, the right one's

    explicit TapWeights(typename T::V fraction) {
        const auto u = T::bit_and(fraction, T::dwords(0xffff));
        const auto v = T::template shift_right_dwords<16>(fraction);
        const auto columns =
            T::add_dwords(T::sub_dwords(T::template shift_left_dwords<16>(u), u), T::dwords(kFractions));
        const auto below = T::bit_or(v, T::template shift_left_dwords<16>(v));
        upper = T::mul_low(columns, T::sub(T::words(kFractions), below));
        lower = T::mul_low(columns, below);
    }
};

/// Two texels of each line, gathered one after the other. `Two` holds both.
template <class T, class Two>
void gather_taps(const SpanTexture& texture, const int32_t* offset, uint32_t* upper, uint32_t* lower) {
    for (int k = 0; k < T::kPixels; ++k) {
        Two two;
        __builtin_memcpy(&two, texture.pixels + offset[k], sizeof two);
        upper[k] = two;
        __builtin_memcpy(&two, texture.pixels + offset[k] + texture.pitch, sizeof two);
        lower[k] = two;
    }
}

/// Weights of a weight map.
struct BilinearWeights {
    static constexpr Windows kWindows = {1, 2, 2, 1, 0, true};

    /// Words are taken as signed, 32768 less: four taps of them stay below 2^31.
    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        constexpr uint32_t kSigned = 0x80008000, kBias = 0x8000u << kTapBits;
        for (int i = 0; i < block.count; i += T::kPixels) {
            const int32_t* const offset = block.places.offset + i;
            prefetch_ahead<T>(texture.pixels, span, offset);
            alignas(64) uint32_t upper[T::kPixels], lower[T::kPixels], words[T::kPixels];
            gather_taps<T, uint32_t>(texture, offset, upper, lower);
            const TapWeights<T> weights(T::load(block.places.fraction + i));
            const auto weighted = [](const uint32_t* taps, auto weight) {
                return T::multiply_pairs(T::bit_xor(T::load(taps), T::dwords(kSigned)), weight);
            };
            const auto sum = T::add_dwords(weighted(upper, weights.upper), weighted(lower, weights.lower));
            T::store(words, T::template shift_right_dwords<kTapBits>(T::add_dwords(sum, T::dwords(kBias + kTapRound))));
            for (int k = 0; k < T::kPixels; ++k)
                __builtin_memcpy(block.out + (i + k) * 2, words + k, 2);
        }
    }
};

/// The strength of a tint, 0..255, in 32 bits.
struct BilinearStrength {
    static constexpr Windows kWindows = {0, 2, 2, 1, 0, false};  // filter 0 goes to the last texel

    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        for (int i = 0; i < block.count; i += T::kPixels) {
            const int32_t* const offset = block.places.offset + i;
            prefetch_ahead<T>(texture.pixels, span, offset);
            alignas(64) uint32_t upper[T::kPixels], lower[T::kPixels];
            gather_taps<T, uint16_t>(texture, offset, upper, lower);
            const TapWeights<T> weights(T::load(block.places.fraction + i));
            const auto weighted = [](const uint32_t* taps, auto weight) {
                const auto two = T::load(taps);
                const auto words = T::bit_or(T::bit_and(two, T::dwords(0xff)),
                                             T::template shift_left_dwords<8>(T::bit_and(two, T::dwords(0xff00))));
                return T::multiply_pairs(words, weight);
            };
            const auto sum = T::add_dwords(weighted(upper, weights.upper), weighted(lower, weights.lower));
            T::store(block.out + i * 4,
                     T::template shift_right_dwords<kTapBits>(T::add_dwords(sum, T::dwords(kTapRound))));
        }
    }
};

}  // namespace
}  // namespace zepbmp
