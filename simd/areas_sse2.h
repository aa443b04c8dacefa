/// \file
/// 16-byte lanes for area sums: SSE2.
///
/// What each operation means stands in simd/lanes.md. Include this only from files that are compiled for SSE2;
/// everything here is local to the including file.
#pragma once

#include "simd/lanes_sse2.h"

namespace zepbmp {
namespace {

struct Areas128 : Lanes128 {
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
        const V both = _mm_unpacklo_epi8(load_dword(a), load_dword(b));
        return bit_xor(first_words_twice(both), words(0x8080));
    }
    static V first_words_twice(V v) { return _mm_unpacklo_epi16(v, v); }
    static V last_words_twice(V v) { return _mm_unpackhi_epi16(v, v); }
    static V odd_words_twice(V v) { return _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xf5), 0xf5); }

    struct TwoWeights {
        V first, second;
    };
    static TwoWeights two_weights(int high_a, int high_b, int low_a, int low_b) {
        return {dwords(static_cast<uint32_t>(high_a | low_a << 16)),
                dwords(static_cast<uint32_t>(high_b | low_b << 16))};
    }
    static V weigh_two(V bytes, TwoWeights weights) {
        const V first = shift_right_signed<8>(shift_left_words<8>(bytes)), second = shift_right_signed<8>(bytes);
        return add(mul_low(first, weights.first), mul_low(second, weights.second));
    }

    template <int kDword>
    static V load_columns(const uint32_t* plane, const int32_t* base) {
        return load(plane + base[kDword]);
    }
    static V sums_of_quarters(V a, V b, V c, V d) {
        const V ab = add_dwords(_mm_unpacklo_epi32(a, b), _mm_unpackhi_epi32(a, b));
        const V cd = add_dwords(_mm_unpacklo_epi32(c, d), _mm_unpackhi_epi32(c, d));
        return add_dwords(_mm_unpacklo_epi64(ab, cd), _mm_unpackhi_epi64(ab, cd));
    }

    static V even_dwords(V a, V b) {
        return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), 0x88));
    }
    static V odd_dwords(V a, V b) {
        return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), 0xdd));
    }
    static V in_order(V v) { return v; }
    static V sums_of_neighbours(V a, V b) { return add_dwords(even_dwords(a, b), odd_dwords(a, b)); }
    static V words_to_bytes(V a, V b) { return _mm_packus_epi16(a, b); }

    static V dwords_to_words(V a, V b) { return _mm_packs_epi32(a, b); }
    static V dwords_to_bytes(V a, V b, V c, V d) {
        return _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
    }
};

}  // namespace
}  // namespace zepbmp
