#include "peers.h"
#include "subject.h"
#include "tests/model/model.h"

namespace zepbmp::bench {
namespace {

constexpr Size kSizes[] = {{1920, 1080, false}, {240, 135, true}};
constexpr uint32_t kColor = 0x40b27d;

Subject band(const char* name, Size size, int32_t format) {
    const FrameShape frame = {format, size.width, size.height}, mask = {BMP_FMT_PWRW, size.width, size.height};
    const double pixels = static_cast<double>(size.width) * size.height;
    const double bytes = pixels * (3 * (format == BMP_FMT_RGBQ ? 4 : 2) + 4);
    return {
        .name = size_name(name, size),
        .pixels = pixels,
        .bytes = bytes,
        .cached = size.cached,
        .frames = {frame, frame, frame, mask, mask},
        .call = [](const FrameSet& f) { bmp_compose_color(f[0], f[1], f[2], f[3], f[4], kColor, 0); },
        .model = [](const FrameSet& f,
                    int level) { model::bmp_compose_color(f[0], f[1], f[2], f[3], f[4], kColor, 0, level); },
        .yardstick = memcpy_of(bytes),
        .peers = {},
        .target = {},
    };
}

Subject color(const char* name, Size size, int32_t format) {
    const FrameShape frame = {format, size.width, size.height}, mask = {BMP_FMT_PWRW, size.width, size.height};
    const double pixels = static_cast<double>(size.width) * size.height;
    const double bytes = pixels * (2 * (format == BMP_FMT_RGBQ ? 4 : 2) + 2);
    return {
        .name = size_name(name, size),
        .pixels = pixels,
        .bytes = bytes,
        .cached = size.cached,
        .frames = {frame, frame, mask},
        .call = [](const FrameSet& f) { bmp_compose_color(f[0], f[1], nullptr, f[2], nullptr, kColor, 0); },
        .model = [](const FrameSet& f,
                    int level) { model::bmp_compose_color(f[0], f[1], nullptr, f[2], nullptr, kColor, 0, level); },
        .yardstick = memcpy_of(bytes),
        .peers = {},
        .target = {},
    };
}

}  // namespace

std::vector<Subject> color_subjects() {
    std::vector<Subject> subjects;
    for (const Size size : kSizes) {
        subjects.push_back(band("color_rgbq_band", size, BMP_FMT_RGBQ));
        subjects.push_back(band("color_yuy2_band", size, BMP_FMT_YUY2));
        subjects.push_back(color("color_rgbq", size, BMP_FMT_RGBQ));
        subjects.push_back(color("color_yuy2", size, BMP_FMT_YUY2));
    }
    return subjects;
}

}  // namespace zepbmp::bench
