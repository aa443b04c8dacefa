/// \file
/// The vector span kernels, written once over a texel type (simd/lanes.md) and included by one file per instruction set.
/// Everything here is local to the including file.
///
/// A kernel goes over its span in blocks, each in three passes: where the block's pixels lie on the texture; what the
/// texture has there; into the destination. So a kernel is a projection, a sampler and a writer, and what it needs from
/// memory in the second pass does not wait for the arithmetic of the first.
#pragma once

#include <utility>

#include "mapping/polygon/filters.h"
#include "mapping/polygon/span_kernels.h"

namespace zepbmp {
namespace {

constexpr int kBlock = 256;         // pixels
constexpr int kPrefetchPixels = 4;  // apart from each other

// ---------------------------------------------------------------- pass 1: where pixels lie on the texture

/// What a sampler reads of a line for a pixel. It reads windows of whole registers, which may hold more texels than
/// have a weight.
struct Windows {
    int texel_shift;       ///< log2 of a texel's bytes
    int columns, lines;    ///< that the filter touches
    int texels_to_window;  ///< 1: a window begins with any texel; 2: with the first of a pair
    int bytes;             ///< 0: nothing but what has a weight
    bool taps_inside;      ///< from every position up to the maxima, where those are exact
};

/// Where a texture ends for a sampler. Where a window would pass the end it is moved back, and the box has a larger
/// place in it.
struct Geometry {
    int texel_shift;
    int32_t last_column, last_row;  ///< from which all taps lie inside
    int32_t last_offset;            ///< at which the last window may begin
    bool serves;                    ///< false: too small for windows, or too large for offsets
};

Geometry geometry_of(const SpanTexture& texture, const Windows& windows) {
    const int64_t columns = (texture.columns + windows.texels_to_window - 1) & -windows.texels_to_window;
    const int64_t bytes = (int64_t{texture.rows} - 1) * texture.pitch + (columns << windows.texel_shift);
    const int64_t last_offset =
        windows.bytes == 0 ? INT32_MAX : bytes - (windows.lines - 1) * int64_t{texture.pitch} - windows.bytes;
    const int32_t last_column = texture.columns - windows.columns, last_row = texture.rows - windows.lines;
    return {windows.texel_shift, last_column, last_row, static_cast<int32_t>(last_offset),
            last_column >= 0 && last_row >= 0 && last_offset >= 0 && bytes <= INT32_MAX && texture.pitch > 0 &&
                texture.pitch % 4 == 0};
}

/// Where the pixels of a block lie.
struct Places {
    alignas(64) int32_t offset[kBlock];     ///< bytes from the texture's first texel to the window
    alignas(64) uint32_t fraction[kBlock];  ///< where the box begins in the window: 1/128 texel, v in the upper half
};

/// From positions on the texture to places.
template <class T>
class Placer {
public:
    using V = typename T::V;
    using Floats = typename T::Floats;
    using F = typename Floats::F;

    Placer(const SpanTexture& texture, const Geometry& geometry)
        : u_max_(Floats::all(texture.u_max)),
          v_max_(Floats::all(texture.v_max)),
          last_offset_(T::dwords(static_cast<uint32_t>(geometry.last_offset))),
          to_fraction_(kFractionBits - geometry.texel_shift) {}

protected:
    static V clamped(F position, F max) { return Floats::truncate(Floats::hold(position, Floats::all(0), max)); }

    void store(V offset, V fraction, Places& places, int i) const {
        T::store(places.offset + i, offset);
        T::store(places.fraction + i, fraction);
    }

    /// Windows that would end behind the texture are moved back.
    void store_moved(V offset, V fraction, Places& places, int i) const {
        const V excess = T::positive_dwords(T::sub_dwords(offset, last_offset_));
        store(T::sub_dwords(offset, excess), T::add_dwords(fraction, T::shift_left_dwords_by(excess, to_fraction_)),
              places, i);
    }

