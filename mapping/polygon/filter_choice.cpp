#include "mapping/polygon/filter_choice.h"

#include "mapping/polygon/filters.h"

namespace zepbmp {
namespace {

struct Vector {
    double x, y;
};

/// The rotation that takes the direction of the longest destination edge's source to that of the edge itself.
struct Rotation {
    double c, s;

    Vector operator()(double u, double v) const { return {c * u - s * v, c * v + s * u}; }
};

Vector normalised(Vector v) {
    const double length = __builtin_sqrt(v.x * v.x + v.y * v.y);
    return {v.x / length, v.y / length};
}

/// Of edges of equal length the first counts; a length that is not a number never does.
Rotation rotation_of(const BmpVertex* vertices, int32_t count) {
    Vector destination = {0, 0}, source = {0, 0};
    double longest = 0;
    const BmpVertex* from = &vertices[count - 1];
    for (int32_t i = 0; i < count; from = &vertices[i++]) {
        const BmpVertex& to = vertices[i];
        const Vector edge = {double{to.x} - from->x, double{to.y} - from->y};
        const double length = edge.x * edge.x + edge.y * edge.y;
        if (length > longest) {
            longest = length;
            destination = edge;
            source = {double{to.u} - from->u, double{to.v} - from->v};
        }
    }
    const Vector d = normalised(destination), s = normalised(source);
    return {s.x * d.x + s.y * d.y, s.x * d.y - s.y * d.x};
}

class Range {
public:
    explicit Range(double first) : low_(first), high_(first) {}

    void include(double value) {
        if (value < low_)
            low_ = value;
        if (value > high_)
            high_ = value;
    }
    double size() const { return high_ - low_; }

private:
    double low_, high_;
};

/// Texels to a pixel.
Vector reductions(const Texture& texture, const BmpVertex* vertices, int32_t count) {
    const Rotation rotate = rotation_of(vertices, count);
    const Vector first = rotate(vertices->u, vertices->v);
    Range u(first.x), v(first.y), x(vertices->x), y(vertices->y);
    for (int32_t i = 1; i < count; ++i) {
        const Vector turned = rotate(vertices[i].u, vertices[i].v);
        u.include(turned.x);
        v.include(turned.y);
        x.include(vertices[i].x);
        y.include(vertices[i].y);
    }
    return {u.size() / x.size(), v.size() / y.size() * texture.line_scale};
}

/// The last texel's position, 16.16.
int32_t last_place(int32_t texels) { return (texels - 1) * kTexel; }

/// -1: not even the smallest box fits. A reduction that is not a number takes the smallest.
template <int kClasses>
int choose_class(const FilterClass (&classes)[kClasses], double reduction, int32_t texels) {
    int chosen = 0;
    while (chosen < kClasses - 1 && reduction >= classes[chosen].below)
        ++chosen;
    while (chosen >= 0 && last_place(texels) < classes[chosen].margin)
        --chosen;
    return chosen;
}

}  // namespace

FilterChoice unfiltered(const Texture& texture) {
    return {0, 0, texture.line_offset, static_cast<float>(last_place(texture.columns)),
            static_cast<float>(last_place(texture.rows))};
}

FilterChoice choose_filter(const Texture& texture, const BmpVertex* vertices, int32_t count) {
    const Vector reduction = reductions(texture, vertices, count);
    const int column_class = choose_class(kColumnClasses, reduction.x, texture.columns);
    const int row_class = choose_class(kRowClasses, reduction.y, texture.rows);
    if (column_class < 0 || row_class < 0)
        return unfiltered(texture);
    const FilterClass &columns = kColumnClasses[column_class], &rows = kRowClasses[row_class];
    return {filter_index(row_class, column_class), columns.offset, rows.offset + texture.line_offset,
            static_cast<float>(last_place(texture.columns) - columns.margin),
            static_cast<float>(last_place(texture.rows) - rows.margin)};
}

}  // namespace zepbmp
