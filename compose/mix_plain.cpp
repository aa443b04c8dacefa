/// \file
/// The plain kernels: the meaning of composition. Every result is stored as its low 8 bits, nothing is clamped; weights
/// beyond full extrapolate. Sums fit 32 bits for every 16-bit weight.
#include "compose/compose_kernels.h"
#include "core/bitmap.h"

namespace zepbmp {
namespace {

/// (src2 * w + src1 * (full - w)) / full, toward zero.
template <int kFull>
uint8_t mix(int src1, int src2, int w) {
    return static_cast<uint8_t>((src2 * w + src1 * (kFull - w)) / kFull);
}

template <class Weight, int kFull>
void mix_rgbq(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1, ptrdiff_t src1_skip,
              const uint8_t* src2, ptrdiff_t src2_skip, const void* mask, ptrdiff_t mask_skip) {
    const auto* weights = static_cast<const uint8_t*>(mask);
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 0; x < count; ++x) {
            Weight w;
            __builtin_memcpy(&w, weights, sizeof w);
            for (int k = 0; k < 3; ++k)
                dst[k] = mix<kFull>(src1[k], src2[k], w);
            dst += 4, src1 += 4, src2 += 4, weights += sizeof w;
        }
        dst += dst_skip, src1 += src1_skip, src2 += src2_skip, weights += mask_skip;
    }
}

/// Chroma takes the weight of the pair's first pixel.
template <class Weight, int kFull>
void mix_yuy2(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1, ptrdiff_t src1_skip,
              const uint8_t* src2, ptrdiff_t src2_skip, const void* mask, ptrdiff_t mask_skip) {
    const auto* weights = static_cast<const uint8_t*>(mask);
    const ptrdiff_t odd = count % 2;  // a last odd pixel is passed over
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 0; x < count / 2; ++x) {
            Weight w[2];
            __builtin_memcpy(w, weights, sizeof w);
            dst[0] = mix<kFull>(src1[0], src2[0], w[0]);
            dst[1] = mix<kFull>(src1[1], src2[1], w[0]);
            dst[2] = mix<kFull>(src1[2], src2[2], w[1]);
            dst[3] = mix<kFull>(src1[3], src2[3], w[0]);
            dst += 4, src1 += 4, src2 += 4, weights += sizeof w;
        }
        dst += dst_skip + 2 * odd, src1 += src1_skip + 2 * odd, src2 += src2_skip + 2 * odd;
        weights += mask_skip + odd * static_cast<ptrdiff_t>(sizeof(Weight));
    }
}

/// (src1 * weight1 + src2 * level) >> 12, unsigned, for every byte.
void level_plain(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                 ptrdiff_t src1_skip, int32_t weight1, const uint8_t* src2, ptrdiff_t src2_skip, int32_t level) {
    const auto w1 = static_cast<uint32_t>(weight1), w2 = static_cast<uint32_t>(level);
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 0; x < count; ++x)
            *dst++ = static_cast<uint8_t>((*src1++ * w1 + *src2++ * w2) >> kWeightBits);
        dst += dst_skip, src1 += src1_skip, src2 += src2_skip;
    }
}

int load_weight(const uint8_t* p) {
    uint16_t w;
    __builtin_memcpy(&w, p, sizeof w);
    return w;
}

/// Byte k of a packed value.
int byte_of(uint32_t packed, int k) { return static_cast<int>(packed >> (8 * k) & 0xff); }

/// (src1 * w1 + src2 * w2 + colour * wc + half) >> bits; the weights add up to 1 << bits.
template <int kBits>
uint8_t mix_three(int src1, int w1, int src2, int w2, int colour, int wc) {
    return static_cast<uint8_t>((src1 * w1 + src2 * w2 + colour * wc + (1 << (kBits - 1))) >> kBits);
}

/// The colour's bytes 0 and 2 trade places here, and only here: bits 16..23 go to byte 0.
void color_rgbq_band_plain(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                           ptrdiff_t src1_skip, const uint8_t* src2, ptrdiff_t src2_skip, const uint16_t* mask1,
                           ptrdiff_t mask1_skip, const uint16_t* mask2, ptrdiff_t mask2_skip, uint32_t color) {
    const auto* m1 = reinterpret_cast<const uint8_t*>(mask1);
    const auto* m2 = reinterpret_cast<const uint8_t*>(mask2);
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 0; x < count; ++x) {
            const int a = load_weight(m1), b = load_weight(m2);
            for (int k = 0; k < 3; ++k)
                dst[k] = mix_three<kWeightBits>(src1[k], kWeightFull - b, src2[k], a, byte_of(color, 2 - k), b - a);
            dst += 4, src1 += 4, src2 += 4, m1 += 2, m2 += 2;
        }
        dst += dst_skip, src1 += src1_skip, src2 += src2_skip, m1 += mask1_skip, m2 += mask2_skip;
    }
}

/// A YUY2 colour argument: Y in bits 16..23, U 8..15, V 0..7.
struct YuvColor {
    int y, u, v;
    explicit YuvColor(uint32_t color) : y(byte_of(color, 2)), u(byte_of(color, 1)), v(byte_of(color, 0)) {}
};

