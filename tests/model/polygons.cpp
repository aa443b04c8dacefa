// Mapped and filled polygons: one pixel, one tap, one edge at a time.
//
// SPDX-License-Identifier: MIT
#include <cmath>

#include "polygon_steps.h"

namespace model {

namespace {

constexpr int32_t kFullMask = 0x80;  // of an A8 coverage plane

int32_t low_word(const void* argument) {
    return static_cast<int32_t>(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(argument)));
}

uint8_t* line_of(const Bitmap* bitmap, int64_t y) {
    return bitmap->pixels + static_cast<std::ptrdiff_t>(y * bitmap->pitch);
}

bool is_drawn(int64_t line, uint32_t flags) {
    return !(flags & BMP_FIELD) || (line & 1) == static_cast<int64_t>(flags & BMP_FIELD_ODD);
}

// Calls `on_line(y, sub_lines)` for each line of the field that is crossed at all.
template <class OnLine>
void walk_lines_in_thirds(const std::vector<Edge>& edges, int32_t height, uint32_t flags, OnLine on_line) {
    SubLines sub_lines;
    walk_lines(edges, int64_t{3} * height, [&](int64_t sub_line, const Crossings& crossings) {
        sub_lines[static_cast<size_t>(sub_line % 3)] = crossings;
        const bool crossed = !sub_lines[0].empty() || !sub_lines[1].empty() || !sub_lines[2].empty();
        if (sub_line % 3 == 2 && crossed && is_drawn(sub_line / 3, flags)) {
            on_line(sub_line / 3, sub_lines);
        }
    });
}

// ---------------------------------------------------------------- blending by coverage

int64_t blend(int64_t d, int64_t s, int64_t coverage) { return (s * coverage + d * (kFull - coverage)) >> 12; }

void blend_byte(uint8_t& d, int64_t s, int64_t coverage) { d = static_cast<uint8_t>(blend(d, s, coverage)); }

void blend_word(uint8_t* address, int64_t s, int64_t coverage) {
    store_u16(address, static_cast<uint16_t>(blend(load_u16(address), s, coverage)));
}

// `level` scales what is blended in. Both lines have the layout of `format`.
void blend_line(uint32_t format, uint8_t* line, const uint8_t* from, const Coverage& coverage, int64_t level) {
    const auto scaled = [&](int64_t c) { return (c * level) >> 12; };
    for (size_t x = 0; x < coverage.size(); ++x) {
        const int64_t c = scaled(coverage[x]);
        if (format == BMP_FMT_RGBQ) {
            for (size_t k = 0; k < 4; ++k) {
                blend_byte(line[4 * x + k], from[4 * x + k], c);
            }
        } else if (format == BMP_FMT_PWRW) {
            blend_word(line + 2 * x, load_u16(from + 2 * x), c);
        } else {
            blend_byte(line[2 * x], from[2 * x], c);
            if (x % 2 == 0) {
                const bool has_partner = x + 1 < coverage.size();
                const int64_t pair = scaled(has_partner ? (coverage[x] + coverage[x + 1]) >> 1 : coverage[x]);
                blend_byte(line[2 * x + 1], from[2 * x + 1], pair);
                blend_byte(line[2 * x + 3], from[2 * x + 3], pair);
            }
        }
    }
}

void blend_mark(const Bitmap* plane, int64_t y, const Coverage& coverage, int64_t level) {
    for (size_t x = 0; plane && x < coverage.size(); ++x) {
        const int64_t c = (coverage[x] * level) >> 12;
        if (plane->format == BMP_FMT_A8) {
            blend_byte(line_of(plane, y)[x], kFullMask, c);
        } else if (plane->format == BMP_FMT_PWRW) {
            blend_word(line_of(plane, y) + 2 * x, kFull, c);
        }
    }
}

void mark_span(const Bitmap* plane, int64_t y, int64_t first, int64_t end) {
    for (int64_t x = first; plane && x < end; ++x) {
        if (plane->format == BMP_FMT_A8) {
            line_of(plane, y)[x] = kFullMask;
        } else if (plane->format == BMP_FMT_PWRW) {
            store_u16(line_of(plane, y) + 2 * x, kFull);
        }
    }
}

// ---------------------------------------------------------------- the polygon

// First pixel whose centre is at or right of x.
int64_t first_pixel_from(float x) { return (2047 - truncate_held(-4096.0 * double{x})) >> 12; }

struct Destination {
    const Bitmap* image;
    const Bitmap* plane;  // or null
    const Bitmap* depth;  // or null
};

void map_plain(const Destination& to, const Mapping& mapping, const std::vector<Edge>& edges, uint32_t flags) {
    walk_lines(edges, to.image->height, [&](int64_t y, const Crossings& crossings) {
        if (!is_drawn(y, flags)) {
            return;
        }
        for (size_t i = 0; i + 1 < crossings.size(); i += 2) {
            const int64_t first = std::max<int64_t>(first_pixel_from(crossings[i].x), 0);
            const int64_t end = std::min<int64_t>(first_pixel_from(crossings[i + 1].x), to.image->width);
            if (first >= end) {
                continue;
            }
            mark_span(to.plane, y, first, end);
            const SpanArguments span = set_up_span(mapping, crossings[i], crossings[i + 1], y);
            if (to.depth) {
                draw_span_with_depth(mapping, span, line_of(to.image, y), line_of(to.depth, y), first, end);
            } else {
                draw_span(mapping, span, line_of(to.image, y), first, end);
            }
        }
    });
}

// Draws the spans of one sub-line from the left ramp's first pixel to the right ramp's end.
void draw_scratch(const Mapping& mapping, const Crossings& crossings, const Crossings& ramp_crossings,
                  int ramp_sub_lines, int64_t sub_line, int32_t width, std::vector<uint8_t>& scratch) {
    for (size_t i = 0; i + 1 < crossings.size(); i += 2) {
        int64_t first = std::max<int64_t>(ramp_over(ramp_crossings[i], ramp_sub_lines).first_pixel(), 0);
        const int64_t end = std::min<int64_t>(ramp_over(ramp_crossings[i + 1], ramp_sub_lines).end_pixel(), width);
        if (first >= end) {
            continue;
        }
        if (mapping.source.format == BMP_FMT_YUY2) {
            first &= ~int64_t{1};
        }
        draw_span(mapping, set_up_span(mapping, crossings[i], crossings[i + 1], sub_line), scratch.data(), first, end);
    }
}

void map_antialiased(const Destination& to, const Mapping& mapping, const std::vector<Edge>& edges, uint32_t flags) {
    const int32_t width = to.image->width;
    walk_lines_in_thirds(edges, to.image->height, flags, [&](int64_t y, const SubLines& sub_lines) {
        std::vector<uint8_t> scratch(4 * (static_cast<size_t>(width) + 1), 0);
        if (is_whole(sub_lines)) {
            draw_scratch(mapping, sub_lines[1], sub_lines[0], 3, 3 * y + 1, width, scratch);
        } else {
            for (const size_t third : {size_t{0}, size_t{2}, size_t{1}}) {
                draw_scratch(mapping, sub_lines[third], sub_lines[third], 1, 3 * y + static_cast<int64_t>(third), width,
                             scratch);
            }
        }
        const Coverage coverage = cover_line(sub_lines, width);
        blend_line(mapping.source.format, line_of(to.image, y), scratch.data(), coverage, kFull);
        blend_mark(to.plane, y, coverage, kFull);
    });
}

void fill_solid(const Destination& to, uint32_t colour, int32_t level, const BmpVertex* vertices, int32_t count,
                uint32_t flags) {
    if (to.image->format != BMP_FMT_YUY2 && to.image->format != BMP_FMT_RGBQ) {
        return;
    }
    const size_t width = static_cast<size_t>(to.image->width);
    std::vector<uint8_t> line(4 * (width + 1));
    for (size_t i = 0; i < line.size(); i += 4) {
        const auto byte = [&](int k) { return static_cast<uint8_t>(colour >> 8 * k); };
        const bool yuy2 = to.image->format == BMP_FMT_YUY2;  // Y U Y V from 0x00YYUUVV
        line[i] = yuy2 ? byte(2) : byte(0);
        line[i + 1] = byte(1);
        line[i + 2] = byte(2);
        line[i + 3] = yuy2 ? byte(0) : byte(3);
    }
    if (level < 0 || level > kFull)
        return;
    const std::vector<Edge> edges = build_edges(place_corners(vertices, count, 12288.0), int64_t{3} * to.image->height);
    walk_lines_in_thirds(edges, to.image->height, flags, [&](int64_t y, const SubLines& sub_lines) {
        const Coverage coverage = cover_line(sub_lines, to.image->width);
        blend_line(to.image->format, line_of(to.image, y), line.data(), coverage, level);
        blend_mark(to.plane, y, coverage, level);
    });
}

bool all_weights_equal(const BmpVertex* vertices, int32_t count) {
    return std::all_of(vertices, vertices + count, [&](const BmpVertex& vertex) { return vertex.w == vertices[0].w; });
}

// Whether source, destination and flags have a kernel, and a finisher where one is needed.
bool has_kernel(const Bitmap* texture, const Destination& to, uint32_t flags, bool antialiased) {
    const bool extra = (flags & BMP_MAP_EXTRA) != 0;
    switch (texture->format) {
        case BMP_FMT_YUY2: return to.image->bytes_per_pixel >= 2 && (to.depth || !extra);
        case BMP_FMT_RGBQ: return to.image->bytes_per_pixel >= 4 && (to.depth || !extra);
        case BMP_FMT_PWRW: return to.image->format == BMP_FMT_PWRW && !to.depth && !extra;
        case BMP_FMT_A8:
            return (to.image->format == BMP_FMT_YUY2 || to.image->format == BMP_FMT_RGBQ) && extra && !to.depth &&
                   !antialiased;
        default: return false;
    }
}

void map_texture(const Destination& to, const Bitmap* texture, uint32_t colour, const BmpVertex* vertices,
                 int32_t count, uint32_t flags) {
    const bool antialiased = (flags & BMP_MAP_ANTIALIAS) && !(flags & BMP_MAP_NO_FILTER) && !to.depth;
    if (!has_kernel(texture, to, flags, antialiased)) {
        return;
    }
    Mapping mapping = {};
    mapping.source = prepare_source(texture, flags);
    if (is_empty(mapping.source)) {
        return;
    }
    mapping.filter = choose_filter(mapping.source, vertices, count, flags);
    mapping.destination_format = to.image->format;
    mapping.affine = !to.depth && texture->format != BMP_FMT_A8 && all_weights_equal(vertices, count);
    mapping.colour = colour;

    std::vector<Corner> corners = place_corners(vertices, count, antialiased ? 12288.0 : 4096.0);
    for (size_t i = 0; i < corners.size(); ++i) {
        const BmpVertex& vertex = vertices[i];
        const double w = mapping.affine ? 1.0 : double{vertex.w};
        corners[i].u = double{vertex.u} * w;
        corners[i].v = double{vertex.v} * w * mapping.source.vertical_scale;
        corners[i].w = w;
    }
    if (antialiased) {
        map_antialiased(to, mapping, build_edges(corners, int64_t{3} * to.image->height), flags);
    } else {
        map_plain(to, mapping, build_edges(corners, to.image->height), flags);
    }
}

}  // namespace

