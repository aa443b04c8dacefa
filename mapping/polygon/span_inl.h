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

/// Which texels a sampler reads for a pixel, and how it is told.
///
/// The sampler reads windows of whole registers, which may hold more texels than have a weight. Where such a window
/// would end behind the texture it is moved back, and the box has a larger place in it.
struct Geometry {
    int texel_shift;                ///< log2 of a texel's bytes
    int32_t last_column, last_row;  ///< from which all taps lie inside
    int32_t last_offset;            ///< at which the last window may begin
};

/// Of the pixels of a block.
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

/// On a texture whose maxima are exact in single precision and whose pitch is a signed word: no tap lies outside, and
/// one multiplication of word pairs gives the offset.
template <class T, int kTexelsToWindow, bool kWindowsMove>
class NearPlacer : Placer<T> {
    using V = typename T::V;
    using F = typename T::Floats::F;

public:
    static bool serves(const SpanTexture& texture) {
        return texture.columns <= kExactTexels && texture.rows <= kExactTexels && texture.pitch <= INT16_MAX;
    }

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
    static constexpr int32_t kExactTexels = 4096;  // positions are multiples of 16 below 2^28

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

/// Calls at(i, x) for every register of `count` pixels: its index, its pixels' x.
template <class T, class At>
void each_register(int32_t first, int count, At at) {
    auto x = T::counting_from(first);
    for (int i = 0; i < count; i += T::kPixels, x = T::add_dwords(x, T::dwords(T::kPixels)))
        at(i, T::Floats::to_float(x));
}

template <class T>
class Affine {
public:
    static constexpr bool kTestsDepth = false;

    explicit Affine(const Span& span)
        : du_(Floats::all(span.du)),
          dv_(Floats::all(span.dv)),
          u_start_(Floats::all(span.u_start)),
          v_start_(Floats::all(span.v_start)) {}

    template <class Place>
    __attribute__((noinline)) void locate(int32_t first, int count, const Place& place, Places& places) const {
        each_register<T>(first, count, [&](int i, F x) {
            place(Floats::add(Floats::mul(x, du_), u_start_), Floats::add(Floats::mul(x, dv_), v_start_), places, i);
        });
    }

private:
    using Floats = typename T::Floats;
    using F = typename Floats::F;

    F du_, dv_, u_start_, v_start_;
};

template <class T>
class Perspective {
public:
    static constexpr bool kTestsDepth = false;

    explicit Perspective(const Span& span)
        : du_(Floats::all(span.du)),
          dv_(Floats::all(span.dv)),
          dw_(Floats::all(span.dw)),
          u_start_(Floats::all(span.u_start)),
          v_start_(Floats::all(span.v_start)),
          w_start_(Floats::all(span.w_start)),
          u_off_(Floats::all(span.u_off)),
          v_off_(Floats::all(span.v_off)) {}

    template <class Place>
    __attribute__((noinline)) void locate(int32_t first, int count, const Place& place, Places& places) const {
        each_register<T>(first, count,
                         [&](int i, F x) { divide(x, Floats::add(Floats::mul(x, dw_), w_start_), place, places, i); });
    }

protected:
    using Floats = typename T::Floats;
    using F = typename Floats::F;

    template <class Place>
    void divide(F x, F w, const Place& place, Places& places, int i) const {
        const F q = Floats::div(Floats::all(1), w);
        const auto at = [&](F slope, F start, F offset) {
            return Floats::add(Floats::mul(Floats::add(Floats::mul(x, slope), start), q), offset);
        };
        place(at(du_, u_start_, u_off_), at(dv_, v_start_, v_off_), places, i);
    }

private:
    F du_, dv_, dw_, u_start_, v_start_, w_start_, u_off_, v_off_;
};

/// w is summed up from the span's first pixel on, one addition a pixel.
template <class T>
class DepthTested : Perspective<T> {
public:
    static constexpr bool kTestsDepth = true;

    explicit DepthTested(const Span& span)
        : Perspective<T>(span),
          depth_(span.depth),
          dw_(span.dw),
          w_(static_cast<float>(span.first) * span.dw + span.w_start),
          reached_(span.first) {}