/// Chroma takes the sum of the pair's weights, on twice the scale.
void color_yuy2_band_plain(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src1,
                           ptrdiff_t src1_skip, const uint8_t* src2, ptrdiff_t src2_skip, const uint16_t* mask1,
                           ptrdiff_t mask1_skip, const uint16_t* mask2, ptrdiff_t mask2_skip, uint32_t color) {
    const YuvColor c(color);
    const auto* m1 = reinterpret_cast<const uint8_t*>(mask1);
    const auto* m2 = reinterpret_cast<const uint8_t*>(mask2);
    const ptrdiff_t odd = count % 2;  // a last odd pixel is passed over
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 0; x < count / 2; ++x) {
            const int a0 = load_weight(m1), a1 = load_weight(m1 + 2), b0 = load_weight(m2), b1 = load_weight(m2 + 2);
            const int a = a0 + a1, b = b0 + b1;
            dst[0] = mix_three<kWeightBits>(src1[0], kWeightFull - b0, src2[0], a0, c.y, b0 - a0);
            dst[1] = mix_three<kWeightBits + 1>(src1[1], 2 * kWeightFull - b, src2[1], a, c.u, b - a);
            dst[2] = mix_three<kWeightBits>(src1[2], kWeightFull - b1, src2[2], a1, c.y, b1 - a1);
            dst[3] = mix_three<kWeightBits + 1>(src1[3], 2 * kWeightFull - b, src2[3], a, c.v, b - a);
            dst += 4, src1 += 4, src2 += 4, m1 += 4, m2 += 4;
        }
        dst += dst_skip + 2 * odd, src1 += src1_skip + 2 * odd, src2 += src2_skip + 2 * odd;
        m1 += mask1_skip + 2 * odd, m2 += mask2_skip + 2 * odd;
    }
}

/// (src * w + colour * (full - w) + half) / full, toward zero: full = 2^bits. The weight belongs to the source.
template <int kBits>
uint8_t mix_color_rounded(int src, int colour, int w) {
    constexpr int kFull = 1 << kBits;
    return static_cast<uint8_t>((src * w + colour * (kFull - w) + kFull / 2) / kFull);
}

void color_yuy2_plain(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src,
                      ptrdiff_t src_skip, const uint16_t* mask, ptrdiff_t mask_skip, uint32_t color) {
    const YuvColor c(color);
    const auto* m = reinterpret_cast<const uint8_t*>(mask);
    const ptrdiff_t odd = count % 2;  // a last odd pixel is passed over
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 0; x < count / 2; ++x) {
            const int w0 = load_weight(m), w1 = load_weight(m + 2);
            dst[0] = mix_color_rounded<kWeightBits>(src[0], c.y, w0);
            dst[1] = mix_color_rounded<kWeightBits + 1>(src[1], c.u, w0 + w1);
            dst[2] = mix_color_rounded<kWeightBits>(src[2], c.y, w1);
            dst[3] = mix_color_rounded<kWeightBits + 1>(src[3], c.v, w0 + w1);
            dst += 4, src += 4, m += 4;
        }
        dst += dst_skip + 2 * odd, src += src_skip + 2 * odd, m += mask_skip + 2 * odd;
    }
}

}  // namespace

/// Toward zero and without a rounding term, unlike the band; byte k of the pixel takes bits 8k..8k+7.
void color_rgbq_plain(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src,
                      ptrdiff_t src_skip, const uint16_t* mask, ptrdiff_t mask_skip, uint32_t color) {
    const auto* m = reinterpret_cast<const uint8_t*>(mask);
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 0; x < count; ++x) {
            const int w = load_weight(m);
            for (int k = 0; k < 3; ++k)
                dst[k] = mix<kWeightFull>(byte_of(color, k), src[k], w);
            dst += 4, src += 4, m += 2;
        }
        dst += dst_skip, src += src_skip, m += mask_skip;
    }
}

void color_rgbq(int32_t count, int32_t lines, uint8_t* dst, ptrdiff_t dst_skip, const uint8_t* src, ptrdiff_t src_skip,
                const uint16_t* mask, ptrdiff_t mask_skip, uint32_t color) {
    color_rgbq_form(count, lines, dst, dst_skip, src, src_skip, mask, mask_skip, color);
}

const ComposeSlots kComposePlain = {
    .rgbq_w16 = mix_rgbq<uint16_t, kWeightFull>,
    .rgbq_a8 = mix_rgbq<uint8_t, kMaskFull>,
    .yuy2_w16 = mix_yuy2<uint16_t, kWeightFull>,
    .yuy2_w16_aligned = mix_yuy2<uint16_t, kWeightFull>,
    .yuy2_a8 = mix_yuy2<uint8_t, kMaskFull>,
    .yuy2_a8_aligned = mix_yuy2<uint8_t, kMaskFull>,
    .level = level_plain,
    .level_aligned = level_plain,
    .color_rgbq_band = color_rgbq_band_plain,
    .color_yuy2_band = color_yuy2_band_plain,
    .color_rgbq = color_rgbq,
    .color_yuy2 = color_yuy2_plain,
};

}  // namespace zepbmp
