/// \file
/// bmp_map_polygon: what has to hold for every polygon.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "support/polygons.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

using Weights = std::vector<int>;

constexpr uint32_t kSolid = BMP_MAP_EXTRA | BMP_MAP_SOLID;

/// One ratio of each class, with positions that are exact in 128ths of a pixel.
struct FilterClass {
    double ratio;
    double box;  ///< pixels or lines
    int margin;  ///< how far before the last column or line the last position lies, 16.16
};
constexpr FilterClass kColumns[] = {{1, 1, 16}, {1.5, 2, 65552}, {2.25, 3, 131088}, {3.5, 4, 196624}, {6, 8, 458768}};
constexpr FilterClass kLines[] = {{1, 1, 16}, {1.25, 1.5, 32784}, {1.75, 2, 65552}, {3, 4, 196624}};

/// A whole number of 4096ths.
float exact(Random& random, int low, int high) {
    return static_cast<float>(random.between(low * 4096, high * 4096)) / 4096;
}

class PolygonProperties : public WithTables {
protected:
    static constexpr int kWidth = 40, kHeight = 24;

    /// Corners anywhere in and around the destination; no two edges of equal length, but for rare luck.
    static Polygon random_polygon(Random& random, int corners) {
        Polygon polygon;
        for (int i = 0; i < corners; ++i) {
            BmpVertex corner;
            corner.u = exact(random, -5, 60);
            corner.v = exact(random, -5, 40);
            corner.w = 1;
            corner.x = exact(random, -10, kWidth + 10);
            corner.y = exact(random, -10, kHeight + 10);
            polygon.push_back(corner);
        }
        return polygon;
    }
    static void unequal_weights(Random& random, Polygon& polygon) {
        for (BmpVertex& corner : polygon)
            corner.w = 0.25f + exact(random, 0, 2);
    }

    /// Everything that a call writes: destination, coverage plane, depth buffer.
    struct Scene {
        explicit Scene(int format, int width = kWidth, int height = kHeight)
            : dest(make_noise(width, height, format, 1)),
              plane(make_weights(width, height, 1000)),
              depth(make_depth(width, height, 1)) {}
        std::vector<std::vector<uint8_t>> bytes() const { return {snapshot(dest), snapshot(plane), snapshot(depth)}; }
        OwnedBitmap dest, plane, depth;
    };

    struct Way {
        const char* name;
        int format;
        bool perspective, depth;
        uint32_t flags;
    };
    static constexpr Way kWays[] = {
        {"nearest RGBQ", BMP_FMT_RGBQ, false, false, BMP_MAP_NO_FILTER},
        {"nearest YUY2", BMP_FMT_YUY2, false, false, BMP_MAP_NO_FILTER},
        {"RGBQ", BMP_FMT_RGBQ, false, false, 0},
        {"YUY2", BMP_FMT_YUY2, false, false, 0},
        {"weights", BMP_FMT_PWRW, false, false, 0},
        {"perspective RGBQ", BMP_FMT_RGBQ, true, false, 0},
        {"perspective YUY2", BMP_FMT_YUY2, true, false, 0},
        {"perspective weights", BMP_FMT_PWRW, true, false, 0},
        {"depth RGBQ", BMP_FMT_RGBQ, true, true, 0},
        {"depth YUY2", BMP_FMT_YUY2, true, true, 0},
        {"antialiased RGBQ", BMP_FMT_RGBQ, false, false, BMP_MAP_ANTIALIAS},
        {"antialiased YUY2", BMP_FMT_YUY2, true, false, BMP_MAP_ANTIALIAS},
        {"antialiased weights", BMP_FMT_PWRW, true, false, BMP_MAP_ANTIALIAS},
        {"solid RGBQ", BMP_FMT_RGBQ, false, false, kSolid},
        {"solid YUY2", BMP_FMT_YUY2, false, false, kSolid},
    };

    static void draw(const Way& way, const Scene& scene, const OwnedBitmap& texture, const Polygon& polygon,
                     uint32_t more = 0) {
        const bool solid = way.flags & BMP_MAP_SOLID;
        map_polygon({.dst = scene.dest.get(),
                     .dst2 = scene.plane.get(),
                     .aux = way.depth ? scene.depth.get() : nullptr,
                     .tex_a = solid ? BMP_INTEGER(0x40c08020) : texture.get(),
                     .tex_b = solid ? BMP_INTEGER(3000) : nullptr,
                     .flags = way.flags | more},
                    polygon);
    }

