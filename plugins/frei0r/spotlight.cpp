#include <algorithm>
#include <cmath>

#include "effects/feather.h"
#include "plugin.h"

namespace zepbmp::frei0r {

namespace {

constexpr uint32_t kWeightFull = 4096;

enum { kCentre, kRadius, kFeather, kDarkness, kColor, kCosine, kCentreAcross };

constexpr Parameter kParameters[] = {
    place("Centre", "The middle of the light; 0 is the frame's left or top, 1 its right or bottom", 0.5, 0.5),
    {"Radius", "Radius of the light, in parts of the frame's shorter side", 0.4},
    {"Feather", "Width of its soft edge, in parts of the frame's shorter side; 0 is a sharp edge", 0.15},
    {"Darkness", "How much of the picture the colour hides around the light: 0 nothing, 1 all of it", 0.7},
    {"Colour", "The colour around the light", f0r_param_color_t{0, 0, 0}},
    {"Cosine edge", "The soft edge begins and ends gently, instead of changing evenly", true},
    coordinate("Centre across", "The middle of the light, from 0 (left) to 1 (right)", 0.5),
    coordinate("Centre down", "The middle of the light, from 0 (top) to 1 (bottom)", 0.5),
};

/// The weight that is left of the picture where the light has a weight: darkness (0..4096) is taken off in the dark.
void leave_darkness(Bitmap& map, uint32_t darkness) {
    // dark * darkness / 4096 as the upper half of a product of 16-bit numbers, for which processors have vectors.
    const uint16_t factor = static_cast<uint16_t>(darkness * 2);
    for (int y = 0; y < map.height; ++y) {
        auto* const weights = reinterpret_cast<uint16_t*>(bmp_pointer(&map, 0, y));
        for (int x = 0; x < map.width; ++x) {
            const uint16_t dark = static_cast<uint16_t>((kWeightFull - weights[x]) * 8);
            weights[x] = static_cast<uint16_t>(kWeightFull - (uint32_t{dark} * factor >> 16));
        }
    }
}

class Spotlight : public Effect {
public:
    Spotlight(int width, int height) : light_(make_bitmap(width, height, BMP_FMT_PWRW)) {}

    bool ready() const override { return light_ != nullptr; }

    void draw(Bitmap& out, std::span<const Bitmap> in, const Values& values) override {
        bmp_copy(&out, &in[0], 0);  // for alpha, which mixing a colour leaves alone
        if (drawn_version_ != values.version()) {
            draw_light(values);
            drawn_version_ = values.version();
        }
        bmp_compose_color(&out, &out, nullptr, light_.get(), nullptr, values.color(kColor), 0);
    }

private:
    void draw_light(const Values& values) {
        const double shorter = std::min(light_->width, light_->height);
        const f0r_param_position_t centre = values.point(kCentre, kCentreAcross);
        const double radius = values.number(kRadius) * shorter;
        if (radius > 0)
            bmp_alpha_circle(light_.get(), static_cast<float>(centre.x * light_->width),
                             static_cast<float>(centre.y * light_->height), static_cast<float>(radius),
                             static_cast<float>(effects::drawn_feather(values.number(kFeather) * shorter)), 1,
                             values.flag(kCosine) ? BMP_SHAPE_COSINE : 0);
        else
            bmp_clear(light_.get(), 0);
        leave_darkness(*light_, static_cast<uint32_t>(std::lround(values.number(kDarkness) * kWeightFull)));
    }

    OwnedBitmap light_;  // weights of the picture itself
    uint64_t drawn_version_ = UINT64_MAX;
};

}  // namespace

const Plugin plugin = {"zepbmp spotlight", "A round light on the picture; around it a colour darkens what there is",
                       F0R_PLUGIN_TYPE_FILTER, kParameters, make_effect<Spotlight>};

}  // namespace zepbmp::frei0r
