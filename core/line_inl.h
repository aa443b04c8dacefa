/// \file
/// Lines of bytes, written once over a lane type (simd/lanes.md) and included by one file per instruction set.
/// Everything here is local to the including file.
///
/// A line's first register goes to any address, the following ones to multiples of the register's size; the last one
/// ends with the line and may overlap the one before. Streamed stores are for whole cache lines only: what lies
/// before the first and behind the last one is written byte by byte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/line_kernels.h"

namespace zepbmp {
namespace {

/// What stores go to in order: registers, or, streamed, cache lines.
template <class L, StoreKind kStore>
constexpr size_t kUnit = kStore == kStoreStreamed ? kCacheLineBytes : L::kBytes;

/// Bytes from p to the next multiple of the unit.
template <class L, StoreKind kStore>
size_t bytes_to_unit(const void* p) {
    return (0 - reinterpret_cast<uintptr_t>(p)) % kUnit<L, kStore>;
}

template <class L, StoreKind kStore>
void store(uint8_t* dst, typename L::V v) {
    if constexpr (kStore == kStoreStreamed)
        L::store_streamed(dst, v);
    else
        L::store(dst, v);
}

void fill_bytes(uint8_t* dst, size_t bytes, uint32_t value) {
    for (; bytes >= 4; dst += 4, bytes -= 4)
        __builtin_memcpy(dst, &value, 4);
    for (; bytes; ++dst, --bytes, value >>= 8)
        *dst = static_cast<uint8_t>(value);
}

template <class L, StoreKind kStore>
void fill(uint8_t* dst, size_t bytes, uint32_t value) {
    constexpr size_t unit = kUnit<L, kStore>;
    if (bytes < unit) {
        fill_bytes(dst, bytes, value);
    } else {
        const auto v = L::dwords(value);
        const size_t head = bytes_to_unit<L, kStore>(dst);
        if constexpr (kStore == kStoreStreamed)
            fill_bytes(dst, head, value);
        else
            L::store(dst, v);
        size_t i = head;
        for (; i + 4 * unit <= bytes; i += 4 * unit) {
            for (size_t k = 0; k < 4 * unit; k += L::kBytes)
                store<L, kStore>(dst + i + k, v);
        }
        for (; i + unit <= bytes; i += unit) {
            for (size_t k = 0; k < unit; k += L::kBytes)
                store<L, kStore>(dst + i + k, v);
        }
        if constexpr (kStore == kStoreStreamed)
            fill_bytes(dst + i, bytes - i, value);
        else
            L::store(dst + bytes - L::kBytes, v);
    }
    L::finish();
}

/// All loads come before all stores.
template <class L, StoreKind kStore, size_t kBlock>
void copy_block(uint8_t* dst, const uint8_t* src) {
    typename L::V v[kBlock / L::kBytes];
    for (size_t k = 0; k < kBlock; k += L::kBytes)
        v[k / L::kBytes] = L::load(src + k);
    for (size_t k = 0; k < kBlock; k += L::kBytes)
        store<L, kStore>(dst + k, v[k / L::kBytes]);
}

template <class L, StoreKind kStore>
void copy(uint8_t* dst, const uint8_t* src, size_t bytes) {
    constexpr size_t unit = kUnit<L, kStore>;
    if (dst == src)
        return;
    if (bytes < unit) {
        __builtin_memcpy(dst, src, bytes);
        return;
    }
    const size_t head = bytes_to_unit<L, kStore>(dst);
    if constexpr (kStore == kStoreStreamed)
        __builtin_memcpy(dst, src, head);
    else
        L::store(dst, L::load(src));
    size_t i = head;
    constexpr size_t block = 4 * L::kBytes > 2 * kCacheLineBytes ? 4 * L::kBytes : 2 * kCacheLineBytes;
    for (; i + block <= bytes; i += block)
        copy_block<L, kStore, block>(dst + i, src + i);
    for (; i + unit <= bytes; i += unit)
        copy_block<L, kStore, unit>(dst + i, src + i);
    if constexpr (kStore == kStoreStreamed)
        __builtin_memcpy(dst + i, src + i, bytes - i);
    else
        L::store(dst + bytes - L::kBytes, L::load(src + bytes - L::kBytes));
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

template <class L, StoreKind kStore>
void average_at(uint8_t* between, const uint8_t* above, const uint8_t* below, size_t i) {
    store<L, kStore>(between + i, L::average_bytes(L::load(above + i), L::load(below + i)));
}

/// One line after the other: stores that take turns between two lines can't be merged on their way to the cache.
template <class L>
void interpolate_cached(uint8_t* between, uint8_t* copied, const uint8_t* above, const uint8_t* below, size_t bytes) {
    if (bytes < L::kBytes) {
        interpolate_bytes(between, copied, above, below, 0, bytes);
    } else {
        average_at<L, kStoreCached>(between, above, below, 0);
        for (size_t i = bytes_to_unit<L, kStoreCached>(between); i + L::kBytes <= bytes; i += L::kBytes)
            average_at<L, kStoreCached>(between, above, below, i);
        average_at<L, kStoreCached>(between, above, below, bytes - L::kBytes);
        copy<L, kStoreCached>(copied, below, bytes);
    }
    L::finish();
}

/// Both lines in one pass, so that memory is read once. Lines that share no position of their cache lines are not
/// streamed.
template <class L>
void interpolate_streamed(uint8_t* between, uint8_t* copied, const uint8_t* above, const uint8_t* below, size_t bytes) {
    constexpr size_t unit = kUnit<L, kStoreStreamed>;
    const bool copies = copied != below;
    const size_t head = bytes_to_unit<L, kStoreStreamed>(between);
    if (copies && bytes_to_unit<L, kStoreStreamed>(copied) != head)
        return interpolate_cached<L>(between, copied, above, below, bytes);
    const size_t first = head < bytes ? head : bytes;
    const size_t end = first + (bytes - first) / unit * unit;
    interpolate_bytes(between, copied, above, below, 0, first);
    for (size_t i = first; i < end; i += L::kBytes) {
        average_at<L, kStoreStreamed>(between, above, below, i);
        if (copies)
            L::store_streamed(copied + i, L::load(below + i));
    }
    interpolate_bytes(between, copied, above, below, end, bytes);
    L::finish();
}

/// The first and the last register are taken before the others change what they share with them.
template <class L>
void combine(uint8_t* dst, size_t bytes, uint8_t keep, uint8_t flip) {
    if (bytes < L::kBytes) {
        for (size_t i = 0; i < bytes; ++i)
            dst[i] = static_cast<uint8_t>((dst[i] & keep) ^ flip);
    } else {
        const auto kept = L::words(keep * 0x0101), flipped = L::words(flip * 0x0101);
        const auto at = [=](const uint8_t* p) { return L::bit_xor(L::bit_and(L::load(p), kept), flipped); };
        const auto first = at(dst), last = at(dst + bytes - L::kBytes);
        for (size_t i = bytes_to_unit<L, kStoreCached>(dst); i + L::kBytes <= bytes; i += L::kBytes)
            L::store(dst + i, at(dst + i));
        L::store(dst, first);
        L::store(dst + bytes - L::kBytes, last);
    }
    L::finish();
}

template <class L>
void end_stream() {
    L::end_stream();
}

template <class L>
constexpr LineKernels line_set() {
    if constexpr (L::kStreams)
        return {
            .fill = {fill<L, kStoreCached>, fill<L, kStoreStreamed>},
            .copy = {copy<L, kStoreCached>, copy<L, kStoreStreamed>},
            .interpolate = {interpolate_cached<L>, interpolate_streamed<L>},
            .combine = combine<L>,
            .end_stream = end_stream<L>,
            .prefetch = prefetch_lines,
        };
    else
        return {
            .fill = {fill<L, kStoreCached>, fill<L, kStoreCached>},
            .copy = {copy<L, kStoreCached>, copy<L, kStoreCached>},
            .interpolate = {interpolate_cached<L>, interpolate_cached<L>},
            .combine = combine<L>,
            .end_stream = end_stream<L>,
            .prefetch = prefetch_lines,
        };
}

}  // namespace
}  // namespace zepbmp
