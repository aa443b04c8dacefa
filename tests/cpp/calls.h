/// \file
/// The same calls three times: through the face with its checks, through the face without them, and in plain C.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zepbmp.h"

/// What a call has left in one bitmap.
struct Result {
    std::string name;
    bool changed;  ///< against what the bitmap held before
    std::vector<uint8_t> bytes;
};
using Results = std::vector<Result>;

Results calls_checked();
Results calls_unchecked();
Results calls_c();

constexpr int kWidth = 37, kHeight = 21;
constexpr uint32_t kTargetSeed = 1;

/// All bytes of all lines: any, but weights are 0..4096, masks 0..128, and depth buffers 0.
inline std::vector<uint8_t> noise(const Bitmap& bitmap, uint32_t seed) {
    std::vector<uint8_t> bytes(static_cast<size_t>(bitmap.pitch) * static_cast<size_t>(bitmap.height));
    uint64_t state = seed;
    for (uint8_t& byte : bytes) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        byte = static_cast<uint8_t>(state >> 56);
    }
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bitmap.format == BMP_FMT_PWRW && i % 2 == 1)
            bytes[i] %= 16;
        else if (bitmap.format == BMP_FMT_A8)
            bytes[i] %= 129;
        else if (bitmap.format >= BMP_FMT_QUAD3 && bitmap.format <= BMP_FMT_QUAD5)
            bytes[i] = 0;
    }
    return bytes;
}

inline void fill_noise(Bitmap& bitmap, uint32_t seed) {
    const std::vector<uint8_t> bytes = noise(bitmap, seed);
    for (size_t i = 0; i < bytes.size(); ++i)
        bitmap.pixels[i] = bytes[i];
}

/// A bitmap that was filled with kTargetSeed's noise.
inline Result result_of(std::string name, const Bitmap& bitmap) {
    const std::vector<uint8_t> before = noise(bitmap, kTargetSeed);
    std::vector<uint8_t> after(bitmap.pixels, bitmap.pixels + before.size());
    const bool changed = after != before;
    return {std::move(name), changed, std::move(after)};
}

/// The display header with its colour table.
inline Result palette_of(std::string name, const Bitmap& bitmap) {
    constexpr size_t kHeaderBytes = 40, kTableBytes = 256 * 4;
    const auto* const header = static_cast<const uint8_t*>(bitmap.dib_info);
    return {std::move(name), header != nullptr, {header, header + kHeaderBytes + kTableBytes}};
}

/// A quad in perspective, and the same one without it.
inline std::vector<BmpVertex> quad(bool affine = false) {
    std::vector<BmpVertex> corners = {{0, 0, 1, 3.25f, 2.5f},
                                      {kWidth, 0, 0.75f, 33.5f, 4},
                                      {kWidth, kHeight, 0.5f, 30, 18.75f},
                                      {0, kHeight, 0.875f, 1.125f, 17}};
    for (BmpVertex& corner : corners)
        corner.w = affine ? 1 : corner.w;
    return corners;
}
