#include "peers.h"
#include "subject.h"
#include "tests/model/model.h"

namespace zepbmp::bench {
namespace {

constexpr Size kFullHd = {1920, 1080, false}, kUhd = {3840, 2160, false}, kSmall = {240, 135, true};

double area(Size size) { return static_cast<double>(size.width) * size.height; }

Subject clear(Size size) {
    const double bytes = 4 * area(size);
    return {
        .name = size_name("clear_rgbq", size),
        .pixels = area(size),
        .bytes = bytes,
        .cached = size.cached,
        .frames = {{BMP_FMT_RGBQ, size.width, size.height}},
        .call = [](const FrameSet& f) { bmp_clear(f[0], 0); },
        .model = [](const FrameSet& f, int) { model::bmp_clear(f[0], 0); },
        .yardstick = memset_of(bytes),
        .peers = {},
        .target = {.yardstick = 1},
    };
}

Subject copy(Size size) {
    const FrameShape frame = {BMP_FMT_RGBQ, size.width, size.height};
    const double bytes = 8 * area(size);
    return {
        .name = size_name("copy_rgbq", size),
        .pixels = area(size),
        .bytes = bytes,
        .cached = size.cached,
        .frames = {frame, frame},
        .call = [](const FrameSet& f) { bmp_copy(f[0], f[1], 0); },
        .model = [](const FrameSet& f, int) { model::bmp_copy(f[0], f[1], 0); },
        .yardstick = memcpy_of(bytes),
        .peers = {},
        .target = {.yardstick = 1},
    };
}

Subject copy_field(Size size) {
    const FrameShape frame = {BMP_FMT_RGBQ, size.width, size.height};
    const double pixels = area(size) / 2, bytes = 8 * pixels;
    return {
        .name = size_name("copy_field_rgbq", size),
        .pixels = pixels,
        .bytes = bytes,
        .cached = size.cached,
        .frames = {frame, frame},
        .call = [](const FrameSet& f) { bmp_copy(f[0], f[1], BMP_FIELD); },
        .model = [](const FrameSet& f, int) { model::bmp_copy(f[0], f[1], BMP_FIELD); },
        .yardstick = memcpy_of(bytes),
        .peers = {libyuv_copy_field(frame)},
        .target = {},
    };
}

/// Neither end of a line is aligned.
Subject blt() {
    constexpr int32_t kWidth = 1000, kHeight = 700, kDestX = 101, kDestY = 77, kSrcX = 38, kSrcY = 53;
    const FrameShape frame = {BMP_FMT_RGBQ, kFullHd.width, kFullHd.height};
    const double pixels = static_cast<double>(kWidth) * kHeight, bytes = 8 * pixels;
    return {
        .name = "blt_rgbq/1000x700",
        .pixels = pixels,
        .bytes = bytes,
        .cached = false,
        .frames = {frame, frame},
        .call = [](const FrameSet& f) { bmp_blt(f[0], kDestX, kDestY, kWidth, kHeight, f[1], kSrcX, kSrcY, 0); },
        .model = [](const FrameSet& f,
                    int) { model::bmp_blt(f[0], kDestX, kDestY, kWidth, kHeight, f[1], kSrcX, kSrcY, 0); },
        .yardstick = memcpy_of(bytes),
        .peers = {libyuv_copy_rectangle(frame, {4 * kDestX, kDestY, 4 * kSrcX, kSrcY, 4 * kWidth, kHeight})},
        .target = {},
    };
}

/// Reads the lines of one field, writes all.
Subject interporate(Size size, Target target) {
    const FrameShape frame = {BMP_FMT_YUY2, size.width, size.height};
    const double bytes = 3 * area(size);
    return {
        .name = size_name("interporate_yuy2", size),
        .pixels = area(size),
        .bytes = bytes,
        .cached = size.cached,
        .frames = {frame, frame},
        .call = [](const FrameSet& f) { bmp_interporate(f[0], f[1], 0); },
        .model = [](const FrameSet& f, int) { model::bmp_interporate(f[0], f[1], 0); },
        .yardstick = memcpy_of(bytes),
        .peers = {libyuv_field_to_frame(frame)},
        .target = target,
    };
}

}  // namespace

std::vector<Subject> line_subjects() {
    return {
        clear(kFullHd),
        clear(kUhd),
        clear(kSmall),
        copy(kFullHd),
        copy(kUhd),
        copy(kSmall),
        copy_field(kFullHd),
        blt(),
        interporate(kFullHd, {.mpixels = 12000, .peer = {1.1}}),
        interporate(kUhd, {.mpixels = 13500, .peer = {1.1}}),
        interporate(kSmall, {}),
    };
}

}  // namespace zepbmp::bench
