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

void combine(uint8_t* dst, size_t bytes, uint8_t keep, uint8_t flip) {
    for (size_t i = 0; i < bytes; ++i)
        dst[i] = static_cast<uint8_t>((dst[i] & keep) ^ flip);
}

void end_stream() {}

}  // namespace

const LineKernels kLinePlain = {
    .fill = {fill, fill},
    .copy = {copy, copy},
    .interpolate = {interpolate, interpolate},
    .combine = combine,
    .end_stream = end_stream,
    .prefetch = prefetch_lines,
};

}  // namespace zepbmp
