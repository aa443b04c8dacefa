/// \file
/// What the fuzzers share beside their inputs and pictures.
#pragma once

#include <cstdint>
#include <iterator>

#include "core/kernel_tables.h"
#include "fuzz/input.h"

namespace zepbmp::fuzz {

/// What the library's tables are filled with.
struct Tables {
    int level, register_bytes;

    void select() const { fill_kernel_tables(level, register_bytes); }
};
constexpr Tables kPlainTables = {kLevelPlain, 8};

/// Which tables are compared with the plain ones.
inline Tables other_tables(Input& input) {
    constexpr Tables kOthers[] = {{kLevelSse2, 64}, {kLevelSse2, 32}, {kLevelSse2, 16}, {kLevelMmxExt, 8}};
    return kOthers[input.take(1) % std::size(kOthers)];
}

/// Says what is wrong and ends the program, so that the fuzzer keeps the input.
[[noreturn]] void fail(const char* what);

}  // namespace zepbmp::fuzz
