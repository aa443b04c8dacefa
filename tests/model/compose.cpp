// Composition: the arithmetic of one byte, then the frames.
//
// SPDX-License-Identifier: MIT
#include "arithmetic.h"
#include "model.h"

namespace model {

namespace {

uint8_t low_8_bits(int32_t value) { return static_cast<uint8_t>(static_cast<uint32_t>(value) & 0xff); }

uint8_t saturate(int32_t value) {
    if (value < 0) {
        return 0;
    }
    if (value > 255) {
        return 255;
    }
    return static_cast<uint8_t>(value);
}

// A 16-bit lane: weights are signed there, their sums and differences wrap.
int16_t lane(int32_t value) {
    return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint32_t>(value) & 0xffff));
}

// High 16 bits of the signed product of a prescaled byte and a weight: floor(scale * p * weight / 65536).
int32_t term(int32_t scale, uint8_t p, int16_t weight) { return (scale * p * weight) >> 16; }

}  // namespace

// ---------------------------------------------------------------- two sources

uint8_t mix_w16_reference(uint8_t p1, uint8_t p2, uint16_t w) { return low_8_bits((p2 * w + p1 * (4096 - w)) / 4096); }

uint8_t mix_w16_vector(uint8_t p1, uint8_t p2, uint16_t w) {
    return saturate(term(16, p2, lane(w)) + term(16, p1, lane(4096 - w)));
}

uint8_t mix_a8_reference(uint8_t p1, uint8_t p2, uint8_t w) { return low_8_bits((p2 * w + p1 * (128 - w)) / 128); }

uint8_t mix_a8_vector(uint8_t p1, uint8_t p2, uint8_t w) {
    const uint8_t complement = low_8_bits(128 - w);
    const uint16_t product2 = static_cast<uint16_t>(p2 * w);
    const uint16_t product1 = static_cast<uint16_t>(p1 * complement);
    const uint16_t sum = static_cast<uint16_t>(product2 + product1);
    return saturate(sum >> 7);
}

uint8_t mix_level_reference(uint8_t p1, int32_t weight1, uint8_t p2, int32_t weight2) {
    const uint32_t sum = p1 * static_cast<uint32_t>(weight1) + p2 * static_cast<uint32_t>(weight2);
    return static_cast<uint8_t>((sum >> 12) & 0xff);
}

uint8_t mix_level_vector(uint8_t p1, int32_t weight1, uint8_t p2, int32_t weight2) {
    return saturate((term(64, p1, lane(weight1)) + term(64, p2, lane(weight2)) + 2) >> 2);
}

// ---------------------------------------------------------------- colour band

uint8_t band_rgbq_reference(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a, uint16_t b) {
    return low_8_bits((p2 * a + p1 * (4096 - b) + colour * (b - a) + 2048) >> 12);
}

uint8_t band_rgbq_vector(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a, uint16_t b) {
    return saturate(term(16, p2, lane(a)) + term(16, p1, lane(4096 - b)) + term(16, colour, lane(b - a)));
}

uint8_t band_luma_reference(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a, uint16_t b) {
    return low_8_bits(((4096 - b) * p1 + (b - a) * colour + a * p2 + 2048) >> 12);
}

uint8_t band_luma_vector(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a, uint16_t b) {
    const int32_t sum = term(32, p1, lane(4096 - b)) + term(32, colour, lane(b - a)) + term(32, p2, lane(a));
    return saturate((sum + 1) >> 1);
}

uint8_t band_chroma_reference(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a0, uint16_t a1, uint16_t b0,
                              uint16_t b1) {
    const int32_t a = a0 + a1;
    const int32_t b = b0 + b1;
    return low_8_bits(((8192 - b) * p1 + a * p2 + (b - a) * colour + 4096) >> 13);
}

uint8_t band_chroma_vector(uint8_t p1, uint8_t p2, uint8_t colour, uint16_t a0, uint16_t a1, uint16_t b0, uint16_t b1) {
    const int16_t a = lane(a0 + a1);
    const int16_t b = lane(b0 + b1);
    const int32_t sum = term(16, p1, lane(8192 - b)) + term(16, p2, a) + term(16, colour, lane(b - a));
    return saturate((sum + 1) >> 1);
}

// ---------------------------------------------------------------- one source over a colour

uint8_t colour_rgbq(uint8_t p, uint8_t colour, uint16_t w) { return low_8_bits((p * w + (4096 - w) * colour) / 4096); }

