#include <cstring>
#include <utility>

#include "peers.h"
#include "polygon_peers.h"
#include "quads.h"
#include "subject.h"
#include "tests/model/model.h"

namespace zepbmp::bench {
namespace {

constexpr Size kFullHd = {1920, 1080, false}, kUhd = {3840, 2160, false}, kUhd8K = {7680, 4320, false};
constexpr uint32_t kColor = 0xff40b27d;

FrameShape shape(int32_t format, Size size) { return {format, size.width, size.height}; }

double bytes_per_pixel(int32_t format) {
    switch (format) {
        case BMP_FMT_A8: return 1;
        case BMP_FMT_RGBQ: return 4;
        default: return 2;
    }
}

// ---------------------------------------------------------------- textured quads

struct Mapping {
    View view;
    Sampling sampling;
    Size texture;
    double reduction;  ///< texels a pixel; decides the filter
};

constexpr Mapping kNearest = {View::kAffine, Sampling::kNearest, kFullHd, 0.99};
constexpr Mapping kBilinear = {View::kAffine, Sampling::kBilinear, kFullHd, 0.99};
constexpr Mapping kPerspNearest = {View::kPerspective, Sampling::kNearest, kFullHd, 0.9};
constexpr Mapping kPerspBilinear = {View::kPerspective, Sampling::kBilinear, kFullHd, 0.9};
constexpr Mapping kBox2 = {View::kAffine, Sampling::kBox2, kUhd, 1.75};
constexpr Mapping kBox4 = {View::kAffine, Sampling::kBox4, kUhd8K, 3.4};

TexturedQuad quad_of(const Mapping& mapping) {
    return turned_quad(kFullHd, mapping.texture, mapping.reduction, mapping.view);
}

/// What differs from a plain copy of the texture's pixels.
struct Extras {
    double bytes_per_pixel = 0;  ///< beside the texture's and the written ones
    size_t written = 1;
    std::vector<FrameShape> frames = {};  ///< between the destination and the texture
};

/// `draw(map, frames)` calls the library or its model.
template <class Draw>
Subject quad(const char* name, int32_t format, int32_t texture_format, const Mapping& mapping, Draw draw,
             std::vector<Peer> peers, Target target, Extras extras = {}) {
    const double pixels = covered_pixels(quad_of(mapping).outline, kFullHd);
    const double texels = mapping.reduction * mapping.reduction;
    const double bytes =
        pixels * (bytes_per_pixel(format) + texels * bytes_per_pixel(texture_format) + extras.bytes_per_pixel);
    std::vector<FrameShape> frames = {shape(format, kFullHd)};
    frames.insert(frames.end(), extras.frames.begin(), extras.frames.end());
    frames.push_back(shape(texture_format, mapping.texture));
    target.scaled = false;
    return {
        .name = size_name(name, kFullHd),
        .pixels = pixels,
        .bytes = bytes,
        .cached = false,
        .frames = std::move(frames),
        .written = extras.written,
        .call = [draw](const FrameSet& f) { draw(bmp_map_polygon, f); },
        .model = [draw](const FrameSet& f, int) { draw(model::bmp_map_polygon, f); },
        .yardstick = memcpy_of(bytes),
        .peers = std::move(peers),
        .target = target,
    };
}

Subject copied(const char* name, int32_t format, const Mapping& mapping, std::vector<Peer> peers, Target target,
               uint32_t flags = 0) {
    if (mapping.sampling == Sampling::kNearest)
        flags |= BMP_MAP_NO_FILTER;
    const auto draw = [outline = quad_of(mapping).outline, flags](auto& map, const FrameSet& f) {
        map(f[0], nullptr, nullptr, f[1], nullptr, outline.data(), 4, flags);
    };
    return quad(name, format, format, mapping, draw, std::move(peers), target);
}

Subject rgbq(const char* name, const Mapping& mapping, Target target) {
    const FrameShape frame = shape(BMP_FMT_RGBQ, kFullHd), texture = shape(BMP_FMT_RGBQ, mapping.texture);
    const TexturedQuad textured = quad_of(mapping);
    std::vector<Peer> peers;
    if (mapping.sampling == Sampling::kNearest || mapping.sampling == Sampling::kBilinear)
        peers.push_back(opencv_warp(frame, texture, textured, mapping.view, mapping.sampling));
    peers.push_back(pixman_quad(frame, texture, textured, mapping.sampling));
    return copied(name, BMP_FMT_RGBQ, mapping, std::move(peers), target);
}

Subject yuy2(const char* name, const Mapping& mapping, Target target) {
    std::vector<Peer> peers;
    if (mapping.sampling == Sampling::kNearest || mapping.sampling == Sampling::kBilinear)
        peers.push_back(opencv_warp_planes(shape(BMP_FMT_YUY2, kFullHd), shape(BMP_FMT_YUY2, mapping.texture),
                                           quad_of(mapping), mapping.view, mapping.sampling));
    return copied(name, BMP_FMT_YUY2, mapping, std::move(peers), target);
}

Subject pwrw(const char* name, const Mapping& mapping) {
    const FrameShape frame = shape(BMP_FMT_PWRW, kFullHd), texture = shape(BMP_FMT_PWRW, mapping.texture);
    return copied(name, BMP_FMT_PWRW, mapping,
                  {opencv_warp(frame, texture, quad_of(mapping), mapping.view, mapping.sampling)}, {});
}

Subject smooth_edges(const char* name, const Mapping& mapping) {
    const FrameShape frame = shape(BMP_FMT_RGBQ, kFullHd), texture = shape(BMP_FMT_RGBQ, mapping.texture);
    return copied(name, BMP_FMT_RGBQ, mapping, {cairo_quad(frame, texture, quad_of(mapping))}, {}, BMP_MAP_ANTIALIAS);
}

/// Every pixel passes its test and is drawn: a call is nearer than the one before it on the same depth buffer. The
/// buffer's first pixel, which the quad leaves alone, says how near the next call has to be. A new buffer holds depths
/// below 1.
Subject depth_tested(const char* name, int32_t format, const Mapping& mapping) {
    const auto draw = [outline = quad_of(mapping).outline](auto& map, const FrameSet& f) {
        float nearness;
        std::memcpy(&nearness, f[1]->pixels, sizeof nearness);
        if (nearness < 1)
            nearness = 2;
        BmpVertex vertices[4];
        for (int i = 0; i < 4; ++i) {
            vertices[i] = outline[static_cast<size_t>(i)];
            vertices[i].w *= nearness;
        }
        map(f[0], nullptr, f[1], f[2], nullptr, vertices, 4, 0);
        nearness *= 1.001f;
        std::memcpy(f[1]->pixels, &nearness, sizeof nearness);
    };
    return quad(name, format, format, mapping, draw, {}, {},
                {.bytes_per_pixel = 8, .written = 2, .frames = {shape(kDepths, kFullHd)}});
}

Subject tinted(const char* name, int32_t format, const Mapping& mapping) {
    const auto draw = [outline = quad_of(mapping).outline](auto& map, const FrameSet& f) {
        map(f[0], nullptr, nullptr, BMP_INTEGER(kColor), f[1], outline.data(), 4, BMP_MAP_EXTRA);
    };
    std::vector<Peer> peers;
    if (format == BMP_FMT_RGBQ)
        peers.push_back(
            pixman_tint(shape(format, kFullHd), shape(BMP_FMT_A8, mapping.texture), quad_of(mapping), kColor));
    return quad(name, format, BMP_FMT_A8, mapping, draw, std::move(peers), {},
                {.bytes_per_pixel = bytes_per_pixel(format)});
}

// ---------------------------------------------------------------- solid fills

constexpr int kOpaque = 4096, kHalf = 2048;

Subject filled(const std::string& name, int32_t format, const std::vector<Polygon>& polygons, int level,
               Target target) {
    const FrameShape frame = shape(format, kFullHd);
    const auto draw = [polygons, level](auto& map, const FrameSet& f) {
        for (const Polygon& polygon : polygons)
            map(f[0], nullptr, nullptr, BMP_INTEGER(kColor), BMP_INTEGER(level), polygon.data(),
                static_cast<int32_t>(polygon.size()), BMP_MAP_EXTRA | BMP_MAP_SOLID);
    };
    double pixels = 0;
    for (const Polygon& polygon : polygons)
        pixels += covered_pixels(polygon, kFullHd);
    const bool opaque = level == kOpaque;
    const double bytes = pixels * bytes_per_pixel(format) * (opaque ? 1 : 2);
    std::vector<Peer> peers;
    if (format == BMP_FMT_RGBQ) {
        peers.push_back(cairo_fill(frame, polygons, kColor, level));
        peers.push_back(agg_fill(frame, polygons, kColor, level));
    }
    target.scaled = false;
    return {
        .name = size_name(name.c_str(), kFullHd),
        .pixels = pixels,
        .bytes = bytes,
        .cached = false,
        .frames = {frame},
        .polygons = polygons.size() > 1 ? static_cast<double>(polygons.size()) : 0,
        .call = [draw](const FrameSet& f) { draw(bmp_map_polygon, f); },
        .model = [draw](const FrameSet& f, int) { draw(model::bmp_map_polygon, f); },
        .yardstick = opaque ? memset_of(bytes) : memcpy_of(bytes),
        .peers = std::move(peers),
        .target = target,
    };
}

}  // namespace

std::vector<Subject> polygon_subjects() {
    std::vector<Subject> subjects = {
        rgbq("quad_rgbq_bilinear", kBilinear, {.mpixels = 1100, .mpixels_avx2 = 880, .peer = {6.5, 9}}),
        rgbq("quad_rgbq_nearest", kNearest, {.mpixels = 1200, .peer = {0, 3}}),
        rgbq("quad_rgbq_persp_bilinear", kPerspBilinear, {.mpixels = 1000, .peer = {9, 0}}),
        rgbq("quad_rgbq_persp_nearest", kPerspNearest, {.mpixels = 1150, .peer = {9, 0}}),
        rgbq("quad_rgbq_box2", kBox2, {.mpixels = 430, .peer = {8}}),
        rgbq("quad_rgbq_box4", kBox4, {.mpixels = 150, .peer = {8}}),
        smooth_edges("quad_rgbq_antialias", kBilinear),
        depth_tested("quad_rgbq_depth", BMP_FMT_RGBQ, kPerspBilinear),
        tinted("quad_rgbq_tint", BMP_FMT_RGBQ, kBilinear),
        yuy2("quad_yuy2_bilinear", kBilinear, {.mpixels = 1000}),
        yuy2("quad_yuy2_nearest", kNearest, {}),
        yuy2("quad_yuy2_persp_bilinear", kPerspBilinear, {}),
        yuy2("quad_yuy2_persp_nearest", kPerspNearest, {}),
        yuy2("quad_yuy2_box2", kBox2, {}),
        yuy2("quad_yuy2_box4", kBox4, {}),
        depth_tested("quad_yuy2_depth", BMP_FMT_YUY2, kPerspBilinear),
        tinted("quad_yuy2_tint", BMP_FMT_YUY2, kBilinear),
        pwrw("quad_pwrw_bilinear", kBilinear),
    };
    constexpr int kSmallQuads = 1000;
    const std::vector<Polygon> of_16 = small_quads(kFullHd, kSmallQuads, 16),
                               of_48 = small_quads(kFullHd, kSmallQuads, 48);
    const std::vector<Polygon> one_star = {star(kFullHd)}, one_quad = {solid_quad(kFullHd)};
    for (const int32_t format : {BMP_FMT_RGBQ, BMP_FMT_YUY2}) {
        const bool is_rgbq = format == BMP_FMT_RGBQ;
        const std::string name = is_rgbq ? "fill_rgbq_" : "fill_yuy2_";
        const auto add = [&](const char* what, const std::vector<Polygon>& polygons, int level, Target target) {
            subjects.push_back(filled(name + what, format, polygons, level, is_rgbq ? target : Target()));
        };
        add("star", one_star, kOpaque, {.mpixels = 2600, .peer = {2.4}});
        add("star_half", one_star, kHalf, {.mpixels = 1900, .peer = {4.4}});
        add("quad", one_quad, kOpaque, {.mpixels = 3500, .peer = {1.7}});
        add("quad_half", one_quad, kHalf, {.mpixels = 2350, .peer = {3}});
        add("quads16", of_16, kOpaque, {.mpolygons = 1.1, .peer = {4, 4}});
        add("quads48", of_48, kOpaque, {.mpolygons = 0.41, .peer = {3.7, 3.7}});
    }
    return subjects;
}

}  // namespace zepbmp::bench
