#include "effect.h"

#include <algorithm>
#include <cmath>

namespace zepbmp::transition {

namespace {

constexpr int kLevelFull = 4096;
constexpr int kEdgeSteps = 64;        // a rectangle's edge falls on 64ths of a pixel
constexpr double kBandShare = 0.125;  // of the distance from centre to corner

/// How far inside 0..size each pixel's centre lies, in 64ths of full weight, for an interval centred in `size`.
void fill_ramp(std::vector<int>& out, double half, double feather, Ease edge) {
    const double centre = static_cast<double>(out.size()) / 2;
    for (size_t i = 0; i < out.size(); ++i) {
        const double inside = half - std::abs(static_cast<double>(i) + 0.5 - centre);
        out[i] = static_cast<int>(std::lround(kEdgeSteps * eased(edge, std::clamp(inside / feather, 0.0, 1.0))));
    }
}

struct Run {
    int begin;
    int end;
};

/// The pixels of a ramp that reach a level: one run, since ramps rise to the centre and fall behind it.
Run reaching(const std::vector<int>& ramp, int level) {
    const int size = static_cast<int>(ramp.size());
    int begin = 0;
    while (begin < size && ramp[begin] < level)
        ++begin;
    return {begin, std::max(begin, size - begin)};
}

}  // namespace

Effect::Effect(const EffectSettings& settings, int width, int height)
    : settings_(settings),
      width_px_(width),
      height_px_(height * settings.line_height_px),
      corner_px_(std::hypot(width_px_ / 2, height_px_ / 2)),
      band_px_(corner_px_ * kBandShare),
      map_(make_bitmap(width, height, BMP_FMT_PWRW)),
      outer_map_(settings.kind == EffectKind::kBand ? make_bitmap(width, height, BMP_FMT_PWRW) : nullptr),
      column_64ths_(width),
      line_64ths_(height) {}

void Effect::compose(Bitmap* dest, const Bitmap* a, const Bitmap* b, double progress, unsigned field) {
    if (progress <= 0 || progress >= 1) {
        bmp_copy(dest, progress <= 0 ? a : b, field);
        return;
    }
    const double reach = corner_px_ + settings_.feather_px;  // a disc of this radius is full in every corner
    switch (settings_.kind) {
        case EffectKind::kCrossfade:
            bmp_compose(dest, a, b, BMP_INTEGER(std::lround(progress * kLevelFull)), field | BMP_COMPOSE_LEVEL);
            break;
        case EffectKind::kBox:
            draw_box(progress, field);
            bmp_compose(dest, a, b, map_.get(), field);
            break;
        case EffectKind::kCircle:
            draw_circle(map_.get(), progress * reach, field);
            bmp_compose(dest, a, b, map_.get(), field);
            break;
        case EffectKind::kBand: {
            const double outer = progress * (reach + band_px_);
            draw_circle(map_.get(), outer - band_px_, field);
            draw_circle(outer_map_.get(), outer, field);
            bmp_compose_color(dest, a, b, map_.get(), outer_map_.get(), settings_.band_color_yuv, field);
            break;
        }
    }
}

void Effect::draw_box(double progress, unsigned field) {
    bmp_clear(map_.get(), field);
    const double half_width = progress * (width_px_ / 2 + settings_.feather_px);
    const double half_height = progress * (height_px_ / 2 + settings_.feather_px);
    if (settings_.feather_px > 0) {
        draw_soft_box(half_width, half_height, field);
        return;
    }
    // Edges on 64ths from the start, so that all four are cut alike.
    const auto edge = [](double position) {
        return static_cast<float>(std::round(position * kEdgeSteps) / kEdgeSteps);
    };
    const float left = edge(width_px_ / 2 - half_width);
    const float top = edge((height_px_ / 2 - half_height) / settings_.line_height_px);
    bmp_alpha_rect(map_.get(), left, top, static_cast<float>(map_->width) - 2 * left,
                   static_cast<float>(map_->height) - 2 * top, 0, 0, field | BMP_SHAPE_ADD);
}

// A rectangle n/64 of a pixel wide gives its column n/64 of the full weight. So the soft edge is laid from such strips:
// one for each column of the ramp, over the lines that reach the column's level, and one for each line of the ramp,
// over the columns that pass the line's level. Each pixel is in one strip and gets the smaller of its column's and its
// line's level.
void Effect::draw_soft_box(double half_width, double half_height, unsigned field) {
    const double line = settings_.line_height_px;
    fill_ramp(column_64ths_, half_width, settings_.feather_px, settings_.edge);
    fill_ramp(line_64ths_, half_height / line, settings_.feather_px / line, settings_.edge);

    const auto strip = [&](Run columns, Run lines, int width_64ths, int height_64ths) {
        bmp_alpha_rect(map_.get(), static_cast<float>(columns.begin), static_cast<float>(lines.begin),
                       static_cast<float>(width_64ths) / kEdgeSteps, static_cast<float>(height_64ths) / kEdgeSteps, 0,
                       0, field | BMP_SHAPE_ADD);
    };
    const auto length = [](Run run) { return (run.end - run.begin) * kEdgeSteps; };

    const Run full_columns = reaching(column_64ths_, kEdgeSteps);
    const Run full_lines = reaching(line_64ths_, kEdgeSteps);
    strip(full_columns, full_lines, length(full_columns), length(full_lines));
    for (int x = 0; x < static_cast<int>(column_64ths_.size()); ++x) {
        const int level = column_64ths_[x];
        if (level == 0 || level == kEdgeSteps)
            continue;
        const Run lines = reaching(line_64ths_, level);
        strip({x, x + 1}, lines, level, length(lines));
    }
    for (int y = 0; y < static_cast<int>(line_64ths_.size()); ++y) {
        const int level = line_64ths_[y];
        if (level == 0 || level == kEdgeSteps)
            continue;
        const Run columns = reaching(column_64ths_, level + 1);
        strip(columns, {y, y + 1}, length(columns), level);
    }
}

void Effect::draw_circle(Bitmap* map, double radius, unsigned field) const {
    if (radius <= 0) {
        bmp_clear(map, field);
        return;
    }
    const unsigned profile = settings_.edge == Ease::kCosine ? BMP_SHAPE_COSINE : 0;
    bmp_alpha_circle(map, static_cast<float>(width_px_ / 2), static_cast<float>(height_px_ / 2),
                     static_cast<float>(radius), static_cast<float>(settings_.feather_px),
                     static_cast<float>(settings_.line_height_px), field | profile);
}

uint32_t yuv_from_rgb(uint32_t rgb, double red_weight, double blue_weight) {
    const double red = (rgb >> 16 & 255) / 255.0, green = (rgb >> 8 & 255) / 255.0, blue = (rgb & 255) / 255.0;
    const double luma = red_weight * red + (1 - red_weight - blue_weight) * green + blue_weight * blue;
    const double u = (blue - luma) / (2 - 2 * blue_weight);
    const double v = (red - luma) / (2 - 2 * red_weight);
    const auto code = [](double value) { return static_cast<uint32_t>(std::lround(value)); };
    return code(16 + 219 * luma) << 16 | code(128 + 224 * u) << 8 | code(128 + 224 * v);
}

}  // namespace zepbmp::transition