uint8_t colour_luma_reference(uint8_t p, uint8_t colour, uint16_t w) {
    return low_8_bits((p * w + (4096 - w) * colour + 2048) / 4096);
}

uint8_t colour_luma_vector(uint8_t p, uint8_t colour, uint16_t w) {
    return saturate((term(32, p, lane(w)) + term(32, colour, lane(4096 - w)) + 1) >> 1);
}

uint8_t colour_chroma_reference(uint8_t p, uint8_t colour, uint16_t w0, uint16_t w1) {
    const int32_t w = w0 + w1;
    return low_8_bits(((8192 - w) * colour + p * w + 4096) / 8192);
}

uint8_t colour_chroma_vector(uint8_t p, uint8_t colour, uint16_t w0, uint16_t w1) {
    const int16_t w = lane(w0 + w1);
    return saturate((term(16, colour, lane(8192 - w)) + term(16, p, w) + 1) >> 1);
}

// ---------------------------------------------------------------- frames

namespace {

int32_t line_count(const Bitmap* dest, uint32_t flags) {
    const int32_t odd = flags & BMP_FIELD_ODD;
    const int32_t step = (flags & BMP_FIELD) ? 2 : 1;
    const int32_t lines = wrap_add(wrap_sub(dest->height, odd), step - 1);
    return (flags & BMP_FIELD) ? lines >> 1 : lines;
}

// First pixel of the k-th processed line.
uint8_t* line_of(const Bitmap* bitmap, int32_t k, uint32_t flags) {
    const int32_t odd = flags & BMP_FIELD_ODD;
    const int32_t step = (flags & BMP_FIELD) ? 2 : 1;
    return model::bmp_pointer(bitmap, 0, odd + k * step);
}

bool is_aligned(const Bitmap* bitmap) {
    return reinterpret_cast<uintptr_t>(bitmap->pixels) % 16 == 0 && bitmap->pitch % 16 == 0;
}

int32_t round_up(int32_t count, int32_t group) { return wrap_add(count, group - 1) & ~(group - 1); }

uint8_t mix_w16(uint8_t p1, uint8_t p2, uint16_t w, int cpu_level) {
    return cpu_level == 0 ? mix_w16_reference(p1, p2, w) : mix_w16_vector(p1, p2, w);
}

uint8_t mix_a8(uint8_t p1, uint8_t p2, uint8_t w, int cpu_level) {
    return cpu_level == 0 ? mix_a8_reference(p1, p2, w) : mix_a8_vector(p1, p2, w);
}

void compose_level_line(uint8_t* d, const uint8_t* s1, const uint8_t* s2, int32_t level, int32_t bytes, int cpu_level) {
    const int32_t weight1 = wrap_sub(4096, level);
    for (int32_t i = 0; i < bytes; ++i) {
        d[i] = cpu_level == 0 ? mix_level_reference(s1[i], weight1, s2[i], level)
                              : mix_level_vector(s1[i], weight1, s2[i], level);
    }
}

void compose_rgbq_w16_line(uint8_t* d, const uint8_t* s1, const uint8_t* s2, const uint8_t* mask, int32_t pixels,
                           int cpu_level) {
    const int channels = cpu_level == 0 ? 3 : 4;
    for (int32_t x = 0; x < pixels; ++x) {
        const uint16_t w = load_u16(mask + 2 * x);
        for (int c = 0; c < channels; ++c) {
            d[4 * x + c] = mix_w16(s1[4 * x + c], s2[4 * x + c], w, cpu_level);
        }
    }
}

void compose_rgbq_a8_line(uint8_t* d, const uint8_t* s1, const uint8_t* s2, const uint8_t* mask, int32_t pixels,
                          int cpu_level) {
    const int channels = cpu_level == 0 ? 3 : 4;
    for (int32_t x = 0; x < pixels; ++x) {
        const uint8_t w = mask[x];
        for (int c = 0; c < channels; ++c) {
            d[4 * x + c] = mix_a8(s1[4 * x + c], s2[4 * x + c], w, cpu_level);
        }
    }
}

void compose_yuy2_w16_line(uint8_t* d, const uint8_t* s1, const uint8_t* s2, const uint8_t* mask, int32_t pixels,
                           int cpu_level) {
    for (int32_t x = 0; x + 2 <= pixels; x += 2) {
        const uint16_t w0 = load_u16(mask + 2 * x);
        const uint16_t w1 = load_u16(mask + 2 * x + 2);
        const int32_t pair = 2 * x;
        d[pair + 0] = mix_w16(s1[pair + 0], s2[pair + 0], w0, cpu_level);
        d[pair + 1] = mix_w16(s1[pair + 1], s2[pair + 1], w0, cpu_level);
        d[pair + 2] = mix_w16(s1[pair + 2], s2[pair + 2], w1, cpu_level);
        d[pair + 3] = mix_w16(s1[pair + 3], s2[pair + 3], w0, cpu_level);
    }
}

void compose_yuy2_a8_line(uint8_t* d, const uint8_t* s1, const uint8_t* s2, const uint8_t* mask, int32_t pixels,
                          int cpu_level) {
    for (int32_t x = 0; x + 2 <= pixels; x += 2) {
        const uint8_t w0 = mask[x];
        const uint8_t w1 = mask[x + 1];
        const int32_t pair = 2 * x;
        d[pair + 0] = mix_a8(s1[pair + 0], s2[pair + 0], w0, cpu_level);
        d[pair + 1] = mix_a8(s1[pair + 1], s2[pair + 1], w0, cpu_level);
        d[pair + 2] = mix_a8(s1[pair + 2], s2[pair + 2], w1, cpu_level);
        d[pair + 3] = mix_a8(s1[pair + 3], s2[pair + 3], w0, cpu_level);
    }
}

uint8_t colour_byte(uint32_t color, int index) { return static_cast<uint8_t>((color >> (8 * index)) & 0xff); }

void band_rgbq_line(uint8_t* d, const uint8_t* s1, const uint8_t* s2, const uint8_t* mask1, const uint8_t* mask2,
                    uint32_t color, int32_t pixels, int cpu_level) {
    for (int32_t x = 0; x < pixels; ++x) {
        const uint16_t a = load_u16(mask1 + 2 * x);
        const uint16_t b = load_u16(mask2 + 2 * x);
        if (cpu_level == 0) {
            for (int c = 0; c < 3; ++c) {
                d[4 * x + c] = band_rgbq_reference(s1[4 * x + c], s2[4 * x + c], colour_byte(color, 2 - c), a, b);
            }
        } else {
            for (int c = 0; c < 4; ++c) {
                d[4 * x + c] = band_rgbq_vector(s1[4 * x + c], s2[4 * x + c], colour_byte(color, c), a, b);
            }
        }
    }
}

void band_yuy2_line(uint8_t* d, const uint8_t* s1, const uint8_t* s2, const uint8_t* mask1, const uint8_t* mask2,
                    uint32_t color, int32_t pixels, int cpu_level) {
    const auto luma = cpu_level == 0 ? band_luma_reference : band_luma_vector;
    const auto chroma = cpu_level == 0 ? band_chroma_reference : band_chroma_vector;
    const uint8_t y = colour_byte(color, 2);
    const uint8_t u = colour_byte(color, 1);
    const uint8_t v = colour_byte(color, 0);
    for (int32_t x = 0; x + 2 <= pixels; x += 2) {
        const uint16_t a0 = load_u16(mask1 + 2 * x);
        const uint16_t a1 = load_u16(mask1 + 2 * x + 2);
        const uint16_t b0 = load_u16(mask2 + 2 * x);
        const uint16_t b1 = load_u16(mask2 + 2 * x + 2);
        const int32_t pair = 2 * x;
        d[pair + 0] = luma(s1[pair + 0], s2[pair + 0], y, a0, b0);
        d[pair + 1] = chroma(s1[pair + 1], s2[pair + 1], u, a0, a1, b0, b1);
        d[pair + 2] = luma(s1[pair + 2], s2[pair + 2], y, a1, b1);
        d[pair + 3] = chroma(s1[pair + 3], s2[pair + 3], v, a0, a1, b0, b1);
    }
}

void colour_rgbq_line(uint8_t* d, const uint8_t* s, const uint8_t* mask, uint32_t color, int32_t pixels) {
    for (int32_t x = 0; x < pixels; ++x) {
        const uint16_t w = load_u16(mask + 2 * x);
        for (int c = 0; c < 3; ++c) {
            d[4 * x + c] = colour_rgbq(s[4 * x + c], colour_byte(color, c), w);
        }
    }
}

void colour_yuy2_line(uint8_t* d, const uint8_t* s, const uint8_t* mask, uint32_t color, int32_t pixels,
                      int cpu_level) {
    const auto luma = cpu_level == 0 ? colour_luma_reference : colour_luma_vector;
    const auto chroma = cpu_level == 0 ? colour_chroma_reference : colour_chroma_vector;
    const uint8_t y = colour_byte(color, 2);
    const uint8_t u = colour_byte(color, 1);
    const uint8_t v = colour_byte(color, 0);
    for (int32_t x = 0; x + 2 <= pixels; x += 2) {
        const uint16_t w0 = load_u16(mask + 2 * x);
        const uint16_t w1 = load_u16(mask + 2 * x + 2);
        const int32_t pair = 2 * x;
        d[pair + 0] = luma(s[pair + 0], y, w0);
        d[pair + 1] = chroma(s[pair + 1], u, w0, w1);
        d[pair + 2] = luma(s[pair + 2], y, w1);
        d[pair + 3] = chroma(s[pair + 3], v, w0, w1);
    }
}

}  // namespace

