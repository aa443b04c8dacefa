/// \file
/// 16-byte lanes for texture sampling: SSE2.
///
/// What each operation means stands in simd/lanes.md. Include this only from files that are compiled for SSE2;
/// everything here is local to the including file.
#pragma once

#include <cstddef>

#include "simd/lanes_sse2.h"

namespace zepbmp {
namespace {

struct Texels128 : Lanes128 {
    using Floats = Floats128;
    static constexpr bool kShuffles = false;
    static constexpr int kPixels = 4;

    static V counting_from(int32_t first) { return _mm_add_epi32(_mm_set1_epi32(first), _mm_setr_epi32(0, 1, 2, 3)); }
    static V shift_left_dwords_by(V v, int count) { return _mm_sll_epi32(v, _mm_cvtsi32_si128(count)); }
    static V select_bits(V mask, V a, V b) { return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b)); }
    static V positive_dwords(V v) { return _mm_andnot_si128(_mm_srai_epi32(v, 31), v); }
    static V multiply_dwords(V a, V b) {
        const V even = _mm_mul_epu32(a, b), odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
        return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, 0x08), _mm_shuffle_epi32(odd, 0x08));
    }
    static V min_signed_words(V a, V b) { return _mm_min_epi16(a, b); }
    static V max_signed_words(V a, V b) { return _mm_max_epi16(a, b); }
    static V sub_to_zero_words(V a, V b) { return _mm_subs_epu16(a, b); }
    static V mul_high_unsigned(V a, V b) { return _mm_mulhi_epu16(a, b); }
    static V repeat(const int16_t* p) { return load(p); }
    template <int kDword>
    static V spread_low(V v) {
        return spread_word<2 * kDword>(v);
    }
    template <int kDword>
    static V spread_high(V v) {
        return spread_word<2 * kDword + 1>(v);
    }

    template <int kDword>
    static V load_rows(const uint8_t* base, const int32_t* offset, ptrdiff_t pitch) {
        const uint8_t* const p = base + offset[kDword];
        return _mm_unpacklo_epi64(load_half(p), load_half(p + pitch));
    }
    template <int kDword>
    static V load_windows(const uint8_t* base, const int32_t* offset) {
        return load(base + offset[kDword]);
    }
    template <int kDword>
    static V load_half_windows(const uint8_t* base, const int32_t* offset) {
        return load_half(base + offset[kDword]);
    }
    template <int kDword>
    static V bilinear_rgbq(V rows, V weights) {
        constexpr int kTotalBits = 14;  // two weights of 128 in all, multiplied
        constexpr int kMissing = kGrey << kTotalBits, kHalf = 1 << (kTotalBits - 1);
        const V no_bytes = _mm_setzero_si128();
        const V bytes = kDword < 2 ? _mm_unpacklo_epi8(weights, no_bytes) : _mm_unpackhi_epi8(weights, no_bytes);
        const V columns = _mm_shuffle_epi32(bytes, kDword % 2 * 0xaa);
        const V words = weighted(low(rows), high(rows), spread_high<kDword>(weights));
        const V sum = _mm_madd_epi16(arrange_rgbq(words), columns);
        return _mm_srli_epi32(_mm_add_epi32(sum, _mm_set1_epi32(kMissing + kHalf)), kTotalBits);
    }
    static V weigh_low(V a, V b, V pairs) { return weighted(low(a), low(b), pairs); }
    static V weigh_high(V a, V b, V pairs) { return weighted(high(a), high(b), pairs); }

    static V arrange_rgbq(V v) { return _mm_unpacklo_epi16(v, _mm_srli_si128(v, 8)); }
    static V arrange_yuy2(V v) {
        const V lumas_first = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xd8), 0xd8);  // Y0 Y1 U0 V0 Y2 Y3 U1 V1
        const V chroma_last = _mm_shufflehi_epi16(_mm_shuffle_epi32(lumas_first, 0xd8), 0xd8);  // ... U0 U1 V0 V1
        return _mm_shuffle_epi32(chroma_last, 0xd8);
    }
    static V third_dword_first(V v) { return _mm_and_si128(_mm_shuffle_epi32(v, 0x02), _mm_setr_epi32(-1, 0, 0, 0)); }
    static V pack(V a, V b, V c, V d) { return _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d)); }
    static void store_low_words(void* p, V v) {
        const V signed_words = _mm_srai_epi32(_mm_slli_epi32(v, 16), 16);
        _mm_storel_epi64(static_cast<V*>(p), _mm_packs_epi32(signed_words, signed_words));
    }
    static void store_even_dwords(void* p, V v) { _mm_storel_epi64(static_cast<V*>(p), _mm_shuffle_epi32(v, 0x08)); }
    template <int kShift>
    static V shift_right_qwords(V v) {
        return _mm_srli_epi64(v, kShift);
    }

private:
    template <int kWord>
    static V spread_word(V v) {
        if constexpr (kWord < 4)
            return _mm_shuffle_epi32(_mm_shufflelo_epi16(v, kWord * 0x55), 0);
        else
            return _mm_shuffle_epi32(_mm_shufflehi_epi16(v, (kWord - 4) * 0x55), 0xaa);
    }
    static constexpr int kGrey = 128;
    static V from_grey(V words) { return _mm_sub_epi16(words, _mm_set1_epi16(kGrey)); }
    static V low(V v) { return from_grey(_mm_unpacklo_epi8(v, _mm_setzero_si128())); }
    static V high(V v) { return from_grey(_mm_unpackhi_epi8(v, _mm_setzero_si128())); }
    static V weighted(V a, V b, V pairs) {
        const V first = _mm_and_si128(pairs, _mm_set1_epi16(0xff)), second = _mm_srli_epi16(pairs, 8);
        return _mm_add_epi16(_mm_mullo_epi16(a, first), _mm_mullo_epi16(b, second));
    }
};

}  // namespace
}  // namespace zepbmp
