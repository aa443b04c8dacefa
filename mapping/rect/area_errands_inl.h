/// \file
/// What an area kernel does for memory's sake between the steps of its sums. Part of area_inl.h.
#pragma once

#include "core/pixels.h"
#include "mapping/rect/area_kernels.h"

namespace zepbmp {
namespace {

/// A cache line past the caches.
template <class L>
void stream_line(uint8_t* dst, const uint8_t* src) {
    for (int i = 0; i < kCacheLineBytes; i += L::kBytes)
        L::store_streamed(dst + i, L::load(src + i));
}

/// Bytes from p to the next cache line, at most `most`.
ptrdiff_t bytes_to_cache_line(const void* p, ptrdiff_t most) {
    const auto bytes = static_cast<ptrdiff_t>((0 - reinterpret_cast<uintptr_t>(p)) % kCacheLineBytes);
    return bytes < most ? bytes : most;
}

/// Asks for the source lines that come next, and fills the weights, a little with each of `steps`: in bursts, requests
/// and stores past the caches wait for each other and hold up the sums.
template <class L>
class Errands {
public:
    /// `bytes` from `offset` on of the source's lines.
    Errands(const AreaLines& lines, ptrdiff_t offset, ptrdiff_t bytes, const AreaTarget& target, int32_t pixels,
            ptrdiff_t steps)
        : later_(reinterpret_cast<uintptr_t>(lines.pixels) +
                 static_cast<uintptr_t>(lines.pitch * lines.later + offset)),
          pitch_(lines.pitch),
          bytes_(bytes),
          lines_(lines.ahead),
          asks_(share((bytes + kCacheLineBytes - 1) / kCacheLineBytes * lines.ahead, steps)),
          weights_(reinterpret_cast<uint8_t*>(target.weights)),
          store_(target.store) {
        const ptrdiff_t weight_bytes = weights_ ? ptrdiff_t{2} * pixels : 0;
        const ptrdiff_t head = bytes_to_cache_line(weights_, weight_bytes);
        fill_words(weights_, head);
        weights_ += head;
        weights_end_ = weights_ + (weight_bytes - head);
        fills_ = share((weight_bytes - head) / kCacheLineBytes, steps);
    }

    /// Belongs at the head of every step. Every kRest-th one does something.
    void step() {
        if (++step_ % kRest == 0)
            run();
    }
    /// What the steps have left of the weights.
    void finish() {
        while (weights_end_ - weights_ >= kCacheLineBytes)
            fill_line();
        fill_words(weights_, weights_end_ - weights_);
    }

private:
    static constexpr uint32_t kRest = 4;

    void run() {
        for (ptrdiff_t i = 0; i < asks_ && lines_ > 0; ++i)
            ask();
        for (ptrdiff_t i = 0; i < fills_ && weights_end_ - weights_ >= kCacheLineBytes; ++i)
            fill_line();
    }
    static ptrdiff_t share(ptrdiff_t all, ptrdiff_t steps) {
        const ptrdiff_t runs = steps / kRest + 1;
        return (all + runs - 1) / runs;
    }

    void ask() {
        L::prefetch_far(reinterpret_cast<const void*>(later_ + static_cast<uintptr_t>(x_)));
        x_ += kCacheLineBytes;
        if (x_ >= bytes_) {
            x_ = 0;
            later_ += static_cast<uintptr_t>(pitch_);
            --lines_;
        }
    }
    void fill_line() {
        for (int i = 0; i < kCacheLineBytes; i += L::kBytes) {
            if (store_ == kStoreStreamed)
                L::store_streamed(weights_ + i, L::words(kWeightFull));
            else
                L::store(weights_ + i, L::words(kWeightFull));
        }
        weights_ += kCacheLineBytes;
    }
    static void fill_words(uint8_t* p, ptrdiff_t bytes) {
        constexpr uint16_t kFull = kWeightFull;
        for (ptrdiff_t i = 0; i < bytes; i += 2)
            __builtin_memcpy(p + i, &kFull, sizeof kFull);
    }

    uintptr_t later_;  ///< an address; lines ahead may be hints that lie outside
    ptrdiff_t pitch_, bytes_, x_ = 0;
    int32_t lines_;
    uint32_t step_ = 0;
    ptrdiff_t asks_, fills_;  ///< cache lines of a run
    uint8_t *weights_, *weights_end_;
    StoreKind store_;
};

/// Pixels on their way from a line in the caches to dst, cache line by cache line, some way behind those that are
/// drawn: a load across two fresh stores waits for both.
template <class L>
class PixelStream {
public:
    PixelStream(uint8_t* dst, const uint8_t* line, ptrdiff_t bytes)
        : dst_(dst), line_(line), bytes_(bytes), head_(bytes_to_cache_line(dst, bytes)), at_(head_) {}

    void drawn_to(ptrdiff_t end) {
        for (; at_ + kCacheLineBytes + kBehind <= end; at_ += kCacheLineBytes)
            stream_line<L>(dst_ + at_, line_ + at_);
    }
    void finish() {
        drawn_to(bytes_ + kBehind);
        __builtin_memcpy(dst_, line_, static_cast<size_t>(head_));
        __builtin_memcpy(dst_ + at_, line_ + at_, static_cast<size_t>(bytes_ - at_));
    }

private:
    static constexpr ptrdiff_t kBehind = 2 * kCacheLineBytes;
    uint8_t* dst_;
    const uint8_t* line_;
    ptrdiff_t bytes_, head_, at_;
};

}  // namespace
}  // namespace zepbmp