    F u_max_, v_max_;

private:
    V last_offset_;
    int to_fraction_;
};

/// Whether a texture's maxima are exact in single precision and its pitch is a signed word.
bool is_near(const SpanTexture& texture) {
    constexpr int32_t kExactTexels = 4096;  // positions are multiples of 16 below 2^28
    return texture.columns <= kExactTexels && texture.rows <= kExactTexels && texture.pitch <= INT16_MAX;
}

/// On a near texture: no tap lies outside, and one multiplication of word pairs gives the offset.
template <class T, int kTexelsToWindow, bool kWindowsMove>
class NearPlacer : Placer<T> {
    using V = typename T::V;
    using F = typename T::Floats::F;

public:
    NearPlacer(const SpanTexture& texture, const Geometry& geometry)
        : Placer<T>(texture, geometry),
          steps_(T::dwords(1u << geometry.texel_shift | static_cast<uint32_t>(texture.pitch) << 16)) {}

    void operator()(F u, F v, Places& places, int i) const {
        constexpr int kToFraction = kTexelBits - kFractionBits;
        constexpr uint32_t kLow = 0xffff, kWindow = kTexelsToWindow * kFractions - 1;
        const V at_u = this->clamped(u, this->u_max_), at_v = this->clamped(v, this->v_max_);
        V texel = T::select_bits(T::dwords(kLow), T::template shift_right_dwords<kTexelBits>(at_u), at_v);
        if constexpr (kTexelsToWindow > 1)
            texel = T::bit_and(texel, T::dwords(0u - kTexelsToWindow));
        const V fraction = T::bit_and(T::select_bits(T::dwords(kLow), T::template shift_right_dwords<kToFraction>(at_u),
                                                     T::template shift_left_dwords<kFractionBits>(at_v)),
                                      T::dwords((kFractions - 1) << 16 | kWindow));
        if constexpr (kWindowsMove)
            this->store_moved(T::multiply_pairs(texel, steps_), fraction, places, i);
        else
            this->store(T::multiply_pairs(texel, steps_), fraction, places, i);
    }

private:
    V steps_;
};

/// On any texture. A maximum that was rounded up lies on the texel behind the last place, where the box has the
/// fraction 128 of the place before.
template <class T, int kTexelsToWindow>
class FarPlacer : Placer<T> {
    using V = typename T::V;
    using F = typename T::Floats::F;

public:
    FarPlacer(const SpanTexture& texture, const Geometry& geometry)
        : Placer<T>(texture, geometry),
          last_column_(T::dwords(static_cast<uint32_t>(geometry.last_column))),
          last_row_(T::dwords(static_cast<uint32_t>(geometry.last_row))),
          pitch_(T::dwords(static_cast<uint32_t>(texture.pitch))),
          texel_shift_(geometry.texel_shift) {}

    void operator()(F u, F v, Places& places, int i) const {
        const V at_u = this->clamped(u, this->u_max_), at_v = this->clamped(v, this->v_max_);
        const V column = T::bit_and(T::min_signed_words(whole(at_u), last_column_), T::dwords(0u - kTexelsToWindow));
        const V row = T::min_signed_words(whole(at_v), last_row_);
        this->store_moved(T::add_dwords(T::multiply_dwords(row, pitch_), T::shift_left_dwords_by(column, texel_shift_)),
                          T::add_dwords(fraction(at_u, column), T::template shift_left_dwords<16>(fraction(at_v, row))),
                          places, i);
    }

private:
    static V whole(V position) { return T::template shift_right_dwords<kTexelBits>(position); }
    static V fraction(V position, V texel) {
        return T::sub_dwords(T::template shift_right_dwords<kTexelBits - kFractionBits>(position),
                             T::template shift_left_dwords<kFractionBits>(texel));
    }

