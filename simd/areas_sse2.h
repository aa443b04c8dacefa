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
    template <int kChannels>
    static constexpr int kWindowPixels = 1;
    static constexpr int kWindowWords = 8;
    static constexpr bool kWideWindows = false;
    static constexpr int kOrderBytes = 0;

    struct Two {
        V first, second;
    };
    static Two even_bytes_of_two(V a, V b) { return {bit_and(a, words(0xff)), bit_and(b, words(0xff))}; }
    static Two odd_bytes_of_two(V a, V b) { return {shift_right<8>(a), shift_right<8>(b)}; }
    static Two bytes_of_two(const void* a, const void* b) { return {bytes_as_words(a), bytes_as_words(b)}; }
    static Two two_weights(int a, int b) { return {words(a), words(b)}; }
    static V weigh_two(Two bytes, Two weights) {
        return add(mul_low(bytes.first, weights.first), mul_low(bytes.second, weights.second));
    }

    static void set_order(uint8_t*, int, int, int) {}
    template <int kChannels, bool kWide>
    static V gather(const uint16_t* plane, const int32_t* base, const uint8_t*) {
        if constexpr (kChannels == 1) {
            const V low = _mm_unpacklo_epi32(load_dword(plane + base[0]), load_dword(plane + base[1]));
            const V high = _mm_unpacklo_epi32(load_dword(plane + base[2]), load_dword(plane + base[3]));
            return _mm_unpacklo_epi64(low, high);
        } else {
            const V both = _mm_unpacklo_epi64(load_half(plane + base[0]), load_half(plane + base[1]));
            return _mm_shufflehi_epi16(_mm_shufflelo_epi16(both, 0xd8), 0xd8);
        }
    }

    static V pack_to_words(V a, V b) { return _mm_packs_epi32(a, b); }
    static V ordered_words(V v) { return v; }
    static V pack_to_bytes(V a, V b) { return _mm_packus_epi16(a, b); }
    static V ordered_bytes(V v) { return v; }
};

}  // namespace
}  // namespace zepbmp
