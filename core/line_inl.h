/// \file
/// Lines of bytes, written once over a lane type (simd/lanes.md) and included by one file per instruction set. Everything
/// here is local to the including file.
///
/// A line's first register goes to any address, the following ones to multiples of the register's size; the last one ends
/// with the line and may overlap the one before. Where stores are streamed the ends are written byte by byte instead, so that
/// no cache line is stored both ways.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/line_kernels.h"

namespace zepbmp {
namespace {

template <class L, StoreKind kStore>
void store_line(uint8_t* aligned, typename L::V v) {
    if constexpr (kStore == kStoreStreamed)
        L::store_streamed(aligned, v);
    else
        L::store(aligned, v);
}

/// Bytes from p to the next multiple of the register's size.
template <class L>
size_t bytes_to_boundary(const void* p) {
    return (0 - reinterpret_cast<uintptr_t>(p)) % L::kBytes;
}

void fill_bytes(uint8_t* dst, size_t bytes, uint32_t value) {
    for (; bytes >= 4; dst += 4, bytes -= 4)
        __builtin_memcpy(dst, &value, 4);
    for (; bytes; ++dst, --bytes, value >>= 8)
        *dst = static_cast<uint8_t>(value);
}

template <class L, StoreKind kStore>
void fill(uint8_t* dst, size_t bytes, uint32_t value) {
    if (bytes < L::kBytes) {
        fill_bytes(dst, bytes, value);
    } else {
        const auto v = L::dwords(value);
        const size_t head = bytes_to_boundary<L>(dst);
        if constexpr (kStore == kStoreStreamed)
            fill_bytes(dst, head, value);
        else
            L::store(dst, v);
        size_t i = head;
        for (; i + 4 * L::kBytes <= bytes; i += 4 * L::kBytes) {
            for (int k = 0; k < 4; ++k)
                store_line<L, kStore>(dst + i + k * L::kBytes, v);
        }
        for (; i + L::kBytes <= bytes; i += L::kBytes)
            store_line<L, kStore>(dst + i, v);
        if constexpr (kStore == kStoreStreamed)
            fill_bytes(dst + i, bytes - i, value);
        else
            L::store(dst + bytes - L::kBytes, v);
    }
    L::finish();
}

template <class L, StoreKind kStore>
void copy(uint8_t* dst, const uint8_t* src, size_t bytes) {
    if (dst == src)
        return;
    if (bytes < L::kBytes) {
        __builtin_memcpy(dst, src, bytes);
        return;
    }
    const auto last = L::load(src + bytes - L::kBytes);
    const size_t head = bytes_to_boundary<L>(dst);
    if constexpr (kStore == kStoreStreamed)
        __builtin_memcpy(dst, src, head);
    else
        L::store(dst, L::load(src));
    size_t i = head;
    for (; i + 4 * L::kBytes <= bytes; i += 4 * L::kBytes) {
        const auto a = L::load(src + i), b = L::load(src + i + L::kBytes), c = L::load(src + i + 2 * L::kBytes),
                   d = L::load(src + i + 3 * L::kBytes);
        store_line<L, kStore>(dst + i, a);
        store_line<L, kStore>(dst + i + L::kBytes, b);
        store_line<L, kStore>(dst + i + 2 * L::kBytes, c);
        store_line<L, kStore>(dst + i + 3 * L::kBytes, d);
    }
    for (; i + L::kBytes <= bytes; i += L::kBytes)
        store_line<L, kStore>(dst + i, L::load(src + i));
    if constexpr (kStore == kStoreStreamed)
        __builtin_memcpy(dst + i, src + i, bytes - i);
    else
        L::store(dst + bytes - L::kBytes, last);
    L::finish();
}

void interpolate_bytes(uint8_t* between, uint8_t* copied, const uint8_t* above, const uint8_t* below, size_t first,
                       size_t end) {
    for (size_t i = first; i < end; ++i) {
        const uint8_t b = below[i];
        between[i] = static_cast<uint8_t>((above[i] + b + 1) >> 1);
        copied[i] = b;
    }
}

template <class L, StoreKind kStore, bool kCopies>
void interpolate_registers(uint8_t* between, uint8_t* copied, const uint8_t* above, const uint8_t* below, size_t first,
                           size_t end) {
    for (size_t i = first; i < end; i += L::kBytes) {
        const auto b = L::load(below + i);
        store_line<L, kStore>(between + i, L::average_bytes(L::load(above + i), b));
        if constexpr (kCopies)
            store_line<L, kStore>(copied + i, b);
    }
}

template <class L, StoreKind kStore>
void interpolate(uint8_t* between, uint8_t* copied, const uint8_t* above, const uint8_t* below, size_t bytes) {
    const bool copies = copied != below;
    const size_t head = bytes_to_boundary<L>(between);
    if (kStore == kStoreStreamed && copies && bytes_to_boundary<L>(copied) != head)
        return interpolate<L, kStoreCached>(between, copied, above, below, bytes);
    const size_t first = head < bytes ? head : bytes;
    const size_t end = first + (bytes - first) / L::kBytes * L::kBytes;
    interpolate_bytes(between, copied, above, below, 0, first);
    if (copies)
        interpolate_registers<L, kStore, true>(between, copied, above, below, first, end);
    else
        interpolate_registers<L, kStore, false>(between, copied, above, below, first, end);
    interpolate_bytes(between, copied, above, below, end, bytes);
    L::finish();
}

template <class L>
void end_stream() {
    L::end_stream();
}

template <class L>
constexpr LineKernels line_set() {
    constexpr StoreKind kStreamed = L::kStreams ? kStoreStreamed : kStoreCached;
    return {
        .fill = {fill<L, kStoreCached>, fill<L, kStreamed>},
        .copy = {copy<L, kStoreCached>, copy<L, kStreamed>},
        .interpolate = {interpolate<L, kStoreCached>, interpolate<L, kStreamed>},
        .end_stream = end_stream<L>,
    };
}

}  // namespace
}  // namespace zepbmp
