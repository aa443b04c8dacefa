/// \file
/// 64-byte lanes: AVX-512 F, BW, VL and DQ.
///
/// What each operation means stands in simd/lanes.md. Include this only from files that are compiled for AVX-512;
/// everything here is local to the including file.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace zepbmp {
namespace {

struct Lanes512 {
    using V = __m512i;
    static constexpr int kBytes = 64;
    static constexpr int kDwords = kBytes / 4;
    static constexpr bool kStreams = true;

    static V load(const void* p) {
        V v = _mm512_loadu_si512(p);
        asm("" : "+v"(v));  // GCC 12 would load it again for every use
        return v;
    }
    static V load_aligned(const void* p) { return load(p); }
    static void store(void* p, V v) { _mm512_storeu_si512(p, v); }
    static void store_aligned(void* p, V v) { store(p, v); }
    static void store_streamed(void* p, V v) { _mm512_stream_si512(static_cast<V*>(p), v); }
    static void end_stream() { _mm_sfence(); }
    static void prefetch(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T0); }
    static void prefetch_far(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T1); }

    static __mmask16 first_dwords(int n) { return static_cast<__mmask16>((1u << n) - 1); }
    static V load_dwords(const void* p, int n) { return _mm512_maskz_loadu_epi32(first_dwords(n), p); }
    static void store_dwords(void* p, V v, int n) { _mm512_mask_storeu_epi32(p, first_dwords(n), v); }

    static V words(int value) { return _mm512_set1_epi16(static_cast<short>(value)); }
    static V dwords(uint32_t value) { return _mm512_set1_epi32(static_cast<int>(value)); }

    template <int kShift>
    static V even_bytes(V v) {
        return _mm512_maddubs_epi16(v, words(1 << kShift));
    }
    template <int kShift>
    static V odd_bytes(V v) {
        return _mm512_maddubs_epi16(v, words(0x100 << kShift));
    }
    static V interleave_saturated(V even, V odd) {
        const V order = _mm512_broadcast_i32x4(_mm_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15));
        return _mm512_shuffle_epi8(_mm512_packus_epi16(even, odd), order);
    }

    static V add(V a, V b) { return _mm512_add_epi16(a, b); }
    static V sub(V a, V b) { return _mm512_sub_epi16(a, b); }
    static V bit_and(V a, V b) { return _mm512_and_si512(a, b); }
    static V bit_or(V a, V b) { return _mm512_or_si512(a, b); }
    static V bit_xor(V a, V b) { return _mm512_xor_si512(a, b); }
    static V mul_high(V a, V b) { return _mm512_mulhi_epi16(a, b); }
    static V mul_low(V a, V b) { return _mm512_mullo_epi16(a, b); }
    template <int kShift>
    static V shift_left_words(V v) {
        return _mm512_slli_epi16(v, kShift);
    }
    template <int kShift>
    static V shift_right(V v) {
        return _mm512_srli_epi16(v, kShift);
    }
    template <int kShift>
    static V shift_right_signed(V v) {
        return _mm512_srai_epi16(v, kShift);
    }
    static V average_bytes(V a, V b) { return _mm512_avg_epu8(a, b); }
    static V max_words(V a, V b) { return _mm512_max_epu16(a, b); }

    static V add_dwords(V a, V b) { return _mm512_add_epi32(a, b); }
    static V sub_dwords(V a, V b) { return _mm512_sub_epi32(a, b); }
    static V multiply_pairs(V a, V b) { return _mm512_madd_epi16(a, b); }
    template <int kShift>
    static V shift_left_dwords(V v) {
        return _mm512_slli_epi32(v, kShift);
    }
    template <int kShift>
    static V shift_right_dwords(V v) {
        return _mm512_srli_epi32(v, kShift);
    }
    template <int kShift>
    static V shift_right_signed_dwords(V v) {
        return _mm512_srai_epi32(v, kShift);
    }

    static V words_as_dwords(const void* p) {
        return _mm512_cvtepu16_epi32(_mm256_loadu_si256(static_cast<const __m256i*>(p)));
    }
    static V words_twice(const void* p) {
        alignas(64) static constexpr uint16_t kTwice[32] = {0, 0, 1, 1, 2,  2,  3,  3,  4,  4,  5,  5,  6,  6,  7,  7,
                                                            8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13, 14, 14, 15, 15};
        const __m256i w = _mm256_loadu_si256(static_cast<const __m256i*>(p));
        return _mm512_permutexvar_epi16(load(kTwice), _mm512_castsi256_si512(w));
    }
    static V words_twice(const uint16_t* p, int n) {
        const V w = _mm512_cvtepu16_epi32(_mm256_maskz_loadu_epi16(first_dwords(n), p));
        return _mm512_or_si512(w, _mm512_slli_epi32(w, 16));
    }
    static V bytes_twice(const void* p) {
        const V w = _mm512_cvtepu8_epi32(_mm_loadu_si128(static_cast<const __m128i*>(p)));
        return even_words_twice(w);
    }
    static V bytes_as_words(const void* p) {
        return _mm512_cvtepu8_epi16(_mm256_loadu_si256(static_cast<const __m256i*>(p)));
    }
    static void store_as_bytes(void* p, V w) { _mm256_storeu_si256(static_cast<__m256i*>(p), _mm512_cvtepi16_epi8(w)); }
    static V interleave_low_words(V a, V b) { return _mm512_unpacklo_epi16(a, b); }
    static V interleave_high_words(V a, V b) { return _mm512_unpackhi_epi16(a, b); }
    static V pack_dwords(V low, V high) { return _mm512_packs_epi32(low, high); }
    static V even_words_twice(V w) {
        return _mm512_shuffle_epi8(
            w, _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13)));
    }
    static V pair_sums(V w) { return add(w, _mm512_rol_epi32(w, 16)); }

    static void finish() { _mm256_zeroupper(); }
};

