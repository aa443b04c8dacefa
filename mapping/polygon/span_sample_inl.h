/// \file
/// Second pass of a vector span kernel: what the texture has where a block's pixels lie.
#pragma once

#include <utility>

#include "mapping/polygon/filters.h"
#include "mapping/polygon/span_block_inl.h"

namespace zepbmp {
namespace {

/// Lines of the texture and of the destination are cold memory that hardware does not foresee: asks for what a register
/// of pixels needs some lines further down. Little by little, since the processor can wait for few cache lines at once.
///   kTaps   texels of a pixel: the more, the more of the texture lies between two pixels
template <class T, int kTaps = 1>
void prefetch_ahead(const SpanTexture& texture, const Span& span, const Block& block, int i) {
    constexpr int kPixelsApart = kTaps <= 4 ? 4 : kTaps <= 9 ? 2 : 1;
    const uintptr_t texels = reinterpret_cast<uintptr_t>(texture.pixels) + static_cast<uintptr_t>(span.later_texels);
    for (int k = i; k < i + T::kPixels; k += kPixelsApart)
        T::prefetch_far(
            reinterpret_cast<const void*>(texels + static_cast<uintptr_t>(intptr_t{block.places.offset[k]})));
    T::prefetch_far(reinterpret_cast<const void*>(block.later + static_cast<uintptr_t>(i * block.pixel_bytes)));
}

/// Calls take(k, at) for every pixel k of a block, and for those that fill up its last register: at is its first texel.
template <class T, class Take>
void each_place(const SpanTexture& texture, const Span& span, const Block& block, Take take) {
    const uint8_t* const pixels = texture.pixels;
    for (int i = 0; i < block.count; i += T::kPixels) {
        prefetch_ahead<T>(texture, span, block, i);
        const int32_t* const offset = block.places.offset + i;
        for (int k = 0; k < T::kPixels; ++k)
            take(i + k, pixels + offset[k]);
    }
}

constexpr Windows one_texel(int texel_shift) {
    return {
        .texel_shift = texel_shift, .columns = 1, .lines = 1, .texels_to_window = 1, .bytes = 0, .taps_inside = true};
}

/// The nearest texel.
template <int kTexelShift>
struct Nearest {
    static constexpr Windows kWindows = one_texel(kTexelShift);

    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        constexpr int kBytes = 1 << kTexelShift;
        uint8_t* const out = block.out;
        each_place<T>(texture, span, block,
                      [out](int k, const uint8_t* at) { __builtin_memcpy(out + k * kBytes, at, kBytes); });
    }
};

/// Two lumas, and the chroma of the first one's pair.
struct NearestPair {
    static constexpr Windows kWindows = one_texel(1);

    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        constexpr uint32_t kChroma = 0xff00ff00;
        const uint8_t* const pixels = texture.pixels;
        for (int i = 0; i < block.count; i += T::kPixels) {
            const int32_t* const offset = block.places.offset + i;
            prefetch_ahead<T>(texture, span, block, i);
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
// fits, then its columns in 32 bits. A window is read in pieces of 16 bytes, which give 16 words in two halves; the
// last piece may be a half.

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
    template <class T>
    static auto in_texel(typename T::V place) {
        return place;
    }
    template <class T, int kDword>
    static auto bilinear(typename T::V rows, typename T::V weights, typename T::V) {
        return T::template bilinear_rgbq<kDword>(rows, weights);
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
    template <class T>
    static auto in_texel(typename T::V place) {
        return T::bit_and(place, T::dwords(0xffff0000 | (kFractions - 1)));
    }
    template <class T, int kDword>
    static auto bilinear(typename T::V rows, typename T::V weights, typename T::V place) {
        const auto twice_texel = T::bit_and(T::template shift_right_dwords<kFractionBits - 1>(place), T::dwords(6));
        return T::template bilinear_yuy2<kDword>(rows, weights, twice_texel);
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
    static constexpr Windows kWindows = {
        .texel_shift = Format::kTexelShift,
        .columns = taps(kColumnBox),
        .lines = kRows,
        .texels_to_window = Format::kTexelsToWindow,
        .bytes = kHalves * 8,
        .taps_inside = kRowBox != 192,  // its last place needs two lines of three
    };

    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        using V = typename T::V;
        for (int i = 0; i < block.count; i += T::kPixels) {
            const int32_t* const offset = block.places.offset + i;
            prefetch_ahead<T, kWindows.columns * kWindows.lines>(texture, span, block, i);
            const V fraction = T::load(block.places.fraction + i);
            const LineWeights<T, kRowBox> lines(fraction);
            const V a = pixels<T, 0>(texture, offset, fraction, lines),
                    b = pixels<T, 1>(texture, offset, fraction, lines),
                    c = pixels<T, 2>(texture, offset, fraction, lines),
                    d = pixels<T, 3>(texture, offset, fraction, lines);
            Format::template store<T>(block.out + i * Format::kPixelBytes, T::pack(a, b, c, d));
        }
    }

private:
    template <class T, int kHalf>
    static typename T::V column_weights(typename T::V place) {
        constexpr const WordTexels& texels = kWordTexels<Format, kHalf>;
        return T::sub_to_zero_words(T::min_signed_words(T::repeat(texels.end), T::add(place, T::words(kColumnBox))),
                                    T::max_signed_words(T::repeat(texels.begin), place));
    }

    /// The pixels kDword, kDword + 4, ... of a register.
    template <class T, int kDword>
    static typename T::V pixels(const SpanTexture& texture, const int32_t* offset, typename T::V fraction,
                                const LineWeights<T, kRowBox>& lines) {
        LineWeights<T, kRowBox> weights = lines;
        weights.first_two = T::template spread_high<kDword>(lines.first_two);
        weights.third = T::template spread_high<kDword>(lines.third);
        auto sum = T::dwords(0);
        add_windows<T, kDword>(sum, texture, offset, T::template spread_low<kDword>(fraction), weights,
                               std::make_integer_sequence<int, (kHalves + 1) / 2>());
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

/// A box of one texel: the average of four.
template <class Format>
struct Bilinear {
    static constexpr Windows kWindows = {
        .texel_shift = Format::kTexelShift,
        .columns = 2,
        .lines = 2,
        .texels_to_window = Format::kTexelsToWindow,
        .bytes = Format::kTexelsToWindow == 1 ? 0 : 8,  // two pairs, whichever of them count
        .taps_inside = true,
    };

    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        using V = typename T::V;
        for (int i = 0; i < block.count; i += T::kPixels) {
            const int32_t* const offset = block.places.offset + i;
            prefetch_ahead<T, 4>(texture, span, block, i);
            const V place = T::load(block.places.fraction + i);
            const V weights = LineWeights<T, kFractions>(Format::template in_texel<T>(place)).first_two;
            const V a = pixels<T, 0>(texture, offset, weights, place),
                    b = pixels<T, 1>(texture, offset, weights, place),
                    c = pixels<T, 2>(texture, offset, weights, place),
                    d = pixels<T, 3>(texture, offset, weights, place);
            Format::template store<T>(block.out + i * Format::kPixelBytes, T::pack(a, b, c, d));
        }
    }

private:
    /// The pixels kDword, kDword + 4, ... of a register.
    template <class T, int kDword>
    static typename T::V pixels(const SpanTexture& texture, const int32_t* offset, typename T::V weights,
                                typename T::V place) {
        const auto rows = T::template load_rows<kDword>(texture.pixels, offset, texture.pitch);
        return Format::template bilinear<T, kDword>(rows, weights, place);
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

template <class Value>
Value value_at(const uint8_t* at) {
    Value value;
    __builtin_memcpy(&value, at, sizeof value);
    return value;
}

// Where taps are gathered one by one, all those of a block are before any is used: a wide load has to wait until the
// narrow stores before it have reached the cache.

/// Weights of a weight map.
struct BilinearWeights {
    static constexpr Windows kWindows = {
        .texel_shift = 1, .columns = 2, .lines = 2, .texels_to_window = 1, .bytes = 0, .taps_inside = true};

    /// Words are taken as signed, 32768 less: four taps of them stay below 2^31.
    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        constexpr uint32_t kSigned = 0x80008000, kBias = 0x8000u << kTapBits;
        alignas(64) uint32_t upper[kSpanBlock], lower[kSpanBlock];
        each_place<T>(texture, span, block, [&](int k, const uint8_t* at) {
            upper[k] = value_at<uint32_t>(at);
            lower[k] = value_at<uint32_t>(at + texture.pitch);
        });
        for (int i = 0; i < block.count; i += T::kPixels) {
            const TapWeights<T> weights(T::load(block.places.fraction + i));
            const auto weighted = [](const uint32_t* pairs, auto weight) {
                return T::multiply_pairs(T::bit_xor(T::load(pairs), T::dwords(kSigned)), weight);
            };
            const auto sum = T::add_dwords(weighted(upper + i, weights.upper), weighted(lower + i, weights.lower));
            T::store_low_words(block.out + 2 * i, T::template shift_right_dwords<kTapBits>(
                                                      T::add_dwords(sum, T::dwords(kBias + kTapRound))));
        }
    }
};

/// The strength of a tint, 0..255, in 32 bits.
struct BilinearStrength {
    static constexpr Windows kWindows = {
        .texel_shift = 0,
        .columns = 2,
        .lines = 2,
        .texels_to_window = 1,
        .bytes = 0,
        .taps_inside = false,  // filter 0 goes to the last texel
    };

    template <class T>
    static void sample(const SpanTexture& texture, const Geometry&, const Span& span, Block& block) {
        alignas(64) uint32_t taps[kSpanBlock];  // the upper line's two in the lower half
        each_place<T>(texture, span, block, [&](int k, const uint8_t* at) {
            taps[k] = value_at<uint16_t>(at) | static_cast<uint32_t>(value_at<uint16_t>(at + texture.pitch)) << 16;
        });
        for (int i = 0; i < block.count; i += T::kPixels) {
            const auto upper = T::load(taps + i), lower = T::template shift_right_dwords<16>(upper);
            const TapWeights<T> weights(T::load(block.places.fraction + i));
            const auto weighted = [](auto two, auto weight) {
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
