#include <cmath>
#include <numbers>

#include "drawing_peers.h"
#include "peers.h"
#include "subject.h"
#include "tests/model/model.h"

namespace zepbmp::bench {
namespace {

constexpr int32_t kFrameWidth = 1920, kFrameHeight = 1080;
constexpr uint32_t kColor = 0x80402010;

/// Neither end of a line is aligned.
constexpr Rectangle kRect = {101, 77, 1000, 700}, kSmallRect = {13, 7, 200, 120};

struct RectCase {
    const char* name;
    int32_t format;
    uint32_t mode;
    int32_t bytes;  ///< of a pixel, as often as they are moved
};

Subject draw_rect(const RectCase& c, const Rectangle& r, bool cached) {
    const FrameShape frame = cached ? FrameShape{c.format, 240, 135} : FrameShape{c.format, kFrameWidth, kFrameHeight};
    const double pixels = static_cast<double>(r.width) * r.height, bytes = pixels * c.bytes;
    const auto draw = [=](auto& function) {
        return [=, &function](const FrameSet& f, auto...) {
            function(f[0], r.left, r.top, r.left + r.width, r.top + r.height, kColor, c.mode);
        };
    };
    Subject subject = {
        .name = size_name(c.name, {r.width, r.height, cached}),
        .pixels = pixels,
        .bytes = bytes,
        .cached = cached,
        .frames = {frame},
        .call = draw(bmp_draw_rect),
        .model = draw(model::bmp_draw_rect),
        .yardstick = c.mode == 0 ? memset_of(bytes) : memcpy_of(bytes),
        .peers = {},
        .target = {},
    };
    if (c.format == BMP_FMT_RGBQ) {
        subject.peers.push_back(libyuv_rectangle(frame, r, kColor));
        subject.target.yardstick = 1;
    }
    return subject;
}

/// Spokes of a wheel, at every angle.
std::vector<LineEnds> spokes() {
    constexpr int32_t kCount = 500, kX = 960, kY = 540;
    constexpr double kRadius = 500;
    std::vector<LineEnds> lines;
    for (int32_t i = 0; i < kCount; ++i) {
        const double angle = 2 * std::numbers::pi * i / kCount;
        lines.push_back({kX, kY, kX + static_cast<int32_t>(kRadius * std::cos(angle)),
                         kY + static_cast<int32_t>(kRadius * std::sin(angle))});
    }
    return lines;
}

Subject draw_lines(const char* name, uint32_t mode) {
    const FrameShape frame = {BMP_FMT_RGB8, kFrameWidth, kFrameHeight};
    const std::vector<LineEnds> lines = spokes();
    double pixels = 0;
    for (const LineEnds& line : lines)
        pixels += std::max(std::abs(line.x1 - line.x0), std::abs(line.y1 - line.y0));
    const auto draw = [=](auto& function) {
        return [=, &function](const FrameSet& f, auto...) {
            for (const LineEnds& line : lines)
                function(f[0], line.x0, line.y0, line.x1, line.y1, kColor, mode);
        };
    };
    Subject subject = {
        .name = size_name(name, {kFrameWidth, kFrameHeight, false}),
        .pixels = pixels,
        .bytes = 2 * pixels,
        .cached = false,
        .frames = {frame},
        .call = draw(bmp_draw_line),
        .model = draw(model::bmp_draw_line),
        .yardstick = memcpy_of(2 * pixels),
        .peers = {},
        .target = {},
    };
    if (mode == 0)
        subject.peers.push_back(opencv_lines(frame, lines, kColor));
    return subject;
}

}  // namespace

std::vector<Subject> drawing_subjects() {
    constexpr RectCase kRgbq = {"draw_rect_rgbq", BMP_FMT_RGBQ, 0, 4}, kPwrw = {"draw_rect_pwrw", BMP_FMT_PWRW, 0, 2},
                       kMask = {"draw_rect_rgb8_or", BMP_FMT_RGB8, 16, 2};
    return {
        draw_rect(kRgbq, kRect, false),      draw_rect(kPwrw, kRect, false),         draw_rect(kMask, kRect, false),
        draw_rect(kRgbq, kSmallRect, true),  draw_rect(kPwrw, kSmallRect, true),     draw_rect(kMask, kSmallRect, true),
        draw_lines("draw_line_rgb8_set", 0), draw_lines("draw_line_rgb8_xor", 0x30),
    };
}

}  // namespace zepbmp::bench
