#include "expected.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>

#include "zepbmp.h"

namespace zepbmp::test {

namespace {

constexpr int kFull = 4096;

struct Destroy {
    void operator()(Bitmap* bitmap) const { bmp_destroy(bitmap); }
};
using Owned = std::unique_ptr<Bitmap, Destroy>;

Owned make(int width, int height, int format) { return Owned(bmp_create(width, height, format, BMP_CREATE_ZERO)); }

Owned to_bitmap(int width, int height, const Pixels& pixels) {
    Owned bitmap = make(width, height, BMP_FMT_RGBQ);
    for (int y = 0; y < height; ++y)
        std::memcpy(bmp_pointer(bitmap.get(), 0, y), &pixels[static_cast<size_t>(y) * width], size_t{4} * width);
    return bitmap;
}

Pixels to_pixels(const Owned& bitmap) {
    Pixels pixels(static_cast<size_t>(bitmap->width) * bitmap->height);
    for (int y = 0; y < bitmap->height; ++y)
        std::memcpy(&pixels[static_cast<size_t>(y) * bitmap->width], bmp_pointer(bitmap.get(), 0, y),
                    size_t{4} * bitmap->width);
    return pixels;
}

uint16_t& weight(const Owned& map, int x, int y) { return *reinterpret_cast<uint16_t*>(bmp_pointer(map.get(), x, y)); }

uint32_t packed(const Rgb& color) {
    uint32_t word = 0xff;
    for (int i = 2; i >= 0; --i)
        word = word << 8 | static_cast<uint32_t>(std::floor(color[i] * 255.0 + 0.5));
    return word;
}

uint32_t alpha_of(uint32_t pixel) { return pixel >> 24; }

/// Of every pixel: the three shares, rounded to nearest.
void round_alpha(Pixels& out, const Pixels& first, const Pixels& second, const Owned& inner, const Owned& outer) {
    for (int y = 0, i = 0; y < inner->height; ++y) {
        for (int x = 0; x < inner->width; ++x, ++i) {
            const double a = weight(inner, x, y), b = weight(outer, x, y);
            const double alpha = (alpha_of(first[i]) * (kFull - b) + alpha_of(second[i]) * a + 255 * (b - a)) / kFull;
            out[i] = (out[i] & 0xffffff) | static_cast<uint32_t>(std::floor(alpha + 0.5)) << 24;
        }
    }
}

/// Of a soft edge, in pixels: below one the edge is a hard one.
double drawn_feather(double part, double unit) { return part * unit >= 1 ? part * unit : 0; }

Owned disc(int width, int height, double x, double y, double radius, double feather, bool cosine) {
    Owned map = make(width, height, BMP_FMT_PWRW);
    if (radius > 0)
        bmp_alpha_circle(map.get(), static_cast<float>(x), static_cast<float>(y), static_cast<float>(radius),
                         static_cast<float>(feather), 1, cosine ? BMP_SHAPE_COSINE : 0);
    return map;
}

uint16_t ramp(double distance_inside, double feather, bool cosine) {
    const int step = std::clamp(static_cast<int>(distance_inside * (1024 / feather) + 0.5), 0, 1024);
    return static_cast<uint16_t>(cosine ? std::lround(2048 * (1 - std::cos(std::numbers::pi * step / 1024)))
                                        : 4 * step);
}

struct Box {
    double x, y, half_width, half_height, radius;
};

/// Pixel by pixel; a rounded corner's pixels come from a disc of their own.
Owned soft_box(int width, int height, const Box& box, double feather, bool cosine) {
    Owned map = make(width, height, BMP_FMT_PWRW);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double in_x = box.half_width - std::abs(x + 0.5 - box.x);
            const double in_y = box.half_height - std::abs(y + 0.5 - box.y);
            weight(map, x, y) = ramp(std::min(in_x, in_y), feather, cosine);
        }
    }
    if (box.radius <= 0)
        return map;
    const double r = std::min({std::max(box.radius, feather), box.half_width, box.half_height});
    for (int quarter = 0; quarter < 4; ++quarter) {
        const bool right = quarter & 1, bottom = quarter & 2;
        const double cx = right ? box.x + (box.half_width - r) : box.x - (box.half_width - r);
        const double cy = bottom ? box.y + (box.half_height - r) : box.y - (box.half_height - r);
        const auto in_quarter = [&](double at, double centre, bool above) {
            return above ? at >= centre && at < centre + r : at >= centre - r && at < centre;
        };
        std::vector<int> columns, lines;
        for (int x = 0; x < width; ++x) {
            if (in_quarter(x + 0.5, cx, right))
                columns.push_back(x);
        }
        for (int y = 0; y < height; ++y) {
            if (in_quarter(y + 0.5, cy, bottom))
                lines.push_back(y);
        }
        if (columns.empty() || lines.empty())
            continue;
        const int left = columns.front(), top = lines.front();
        const Owned corner = disc(static_cast<int>(columns.size()), static_cast<int>(lines.size()), cx - left, cy - top,
                                  r, feather, cosine);
        for (const int y : lines) {
            for (const int x : columns)
                weight(map, x, y) = weight(corner, x - left, y - top);
        }
    }
    return map;
}

