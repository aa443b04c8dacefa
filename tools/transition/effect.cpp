#include "effect.h"

#include <algorithm>
#include <cmath>

namespace zepbmp::transition {

namespace {

constexpr int kLevelFull = 4096;
constexpr int kEdgeSteps = 64;        // a rectangle's edge falls on 64ths of a pixel
constexpr double kBandShare = 0.125;  // of the distance from centre to corner
constexpr double kUnderpaintPx = 6;   // around a flying picture
constexpr double kMostMargin = 0.25;  // of a flying picture's size, where it is as large as the frame

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

BitmapPtr make_bitmap_if(bool needed, int width, int height, int format) {
    return needed ? make_bitmap(width, height, format) : nullptr;
}

bool has_scratch(EffectKind kind) {
    return kind == EffectKind::kShape || kind == EffectKind::kFly || kind == EffectKind::kZoom ||
           kind == EffectKind::kPush;
}

void map_quad(Bitmap* dest, Bitmap* coverage, Bitmap* depth, const Bitmap* texture, const Quad& quad, unsigned flags) {
    bmp_map_polygon(dest, coverage, depth, texture, nullptr, quad.data(), static_cast<int>(quad.size()), flags);
}

/// In pixels and frame lines, right and bottom exclusive.
struct Rectangle {
    float left;
    float top;
    float right;
    float bottom;
};

/// Maps all of a picture onto a rectangle, on the lines that `field` selects.
void map_picture(Bitmap* dest, Bitmap* coverage, const Bitmap* picture, const Rectangle& to, unsigned field) {
    const auto map = [&](float top, float bottom, float source_top, float source_bottom) {
        bmp_map_rect(dest, coverage, to.left, top, to.right, bottom, picture, nullptr, 0, source_top,
                     static_cast<float>(picture->width), source_bottom, field);
    };
    const float height = static_cast<float>(picture->height);
    if (field == kBottomField && (picture->create_flags & kTwoFields) != 0) {
        // The lines of a bottom field are two frame lines high around their centres, so that the first one begins half
        // a line below the frame's top, and the mapping would begin there, too. It is continued up to the top.
        constexpr float kFieldTop = 0.5f;
        const float split = to.top + (to.bottom - to.top) * (kFieldTop / height);
        map(to.top, split, kFieldTop, 2 * kFieldTop);
        map(split, to.bottom, kFieldTop, height);
    } else {
        map(to.top, to.bottom, 0, height);
    }
}

}  // namespace

Effect::Effect(const EffectSettings& settings, int width, int height)
    : settings_(settings),
      width_px_(width),
      height_px_(height * settings.line_height_px),
      corner_px_(std::hypot(width_px_ / 2, height_px_ / 2)),
      band_px_(corner_px_ * kBandShare),
      outline_px_(covering_scale(settings.outline, width_px_ / 2, height_px_ / 2)),
      stage_(width, height, settings.line_height_px),
      map_(make_bitmap(width, height, BMP_FMT_PWRW)),
      outer_map_(make_bitmap_if(settings.kind == EffectKind::kBand, width, height, BMP_FMT_PWRW)),
      scratch_(make_bitmap_if(has_scratch(settings.kind), width, height, BMP_FMT_YUY2)),
      map_a_(make_bitmap_if(settings.kind == EffectKind::kPush, width, height, BMP_FMT_PWRW)),
      scratch_a_(make_bitmap_if(settings.kind == EffectKind::kPush, width, height, BMP_FMT_YUY2)),
      depth_(make_bitmap_if(settings.kind == EffectKind::kCube, width, height, BMP_FMT_QUAD3)),
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
            bmp_compose_color(dest, a, b, map_.get(), outer_map_.get(), settings_.color_yuv, field);
            break;
        }
        case EffectKind::kShape:
            draw_shape(progress, field);
            bmp_compose(dest, a, b, map_.get(), field);
            break;
        case EffectKind::kFly:
            draw_flying(b, progress, field);
            bmp_compose(dest, a, scratch_.get(), map_.get(), field);
            break;
        case EffectKind::kCube: draw_cube(dest, a, b, progress, field); break;
        case EffectKind::kZoom:
            draw_zoomed(b, progress, field);
            bmp_compose(dest, a, scratch_.get(), map_.get(), field);
            break;
        case EffectKind::kPush:
            draw_pushed(a, b, progress, field);
            bmp_compose(dest, scratch_a_.get(), scratch_.get(), map_.get(), field);
            break;
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