    /// drawn[i] becomes all ones for the pixels that are nearer than what the depth line holds, else 0, also for those
    /// left of the span's first one. The depth line takes the nearer ones.
    template <class Place>
    __attribute__((noinline)) void locate(int32_t first, int count, const Place& place, Places& places,
                                          uint32_t* drawn) {
        constexpr float kNowhere = __builtin_nanf("");  // is nearer than nothing
        alignas(64) float w[kBlock], depth[kBlock];
        const int lead = reached_ - first, padded = (count + T::kPixels - 1) / T::kPixels * T::kPixels;
        for (int i = 0; i < lead; ++i)
            w[i] = depth[i] = kNowhere;
        for (int i = lead; i < count; ++i, w_ += dw_)
            w[i] = w_;
        for (int i = count; i < padded; ++i)
            w[i] = depth[i] = kNowhere;
        float* const line = depth_ + reached_;
        const size_t bytes = static_cast<size_t>(count - lead) * sizeof *line;
        __builtin_memcpy(depth + lead, line, bytes);
        each_register<T>(first, count, [&](int i, F x) {
            const F here = Floats::load(w + i), behind = Floats::load(depth + i);
            const auto nearer = Floats::greater(here, behind);
            T::store(drawn + i, nearer);
            Floats::store(depth + i, Floats::select(nearer, here, behind));
            this->divide(x, here, place, places, i);
        });
        __builtin_memcpy(line, depth + lead, bytes);
        reached_ = first + count;
    }

private:
    using Floats = typename T::Floats;
    using F = typename Floats::F;

    float* depth_;
    float dw_, w_;
    int32_t reached_;
};

// ---------------------------------------------------------------- pass 2: what the texture has there

/// Texture lines are cold memory that hardware does not foresee: asks for what a later line needs.
template <class T>
void prefetch_ahead(const uint8_t* ahead, const Places& places, int i) {
    for (int k = 0; k < T::kPixels; k += kPrefetchPixels)
        T::prefetch(ahead + places.offset[i + k]);
}

/// Bytes of the texture from its first texel to behind its last one, or behind the last one's pair.
int64_t texture_bytes(const SpanTexture& texture, int texel_shift, int texels_to_window) {
    const int64_t columns = (texture.columns + texels_to_window - 1) & -texels_to_window;
    return (int64_t{texture.rows} - 1) * texture.pitch + (columns << texel_shift);
}

/// Windows of so many texels in so many lines, each of which weighs something somewhere.
Geometry exact_geometry(const SpanTexture& texture, int texel_shift, int columns, int rows) {
    return {texel_shift, texture.columns - columns, texture.rows - rows, INT32_MAX};
}

/// Offsets have 31 bits, and windows are moved by whole texels. What does not fit is for the plain kernel.
template <class Sampler>
bool serves(const SpanTexture& texture, const Geometry& geometry) {
    return geometry.last_column >= 0 && geometry.last_row >= 0 && geometry.last_offset >= 0 && texture.pitch > 0 &&
           texture.pitch % 4 == 0 &&
           texture_bytes(texture, geometry.texel_shift, Sampler::kTexelsToWindow) <= INT32_MAX;
}

/// What most samplers have.
struct ExactWindows {
    static constexpr int kTexelsToWindow = 1;    ///< 2: a window begins with the first texel of a pair
    static constexpr bool kWindowsMove = false;  ///< it may hold texels that weigh nothing
    static constexpr bool kTapsInside = true;    ///< from every position up to the maxima
};

/// The nearest texel.
template <int kTexelShift>
struct Nearest : ExactWindows {
    static constexpr int kOutBytes = 1 << kTexelShift;
    static Geometry geometry(const SpanTexture& texture) { return exact_geometry(texture, kTexelShift, 1, 1); }

    template <class T>
    __attribute__((noinline)) static void sample(const SpanTexture& texture, const Places& places, int count,
                                                 const uint8_t* ahead, uint8_t* out) {
        constexpr int kBytes = 1 << kTexelShift;
        const uint8_t* const pixels = texture.pixels;
        for (int i = 0; i < count; i += T::kPixels) {
            prefetch_ahead<T>(ahead, places, i);
            for (int k = i; k < i + T::kPixels; ++k)
                __builtin_memcpy(out + k * kBytes, pixels + places.offset[k], kBytes);
        }
    }
};

/// Two lumas, and the chroma of the first one's pair.
struct NearestPair : ExactWindows {
    static constexpr int kOutBytes = 2;
    static Geometry geometry(const SpanTexture& texture) { return exact_geometry(texture, 1, 1, 1); }