    V last_column_, last_row_, pitch_;
    int texel_shift_;
};

/// What the passes over a block share. Its first pixel may lie left of the span.
struct Block {
    int32_t first;
    int count;
    float w;  ///< depth of the span's next pixel
    Places places;
    alignas(64) uint32_t drawn[kBlock];       ///< all ones where a pixel passes the depth test, else 0
    alignas(64) uint8_t out[kBlock * 4 + 4];  ///< pixels, or strengths of a tint
};

using Pass = void(const SpanTexture& texture, const Geometry& geometry, const Span& span, Block& block);

/// Calls at(i, x) for every register of pixels: its index, its pixels' x.
template <class T, class At>
void each_register(const Block& block, At at) {
    auto x = T::counting_from(block.first);
    for (int i = 0; i < block.count; i += T::kPixels, x = T::add_dwords(x, T::dwords(T::kPixels)))
        at(i, T::Floats::to_float(x));
}

struct Affine {
    template <class T, class Place>
    static void locate(const SpanTexture& texture, const Geometry& geometry, const Span& span, Block& block) {
        using Floats = typename T::Floats;
        const Place place(texture, geometry);
        const auto du = Floats::all(span.du), dv = Floats::all(span.dv), u_start = Floats::all(span.u_start),
                   v_start = Floats::all(span.v_start);
        each_register<T>(block, [&](int i, auto x) {
            place(Floats::add(Floats::mul(x, du), u_start), Floats::add(Floats::mul(x, dv), v_start), block.places, i);
        });
    }
};

/// Places from w and what is divided by it.
template <class T, class Place>
class Divider {
public:
    using Floats = typename T::Floats;
    using F = typename Floats::F;

    Divider(const SpanTexture& texture, const Geometry& geometry, const Span& span)
        : place_(texture, geometry),
          du_(Floats::all(span.du)),
          dv_(Floats::all(span.dv)),
          u_start_(Floats::all(span.u_start)),
          v_start_(Floats::all(span.v_start)),
          u_off_(Floats::all(span.u_off)),
          v_off_(Floats::all(span.v_off)) {}

    void operator()(F x, F w, Places& places, int i) const {
        const F q = Floats::div(Floats::all(1), w);
        const auto at = [&](F slope, F start, F offset) {
            return Floats::add(Floats::mul(Floats::add(Floats::mul(x, slope), start), q), offset);
        };
        place_(at(du_, u_start_, u_off_), at(dv_, v_start_, v_off_), places, i);
    }

private:
    Place place_;
    F du_, dv_, u_start_, v_start_, u_off_, v_off_;
};

struct Perspective {
    template <class T, class Place>
    static void locate(const SpanTexture& texture, const Geometry& geometry, const Span& span, Block& block) {
        using Floats = typename T::Floats;
        const Divider<T, Place> divide(texture, geometry, span);
        const auto dw = Floats::all(span.dw), w_start = Floats::all(span.w_start);
        each_register<T>(block,
                         [&](int i, auto x) { divide(x, Floats::add(Floats::mul(x, dw), w_start), block.places, i); });
    }
};

/// w is summed up from the span's first pixel on, one addition a pixel. The depth line takes that of the nearer pixels.
struct DepthTested {
    template <class T, class Place>
    static void locate(const SpanTexture& texture, const Geometry& geometry, const Span& span, Block& block) {
        using Floats = typename T::Floats;
        constexpr float kNowhere = __builtin_nanf("");  // nearer than nothing
        const Divider<T, Place> divide(texture, geometry, span);
        const int lead = block.first < span.first ? span.first - block.first : 0;
        if (block.first <= span.first) {
            const float start = static_cast<float>(span.first) * span.dw;
            block.w = start + span.w_start;
        }
        alignas(64) float w[kBlock], depth[kBlock];
        const int padded = (block.count + T::kPixels - 1) / T::kPixels * T::kPixels;
        for (int i = 0; i < lead; ++i)
            w[i] = depth[i] = kNowhere;
        for (int i = lead; i < block.count; ++i, block.w += span.dw)
            w[i] = block.w;
        for (int i = block.count; i < padded; ++i)
            w[i] = depth[i] = kNowhere;
        float* const line = span.depth + (block.first + lead);
        const size_t bytes = static_cast<size_t>(block.count - lead) * sizeof *line;
        __builtin_memcpy(depth + lead, line, bytes);
        each_register<T>(block, [&](int i, auto x) {
            const auto here = Floats::load(w + i), behind = Floats::load(depth + i);
            const auto nearer = Floats::greater(here, behind);
            T::store(block.drawn + i, nearer);
            Floats::store(depth + i, Floats::select(nearer, here, behind));
            divide(x, here, block.places, i);
        });
        __builtin_memcpy(line, depth + lead, bytes);
    }
};

// ---------------------------------------------------------------- pass 2: what the texture has there

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
            prefetch_ahead<T>(texture.pixels, span, offset);
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
            prefetch_ahead<T>(texture.pixels, span, offset);
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
// fits, then its columns in 32 bits. A window is read in pieces of 16 bytes, which give
// 16 words in two halves; the last piece may be a half.

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

/// The four taps of a bilinear sample weigh 16384 together.
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
        constexpr uint32_t kSigned = 0x80008000, kRound = 8192;
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
            T::store(words, T::template shift_right_dwords<14>(T::add_dwords(sum, T::dwords((32768u << 14) + kRound))));
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
        constexpr uint32_t kRound = 8192;
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
            T::store(block.out + i * 4, T::template shift_right_dwords<14>(T::add_dwords(sum, T::dwords(kRound))));
        }
    }
};

