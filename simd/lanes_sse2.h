/// \file
/// 16-byte lanes: SSE2.
///
/// What each operation means stands in simd/lanes.md. Include this only from files that are compiled for SSE2;
/// everything here is local to the including file.
#pragma once

#include <emmintrin.h>

#include <cstdint>

namespace zepbmp {
namespace {

struct Lanes128 {
    using V = __m128i;
    static constexpr int kBytes = 16;
    static constexpr int kDwords = kBytes / 4;
    static constexpr bool kStreams = true;

    static V load(const void* p) { return _mm_loadu_si128(static_cast<const V*>(p)); }
    static V load_aligned(const void* p) { return _mm_load_si128(static_cast<const V*>(p)); }
    static void store(void* p, V v) { _mm_storeu_si128(static_cast<V*>(p), v); }
    static void store_aligned(void* p, V v) { _mm_store_si128(static_cast<V*>(p), v); }
    static void store_streamed(void* p, V v) { _mm_stream_si128(static_cast<V*>(p), v); }
    static void end_stream() { _mm_sfence(); }
    static void prefetch(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T0); }
    static void prefetch_far(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T1); }

    static V load_dword(const void* p) {
        int32_t word;
        __builtin_memcpy(&word, p, sizeof word);
        return _mm_cvtsi32_si128(word);
    }
    static void store_dword(void* p, V v) {
        const int32_t word = _mm_cvtsi128_si32(v);
        __builtin_memcpy(p, &word, sizeof word);
    }
    static V load_half(const void* p) { return _mm_loadl_epi64(static_cast<const V*>(p)); }
    static V load_dwords(const void* p, int n) {
        if (n == 1)
            return load_dword(p);
        if (n == 2)
            return load_half(p);
        return _mm_unpacklo_epi64(load_half(p), load_dword(static_cast<const uint8_t*>(p) + 8));
    }
    static void store_dwords(void* p, V v, int n) {
        if (n == 1) {
            store_dword(p, v);
            return;
        }
        _mm_storel_epi64(static_cast<V*>(p), v);
        if (n == 3)
            store_dword(static_cast<uint8_t*>(p) + 8, _mm_unpackhi_epi64(v, v));
    }

    static V words(int value) { return _mm_set1_epi16(static_cast<short>(value)); }
    static V dwords(uint32_t value) { return _mm_set1_epi32(static_cast<int>(value)); }

    template <int kShift>
    static V even_bytes(V v) {
        return _mm_and_si128(_mm_slli_epi16(v, kShift), words(0xff << kShift));
    }
    template <int kShift>
    static V odd_bytes(V v) {
        return _mm_and_si128(_mm_srli_epi16(v, 8 - kShift), words(0xff << kShift));
    }
    static V interleave_saturated(V even, V odd) {
        const V packed = _mm_packus_epi16(even, odd);
        return _mm_unpacklo_epi8(packed, _mm_unpackhi_epi64(packed, packed));
    }

    static V add(V a, V b) { return _mm_add_epi16(a, b); }
    static V sub(V a, V b) { return _mm_sub_epi16(a, b); }
    static V bit_and(V a, V b) { return _mm_and_si128(a, b); }
    static V bit_or(V a, V b) { return _mm_or_si128(a, b); }
    static V bit_xor(V a, V b) { return _mm_xor_si128(a, b); }
    static V mul_high(V a, V b) { return _mm_mulhi_epi16(a, b); }
    static V mul_low(V a, V b) { return _mm_mullo_epi16(a, b); }
    template <int kShift>
    static V shift_left_words(V v) {
        return _mm_slli_epi16(v, kShift);
    }
    template <int kShift>
    static V shift_right(V v) {
        return _mm_srli_epi16(v, kShift);
    }
    template <int kShift>
    static V shift_right_signed(V v) {
        return _mm_srai_epi16(v, kShift);
    }
    static V average_bytes(V a, V b) { return _mm_avg_epu8(a, b); }
    static V max_words(V a, V b) { return _mm_add_epi16(_mm_subs_epu16(a, b), b); }

    static V add_dwords(V a, V b) { return _mm_add_epi32(a, b); }
    static V sub_dwords(V a, V b) { return _mm_sub_epi32(a, b); }
    static V multiply_pairs(V a, V b) { return _mm_madd_epi16(a, b); }
    template <int kShift>
    static V shift_left_dwords(V v) {
        return _mm_slli_epi32(v, kShift);
    }
    template <int kShift>
    static V shift_right_dwords(V v) {
        return _mm_srli_epi32(v, kShift);
    }
    template <int kShift>
    static V shift_right_signed_dwords(V v) {
        return _mm_srai_epi32(v, kShift);
    }