int32_t bmp_compose(Bitmap* dest, const Bitmap* src1, const Bitmap* src2, const void* mask, uint32_t flags,
                    int cpu_level) {
    const int32_t lines = line_count(dest, flags);
    const bool images_aligned = is_aligned(dest) && is_aligned(src1) && is_aligned(src2);

    if (flags & BMP_COMPOSE_LEVEL) {
        const int32_t level = static_cast<int32_t>(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(mask)));
        const int32_t bytes = images_aligned ? dest->pitch : round_up(dest->pitch, 4);
        for (int32_t k = 0; k < lines; ++k) {
            compose_level_line(line_of(dest, k, flags), line_of(src1, k, flags), line_of(src2, k, flags), level, bytes,
                               cpu_level);
        }
        return 0;
    }
    if (dest->format != BMP_FMT_RGBQ && dest->format != BMP_FMT_YUY2) {
        return 0;
    }

    const Bitmap* weights = static_cast<const Bitmap*>(mask);
    const bool byte_weights = weights->format == BMP_FMT_A8;
    for (int32_t k = 0; k < lines; ++k) {
        uint8_t* d = line_of(dest, k, flags);
        const uint8_t* s1 = line_of(src1, k, flags);
        const uint8_t* s2 = line_of(src2, k, flags);
        const uint8_t* w = line_of(weights, k, flags);
        if (dest->format == BMP_FMT_RGBQ) {
            if (byte_weights) {
                compose_rgbq_a8_line(d, s1, s2, w, round_up(dest->width, 2), cpu_level);
            } else {
                compose_rgbq_w16_line(d, s1, s2, w, dest->width, cpu_level);
            }
        } else {
            if (byte_weights) {
                const int32_t group = images_aligned ? 8 : 4;
                compose_yuy2_a8_line(d, s1, s2, w, round_up(dest->width, group), cpu_level);
            } else {
                const int32_t group = images_aligned && is_aligned(weights) ? 8 : 4;
                compose_yuy2_w16_line(d, s1, s2, w, round_up(dest->width, group), cpu_level);
            }
        }
    }
    return 0;
}

