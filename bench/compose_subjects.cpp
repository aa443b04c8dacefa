#include <utility>

#include "peers.h"
#include "subject.h"
#include "tests/model/model.h"

namespace zepbmp::bench {
namespace {

constexpr Size kSizes[] = {{1920, 1080, false}, {3840, 2160, false}, {480, 270, true}, {240, 135, true}};

double area(Size size) { return static_cast<double>(size.width) * size.height; }

/// Which of an operation's targets a size has.
Target pick(Size size, Target full_hd, Target uhd, Target small, Target smallest) {
    switch (size.width) {
        case 1920: return full_hd;
        case 3840: return uhd;
        case 480: return small;
        default: return smallest;
    }
}

Subject masked(const char* name, Size size, int32_t format, int32_t mask_format, Target target) {
    const bool rgbq = format == BMP_FMT_RGBQ;
    const FrameShape frame = {format, size.width, size.height}, mask = {mask_format, size.width, size.height};
    const double bytes = area(size) * (3 * (rgbq ? 4 : 2) + (mask_format == BMP_FMT_A8 ? 1 : 2));
    return {
        .name = size_name(name, size),
        .pixels = area(size),
        .bytes = bytes,
        .cached = size.cached,
        .frames = {frame, frame, frame, mask},
        .call = [](const FrameSet& f) { bmp_compose(f[0], f[1], f[2], f[3], 0); },
        .model = [](const FrameSet& f, int level) { model::bmp_compose(f[0], f[1], f[2], f[3], 0, level); },
        .yardstick = memcpy_of(bytes),
        .peers = {rgbq ? libyuv_blend_rgbq(size) : libyuv_blend_yuy2(size)},
        .target = target,
    };
}

Subject at_level(const char* name, Size size, int32_t format, int level, Target target) {
    const bool rgbq = format == BMP_FMT_RGBQ;
    const FrameShape frame = {format, size.width, size.height};
    const double bytes = area(size) * 3 * (rgbq ? 4 : 2);
    return {
        .name = size_name(name, size),
        .pixels = area(size),
        .bytes = bytes,
        .cached = size.cached,
        .frames = {frame, frame, frame},
        .call = [level](const FrameSet& f) { bmp_compose(f[0], f[1], f[2], BMP_INTEGER(level), BMP_COMPOSE_LEVEL); },
        .model =
            [level](const FrameSet& f, int cpu_level) {
                model::bmp_compose(f[0], f[1], f[2], BMP_INTEGER(level), BMP_COMPOSE_LEVEL, cpu_level);
            },
        .yardstick = memcpy_of(bytes),
        .peers = {rgbq ? libyuv_interpolate_rgbq(size, level) : libyuv_interpolate_yuy2(size, level)},
        .target = target,
    };
}

}  // namespace

std::vector<Subject> compose_subjects() {
    constexpr int kThird = 1365, kHalf = 2048;
    constexpr Target kRgbqMemory = {.mpixels = 3200, .yardstick = 1.25, .peer = {1.4}};
    constexpr Target kRgbqCached = {.mpixels = 12000, .mpixels_avx2 = 6300, .peer = {1.5}};
    constexpr Target kRgbqLevelMemory = {.mpixels = 3900, .yardstick = 1.3, .peer = {1.25}};
    constexpr Target kYuy2Memory = {.mpixels = 5500, .yardstick = 1.25, .peer = {1.2}};
    constexpr Target kYuy2Cached = {.mpixels = 24000, .mpixels_avx2 = 12500};
    constexpr Target kYuy2CachedPeer = {.peer = {1.6}};  // at 240 x 135 the chroma planes do not fill its vectors
    constexpr Target kYuy2BytesMemory = {.mpixels = 6300, .yardstick = 1.25};
    std::vector<Subject> subjects;
    for (const Size size : kSizes) {
        const auto add = [&](Subject subject) { subjects.push_back(std::move(subject)); };
        add(masked("compose_rgbq_w16", size, BMP_FMT_RGBQ, BMP_FMT_PWRW,
                   pick(size, kRgbqMemory, kRgbqMemory, {}, kRgbqCached)));
        add(masked("compose_rgbq_a8", size, BMP_FMT_RGBQ, BMP_FMT_A8, {}));
        add(masked("compose_yuy2_w16", size, BMP_FMT_YUY2, BMP_FMT_PWRW,
                   pick(size, kYuy2Memory, {}, kYuy2CachedPeer, kYuy2Cached)));
        add(masked("compose_yuy2_a8", size, BMP_FMT_YUY2, BMP_FMT_A8, pick(size, kYuy2BytesMemory, {}, {}, {})));
        add(at_level("compose_rgbq_level", size, BMP_FMT_RGBQ, kThird,
                     pick(size, kRgbqLevelMemory, {}, {}, {.mpixels = 12000})));
        add(at_level("compose_rgbq_level_half", size, BMP_FMT_RGBQ, kHalf, pick(size, {}, {}, {}, {.mpixels = 17000})));
        add(at_level("compose_yuy2_level", size, BMP_FMT_YUY2, kThird, {}));
        add(at_level("compose_yuy2_level_half", size, BMP_FMT_YUY2, kHalf, {}));
    }
    return subjects;
}

}  // namespace zepbmp::bench
