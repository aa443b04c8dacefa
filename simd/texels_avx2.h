/// \file
/// 32-byte lanes for texture sampling: AVX2.
///
/// What each operation means stands in simd/lanes.md. Include this only from files that are compiled for AVX2;
/// everything here is local to the including file.
#pragma once

#include <cstddef>

#include "simd/lanes_avx2.h"

namespace zepbmp {
namespace {

struct Texels256 : Lanes256 {
    using Floats = Floats256;
    static constexpr bool kShuffles = true;
    static constexpr int kPixels = 8;

    static V counting_from(int32_t first) {
        return _mm256_add_epi32(_mm256_set1_epi32(first), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
    }
    static V shift_left_dwords_by(V v, int count) { return _mm256_sll_epi32(v, _mm_cvtsi32_si128(count)); }
    static V select_bits(V mask, V a, V b) {
        return _mm256_or_si256(_mm256_and_si256(mask, a), _mm256_andnot_si256(mask, b));
    }
    static V positive_dwords(V v) { return _mm256_max_epi32(v, _mm256_setzero_si256()); }
    static V multiply_dwords(V a, V b) { return _mm256_mullo_epi32(a, b); }
    static V min_signed_words(V a, V b) { return _mm256_min_epi16(a, b); }
    static V max_signed_words(V a, V b) { return _mm256_max_epi16(a, b); }
    static V sub_to_zero_words(V a, V b) { return _mm256_subs_epu16(a, b); }
    static V mul_high_unsigned(V a, V b) { return _mm256_mulhi_epu16(a, b); }
    static V repeat(const int16_t* p) { return each(half(p)); }
    template <int kDword>
    static V spread_low(V v) {
        return _mm256_shuffle_epi8(v, words_at(4 * kDword));
    }
    template <int kDword>
    static V spread_high(V v) {
        return _mm256_shuffle_epi8(v, words_at(4 * kDword + 2));
    }

    template <int kDword>
    static V load_rows(const uint8_t* base, const int32_t* offset, ptrdiff_t pitch) {
        const uint8_t *const p = base + offset[kDword], *const q = base + offset[4 + kDword];
        return joined(two(p, p + pitch), two(q, q + pitch));
    }
    template <int kDword>
    static V load_windows(const uint8_t* base, const int32_t* offset) {
        return joined(half(base + offset[kDword]), half(base + offset[4 + kDword]));
    }
    template <int kDword>
    static V load_half_windows(const uint8_t* base, const int32_t* offset) {
        return joined(word(base + offset[kDword]), word(base + offset[4 + kDword]));
    }
    template <int kDword>
    static V bilinear_rgbq(V rows, V weights) {
        const V order = each(_mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
        return averaged<kDword>(_mm256_shuffle_epi8(rows, order), weights);
    }
    template <int kDword>
    static V bilinear_yuy2(V rows, V weights, V twice_texel) {
        // Luma of texel t is byte 2t, the chroma of its pair are bytes 1 and 3 behind 2t & 4; the lower line's lie 8
        // further on. The right one's are those of texel t + 1.
        const V steps = each(_mm_setr_epi8(0, 2, 0, 2, 0, 2, 0, 2, 0, 0, 0, 0, 0, 2, 0, 2));
        const V moving = each(_mm_setr_epi8(14, 14, 14, 14, 4, 4, 4, 4, 0, 0, 0, 0, 4, 4, 4, 4));
        const V lines = each(_mm_setr_epi8(0, 0, 8, 8, 1, 1, 9, 9, 0, 0, 0, 0, 3, 3, 11, 11));
        const V spread = _mm256_shuffle_epi8(twice_texel, _mm256_set1_epi8(4 * kDword));
        const V order = _mm256_or_si256(_mm256_and_si256(_mm256_add_epi8(spread, steps), moving), lines);
        return averaged<kDword>(_mm256_shuffle_epi8(rows, order), weights);
    }
    static V weigh_low(V a, V b, V pairs) { return weighted(_mm256_unpacklo_epi8(a, b), pairs); }
    static V weigh_high(V a, V b, V pairs) { return weighted(_mm256_unpackhi_epi8(a, b), pairs); }

    static V arrange_rgbq(V v) {
        return _mm256_shuffle_epi8(v, each(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15)));
    }
    static V arrange_yuy2(V v) {
        return _mm256_shuffle_epi8(v, each(_mm_setr_epi8(0, 1, 4, 5, 2, 3, 10, 11, 8, 9, 12, 13, 6, 7, 14, 15)));
    }
    static V third_dword_first(V v) {
        return _mm256_shuffle_epi8(v,
                                   each(_mm_setr_epi8(8, 9, 10, 11, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1)));
    }
    static V pack(V a, V b, V c, V d) {
        return _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d));
    }
    static void store_low_words(void* p, V v) {
        const V words =
            _mm256_shuffle_epi8(v, each(_mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1)));
        _mm_storeu_si128(static_cast<__m128i*>(p), _mm256_castsi256_si128(_mm256_permute4x64_epi64(words, 0x08)));
    }
    static void store_even_dwords(void* p, V v) {
        const V even = _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6));
        _mm_storeu_si128(static_cast<__m128i*>(p), _mm256_castsi256_si128(even));
    }
    template <int kShift>
    static V shift_right_qwords(V v) {
        return _mm256_srli_epi64(v, kShift);
    }

private:
    /// `taps`: four bytes of each channel, left and right of the upper line, left and right of the lower one.
    template <int kDword>
    static V averaged(V taps, V weights) {
        const V minus_columns =  // so that 128 fits into a signed byte
            _mm256_shuffle_epi8(_mm256_sub_epi8(dwords(0), weights), words_at(4 * kDword));
        constexpr uint32_t kZeroes = 0x80008000, kByte = 4 * kDword + 2;
        constexpr int kTotalBits = 14;  // two weights of 128 in all, multiplied
        const V lines = _mm256_shuffle_epi8(weights, dwords(kZeroes | (kByte + 1) << 16 | kByte));
        const V minus_sum = _mm256_madd_epi16(_mm256_maddubs_epi16(taps, minus_columns), lines);
        return _mm256_srli_epi32(_mm256_sub_epi32(dwords(1 << (kTotalBits - 1)), minus_sum), kTotalBits);
    }
    static V words_at(int byte) { return _mm256_set1_epi16(static_cast<short>((byte + 1) << 8 | byte)); }
    static V each(__m128i v) { return _mm256_broadcastsi128_si256(v); }
    static __m128i half(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
    static __m128i word(const uint8_t* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
    static __m128i two(const uint8_t* p, const uint8_t* q) { return _mm_unpacklo_epi64(word(p), word(q)); }
    static V joined(__m128i a, __m128i b) { return _mm256_inserti128_si256(_mm256_castsi128_si256(a), b, 1); }
    static V weighted(V bytes, V pairs) {
        return _mm256_maddubs_epi16(pairs, _mm256_xor_si256(bytes, _mm256_set1_epi8(-128)));
    }
};

}  // namespace
}  // namespace zepbmp
