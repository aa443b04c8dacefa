#include "mapping/rect/lines.h"

#include <algorithm>

#include "core/pixels.h"
#include "mapping/rect/area_kernels.h"
#include "mapping/rect/partial.h"

namespace zepbmp {
namespace {

/// What one format does. `pixels` is the number that is decided on together.
struct Format {
    int32_t pixels;
    void (*plan)(const AreaColumns& columns, AreaScratch& scratch);
    AreaKernels::Draw* draw;
    bool keeps_bytes;  ///< a drawn pixel keeps some of its bytes, so that it is read anyway
};

Format format_of(const Bitmap& dest) {
    switch (dest.format) {
        case BMP_FMT_YUY2: return {2, area_kernels.plan_yuy2, area_kernels.yuy2, false};
        case BMP_FMT_RGBQ: return {1, area_kernels.plan_rgbq, area_kernels.rgbq, true};
        default: return {1, area_kernels.plan_rgb8, area_kernels.rgb8, false};
    }
}

/// Pixels of the rectangle: all that are drawn, and those among them that a line of full height leaves to the kernels.
struct Extent {
    int32_t whole_first, whole_end, end;
};

Extent extent_of(const Axis& columns, int32_t dest_width, const Bitmap& dest, const Format& format) {
    Extent extent;
    extent.end = std::min(columns.pixels(), dest_width - columns.begin);
    if (dest.format == BMP_FMT_RGB8) {  // covered in part, a pixel is drawn like any other
        extent.whole_first = 0;
        extent.whole_end = extent.end;
        return extent;
    }
    // A YUY2 line's first pixel is never a whole one's equal, and after it a pair begins.
    const bool from_first = format.pixels == 1 && columns.first == columns.unit;
    const int32_t after = from_first ? 0 : format.pixels == 2 && columns.begin % 2 == 0 ? 2 : 1;
    extent.whole_first = std::min(after, extent.end);
    const int32_t left = columns.extent - std::min(columns.extent, columns.units_before(extent.whole_first));
    const int32_t whole = left / (format.pixels * columns.unit) * format.pixels;
    extent.whole_end = std::min(extent.whole_first + whole, extent.end);
    return extent;
}

/// A part of the rectangle from top to bottom: pixels begin .. end - 1, and those of them that are whole.
struct Strip {
    int32_t begin, whole_begin, whole_end, end;
};

class StripColumns {
public:
    StripColumns(const Axis& axis, const Strip& strip, bool pairs) {
        Cursor cursor(axis.origin + axis.units_before(strip.begin), axis.step, axis.size);
        for (int32_t i = strip.begin; i < strip.end; ++i)
            spans_[i - strip.begin] = cursor.take(axis.cover(i));
        whole_ = {strip.whole_end - strip.whole_begin, spans_ + (strip.whole_begin - strip.begin), axis.step, nullptr,
                  0};
        if (!pairs || whole_.count == 0)
            return;
        const int64_t pair_step = 2 * int64_t{axis.step};
        Cursor pair_cursor(axis.origin + axis.units_before(strip.whole_begin), pair_step, (axis.size + 1) / 2);
        for (int32_t i = 0; i < whole_.count / 2; ++i)
            pair_spans_[i] = pair_cursor.take(2 * axis.unit);
        whole_.pair_spans = pair_spans_;
        whole_.inner_pair_weight = static_cast<int32_t>(std::min(pair_step, int64_t{INT32_MAX}));
    }

    const AreaSpan* all() const { return spans_; }
    const AreaColumns& whole() const { return whole_; }

private:
    AreaSpan spans_[kAreaPixels + 2 * kAreaEnds];
    AreaSpan pair_spans_[kAreaPixels / 2];
    AreaColumns whole_;
};

class Drawer {
public:
    Drawer(const Bitmap& dest, const Bitmap* weights, const RectMapping& mapping, uint32_t flags)
        : dest_(dest), weights_(weights), mapping_(mapping), flags_(flags), format_(format_of(dest)) {
        const int32_t pair_mask = format_.pixels - 1;
        const auto width = [&](const Bitmap& bitmap) { return (bitmap.width + pair_mask) & ~pair_mask; };
        const int32_t dest_width = weights ? std::min(width(dest), width(*weights)) : dest.width;
        const int32_t dest_height = weights ? std::min(dest.height, weights->height) : dest.height;
        extent_ = extent_of(mapping.columns, dest_width, dest, format_);
        lines_ = std::min(mapping.lines.pixels(), dest_height - mapping.lines.begin);
        const SourceLines& source = mapping.source;
        source_end_ = source.pixels + source.pitch * (source.height - 1) +
                      ptrdiff_t{(source.width + pair_mask) & ~pair_mask} * dest.bytes_per_pixel;
        store_ = store_kind(bytes_touched());
    }

