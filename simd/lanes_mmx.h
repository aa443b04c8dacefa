/// \file
/// 8-byte lanes: MMX alone, and MMX with the integer extensions that came with SSE.
///
/// What each operation means stands in simd/lanes.md. Include this only from files that are compiled for MMX;
/// everything here is local to the including file.
#pragma once

#include <mmintrin.h>
#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include <cstdint>

namespace zepbmp {
namespace {

struct Lanes64 {
    using V = __m64;
    static constexpr int kBytes = 8;
    static constexpr int kDwords = kBytes / 4;
    static constexpr bool kStreams = false;

    typedef long long Unaligned __attribute__((vector_size(8), aligned(1), may_alias));
    static V load(const void* p) { return (V) * static_cast<const Unaligned*>(p); }
    static V load_aligned(const void* p) { return load(p); }
    static void store(void* p, V v) { *static_cast<Unaligned*>(p) = (Unaligned)v; }
    static void store_aligned(void* p, V v) { store(p, v); }
    static void store_streamed(void* p, V v) { store(p, v); }
    static void end_stream() {}

    static V load_dwords(const void* p, int) {
        int32_t word;
        __builtin_memcpy(&word, p, sizeof word);
        return _mm_cvtsi32_si64(word);
    }
    static void store_dwords(void* p, V v, int) {
        const int32_t word = _mm_cvtsi64_si32(v);
        __builtin_memcpy(p, &word, sizeof word);
    }

    static V words(int value) { return _mm_set1_pi16(static_cast<short>(value)); }
    static V dwords(uint32_t value) { return _mm_set1_pi32(static_cast<int>(value)); }

    template <int kShift>
    static V even_bytes(V v) {
        return _mm_and_si64(_mm_slli_pi16(v, kShift), words(0xff << kShift));
    }
    template <int kShift>
    static V odd_bytes(V v) {
        return _mm_and_si64(_mm_srli_pi16(v, 8 - kShift), words(0xff << kShift));
    }
    static V interleave_saturated(V even, V odd) {
        const V packed = _mm_packs_pu16(even, odd);
        return _mm_unpacklo_pi8(packed, _mm_srli_si64(packed, 32));
    }

    static V add(V a, V b) { return _mm_add_pi16(a, b); }
    static V sub(V a, V b) { return _mm_sub_pi16(a, b); }
    static V bit_and(V a, V b) { return _mm_and_si64(a, b); }
    static V bit_xor(V a, V b) { return _mm_xor_si64(a, b); }
    static V mul_high(V a, V b) { return _mm_mulhi_pi16(a, b); }
    static V mul_low(V a, V b) { return _mm_mullo_pi16(a, b); }
    template <int kShift>
    static V shift_right(V v) {
        return _mm_srli_pi16(v, kShift);
    }
    template <int kShift>
    static V shift_right_signed(V v) {
        return _mm_srai_pi16(v, kShift);
    }
    static V average_bytes(V a, V b) {  // (a | b) - ((a ^ b) >> 1): MMX alone has no averaging
        const V half = _mm_and_si64(_mm_srli_pi16(_mm_xor_si64(a, b), 1), _mm_set1_pi8(0x7f));
        return _mm_sub_pi8(_mm_or_si64(a, b), half);
    }
    static V max_words(V a, V b) { return _mm_add_pi16(_mm_subs_pu16(a, b), b); }

    static V words_twice(const void* p) {
        const V w = load_dwords(p, 1);
        return _mm_unpacklo_pi16(w, w);
    }
    static V bytes_twice(const void* p) {
        uint16_t two;
        __builtin_memcpy(&two, p, sizeof two);
        const V w = _mm_unpacklo_pi8(_mm_cvtsi32_si64(two), _mm_setzero_si64());
        return _mm_unpacklo_pi16(w, w);
    }
    static V bytes_as_words(const void* p) { return _mm_unpacklo_pi8(load_dwords(p, 1), _mm_setzero_si64()); }
    static V even_words_twice(V w) {
        const V even = _mm_and_si64(w, dwords(0xffff));
        return _mm_or_si64(even, _mm_slli_pi32(even, 16));
    }
    static V pair_sums(V w) { return _mm_add_pi16(w, _mm_or_si64(_mm_slli_pi32(w, 16), _mm_srli_pi32(w, 16))); }

    static void finish() { _mm_empty(); }
};

/// The extensions are written as assembly where the file is not compiled for SSE: its intrinsics would bring SSE
/// registers with them, which level 2 must not touch.
struct Lanes64Ext : Lanes64 {
    template <int kOrder>
    static V shuffle_words(V w) {
#if defined(__SSE__)
        return _mm_shuffle_pi16(w, kOrder);
#else
        V r;
        asm("pshufw %2, %1, %0" : "=y"(r) : "y"(w), "i"(kOrder));
        return r;
#endif
    }
    static V average_bytes(V a, V b) {
#if defined(__SSE__)
        return _mm_avg_pu8(a, b);
#else
        asm("pavgb %1, %0" : "+y"(a) : "y"(b));
        return a;
#endif
    }
    static V even_words_twice(V w) { return shuffle_words<0xa0>(w); }
    static V pair_sums(V w) { return _mm_add_pi16(w, shuffle_words<0xb1>(w)); }
};

}  // namespace
}  // namespace zepbmp
