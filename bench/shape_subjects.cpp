#include "peers.h"
#include "subject.h"
#include "tests/model/model.h"

namespace zepbmp::bench {
namespace {

/// A disc in the middle of a frame; everything around it becomes 0.
Subject circle(const char* name, Size size, float radius, float feather, uint32_t flags, Target target) {
    const double pixels = static_cast<double>(size.width) * size.height, bytes = 2 * pixels;
    const float cx = static_cast<float>(size.width) / 2, cy = static_cast<float>(size.height) / 2;
    return {
        .name = size_name(name, size),
        .pixels = pixels,
        .bytes = bytes,
        .cached = size.cached,
        .frames = {{BMP_FMT_PWRW, size.width, size.height}},
        .call = [=](const FrameSet& f) { bmp_alpha_circle(f[0], cx, cy, radius, feather, 1, flags); },
        .model = [=](const FrameSet& f, int) { model::bmp_alpha_circle(f[0], cx, cy, radius, feather, 1, flags); },
        .yardstick = memset_of(bytes),
        .peers = {},
        .target = target,
    };
}

}  // namespace

std::vector<Subject> shape_subjects() {
    constexpr Size kFullHd = {1920, 1080, false};
    constexpr float kRadius = 400, kFeather = 80;
    return {
        circle("circle_linear", kFullHd, kRadius, kFeather, 0, {.mpixels = 9000, .yardstick = 0.6}),
        circle("circle_cosine", kFullHd, kRadius, kFeather, BMP_SHAPE_COSINE, {.mpixels = 9000, .yardstick = 0.6}),
        circle("circle_hard", kFullHd, kRadius, 0, 0, {}),
    };
}

}  // namespace zepbmp::bench
