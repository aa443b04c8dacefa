/// \file
/// Area resampling, pixel by pixel: what the kernels of every set make.
#include <algorithm>

#include "core/pixels.h"
#include "mapping/rect/area_kernels.h"
#include "mapping/rect/area_sums.h"
#include "mapping/rect/units.h"

namespace zepbmp {
namespace {

uint8_t mean(uint32_t sum, int bits) { return static_cast<uint8_t>(sum >> bits); }
uint8_t rounded_mean(uint32_t sum, int bits) { return mean(sum + (1u << (bits - 1)), bits); }

void no_plan(const AreaColumns&, AreaScratch&) {}

void fill_weights(const AreaTarget& target, int32_t count) {
    if (target.weights)
        std::fill_n(target.weights, count, static_cast<uint16_t>(kWeightFull));
}

void rgbq(const AreaTarget& target, const AreaLines& lines, const AreaColumns& columns, AreaScratch&) {
    uint8_t* dst = target.pixels;
    for (int32_t i = 0; i < columns.count; ++i, dst += 4) {
        const auto sums = area_sums<RgbqSource>(lines, columns.spans[i], columns.inner_weight);
        for (int channel = 0; channel < 3; ++channel)
            dst[channel] = mean(sums.of[channel], kAreaBits);
    }
    fill_weights(target, columns.count);
}

void yuy2(const AreaTarget& target, const AreaLines& lines, const AreaColumns& columns, AreaScratch&) {
    uint8_t* dst = target.pixels;
    for (int32_t i = 0; i < columns.count; i += 2, dst += 4) {
        const auto first = area_sums<Yuy2Source>(lines, columns.spans[i], columns.inner_weight);
        const auto second = area_sums<Yuy2Source>(lines, columns.spans[i + 1], columns.inner_weight);
        dst[0] = rounded_mean(first.of[0], kAreaBits);
        dst[1] = rounded_mean(first.of[1] + second.of[1], kAreaBits + 1);
        dst[2] = rounded_mean(second.of[0], kAreaBits);
        dst[3] = rounded_mean(first.of[2] + second.of[2], kAreaBits + 1);
    }
    fill_weights(target, columns.count);
}

void rgb8(const AreaTarget& target, const AreaLines& lines, const AreaColumns& columns, AreaScratch&) {
    for (int32_t i = 0; i < columns.count; ++i)
        target.pixels[i] = mean(area_sums<Rgb8Source>(lines, columns.spans[i], columns.inner_weight).of[0], kAreaBits);
}

}  // namespace

extern constexpr AreaKernels kAreaPlain = {
    .plan_rgbq = no_plan,
    .plan_yuy2 = no_plan,
    .plan_rgb8 = no_plan,
    .rgbq = rgbq,
    .yuy2 = yuy2,
    .rgb8 = rgb8,
};

}  // namespace zepbmp
