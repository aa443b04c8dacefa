/// \file
/// First pass of a vector span kernel: where a block's pixels lie on the texture. A projection gives positions, a
/// placer turns them into places.
#pragma once

#include "mapping/polygon/filters.h"
#include "mapping/polygon/span_block_inl.h"

namespace zepbmp {
namespace {

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
        alignas(64) float w[kSpanBlock], depth[kSpanBlock];
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
        const uintptr_t later = reinterpret_cast<uintptr_t>(line) + static_cast<uintptr_t>(span.later_depths);
        each_register<T>(block, [&](int i, auto x) {
            T::prefetch_far(reinterpret_cast<const void*>(later + static_cast<uintptr_t>(i) * sizeof *line));
            const auto here = Floats::load(w + i), behind = Floats::load(depth + i);
            const auto nearer = Floats::greater(here, behind);
            T::store(block.drawn + i, nearer);
            Floats::store(depth + i, Floats::select(nearer, here, behind));
            divide(x, here, block.places, i);
        });
        __builtin_memcpy(line, depth + lead, bytes);
    }
};

}  // namespace
}  // namespace zepbmp
