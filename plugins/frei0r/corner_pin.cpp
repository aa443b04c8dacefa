#include "alpha.h"
#include "effects/pinned_quad.h"
#include "plugin.h"

namespace zepbmp::frei0r {

namespace {

// Clockwise, as quads are; the coordinates stand in the same order.
enum {
    kTopLeft,
    kTopRight,
    kBottomRight,
    kBottomLeft,
    kTransparent,
    kBackground,
    kTopLeftAcross,
    kTopRightAcross = kTopLeftAcross + 2,
    kBottomRightAcross = kTopRightAcross + 2,
    kBottomLeftAcross = kBottomRightAcross + 2,
};

constexpr Parameter kParameters[] = {
    place("Top left", "Where the picture's top left corner goes; 0 is the frame's left or top, 1 its right or bottom",
          0, 0),
    place("Top right", "Where the top right corner goes", 1, 0),
    place("Bottom right", "Where the bottom right corner goes", 1, 1),
    place("Bottom left", "Where the bottom left corner goes", 0, 1),
    {"Transparent", "What the picture does not cover is transparent, instead of the background colour", true},
    {"Background", "The colour around the picture where that is not transparent", f0r_param_color_t{0, 0, 0}},
    coordinate("Top left across", "Where the top left corner goes, from 0 (left) to 1 (right)", 0),
    coordinate("Top left down", "Where the top left corner goes, from 0 (top) to 1 (bottom)", 0),
    coordinate("Top right across", "Where the top right corner goes, from 0 (left) to 1 (right)", 1),
    coordinate("Top right down", "Where the top right corner goes, from 0 (top) to 1 (bottom)", 0),
    coordinate("Bottom right across", "Where the bottom right corner goes, from 0 (left) to 1 (right)", 1),
    coordinate("Bottom right down", "Where the bottom right corner goes, from 0 (top) to 1 (bottom)", 1),
    coordinate("Bottom left across", "Where the bottom left corner goes, from 0 (left) to 1 (right)", 0),
    coordinate("Bottom left down", "Where the bottom left corner goes, from 0 (top) to 1 (bottom)", 1),
};
static_assert(std::size(kParameters) == kBottomLeftAcross + 2 && std::size(kParameters) <= kMostParameters);

class CornerPin : public Effect {
public:
    CornerPin(int width, int height) : coverage_(make_bitmap(width, height, BMP_FMT_PWRW)) {}

    bool ready() const override { return coverage_ != nullptr; }

    void draw(Bitmap& out, std::span<const Bitmap> in, const Values& values) override {
        std::array<effects::PixelPoint, 4> corners;
        bool in_place = true;
        for (size_t i = 0; i < corners.size(); ++i) {
            const f0r_param_position_t point = values.point(kTopLeft + i, kTopLeftAcross + 2 * i);
            const auto& home = *std::get_if<f0r_param_position_t>(&kParameters[kTopLeft + i].initial);
            in_place = in_place && point.x == home.x && point.y == home.y;
            corners[i] = {point.x * out.width, point.y * out.height};
        }
        if (in_place) {
            bmp_copy(&out, &in[0], 0);
            return;
        }
        const effects::Quad quad = effects::pinned(corners, out.width, out.height);
        const bool transparent = values.flag(kTransparent);
        if (transparent) {
            bmp_clear(&out, 0);
            bmp_clear(coverage_.get(), 0);
        } else {
            bmp_draw_rect(&out, 0, 0, out.width, out.height, values.color(kBackground), 0);
        }
        bmp_map_polygon(&out, transparent ? coverage_.get() : nullptr, nullptr, &in[0], nullptr, quad.data(),
                        static_cast<int32_t>(quad.size()), BMP_MAP_ANTIALIAS);
        if (transparent)
            divide_by_coverage(out, *coverage_);
    }

private:
    OwnedBitmap coverage_;
};

}  // namespace

const Plugin plugin = {"zepbmp corner pin", "Pins the picture's corners to four points, in perspective",
                       F0R_PLUGIN_TYPE_FILTER, kParameters, make_effect<CornerPin>};

}  // namespace zepbmp::frei0r
