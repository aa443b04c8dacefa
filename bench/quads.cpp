#include "quads.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace zepbmp::bench {
namespace {

constexpr double kTurn = 17 * std::numbers::pi / 180;
constexpr double kCover = 0.7;  // of the frame
constexpr double kNearW = 1.3, kFarW = 0.7;

struct Point {
    double x, y;
};

BmpVertex corner(double x, double y) { return {0, 0, 1, static_cast<float>(x), static_cast<float>(y)}; }

Matrix3 moved(double x, double y) { return {1, 0, x, 0, 1, y, 0, 0, 1}; }

Matrix3 turned(double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return {c, -s, 0, s, c, 0, 0, 0, 1};
}

/// Entries as multiples of 2^-16: exact for peers with 16.16 matrices, too.
Matrix3 in_fixed_point(Matrix3 map) {
    for (double& entry : map.entries)
        entry = std::round(entry * 65536) / 65536;
    return map;
}

TexturedQuad quad_of_part(Size frame, Size texture, double reduction, View view, int32_t part_width) {
    // Every side of the part is even, and its middle is the texture's.
    const int32_t part_height = part_width * texture.height / texture.width / 4 * 4;
    const TexturePart part = {(texture.width - part_width) / 2, (texture.height - part_height) / 2, part_width,
                              part_height};
    const double left = part.x, top = part.y, right = left + part.width, bottom = top + part.height;
    Matrix3 perspective = kIdentity3;
    double scale = 1;  // of the homogeneous result: spends the bits before the point on the third row
    if (view == View::kPerspective) {
        perspective(2, 0) = (1 / kFarW - 1 / kNearW) / part_width;
        perspective(2, 2) = (1 / kFarW + 1 / kNearW) / 2;
        scale = 16;
    }
    const Matrix3 shrunk = {1 / reduction, 0, 0, 0, 1 / reduction, 0, 0, 0, 1};
    const Matrix3 from_texture = moved(frame.width / 2.0, frame.height / 2.0) * turned(kTurn) * shrunk * perspective *
                                 moved(-texture.width / 2.0, -texture.height / 2.0);
    const Matrix3 to_texture = in_fixed_point(inverse(from_texture) * scale);
    const Matrix3 back = inverse(to_texture);
    TexturedQuad quad = {{}, to_texture, part};
    for (const Point at : {Point{left, top}, Point{right, top}, Point{right, bottom}, Point{left, bottom}}) {
        const Vector3 position = back * Vector3{at.x, at.y, 1};
        BmpVertex vertex = corner(position.x / position.z, position.y / position.z);
        vertex.u = static_cast<float>(at.x);
        vertex.v = static_cast<float>(at.y);
        if (view == View::kPerspective)
            vertex.w = static_cast<float>(1 / (position.z * scale));
        quad.outline.push_back(vertex);
    }
    return quad;
}

/// What of a polygon lies where inside(p) >= 0; `inside` is linear.
template <class Inside>
std::vector<Point> cut(const std::vector<Point>& corners, Inside inside) {
    std::vector<Point> kept;
    for (size_t i = 0; i < corners.size(); ++i) {
        const Point a = corners[i], b = corners[(i + 1) % corners.size()];
        const double in_a = inside(a), in_b = inside(b);
        if (in_a >= 0)
            kept.push_back(a);
        if ((in_a >= 0) != (in_b >= 0)) {
            const double at = in_a / (in_a - in_b);
            kept.push_back({a.x + at * (b.x - a.x), a.y + at * (b.y - a.y)});
        }
    }
    return kept;
}

}  // namespace

TexturedQuad turned_quad(Size frame, Size texture, double reduction, View view) {
    const double wanted = kCover * frame.width * frame.height;
    int32_t width = 4;
    while (width + 4 <= texture.width &&
           covered_pixels(quad_of_part(frame, texture, reduction, view, width).outline, frame) < wanted)
        width += 4;
    return quad_of_part(frame, texture, reduction, view, width);
}

Polygon star(Size frame) {
    constexpr int kPoints = 5;
    const double outer = 500 / std::cos(std::numbers::pi / 10);
    const double inner = outer * std::sin(std::numbers::pi / 10) / std::cos(std::numbers::pi / 5);
    Polygon polygon;
    for (int i = 0; i < 2 * kPoints; ++i) {
        const double radius = i % 2 ? inner : outer, angle = i * std::numbers::pi / kPoints;
        polygon.push_back(
            corner(frame.width / 2.0 + radius * std::sin(angle), frame.height / 2.0 - radius * std::cos(angle)));
    }
    return polygon;
}

namespace {

Polygon rectangle(double cx, double cy, double width, double height, double angle) {
    const Matrix3 place = moved(cx, cy) * turned(angle);
    Polygon polygon;
    for (const auto [x, y] : {Point{-1, -1}, Point{1, -1}, Point{1, 1}, Point{-1, 1}}) {
        const Vector3 at = place * Vector3{x * width / 2, y * height / 2, 1};
        polygon.push_back(corner(at.x, at.y));
    }
    return polygon;
}

}  // namespace

Polygon solid_quad(Size frame) { return rectangle(frame.width / 2.0, frame.height / 2.0, 1000, 600, kTurn); }

std::vector<Polygon> small_quads(Size frame, int count, double side) {
    std::mt19937 random(17);
    const auto below = [&](double end) { return end * static_cast<double>(random()) / 4294967296.0; };
    std::vector<Polygon> polygons;
    for (int i = 0; i < count; ++i) {  // wholly inside
        const double x = side + below(frame.width - 2 * side), y = side + below(frame.height - 2 * side);
        polygons.push_back(rectangle(x, y, side, side, below(std::numbers::pi / 2)));
    }
    return polygons;
}

double covered_pixels(const Polygon& polygon, Size frame) {
    std::vector<Point> corners;
    for (const BmpVertex& vertex : polygon)
        corners.push_back({vertex.x, vertex.y});
    corners = cut(corners, [](Point p) { return p.x; });
    corners = cut(corners, [](Point p) { return p.y; });
    corners = cut(corners, [&](Point p) { return frame.width - p.x; });
    corners = cut(corners, [&](Point p) { return frame.height - p.y; });
    double twice = 0;
    for (size_t i = 0; i < corners.size(); ++i) {
        const Point a = corners[i], b = corners[(i + 1) % corners.size()];
        twice += a.x * b.y - b.x * a.y;
    }
    return std::abs(twice) / 2;
}

}  // namespace zepbmp::bench
