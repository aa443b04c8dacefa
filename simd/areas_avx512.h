/// \file
/// 64-byte lanes for area sums: AVX-512 F, BW, VL and DQ.
///
/// What each operation means stands in simd/lanes.md. Include this only from files that are compiled for AVX-512;
/// everything here is local to the including file.
#pragma once

#include "simd/lanes_avx512.h"

namespace zepbmp {
namespace {

struct Areas512 : Lanes512 {
    static constexpr bool kLooksUp = true;

    static V even_bytes_of_two(V a, V b) {
        return bit_xor(_mm512_ternarylogic_epi32(words(0xff), a, shift_left_words<8>(b), 0xca), words(0x8080));
    }
    static V odd_bytes_of_two(V a, V b) {
        return bit_xor(_mm512_ternarylogic_epi32(words(0xff), shift_right<8>(a), b, 0xca), words(0x8080));
    }
    static V bytes_of_two(const void* a, const void* b) {
        const V order = _mm512_setr_epi32(0x00000000, 0x01010101, 0x02020202, 0x03030303, 0x04040404, 0x05050505,
                                          0x06060606, 0x07070707, 0x08080808, 0x09090909, 0x0a0a0a0a, 0x0b0b0b0b,
                                          0x0c0c0c0c, 0x0d0d0d0d, 0x0e0e0e0e, 0x0f0f0f0f);
        const V first = _mm512_shuffle_epi8(_mm512_broadcast_i32x4(quarter(a)), order);
        constexpr __mmask64 kOdd = 0xaaaaaaaaaaaaaaaa;
        const V both = _mm512_mask_shuffle_epi8(first, kOdd, _mm512_broadcast_i32x4(quarter(b)), order);
        return bit_xor(both, words(0x8080));
    }
    static V first_words_twice(V v) { return _mm512_permutexvar_epi16(load(kTwice), v); }
    static V last_words_twice(V v) { return _mm512_permutexvar_epi16(load(kTwice + 32), v); }
    static V odd_words_twice(V v) {
        return _mm512_shuffle_epi8(
            v, _mm512_broadcast_i32x4(_mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15)));
    }

    using TwoWeights = V;
    static TwoWeights two_weights(int high_a, int high_b, int low_a, int low_b) {
        return dwords(static_cast<uint32_t>(high_a | high_b << 8 | low_a << 16) | static_cast<uint32_t>(low_b) << 24);
    }
    static V weigh_two(V bytes, TwoWeights weights) { return _mm512_maddubs_epi16(weights, bytes); }

    template <int kDword>
    static V load_columns(const uint32_t* plane, const int32_t* base) {
        const __m256i low = _mm256_inserti128_si256(_mm256_castsi128_si256(quarter(plane + base[kDword])),
                                                    quarter(plane + base[4 + kDword]), 1);
        const __m256i high = _mm256_inserti128_si256(_mm256_castsi128_si256(quarter(plane + base[8 + kDword])),
                                                     quarter(plane + base[12 + kDword]), 1);
        return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
    }
    static __m128i quarter(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
    static V sums_of_quarters(V a, V b, V c, V d) {
        const V ab = add_dwords(_mm512_unpacklo_epi32(a, b), _mm512_unpackhi_epi32(a, b));
        const V cd = add_dwords(_mm512_unpacklo_epi32(c, d), _mm512_unpackhi_epi32(c, d));
        return add_dwords(_mm512_unpacklo_epi64(ab, cd), _mm512_unpackhi_epi64(ab, cd));
    }
    static constexpr int32_t kWindow = 32;
    static V look_up(const uint32_t* window, V index) {
        return _mm512_permutex2var_epi32(load(window), index, load(window + 16));
    }

    static V even_dwords(V a, V b) {
        const V even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
        return _mm512_permutex2var_epi32(a, even, b);
    }
    static V odd_dwords(V a, V b) {
        const V odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
        return _mm512_permutex2var_epi32(a, odd, b);
    }
    static V in_order(V v) { return v; }
    static V sums_of_neighbours(V a, V b) { return add_dwords(even_dwords(a, b), odd_dwords(a, b)); }
    static V words_to_bytes(V a, V b) {
        const V packed = _mm512_packus_epi16(a, b);
        return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), packed);
    }

    static V dwords_to_words(V a, V b) {
        const V packed = _mm512_packs_epi32(a, b);
        return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), packed);
    }
    static V dwords_to_bytes(V a, V b, V c, V d) {
        const V packed = _mm512_packus_epi16(_mm512_packs_epi32(a, b), _mm512_packs_epi32(c, d));
        return _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15),
                                        packed);
    }

    alignas(64) static constexpr uint16_t kTwice[64] = {0,  0,  1,  1,  2,  2,  3,  3,  4,  4,  5,  5,  6,  6,  7,  7,
                                                        8,  8,  9,  9,  10, 10, 11, 11, 12, 12, 13, 13, 14, 14, 15, 15,
                                                        16, 16, 17, 17, 18, 18, 19, 19, 20, 20, 21, 21, 22, 22, 23, 23,
                                                        24, 24, 25, 25, 26, 26, 27, 27, 28, 28, 29, 29, 30, 30, 31, 31};
};

}  // namespace
}  // namespace zepbmp
