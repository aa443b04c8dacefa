#include "effects/stage.h"
#include "plugin.h"

namespace zepbmp::frei0r {

namespace {

enum { kProgress };

constexpr Parameter kParameters[] = {
    {"Progress", "How near picture 2 has come: 0 out of sight, 1 it fills the frame", 0.5}};

class Fly : public Effect {
public:
    Fly(int width, int height) : stage_(width, height, 1) {}

    void draw(Bitmap& out, std::span<const Bitmap> in, const Values& values) override {
        const double progress = values.number(kProgress);
        bmp_copy(&out, progress < 1 ? &in[0] : &in[1], 0);
        if (progress <= 0 || progress >= 1)
            return;
        const effects::Quad quad = stage_.flying(progress, 0);
        bmp_map_polygon(&out, nullptr, nullptr, &in[1], nullptr, quad.data(), static_cast<int32_t>(quad.size()),
                        BMP_MAP_ANTIALIAS);
    }

private:
    effects::Stage stage_;
};

}  // namespace

const Plugin plugin = {"zepbmp fly", "Picture 2 flies in over picture 1, turned in space, with smooth edges",
                       F0R_PLUGIN_TYPE_MIXER2, kParameters, make_effect<Fly>};

}  // namespace zepbmp::frei0r
