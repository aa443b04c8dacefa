/// \file
/// Coverage of anti-aliased edges against exact clipping of the polygon to each pixel.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "support/polygons.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

struct Point {
    double x, y;
};
using Points = std::vector<Point>;

/// The part of a polygon where `inside` is not negative; `inside` is linear.
template <class Inside>
Points clipped(const Points& polygon, Inside inside) {
    Points part;
    for (size_t i = 0; i < polygon.size(); ++i) {
        const Point a = polygon[i], b = polygon[(i + 1) % polygon.size()];
        const double at_a = inside(a), at_b = inside(b);
        if (at_a >= 0)
            part.push_back(a);
        if ((at_a >= 0) != (at_b >= 0)) {
            const double t = at_a / (at_a - at_b);
            part.push_back({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
        }
    }
    return part;
}

double area(const Points& polygon) {
    double twice = 0;
    for (size_t i = 0; i < polygon.size(); ++i) {
        const Point a = polygon[i], b = polygon[(i + 1) % polygon.size()];
        twice += a.x * b.y - b.x * a.y;
    }
    return std::abs(twice) / 2;
}

/// Covered fraction of every pixel, in 4096ths. The polygon does not cross itself.
std::vector<std::vector<double>> exact_coverage(const Points& polygon, int width, int height) {
    std::vector<std::vector<double>> lines(static_cast<size_t>(height),
                                           std::vector<double>(static_cast<size_t>(width)));
    for (int y = 0; y < height; ++y) {
        const Points band =
            clipped(clipped(polygon, [&](Point p) { return p.y - y; }), [&](Point p) { return y + 1 - p.y; });
        if (band.empty())
            continue;
        for (int x = 0; x < width; ++x) {
            const Points part =
                clipped(clipped(band, [&](Point p) { return p.x - x; }), [&](Point p) { return x + 1 - p.x; });
            lines[static_cast<size_t>(y)][static_cast<size_t>(x)] = 4096 * area(part);
        }
    }
    return lines;
}

class PolygonCoverage : public WithTables {
protected:
    static constexpr int kWidth = 96, kHeight = 64;

    static Polygon to_polygon(const Points& points) {
        Polygon polygon;
        for (const Point& point : points)
            polygon.push_back({0, 0, 1, static_cast<float>(point.x), static_cast<float>(point.y)});
        return polygon;
    }
    static OwnedBitmap solid_coverage(const Polygon& polygon, int width = kWidth, int height = kHeight) {
        const OwnedBitmap dest = make_bitmap(width, height, BMP_FMT_RGBQ);
        OwnedBitmap plane = make_bitmap(width, height, BMP_FMT_PWRW);
        map_polygon({.dst = dest.get(),
                     .dst2 = plane.get(),
                     .tex_b = BMP_INTEGER(4096),
                     .flags = BMP_MAP_EXTRA | BMP_MAP_SOLID},
                    polygon);
        return plane;
    }
    /// A whole number of 4096ths: the library takes it as it is.
    static double exact(Random& random, int low, int high) { return random.between(low * 4096, high * 4096) / 4096.0; }
    static double to_4096ths(double value) { return std::floor(value * 4096) / 4096; }

    /// Corners at growing angles around a middle: it may be concave, and does not cross itself.
    static Points random_outline(Random& random) {
        const double cx = exact(random, 20, kWidth - 20), cy = exact(random, 15, kHeight - 15);
        const int corners = random.between(3, 12);
        const bool convex = random.chance(50);
        Points points;
        const double turn = random.between(0, 1000) / 1000.0;
        for (int i = 0; i < corners; ++i) {
            const double angle = 2 * std::numbers::pi * (i + turn) / corners;
            const double radius = convex ? 28 : random.between(3, 40);
            points.push_back(
                {to_4096ths(cx + 1.5 * radius * std::cos(angle)), to_4096ths(cy + radius * std::sin(angle))});
        }
        return points;
    }

    struct Errors {
        double worst = 0, sum = 0;
        int pixels = 0;
        void add(double error) {
            worst = std::max(worst, error);
            sum += error;
            ++pixels;
        }
        double mean() const { return pixels ? sum / pixels : 0; }
    };

    const UseTables use_{GetParam()};
};

TEST_P(PolygonCoverage, IsTheAreaOfThePixel) {
    Errors whole_lines, corner_lines;
    for (int round = 0; round < rounds(60); ++round) {
        Random random(round_seed(round));
        const Points outline = random_outline(random);
        const OwnedBitmap plane = solid_coverage(to_polygon(outline));
        const auto want = exact_coverage(outline, kWidth, kHeight);
        for (int y = 0; y < kHeight; ++y) {
            const bool corner =
                std::any_of(outline.begin(), outline.end(), [&](Point p) { return p.y > y && p.y < y + 1; });
            for (int x = 0; x < kWidth; ++x) {
                const double exactly = want[static_cast<size_t>(y)][static_cast<size_t>(x)];
                const double error = std::abs(weights(plane, y)[x] - exactly);
                // Pixels wholly inside or outside would only dilute the mean.
                if (error > 0 || (exactly > 0 && exactly < 4096))
                    (corner ? corner_lines : whole_lines).add(error);
                if (!corner) {
                    ASSERT_LE(error, 6) << "at " << x << ", " << y << how_to_repeat(random);
                }
            }
        }
    }
    EXPECT_GT(whole_lines.pixels, 10 * rounds(60));
    EXPECT_GT(corner_lines.pixels, 3 * rounds(60));
    EXPECT_LE(whole_lines.mean(), 1.5);
    // A corner's line is sampled at three heights: a third of a line is the most that can be lost.
    EXPECT_LE(corner_lines.worst, 4096 / 3.0);
    RecordProperty("worst_without_corner", std::to_string(whole_lines.worst));
    RecordProperty("mean_without_corner", std::to_string(whole_lines.mean()));
    RecordProperty("worst_with_corner", std::to_string(corner_lines.worst));
    RecordProperty("mean_with_corner", std::to_string(corner_lines.mean()));
}

TEST_P(PolygonCoverage, NearlyLevelEdgesStayInTheirBox) {
    for (const double slope : {10.0, 31.0, 100.0, 317.0, 1000.0, 3000.0, 10000.0}) {  // pixels a line
        for (int round = 0; round < rounds(8); ++round) {
            Random random(round_seed(round));
            // A sliver whose two long edges have about that slope, either way.
            const double length = exact(random, 5, 90), left = exact(random, 0, 90 - static_cast<int>(length) + 1),
                         top = exact(random, 1, kHeight - 20), drop = to_4096ths(length / slope),
                         thickness = exact(random, 0, 2);
            Points points = {{left, top},
                             {left + length, top + drop},
                             {left + length, top + drop + thickness},
                             {left, top + thickness}};
            if (random.chance(50))
                for (Point& point : points)
                    point.x = kWidth - point.x;
            const auto [least_x, most_x] =
                std::minmax_element(points.begin(), points.end(), [](Point a, Point b) { return a.x < b.x; });
            const auto [least_y, most_y] =
                std::minmax_element(points.begin(), points.end(), [](Point a, Point b) { return a.y < b.y; });
            const OwnedBitmap plane = solid_coverage(to_polygon(points));
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < kWidth; ++x)
                    if (x + 1 < least_x->x - 1 || x > most_x->x + 1 || y + 1 < least_y->y - 1 || y > most_y->y + 1) {
                        ASSERT_EQ(weights(plane, y)[x], 0)
                            << "at " << x << ", " << y << " slope " << slope << how_to_repeat(random);
                    }
        }
    }
}

TEST_P(PolygonCoverage, PolygonsThatShareEdgesAddUpToFull) {
    int partly = 0;
    for (int round = 0; round < rounds(120); ++round) {
        Random random(round_seed(round));
        // A line of 2 to 5 corners, from above the picture to below it, or from its left to its right; the other sides
        // lie outside.
        const int corners = random.between(2, 5);
        const bool upright = random.chance(60);
        Points middle;
        for (int i = 0; i < corners; ++i) {
            const double t = i / (corners - 1.0);
            middle.push_back(upright ? Point{exact(random, -20, kWidth + 20), to_4096ths(-5 + t * (kHeight + 10))}
                                     : Point{to_4096ths(-5 + t * (kWidth + 10)), exact(random, -20, kHeight + 20)});
        }
        // The box reaches further than the line in each direction, so that the sides do not cross it.
        Points before = middle, behind = middle;
        if (upright) {
            before.insert(before.end(), {{-60, kHeight + 5.0}, {-60, -5}});
            behind.insert(behind.end(), {{kWidth + 60.0, kHeight + 5.0}, {kWidth + 60.0, -5}});
        } else {
            before.insert(before.end(), {{kWidth + 5.0, -60}, {-5, -60}});
            behind.insert(behind.end(), {{kWidth + 5.0, kHeight + 60.0}, {-5, kHeight + 60.0}});
        }
        const OwnedBitmap a = solid_coverage(to_polygon(before)), b = solid_coverage(to_polygon(behind));
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const int sum = weights(a, y)[x] + weights(b, y)[x];
                partly += weights(a, y)[x] != 0 && weights(b, y)[x] != 0;
                ASSERT_NEAR(sum, 4096, 2) << "at " << x << ", " << y << ": " << weights(a, y)[x] << " and "
                                          << weights(b, y)[x] << how_to_repeat(random);
            }
        }
    }
    EXPECT_GT(partly, 8 * rounds(120));
}

