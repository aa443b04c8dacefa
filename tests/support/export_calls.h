/// \file
/// One set of calls of every export, each with a result that can be compared. On 32-bit targets they are made word by
/// word, with the stack as a host may leave it.
#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <vector>

#include "owned_bitmap.h"

namespace zepbmp::test {

/// Bitmaps of every kind that an export takes, filled with noise, and what calls have returned.
struct Scene {
    explicit Scene(uint64_t seed);

    /// Every byte that a call can have written, and every result.
    std::vector<uint8_t> contents() const;

    OwnedBitmap yuy2[3], rgbq[3], weights[2], mask, map, depth, rgb8[2];
    std::vector<uint32_t> results;
};

#if defined(__i386__)
constexpr bool kCallsByWords = true;
#else
constexpr bool kCallsByWords = false;
#endif

/// Calls a function. On 32-bit targets every argument is one word.
class Caller {
public:
    /// `off`: how far the stack is from a multiple of 16 where the function is called; 0, 4, 8, 12.
    explicit Caller(int off = 0) : off_(off) {}

    template <class Result, class... Parameters, class... Arguments>
    Result operator()(Result BMP_CALL (*function)(Parameters...), Arguments... arguments) {
        if constexpr (kCallsByWords) {
            const uint32_t words[] = {std::bit_cast<uint32_t>(static_cast<Parameters>(arguments))...};
            if constexpr (std::is_void_v<Result>)
                call_words(reinterpret_cast<const void*>(function), words);
            else
                return std::bit_cast<Result>(call_words(reinterpret_cast<const void*>(function), words));
        } else {
            return function(static_cast<Parameters>(arguments)...);
        }
    }

    /// Whether every call left the stack pointer and the registers that belong to its caller as the convention says.
    bool kept_the_convention() const { return kept_; }

private:
    uint32_t call_words(const void* function, std::span<const uint32_t> words);

    int off_;
    bool kept_ = true;
};

struct ExportCall {
    const char* name;
    void (*run)(Caller& call, Scene& scene);
};

/// Calls of all exports, some with several formats.
std::span<const ExportCall> export_calls();

}  // namespace zepbmp::test