void bmp_map_polygon(Bitmap* dst, Bitmap* dst2, Bitmap* aux, const void* tex_a, const void* tex_b,
                     const BmpVertex* vertices, int32_t count, uint32_t flags) {
    const Bitmap* image = dst ? dst : dst2;
    const Bitmap* plane = dst ? dst2 : nullptr;
    if (!image || image->width < 1 || image->height < 1 || count < 1) {
        return;
    }
    for (int32_t i = 0; i < count; ++i) {
        if (!std::isfinite(vertices[i].x) || !std::isfinite(vertices[i].y)) {
            return;
        }
    }
    if ((flags & (BMP_MAP_EXTRA | BMP_MAP_SOLID)) == (BMP_MAP_EXTRA | BMP_MAP_SOLID)) {
        fill_solid({image, plane, nullptr}, static_cast<uint32_t>(low_word(tex_a)), low_word(tex_b), vertices, count,
                   flags);
        return;
    }
    const bool from_b = !tex_a || (flags & BMP_MAP_EXTRA);
    const Bitmap* texture = static_cast<const Bitmap*>(from_b ? tex_b : tex_a);
    if (!texture) {
        return;
    }
    map_texture({image, plane, aux}, texture, static_cast<uint32_t>(low_word(tex_a)), vertices, count, flags);
}

}  // namespace model
