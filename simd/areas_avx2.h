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
    template <int kChannels>
    static constexpr int kWindowPixels = 4 / kChannels;
    static constexpr int kWindowWords = 8;
    static constexpr bool kWideWindows = true;
    static constexpr int kOrderBytes = 2 * kBytes;

    using Two = V;
    static Two even_bytes_of_two(V a, V b) { return bit_or(bit_and(a, words(0xff)), shift_left_words<8>(b)); }
    static Two odd_bytes_of_two(V a, V b) { return bit_or(shift_right<8>(a), bit_and(b, words(0xff00))); }
    static Two bytes_of_two(const void* a, const void* b) {
        return bit_or(bytes_as_words(a), shift_left_words<8>(bytes_as_words(b)));
    }
    static Two two_weights(int a, int b) { return words(a | b << 8); }
    static V weigh_two(Two bytes, Two weights) { return _mm256_maddubs_epi16(bytes, weights); }

    /// A window's two halves have shuffles of their own; a byte that is not in a half becomes 0 there.
    static void set_order(uint8_t* order, int dword, int word0, int word1) {
        const int words[2] = {word0, word1};
        for (int i = 0; i < 4; ++i) {
            const int byte = 2 * words[i / 2] + i % 2;
            order[4 * dword + i] = static_cast<uint8_t>(byte < 16 ? byte : 0x80);
            order[kBytes + 4 * dword + i] = static_cast<uint8_t>(byte < 16 ? 0x80 : byte - 16);
        }
    }
    template <int kChannels, bool kWide>
    static V gather(const uint16_t* plane, const int32_t* base, const uint8_t* order) {
        const V low = _mm256_shuffle_epi8(windows(plane, base), load(order));
        if constexpr (!kWide)
            return low;
        return bit_or(low, _mm256_shuffle_epi8(windows(plane + kWindowWords, base), load(order + kBytes)));
    }
    static V windows(const uint16_t* plane, const int32_t* base) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(window(plane + base[0])), window(plane + base[1]), 1);
    }
    static __m128i window(const uint16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

    static V pack_to_words(V a, V b) { return _mm256_packs_epi32(a, b); }
    static V ordered_words(V v) { return _mm256_permute4x64_epi64(v, 0xd8); }
    static V pack_to_bytes(V a, V b) { return _mm256_packus_epi16(a, b); }
    static V ordered_bytes(V v) {
        return _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
    }
};

}  // namespace
}  // namespace zepbmp
