/// \file
/// The kernel sets for lines of bytes.
#pragma once

#include "core/kernel_tables.h"

namespace zepbmp {

/// Every set's prefetch(). Nothing where a set's instructions have none. Static: each set has its own.
static inline void prefetch_lines(const uint8_t* first, size_t bytes, ptrdiff_t pitch, int32_t lines) {
    const auto from = reinterpret_cast<uintptr_t>(first);
    for (uintptr_t line = 0; line < static_cast<uintptr_t>(lines); ++line) {
        const uintptr_t begin = from + line * static_cast<uintptr_t>(pitch);
        for (uintptr_t at = begin & -uintptr_t{kCacheLineBytes}; at < begin + bytes; at += kCacheLineBytes)
            __builtin_prefetch(reinterpret_cast<const void*>(at));
    }
}

extern const LineKernels kLinePlain;
extern const LineKernels kLineMmx;
extern const LineKernels kLineMmxExt;
extern const LineKernels kLineSse2;
extern const LineKernels kLineAvx2;
extern const LineKernels kLineAvx512;

}  // namespace zepbmp
