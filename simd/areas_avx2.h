/// \file
/// 32-byte lanes for area sums: AVX2.
///
/// What each operation means stands in simd/lanes.md. Include this only from files that are compiled for AVX2;
/// everything here is local to the including file.
#pragma once

#include "simd/lanes_avx2.h"

namespace zepbmp {
namespace {

struct Areas256 : Lanes256 {
    static constexpr bool kLooksUp = false;
    static constexpr int32_t kWindow = 0;

    static V even_bytes_of_two(V a, V b) {
        const V both = bit_or(bit_and(a, words(0xff)), shift_left_words<8>(b));
        return bit_xor(both, words(0x8080));
    }
    static V odd_bytes_of_two(V a, V b) {
        const V both = bit_or(shift_right<8>(a), bit_and(b, words(0xff00)));
        return bit_xor(both, words(0x8080));
    }
    static V bytes_of_two(const void* a, const void* b) {
        const V order_a = _mm256_setr_epi8(0, -1, 0, -1, 1, -1, 1, -1, 2, -1, 2, -1, 3, -1, 3, -1,  //
                                           4, -1, 4, -1, 5, -1, 5, -1, 6, -1, 6, -1, 7, -1, 7, -1);
        const V order_b = _mm256_setr_epi8(-1, 0, -1, 0, -1, 1, -1, 1, -1, 2, -1, 2, -1, 3, -1, 3,  //
                                           -1, 4, -1, 4, -1, 5, -1, 5, -1, 6, -1, 6, -1, 7, -1, 7);
        const V both = bit_or(_mm256_shuffle_epi8(eight_bytes_twice(a), order_a),
                              _mm256_shuffle_epi8(eight_bytes_twice(b), order_b));
        return bit_xor(both, words(0x8080));
    }
    static V eight_bytes_twice(const void* p) {
        return _mm256_broadcastq_epi64(_mm_loadl_epi64(static_cast<const __m128i*>(p)));
    }
    static V first_words_twice(V v) {
        const V halves = _mm256_permute4x64_epi64(v, 0x10);
        return _mm256_unpacklo_epi16(halves, halves);
    }
    static V last_words_twice(V v) {
        const V halves = _mm256_permute4x64_epi64(v, 0x32);
        return _mm256_unpacklo_epi16(halves, halves);
    }
    static V odd_words_twice(V v) {
        return _mm256_shuffle_epi8(
            v, _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15)));
    }

    using TwoWeights = V;
    static TwoWeights two_weights(int high_a, int high_b, int low_a, int low_b) {
        return dwords(static_cast<uint32_t>(high_a | high_b << 8 | low_a << 16) | static_cast<uint32_t>(low_b) << 24);
    }
    static V weigh_two(V bytes, TwoWeights weights) { return _mm256_maddubs_epi16(weights, bytes); }

    template <int kDword>
    static V load_columns(const uint32_t* plane, const int32_t* base) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(quarter(plane + base[kDword])),
                                       quarter(plane + base[4 + kDword]), 1);
    }
    static __m128i quarter(const uint32_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static V sums_of_quarters(V a, V b, V c, V d) {
        const V ab = add_dwords(_mm256_unpacklo_epi32(a, b), _mm256_unpackhi_epi32(a, b));
        const V cd = add_dwords(_mm256_unpacklo_epi32(c, d), _mm256_unpackhi_epi32(c, d));
        return add_dwords(_mm256_unpacklo_epi64(ab, cd), _mm256_unpackhi_epi64(ab, cd));
    }

    static V even_dwords(V a, V b) {
        return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), 0x88));
    }
    static V odd_dwords(V a, V b) {
        return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), 0xdd));
    }
    static V in_order(V v) { return _mm256_permute4x64_epi64(v, 0xd8); }
    static V sums_of_neighbours(V a, V b) { return in_order(add_dwords(even_dwords(a, b), odd_dwords(a, b))); }
    static V words_to_bytes(V a, V b) { return in_order(_mm256_packus_epi16(a, b)); }

    static V dwords_to_words(V a, V b) { return _mm256_permute4x64_epi64(_mm256_packs_epi32(a, b), 0xd8); }
    static V dwords_to_bytes(V a, V b, V c, V d) {
        const V packed = _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d));
        return _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
    }
};

}  // namespace
}  // namespace zepbmp
