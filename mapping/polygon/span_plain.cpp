/// \file
/// The span kernels in plain code: what each of them means. A kernel is put together from a projection, which says
/// where on the texture a pixel lies, a texture format, and a filter.
#include <utility>

#include "core/arithmetic.h"
#include "mapping/polygon/filters.h"
#include "mapping/polygon/span_kernels.h"

namespace zepbmp {
namespace {

// ---------------------------------------------------------------- where a pixel lies on the texture

struct Place {
    float u, v;  ///< 16.16
};

float multiply_add(float x, float slope, float start) { return single(single(x * slope) + start); }

class Affine {
public:
    explicit Affine(const Span& span) : s_(span) {}

    bool locate(int32_t x, Place& place) {
        const float at = single(static_cast<float>(x));
        place = {multiply_add(at, s_.du, s_.u_start), multiply_add(at, s_.dv, s_.v_start)};
        return true;
    }

private:
    const Span& s_;
};

class Perspective {
public:
    explicit Perspective(const Span& span) : s_(span) {}

    bool locate(int32_t x, Place& place) {
        const float at = single(static_cast<float>(x));
        place = divided(at, multiply_add(at, s_.dw, s_.w_start));
        return true;
    }

protected:
    Place divided(float x, float w) const {
        const float q = single(1 / w);
        return {multiply_add(multiply_add(x, s_.du, s_.u_start), q, s_.u_off),
                multiply_add(multiply_add(x, s_.dv, s_.v_start), q, s_.v_off)};
    }

    const Span& s_;
};

/// w is summed up along the span, drawn pixel or not.
class DepthTested : Perspective {
public:
    explicit DepthTested(const Span& span)
        : Perspective(span), w_(multiply_add(single(static_cast<float>(span.first)), span.dw, span.w_start)) {}

    bool locate(int32_t x, Place& place) {
        const float w = w_;
        w_ = single(w_ + s_.dw);
        if (!(w > s_.depth[x]))
            return false;
        s_.depth[x] = w;
        place = divided(single(static_cast<float>(x)), w);
        return true;
    }

private:
    float w_;
};

int32_t to_fixed(float position, float max) {
    if (!(position >= 0))
        position = 0;
    if (position > max)
        position = max;
    return static_cast<int32_t>(position);
}

// ---------------------------------------------------------------- filters

struct Nearest {};

template <int kColumnBox, int kRowBox>
struct Box {
    static constexpr uint32_t kTotal = kColumnBox * kRowBox;

    /// Calls add(line, column, weight) for every texel that weighs something.
    template <class Add>
    static void each_tap(const SpanTexture& texture, int32_t u, int32_t v, Add add) {
        const int fu = u >> (kTexelBits - kFractionBits) & (kFractions - 1);
        const int fv = v >> (kTexelBits - kFractionBits) & (kFractions - 1);
        const uint8_t* line = texture.pixels + (v >> kTexelBits) * texture.pitch;
        for (int row = 0; row < taps(kRowBox); ++row, line += texture.pitch) {
            const uint32_t row_weight = static_cast<uint32_t>(tap_weight(row, fv, kRowBox));
            if (row_weight == 0)
                continue;
            for (int column = 0; column < taps(kColumnBox); ++column) {
                const uint32_t weight = row_weight * static_cast<uint32_t>(tap_weight(column, fu, kColumnBox));
                if (weight != 0)
                    add(line, (u >> kTexelBits) + column, weight);
            }
        }
    }

    static uint8_t normalised(uint32_t sum) { return static_cast<uint8_t>((sum + kTotal / 2) / kTotal); }
};

// ---------------------------------------------------------------- formats

struct Rgbq {
    static void draw(const SpanTexture& texture, const Span& span, int32_t x, int32_t u, int32_t v, Nearest) {
        __builtin_memcpy(span.line + ptrdiff_t{x} * 4,
                         texture.pixels + (v >> kTexelBits) * texture.pitch + ptrdiff_t{u >> kTexelBits} * 4, 4);
    }

