#include "frames.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace zepbmp::bench {
namespace {

constexpr size_t kLeastRingBytes = size_t{600} * 1000 * 1000;

/// Maps values that are uniform in all of T to 0..kFull, uniform too.
template <class T, uint32_t kFull>
void scale_to_full(void* values, size_t bytes) {
    T* const v = static_cast<T*>(values);
    for (size_t i = 0; i < bytes / sizeof(T); ++i)
        v[i] = static_cast<T>((v[i] * (kFull + 1)) >> (8 * sizeof(T)));
}

void randomise(Bitmap& frame, std::mt19937_64& random) {
    const size_t bytes = stored_bytes(frame);  // a multiple of 16
    for (size_t i = 0; i < bytes; i += sizeof(uint64_t)) {
        const uint64_t word = random();
        std::memcpy(frame.pixels + i, &word, sizeof word);
    }
    if (frame.format == BMP_FMT_PWRW)
        scale_to_full<uint16_t, 4096>(frame.pixels, bytes);
    else if (frame.format == BMP_FMT_A8)
        scale_to_full<uint8_t, 128>(frame.pixels, bytes);
}

}  // namespace

FrameShape raw_bytes(double bytes) { return {BMP_FMT_RGB8, static_cast<int32_t>(bytes), 1}; }

size_t stored_bytes(const Bitmap& frame) {
    return static_cast<size_t>(frame.pitch) * static_cast<size_t>(frame.height);
}

Frame make_frame(const FrameShape& shape) {
    Frame frame(bmp_create(shape.width, shape.height, shape.format, 0));
    if (!frame)
        throw std::bad_alloc();
    return frame;
}

Frame clone(const Bitmap& frame) {
    Frame copy = make_frame({static_cast<int32_t>(frame.format), frame.width, frame.height});
    std::memcpy(copy->pixels, frame.pixels, stored_bytes(frame));
    return copy;
}

Bitmap* FramePool::frame(size_t role, const FrameShape& shape, size_t index) {
    std::vector<Frame>& frames = frames_[{role, shape}];
    while (frames.size() <= index) {
        frames.push_back(make_frame(shape));
        randomise(*frames.back(), random_);
    }
    return frames[index].get();
}

Ring::Ring(FramePool& pool, const std::vector<FrameShape>& shapes, size_t bytes) {
    size_t spanned = 0;
    do {
        FrameSet set;
        for (size_t role = 0; role < shapes.size(); ++role) {
            set.push_back(pool.frame(role, shapes[role], sets_.size()));
            spanned += stored_bytes(*set.back());
        }
        sets_.push_back(std::move(set));
    } while (spanned < bytes);
}

size_t ring_bytes() {
    int last_level_bytes = 0;
    for (const benchmark::CPUInfo::CacheInfo& cache : benchmark::CPUInfo::Get().caches)
        last_level_bytes = std::max(last_level_bytes, cache.size);
    return std::max(2 * static_cast<size_t>(last_level_bytes), kLeastRingBytes);
}

}  // namespace zepbmp::bench
