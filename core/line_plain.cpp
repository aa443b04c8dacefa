/// \file
/// Lines of bytes with the C library and plain loops.
#include <cstring>

#include "core/line_kernels.h"

namespace zepbmp {
namespace {

void fill(uint8_t* dst, size_t bytes, uint32_t value) {
    size_t i = 0;
    for (; i + sizeof value <= bytes; i += sizeof value)
        std::memcpy(dst + i, &value, sizeof value);
    for (; i < bytes; ++i, value >>= 8)
        dst[i] = static_cast<uint8_t>(value);
}

void copy(uint8_t* dst, const uint8_t* src, size_t bytes) {
    if (dst != src && bytes)
        std::memcpy(dst, src, bytes);
}

void interpolate(uint8_t* between, uint8_t* copied, const uint8_t* above, const uint8_t* below, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i)
        between[i] = static_cast<uint8_t>((above[i] + below[i] + 1) >> 1);
    copy(copied, below, bytes);
}

void end_stream() {}

/// Nothing in builds for processors without such an instruction.
void prefetch(const uint8_t* first, size_t bytes, ptrdiff_t pitch, int32_t lines) {
    const auto from = reinterpret_cast<uintptr_t>(first);
    for (uintptr_t line = 0; line < static_cast<uintptr_t>(lines); ++line) {
        const uintptr_t begin = from + line * static_cast<uintptr_t>(pitch);
        for (uintptr_t at = begin & -uintptr_t{kCacheLineBytes}; at < begin + bytes; at += kCacheLineBytes)
            __builtin_prefetch(reinterpret_cast<const void*>(at));
    }
}

}  // namespace

const LineKernels kLinePlain = {
    .fill = {fill, fill},
    .copy = {copy, copy},
    .interpolate = {interpolate, interpolate},
    .end_stream = end_stream,
    .prefetch = prefetch,
};

}  // namespace zepbmp
