/// \file
/// Included once with the checks and once without them. Everything in it is local to that file.
#pragma once

#include "calls.h"
#include "zepbmp.hpp"

namespace {

using namespace zepbmp;
using Picture = zepbmp::Bitmap;

Picture make(Format format, uint32_t seed = kTargetSeed, Scan scan = Scan::progressive) {
    Picture picture(kWidth, kHeight, format, scan);
    fill_noise(*picture.record(), seed);
    return picture;
}

void fills_and_copies(Results& results) {
    const auto keep = [&](const char* name, const Picture& picture) {
        results.push_back(result_of(name, *picture.record()));
    };
    Picture picture = make(Format::yuy2);
    clear(picture, Field::even);
    keep("clear", picture);
    copy(picture, make(Format::yuy2, 2), Field::odd);
    keep("copy", picture);
    blt(picture, {-3, 4}, {20, 11}, make(Format::yuy2, 3), {5, -2}, Field::odd);
    keep("blt", picture);
    interporate(picture, picture, Parity::odd);
    keep("interporate", picture);

    Picture rgbq = make(Format::rgbq);
    draw_rect(rgbq, {-5, 2, 9, 100}, Rgbq{1, 2, 3, 4});
    keep("draw_rect/rgbq", rgbq);
    Picture weights = make(Format::pwrw);
    draw_rect(weights, {4, 2, 9, 20}, Weight(4095));
    keep("draw_rect/pwrw", weights);
    Picture indices = make(Format::rgb8);
    draw_rect(indices, {4, 2, 20, 20}, PaletteIndex(0x11), RectMode::bit_or);
    draw_rect(indices, {9, 5, 30, 21}, PaletteIndex(0x3c), RectMode::bit_and);
    keep("draw_rect/rgb8", indices);
    draw_line(indices, {36, 20}, {0, 3}, PaletteIndex(0xa5), LineMode::bit_xor);
    draw_line(indices, {0, 20}, {36, 20}, PaletteIndex(7));
    keep("draw_line", indices);
    set_palette(indices, PaletteIndex(200), Rgbq{9, 8, 7, 6});
    results.push_back(palette_of("set_palette", *indices.record()));
}

void compositions(Results& results) {
    const auto keep = [&](const char* name, const Picture& picture) {
        results.push_back(result_of(name, *picture.record()));
    };
    for (const Format format : {Format::yuy2, Format::rgbq}) {
        const Picture a = make(format, 2), b = make(format, 3), weights = make(Format::pwrw, 4),
                      others = make(Format::pwrw, 5), mask = make(Format::a8, 6);
        Picture dest = make(format);
        compose(dest, a, b, weights);
        keep("compose/pwrw", dest);
        compose(dest, a, b, mask, Field::even);
        keep("compose/a8", dest);
        compose(dest, dest, b, Level(1234), Field::odd);
        keep("compose/level", dest);
        if (format == Format::yuy2) {
            compose_color(dest, a, b, weights, others, Yuv{1, 2, 3}, Field::odd);
            keep("compose_color/band", dest);
            compose_color(dest, a, weights, Yuv{200, 100, 50}, Field::even);
            keep("compose_color", dest);
        } else {
            compose_color(dest, a, b, weights, others, Rgbq{1, 2, 3, 4}, Field::odd);
            keep("compose_color/band", dest);
            compose_color(dest, a, weights, Rgbq{200, 100, 50, 25}, Field::even);
            keep("compose_color", dest);
        }
    }
}

void shapes(Results& results) {
    Picture map = make(Format::pwrw);
    const auto keep = [&](const char* name) { results.push_back(result_of(name, *map.record())); };
    alpha_rect(map, {-1.5f, 2.25f, 20, 9.75f}, ShapeMode::add, Field::even);
    keep("alpha_rect/add");
    alpha_rect(map, {3.5f, 4.25f, 10, 9.5f}, ShapeMode::maximum);
    keep("alpha_rect/max");
    alpha_rect(map, {10, 3, 22.5f, 15}, CornerRadii{4, 5.5f}, Field::odd);
    keep("alpha_rect/corners");
    alpha_circle(map, {.cx = 18, .cy = 11, .radius = 9.5f}, Ramp::linear, Field::odd);
    keep("alpha_circle/hard");
    alpha_circle(map, {.cx = 18, .cy = 11, .radius = 9.5f, .feather = 4, .aspect = 1.25f}, Ramp::cosine);
    keep("alpha_circle/cosine");
}

void polygons(Results& results) {
    const auto keep = [&](const char* name, const Picture& picture) {
        results.push_back(result_of(name, *picture.record()));
    };
    const Picture frame = make(Format::yuy2, 2), interlaced = make(Format::yuy2, 3, Scan::interlaced),
                  rgbq_frame = make(Format::rgbq, 4), map = make(Format::pwrw, 5), strength = make(Format::a8, 6);
    Picture dst = make(Format::yuy2), coverage = make(Format::a8), depth = make(Format::quad4);
    map_polygon(dst, frame, quad());
    keep("map_polygon/filtered", dst);
    map_polygon(dst, interlaced, quad(), {.sampled = Parity::odd, .coverage = &coverage});
    keep("map_polygon/interlaced", dst);
    keep("map_polygon/coverage", coverage);
    map_polygon(dst, frame, quad(), {.field = Field::odd, .sampling = Sampling::nearest, .depth = &depth});
    keep("map_polygon/depth", dst);
    keep("map_polygon/depth buffer", depth);
    Picture rgbq = make(Format::rgbq), weights = make(Format::pwrw), plane = make(Format::pwrw);
    map_polygon(rgbq, rgbq_frame, quad(true), {.sampling = Sampling::filtered_antialiased});
    keep("map_polygon/antialiased", rgbq);
    map_polygon(weights, map, quad(true));
    keep("map_polygon/weights", weights);
    tint_polygon(dst, strength, Yuv{9, 8, 7}, quad(), {.field = Field::even});
    keep("tint_polygon/yuy2", dst);
    tint_polygon(rgbq, strength, Rgbq{9, 8, 7, 6}, quad(), {.sampling = Sampling::nearest});
    keep("tint_polygon/rgbq", rgbq);
    fill_polygon(dst, Yuv{99, 98, 97}, Level(3000), quad(), {.field = Field::odd, .coverage = &plane});
    keep("fill_polygon/yuy2", dst);
    keep("fill_polygon/coverage", plane);
    fill_polygon(rgbq, Rgbq{99, 98, 97, 96}, Level(4096), quad());
    keep("fill_polygon/rgbq", rgbq);
}

void rectangles(Results& results) {
    const auto keep = [&](const char* name, const Picture& picture) {
        results.push_back(result_of(name, *picture.record()));
    };
    const FloatBox to = {2.5f, 1.25f, 30.75f, 19}, from = {-1, 0.5f, 36.5f, 21};
    for (const Format format : {Format::yuy2, Format::rgbq}) {
        Picture dest = make(format), map = make(Format::pwrw);
        map_rect(dest, map, to, make(format, 2, Scan::interlaced_2), from, Field::odd);
        keep("map_rect", dest);
        keep("map_rect/weight map", map);
    }
    Picture indices = make(Format::rgb8);
    map_rect(indices, to, make(Format::rgb8, 2), from);
    keep("map_rect/rgb8", indices);
}

Results make_calls() {
    Results results;
    fills_and_copies(results);
    compositions(results);
    shapes(results);
    polygons(results);
    rectangles(results);
    return results;
}

}  // namespace