    template <class T>
    __attribute__((noinline)) static void sample(const SpanTexture& texture, const Places& places, int count,
                                                 const uint8_t* ahead, uint8_t* out) {
        constexpr uint32_t kChroma = 0xff00ff00;
        const uint8_t* const pixels = texture.pixels;
        for (int i = 0; i < count; i += T::kPixels) {
            prefetch_ahead<T>(ahead, places, i);
            for (int k = i; k < i + T::kPixels; k += 2) {
                const uint8_t *const even = pixels + places.offset[k], *const odd =
                                                                           texture.pixels + places.offset[k + 1];
                uint32_t pair;
                __builtin_memcpy(&pair, even - (places.offset[k] & 2), sizeof pair);
                pair = (pair & kChroma) | *even | static_cast<uint32_t>(*odd) << 16;
                __builtin_memcpy(out + 2 * k, &pair, sizeof pair);
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
    static constexpr int kOutBytes = 4;
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
    static constexpr int kOutBytes = 2;
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
    static constexpr int kOutBytes = Format::kOutBytes;
    static constexpr int kTexelsToWindow = Format::kTexelsToWindow;
    static constexpr bool kTapsInside = kRowBox != 192;  // its last place needs two lines of three
    static constexpr int kRows = taps(kRowBox);
    static constexpr int kWindowTexels = taps(kColumnBox) + Format::kTexelsToWindow - 1;
    static constexpr int kHalves = (kWindowTexels + Format::kHalfTexels - 1) / Format::kHalfTexels;
    /// Two lines of half a window fit into one.
    static constexpr bool kRowsInOne = kRows == 2 && kHalves == 1;
    static constexpr int kWindowBytes = kHalves * 8;
    /// Every texel of a window weighs something somewhere: windows are never moved.
    static constexpr bool kExact = kRowsInOne && kWindowTexels == Format::kHalfTexels && Format::kTexelsToWindow == 1;
    static constexpr bool kWindowsMove = !kExact;

    static Geometry geometry(const SpanTexture& texture) {
        Geometry geometry = exact_geometry(texture, Format::kTexelShift, taps(kColumnBox), kRows);
        const int64_t last = texture_bytes(texture, Format::kTexelShift, kTexelsToWindow) -
                             (kRows - 1) * int64_t{texture.pitch} - kWindowBytes;
        geometry.last_offset = static_cast<int32_t>(last < 0 ? -1 : last > INT32_MAX ? INT32_MAX : last);
        return geometry;
    }

    template <class T>
    __attribute__((noinline)) static void sample(const SpanTexture& texture, const Places& places, int count,
                                                 const uint8_t* ahead, uint8_t* out) {
        using V = typename T::V;
        for (int i = 0; i < count; i += T::kPixels) {
            prefetch_ahead<T>(ahead, places, i);
            const V fraction = T::load(places.fraction + i);
            const LineWeights<T, kRowBox> lines(fraction);
            const V columns = kExact ? lines.first_two : fraction;
            const int32_t* const offset = places.offset + i;
            const V a = pixels<T, 0>(texture, offset, columns, lines),
                    b = pixels<T, 1>(texture, offset, columns, lines),
                    c = pixels<T, 2>(texture, offset, columns, lines),
                    d = pixels<T, 3>(texture, offset, columns, lines);
            Format::template store<T>(out + i * kOutBytes, T::pack(a, b, c, d));
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
struct BilinearWeights : ExactWindows {
    static constexpr int kOutBytes = 2;
    static Geometry geometry(const SpanTexture& texture) { return exact_geometry(texture, 1, 2, 2); }

    /// Words are taken as signed, 32768 less: four taps of them stay below 2^31.
    template <class T>
    __attribute__((noinline)) static void sample(const SpanTexture& texture, const Places& places, int count,
                                                 const uint8_t* ahead, uint8_t* out) {
        constexpr uint32_t kSigned = 0x80008000, kRound = 8192;
        for (int i = 0; i < count; i += T::kPixels) {
            prefetch_ahead<T>(ahead, places, i);
            alignas(64) uint32_t upper[T::kPixels], lower[T::kPixels], words[T::kPixels];
            gather_taps<T, uint32_t>(texture, places.offset + i, upper, lower);
            const TapWeights<T> weights(T::load(places.fraction + i));
            const auto weighted = [](const uint32_t* taps, auto weight) {
                return T::multiply_pairs(T::bit_xor(T::load(taps), T::dwords(kSigned)), weight);
            };
            const auto sum = T::add_dwords(weighted(upper, weights.upper), weighted(lower, weights.lower));
            T::store(words, T::template shift_right_dwords<14>(T::add_dwords(sum, T::dwords((32768u << 14) + kRound))));
            for (int k = 0; k < T::kPixels; ++k)
                __builtin_memcpy(out + (i + k) * kOutBytes, words + k, kOutBytes);
        }
    }
};

/// The strength of a tint, 0..255, in 32 bits.
struct BilinearStrength : ExactWindows {
    static constexpr bool kTapsInside = false;  // filter 0 goes to the last texel
    static constexpr int kOutBytes = 4;
    static Geometry geometry(const SpanTexture& texture) { return exact_geometry(texture, 0, 2, 2); }

    template <class T>
    __attribute__((noinline)) static void sample(const SpanTexture& texture, const Places& places, int count,
                                                 const uint8_t* ahead, uint8_t* out) {
        constexpr uint32_t kRound = 8192;
        for (int i = 0; i < count; i += T::kPixels) {
            prefetch_ahead<T>(ahead, places, i);
            alignas(64) uint32_t upper[T::kPixels], lower[T::kPixels];
            gather_taps<T, uint16_t>(texture, places.offset + i, upper, lower);
            const TapWeights<T> weights(T::load(places.fraction + i));
            const auto weighted = [](const uint32_t* taps, auto weight) {
                const auto two = T::load(taps);
                const auto words = T::bit_or(T::bit_and(two, T::dwords(0xff)),
                                             T::template shift_left_dwords<8>(T::bit_and(two, T::dwords(0xff00))));
                return T::multiply_pairs(words, weight);
            };
            const auto sum = T::add_dwords(weighted(upper, weights.upper), weighted(lower, weights.lower));
            T::store(out + i * kOutBytes, T::template shift_right_dwords<14>(T::add_dwords(sum, T::dwords(kRound))));
        }
    }
};

// ---------------------------------------------------------------- pass 3: into the destination

/// A block's pixels `first` to `first + count - 1`. Its first pixel may lie left of the span.
struct Block {
    int32_t first;
    int count;
};

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
    __attribute__((noinline)) static void write(const Span& span, const Block& block, const uint8_t* pixels,
                                                const uint32_t*) {
        uint8_t* const at = span.line + ptrdiff_t{block.first} * kBytes;
        prefetch_later<T>(span, at, block.count * kBytes);
        __builtin_memcpy(at, pixels, static_cast<size_t>(block.count) * kBytes);
    }
};

/// The chroma of a last pixel that begins its pair belongs to the span, that of a first pixel that ends it does not.
struct WritePairs {
    static constexpr int kAlign = 2;

    template <class T>
    __attribute__((noinline)) static void write(const Span& span, const Block& block, uint8_t* pixels,
                                                const uint32_t*) {
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 2;
        prefetch_later<T>(span, at, block.count * 2);
        if (block.first < span.first) {
            pixels[0] = at[0];
            pixels[1] = at[1];
            pixels[3] = at[3];
        }
        __builtin_memcpy(at, pixels, static_cast<size_t>(block.count) * 2);
        if (block.count % 2 != 0)
            at[block.count * 2 + 1] = pixels[block.count * 2 + 1];
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
    __attribute__((noinline)) static void write(const Span& span, const Block& block, const uint8_t* pixels,
                                                const uint32_t* drawn) {
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 4;
        prefetch_later<T>(span, at, block.count * 4);
        for (int i = 0; i < block.count; ++i)
            merge(at + 4 * i, load_dword(pixels + 4 * i), drawn[i]);
    }
};

/// A pair's chroma goes with its first pixel.
struct MergePairs {
    static constexpr int kAlign = 2;

    template <class T>
    __attribute__((noinline)) static void write(const Span& span, const Block& block, const uint8_t* pixels,
                                                const uint32_t* drawn) {
        constexpr uint32_t kSecondLuma = 0x00ff0000;
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 2;
        prefetch_later<T>(span, at, block.count * 2);
        for (int i = 0; i < block.count; i += 2) {
            const uint32_t second = i + 1 < block.count ? drawn[i + 1] : 0;
            merge(at + 2 * i, load_dword(pixels + 2 * i), (drawn[i] & ~kSecondLuma) | (second & kSecondLuma));
        }
    }
};

/// Bytes 0 to 2: (d * (255 - strength) + color * strength) / 255.
struct TintPixels {
    static constexpr int kAlign = 1;

    template <class T>
    __attribute__((noinline)) static void write(const Span& span, const Block& block, const uint8_t* strengths,
                                                const uint32_t*) {
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
            const auto strength = T::load(strengths + 4 * i);  // the fourth byte's is 0
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
    __attribute__((noinline)) static void write(const Span& span, const Block& block, uint8_t* strengths,
                                                const uint32_t*) {
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
            const auto two = T::load(strengths + 4 * i);
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

template <class T, class Projection, class Sampler, class Writer, class Place>
void draw_blocks(const SpanTexture& texture, const Span& span, const Place& place) {
    Projection projection(span);
    const auto* const ahead = reinterpret_cast<const uint8_t*>(reinterpret_cast<uintptr_t>(texture.pixels) +
                                                               static_cast<uintptr_t>(span.later_texels));
    Places places;
    alignas(64) uint8_t out[kBlock * Sampler::kOutBytes + 4];
    Block block;
    for (block.first = span.first & -Writer::kAlign; block.first <= span.last; block.first += kBlock) {
        block.count = span.last - block.first < kBlock ? span.last - block.first + 1 : kBlock;
        if constexpr (Projection::kTestsDepth) {
            alignas(64) uint32_t drawn[kBlock];
            projection.locate(block.first, block.count, place, places, drawn);
            Sampler::template sample<T>(texture, places, block.count, ahead, out);
            Writer::template write<T>(span, block, out, drawn);
        } else {
            projection.locate(block.first, block.count, place, places);
            Sampler::template sample<T>(texture, places, block.count, ahead, out);
            Writer::template write<T>(span, block, out, nullptr);
        }
    }
}

/// Left to the plain kernel of the same cell: textures that are too small for windows, or too large for offsets.
template <class T, SpanGroup kGroup, int kFilter, class Projection, class Sampler, class Writer>
void draw_span(const SpanTexture& texture, const Span& span) {
    using Near = NearPlacer<T, Sampler::kTexelsToWindow, Sampler::kWindowsMove>;
    using Far = FarPlacer<T, Sampler::kTexelsToWindow>;
    const Geometry geometry = Sampler::geometry(texture);
    if (!serves<Sampler>(texture, geometry))
        kSpansPlain.kernel[kGroup][kFilter](texture, span);
    else if (Sampler::kTapsInside && Near::serves(texture))
        draw_blocks<T, Projection, Sampler, Writer>(texture, span, Near(texture, geometry));
    else
        draw_blocks<T, Projection, Sampler, Writer>(texture, span, Far(texture, geometry));
    T::finish();
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
    fill_boxes<T, kSpanYuy2Affine, Affine<T>, WritePairs, Yuy2Texels, NearestPair>(set, boxes);
    fill_boxes<T, kSpanYuy2Persp, Perspective<T>, WritePairs, Yuy2Texels, NearestPair>(set, boxes);
    fill_boxes<T, kSpanYuy2Depth, DepthTested<T>, MergePairs, Yuy2Texels, NearestPair>(set, boxes);
    fill_boxes<T, kSpanRgbqAffine, Affine<T>, WritePixels<4>, RgbqTexels, Nearest<2>>(set, boxes);
    fill_boxes<T, kSpanRgbqPersp, Perspective<T>, WritePixels<4>, RgbqTexels, Nearest<2>>(set, boxes);
    fill_boxes<T, kSpanRgbqDepth, DepthTested<T>, MergePixels, RgbqTexels, Nearest<2>>(set, boxes);
    set.kernel[kSpanPwrwAffine][0] = draw_span<T, kSpanPwrwAffine, 0, Affine<T>, Nearest<1>, WritePixels<2>>;
    set.kernel[kSpanPwrwAffine][1] = draw_span<T, kSpanPwrwAffine, 1, Affine<T>, BilinearWeights, WritePixels<2>>;
    set.kernel[kSpanPwrwPersp][0] = draw_span<T, kSpanPwrwPersp, 0, Perspective<T>, Nearest<1>, WritePixels<2>>;
    set.kernel[kSpanPwrwPersp][1] = draw_span<T, kSpanPwrwPersp, 1, Perspective<T>, BilinearWeights, WritePixels<2>>;
    set.kernel[kSpanA8TintYuy2][0] = draw_span<T, kSpanA8TintYuy2, 0, Perspective<T>, BilinearStrength, TintPairs>;
    set.kernel[kSpanA8TintYuy2][1] = draw_span<T, kSpanA8TintYuy2, 1, Perspective<T>, BilinearStrength, TintPairs>;
    set.kernel[kSpanA8TintRgbq][0] = draw_span<T, kSpanA8TintRgbq, 0, Perspective<T>, BilinearStrength, TintPixels>;
    set.kernel[kSpanA8TintRgbq][1] = draw_span<T, kSpanA8TintRgbq, 1, Perspective<T>, BilinearStrength, TintPixels>;
    return set;
}

}  // namespace
}  // namespace zepbmp
