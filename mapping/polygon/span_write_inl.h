/// \file
/// Third pass of a vector span kernel: a block's pixels go into the destination.
#pragma once

#include "core/pixels.h"
#include "mapping/polygon/span_block_inl.h"

namespace zepbmp {
namespace {

template <int kBytes>
struct WritePixels {
    static constexpr int kAlign = 1, kPixelBytes = kBytes;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        uint8_t* const at = span.line + ptrdiff_t{block.first} * kBytes;
        __builtin_memcpy(at, block.out, static_cast<size_t>(block.count) * kBytes);
    }
};

/// The chroma of a last pixel that begins its pair belongs to the span, that of a first pixel that ends it does not.
struct WritePairs {
    static constexpr int kAlign = 2, kPixelBytes = 2;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 2;
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
    static constexpr int kAlign = 1, kPixelBytes = 4;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 4;
        for (int i = 0; i < block.count; ++i)
            merge(at + 4 * i, load_dword(block.out + 4 * i), block.drawn[i]);
    }
};

/// A pair's chroma goes with its first pixel.
struct MergePairs {
    static constexpr int kAlign = 2, kPixelBytes = 2;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        constexpr uint32_t kSecondLuma = 0x00ff0000;
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 2;
        for (int i = 0; i < block.count; i += 2) {
            const uint32_t second = i + 1 < block.count ? block.drawn[i + 1] : 0;
            merge(at + 2 * i, load_dword(block.out + 2 * i), (block.drawn[i] & ~kSecondLuma) | (second & kSecondLuma));
        }
    }
};

/// Bytes 0 to 2: (d * (255 - strength) + color * strength) / 255.
struct TintPixels {
    static constexpr int kAlign = 1, kPixelBytes = 4;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        alignas(64) uint8_t pixels[kSpanBlock * 4];
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
    static constexpr int kAlign = 2, kPixelBytes = 2;

    template <class T>
    static void write(const SpanTexture&, const Geometry&, const Span& span, Block& block) {
        alignas(64) uint8_t pairs[kSpanBlock * 2 + 4];
        uint8_t* const at = span.line + ptrdiff_t{block.first} * 2;
        const size_t bytes = static_cast<size_t>(block.count + 1) / 2 * 4;
        __builtin_memcpy(pairs, at, bytes);
        uint8_t outside[4];  // what the span leaves of its first and its last pair
        const bool keeps_first = block.first < span.first, keeps_last = block.count % 2 != 0;
        __builtin_memcpy(outside, pairs, 2);
        outside[2] = pairs[3];
        outside[3] = pairs[bytes - 2];
        alignas(64) uint32_t luma[kSpanBlock / 2], chroma[kSpanBlock / 2];
        for (int i = 0; i < block.count; i += T::kPixels) {
            const auto two = T::load(block.out + 4 * i);
            T::store_even_dwords(chroma + i / 2, T::bit_or(two, T::template shift_left_dwords<16>(two)));
            T::store_even_dwords(luma + i / 2, T::bit_or(two, T::template shift_right_qwords<16>(two)));
        }
        const auto low_bytes = T::words(0xff);
        const auto color = T::dwords(yuy2_pair(span.color));
        const auto luma_color = T::bit_and(color, low_bytes), chroma_color = T::template shift_right<8>(color);
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

}  // namespace
}  // namespace zepbmp
