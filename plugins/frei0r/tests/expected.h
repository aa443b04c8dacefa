/// \file
/// The frames that the effects have to give, drawn through the library's exports with geometry worked out here.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace zepbmp::test {

using Pixels = std::vector<uint32_t>;  ///< memory order red, green, blue, alpha; no padding

struct Place {
    double x;  ///< 0..1 is the frame
    double y;
};
using Rgb = std::array<float, 3>;

struct Wipe {
    double progress = 0.5;
    int shape = 0;  ///< circle, box, rounded box, band
    Place centre = {0.5, 0.5};
    double feather = 0.1;
    bool cosine = false;
    double roundness = 0.5;
    double band_width = 0.1;
    Rgb band_color = {1, 1, 1};
};
struct CornerPin {
    std::array<Place, 4> corners = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};  ///< clockwise from the top left
    bool transparent = true;
    Rgb background = {0, 0, 0};
};
struct Spotlight {
    Place centre = {0.5, 0.5};
    double radius = 0.4;
    double feather = 0.15;
    double darkness = 0.7;
    Rgb color = {0, 0, 0};
    bool cosine = true;
};

Pixels expected_dissolve(int width, int height, const Pixels& first, const Pixels& second, double progress);
Pixels expected_fly(int width, int height, const Pixels& first, const Pixels& second, double progress);
Pixels expected_wipe(int width, int height, const Pixels& first, const Pixels& second, const Wipe& wipe);
Pixels expected_corner_pin(int width, int height, const Pixels& picture, const CornerPin& pin);
Pixels expected_spotlight(int width, int height, const Pixels& picture, const Spotlight& light);
Pixels expected_interpolation(int width, int height, const Pixels& picture, bool lower);

}  // namespace zepbmp::test