    /// A polygon for a way, and a source; 3 to 7 corners.
    template <class Check>
    static void for_random_polygons(int moderate, Check check) {
        for (const Way& way : kWays) {
            const OwnedBitmap texture = make_noise(53, 37, way.format, 2);
            for (int round = 0; round < rounds(moderate); ++round) {
                Random random(round_seed(round));
                Polygon polygon = random_polygon(random, random.between(3, 7));
                if (way.perspective)
                    unequal_weights(random, polygon);
                check(way, texture, polygon, random);
                ASSERT_FALSE(HasFailure()) << way.name << how_to_repeat(random);
            }
        }
    }

    const UseTables use_{GetParam()};
};

// ---------------------------------------------------------------- filters

TEST_P(PolygonProperties, ConstantsStayConstantInEveryFilter) {
    for (const int format : {BMP_FMT_RGBQ, BMP_FMT_YUY2, BMP_FMT_PWRW, BMP_FMT_A8}) {
        const OwnedBitmap texture = make_bitmap(100, 50, format);
        const auto fill = [](const OwnedBitmap& bitmap, uint32_t word) {
            for (int i = 0; i < bitmap->pitch * bitmap->height; ++i)
                bitmap->pixels[i] = static_cast<uint8_t>(word >> 8 * (i % 4));
        };
        const bool tint = format == BMP_FMT_A8;
        for (const uint32_t bytes : {0xffffffffu, 0x01fe807fu, 0x12f63499u, 0u}) {
            // What makes pixels equal: both lumas of a pair, both weights of a word.
            const uint32_t word = format == BMP_FMT_YUY2   ? (bytes & 0xff00ffff) | (bytes & 0xff) << 16
                                  : format == BMP_FMT_PWRW ? (bytes & 0xffff) * 0x10001
                                                           : bytes;
            // A tint at strength 255 is the colour, at 0 nothing.
            fill(texture, tint ? 0xffffffff : word);
            for (const FilterClass& column : kColumns) {
                for (const FilterClass& row : kLines) {
                    for (const int projection : {0, 1, 2}) {  // affine, perspective, depth
                        if (projection == 2 && (tint || format == BMP_FMT_PWRW))
                            continue;
                        const OwnedBitmap dest = make_filled(12, 8, tint ? BMP_FMT_RGBQ : format, 0xa5),
                                          depth = make_depth(12, 8, 0);
                        Polygon polygon = quad({0, 0, 12, 8}, {3, 2, static_cast<float>(3 + 12 * column.ratio),
                                                               static_cast<float>(2 + 8 * row.ratio)});
                        if (projection > 0) {
                            polygon[1].w = 2;
                            polygon[2].w = 0.75f;
                        }
                        map_polygon({.dst = dest.get(),
                                     .aux = projection == 2 ? depth.get() : nullptr,
                                     .tex_a = tint ? BMP_INTEGER(word) : texture.get(),
                                     .tex_b = tint ? texture.get() : nullptr,
                                     .flags = tint ? BMP_MAP_EXTRA : 0},
                                    polygon);
                        const OwnedBitmap want = make_filled(12, 8, tint ? BMP_FMT_RGBQ : format, 0xa5);
                        for (int y = 0; y < 8; ++y)
                            for (int i = 0; i < 12 * want->bytes_per_pixel; ++i)
                                if (!tint || i % 4 < 3)
                                    line(want, y)[i] = static_cast<uint8_t>(word >> 8 * (i % 4));
                        ASSERT_EQ(first_difference(lines_of(dest.get()), lines_of(want.get())), "")
                            << "format " << format << " ratios " << column.ratio << " " << row.ratio << " projection "
                            << projection << std::hex << " word " << word;
                    }
                }
            }
        }
    }
}

/// The weight, in 128ths, of line or column `i` in a box of `box` that begins at `start`, in 128ths.
int box_weight(int i, int start, double box) {
    const int end = start + static_cast<int>(128 * box);
    return std::max(0, std::min(end, 128 * (i + 1)) - std::max(start, 128 * i));
}

/// Where the box of a pixel begins, in 128ths of a source of `size`: from the centre's position, held to the source.
int box_start(double centre, const FilterClass& filter, int size) {
    const double last = (size - 1) - filter.margin / 65536.0;
    return static_cast<int>(128 * std::clamp(centre - filter.box / 2, 0.0, last));
}

