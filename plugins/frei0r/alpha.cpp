#include "alpha.h"

#include <algorithm>
#include <cstring>

namespace zepbmp::frei0r {

namespace {

constexpr uint32_t kWeightFull = 4096;
constexpr uint32_t kOpaque = 255;
constexpr int kAlphaShift = 24;
constexpr uint32_t kOpaquePixel = kOpaque << kAlphaShift;

// Weights are looked at by fours.
constexpr int kGroup = 4;
constexpr uint64_t kFullGroup = 0x1000'1000'1000'1000;

const uint16_t* weights_at(const Bitmap& map, int y) {
    return reinterpret_cast<const uint16_t*>(bmp_pointer(&map, 0, y));
}
uint32_t* pixels_at(const Bitmap& bitmap, int y) { return reinterpret_cast<uint32_t*>(bmp_pointer(&bitmap, 0, y)); }

bool is_nothing_or_all(const uint16_t* weights) {
    uint64_t group;
    std::memcpy(&group, weights, sizeof group);
    return group == 0 || group == kFullGroup;
}

struct Line {
    uint32_t* out;
    const uint32_t* first;
    const uint32_t* second;
    const uint16_t* inner;
    const uint16_t* outer;

    void round(int x) const {
        const uint32_t sum = (first[x] >> kAlphaShift) * (kWeightFull - outer[x]) +
                             (second[x] >> kAlphaShift) * inner[x] +
                             kOpaque * static_cast<uint32_t>(outer[x] - inner[x]);
        const uint32_t alpha = (sum + kWeightFull / 2) / kWeightFull;
        out[x] = (out[x] & ~kOpaquePixel) | alpha << kAlphaShift;
    }

    void round_group(int x) const {
        if (is_nothing_or_all(inner + x) && is_nothing_or_all(outer + x))
            return;
        uint32_t both = kOpaquePixel;
        for (int i = 0; i < kGroup; ++i)
            both &= first[x + i] & second[x + i];
        for (int i = 0; i < kGroup; ++i) {
            if (both == kOpaquePixel)
                out[x + i] |= kOpaquePixel;
            else
                round(x + i);
        }
    }
};

}  // namespace

void round_alpha(Bitmap& out, const Bitmap& first, const Bitmap& second, const Bitmap& inner, const Bitmap& outer) {
    for (int y = 0; y < out.height; ++y) {
        const Line line = {pixels_at(out, y), pixels_at(first, y), pixels_at(second, y), weights_at(inner, y),
                           weights_at(outer, y)};
        int x = 0;
        for (; x + kGroup <= out.width; x += kGroup)
            line.round_group(x);
        for (; x < out.width; ++x)
            line.round(x);
    }
}

void divide_by_coverage(Bitmap& picture, const Bitmap& coverage) {
    constexpr int kColors = 3;
    for (int y = 0; y < picture.height; ++y) {
        uint8_t* const pixels = bmp_pointer(&picture, 0, y);
        const uint16_t* const weights = weights_at(coverage, y);
        for (int x = 0; x < picture.width; ++x) {
            if (x % kGroup == 0 && x + kGroup <= picture.width && is_nothing_or_all(weights + x)) {
                x += kGroup - 1;
                continue;
            }
            const uint32_t weight = weights[x];
            if (weight == 0 || weight == kWeightFull)
                continue;
            for (uint8_t *byte = pixels + 4 * x, *end = byte + kColors; byte < end; ++byte) {
                // Blending cuts: all from `least` to `most` become the same byte.
                const uint32_t least = (*byte * kWeightFull + weight - 1) / weight;
                const uint32_t most = std::min(kOpaque, ((*byte + 1) * kWeightFull - 1) / weight);
                *byte = static_cast<uint8_t>(std::min(kOpaque, (least + most + 1) / 2));
            }
        }
    }
}

}  // namespace zepbmp::frei0r
