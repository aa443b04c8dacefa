#include "effect.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "effects/feather.h"
#include "effects/reach.h"

namespace zepbmp::transition {

namespace {

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

std::optional<Bitmap> make_if(bool needed, int width, int height, Format format) {
    return needed ? std::optional<Bitmap>(std::in_place, width, height, format) : std::nullopt;
}

bool has_scratch(EffectKind kind) {
    return kind == EffectKind::kShape || kind == EffectKind::kFly || kind == EffectKind::kZoom ||
           kind == EffectKind::kPush;
}

/// Maps all of a picture onto a rectangle, on the lines that `field` selects.
void map_picture(Bitmap& dest, Bitmap& coverage, const Bitmap& picture, const FloatBox& to, Field field) {
    const float width = static_cast<float>(picture.width()), height = static_cast<float>(picture.height());
    if (field == kBottomField && picture.is_interlaced()) {
        // The lines of a bottom field are two frame lines high around their centres, so that the first one begins half
        // a line below the frame's top, and the mapping would begin there, too. It is continued up to the top.
        constexpr float kFieldTop = 0.5f;
        const float split = to.y0 + (to.y1 - to.y0) * (kFieldTop / height);
        map_rect(dest, coverage, {to.x0, to.y0, to.x1, split}, picture, {0, kFieldTop, width, 2 * kFieldTop}, field);
        map_rect(dest, coverage, {to.x0, split, to.x1, to.y1}, picture, {0, kFieldTop, width, height}, field);
    } else {
        map_rect(dest, coverage, to, picture, {0, 0, width, height}, field);
    }
}

}  // namespace

Effect::Effect(const EffectSettings& settings, int width, int height)
    : settings_(settings),
      width_px_(width),
      height_px_(height * settings.line_height_px),
      corner_px_(effects::Reach(width_px_ / 2, height_px_ / 2, width_px_, height_px_).corner()),
      band_px_(corner_px_ * kBandShare),
      outline_px_(covering_scale(settings.outline, width_px_ / 2, height_px_ / 2)),
      stage_(width, height, settings.line_height_px),
      map_(width, height, Format::pwrw),
      outer_map_(make_if(settings.kind == EffectKind::kBand, width, height, Format::pwrw)),
      scratch_(make_if(has_scratch(settings.kind), width, height, Format::yuy2)),
      map_a_(make_if(settings.kind == EffectKind::kPush, width, height, Format::pwrw)),
      scratch_a_(make_if(settings.kind == EffectKind::kPush, width, height, Format::yuy2)),
      depth_(make_if(settings.kind == EffectKind::kCube, width, height, Format::quad3)),
      column_64ths_(width),
      line_64ths_(height) {}

void Effect::compose(Bitmap& dest, const Bitmap& a, const Bitmap& b, double progress, Field field) {
    if (progress <= 0 || progress >= 1) {
        copy(dest, progress <= 0 ? a : b, field);
        return;
    }
    const double reach = corner_px_ + settings_.feather_px;  // a disc of this radius is full in every corner
    switch (settings_.kind) {
        case EffectKind::kCrossfade:
            zepbmp::compose(dest, a, b, Level(static_cast<int>(std::lround(progress * kWeightFull))), field);
            break;
        case EffectKind::kBox:
            draw_box(progress, field);
            zepbmp::compose(dest, a, b, map_, field);
            break;
        case EffectKind::kCircle:
            draw_circle(map_, progress * reach, field);
            zepbmp::compose(dest, a, b, map_, field);
            break;
        case EffectKind::kBand: {
            const double outer = progress * (reach + band_px_);
            draw_circle(map_, outer - band_px_, field);
            draw_circle(*outer_map_, outer, field);
            compose_color(dest, a, b, map_, *outer_map_, Yuv::unpacked(settings_.color_yuv), field);
            break;
        }
        case EffectKind::kShape:
            draw_shape(progress, field);
            zepbmp::compose(dest, a, b, map_, field);
            break;
        case EffectKind::kFly:
            draw_flying(b, progress, field);
            zepbmp::compose(dest, a, *scratch_, map_, field);
            break;
        case EffectKind::kCube: draw_cube(dest, a, b, progress, field); break;
        case EffectKind::kZoom:
            draw_zoomed(b, progress, field);
            zepbmp::compose(dest, a, *scratch_, map_, field);
            break;
        case EffectKind::kPush:
            draw_pushed(a, b, progress, field);
            zepbmp::compose(dest, *scratch_a_, *scratch_, map_, field);
            break;
    }
}

void Effect::draw_box(double progress, Field field) {
    clear(map_, field);
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
    const float width = static_cast<float>(map_.width()) - 2 * left;
    const float height = static_cast<float>(map_.height()) - 2 * top;
    alpha_rect(map_, {left, top, width, height}, ShapeMode::add, field);
}

// A rectangle n/64 of a pixel wide gives its column n/64 of the full weight. So the soft edge is laid from such strips:
// one for each column of the ramp, over the lines that reach the column's level, and one for each line of the ramp,
// over the columns that pass the line's level. Each pixel is in one strip and gets the smaller of its column's and its
// line's level.
void Effect::draw_soft_box(double half_width, double half_height, Field field) {
    const double line = settings_.line_height_px;
    fill_ramp(column_64ths_, half_width, settings_.feather_px, settings_.edge);
    fill_ramp(line_64ths_, half_height / line, settings_.feather_px / line, settings_.edge);

    const auto strip = [&](Run columns, Run lines, int width_64ths, int height_64ths) {
        alpha_rect(map_,
                   {static_cast<float>(columns.begin), static_cast<float>(lines.begin),
                    static_cast<float>(width_64ths) / kEdgeSteps, static_cast<float>(height_64ths) / kEdgeSteps},
                   ShapeMode::add, field);
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

void Effect::draw_circle(Bitmap& map, double radius, Field field) const {
    if (radius <= 0) {
        clear(map, field);
        return;
    }
    const Circle circle = {.cx = static_cast<float>(width_px_ / 2),
                           .cy = static_cast<float>(height_px_ / 2),
                           .radius = static_cast<float>(radius),
                           .feather = static_cast<float>(effects::drawn_feather(settings_.feather_px)),
                           .aspect = static_cast<float>(settings_.line_height_px)};
    alpha_circle(map, circle, settings_.edge == Ease::kCosine ? Ramp::cosine : Ramp::linear, field);
}

// The polygon is filled with a colour that nobody sees: wanted is the plane of its coverage.
void Effect::draw_shape(double progress, Field field) {
    const double scale = progress * outline_px_;
    const auto held = [](double position, float limit) {  // of a very large frame, where nobody sees it
        return std::clamp(static_cast<float>(position), -limit, limit);
    };
    std::vector<Vertex> vertices;
    for (const OutlinePoint& point : settings_.outline)
        vertices.push_back(
            {0, 0, 1, held(width_px_ / 2 + scale * point.x, kPositionLimit),
             held((height_px_ / 2 + scale * point.y) / settings_.line_height_px, kAntialiasedLineLimit)});
    clear(map_, field);
    fill_polygon(*scratch_, Yuv(), Level(kWeightFull), vertices, {.field = field, .coverage = &map_});
}

// An anti-aliased polygon blends the texture's edge into what is there, and the composition blends by the same coverage
// once more. So the picture is laid under itself before, without anti-aliasing and a few pixels wider: the edge is then
// blended into its own colour, and only the composition's blend is left.
void Effect::draw_flying(const Bitmap& b, double progress, Field field) {
    const effects::Quad quad = stage_.flying(progress, 0);
    const double margin = std::min(kUnderpaintPx / effects::thickness(quad), kMostMargin / progress);
    map_polygon(*scratch_, b, stage_.flying(progress, margin), {.field = field});
    clear(map_, field);
    map_polygon(*scratch_, b, quad, {.field = field, .sampling = Sampling::filtered_antialiased, .coverage = &map_});
}

void Effect::draw_cube(Bitmap& dest, const Bitmap& a, const Bitmap& b, double progress, Field field) {
    compose_color(dest, a, map_, Yuv::unpacked(settings_.color_yuv),
                  field);  // weights 0: all colour
    clear(*depth_, field);
    map_polygon(dest, a, stage_.cube_front(progress), {.field = field, .depth = &*depth_});
    map_polygon(dest, b, stage_.cube_right(progress), {.field = field, .depth = &*depth_});
}

void Effect::draw_zoomed(const Bitmap& b, double progress, Field field) {
    const double left = (1 - progress) * map_.width() / 2, top = (1 - progress) * map_.height() / 2;
    const FloatBox picture = {static_cast<float>(left), static_cast<float>(top),
                              static_cast<float>(map_.width() - left), static_cast<float>(map_.height() - top)};
    clear(map_, field);
    map_picture(*scratch_, map_, b, picture, field);
}

// Both pictures are cut at the same number, so that their weights add up to the full one in every pixel: where b's
// weight is not full, a has left a colour.
void Effect::draw_pushed(const Bitmap& a, const Bitmap& b, double progress, Field field) {
    const Direction direction = settings_.direction;
    const bool a_first = direction == Direction::kLeft || direction == Direction::kUp;  // the left or the upper one
    const double part = a_first ? 1 - progress : progress;
    const float width = static_cast<float>(map_.width()), height = static_cast<float>(map_.height());
    FloatBox first = {0, 0, width, height}, second = first;
    if (direction == Direction::kLeft || direction == Direction::kRight)
        first.x1 = second.x0 = static_cast<float>(part * map_.width());
    else
        first.y1 = second.y0 = static_cast<float>(part * map_.height());
    clear(*map_a_, field);
    map_picture(*scratch_a_, *map_a_, a, a_first ? first : second, field);
    clear(map_, field);
    map_picture(*scratch_, map_, b, a_first ? second : first, field);
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
