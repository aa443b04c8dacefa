/// \file
/// 32-byte lanes: AVX2.
///
/// What each operation means stands in simd/lanes.md. Include this only from files that are compiled for AVX2;
/// everything here is local to the including file.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace zepbmp {
namespace {

struct Lanes256 {
    using V = __m256i;
    static constexpr int kBytes = 32;
    static constexpr int kDwords = kBytes / 4;
    static constexpr bool kStreams = true;

    static V load(const void* p) { return _mm256_loadu_si256(static_cast<const V*>(p)); }
    static V load_aligned(const void* p) { return load(p); }
    static void store(void* p, V v) { _mm256_storeu_si256(static_cast<V*>(p), v); }
    static void store_aligned(void* p, V v) { store(p, v); }
    static void store_streamed(void* p, V v) { _mm256_stream_si256(static_cast<V*>(p), v); }
    static void end_stream() { _mm_sfence(); }
    static void prefetch(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T0); }
    static void prefetch_far(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T1); }

    static V first_dwords(int n) {
        alignas(32) static constexpr int32_t kOnesThenZeros[16] = {-1, -1, -1, -1, -1, -1, -1, -1};
        return load(kOnesThenZeros + kDwords - n);
    }
    static V load_dwords(const void* p, int n) {
        return _mm256_maskload_epi32(static_cast<const int*>(p), first_dwords(n));
    }
    static void store_dwords(void* p, V v, int n) { _mm256_maskstore_epi32(static_cast<int*>(p), first_dwords(n), v); }

    static __m128i first_words(const uint16_t* p, int n) {  // 0 < n < 8
        if (n >= 4) {
            const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
            const __m128i last = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + n - 4));
            return _mm_unpacklo_epi64(low, _mm_srl_epi64(last, _mm_cvtsi32_si128(16 * (8 - n))));
        }
        if (n == 1)
            return _mm_cvtsi32_si128(*p);
        int32_t two;
        __builtin_memcpy(&two, p, sizeof two);
        const __m128i low = _mm_cvtsi32_si128(two);
        return n == 3 ? _mm_insert_epi16(low, p[2], 2) : low;
    }

    static V words(int value) { return _mm256_set1_epi16(static_cast<short>(value)); }
    static V dwords(uint32_t value) { return _mm256_set1_epi32(static_cast<int>(value)); }

    template <int kShift>
    static V even_bytes(V v) {
        return _mm256_maddubs_epi16(v, words(1 << kShift));
    }
    template <int kShift>
    static V odd_bytes(V v) {
        return _mm256_maddubs_epi16(v, words(0x100 << kShift));
    }
    static V interleave_saturated(V even, V odd) {
        const V order =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15));
        return _mm256_shuffle_epi8(_mm256_packus_epi16(even, odd), order);
    }

    static V add(V a, V b) { return _mm256_add_epi16(a, b); }
    static V sub(V a, V b) { return _mm256_sub_epi16(a, b); }
    static V bit_and(V a, V b) { return _mm256_and_si256(a, b); }
    static V bit_or(V a, V b) { return _mm256_or_si256(a, b); }
    static V bit_xor(V a, V b) { return _mm256_xor_si256(a, b); }
    static V mul_high(V a, V b) { return _mm256_mulhi_epi16(a, b); }
    static V mul_low(V a, V b) { return _mm256_mullo_epi16(a, b); }
    template <int kShift>
    static V shift_left_words(V v) {
        return _mm256_slli_epi16(v, kShift);
    }
    template <int kShift>
    static V shift_right(V v) {
        return _mm256_srli_epi16(v, kShift);
    }
    template <int kShift>
    static V shift_right_signed(V v) {
        return _mm256_srai_epi16(v, kShift);
    }
    static V average_bytes(V a, V b) { return _mm256_avg_epu8(a, b); }
    static V max_words(V a, V b) { return _mm256_max_epu16(a, b); }

    static V add_dwords(V a, V b) { return _mm256_add_epi32(a, b); }
    static V sub_dwords(V a, V b) { return _mm256_sub_epi32(a, b); }
    static V multiply_pairs(V a, V b) { return _mm256_madd_epi16(a, b); }
    template <int kShift>
    static V shift_left_dwords(V v) {
        return _mm256_slli_epi32(v, kShift);
    }
    template <int kShift>
    static V shift_right_dwords(V v) {
        return _mm256_srli_epi32(v, kShift);
    }
    template <int kShift>
    static V shift_right_signed_dwords(V v) {
        return _mm256_srai_epi32(v, kShift);
    }

    static V words_as_dwords(const void* p) {
        return _mm256_cvtepu16_epi32(_mm_loadu_si128(static_cast<const __m128i*>(p)));
    }
    static V words_twice(const void* p) {
        const V both = _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(p)));
        const V order = _mm256_setr_epi8(0, 1, 0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7,  //
                                         8, 9, 8, 9, 10, 11, 10, 11, 12, 13, 12, 13, 14, 15, 14, 15);
        return _mm256_shuffle_epi8(both, order);
    }
    static V words_twice(const uint16_t* p, int n) {
        const V w = _mm256_cvtepu16_epi32(first_words(p, n));
        return _mm256_or_si256(w, _mm256_slli_epi32(w, 16));
    }
    static V bytes_twice(const void* p) {
        const V both = _mm256_broadcastsi128_si256(_mm_loadl_epi64(static_cast<const __m128i*>(p)));
        const V order = _mm256_setr_epi8(0, -1, 0, -1, 1, -1, 1, -1, 2, -1, 2, -1, 3, -1, 3, -1,  //
                                         4, -1, 4, -1, 5, -1, 5, -1, 6, -1, 6, -1, 7, -1, 7, -1);
        return _mm256_shuffle_epi8(both, order);
    }
    static V bytes_as_words(const void* p) {
        return _mm256_cvtepu8_epi16(_mm_loadu_si128(static_cast<const __m128i*>(p)));
    }
    static void store_as_bytes(void* p, V w) {
        const V packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(w, w), 0x08);
        _mm_storeu_si128(static_cast<__m128i*>(p), _mm256_castsi256_si128(packed));
    }
    static V interleave_low_words(V a, V b) { return _mm256_unpacklo_epi16(a, b); }
    static V interleave_high_words(V a, V b) { return _mm256_unpackhi_epi16(a, b); }
    static V pack_dwords(V low, V high) { return _mm256_packs_epi32(low, high); }
    static V even_words_twice(V w) {
        return _mm256_shuffle_epi8(
            w, _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13)));
    }
    static V pair_sums(V w) {
        const V swapped = _mm256_shuffle_epi8(
            w, _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13)));
        return add(w, swapped);
    }

    static void finish() { _mm256_zeroupper(); }
};