TEST_P(PolygonProperties, EveryFilterIsTheBoxOfItsClass) {
    constexpr int kSourceWidth = 100, kSourceHeight = 50;
    for (const int format : {BMP_FMT_PWRW, BMP_FMT_RGBQ}) {
        const OwnedBitmap texture = make_noise(kSourceWidth, kSourceHeight, format, 3);
        const auto sample = [&](int column, int row, int channel) {
            return format == BMP_FMT_PWRW ? int{weights(texture, row)[column]}
                                          : int{line(texture, row)[4 * column + channel]};
        };
        // In the middle of the source, over its beginning, over its end.
        for (const auto& [left, top] : {std::pair{10, 8}, {-5, -4}, {94, 45}}) {
            for (const FilterClass& across : kColumns) {
                for (const FilterClass& down : kLines) {
                    const OwnedBitmap dest = make_bitmap(12, 8, format);
                    map_polygon({.dst = dest.get(), .tex_a = texture.get()},
                                quad({0, 0, 12, 8}, {static_cast<float>(left), static_cast<float>(top),
                                                     static_cast<float>(left + 12 * across.ratio),
                                                     static_cast<float>(top + 8 * down.ratio)}));
                    for (int y = 0; y < 8; ++y) {
                        const int v = box_start(top + (y + 0.5) * down.ratio, down, kSourceHeight);
                        for (int x = 0; x < 12; ++x) {
                            const int u = box_start(left + (x + 0.5) * across.ratio, across, kSourceWidth);
                            for (int channel = 0; channel < (format == BMP_FMT_PWRW ? 1 : 4); ++channel) {
                                int64_t sum = 0, total = 0;
                                for (int row = v / 128; row <= v / 128 + 5; ++row)
                                    for (int column = u / 128; column <= u / 128 + 9; ++column) {
                                        const int weight =
                                            box_weight(row, v, down.box) * box_weight(column, u, across.box);
                                        total += weight;
                                        if (weight)
                                            sum += int64_t{weight} * sample(column, row, channel);
                                    }
                                const int64_t want = (sum + total / 2) / total;
                                const int got = format == BMP_FMT_PWRW ? int{weights(dest, y)[x]}
                                                                       : int{line(dest, y)[4 * x + channel]};
                                ASSERT_EQ(got, want)
                                    << "format " << format << " ratios " << across.ratio << " " << down.ratio << " at "
                                    << x << ", " << y << " channel " << channel << " source from " << left;
                            }
                        }
                    }
                }
            }
        }
    }
}

TEST_P(PolygonProperties, QuarterTurnsMoveEveryPixel) {
    constexpr int kSize = 21;
    for (const int format : {BMP_FMT_RGBQ, BMP_FMT_PWRW}) {
        const OwnedBitmap texture = make_noise(kSize, kSize, format, 1);
        const size_t bytes = static_cast<size_t>(texture->bytes_per_pixel);
        for (int turns = 0; turns < 4; ++turns) {
            const OwnedBitmap dest = make_bitmap(kSize, kSize, format);
            // The square's corners in order, the source's `turns` corners further.
            const Polygon square = in_place(whole(dest));
            Polygon turned = square;
            for (size_t i = 0; i < 4; ++i) {
                turned[i].u = square[(i + static_cast<size_t>(turns)) % 4].u;
                turned[i].v = square[(i + static_cast<size_t>(turns)) % 4].v;
            }
            map_polygon({.dst = dest.get(), .tex_a = texture.get(), .flags = BMP_MAP_NO_FILTER}, turned);
            for (int y = 0; y < kSize; ++y) {
                for (int x = 0; x < kSize; ++x) {
                    int u = x, v = y;
                    for (int turn = 0; turn < turns; ++turn) {
                        const int before = u;
                        u = kSize - 1 - v;
                        v = before;
                    }
                    ASSERT_EQ(std::memcmp(line(dest, y) + bytes * static_cast<size_t>(x),
                                          line(texture, v) + bytes * static_cast<size_t>(u), bytes),
                              0)
                        << turns << " quarter turns, at " << x << ", " << y;
                }
            }
        }
    }
}

// ---------------------------------------------------------------- outlines

TEST_P(PolygonProperties, OrderOfTheCornersDoesNotMatter) {
    for_random_polygons(6, [](const Way& way, const OwnedBitmap& texture, const Polygon& polygon, Random& random) {
        Scene scene(way.format), other(way.format);
        draw(way, scene, texture, polygon);
        Polygon reordered = polygon;
        std::rotate(reordered.begin(), reordered.begin() + random.between(0, static_cast<int>(polygon.size()) - 1),
                    reordered.end());
        if (random.chance(50))
            std::reverse(reordered.begin(), reordered.end());
        draw(way, other, texture, reordered);
        EXPECT_EQ(scene.bytes(), other.bytes());
    });
}