TEST_P(PolygonCoverage, OfTexturesIsThatOfTheSolidFill) {
    const OwnedBitmap textures[] = {make_filled(8, 8, BMP_FMT_RGBQ, 9), make_filled(8, 8, BMP_FMT_YUY2, 9)};
    for (int round = 0; round < rounds(30); ++round) {
        Random random(round_seed(round));
        Polygon polygon = to_polygon(random_outline(random));
        if (random.chance(30))
            std::shuffle(polygon.begin(), polygon.end(), std::minstd_rand(static_cast<unsigned>(round)));
        const OwnedBitmap want = solid_coverage(polygon);
        for (const OwnedBitmap& texture : textures) {
            const OwnedBitmap dest = make_bitmap(kWidth, kHeight, static_cast<int>(texture->format)),
                              plane = make_bitmap(kWidth, kHeight, BMP_FMT_PWRW);
            map_polygon({.dst = dest.get(), .dst2 = plane.get(), .tex_a = texture.get(), .flags = BMP_MAP_ANTIALIAS},
                        polygon);
            ASSERT_EQ(snapshot(plane), snapshot(want)) << how_to_repeat(random);
        }
        // A full weight over nothing is the coverage, too.
        const OwnedBitmap map = make_bitmap(kWidth, kHeight, BMP_FMT_PWRW), full = make_weights(8, 8, 4096);
        map_polygon({.dst = map.get(), .tex_a = full.get(), .flags = BMP_MAP_ANTIALIAS}, polygon);
        ASSERT_EQ(snapshot(map), snapshot(want)) << how_to_repeat(random);
    }
}

ZEPBMP_FOR_ALL_TABLES(PolygonCoverage);

}  // namespace
}  // namespace zepbmp::test