    void draw() {
        if (extent_.end < 1)
            return;
        Strip strip = {0, extent_.whole_first, extent_.whole_first, 0};
        do {
            strip.whole_end = std::min(strip.whole_begin + kAreaPixels, extent_.whole_end);
            strip.end = strip.whole_end < extent_.whole_end ? strip.whole_end : extent_.end;
            draw_strip(strip);
            strip.begin = strip.whole_begin = strip.whole_end;
        } while (strip.end < extent_.end);
        if (store_ == kStoreStreamed)
            line_kernels.end_stream();
    }

private:
    size_t bytes_touched() const {
        const Axis &columns = mapping_.columns, &lines = mapping_.lines;
        const double sampled = static_cast<double>(columns.extent) / columns.step * lines.extent / lines.step;
        const double drawn = static_cast<double>(std::max(extent_.end, 0)) * std::max(lines_, 0);
        const double bytes = drawn * (dest_.bytes_per_pixel + (weights_ ? 2 : 0)) + sampled * dest_.bytes_per_pixel;
        return static_cast<size_t>(std::min(bytes, 1e9));
    }

    /// The next drawn line, from line i on.
    int32_t drawn_from(int32_t i) const {
        const bool other_field =
            flags_ & BMP_FIELD && ((mapping_.lines.begin + i) ^ static_cast<int32_t>(flags_ & BMP_FIELD_ODD)) & 1;
        return i + other_field;
    }

    void draw_strip(const Strip& strip) {
        const StripColumns columns(mapping_.columns, strip, format_.pixels == 2);
        if (columns.whole().count > 0)
            format_.plan(columns.whole(), scratch_);
        const Axis& axis = mapping_.lines;
        Cursor cursor(axis.origin, axis.step, axis.size);
        for (int32_t i = 0; i < lines_; ++i) {
            const int32_t cover = axis.cover(i);
            const AreaSpan span = cursor.take(cover);
            if (drawn_from(i) != i)
                continue;
            draw_line(strip, columns, i, cover == axis.unit,
                      {mapping_.source.pixels, mapping_.source.pitch, span, axis.step, source_end_, 0, 0});
        }
    }

    void draw_line(const Strip& strip, const StripColumns& columns, int32_t i, bool full, const AreaLines& lines) {
        const int32_t x = mapping_.columns.begin, y = mapping_.lines.begin + i;
        if (!weights_) {
            format_.draw(pixel_address(dest_, x + strip.begin, y), lines, columns.whole(), scratch_);
            return;
        }
        const int32_t whole_begin = full ? strip.whole_begin : strip.end;
        const int32_t whole_end = full ? strip.whole_end : strip.end;
        draw_partial(strip.begin, whole_begin, y, columns.all(), lines);
        if (whole_begin < whole_end) {
            format_.draw(pixel_address(dest_, x + whole_begin, y), lines, columns.whole(), scratch_);
            line_kernels.fill[store_](pixel_address(*weights_, x + whole_begin, y),
                                      sizeof(uint16_t) * static_cast<size_t>(whole_end - whole_begin),
                                      kWeightFull | kWeightFull << 16);
        }
        draw_partial(whole_end, strip.end, y, columns.all() + (whole_end - strip.begin), lines);
    }

    void draw_partial(int32_t begin, int32_t end, int32_t y, const AreaSpan* spans, const AreaLines& lines) {
        if (begin >= end)
            return;
        const int32_t x = mapping_.columns.begin + begin;
        uint8_t* const dst = pixel_address(dest_, x, y);
        auto* const weights = reinterpret_cast<uint16_t*>(pixel_address(*weights_, x, y));
        const int32_t step = mapping_.columns.step;
        if (dest_.format == BMP_FMT_YUY2)
            draw_partial_yuy2(dst, weights, lines, spans, end - begin, step, x & 1);
        else
            draw_partial_rgbq(dst, weights, lines, spans, end - begin, step);
    }

    const Bitmap& dest_;
    const Bitmap* const weights_;
    const RectMapping& mapping_;
    const uint32_t flags_;
    const Format format_;
    Extent extent_;
    int32_t lines_;
    const uint8_t* source_end_;
    StoreKind store_;
    AreaScratch scratch_;
};

}  // namespace

void draw_rect_lines(const Bitmap& dest, const Bitmap* weights, const RectMapping& mapping, uint32_t flags) {
    Drawer(dest, weights, mapping, flags).draw();
}

}  // namespace zepbmp