    static V words_twice(const void* p) {
        const V w = load_half(p);
        return _mm_unpacklo_epi16(w, w);
    }
    static V words_twice(const uint16_t* p, int n) {
        V w = n == 1 ? _mm_cvtsi32_si128(*p) : load_dword(p);
        if (n == 3)
            w = _mm_insert_epi16(w, p[2], 2);
        return _mm_unpacklo_epi16(w, w);
    }
    static V bytes_twice(const void* p) {
        const V w = _mm_unpacklo_epi8(load_dword(p), _mm_setzero_si128());
        return _mm_unpacklo_epi16(w, w);
    }
    static V bytes_as_words(const void* p) { return _mm_unpacklo_epi8(load_half(p), _mm_setzero_si128()); }
    static void store_as_bytes(void* p, V w) { _mm_storel_epi64(static_cast<V*>(p), _mm_packus_epi16(w, w)); }
    static V interleave_low_words(V a, V b) { return _mm_unpacklo_epi16(a, b); }
    static V interleave_high_words(V a, V b) { return _mm_unpackhi_epi16(a, b); }
    static V pack_dwords(V low, V high) { return _mm_packs_epi32(low, high); }
    static V even_words_twice(V w) { return _mm_shufflehi_epi16(_mm_shufflelo_epi16(w, 0xa0), 0xa0); }
    static V pair_sums(V w) { return _mm_add_epi16(w, _mm_shufflehi_epi16(_mm_shufflelo_epi16(w, 0xb1), 0xb1)); }

    static void finish() {}
};

/// Four single-precision lanes.
struct Floats128 {
    using F = __m128;
    using I = __m128i;
    static constexpr int kLanes = 4;

    static F all(float x) { return _mm_set1_ps(x); }
    static F counting() { return _mm_setr_ps(0, 1, 2, 3); }
    static F half_pixels() { return _mm_setr_ps(0, 0, 0.5f, 0.5f); }
    static F alternating(float a, float b) { return _mm_setr_ps(a, b, a, b); }
    static F add(F a, F b) { return _mm_add_ps(a, b); }
    static F sub(F a, F b) { return _mm_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm_mul_ps(a, b); }
    static F root(F a) { return _mm_sqrt_ps(a); }
    static F hold(F a, F low, F high) { return _mm_min_ps(_mm_max_ps(a, low), high); }
    static I truncate(F a) { return _mm_cvttps_epi32(a); }
    static F to_float(I a) { return _mm_cvtepi32_ps(a); }
    static uint32_t magnitude_above(F a, F limit) {
        const F magnitude = _mm_andnot_ps(_mm_set1_ps(-0.0f), a);
        return static_cast<uint32_t>(_mm_movemask_ps(_mm_cmpgt_ps(magnitude, limit)));
    }
    template <int kShift>
    static I shift_left(I a) {
        return _mm_slli_epi32(a, kShift);
    }
    static I look_up(const uint16_t* table, I index) {
        alignas(16) int32_t i[kLanes];
        _mm_store_si128(reinterpret_cast<I*>(i), index);
        return _mm_setr_epi32(table[i[0]], table[i[1]], table[i[2]], table[i[3]]);
    }
    static void store_words(uint16_t* p, I a) { _mm_storel_epi64(reinterpret_cast<I*>(p), _mm_packs_epi32(a, a)); }
    static void store_first_words(uint16_t* p, I a, int n) {
        uint16_t words[kLanes];
        store_words(words, a);
        for (int i = 0; i < n; ++i)
            p[i] = words[i];
    }
    static void store(int32_t* p, I a) { _mm_storeu_si128(reinterpret_cast<I*>(p), a); }
    static F load(const float* p) { return _mm_loadu_ps(p); }
    static void store(float* p, F a) { _mm_storeu_ps(p, a); }
    static F div(F a, F b) { return _mm_div_ps(a, b); }
    static I greater(F a, F b) { return _mm_castps_si128(_mm_cmpgt_ps(a, b)); }
    static F select(I mask, F a, F b) {
        const F m = _mm_castsi128_ps(mask);
        return _mm_or_ps(_mm_and_ps(m, a), _mm_andnot_ps(m, b));
    }
    static void finish() {}
};

/// Two double-precision lanes.
struct Doubles128 {
    using D = __m128d;
    static constexpr int kLanes = 2;

    static D all(double x) { return _mm_set1_pd(x); }
    static D counting() { return _mm_setr_pd(0, 1); }
    static D add(D a, D b) { return _mm_add_pd(a, b); }
    static D mul(D a, D b) { return _mm_mul_pd(a, b); }
    static D sub(D a, D b) { return _mm_sub_pd(a, b); }
    static D hold(D a, D low, D high) { return _mm_min_pd(_mm_max_pd(a, low), high); }
    static D whole(D a) { return _mm_cvtepi32_pd(_mm_cvttpd_epi32(a)); }
    using Mask = __m128d;
    static Mask at_least(D a, D b) { return _mm_cmpge_pd(a, b); }
    static D select(Mask mask, D a, D b) { return _mm_or_pd(_mm_and_pd(mask, a), _mm_andnot_pd(mask, b)); }
    static void store_truncated_words(uint16_t* p, D a) {
        const __m128i integers = _mm_cvttpd_epi32(a);
        Lanes128::store_dword(p, _mm_packs_epi32(integers, integers));
    }
};

}  // namespace
}  // namespace zepbmp
