#include "plugin.h"

namespace zepbmp::frei0r {

namespace {

enum { kLowerField };

constexpr Parameter kParameters[] = {
    {"Lower field", "The field to keep: off the upper one (lines 0, 2, 4, ...), on the lower one (1, 3, 5, ...)",
     false}};

class Interpolate : public Effect {
public:
    Interpolate(int, int) {}

    void draw(Bitmap& out, std::span<const Bitmap> in, const Values& values) override {
        if (out.height < 2)
            bmp_copy(&out, &in[0], 0);  // has no lower field
        else
            bmp_interporate(&out, &in[0], values.flag(kLowerField) ? BMP_FIELD_ODD : 0);
    }
};

}  // namespace

const Plugin plugin = {"zepbmp interpolate", "Rebuilds the whole frame from one of its two fields",
                       F0R_PLUGIN_TYPE_FILTER, kParameters, make_effect<Interpolate>};

}  // namespace zepbmp::frei0r
