// Rectangles resampled by area: every destination pixel, every source pixel under it.
//
// Units: 4096 to a destination pixel across, 2048 to a line down; a source column spans x_step of the former, a source
// row y_step of the latter. A whole pixel weighs 4096 * 2048 = 2^23.
//
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "arithmetic.h"
#include "model.h"

namespace model {

namespace {

constexpr int32_t kPixelUnits = 4096;
constexpr int32_t kLineUnits = 2048;
constexpr int64_t kWholePixel = int64_t{kPixelUnits} * kLineUnits;
constexpr uint16_t kFull = 4096;

// Single precision; what is stored here is computed in double and goes through `single`.
struct Corners {
    float x0;
    float y0;
    float x1;
    float y1;
};

int64_t truncate_to_int64(double value) {
    if (value > -9223372036854775808.0 && value < 9223372036854775808.0) {
        return static_cast<int64_t>(value);
    }
    return INT64_MIN;
}

// Columns or rows of the source, in the order of a walk along the destination.
struct Walk {
    int64_t at;    // the source column or row
    int64_t left;  // units until the next one
    int64_t step;  // units of each further one
    int64_t last;  // stands for all behind it, as 0 does for all before it
};

// Calls `on_part(column or row, units)` for what lies under the next `units`.
template <class OnPart>
void advance(Walk& walk, int64_t units, OnPart on_part) {
    while (units > 0) {
        const int64_t part = walk.at < walk.last ? std::min(units, walk.left) : units;
        on_part(std::clamp<int64_t>(walk.at, 0, walk.last), part);
        units -= part;
        if (walk.at < walk.last) {
            walk.left -= part;
            if (walk.left < 1) {
                walk.left = walk.step;
                walk.at += 1;
            }
        }
    }
}

Walk start_of_walk(int32_t step, float source_start, int64_t last) {
    const int64_t start = truncate_to_int64(double{source_start} * step);
    return {start / step, step - start % step, step, last};
}

// Destination units that a source column or row spans, rounded up, at least 1.
int32_t step_of(int32_t extent, double units, float source_start, float source_end) {
    const int32_t source_extent = wrap_sub(truncate_to_int(source_end * units), truncate_to_int(source_start * units));
    if (source_extent <= 0) {
        return 1;
    }
    return std::max(1, truncate_to_int(extent * units / source_extent + 0.99999));
}

// The source as it is read: a frame, or one field of it.
struct Source {
    uint32_t format;
    const uint8_t* pixels;
    std::ptrdiff_t pitch;
    int64_t width;
    int64_t height;