TEST_P(PolygonProperties, BothFieldsMakeTheFrame) {
    for_random_polygons(6, [](const Way& way, const OwnedBitmap& texture, const Polygon& polygon, Random&) {
        Scene frame(way.format), fields(way.format);
        draw(way, frame, texture, polygon);
        draw(way, fields, texture, polygon, BMP_FIELD);
        const auto half = fields.bytes();
        for (int y = 1; y < kHeight; y += 2)
            EXPECT_EQ(bytes_of_line(fields.dest, y), bytes_of_line(Scene(way.format).dest, y)) << "line " << y;
        draw(way, fields, texture, polygon, BMP_FIELD | BMP_FIELD_ODD);
        EXPECT_EQ(fields.bytes(), frame.bytes());
        for (int y = 0; y < kHeight; y += 2)
            EXPECT_TRUE(std::equal(line(fields.dest, y), line(fields.dest, y) + fields.dest->pitch,
                                   half[0].begin() + y * fields.dest->pitch))
                << "line " << y;
    });
}

TEST_P(PolygonProperties, ASmallerDestinationShowsTheSamePixels) {
    for_random_polygons(6, [](const Way& way, const OwnedBitmap& texture, const Polygon& polygon, Random& random) {
        // Even widths: the chroma of a last pixel without a partner is its own.
        const int width = 2 * random.between(1, kWidth / 2), height = random.between(1, kHeight);
        Scene large(way.format), small(way.format, width, height);
        for (int y = 0; y < height; ++y)
            std::copy_n(line(large.dest, y), width * large.dest->bytes_per_pixel, line(small.dest, y));
        draw(way, large, texture, polygon);
        draw(way, small, texture, polygon);
        for (int y = 0; y < height; ++y) {
            EXPECT_EQ(bytes_of_line(small.dest, y), bytes_at(line(large.dest, y), width * large.dest->bytes_per_pixel))
                << "line " << y;
            EXPECT_EQ(weights_of_line(small.plane, y),
                      (Weights{weights(large.plane, y), weights(large.plane, y) + width}))
                << "line " << y;
        }
    });
}

TEST_P(PolygonProperties, StarIsEvenOdd) {
    constexpr int kSize = 60;
    const OwnedBitmap texture = make_weights(4, 4, 1), map = make_weights(kSize, kSize, 0);
    Polygon star;
    for (int i = 0; i < 5; ++i) {
        const double angle = 2 * std::numbers::pi * 2 * i / 5 + 0.1;
        star.push_back(
            {0, 0, 1, static_cast<float>(30 + 28 * std::sin(angle)), static_cast<float>(30 - 28 * std::cos(angle))});
    }
    map_polygon({.dst = map.get(), .tex_a = texture.get(), .flags = BMP_MAP_NO_FILTER}, star);
    int inside = 0, close = 0;
    for (int y = 0; y < kSize; ++y) {
        for (int x = 0; x < kSize; ++x) {
            int crossings = 0;
            bool near = false;
            for (size_t i = 0; i < 5; ++i) {
                const BmpVertex &a = star[i], &b = star[(i + 1) % 5];
                const double at = y + 0.5;
                if ((a.y <= at) == (b.y <= at))
                    continue;
                const double edge_x = double{a.x} + (double{b.x} - a.x) * (at - a.y) / (double{b.y} - a.y);
                near |= std::abs(edge_x - (x + 0.5)) < 1.0 / 256;
                crossings += edge_x <= x + 0.5;
            }
            if (near) {
                ++close;
                continue;
            }
            ASSERT_EQ(weights(map, y)[x], crossings % 2) << x << ", " << y;
            inside += crossings % 2;
        }
    }
    EXPECT_EQ(weights(map, 30)[30], 0) << "the middle";
    EXPECT_GT(inside, 500);
    EXPECT_LT(close, 10);
}