/// Eight single-precision lanes.
struct Floats256 {
    using F = __m256;
    using I = __m256i;
    static constexpr int kLanes = 8;

    static F all(float x) { return _mm256_set1_ps(x); }
    static F counting() { return _mm256_setr_ps(0, 1, 2, 3, 4, 5, 6, 7); }
    static F half_pixels() { return _mm256_setr_ps(0, 0, 0.5f, 0.5f, 1, 1, 1.5f, 1.5f); }
    static F alternating(float a, float b) { return _mm256_setr_ps(a, b, a, b, a, b, a, b); }
    static F add(F a, F b) { return _mm256_add_ps(a, b); }
    static F sub(F a, F b) { return _mm256_sub_ps(a, b); }
    static F mul(F a, F b) { return _mm256_mul_ps(a, b); }
    static F root(F a) { return _mm256_sqrt_ps(a); }
    static F hold(F a, F low, F high) { return _mm256_min_ps(_mm256_max_ps(a, low), high); }
    static I truncate(F a) { return _mm256_cvttps_epi32(a); }
    static F to_float(I a) { return _mm256_cvtepi32_ps(a); }
    static uint32_t magnitude_above(F a, F limit) {
        const F magnitude = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), a);
        return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_cmp_ps(magnitude, limit, _CMP_GT_OQ)));
    }
    template <int kShift>
    static I shift_left(I a) {
        return _mm256_slli_epi32(a, kShift);
    }
    static I look_up(const uint16_t* table, I index) {
        const I two = _mm256_i32gather_epi32(reinterpret_cast<const int*>(table), index, 2);
        return _mm256_and_si256(two, _mm256_set1_epi32(0xffff));
    }
    static void store_words(uint16_t* p, I a) {
        const I packed = _mm256_permute4x64_epi64(_mm256_packs_epi32(a, a), 0x08);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(packed));
    }
    static void store_first_words(uint16_t* p, I a, int n) {
        uint16_t words[kLanes];
        store_words(words, a);
        for (int i = 0; i < n; ++i)
            p[i] = words[i];
    }
    static void store(int32_t* p, I a) { _mm256_storeu_si256(reinterpret_cast<I*>(p), a); }
    static F load(const float* p) { return _mm256_loadu_ps(p); }
    static void store(float* p, F a) { _mm256_storeu_ps(p, a); }
    static F div(F a, F b) { return _mm256_div_ps(a, b); }
    static I greater(F a, F b) { return _mm256_castps_si256(_mm256_cmp_ps(a, b, _CMP_GT_OQ)); }
    static F select(I mask, F a, F b) { return _mm256_blendv_ps(b, a, _mm256_castsi256_ps(mask)); }
    static void finish() { _mm256_zeroupper(); }
};

/// Four double-precision lanes.
struct Doubles256 {
    using D = __m256d;
    static constexpr int kLanes = 4;

    static D all(double x) { return _mm256_set1_pd(x); }
    static D counting() { return _mm256_setr_pd(0, 1, 2, 3); }
    static D add(D a, D b) { return _mm256_add_pd(a, b); }
    static D mul(D a, D b) { return _mm256_mul_pd(a, b); }
    static D sub(D a, D b) { return _mm256_sub_pd(a, b); }
    static D hold(D a, D low, D high) { return _mm256_min_pd(_mm256_max_pd(a, low), high); }
    static D whole(D a) { return _mm256_round_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }
    using Mask = __m256d;
    static Mask at_least(D a, D b) { return _mm256_cmp_pd(a, b, _CMP_GE_OQ); }
    static D select(Mask mask, D a, D b) { return _mm256_blendv_pd(b, a, mask); }
    static void store_truncated_words(uint16_t* p, D a) {
        const __m128i integers = _mm256_cvttpd_epi32(a);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packs_epi32(integers, integers));
    }
};

}  // namespace
}  // namespace zepbmp
