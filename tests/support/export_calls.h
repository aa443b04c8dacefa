/// \file
/// One set of calls of every export, each with a result that can be compared, and made with the stack as a host may leave
/// it: on 32-bit targets word by word.
#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <vector>

#include "moved_stack.h"
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
    /// Leaves the stack where it is.
    Caller() = default;
    /// `off`: where the stack is when the function is called. On 32-bit targets how far from a multiple of 16; 0, 4, 8, 12.
    /// On 64-bit targets one of kStackOffsets, on one thread at a time.
    explicit Caller(int off) : off_(off), moved_(true) {}

    template <class Result, class... Parameters, class... Arguments>
    Result operator()(Result BMP_CALL (*function)(Parameters...), Arguments... arguments) {
        if constexpr (kCallsByWords) {
            const uint32_t words[] = {std::bit_cast<uint32_t>(static_cast<Parameters>(arguments))...};
            if constexpr (std::is_void_v<Result>)
                call_words(reinterpret_cast<const void*>(function), words);
            else
                return std::bit_cast<Result>(call_words(reinterpret_cast<const void*>(function), words));
        } else if (moved_) {
            return on_moved_stack(function, off_)(static_cast<Parameters>(arguments)...);
        } else {
            return function(static_cast<Parameters>(arguments)...);
        }
    }

    /// Whether every call left the stack pointer and the registers that belong to its caller as the convention says.
    bool kept_the_convention() const { return kept_ && moved_stack_was_kept(); }

private:
    uint32_t call_words(const void* function, std::span<const uint32_t> words);

    int off_ = 0;
    bool moved_ = false;
    bool kept_ = true;
};

struct ExportCall {
    const char* name;
    void (*run)(Caller& call, Scene& scene);
};

/// Calls of all exports, some with several formats.
std::span<const ExportCall> export_calls();

}  // namespace zepbmp::test