TEST_P(PolygonProperties, PartsOfAPolygonPaintEachPixelOnce) {
    // The triangles between a polygon's first corner and its edges: each pixel is in an even number of them outside
    // even-odd, in an odd number inside; of a convex polygon in at most one.
    const OwnedBitmap texture = make_weights(4, 4, 1);
    for (int round = 0; round < rounds(150); ++round) {
        Random random(round_seed(round));
        const int corners = random.between(4, 8);
        Polygon polygon;
        std::vector<double> angles;
        for (int i = 0; i < corners; ++i)
            angles.push_back(random.between(0, 4096) / 4096.0 * 2 * std::numbers::pi);
        std::sort(angles.begin(), angles.end());
        for (const double angle : angles)
            polygon.push_back({0, 0, 1, static_cast<float>(20 + 25 * std::cos(angle)),
                               static_cast<float>(12 + 15 * std::sin(angle))});
        const auto draw = [&](const Polygon& part, const OwnedBitmap& count) {
            const OwnedBitmap map = make_weights(kWidth, kHeight, 0);
            map_polygon({.dst = map.get(), .tex_a = texture.get(), .flags = BMP_MAP_NO_FILTER}, part);
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < kWidth; ++x)
                    weights(count, y)[x] = static_cast<uint16_t>(weights(count, y)[x] + weights(map, y)[x]);
        };
        const OwnedBitmap together = make_weights(kWidth, kHeight, 0), parts = make_weights(kWidth, kHeight, 0);
        draw(polygon, together);
        for (size_t i = 1; i + 1 < polygon.size(); ++i)
            draw({polygon[0], polygon[i], polygon[i + 1]}, parts);
        ASSERT_EQ(all_weights(parts), all_weights(together)) << how_to_repeat(random);
    }
}

TEST_P(PolygonProperties, AntialiasingOnWholePixelsChangesNothing) {
    for (const int format : {BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_FMT_YUY2}) {
        const OwnedBitmap texture = make_noise(53, 37, format, 2);
        for (const bool perspective : {false, true}) {
            for (const float ratio : {0.75f, 1.0f, 1.5f, 3.0f}) {
                // Even columns: a pair's chroma is covered wholly or not at all.
                const Area to = {4, 3, 30, 20};
                Polygon polygon = quad(to, {1, 2, 1 + 26 * ratio, 2 + 17 * ratio});
                if (perspective)
                    polygon[1].w = polygon[2].w = 1.5f;
                Scene plain(format), smooth(format);
                map_polygon({.dst = plain.dest.get(), .dst2 = plain.plane.get(), .tex_a = texture.get()}, polygon);
                map_polygon({.dst = smooth.dest.get(),
                             .dst2 = smooth.plane.get(),
                             .tex_a = texture.get(),
                             .flags = BMP_MAP_ANTIALIAS},
                            polygon);
                EXPECT_EQ(plain.bytes(), smooth.bytes()) << "format " << format << " ratio " << ratio;
                EXPECT_NE(plain.bytes(), Scene(format).bytes());
            }
        }
    }
}

TEST_P(PolygonProperties, DepthTestedPolygonsComeInAnyOrder) {
    const OwnedBitmap textures[2] = {make_noise(53, 37, BMP_FMT_RGBQ, 2), make_noise(31, 64, BMP_FMT_RGBQ, 3)};
    for (int round = 0; round < rounds(20); ++round) {
        Random random(round_seed(round));
        Polygon polygons[2] = {random_polygon(random, 4), random_polygon(random, 5)};
        for (Polygon& polygon : polygons)
            unequal_weights(random, polygon);
        Scene scenes[2] = {Scene(BMP_FMT_RGBQ), Scene(BMP_FMT_RGBQ)};
        for (const int first : {0, 1})
            for (const int which : {first, 1 - first})
                map_polygon({.dst = scenes[first].dest.get(),
                             .dst2 = scenes[first].plane.get(),
                             .aux = scenes[first].depth.get(),
                             .tex_a = textures[which].get()},
                            polygons[which]);
        ASSERT_EQ(scenes[0].bytes(), scenes[1].bytes()) << how_to_repeat(random);
    }
}

TEST_P(PolygonProperties, TiniestSourcesAtEveryScale) {
    // A source of 1 in every pixel gives 1, whatever filter its size allows.
    for (int width = 1; width <= 9; ++width) {
        for (int height = 1; height <= 5; ++height) {
            const OwnedBitmap texture = make_weights(width, height, 1);
            for (const float across : {0.1f, 1.0f, 1.5f, 2.5f, 4.0f, 16.0f}) {
                for (const float down : {0.1f, 1.0f, 1.2f, 2.0f, 16.0f}) {
                    const OwnedBitmap map = make_weights(3, 2, 9999);
                    map_polygon({.dst = map.get(), .tex_a = texture.get()},
                                quad({0, 0, 3, 2}, {-0.3f, -0.2f, 3 * across, 2 * down}));
                    ASSERT_EQ(all_weights(map), std::vector<Weights>(2, Weights(3, 1)))
                        << width << " x " << height << " at " << across << ", " << down;
                }
            }
        }
    }
}

ZEPBMP_FOR_ALL_TABLES(PolygonProperties);

}  // namespace
}  // namespace zepbmp::test
