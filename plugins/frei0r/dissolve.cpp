#include <cmath>

#include "plugin.h"

namespace zepbmp::frei0r {

namespace {

constexpr int kLevelFull = 4096;

enum { kProgress };

constexpr Parameter kParameters[] = {
    {"Progress", "How far picture 2 has replaced picture 1: 0 not at all, 1 wholly", 0.5}};

class Dissolve : public Effect {
public:
    Dissolve(int, int) {}

    void draw(Bitmap& out, std::span<const Bitmap> in, const Values& values) override {
        const long level = std::lround(values.number(kProgress) * kLevelFull);
        bmp_compose(&out, &in[0], &in[1], BMP_INTEGER(level), BMP_COMPOSE_LEVEL);
    }
};

}  // namespace

const Plugin plugin = {"zepbmp dissolve", "Dissolves picture 1 into picture 2", F0R_PLUGIN_TYPE_MIXER2, kParameters,
                       make_effect<Dissolve>};

}  // namespace zepbmp::frei0r