/// Sixteen single-precision lanes.
struct Floats512 {
    using F = __m512;
    using I = __m512i;
    static constexpr int kLanes = 16;

    static F all(float x) { return _mm512_set1_ps(x); }
    static F counting() { return _mm512_setr_ps(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15); }
    static F half_pixels() {
        return _mm512_setr_ps(0, 0, 0.5f, 0.5f, 1, 1, 1.5f, 1.5f, 2, 2, 2.5f, 2.5f, 3, 3, 3.5f, 3.5f);
    }
    static F alternating(float a, float b) { return _mm512_setr_ps(a, b, a, b, a, b, a, b, a, b, a, b, a, b, a, b); }
    static F add(F a, F b) { return _mm512_add_ps(a, b); }
    static F sub(F a, F b) { return _mm512_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm512_mul_ps(a, b); }
    static F root(F a) {  // an estimate of 14 bits and one Newton step, several times as fast as the square root
        const F x = _mm512_max_ps(a, all(1e-30f));
        const F y = _mm512_rsqrt14_ps(x), root = mul(x, y);
        return mul(root, sub(all(1.5f), mul(mul(all(0.5f), root), y)));
    }
    static F hold(F a, F low, F high) { return _mm512_min_ps(_mm512_max_ps(a, low), high); }
    static I truncate(F a) { return _mm512_cvttps_epi32(a); }
    static F to_float(I a) { return _mm512_cvtepi32_ps(a); }
    static uint32_t magnitude_above(F a, F limit) { return _mm512_cmp_ps_mask(_mm512_abs_ps(a), limit, _CMP_GT_OQ); }
    template <int kShift>
    static I shift_left(I a) {
        return _mm512_slli_epi32(a, kShift);
    }
    static I look_up(const uint16_t* table, I index) {
        return _mm512_and_si512(_mm512_i32gather_epi32(index, table, 2), _mm512_set1_epi32(0xffff));
    }
    static void store_words(uint16_t* p, I a) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtepi32_epi16(a));
    }
    static void store_first_words(uint16_t* p, I a, int n) {
        _mm512_mask_cvtepi32_storeu_epi16(p, static_cast<__mmask16>((1u << n) - 1), a);
    }
    static void store(int32_t* p, I a) { _mm512_storeu_si512(p, a); }
    static F load(const float* p) { return _mm512_loadu_ps(p); }
    static void store(float* p, F a) { _mm512_storeu_ps(p, a); }
    static F div(F a, F b) { return _mm512_div_ps(a, b); }
    static I greater(F a, F b) { return _mm512_movm_epi32(_mm512_cmp_ps_mask(a, b, _CMP_GT_OQ)); }
    static F select(I mask, F a, F b) { return _mm512_mask_blend_ps(_mm512_movepi32_mask(mask), b, a); }
    static void finish() { _mm256_zeroupper(); }
};

/// Eight double-precision lanes.
struct Doubles512 {
    using D = __m512d;
    static constexpr int kLanes = 8;

    static D all(double x) { return _mm512_set1_pd(x); }
    static D counting() { return _mm512_setr_pd(0, 1, 2, 3, 4, 5, 6, 7); }
    static D add(D a, D b) { return _mm512_add_pd(a, b); }
    static D mul(D a, D b) { return _mm512_mul_pd(a, b); }
    static D sub(D a, D b) { return _mm512_sub_pd(a, b); }
    static D hold(D a, D low, D high) { return _mm512_min_pd(_mm512_max_pd(a, low), high); }
    static D whole(D a) { return _mm512_roundscale_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }
    using Mask = __mmask8;
    static Mask at_least(D a, D b) { return _mm512_cmp_pd_mask(a, b, _CMP_GE_OQ); }
    static D select(Mask mask, D a, D b) { return _mm512_mask_blend_pd(mask, b, a); }
    static void store_truncated_words(uint16_t* p, D a) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_cvtepi32_epi16(_mm512_cvttpd_epi32(a)));
    }
};

}  // namespace
}  // namespace zepbmp
