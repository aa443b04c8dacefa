#include <algorithm>
#include <string>
#include <utility>

#include "peers.h"
#include "polygon_peers.h"
#include "rect_peers.h"
#include "subject.h"
#include "tests/model/model.h"

namespace zepbmp::bench {
namespace {

constexpr Size kEighth = {480, 270, false}, kHalf = {960, 540, false}, kHd = {1280, 720, false},
               kThreeQuarters = {1440, 810, false}, kFullHd = {1920, 1080, false}, kUhd = {3840, 2160, false};
constexpr Size kSmall = {480, 270, true}, kSmallTwoThirds = {320, 180, true}, kSmallHalf = {240, 135, true};
/// Of 1920 x 1080; widths of YUY2 are multiples of 8, as its planes have no padding.
constexpr Size kFraction = {1401, 788, false}, kFractionYuy2 = {1400, 788, false};

FrameShape shape(int32_t format, Size size) { return {format, size.width, size.height}; }
double area(double width, double height) { return width * height; }

double bytes_per_pixel(int32_t format) {
    switch (format) {
        case BMP_FMT_RGBQ: return 4;
        case BMP_FMT_YUY2: return 2;
        default: return 1;
    }
}

/// The destination, its weight map in the colour formats, the source.
FrameShapes frames_of(int32_t format, Size from, Size to) {
    FrameShapes frames = {shape(format, to)};
    if (format != BMP_FMT_RGB8)
        frames.push_back(shape(BMP_FMT_PWRW, to));
    frames.push_back(shape(format, from));
    return frames;
}

/// Of a source, in its pixels.
struct Part {
    float x, y, width, height;
};

/// Which lines are read and written.
enum class Lines { kAll, kField };

/// A part of the source onto the whole destination. A weight map is random in the first call on it, then 4096; at a
/// YUY2 line's ends it grows.
Subject mapped(std::string name, int32_t format, Size from, Size to, Part part, Lines lines, std::vector<Peer> peers,
               Target target) {
    const bool is_field = lines == Lines::kField, has_map = format != BMP_FMT_RGB8;
    const auto draw = [=](auto& map, const FrameSet& f) {
        Bitmap source = *f.back();
        source.create_flags = is_field ? BMP_FIELD : 0;
        map(f.front(), has_map ? f[1] : nullptr, 0, 0, static_cast<float>(to.width), static_cast<float>(to.height),
            &source, nullptr, part.x, part.y, part.x + part.width, part.y + part.height, is_field ? BMP_FIELD : 0);
    };
    // The fourth byte of RGBQ stays, so its pixels are read, too.
    const double touched = bytes_per_pixel(format) * (format == BMP_FMT_RGBQ ? 2 : 1) + (has_map ? 2 : 0);
    const double share = is_field ? 0.5 : 1;
    const double pixels = share * area(to.width, to.height);
    const double bytes = pixels * touched + share * area(part.width, part.height) * bytes_per_pixel(format);
    return {
        .name = size_name(name.c_str(), to),
        .pixels = pixels,
        .bytes = bytes,
        .cached = to.cached,
        .frames = frames_of(format, from, to),
        .written = has_map ? 2u : 1u,
        .call = [draw](const FrameSet& f) { draw(bmp_map_rect, f); },
        .model = [draw](const FrameSet& f, int) { draw(model::bmp_map_rect, f); },
        .yardstick = memcpy_of(bytes),
        .peers = std::move(peers),
        .target = target,
    };
}

Part whole(Size size) { return {0, 0, static_cast<float>(size.width), static_cast<float>(size.height)}; }

/// How many units of the destination, 4096 a pixel and 2048 a line, a source pixel spans is rounded up. Where that is
/// not exact, the library's picture drifts, by half a source line at the bottom, and others' do not.
bool has_exact_steps(Size from, Size to) {
    return 4096 * to.width % from.width == 0 && 2048 * to.height % from.height == 0;
}

enum class Libyuv { kBox, kNone };  ///< whether its filter is a box at a subject's ratio

Subject scaled(const std::string& name, int32_t format, Size from, Size to, Libyuv libyuv, Target target) {
    const FrameShapes frames = frames_of(format, from, to);
    const bool is_yuy2 = format == BMP_FMT_YUY2;
    std::vector<Peer> peers;
    if (libyuv == Libyuv::kBox)
        peers.push_back(is_yuy2 ? libyuv_box_planes(frames) : libyuv_box(frames));
    peers.push_back(is_yuy2 ? opencv_area_planes(frames) : opencv_area(frames));
    if (to.width < from.width)
        peers.push_back(swscale_area(frames));
    if (!has_exact_steps(from, to))
        std::for_each(peers.begin(), peers.end(), [](Peer& peer) { peer.picture = Picture::kOther; });
    return mapped(name, format, from, to, whole(from), Lines::kAll, std::move(peers), target);
}

// ---------------------------------------------------------------- the same scale, between the source's pixels

constexpr Part kShifted = {0.25f, 0.5f, 1920, 1080};
constexpr Size kBorderedHd = {1928, 1082, false};  ///< holds it

/// As a texture, which the peers sample bilinearly: at this scale the average over a pixel's area.
TexturedQuad shifted_quad() {
    const Part& p = kShifted;
    const float right = p.x + p.width, bottom = p.y + p.height;
    return {.outline = {{p.x, p.y, 1, 0, 0},
                        {right, p.y, 1, p.width, 0},
                        {right, bottom, 1, p.width, p.height},
                        {p.x, bottom, 1, 0, p.height}},
            .to_texture = {1, 0, p.x, 0, 1, p.y, 0, 0, 1},
            .part = {0, 0, kBorderedHd.width, kBorderedHd.height}};
}

/// The peer wants the destination and the source alone.
Peer without_map(Peer peer, const FrameShapes& frames) {
    return {peer.name, frames, [call = peer.call](const FrameSet& f) { call({f.front(), f.back()}); }, peer.picture};
}

Subject shifted(const std::string& name, int32_t format) {
    const FrameShape frame = shape(format, kFullHd), source = shape(format, kBorderedHd);
    const FrameShapes frames = frames_of(format, kBorderedHd, kFullHd);
    const TexturedQuad quad = shifted_quad();
    std::vector<Peer> peers;
    if (format == BMP_FMT_YUY2) {
        peers.push_back(
            without_map(opencv_warp_planes(frame, source, quad, View::kAffine, Sampling::kBilinear), frames));
    } else {
        peers.push_back(without_map(opencv_warp(frame, source, quad, View::kAffine, Sampling::kBilinear), frames));
        peers.push_back(without_map(pixman_quad(frame, source, quad, Sampling::kBilinear), frames));
    }
    return mapped(name, format, kBorderedHd, kFullHd, kShifted, Lines::kAll, std::move(peers), {});
}

}  // namespace

std::vector<Subject> rect_subjects() {
    constexpr auto kBox = Libyuv::kBox;
    constexpr auto kNone = Libyuv::kNone;
    constexpr int32_t kRgbq = BMP_FMT_RGBQ, kYuy2 = BMP_FMT_YUY2, kRgb8 = BMP_FMT_RGB8;
    // Peers are, in this order, libyuv where it has a box, OpenCV, swscale.
    return {
        scaled("rect_rgbq_3to2", kRgbq, kFullHd, kHd, kNone, {.mpixels = 1650, .mpixels_avx2 = 650, .peer = {15, 12}}),
        scaled("rect_rgbq_fraction", kRgbq, kFullHd, kFraction, kNone,
               {.mpixels = 1550, .mpixels_avx2 = 650, .peer = {15, 12}}),
        scaled("rect_rgbq_4to3", kRgbq, kFullHd, kThreeQuarters, kNone, {}),
        scaled("rect_rgbq_2to1", kRgbq, kFullHd, kHalf, kBox,
               {.mpixels = 1450, .mpixels_avx2 = 1000, .peer = {1.7, 2.4}}),
        scaled("rect_rgbq_2to1", kRgbq, kUhd, kFullHd, kBox,
               {.mpixels = 1650, .mpixels_avx2 = 1000, .peer = {1.7, 2.4}}),
        scaled("rect_rgbq_4to1", kRgbq, kUhd, kHalf, kBox, {}),
        scaled("rect_rgbq_8to1", kRgbq, kUhd, kEighth, kNone, {}),
        shifted("rect_rgbq_shift", kRgbq),
        scaled("rect_rgbq_enlarge", kRgbq, kHd, kFullHd, kNone, {}),
        scaled("rect_yuy2_3to2", kYuy2, kFullHd, kHd, kNone, {.mpixels = 2400, .peer = {0, 4}}),
        scaled("rect_yuy2_fraction", kYuy2, kFullHd, kFractionYuy2, kNone, {.mpixels = 2400, .peer = {0, 4}}),
        scaled("rect_yuy2_4to3", kYuy2, kFullHd, kThreeQuarters, kNone, {}),
        scaled("rect_yuy2_2to1", kYuy2, kFullHd, kHalf, kBox, {.mpixels = 2600, .peer = {1.3}}),
        scaled("rect_yuy2_2to1", kYuy2, kUhd, kFullHd, kBox, {.mpixels = 2600, .peer = {1.3}}),
        shifted("rect_yuy2_shift", kYuy2),
        mapped("rect_yuy2_field", kYuy2, kFullHd, kHd, whole(kFullHd), Lines::kField, {}, {}),
        scaled("rect_rgb8_3to2", kRgb8, kFullHd, kHd, kNone, {.mpixels = 3500, .peer = {0, 3}}),
        scaled("rect_rgb8_fraction", kRgb8, kFullHd, kFraction, kNone, {.mpixels = 3500, .peer = {0, 3}}),
        scaled("rect_rgb8_4to3", kRgb8, kFullHd, kThreeQuarters, kNone, {}),
        scaled("rect_rgb8_2to1", kRgb8, kFullHd, kHalf, kBox, {.mpixels = 6000, .peer = {1.5}}),
        scaled("rect_rgbq_3to2", kRgbq, kSmall, kSmallTwoThirds, kNone, {}),
        scaled("rect_rgbq_2to1", kRgbq, kSmall, kSmallHalf, kBox, {}),
        scaled("rect_yuy2_3to2", kYuy2, kSmall, kSmallTwoThirds, kNone, {}),
        scaled("rect_yuy2_2to1", kYuy2, kSmall, kSmallHalf, kBox, {}),
        scaled("rect_rgb8_3to2", kRgb8, kSmall, kSmallTwoThirds, kNone, {}),
        scaled("rect_rgb8_2to1", kRgb8, kSmall, kSmallHalf, kBox, {}),
    };
}

}  // namespace zepbmp::bench
