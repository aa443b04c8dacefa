#include "mapping/rect/partial.h"

#include "mapping/rect/area_sums.h"
#include "mapping/rect/units.h"

namespace zepbmp {
namespace {

constexpr uint32_t kWholePixel = 1u << kAreaBits;

/// (sum + old * weight * 2^11) / (total + weight * 2^11)
struct Mixture {
    Mixture(uint32_t total, uint32_t weight) : held(weight << kLineBits), all(total + held) {}

    uint8_t mix(uint32_t sum, uint8_t old) const {
        if (all <= 2 * kWholePixel)  // then the sum fits 32 bits
            return static_cast<uint8_t>((sum + old * held) / all);
        return static_cast<uint8_t>((sum + uint64_t{old} * held) / all);
    }
    uint16_t weight() const { return static_cast<uint16_t>(all >> kLineBits); }

    uint32_t held, all;
};

}  // namespace

void draw_partial_rgbq(uint8_t* dst, uint16_t* weights, const AreaLines& lines, const PartialColumns& columns) {
    const auto line_units = static_cast<uint32_t>(units_of(lines.span, lines.inner_weight));
    for (int32_t i = 0; i < columns.count; ++i, dst += 4) {
        const AreaSpan& span = columns.spans[i];
        const uint32_t total = line_units * static_cast<uint32_t>(units_of(span, columns.inner_weight));
        const auto sums = area_sums<RgbqSource>(lines, span, columns.inner_weight);
        const Mixture mixture(total, total == kWholePixel ? 0 : weights[i]);
        for (int channel = 0; channel < 3; ++channel)
            dst[channel] = mixture.mix(sums.of[channel], dst[channel]);
        weights[i] = mixture.weight();
    }
}

void draw_partial_yuy2(uint8_t* dst, uint16_t* weights, const AreaLines& lines, const PartialColumns& columns) {
    const auto line_units = static_cast<uint32_t>(units_of(lines.span, lines.inner_weight));
    bool second = columns.second;
    for (int32_t i = 0; i < columns.count; ++i, second = !second) {
        const AreaSpan& span = columns.spans[i];
        const uint32_t total = line_units * static_cast<uint32_t>(units_of(span, columns.inner_weight));
        const auto sums = area_sums<Yuy2Source>(lines, span, columns.inner_weight);
        uint8_t* const pixel = dst + ptrdiff_t{2} * i;
        uint8_t* const pair = second ? pixel - 2 : pixel;
        const uint32_t partner = weights[second ? i - 1 : i + 1];
        const Mixture luma(total, weights[i]), chroma(total, weights[i] + partner);
        pixel[0] = luma.mix(sums.of[0], pixel[0]);
        pair[1] = chroma.mix(sums.of[1], pair[1]);
        pair[3] = chroma.mix(sums.of[2], pair[3]);
        weights[i] = luma.weight();
    }
}

void draw_partial_rgb8(uint8_t* dst, uint16_t*, const AreaLines& lines, const PartialColumns& columns) {
    for (int32_t i = 0; i < columns.count; ++i)
        dst[i] = static_cast<uint8_t>(area_sums<Rgb8Source>(lines, columns.spans[i], columns.inner_weight).of[0] /
                                      kWholePixel);
}

}  // namespace zepbmp