    template <int kColumnBox, int kRowBox>
    static void draw(const SpanTexture& texture, const Span& span, int32_t x, int32_t u, int32_t v,
                     Box<kColumnBox, kRowBox> box) {
        uint32_t sum[4] = {};
        box.each_tap(texture, u, v, [&](const uint8_t* line, ptrdiff_t column, uint32_t weight) {
            for (int k = 0; k < 4; ++k)
                sum[k] += line[column * 4 + k] * weight;
        });
        for (int k = 0; k < 4; ++k)
            span.line[ptrdiff_t{x} * 4 + k] = box.normalised(sum[k]);
    }
};

/// A texel's chroma is that of its pair, and weighs what the texel weighs. An even pixel also writes its pair's chroma.
struct Yuy2 {
    static const uint8_t* pair(const uint8_t* line, ptrdiff_t column) { return line + (column & ~ptrdiff_t{1}) * 2; }

    static void draw(const SpanTexture& texture, const Span& span, int32_t x, int32_t u, int32_t v, Nearest) {
        const uint8_t* const line = texture.pixels + (v >> kTexelBits) * texture.pitch;
        const ptrdiff_t column = u >> kTexelBits;
        const uint8_t* const chroma = pair(line, column);
        put(span, x, line[column * 2], chroma[1], chroma[3]);
    }

    template <int kColumnBox, int kRowBox>
    static void draw(const SpanTexture& texture, const Span& span, int32_t x, int32_t u, int32_t v,
                     Box<kColumnBox, kRowBox> box) {
        uint32_t luma = 0, cb = 0, cr = 0;
        box.each_tap(texture, u, v, [&](const uint8_t* line, ptrdiff_t column, uint32_t weight) {
            const uint8_t* const chroma = pair(line, column);
            luma += line[column * 2] * weight;
            cb += chroma[1] * weight;
            cr += chroma[3] * weight;
        });
        put(span, x, box.normalised(luma), box.normalised(cb), box.normalised(cr));
    }

private:
    static void put(const Span& span, int32_t x, uint8_t luma, uint8_t cb, uint8_t cr) {
        uint8_t* const pixel = span.line + ptrdiff_t{x} * 2;
        pixel[0] = luma;
        if (x % 2 == 0) {
            pixel[1] = cb;
            pixel[3] = cr;
        }
    }
};

struct Pwrw {
    static void draw(const SpanTexture& texture, const Span& span, int32_t x, int32_t u, int32_t v, Nearest) {
        const uint8_t* const line = texture.pixels + (v >> kTexelBits) * texture.pitch;
        put(span, x, weight_at(line, u >> kTexelBits));
    }

