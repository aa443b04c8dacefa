/// \file
/// One destination pixel: the walk over what it covers of the source. Formats say what a source pixel contributes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/kernel_tables.h"

namespace zepbmp {

/// sum(sample * column's weight * line's weight) of every channel. Exact: at most 255 * 2^23, of a pair 255 * 2^24.
template <int kChannels>
struct AreaSums {
    uint32_t of[kChannels];
};

struct Rgb8Source {
    static constexpr int kChannels = 1;
    static uint32_t sample(const uint8_t* line, int32_t column, int /*channel*/) { return line[column]; }
};

/// Blue, green, red.
struct RgbqSource {
    static constexpr int kChannels = 3;
    static uint32_t sample(const uint8_t* line, int32_t column, int channel) {
        return line[ptrdiff_t{4} * column + channel];
    }
};

/// Y, U, V; a pixel's chroma is that of its pair.
struct Yuy2Source {
    static constexpr int kChannels = 3;
    static uint32_t sample(const uint8_t* line, int32_t column, int channel) {
        const uint8_t* const pair = line + ptrdiff_t{4} * (column >> 1);
        return channel == 0 ? pair[(column & 1) * 2] : pair[2 * channel - 1];
    }
};

template <class Source>
AreaSums<Source::kChannels> area_sums(const AreaLines& lines, const AreaSpan& columns, int32_t inner_weight) {
    AreaSums<Source::kChannels> sums = {};
    const uint8_t* line = lines.pixels + lines.pitch * lines.span.first;
    for (int32_t y = 0; y < lines.span.count; ++y, line += lines.pitch) {
        AreaSums<Source::kChannels> across = {};
        for (int32_t x = 0; x < columns.count; ++x) {
            const auto weight = static_cast<uint32_t>(weight_of(columns, x, inner_weight));
            for (int channel = 0; channel < Source::kChannels; ++channel)
                across.of[channel] += weight * Source::sample(line, columns.first + x, channel);
        }
        const auto weight = static_cast<uint32_t>(weight_of(lines.span, y, lines.inner_weight));
        for (int channel = 0; channel < Source::kChannels; ++channel)
            sums.of[channel] += weight * across.of[channel];
    }
    return sums;
}

}  // namespace zepbmp
