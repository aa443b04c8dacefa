#include <algorithm>

#include "alpha.h"
#include "effects/feather.h"
#include "effects/reach.h"
#include "effects/soft_box.h"
#include "plugin.h"

namespace zepbmp::frei0r {

namespace {

enum {
    kProgress,
    kShape,
    kCentre,
    kFeather,
    kCosine,
    kRoundness,
    kBandWidth,
    kBandColor,
    kCentreAcross,
};

constexpr Parameter kParameters[] = {
    {"Progress", "How far picture 2 has replaced picture 1: 0 not at all, 1 wholly", 0.5},
    {"Shape", "0 circle, 0.25 box, 0.5 box with rounded corners, 0.75 circle with a coloured band around it", 0.0},
    place("Centre", "Where the shape grows from; 0 is the frame's left or top, 1 its right or bottom", 0.5, 0.5),
    {"Feather", "Width of the soft edge, in parts of the frame's shorter side; 0 is a sharp edge", 0.1},
    {"Cosine edge", "The soft edge begins and ends gently, instead of changing evenly", false},
    {"Corner radius", "Of a box with rounded corners, in parts of half its shorter side", 0.5},
    {"Band width", "Of a circle's band, in parts of the frame's shorter side", 0.1},
    {"Band colour", "Colour of a circle's band", f0r_param_color_t{1, 1, 1}},
    coordinate("Centre across", "Where the shape grows from, from 0 (left) to 1 (right)", 0.5),
    coordinate("Centre down", "Where the shape grows from, from 0 (top) to 1 (bottom)", 0.5),
};

enum class Shape { kCircle, kBox, kRoundedBox, kBand };
constexpr int kShapes = 4;

Shape shape_of(double value) { return static_cast<Shape>(std::min(static_cast<int>(value * kShapes), kShapes - 1)); }

class Wipe : public Effect {
public:
    Wipe(int width, int height)
        : shorter_(std::min(width, height)),
          map_(make_bitmap(width, height, BMP_FMT_PWRW)),
          outer_map_(make_bitmap(width, height, BMP_FMT_PWRW)),
          box_(width, height) {}

    bool ready() const override { return map_ && outer_map_ && box_.ready(); }

    void draw(Bitmap& out, std::span<const Bitmap> in, const Values& values) override {
        const double progress = values.number(kProgress);
        if (progress <= 0 || progress >= 1) {
            bmp_copy(&out, progress <= 0 ? &in[0] : &in[1], 0);
            return;
        }
        const f0r_param_position_t centre = values.point(kCentre, kCentreAcross);
        const double x = centre.x * out.width, y = centre.y * out.height;
        const effects::Reach reach(x, y, out.width, out.height);
        const double feather = effects::drawn_feather(values.number(kFeather) * shorter_);
        const Shape shape = shape_of(values.number(kShape));
        if (shape == Shape::kBand) {
            const double band = values.number(kBandWidth) * shorter_;
            const double outer = progress * (reach.corner() + feather + band);
            draw_circle(*map_, x, y, outer - band, feather, values);
            draw_circle(*outer_map_, x, y, outer, feather, values);
            bmp_compose_color(&out, &in[0], &in[1], map_.get(), outer_map_.get(), values.color(kBandColor), 0);
            round_alpha(out, in[0], in[1], *map_, *outer_map_);
            return;
        }
        if (shape == Shape::kCircle)
            draw_circle(*map_, x, y, progress * (reach.corner() + feather), feather, values);
        else
            draw_box(x, y, reach, shape == Shape::kRoundedBox ? values.number(kRoundness) : 0, feather, values);
        bmp_compose(&out, &in[0], &in[1], map_.get(), 0);
        round_alpha(out, in[0], in[1], *map_, *map_);
    }

private:
    void draw_circle(Bitmap& map, double x, double y, double radius, double feather, const Values& values) const {
        if (radius > 0)
            bmp_alpha_circle(&map, static_cast<float>(x), static_cast<float>(y), static_cast<float>(radius),
                             static_cast<float>(feather), 1, values.flag(kCosine) ? BMP_SHAPE_COSINE : 0);
        else
            bmp_clear(&map, 0);
    }

    /// Its full size covers the frame, corners and soft edge included.
    void draw_box(double x, double y, const effects::Reach& reach, double roundness, double feather,
                  const Values& values) {
        const double progress = values.number(kProgress);
        const double radius = roundness * std::min(reach.x, reach.y);
        const double beyond = feather + effects::cut_by_arc(radius);
        box_.draw(*map_, {.centre_x = x,
                          .centre_y = y,
                          .half_width = progress * (reach.x + beyond),
                          .half_height = progress * (reach.y + beyond),
                          .radius = progress * radius,
                          .feather = feather,
                          .cosine = values.flag(kCosine)});
    }

    double shorter_;  // pixels, of the frame's sides
    OwnedBitmap map_;
    OwnedBitmap outer_map_;  // of a band
    effects::SoftBox box_;
};

}  // namespace

const Plugin plugin = {"zepbmp wipe", "Picture 2 grows over picture 1 out of a circle or a box", F0R_PLUGIN_TYPE_MIXER2,
                       kParameters, make_effect<Wipe>};

}  // namespace zepbmp::frei0r