Owned hard_box(int width, int height, const Box& box) {
    Owned map = make(width, height, BMP_FMT_PWRW);
    const auto rounded = [](double value) { return static_cast<float>(std::lround(value * 64)) / 64; };
    const float x0 = rounded(box.x - box.half_width), x1 = rounded(box.x + box.half_width);
    const float y0 = rounded(box.y - box.half_height), y1 = rounded(box.y + box.half_height);
    const float radius = static_cast<float>(box.radius);
    bmp_alpha_rect(map.get(), x0, y0, x1 - x0, y1 - y0, radius, radius,
                   radius > 0 ? BMP_SHAPE_ELLIPTIC | BMP_SHAPE_ELLIPTIC_EDGES : BMP_SHAPE_MAX);
    return map;
}

/// Draws a picture through four corners, each with its distance.
void map_quad(Bitmap* out, Bitmap* coverage, const Bitmap* picture, const std::array<BmpVertex, 4>& corners) {
    bmp_map_polygon(out, coverage, nullptr, picture, nullptr, corners.data(), 4, BMP_MAP_ANTIALIAS);
}

}  // namespace

Pixels expected_dissolve(int width, int height, const Pixels& first, const Pixels& second, double progress) {
    const Owned a = to_bitmap(width, height, first), b = to_bitmap(width, height, second);
    const Owned out = make(width, height, BMP_FMT_RGBQ);
    const int level = static_cast<int>(std::floor(progress * kFull + 0.5));
    bmp_compose(out.get(), a.get(), b.get(), BMP_INTEGER(level), BMP_COMPOSE_LEVEL);
    return to_pixels(out);
}

Pixels expected_fly(int width, int height, const Pixels& first, const Pixels& second, double progress) {
    if (progress <= 0 || progress >= 1)
        return progress <= 0 ? first : second;
    // What is left of the way turns the picture about its upright and its level axis and moves it up to the left.
    const double rest = 1 - progress;
    const double yaw = -0.9 * rest, pitch = -0.4 * rest;
    const double eye = std::max<double>(width, height * 0.25);
    const double unit = std::min(width, height) * rest / progress;
    const double at[] = {-0.35 * unit, -0.2 * unit * rest, eye / progress - eye};
    std::array<BmpVertex, 4> corners;
    for (int i = 0; i < 4; ++i) {
        const bool right = i == 1 || i == 2, bottom = i >= 2;
        const double x = right ? width / 2.0 : -width / 2.0, y = bottom ? height / 2.0 : -height / 2.0;
        const double level_y = y * std::cos(pitch), level_z = y * std::sin(pitch);
        const double px = at[0] + x * std::cos(yaw) - level_z * std::sin(yaw);
        const double pz = at[2] + x * std::sin(yaw) + level_z * std::cos(yaw);
        const double near = eye / (eye + pz);
        corners[i] = {right ? static_cast<float>(width) : 0, bottom ? static_cast<float>(height) : 0,
                      static_cast<float>(near), static_cast<float>(width / 2.0 + near * px),
                      static_cast<float>(height / 2.0 + near * (at[1] + level_y))};
    }
    const Owned picture = to_bitmap(width, height, second), out = to_bitmap(width, height, first);
    map_quad(out.get(), nullptr, picture.get(), corners);
    return to_pixels(out);
}

Pixels expected_wipe(int width, int height, const Pixels& first, const Pixels& second, const Wipe& wipe) {
    if (wipe.progress <= 0 || wipe.progress >= 1)
        return wipe.progress <= 0 ? first : second;
    const double unit = std::min(width, height);
    const double x = wipe.centre.x * width, y = wipe.centre.y * height;
    const double far_x = std::max(std::abs(x), std::abs(width - x));
    const double far_y = std::max(std::abs(y), std::abs(height - y));
    const double corner = std::sqrt(far_x * far_x + far_y * far_y);
    const double feather = drawn_feather(wipe.feather, unit);
    const Owned a = to_bitmap(width, height, first), b = to_bitmap(width, height, second);
    const Owned out = make(width, height, BMP_FMT_RGBQ);
    Owned inner, outer;
    if (wipe.shape == 3) {
        const double band = wipe.band_width * unit;
        const double radius = wipe.progress * (corner + feather + band);
        inner = disc(width, height, x, y, radius - band, feather, wipe.cosine);
        outer = disc(width, height, x, y, radius, feather, wipe.cosine);
        bmp_compose_color(out.get(), a.get(), b.get(), inner.get(), outer.get(), packed(wipe.band_color), 0);
    } else {
        if (wipe.shape == 0) {
            inner = disc(width, height, x, y, wipe.progress * (corner + feather), feather, wipe.cosine);
        } else {
            const double radius = wipe.shape == 2 ? wipe.roundness * std::min(far_x, far_y) : 0;
            const double beyond = feather + radius * (1 - std::sqrt(0.5));
            const Box box = {x, y, wipe.progress * (far_x + beyond), wipe.progress * (far_y + beyond),
                             wipe.progress * radius};
            inner = feather == 0 ? hard_box(width, height, box) : soft_box(width, height, box, feather, wipe.cosine);
        }
        bmp_compose(out.get(), a.get(), b.get(), inner.get(), 0);
    }
    Pixels pixels = to_pixels(out);
    round_alpha(pixels, first, second, inner, outer ? outer : inner);
    return pixels;
}

