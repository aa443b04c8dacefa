// Which source lines and which filter a polygon takes.
//
// SPDX-License-Identifier: MIT
#include <cmath>

#include "polygon_steps.h"

namespace model {

namespace {

constexpr int32_t kMaxSourceSize = 32768;

struct FilterClass {
    int32_t offset;  // 16.16
    int32_t margin;  // 16.16
};

constexpr std::array<FilterClass, 5> kHorizontal = {
    {{-32768, 16}, {-65536, 65552}, {-98304, 131088}, {-131072, 196624}, {-262144, 458768}}};
constexpr std::array<FilterClass, 4> kVertical = {{{-32768, 16}, {-49152, 32784}, {-65536, 65552}, {-131072, 196624}}};

struct Ratios {
    double horizontal;
    double vertical;
};

// Lowest and highest of the values met; a NaN that is not the first is passed over.
class Range {
public:
    void include(double value) {
        if (empty_) {
            low_ = high_ = value;
            empty_ = false;
        }
        if (value < low_) {
            low_ = value;
        }
        if (value > high_) {
            high_ = value;
        }
    }

    double size() const { return high_ - low_; }

private:
    bool empty_ = true;
    double low_ = 0;
    double high_ = 0;
};

// Source size over destination size, the source turned so that the longest edge has its destination's direction.
Ratios measure(const BmpVertex* vertices, int32_t count, double vertical_scale) {
    double longest = -1;
    double dx = 0, dy = 0, du = 0, dv = 0;
    for (int32_t i = 0; i < count; ++i) {
        const BmpVertex& from = vertices[i == 0 ? count - 1 : i - 1];
        const BmpVertex& to = vertices[i];
        const double edge_x = double{to.x} - double{from.x};
        const double edge_y = double{to.y} - double{from.y};
        const double length = edge_x * edge_x + edge_y * edge_y;
        if (length > longest) {
            longest = length;
            dx = edge_x;
            dy = edge_y;
            du = double{to.u} - double{from.u};
            dv = double{to.v} - double{from.v};
        }
    }
    const double destination_length = std::sqrt(dx * dx + dy * dy);
    dx /= destination_length;
    dy /= destination_length;
    const double source_length = std::sqrt(du * du + dv * dv);
    du /= source_length;
    dv /= source_length;
    const double c = du * dx + dv * dy;
    const double s = du * dy - dv * dx;

    Range turned_u, turned_v, x, y;
    for (int32_t i = 0; i < count; ++i) {
        const BmpVertex& vertex = vertices[i];
        turned_u.include(c * double{vertex.u} - s * double{vertex.v});
        turned_v.include(c * double{vertex.v} + s * double{vertex.u});
        x.include(vertex.x);
        y.include(vertex.y);
    }
    return {turned_u.size() / x.size(), turned_v.size() / y.size() * vertical_scale};
}

int horizontal_class(double ratio) {
    if (std::isnan(ratio) || ratio < 1.34) {
        return 0;
    }
    return ratio < 2.01 ? 1 : ratio < 2.68 ? 2 : ratio < 5.36 ? 3 : 4;
}

int vertical_class(double ratio) {
    if (std::isnan(ratio) || ratio < 1.005) {
        return 0;
    }
    return ratio < 1.34 ? 1 : ratio < 2.68 ? 2 : 3;
}

}  // namespace

Source prepare_source(const Bitmap* texture, uint32_t flags) {
    Source source = {texture->format, texture->pixels, texture->pitch, texture->width, texture->height, 1.0, 0};
    if (texture->create_flags & 2) {
        const bool odd = (flags & BMP_FIELD_ODD) != 0;
        if (odd) {
            source.base += texture->pitch;
        }
        source.pitch = int64_t{2} * texture->pitch;
        source.height = texture->height / 2;
        source.vertical_scale = 0.5;
        source.vertical_offset = odd ? -16384 : 16384;
    }
    source.width = std::min(source.width, kMaxSourceSize);
    source.height = std::min(source.height, kMaxSourceSize);
    return source;
}

Filter choose_filter(const Source& source, const BmpVertex* vertices, int32_t count, uint32_t flags) {
    const int64_t u_max = int64_t{source.width - 1} * 65536;
    const int64_t v_max = int64_t{source.height - 1} * 65536;
    Filter filter = {0, 0, source.vertical_offset, static_cast<int32_t>(u_max), static_cast<int32_t>(v_max)};
    if (flags & BMP_MAP_NO_FILTER) {
        return filter;
    }
    const Ratios ratios = measure(vertices, count, source.vertical_scale);
    int h = horizontal_class(ratios.horizontal);
    int v = vertical_class(ratios.vertical);
    while (h >= 0 && u_max < kHorizontal[static_cast<size_t>(h)].margin) {
        --h;
    }
    while (v >= 0 && v_max < kVertical[static_cast<size_t>(v)].margin) {
        --v;
    }
    if (h < 0 || v < 0) {
        return filter;
    }
    const FilterClass& horizontal = kHorizontal[static_cast<size_t>(h)];
    const FilterClass& vertical = kVertical[static_cast<size_t>(v)];
    filter.index = 1 + 5 * v + h;
    filter.u_offset = horizontal.offset;
    filter.v_offset += vertical.offset;
    filter.u_max -= horizontal.margin;
    filter.v_max -= vertical.margin;
    return filter;
}

int filter_index(const Bitmap* texture, const BmpVertex* vertices, int32_t count, uint32_t flags) {
    const Source source = prepare_source(texture, flags);
    return is_empty(source) ? -1 : choose_filter(source, vertices, count, flags).index;
}

}  // namespace model