    template <int kColumnBox, int kRowBox>
    static void draw(const SpanTexture& texture, const Span& span, int32_t x, int32_t u, int32_t v,
                     Box<kColumnBox, kRowBox> box) {
        uint64_t sum = box.kTotal / 2;
        box.each_tap(texture, u, v, [&](const uint8_t* line, ptrdiff_t column, uint32_t weight) {
            sum += uint64_t{weight_at(line, column)} * weight;
        });
        put(span, x, static_cast<uint16_t>(sum / box.kTotal));
    }

private:
    static uint16_t weight_at(const uint8_t* line, ptrdiff_t column) {
        uint16_t weight;
        __builtin_memcpy(&weight, line + column * 2, sizeof weight);
        return weight;
    }
    static void put(const Span& span, int32_t x, uint16_t weight) {
        __builtin_memcpy(span.line + ptrdiff_t{x} * 2, &weight, sizeof weight);
    }
};

/// The strength of a tint, 0..255.
template <int kColumnBox, int kRowBox>
uint32_t strength_at(const SpanTexture& texture, int32_t u, int32_t v, Box<kColumnBox, kRowBox> box) {
    uint32_t sum = 0;
    box.each_tap(texture, u, v,
                 [&](const uint8_t* line, ptrdiff_t column, uint32_t weight) { sum += line[column] * weight; });
    return box.normalised(sum);
}

constexpr uint32_t kFullStrength = 255;

/// Full strength gives the colour; the fourth byte stays.
struct TintRgbq {
    template <class Filter>
    static void draw(const SpanTexture& texture, const Span& span, int32_t x, int32_t u, int32_t v, Filter filter) {
        const uint32_t strength = strength_at(texture, u, v, filter);
        uint8_t* const pixel = span.line + ptrdiff_t{x} * 4;
        for (int k = 0; k < 3; ++k) {
            const uint32_t color = span.color >> 8 * k & 0xff;
            pixel[k] = static_cast<uint8_t>((pixel[k] * (kFullStrength - strength) + color * strength) / kFullStrength);
        }
    }
};

/// The colour is 0x00YYUUVV. Full strength falls short of it: the sum is divided by 256.
struct TintYuy2 {
    template <class Filter>
    static void draw(const SpanTexture& texture, const Span& span, int32_t x, int32_t u, int32_t v, Filter filter) {
        const uint32_t strength = strength_at(texture, u, v, filter);
        uint8_t* const pixel = span.line + ptrdiff_t{x} * 2;
        const auto tint = [=](uint8_t& byte, uint32_t color) {
            byte = static_cast<uint8_t>((byte * (kFullStrength - strength) + (color & 0xff) * strength) >> 8);
        };
        tint(pixel[0], span.color >> 16);
        if (x % 2 == 0) {
            tint(pixel[1], span.color >> 8);
            tint(pixel[3], span.color);
        }
    }
};

// ---------------------------------------------------------------- kernels

template <class Projection, class Format, class Filter>
void draw_span(const SpanTexture& texture, const Span& span) {
    Projection projection(span);
    Place place;
    for (int32_t x = span.first; x <= span.last; ++x) {
        if (projection.locate(x, place))
            Format::draw(texture, span, x, to_fixed(place.u, texture.u_max), to_fixed(place.v, texture.v_max),
                         Filter{});
    }
}

template <class Projection, class Format, class First, int... kIndex>
constexpr void fill_group(SpanKernel* (&kernels)[kSpanFilters], std::integer_sequence<int, kIndex...>) {
    kernels[0] = draw_span<Projection, Format, First>;
    ((kernels[1 + kIndex] =
          draw_span<Projection, Format,
                    Box<kColumnClasses[kIndex % kColumnClassCount].box, kRowClasses[kIndex / kColumnClassCount].box>>),
     ...);
}

constexpr SpanSet plain_set() {
    constexpr auto boxes = std::make_integer_sequence<int, kSpanFilters - 1>();
    using Bilinear = Box<kFractions, kFractions>;
    SpanSet set{};
    fill_group<Affine, Yuy2, Nearest>(set.kernel[kSpanYuy2Affine], boxes);
    fill_group<Perspective, Yuy2, Nearest>(set.kernel[kSpanYuy2Persp], boxes);
    fill_group<Affine, Rgbq, Nearest>(set.kernel[kSpanRgbqAffine], boxes);
    fill_group<Perspective, Rgbq, Nearest>(set.kernel[kSpanRgbqPersp], boxes);
    fill_group<Affine, Pwrw, Nearest>(set.kernel[kSpanPwrwAffine], boxes);
    fill_group<Perspective, Pwrw, Nearest>(set.kernel[kSpanPwrwPersp], boxes);
    fill_group<DepthTested, Yuy2, Nearest>(set.kernel[kSpanYuy2Depth], boxes);
    fill_group<DepthTested, Rgbq, Nearest>(set.kernel[kSpanRgbqDepth], boxes);
    fill_group<Perspective, TintYuy2, Bilinear>(set.kernel[kSpanA8TintYuy2], boxes);
    fill_group<Perspective, TintRgbq, Bilinear>(set.kernel[kSpanA8TintRgbq], boxes);
    return set;
}

}  // namespace

extern constexpr SpanSet kSpansPlain = plain_set();

}  // namespace zepbmp