// ---------------------------------------------------------------- pass 3: into the destination

/// A line's stores wait for its memory where the lines before did not bring it along.
template <class T>
void prefetch_later(const Span& span, const uint8_t* at, int bytes) {
    const uintptr_t later = reinterpret_cast<uintptr_t>(at) + static_cast<uintptr_t>(span.later_pixels);
    for (int i = 0; i < bytes; i += kCacheLineBytes)
        T::prefetch(reinterpret_cast<const void*>(later + static_cast<uintptr_t>(i)));
}

template <int kBytes>
struct WritePixels {
    static constexpr int kAlign = 1;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        uint8_t* const at = span.line + ptrdiff_t{block.first} * kBytes;
        prefetch_later<T>(span, at, block.count * kBytes);
        __builtin_memcpy(at, block.out, static_cast<size_t>(block.count) * kBytes);
    }
};

/// The chroma of a last pixel that begins its pair belongs to the span, that of a first pixel that ends it does not.
struct WritePairs {
    static constexpr int kAlign = 2;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 2;
        prefetch_later<T>(span, at, block.count * 2);
        if (block.first < span.first) {
            block.out[0] = at[0];
            block.out[1] = at[1];
            block.out[3] = at[3];
        }
        __builtin_memcpy(at, block.out, static_cast<size_t>(block.count) * 2);
        if (block.count % 2 != 0)
            at[block.count * 2 + 1] = block.out[block.count * 2 + 1];
    }
};

void merge(uint8_t* at, uint32_t value, uint32_t mask) {
    uint32_t old;
    __builtin_memcpy(&old, at, sizeof old);
    value = (value & mask) | (old & ~mask);
    __builtin_memcpy(at, &value, sizeof value);
}

uint32_t load_dword(const uint8_t* at) {
    uint32_t value;
    __builtin_memcpy(&value, at, sizeof value);
    return value;
}

struct MergePixels {
    static constexpr int kAlign = 1;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 4;
        prefetch_later<T>(span, at, block.count * 4);
        for (int i = 0; i < block.count; ++i)
            merge(at + 4 * i, load_dword(block.out + 4 * i), block.drawn[i]);
    }
};

/// A pair's chroma goes with its first pixel.
struct MergePairs {
    static constexpr int kAlign = 2;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        constexpr uint32_t kSecondLuma = 0x00ff0000;
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 2;
        prefetch_later<T>(span, at, block.count * 2);
        for (int i = 0; i < block.count; i += 2) {
            const uint32_t second = i + 1 < block.count ? block.drawn[i + 1] : 0;
            merge(at + 2 * i, load_dword(block.out + 2 * i), (block.drawn[i] & ~kSecondLuma) | (second & kSecondLuma));
        }
    }
};