    // RGB8: the byte. RGBQ: bytes 0 to 2. YUY2: the pixel's luma, U and V of its pair.
    int64_t sample(int64_t column, int64_t row, int channel) const {
        const uint8_t* const line = pixels + static_cast<std::ptrdiff_t>(row) * pitch;
        if (format == BMP_FMT_RGB8) {
            return line[column];
        }
        if (format == BMP_FMT_RGBQ) {
            return line[4 * column + channel];
        }
        return channel == 0 ? line[2 * column] : line[column / 2 * 4 + 2 * channel - 1];
    }
};

// Sums over the part of a destination pixel that the rectangle covers.
struct Sums {
    int64_t channel[3] = {0, 0, 0};
    int64_t weight = 0;
};

// `width`, `height`: covered units of the pixel. The columns move on, the rows don't.
Sums sum_pixel(const Source& source, Walk& columns, int64_t width, const Walk& rows, int64_t height) {
    const int channels = source.format == BMP_FMT_RGB8 ? 1 : 3;
    Sums sums;
    advance(columns, width, [&](int64_t column, int64_t w) {
        Walk down = rows;
        advance(down, height, [&](int64_t row, int64_t h) {
            for (int k = 0; k < channels; ++k) {
                sums.channel[k] += source.sample(column, row, k) * h * w;
            }
            sums.weight += h * w;
        });
    });
    return sums;
}

uint8_t to_byte(int64_t value) { return static_cast<uint8_t>(value); }

// A sum mixed with the byte that is there, whose weight is `weight`; truncated.
uint8_t mixed(int64_t sum, int64_t total, uint8_t old, int64_t weight) {
    return to_byte((sum + old * weight * kLineUnits) / (total + weight * kLineUnits));
}

uint16_t grown(int64_t total, int64_t weight) {
    return static_cast<uint16_t>((total + weight * kLineUnits) >> 11);  // 11: weights are area / 2048
}

void put_rgbq(uint8_t* pixel, uint8_t* weight, const Sums& sums) {
    const bool whole = sums.weight == kWholePixel;
    const int64_t p = whole ? 0 : load_u16(weight);
    for (int k = 0; k < 3; ++k) {
        pixel[k] = mixed(sums.channel[k], sums.weight, pixel[k], p);
    }
    store_u16(weight, whole ? kFull : grown(sums.weight, p));
}

// A YUY2 pixel, mixed with what is there. `weights`: of the line.
void put_yuy2(uint8_t* line, uint8_t* weights, int64_t x, const Sums& sums) {
    const int64_t p = load_u16(weights + 2 * x);
    const int64_t q = p + load_u16(weights + 2 * (x ^ 1));
    uint8_t* const pair = line + x / 2 * 4;
    line[2 * x] = mixed(sums.channel[0], sums.weight, line[2 * x], p);
    pair[1] = mixed(sums.channel[1], sums.weight, pair[1], q);
    pair[3] = mixed(sums.channel[2], sums.weight, pair[3], q);
    store_u16(weights + 2 * x, grown(sums.weight, p));
}

// A whole YUY2 pair, rounded to nearest.
void put_pair(uint8_t* pair, uint8_t* weights, const Sums& first, const Sums& second) {
    pair[0] = to_byte((first.channel[0] + kWholePixel / 2) / kWholePixel);
    pair[1] = to_byte((first.channel[1] + second.channel[1] + kWholePixel) / (2 * kWholePixel));
    pair[2] = to_byte((second.channel[0] + kWholePixel / 2) / kWholePixel);
    pair[3] = to_byte((first.channel[2] + second.channel[2] + kWholePixel) / (2 * kWholePixel));
    store_u16(weights, kFull);
    store_u16(weights + 2, kFull);
}

// The destination's side of a row.
struct Row {
    uint8_t* line;
    uint8_t* weights;     // null for RGB8
    int64_t x;            // first pixel
    int64_t end;          // no pixel from here on exists
    int64_t first_width;  // covered units of the first pixel
    int64_t width;        // of the row
    int64_t height;       // covered units of the line
};

void map_row(const Row& row, const Source& source, Walk columns, const Walk& rows) {
    int64_t left = row.width;
    int64_t covered = row.first_width;
    for (int64_t x = row.x; left > 0 && x < row.end; ++x) {
        const bool whole_pair = source.format == BMP_FMT_YUY2 && x > row.x && x % 2 == 0 && row.height == kLineUnits &&
                                left >= 2 * kPixelUnits;
        const Sums sums = sum_pixel(source, columns, covered, rows, row.height);
        left -= covered;
        if (whole_pair) {
            const Sums next = sum_pixel(source, columns, kPixelUnits, rows, row.height);
            left -= kPixelUnits;
            put_pair(row.line + 2 * x, row.weights + 2 * x, sums, next);
            ++x;
        } else if (source.format == BMP_FMT_YUY2) {
            put_yuy2(row.line, row.weights, x, sums);
        } else if (source.format == BMP_FMT_RGBQ) {
            put_rgbq(row.line + 4 * x, row.weights + 2 * x, sums);
        } else {
            row.line[x] = to_byte(sums.channel[0] / kWholePixel);
        }
        covered = std::min<int64_t>(left, kPixelUnits);
    }
}

// Only the start corners move; the spans are those before any clipping.
void clip(Corners& dest, Corners& source, double dest_width, double dest_height, double source_width,
          double source_height) {
    const double dw = single(double{dest.x1} - dest.x0);
    const double dh = single(double{dest.y1} - dest.y0);
    const double sw = single(double{source.x1} - source.x0);
    const double sh = single(double{source.y1} - source.y0);
    if (source.x0 < 0) {
        dest.x0 = single(dest.x0 - dw * source.x0 / sw);
        source.x0 = 0;
    }
    if (source.y0 < 0) {
        dest.y0 = single(dest.y0 - dh * source.y0 / sh);
        source.y0 = 0;
    }
    if (source.x0 > source_width) {
        dest.x0 = single(dest.x0 - (source.x0 - source_width) * dw / sw);
        source.x0 = single(source_width);
    }
    if (source.y0 > source_height) {
        dest.y0 = single(dest.y0 - (source.y0 - source_height) * dh / sh);
        source.y0 = single(source_height);
    }
    if (dest.x0 < 0) {
        source.x0 = single(source.x0 - sw * dest.x0 / dw);
        dest.x0 = 0;
    }
    if (dest.y0 < 0) {
        source.y0 = single(source.y0 - sh * dest.y0 / dh);
        dest.y0 = 0;
    }
    if (dest.x0 > dest_width) {
        source.x0 = single(source.x0 - (dest.x0 - dest_width) * sw / dw);
        dest.x0 = single(dest_width);
    }
    if (dest.y0 > dest_height) {
        source.y0 = single(source.y0 - (dest.y0 - dest_height) * sh / dh);
        dest.y0 = single(dest_height);
    }
}

}  // namespace

void bmp_map_rect(Bitmap* dest, Bitmap* weight_map, float dx0, float dy0, float dx1, float dy1, const Bitmap* src,
                  const int32_t* src_size, float sx0, float sy0, float sx1, float sy1, uint32_t flags) {
    const bool colour = dest->format == BMP_FMT_YUY2 || dest->format == BMP_FMT_RGBQ;
    if (src_size || !(weight_map ? colour : dest->format == BMP_FMT_RGB8)) {
        return;
    }
    Corners to = {dx0, dy0, dx1, dy1};
    Corners from = {sx0, sy0, sx1, sy1};

    Source source = {dest->format, src->pixels, src->pitch, src->width, src->height};
    double clip_height = single(src->height);
    if ((flags & BMP_FIELD) && (src->create_flags & 2)) {
        const bool odd = flags & BMP_FIELD_ODD;
        // From the centres of frame lines to those of the field's.
        const double shift = odd ? -0.25 : 0.25;
        from.y0 = single(from.y0 * 0.5 + shift);
        from.y1 = single(from.y1 * 0.5 + shift);
        source.pixels += odd ? src->pitch : 0;
        source.pitch *= 2;
        source.height = odd ? source.height / 2 : (source.height + 1) / 2;
        clip_height *= 0.5;
    }
    if (source.width < 1 || source.height < 1) {
        return;  // nothing to read
    }
    const Bitmap* const sized = weight_map ? weight_map : dest;
    clip(to, from, single(sized->width), single(sized->height), single(src->width), clip_height);

    const int32_t left = truncate_to_int(to.x0 * 4096.0);
    const int32_t top = truncate_to_int(to.y0 * 2048.0);
    const int32_t width = wrap_sub(truncate_to_int(to.x1 * 4096.0), left);
    const int32_t height = wrap_sub(truncate_to_int(to.y1 * 2048.0), top);
    if (width < 1 || height < 1 || left < 0 || top < 0) {
        return;
    }

    Walk columns = start_of_walk(step_of(width, 4096.0, from.x0, from.x1), from.x0, source.width - 1);
    Walk rows = start_of_walk(step_of(height, 2048.0, from.y0, from.y1), from.y0, source.height - 1);

    // What the caller has to keep inside is held inside, but for the partner of a last odd pixel.
    const int32_t last_pixel_shared = dest->format == BMP_FMT_YUY2 ? 1 : 0;
    const int64_t end_x = (std::min(dest->width, sized->width) + last_pixel_shared) & ~last_pixel_shared;
    const int64_t end_y = std::min(dest->height, sized->height);

    int64_t covered = std::min<int64_t>(kLineUnits - top % kLineUnits, height);
    int64_t units_left = height;
    for (int64_t y = top / kLineUnits; y < end_y && units_left > 0; ++y) {
        const bool other_field = (flags & BMP_FIELD) && ((static_cast<uint32_t>(y) ^ flags) & BMP_FIELD_ODD);
        if (!other_field) {
            Row row;
            row.line = dest->pixels + static_cast<std::ptrdiff_t>(y) * dest->pitch;
            row.weights =
                weight_map ? weight_map->pixels + static_cast<std::ptrdiff_t>(y) * weight_map->pitch : nullptr;
            row.x = left / kPixelUnits;
            row.end = end_x;
            row.first_width = std::min(kPixelUnits - left % kPixelUnits, width);
            row.width = width;
            row.height = covered;
            map_row(row, source, columns, rows);
        }
        advance(rows, covered, [](int64_t, int64_t) {});
        units_left -= covered;
        covered = std::min<int64_t>(units_left, kLineUnits);
    }
}

}  // namespace model
