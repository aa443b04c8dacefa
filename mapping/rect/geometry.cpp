#include "mapping/rect/geometry.h"

#include "core/arithmetic.h"
#include "mapping/rect/units.h"

namespace zepbmp {
namespace {

constexpr double kRoundUp = 0.99999;  // a step is rounded up from here on

/// Start and end along one axis, of the destination and of the source. Each stored value is single precision, each
/// right-hand side double.
struct Interval {
    float start, end;
    double length() const { return single(static_cast<float>(double{end} - double{start})); }
    void move_start(double by) { start = single(static_cast<float>(double{start} - by)); }
};

/// Where a start lies outside 0..size it is moved to the edge, and the other rectangle's start in proportion to the
/// lengths, which are those before clipping. The ends stay.
void clip_start(Interval& clipped, double length, float size, Interval& other, double other_length) {
    if (clipped.start < 0) {
        other.move_start(other_length * double{clipped.start} / length);
        clipped.start = 0;
    }
    if (clipped.start > size) {
        other.move_start((double{clipped.start} - double{size}) * other_length / length);
        clipped.start = size;
    }
}

void clip_starts(Interval& dest, float dest_size, Interval& source, float source_size) {
    const double drawn = dest.length(), sampled = source.length();
    clip_start(source, sampled, source_size, dest, drawn);
    clip_start(dest, drawn, dest_size, source, sampled);
}

int64_t trunc_to_int64(double value) {
    constexpr double kLimit = 9223372036854775808.0;
    return value > -kLimit && value < kLimit ? static_cast<int64_t>(value) : INT64_MIN;
}

bool to_units(const Interval& dest, const Interval& source, int32_t unit, int32_t source_size, Axis* axis) {
    const double scale = unit;
    const int32_t begin = trunc_to_int32(double{dest.start} * scale);
    const int32_t end = wrapping_sub(0, trunc_to_int32(double{dest.end} * -scale));
    const int32_t extent = wrapping_sub(end, begin);
    if (extent < 1 || begin < 0 || source_size < 1)
        return false;
    const int32_t sampled =
        wrapping_sub(trunc_to_int32(double{source.end} * scale), trunc_to_int32(double{source.start} * scale));
    const int32_t step = trunc_to_int32(extent * scale / sampled + kRoundUp);
    axis->unit = unit;
    axis->step = step < 1 ? 1 : step;
    axis->begin = begin / unit;
    axis->first = unit - begin % unit;
    axis->first = axis->first < extent ? axis->first : extent;
    axis->extent = extent;
    axis->origin = trunc_to_int64(axis->step * double{source.start});
    axis->size = source_size;
    return true;
}

/// A source that was created as interlaced gives the field that the flags select.
SourceLines source_lines(const Bitmap& source, uint32_t flags) {
    if (!(flags & BMP_FIELD) || !(source.create_flags & kHoldsFields))
        return {source.pixels, source.pitch, source.width, source.height, false};
    const FieldLines field = field_lines(flags);
    return {line_address(source, field.first), ptrdiff_t{field.step} * source.pitch, source.width,
            field.count(source.height), true};
}

}  // namespace

bool map_to_units(const Bitmap& dest_size, FloatRect dest, const Bitmap& source, FloatRect sampled, uint32_t flags,
                  RectMapping* mapping) {
    mapping->source = source_lines(source, flags);
    auto clip_height = static_cast<float>(source.height);
    if (mapping->source.is_field) {  // from the frame's line centres to the field's
        clip_height *= 0.5f;
        const double shift = flags & BMP_FIELD_ODD ? -0.25 : 0.25;
        sampled.y0 = single(static_cast<float>(sampled.y0 * 0.5 + shift));
        sampled.y1 = single(static_cast<float>(sampled.y1 * 0.5 + shift));
    }
    Interval dest_x = {dest.x0, dest.x1}, dest_y = {dest.y0, dest.y1};
    Interval source_x = {sampled.x0, sampled.x1}, source_y = {sampled.y0, sampled.y1};
    clip_starts(dest_x, static_cast<float>(dest_size.width), source_x, static_cast<float>(source.width));
    clip_starts(dest_y, static_cast<float>(dest_size.height), source_y, clip_height);
    return to_units(dest_x, source_x, kColumnUnits, mapping->source.width, &mapping->columns) &&
           to_units(dest_y, source_y, kLineUnits, mapping->source.height, &mapping->lines);
}

}  // namespace zepbmp