int32_t bmp_compose_color(Bitmap* dest, const Bitmap* src1, const Bitmap* src2, const Bitmap* mask1,
                          const Bitmap* mask2, uint32_t color, uint32_t flags, int cpu_level) {
    if (dest->format != BMP_FMT_RGBQ && dest->format != BMP_FMT_YUY2) {
        return 0;
    }
    const bool rgbq = dest->format == BMP_FMT_RGBQ;
    const int32_t lines = line_count(dest, flags);
    for (int32_t k = 0; k < lines; ++k) {
        uint8_t* d = line_of(dest, k, flags);
        const uint8_t* s1 = line_of(src1, k, flags);
        const uint8_t* w1 = line_of(mask1, k, flags);
        if (mask2 != nullptr) {
            const uint8_t* s2 = line_of(src2, k, flags);
            const uint8_t* w2 = line_of(mask2, k, flags);
            if (rgbq) {
                band_rgbq_line(d, s1, s2, w1, w2, color, dest->width, cpu_level);
            } else {
                band_yuy2_line(d, s1, s2, w1, w2, color, dest->width, cpu_level);
            }
        } else if (rgbq) {
            colour_rgbq_line(d, s1, w1, color, dest->width);
        } else {
            colour_yuy2_line(d, s1, w1, color, dest->width, cpu_level);
        }
    }
    return 0;
}

}  // namespace model