// The polygon is filled with a colour that nobody sees: wanted is the plane of its coverage.
void Effect::draw_shape(double progress, unsigned field) {
    const double scale = progress * outline_px_;
    std::vector<BmpVertex> vertices;
    for (const OutlinePoint& point : settings_.outline)
        vertices.push_back({0, 0, 1, static_cast<float>(width_px_ / 2 + scale * point.x),
                            static_cast<float>((height_px_ / 2 + scale * point.y) / settings_.line_height_px)});
    bmp_clear(map_.get(), field);
    bmp_map_polygon(scratch_.get(), map_.get(), nullptr, BMP_INTEGER(0), BMP_INTEGER(kLevelFull), vertices.data(),
                    static_cast<int>(vertices.size()), field | BMP_MAP_EXTRA | BMP_MAP_SOLID);
}

// An anti-aliased polygon blends the texture's edge into what is there, and the composition blends by the same coverage
// once more. So the picture is laid under itself before, without anti-aliasing and a few pixels wider: the edge is then
// blended into its own colour, and only the composition's blend is left.
void Effect::draw_flying(const Bitmap* b, double progress, unsigned field) {
    const Quad quad = stage_.flying(progress, 0);
    const double margin = std::min(kUnderpaintPx / thickness(quad), kMostMargin / progress);
    map_quad(scratch_.get(), nullptr, nullptr, b, stage_.flying(progress, margin), field);
    bmp_clear(map_.get(), field);
    map_quad(scratch_.get(), map_.get(), nullptr, b, quad, field | BMP_MAP_ANTIALIAS);
}

void Effect::draw_cube(Bitmap* dest, const Bitmap* a, const Bitmap* b, double progress, unsigned field) {
    bmp_compose_color(dest, a, nullptr, map_.get(), nullptr, settings_.color_yuv, field);  // weights 0: all colour
    bmp_clear(depth_.get(), field);
    map_quad(dest, nullptr, depth_.get(), a, stage_.cube_front(progress), field);
    map_quad(dest, nullptr, depth_.get(), b, stage_.cube_right(progress), field);
}

void Effect::draw_zoomed(const Bitmap* b, double progress, unsigned field) {
    const double left = (1 - progress) * map_->width / 2, top = (1 - progress) * map_->height / 2;
    const Rectangle picture = {static_cast<float>(left), static_cast<float>(top),
                               static_cast<float>(map_->width - left), static_cast<float>(map_->height - top)};
    bmp_clear(map_.get(), field);
    map_picture(scratch_.get(), map_.get(), b, picture, field);
}

// Both pictures are cut at the same number, so that their weights add up to the full one in every pixel: where b's
// weight is not full, a has left a colour.
void Effect::draw_pushed(const Bitmap* a, const Bitmap* b, double progress, unsigned field) {
    const Direction direction = settings_.direction;
    const bool a_first = direction == Direction::kLeft || direction == Direction::kUp;  // the left or the upper one
    const double part = a_first ? 1 - progress : progress;
    const float width = static_cast<float>(map_->width), height = static_cast<float>(map_->height);
    Rectangle first = {0, 0, width, height}, second = first;
    if (direction == Direction::kLeft || direction == Direction::kRight)
        first.right = second.left = static_cast<float>(part * map_->width);
    else
        first.bottom = second.top = static_cast<float>(part * map_->height);
    bmp_clear(map_a_.get(), field);
    map_picture(scratch_a_.get(), map_a_.get(), a, a_first ? first : second, field);
    bmp_clear(map_.get(), field);
    map_picture(scratch_.get(), map_.get(), b, a_first ? second : first, field);
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