/// Bytes 0 to 2: (d * (255 - strength) + color * strength) / 255.
struct TintPixels {
    static constexpr int kAlign = 1;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        alignas(64) uint8_t pixels[kBlock * 4];
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 4;
        const size_t bytes = static_cast<size_t>(block.count) * 4;
        __builtin_memcpy(pixels, at, bytes);
        const auto low_bytes = T::words(0xff);
        const auto even_color = T::bit_and(T::dwords(span.color), low_bytes),
                   odd_color = T::template shift_right<8>(T::dwords(span.color));
        const auto tint = [&](auto d, auto color, auto strength) {
            const auto sum = T::add(T::mul_low(d, T::sub(low_bytes, strength)), T::mul_low(color, strength));
            return T::template shift_right<7>(T::mul_high_unsigned(sum, T::words(0x8081)));  // / 255
        };
        for (int i = 0; i < block.count; i += T::kPixels) {
            const auto d = T::load(pixels + 4 * i);
            const auto strength = T::load(block.out + 4 * i);  // the fourth byte's is 0
            const auto even = tint(T::bit_and(d, low_bytes), even_color,
                                   T::bit_or(strength, T::template shift_left_dwords<16>(strength)));
            const auto odd = tint(T::template shift_right<8>(d), odd_color, strength);
            T::store(pixels + 4 * i, T::bit_or(even, T::template shift_left_words<8>(odd)));
        }
        __builtin_memcpy(at, pixels, bytes);
    }
};

/// (d * (255 - strength) + color * strength) >> 8, chroma with the strength of the pair's first pixel.
struct TintPairs {
    static constexpr int kAlign = 2;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        alignas(64) uint8_t pairs[kBlock * 2 + 4];
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 2;
        const size_t bytes = static_cast<size_t>(block.count + 1) / 2 * 4;
        __builtin_memcpy(pairs, at, bytes);
        uint8_t outside[4];  // what the span leaves of its first and its last pair
        const bool keeps_first = block.first < span.first, keeps_last = block.count % 2 != 0;
        __builtin_memcpy(outside, pairs, 2);
        outside[2] = pairs[3];
        outside[3] = pairs[bytes - 2];
        alignas(64) uint32_t luma[kBlock / 2], chroma[kBlock / 2];
        for (int i = 0; i < block.count; i += T::kPixels) {
            const auto two = T::load(block.out + 4 * i);
            T::store_even_dwords(chroma + i / 2, T::bit_or(two, T::template shift_left_dwords<16>(two)));
            T::store_even_dwords(luma + i / 2, T::bit_or(two, T::template shift_right_qwords<16>(two)));
        }
        const auto low_bytes = T::words(0xff);
        const uint32_t y = span.color >> 16 & 0xff, u = span.color >> 8 & 0xff, v = span.color & 0xff;
        const auto luma_color = T::dwords(y | y << 16), chroma_color = T::dwords(u | v << 16);
        const auto tint = [&](auto d, auto color, auto strength) {
            const auto sum = T::add(T::mul_low(d, T::sub(low_bytes, strength)), T::mul_low(color, strength));
            return T::template shift_right<8>(sum);
        };
        for (int i = 0; i < (block.count + 1) / 2; i += T::kPixels) {
            const auto d = T::load(pairs + 4 * i);
            const auto even = tint(T::bit_and(d, low_bytes), luma_color, T::load(luma + i));
            const auto odd = tint(T::template shift_right<8>(d), chroma_color, T::load(chroma + i));
            T::store(pairs + 4 * i, T::bit_or(even, T::template shift_left_words<8>(odd)));
        }
        if (keeps_first) {
            __builtin_memcpy(pairs, outside, 2);
            pairs[3] = outside[2];
        }
        if (keeps_last)
            pairs[bytes - 2] = outside[3];
        __builtin_memcpy(at, pairs, bytes);
    }
};

// ---------------------------------------------------------------- kernels

/// A kernel.
struct Passes {
    Windows windows;
    int align;  ///< blocks begin with a multiple of it
    Pass *locate_near, *locate_far, *sample, *write;
};

/// Left to the plain kernel: what the geometry does not serve.
template <class T>
void draw_in_passes(const Passes& passes, SpanKernel* plain, const SpanTexture& texture, const Span& span) {
    const Geometry geometry = geometry_of(texture, passes.windows);
    if (!geometry.serves)
        return plain(texture, span);
    Pass* const locate = passes.windows.taps_inside && is_near(texture) ? passes.locate_near : passes.locate_far;
    Block block;
    for (block.first = span.first & -passes.align; block.first <= span.last; block.first += kBlock) {
        block.count = span.last - block.first < kBlock ? span.last - block.first + 1 : kBlock;
        locate(texture, geometry, span, block);
        passes.sample(texture, geometry, span, block);
        passes.write(texture, geometry, span, block);
    }
    T::finish();
}

