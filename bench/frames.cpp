#include "frames.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <numbers>

namespace zepbmp::bench {
namespace {

constexpr size_t kLeastRingBytes = size_t{600} * 1000 * 1000;
constexpr size_t kMostRingBytes = sizeof(void*) == 4 ? size_t{900} * 1000 * 1000 : SIZE_MAX;

/// Maps values that are uniform in all of T to 0..kFull, uniform too.
template <class T, uint32_t kFull>
void scale_to_full(void* values, size_t bytes) {
    T* const v = static_cast<T*>(values);
    for (size_t i = 0; i < bytes / sizeof(T); ++i)
        v[i] = static_cast<T>((v[i] * (kFull + 1)) >> (8 * sizeof(T)));
}

void scale_to_depths(void* values, size_t bytes) {
    for (size_t i = 0; i < bytes; i += sizeof(float)) {
        uint32_t word;
        std::memcpy(&word, static_cast<uint8_t*>(values) + i, sizeof word);
        const float depth = static_cast<float>(word >> 8) / (1 << 24);
        std::memcpy(static_cast<uint8_t*>(values) + i, &depth, sizeof depth);
    }
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
    else if (frame.format == kDepths)
        scale_to_depths(frame.pixels, bytes);
}

/// Values 0..1: waves of about a hundred pixels, `fine` ones of about four besides.
double wave(double x, double y, size_t role, int channel, bool fine) {
    const double phase = 1.7 * static_cast<double>(role) + channel;
    const double slow = std::sin(x * 2 * std::numbers::pi / 128 + phase) + std::cos(y * 2 * std::numbers::pi / 97);
    return 0.5 + 0.2 * slow + (fine ? 0.1 * std::sin(1.2 * x + 0.9 * y + phase) : 0);
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

void paint_waves(Bitmap& frame, size_t role) {
    const auto byte = [role](int32_t x, int32_t y, int channel, bool fine = true) {
        return static_cast<uint8_t>(std::lround(255 * wave(x, y, role, channel, fine)));
    };
    for (int32_t y = 0; y < frame.height; ++y) {
        uint8_t* const line = frame.pixels + static_cast<ptrdiff_t>(y) * frame.pitch;
        for (int32_t x = 0; x < frame.width; ++x) {
            uint8_t* const pixel = line + static_cast<ptrdiff_t>(x) * frame.bytes_per_pixel;
            switch (frame.format) {
                case BMP_FMT_RGBQ: {
                    const uint8_t bytes[] = {byte(x, y, 0), byte(x, y, 1), byte(x, y, 2), 255};
                    std::memcpy(pixel, bytes, sizeof bytes);
                    break;
                }
                case BMP_FMT_YUY2: {  // chroma lies at the pair's first pixel
                    const uint8_t bytes[] = {byte(x, y, 0), byte(x & ~1, y, 1 + (x & 1), false)};
                    std::memcpy(pixel, bytes, sizeof bytes);
                    break;
                }
                case BMP_FMT_PWRW: {
                    const auto weight = static_cast<uint16_t>(std::lround(4096 * wave(x, y, role, 0, true)));
                    std::memcpy(pixel, &weight, sizeof weight);
                    break;
                }
                default: std::fill_n(pixel, frame.bytes_per_pixel, byte(x, y, 0)); break;
            }
        }
    }
}

void to_semi_planar(Bitmap& frame) {
    const Frame packed = clone(frame);
    uint8_t* luma = frame.pixels;
    uint8_t* chroma = frame.pixels + stored_bytes(frame) / 2;
    for (size_t i = 0; i < stored_bytes(frame); i += 2) {
        *luma++ = packed->pixels[i];
        *chroma++ = packed->pixels[i + 1];
    }
}

void from_semi_planar(Bitmap& frame) {
    const Frame planes = clone(frame);
    const uint8_t* luma = planes->pixels;
    const uint8_t* chroma = planes->pixels + stored_bytes(frame) / 2;
    for (size_t i = 0; i < stored_bytes(frame); i += 2) {
        frame.pixels[i] = *luma++;
        frame.pixels[i + 1] = *chroma++;
    }
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
    return std::clamp(2 * static_cast<size_t>(last_level_bytes), kLeastRingBytes, kMostRingBytes);
}

}  // namespace zepbmp::bench
