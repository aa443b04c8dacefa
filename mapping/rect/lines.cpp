#include "mapping/rect/lines.h"

#include <algorithm>

#include "mapping/rect/area_kernels.h"
#include "mapping/rect/partial.h"
#include "mapping/rect/strip.h"

namespace zepbmp {
namespace {

/// What one destination format does.
struct Format {
    int32_t together;  ///< pixels that a kernel draws together, from a multiple of their number on
    bool mixes;        ///< pixels and lines that are covered in part are mixed with what is there
    void (*plan)(const AreaColumns& columns, AreaScratch& scratch);
    AreaKernels::Draw* draw;
    DrawPartial* draw_partial;
};

Format format_of(const Bitmap& dest) {
    switch (dest.format) {
        case BMP_FMT_YUY2: return {2, true, area_kernels.plan_yuy2, area_kernels.yuy2, draw_partial_yuy2};
        case BMP_FMT_RGBQ: return {1, true, area_kernels.plan_rgbq, area_kernels.rgbq, draw_partial_rgbq};
        default: return {1, false, area_kernels.plan_rgb8, area_kernels.rgb8, draw_partial_rgb8};
    }
}

/// Everything that a call's lines have in common.
class Drawer {
public:
    Drawer(const Bitmap& dest, const Bitmap* weights, const RectMapping& mapping, uint32_t flags)
        : dest_(dest), weights_(weights), mapping_(mapping), flags_(flags), format_(format_of(dest)) {
        const Bitmap& map = weights ? *weights : dest;
        const int32_t width = std::min(with_partner(dest.width), with_partner(map.width));
        extent_ = extent_of(mapping.columns, width, format_.together);
        lines_ = std::min(mapping.lines.pixels(), std::min(dest.height, map.height) - mapping.lines.begin);
        line_step_ = flags & BMP_FIELD ? 2 : 1;
        const SourceLines& source = mapping.source;
        source_end_ = source.pixels + source.pitch * (source.height - 1) +
                      ptrdiff_t{with_partner(source.width)} * dest.bytes_per_pixel;
        store_ = store_kind(bytes_touched());
    }

    void draw() {
        StripColumns columns(mapping_.columns, extent_, format_.together == 2);
        while (columns.next())
            draw_strip(columns);
        if (store_ == kStoreStreamed)
            line_kernels.end_stream();
    }

private:
    /// A pair's second pixel may lie in the padding.
    int32_t with_partner(int32_t width) const { return (width + format_.together - 1) & -format_.together; }

    size_t bytes_touched() const {
        const Axis &columns = mapping_.columns, &lines = mapping_.lines;
        const double sampled = static_cast<double>(columns.extent) / columns.step * lines.extent / lines.step;
        const double drawn = static_cast<double>(std::max(extent_.end, 0)) * std::max(lines_, 0);
        const double bytes = drawn * (dest_.bytes_per_pixel + (weights_ ? 2 : 0)) + sampled * dest_.bytes_per_pixel;
        return static_cast<size_t>(std::min(bytes, 1e9));
    }

    uint16_t* weights_at(int32_t x, int32_t y) const {
        return weights_ ? reinterpret_cast<uint16_t*>(pixel_address(*weights_, x, y)) : nullptr;
    }
    ptrdiff_t later_pixels() const { return ptrdiff_t{dest_.pitch} * line_step_; }

    bool is_selected(int32_t i) const {
        const auto odd = static_cast<int32_t>(flags_ & BMP_FIELD_ODD);
        return !(flags_ & BMP_FIELD) || ((mapping_.lines.begin + i) ^ odd) % 2 == 0;
    }

    void draw_strip(const StripColumns& columns) {
        if (columns.whole().count > 0)
            format_.plan(columns.whole(), scratch_);
        const Axis& axis = mapping_.lines;
        Cursor cursor(axis.origin, axis.step, axis.size);
        AreaLines lines = {mapping_.source.pixels, mapping_.source.pitch, {}, axis.step, source_end_, 0, 0};
        int32_t waiting = -1;  // the line that is drawn as soon as it is known which ones of the source come next
        for (int32_t i = 0; i < lines_; ++i) {
            const AreaSpan span = cursor.take(axis.cover(i));
            if (!is_selected(i))
                continue;
            if (waiting >= 0) {
                lines.later = std::max(span.first, lines.span.first + lines.span.count);
                lines.ahead = span.first + span.count - lines.later;
                draw_line(columns, waiting, lines);
            }
            lines.span = span;
            waiting = i;
        }
        if (waiting >= 0) {
            lines.ahead = 0;
            draw_line(columns, waiting, lines);
        }
    }

    void draw_line(const StripColumns& columns, int32_t i, const AreaLines& lines) {
        const Strip& strip = columns.strip();
        const int32_t y = mapping_.lines.begin + i;
        const bool mixed = format_.mixes && mapping_.lines.cover(i) != mapping_.lines.unit;
        const int32_t whole_end = mixed ? strip.end : strip.whole_end;
        const int32_t whole_begin = mixed ? strip.end : strip.whole_begin;
        draw_partial(columns, strip.begin, whole_begin, y, lines);
        if (whole_begin < whole_end)
            draw_whole(columns.whole(), whole_begin, y, lines);
        draw_partial(columns, whole_end, strip.end, y, lines);
    }

    void draw_whole(const AreaColumns& columns, int32_t begin, int32_t y, const AreaLines& lines) {
        const int32_t x = mapping_.columns.begin + begin;
        format_.draw({pixel_address(dest_, x, y), weights_at(x, y), later_pixels(), store_}, lines, columns, scratch_);
    }

    void draw_partial(const StripColumns& columns, int32_t begin, int32_t end, int32_t y, const AreaLines& lines) {
        if (begin >= end)
            return;
        const int32_t x = mapping_.columns.begin + begin;
        uint8_t* const dst = pixel_address(dest_, x, y);
        uint16_t* const weights = weights_at(x, y);
        const auto pixels = static_cast<size_t>(end - begin);
        line_kernels.prefetch(pixel_address(dest_, x, y + line_step_),
                              pixels * static_cast<size_t>(dest_.bytes_per_pixel), 0, 1);
        if (weights)
            line_kernels.prefetch(pixel_address(*weights_, x, y + line_step_), pixels * sizeof(uint16_t), 0, 1);
        format_.draw_partial(dst, weights, lines,
                             {end - begin, columns.span(begin), mapping_.columns.step, x % 2 != 0});
    }

    const Bitmap& dest_;
    const Bitmap* const weights_;
    const RectMapping& mapping_;
    const uint32_t flags_;
    const Format format_;
    Extent extent_;
    int32_t lines_;
    int32_t line_step_;  ///< from a drawn line to the next
    const uint8_t* source_end_;
    StoreKind store_;
    AreaScratch scratch_;
};

}  // namespace

void draw_rect_lines(const Bitmap& dest, const Bitmap* weights, const RectMapping& mapping, uint32_t flags) {
    Drawer(dest, weights, mapping, flags).draw();
}

}  // namespace zepbmp
