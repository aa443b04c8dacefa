// One span of a line: its arguments, where each pixel samples, what it becomes.
//
// SPDX-License-Identifier: MIT
#include <cstring>

#include "polygon_steps.h"

namespace model {

namespace {

struct Along {
    float step;
    float start;
};

// `offset` is added to the value at destination x = 0 before it is rounded.
Along across(const Interpolant& left, const Interpolant& right, const Crossing& from, const Crossing& to, int64_t line,
             double offset) {
    const double a = left.at_centre(line);
    const double b = right.at_centre(line);
    const double width = double{to.x} - double{from.x};
    const double slope = width > 0 ? (b - a) / width : 0.0;
    return {single(slope), single((a - slope * (double{from.x} - 0.5)) + offset)};
}

// ---------------------------------------------------------------- sampling

// Of neighbouring columns or rows, the first one holding the position; those left over are 0.
using Weights = std::array<uint32_t, 9>;

Weights box_weights(size_t size, uint32_t fraction) {
    Weights weights = {128 - fraction};
    for (size_t i = 1; i < size; ++i) {
        weights[i] = 128;
    }
    weights[size] = fraction;
    return weights;
}

Weights column_weights(int index, uint32_t fraction) {
    constexpr std::array<size_t, 5> kWidths = {1, 2, 3, 4, 8};
    return box_weights(kWidths[static_cast<size_t>((index - 1) % 5)], fraction);
}

Weights row_weights(int index, uint32_t fraction) {
    switch ((index - 1) / 5) {
        case 0: return box_weights(1, fraction);
        case 1:
            if (fraction > 64) {
                return {128 - fraction, 128, fraction - 64};
            }
            return {128 - fraction, fraction + 64};
        case 2: return box_weights(2, fraction);
        default: return box_weights(4, fraction);
    }
}

// Channels: RGBQ bytes 0 to 3; YUY2 luma 0, U 1, V 2; PWRW and A8 0.
uint64_t texel(const Source& source, int channel, int64_t column, int64_t row) {
    const uint8_t* line = source.base + static_cast<std::ptrdiff_t>(row * source.pitch);
    switch (source.format) {
        case BMP_FMT_RGBQ: return line[4 * column + channel];
        case BMP_FMT_YUY2: return channel == 0 ? line[2 * column] : line[column / 2 * 4 + (channel == 1 ? 1 : 3)];
        case BMP_FMT_PWRW: return load_u16(line + 2 * column);
        default: return line[column];
    }
}

struct Position {
    int32_t u;  // 16.16, inside the source
    int32_t v;
};

uint32_t sample(const Source& source, int index, int channel, Position at) {
    const int64_t column = at.u >> 16;
    const int64_t row = at.v >> 16;
    if (index == 0) {
        if (source.format != BMP_FMT_A8) {
            return static_cast<uint32_t>(texel(source, channel, column, row));
        }
        index = 1;  // a mask is never sampled coarser than bilinear
    }
    const Weights columns = column_weights(index, static_cast<uint32_t>(at.u >> 9) & 127);
    const Weights rows = row_weights(index, static_cast<uint32_t>(at.v >> 9) & 127);
    uint64_t sum = 0;
    uint64_t total = 0;
    for (size_t j = 0; j < rows.size(); ++j) {
        for (size_t i = 0; i < columns.size(); ++i) {
            const uint64_t weight = uint64_t{columns[i]} * rows[j];
            if (weight != 0) {
                sum += weight * texel(source, channel, column + static_cast<int64_t>(i), row + static_cast<int64_t>(j));
                total += weight;
            }
        }
    }
    return static_cast<uint32_t>((sum + total / 2) / total);
}

int32_t clamp_coordinate(float value, float maximum) {
    if (!(value >= 0)) {
        value = 0;
    }
    if (value > maximum) {
        value = maximum;
    }
    return static_cast<int32_t>(value);
}

// ---------------------------------------------------------------- pixels

float along(float step, float start, int32_t x) { return add(multiply(single(x), step), start); }

Position position_affine(const Mapping& mapping, const SpanArguments& span, int32_t x) {
    return {clamp_coordinate(along(span.du, span.u_start, x), single(mapping.filter.u_max)),
            clamp_coordinate(along(span.dv, span.v_start, x), single(mapping.filter.v_max))};
}

Position position_perspective(const Mapping& mapping, const SpanArguments& span, int32_t x, float w) {
    const float q = divide(1, w);
    const float u = add(multiply(along(span.du, span.u_start, x), q), single(mapping.filter.u_offset));
    const float v = add(multiply(along(span.dv, span.v_start, x), q), single(mapping.filter.v_offset));
    return {clamp_coordinate(u, single(mapping.filter.u_max)), clamp_coordinate(v, single(mapping.filter.v_max))};
}

uint8_t tint_yuy2(uint32_t d, uint32_t colour, uint32_t strength) {
    return static_cast<uint8_t>((d * (255 - strength) + (colour & 255) * strength) >> 8);
}

uint8_t tint_rgbq(uint32_t d, uint32_t colour, uint32_t strength) {
    return static_cast<uint8_t>((d * (255 - strength) + (colour & 255) * strength) / 255);
}

void draw_tint(const Mapping& mapping, uint8_t* line, int64_t x, Position at) {
    const uint32_t strength = sample(mapping.source, mapping.filter.index, 0, at);
    if (mapping.destination_format == BMP_FMT_RGBQ) {
        for (int k = 0; k < 3; ++k) {
            uint8_t& byte = line[4 * x + k];
            byte = tint_rgbq(byte, mapping.colour >> 8 * k, strength);
        }
        return;
    }
    line[2 * x] = tint_yuy2(line[2 * x], mapping.colour >> 16, strength);
    if (x % 2 == 0) {
        line[2 * x + 1] = tint_yuy2(line[2 * x + 1], mapping.colour >> 8, strength);
        line[2 * x + 3] = tint_yuy2(line[2 * x + 3], mapping.colour, strength);
    }
}

// The partner of an odd line's last YUY2 pixel lies in the padding; its byte takes V all the same.
void draw_pixel(const Mapping& mapping, uint8_t* line, int64_t x, Position at) {
    const Source& source = mapping.source;
    const int index = mapping.filter.index;
    switch (source.format) {
        case BMP_FMT_RGBQ:
            for (int k = 0; k < 4; ++k) {
                line[4 * x + k] = static_cast<uint8_t>(sample(source, index, k, at));
            }
            break;
        case BMP_FMT_YUY2:
            line[2 * x] = static_cast<uint8_t>(sample(source, index, 0, at));
            if (x % 2 == 0) {
                line[2 * x + 1] = static_cast<uint8_t>(sample(source, index, 1, at));
                line[2 * x + 3] = static_cast<uint8_t>(sample(source, index, 2, at));
            }
            break;
        case BMP_FMT_PWRW: store_u16(line + 2 * x, static_cast<uint16_t>(sample(source, index, 0, at))); break;
        default: draw_tint(mapping, line, x, at); break;
    }
}

}  // namespace

SpanArguments set_up_span(const Mapping& mapping, const Crossing& left, const Crossing& right, int64_t line) {
    const double u_offset = mapping.affine ? mapping.filter.u_offset : 0;
    const double v_offset = mapping.affine ? mapping.filter.v_offset : 0;
    const Along u = across(left.edge->u, right.edge->u, left, right, line, u_offset);
    const Along v = across(left.edge->v, right.edge->v, left, right, line, v_offset);
    const Along w = across(left.edge->w, right.edge->w, left, right, line, 0);
    return {u.step, v.step, w.step, u.start, v.start, w.start};
}

void draw_span(const Mapping& mapping, const SpanArguments& span, uint8_t* line, int64_t first, int64_t end) {
    for (int64_t i = first; i < end; ++i) {
        const int32_t x = static_cast<int32_t>(i);
        const Position at = mapping.affine ? position_affine(mapping, span, x)
                                           : position_perspective(mapping, span, x, along(span.dw, span.w_start, x));
        draw_pixel(mapping, line, x, at);
    }
}

void draw_span_with_depth(const Mapping& mapping, const SpanArguments& span, uint8_t* line, uint8_t* depth_line,
                          int64_t first, int64_t end) {
    float w = along(span.dw, span.w_start, static_cast<int32_t>(first));
    for (int64_t i = first; i < end; ++i) {
        const int32_t x = static_cast<int32_t>(i);
        float stored;
        std::memcpy(&stored, depth_line + 4 * i, sizeof stored);
        if (w > stored) {
            std::memcpy(depth_line + 4 * i, &w, sizeof w);
            draw_pixel(mapping, line, x, position_perspective(mapping, span, x, w));
        }
        w = add(w, span.dw);
    }
}

}  // namespace model