template <class T, SpanGroup kGroup, int kFilter, class Projection, class Sampler, class Writer>
void draw_span(const SpanTexture& texture, const Span& span) {
    constexpr int kTexelsToWindow = Sampler::kWindows.texels_to_window;
    static constexpr Passes kPasses = {
        .windows = Sampler::kWindows,
        .align = Writer::kAlign,
        .locate_near = Projection::template locate<T, NearPlacer<T, kTexelsToWindow, Sampler::kWindows.bytes != 0>>,
        .locate_far = Projection::template locate<T, FarPlacer<T, kTexelsToWindow>>,
        .sample = Sampler::template sample<T>,
        .write = Writer::template write<T>,
    };
    draw_in_passes<T>(kPasses, kSpansPlain.kernel[kGroup][kFilter], texture, span);
}

template <class T, SpanGroup kGroup, class Projection, class Writer, class Format, class First, int... kIndex>
constexpr void fill_boxes(SpanSet& set, std::integer_sequence<int, kIndex...>) {
    set.kernel[kGroup][0] = draw_span<T, kGroup, 0, Projection, First, Writer>;
    ((set.kernel[kGroup][1 + kIndex] = draw_span<T, kGroup, 1 + kIndex, Projection,
                                                 BoxSampler<Format, kColumnClasses[kIndex % kColumnClassCount].box,
                                                            kRowClasses[kIndex / kColumnClassCount].box>,
                                                 Writer>),
     ...);
}

template <class T>
constexpr SpanSet span_set() {
    constexpr auto boxes = std::make_integer_sequence<int, kSpanFilters - 1>();
    SpanSet set{};
    fill_boxes<T, kSpanYuy2Affine, Affine, WritePairs, Yuy2Texels, NearestPair>(set, boxes);
    fill_boxes<T, kSpanYuy2Persp, Perspective, WritePairs, Yuy2Texels, NearestPair>(set, boxes);
    fill_boxes<T, kSpanYuy2Depth, DepthTested, MergePairs, Yuy2Texels, NearestPair>(set, boxes);
    fill_boxes<T, kSpanRgbqAffine, Affine, WritePixels<4>, RgbqTexels, Nearest<2>>(set, boxes);
    fill_boxes<T, kSpanRgbqPersp, Perspective, WritePixels<4>, RgbqTexels, Nearest<2>>(set, boxes);
    fill_boxes<T, kSpanRgbqDepth, DepthTested, MergePixels, RgbqTexels, Nearest<2>>(set, boxes);
    set.kernel[kSpanPwrwAffine][0] = draw_span<T, kSpanPwrwAffine, 0, Affine, Nearest<1>, WritePixels<2>>;
    set.kernel[kSpanPwrwAffine][1] = draw_span<T, kSpanPwrwAffine, 1, Affine, BilinearWeights, WritePixels<2>>;
    set.kernel[kSpanPwrwPersp][0] = draw_span<T, kSpanPwrwPersp, 0, Perspective, Nearest<1>, WritePixels<2>>;
    set.kernel[kSpanPwrwPersp][1] = draw_span<T, kSpanPwrwPersp, 1, Perspective, BilinearWeights, WritePixels<2>>;
    set.kernel[kSpanA8TintYuy2][0] = draw_span<T, kSpanA8TintYuy2, 0, Perspective, BilinearStrength, TintPairs>;
    set.kernel[kSpanA8TintYuy2][1] = draw_span<T, kSpanA8TintYuy2, 1, Perspective, BilinearStrength, TintPairs>;
    set.kernel[kSpanA8TintRgbq][0] = draw_span<T, kSpanA8TintRgbq, 0, Perspective, BilinearStrength, TintPixels>;
    set.kernel[kSpanA8TintRgbq][1] = draw_span<T, kSpanA8TintRgbq, 1, Perspective, BilinearStrength, TintPixels>;
    return set;
}

}  // namespace
}  // namespace zepbmp
