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
    template <int kChannels>
    static constexpr int kWindowPixels = 16 / kChannels;
    static constexpr int kWindowWords = 32;
    static constexpr bool kWideWindows = true;
    static constexpr int kOrderBytes = kBytes;

    using Two = V;
    static Two even_bytes_of_two(V a, V b) {
        return _mm512_ternarylogic_epi32(words(0xff), a, shift_left_words<8>(b), 0xca);
    }
    static Two odd_bytes_of_two(V a, V b) { return _mm512_ternarylogic_epi32(words(0xff), shift_right<8>(a), b, 0xca); }
    static Two bytes_of_two(const void* a, const void* b) {
        return bit_or(bytes_as_words(a), shift_left_words<8>(bytes_as_words(b)));
    }
    static Two two_weights(int a, int b) { return words(a | b << 8); }
    static V weigh_two(Two bytes, Two weights) { return _mm512_maddubs_epi16(bytes, weights); }

    static void set_order(uint8_t* order, int dword, int word0, int word1) {
        const uint16_t words[2] = {static_cast<uint16_t>(word0), static_cast<uint16_t>(word1)};
        __builtin_memcpy(order + 4 * dword, words, sizeof words);
    }
    template <int kChannels, bool kWide>
    static V gather(const uint16_t* plane, const int32_t* base, const uint8_t* order) {
        const uint16_t* const window = plane + base[0];
        if constexpr (kWide)
            return _mm512_permutex2var_epi16(load(window), load(order), load(window + kWindowWords));
        else
            return _mm512_permutexvar_epi16(load(order), load(window));
    }

    static V pack_to_words(V a, V b) { return _mm512_packs_epi32(a, b); }
    static V ordered_words(V v) { return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), v); }
    static V pack_to_bytes(V a, V b) { return _mm512_packus_epi16(a, b); }
    static V ordered_bytes(V v) {
        return _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), v);
    }
};

}  // namespace
}  // namespace zepbmp