Pixels expected_corner_pin(int width, int height, const Pixels& picture, const CornerPin& pin) {
    const CornerPin home;
    double px[4], py[4];
    bool moved = false;
    for (int i = 0; i < 4; ++i) {
        px[i] = pin.corners[i].x * width, py[i] = pin.corners[i].y * height;
        moved = moved || pin.corners[i].x != home.corners[i].x || pin.corners[i].y != home.corners[i].y;
    }
    if (!moved)
        return picture;
    // The map of the unit square onto the corners, whose denominator is 1 + g u + h v.
    double distance[4] = {1, 1, 1, 1};
    const auto turn = [&](int a, int b, int c) {
        return (px[b] - px[a]) * (py[c] - py[a]) - (py[b] - py[a]) * (px[c] - px[a]);
    };
    const double turns[] = {turn(0, 1, 2), turn(1, 2, 3), turn(2, 3, 0), turn(3, 0, 1)};
    const auto [least, most] = std::minmax_element(turns, turns + 4);
    if (*least >= 1.0 / 64 || *most <= -1.0 / 64) {
        const double ax = px[1] - px[2], bx = px[3] - px[2], sx = px[0] - px[1] + px[2] - px[3];
        const double ay = py[1] - py[2], by = py[3] - py[2], sy = py[0] - py[1] + py[2] - py[3];
        const double det = ax * by - bx * ay;
        const double g = (sx * by - bx * sy) / det, h = (ax * sy - sx * ay) / det;
        distance[1] = 1 + g, distance[2] = 1 + g + h, distance[3] = 1 + h;
    }
    std::array<BmpVertex, 4> corners;
    for (int i = 0; i < 4; ++i)
        corners[i] = {i == 1 || i == 2 ? static_cast<float>(width) : 0, i >= 2 ? static_cast<float>(height) : 0,
                      static_cast<float>(1 / distance[i]), static_cast<float>(px[i]), static_cast<float>(py[i])};

    const Owned source = to_bitmap(width, height, picture);
    if (!pin.transparent) {
        const Owned out = to_bitmap(width, height, Pixels(picture.size(), packed(pin.background)));
        map_quad(out.get(), nullptr, source.get(), corners);
        return to_pixels(out);
    }
    const Owned out = make(width, height, BMP_FMT_RGBQ), coverage = make(width, height, BMP_FMT_PWRW);
    map_quad(out.get(), coverage.get(), source.get(), corners);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const uint32_t c = weight(coverage, x, y);
            uint8_t* const pixel = bmp_pointer(out.get(), x, y);
            if (c == 0 || c == kFull)
                continue;
            for (int k = 0; k < 3; ++k) {
                // The middle one of the colours that the coverage makes the same byte of.
                uint32_t least = 255, most = 255;
                for (uint32_t color = 0; color <= 255; ++color) {
                    if (color * c / kFull == pixel[k])
                        least = std::min(least, color), most = color;
                }
                pixel[k] = static_cast<uint8_t>((least + most + 1) / 2);
            }
        }
    }
    return to_pixels(out);
}

Pixels expected_spotlight(int width, int height, const Pixels& picture, const Spotlight& light) {
    const double unit = std::min(width, height);
    const Owned map = disc(width, height, light.centre.x * width, light.centre.y * height, light.radius * unit,
                           drawn_feather(light.feather, unit), light.cosine);
    const int64_t darkness = std::lround(light.darkness * kFull);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            weight(map, x, y) = static_cast<uint16_t>(kFull - ((kFull - weight(map, x, y)) * darkness >> 12));
    }
    const Owned in = to_bitmap(width, height, picture), out = make(width, height, BMP_FMT_RGBQ);
    bmp_compose_color(out.get(), in.get(), nullptr, map.get(), nullptr, packed(light.color), 0);
    Pixels pixels = to_pixels(out);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = (pixels[i] & 0xffffff) | alpha_of(picture[i]) << 24;
    return pixels;
}

Pixels expected_interpolation(int width, int height, const Pixels& picture, bool lower) {
    if (height < 2)
        return picture;
    const Owned in = to_bitmap(width, height, picture), out = make(width, height, BMP_FMT_RGBQ);
    bmp_interporate(out.get(), in.get(), lower ? BMP_FIELD_ODD : 0);
    return to_pixels(out);
}

}  // namespace zepbmp::test
