#include "effects/soft_box.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "core/pixels.h"
#include "effects/feather.h"
#include "shapes/ramp.h"

namespace zepbmp::effects {

namespace {

const RampTable& ramp_of(const BoxShape& box) { return box.cosine ? kCosineRamp : kLinearRamp; }

/// Of an interval around `centre`: the weight at a pixel's centre.
uint16_t weight_at(int pixel, double centre, double half, const BoxShape& box) {
    const double distance = std::abs(pixel + 0.5 - centre);
    return ramp_of(box).weight[ramp_step(distance, half, kRampSteps / box.feather)];
}

/// Edges on whole steps of bmp_alpha_rect, so that all four are cut alike.
float edge(double position) {
    constexpr double kSteps = 64;  // of a pixel
    return static_cast<float>(std::round(position * kSteps) / kSteps);
}

void draw_hard(Bitmap& map, const BoxShape& box) {
    bmp_clear(&map, 0);
    const float left = edge(box.centre_x - box.half_width), right = edge(box.centre_x + box.half_width);
    const float top = edge(box.centre_y - box.half_height), bottom = edge(box.centre_y + box.half_height);
    const float radius = static_cast<float>(box.radius);
    bmp_alpha_rect(&map, left, top, right - left, bottom - top, radius, radius,
                   radius > 0 ? BMP_SHAPE_ELLIPTIC | BMP_SHAPE_ELLIPTIC_PLAIN : BMP_SHAPE_MAX);
}

/// The pixels of 0..size whose centres lie in [begin, end).
struct Run {
    int begin;
    int end;

    Run(double from, double to, int size) : begin(first_centre(from, size)), end(first_centre(to, size)) {}

    bool empty() const { return begin >= end; }
    int length() const { return end - begin; }

private:
    static int first_centre(double position, int size) {
        return static_cast<int>(std::ceil(std::clamp(position - 0.5, 0.0, static_cast<double>(size))));
    }
};

/// The upper left part of a map's memory as a smaller map.
Bitmap part_of(const Bitmap& map, int width, int height) {
    Bitmap part = map;
    part.width = width;
    part.height = height;
    return part;
}

}  // namespace

SoftBox::SoftBox(int width, int height)
    : corner_(bmp_create(width, height, BMP_FMT_PWRW, BMP_CREATE_ZERO)),
      columns_(new (std::nothrow) uint16_t[static_cast<size_t>(width)]) {}

SoftBox::~SoftBox() { bmp_destroy(corner_); }

void SoftBox::draw(Bitmap& map, const BoxShape& box) {
    if (!(box.half_width > 0 && box.half_height > 0))
        bmp_clear(&map, 0);
    else if (drawn_feather(box.feather) == 0)
        draw_hard(map, box);
    else
        draw_soft(map, box);
}

void SoftBox::draw_soft(Bitmap& map, const BoxShape& box) {
    for (int x = 0; x < map.width; ++x)
        columns_[x] = weight_at(x, box.centre_x, box.half_width, box);
    for (int y = 0; y < map.height; ++y) {
        const uint16_t weight = weight_at(y, box.centre_y, box.half_height, box);
        auto* const line = reinterpret_cast<uint16_t*>(bmp_pointer(&map, 0, y));
        if (weight == kWeightFull) {
            std::memcpy(line, columns_.get(), sizeof(uint16_t) * static_cast<size_t>(map.width));
        } else {
            for (int x = 0; x < map.width; ++x)
                line[x] = std::min(columns_[x], weight);
        }
    }
    if (box.radius > 0)
        round_corners(map, box);
}

void SoftBox::round_corners(Bitmap& map, const BoxShape& box) {
    const double radius = std::min({std::max(box.radius, box.feather), box.half_width, box.half_height});
    const double arc_x = box.half_width - radius, arc_y = box.half_height - radius;
    for (const int side_y : {-1, 1}) {
        for (const int side_x : {-1, 1}) {
            const double x = box.centre_x + side_x * arc_x, y = box.centre_y + side_y * arc_y;
            const Run columns = side_x < 0 ? Run(x - radius, x, map.width) : Run(x, x + radius, map.width);
            const Run lines = side_y < 0 ? Run(y - radius, y, map.height) : Run(y, y + radius, map.height);
            if (columns.empty() || lines.empty())
                continue;
            Bitmap part = part_of(*corner_, columns.length(), lines.length());
            bmp_alpha_circle(&part, static_cast<float>(x - columns.begin), static_cast<float>(y - lines.begin),
                             static_cast<float>(radius), static_cast<float>(box.feather), 1,
                             box.cosine ? BMP_SHAPE_COSINE : 0);
            bmp_blt(&map, columns.begin, lines.begin, columns.length(), lines.length(), &part, 0, 0, 0);
        }
    }
}

}  // namespace zepbmp::effects
