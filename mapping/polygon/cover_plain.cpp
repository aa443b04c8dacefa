/// \file
/// The coverage kernels in plain code: what each of them means.
#include "core/pixels.h"
#include "mapping/polygon/cover_kernels.h"
#include "mapping/polygon/ramp_area.h"

namespace zepbmp {
namespace {

void ramp(uint16_t* coverage, int32_t first, int32_t end, const CoverRamp& ramp) {
    for (int32_t x = first; x < end; ++x)
        coverage[x] = ramp_area(x, ramp);
}

int32_t area_right_of(int32_t x, const CoverRamp& edge) {
    const int64_t left = int64_t{x} * kPixelUnits, right = left + kPixelUnits;
    if (edge.a >= right)
        return 0;
    if (edge.b <= left)
        return kPixelUnits;
    return ramp_area(x, edge);
}

void ends(uint16_t* coverage, int32_t first, const CoverRamp& left, int32_t last, const CoverRamp& right) {
    for (int32_t x = first; x < first + kCoverEnd; ++x)
        coverage[x] = static_cast<uint16_t>(area_right_of(x, left));
    for (int32_t x = last; x < last + kCoverEnd; ++x)
        coverage[x] = static_cast<uint16_t>(kPixelUnits - area_right_of(x, right));
}

int32_t scaled(int32_t coverage, int32_t level) { return coverage * level >> kWeightBits; }

/// Bytes and words alike: s and d are below 2^16.
int32_t mixed(int32_t d, int32_t s, int32_t coverage) {
    return static_cast<int32_t>((static_cast<uint32_t>(s) * static_cast<uint32_t>(coverage) +
                                 static_cast<uint32_t>(d) * static_cast<uint32_t>(kWeightFull - coverage)) >>
                                kWeightBits);
}

void mix_byte(uint8_t& d, uint32_t s, int32_t coverage) {
    d = static_cast<uint8_t>(mixed(d, static_cast<int32_t>(s & 0xff), coverage));
}

void mix_word(uint8_t* dst, uint32_t s, int32_t coverage) {
    uint16_t word;
    __builtin_memcpy(&word, dst, sizeof word);
    word = static_cast<uint16_t>(mixed(word, static_cast<int32_t>(s & 0xffff), coverage));
    __builtin_memcpy(dst, &word, sizeof word);
}

// Where a kernel's s comes from: a line of pixels, or one value.

struct Line {
    const uint8_t* pixels;
    uint32_t byte(int32_t i) const { return pixels[i]; }
    uint32_t word(int32_t i) const { return pixels[2 * i] | uint32_t{pixels[2 * i + 1]} << 8; }
};

struct Value {
    uint32_t value;
    uint32_t byte(int32_t i) const { return value >> 8 * (i & 3); }
    uint32_t word(int32_t) const { return value; }
};

template <class Source>
void mix_rgbq(uint8_t* dst, Source src, const uint16_t* coverage, int32_t pixels, int32_t level) {
    for (int32_t x = 0; x < pixels; ++x) {
        for (int32_t i = 4 * x; i < 4 * x + 4; ++i)
            mix_byte(dst[i], src.byte(i), scaled(coverage[x], level));
    }
}

template <class Source>
void mix_yuy2(uint8_t* dst, Source src, const uint16_t* coverage, int32_t pixels, int32_t level) {
    for (int32_t x = 0; x < pixels; ++x) {
        mix_byte(dst[2 * x], src.byte(2 * x), scaled(coverage[x], level));
        if (x % 2 != 0)
            continue;
        const int32_t mean = x + 1 < pixels ? (coverage[x] + coverage[x + 1]) >> 1 : coverage[x];
        mix_byte(dst[2 * x + 1], src.byte(2 * x + 1), scaled(mean, level));
        mix_byte(dst[2 * x + 3], src.byte(2 * x + 3), scaled(mean, level));
    }
}

template <class Source>
void mix_pwrw(uint8_t* dst, Source src, const uint16_t* coverage, int32_t pixels, int32_t level) {
    for (int32_t x = 0; x < pixels; ++x)
        mix_word(dst + 2 * x, src.word(x), scaled(coverage[x], level));
}

template <void (*mix)(uint8_t*, Line, const uint16_t*, int32_t, int32_t)>
void blend(uint8_t* dst, const uint8_t* src, const uint16_t* coverage, int32_t pixels) {
    mix(dst, {src}, coverage, pixels, kWeightFull);
}

template <void (*mix)(uint8_t*, Value, const uint16_t*, int32_t, int32_t)>
void paint(uint8_t* dst, uint32_t value, const uint16_t* coverage, int32_t pixels, int32_t level) {
    mix(dst, {value}, coverage, pixels, level);
}

void paint_a8(uint8_t* dst, uint32_t value, const uint16_t* coverage, int32_t pixels, int32_t level) {
    for (int32_t x = 0; x < pixels; ++x)
        mix_byte(dst[x], value, scaled(coverage[x], level));
}

void fade_bytes(uint8_t* dst, uint32_t value, int32_t bytes, int32_t level) {
    for (int32_t i = 0; i < bytes; ++i)
        mix_byte(dst[i], Value{value}.byte(i), level);
}

void fade_words(uint8_t* dst, uint32_t value, int32_t words, int32_t level) {
    for (int32_t i = 0; i < words; ++i)
        mix_word(dst + 2 * i, value, level);
}

}  // namespace

extern constexpr CoverKernels kCoverPlain = {
    .ramp = ramp,
    .ends = ends,
    .blend_rgbq = blend<mix_rgbq<Line>>,
    .blend_yuy2 = blend<mix_yuy2<Line>>,
    .blend_pwrw = blend<mix_pwrw<Line>>,
    .paint_rgbq = paint<mix_rgbq<Value>>,
    .paint_yuy2 = paint<mix_yuy2<Value>>,
    .paint_pwrw = paint<mix_pwrw<Value>>,
    .paint_a8 = paint_a8,
    .fade_bytes = fade_bytes,
    .fade_words = fade_words,
};

}  // namespace zepbmp
