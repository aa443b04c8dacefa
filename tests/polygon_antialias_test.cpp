/// \file
/// bmp_map_polygon: coverage of anti-aliased edges, what is blended by it, the solid fill. Cases worked out by hand.
#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "support/polygons.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

using Bytes = std::vector<int>;
using Weights = std::vector<int>;

class PolygonAntialias : public WithTables {
protected:
    static void fill(const OwnedBitmap& dest, const OwnedBitmap& plane, uint32_t color, int level,
                     const Polygon& polygon, uint32_t flags = 0) {
        map_polygon({.dst = dest.get(),
                     .dst2 = plane.get(),
                     .tex_a = BMP_INTEGER(color),
                     .tex_b = BMP_INTEGER(level),
                     .flags = flags | BMP_MAP_EXTRA | BMP_MAP_SOLID},
                    polygon);
    }
    /// The second plane of an opaque fill over nothing holds the coverage itself.
    static std::vector<Weights> coverage(const Polygon& polygon, int width, int height, uint32_t flags = 0) {
        const OwnedBitmap dest = make_bitmap(width, height, BMP_FMT_RGBQ), plane = make_weights(width, height, 0);
        fill(dest, plane, 0, 4096, polygon, flags);
        return all_weights(plane);
    }
    static Weights coverage_of_line(const Polygon& polygon, int width) { return coverage(polygon, width, 1)[0]; }

    const UseTables use_{GetParam()};
};

// ---------------------------------------------------------------- coverage

class PolygonRamps : public PolygonAntialias {};

TEST_P(PolygonRamps, UprightEdgesCutPixels) {
    EXPECT_EQ(coverage_of_line(outline({{0.25f, 0}, {2.75f, 0}, {2.75f, 1}, {0.25f, 1}}), 4),
              (Weights{3072, 4096, 3072, 0}));
    // Both in one pixel: 3072 right of the left one, 1024 right of the right one.
    EXPECT_EQ(coverage_of_line(outline({{1.25f, 0}, {1.75f, 0}, {1.75f, 1}, {1.25f, 1}}), 4), (Weights{0, 2048, 0, 0}));
    EXPECT_EQ(coverage_of_line(outline({{1, 0}, {3, 0}, {3, 1}, {1, 1}}), 4), (Weights{0, 4096, 4096, 0}));
}

// A slant of 3 pixels a line is one a sub-line, so that every position is exact. From 0.5 to 3.5: k = 4096 / 12288.
// Pixel 0: 2048^2 k >> 13 = 170. Pixels 1, 2: 4096 k = 1365, 8192 k = 2730. Pixel 3: 4096 - 170.
constexpr int kRamp[] = {170, 1365, 2730, 3926};

TEST_P(PolygonRamps, SlantedEdgeOverSeveralPixels) {
    const Weights want = {kRamp[0], kRamp[1], kRamp[2], kRamp[3], 4096, 4096, 4096, 4096};
    EXPECT_EQ(coverage_of_line(outline({{0.5f, 0}, {8, 0}, {8, 1}, {3.5f, 1}}), 8), want);
    EXPECT_EQ(coverage_of_line(outline({{3.5f, 0}, {8, 0}, {8, 1}, {0.5f, 1}}), 8), want) << "leaning the other way";
    const Weights right = {4096 - kRamp[0], 4096 - kRamp[1], 4096 - kRamp[2], 4096 - kRamp[3], 0, 0, 0, 0};
    EXPECT_EQ(coverage_of_line(outline({{0, 0}, {0.5f, 0}, {3.5f, 1}, {0, 1}}), 8), right) << "a right edge";
    EXPECT_EQ(coverage_of_line(outline({{0, 0}, {3.5f, 0}, {0.5f, 1}, {0, 1}}), 8), right);
}

TEST_P(PolygonRamps, SlantedEdgeOverTwoPixels) {
    // 0.5 to 2: k = 4096 / 6144. 2048^2 k >> 13 = 341; 4096 - (4096^2 k >> 13) = 4096 - 1365.
    EXPECT_EQ(coverage_of_line(outline({{0.5f, 0}, {4, 0}, {4, 1}, {2, 1}}), 4), (Weights{341, 2731, 4096, 4096}));
}

TEST_P(PolygonRamps, SlantedEdgeWithinAPixel) {
    // 1.25 to 2, whose end is the pixel's own: (16384 - 5120 - 8192) / 2. 1 to 1.75: (16384 - 4096 - 7168) / 2.
    EXPECT_EQ(coverage_of_line(outline({{1.25f, 0}, {4, 0}, {4, 1}, {2, 1}}), 4), (Weights{0, 1536, 4096, 4096}));
    EXPECT_EQ(coverage_of_line(outline({{1, 0}, {4, 0}, {4, 1}, {1.75f, 1}}), 4), (Weights{0, 2560, 4096, 4096}));
    // 2784 / 4096 wide, up to the pixel's own end: half of that, exactly. 2784^2 * (4096 / 2784) >> 13, with the
    // quotient as a float, would be 1391.
    EXPECT_EQ(coverage_of_line(outline({{2 - 2784.0f / 4096, 0}, {4, 0}, {4, 1}, {2, 1}}), 4),
              (Weights{0, 1392, 4096, 4096}));
}

TEST_P(PolygonRamps, AreClippedLeftRightAndAbove) {
    // -1.5 to 1.5: the middle of pixel 0 is 2 pixels into a ramp of 3.
    EXPECT_EQ(coverage_of_line(outline({{-1.5f, 0}, {8, 0}, {8, 1}, {1.5f, 1}}), 4),
              (Weights{kRamp[2], kRamp[3], 4096, 4096}));
    EXPECT_EQ(coverage_of_line(outline({{-4, 0}, {2.5f, 0}, {5.5f, 1}, {-4, 1}}), 4),
              (Weights{4096, 4096, 4096 - kRamp[0], 4096 - kRamp[1]}));
    EXPECT_EQ(coverage_of_line(outline({{-2.5f, -1}, {8, -1}, {8, 2}, {6.5f, 2}}), 8),
              (Weights{kRamp[0], kRamp[1], kRamp[2], kRamp[3], 4096, 4096, 4096, 4096}));
    EXPECT_EQ(coverage_of_line(outline({{-5, -3}, {-1, -3}, {-1, 4}, {-5, 4}}), 2), (Weights{0, 0}));
    EXPECT_EQ(coverage_of_line(outline({{3, -3}, {5, -3}, {5, 4}, {3, 4}}), 2), (Weights{0, 0}));
    EXPECT_EQ(coverage_of_line(outline({{0, 1}, {2, 1}, {2, 4}, {0, 4}}), 2), (Weights{0, 0}));
    EXPECT_EQ(coverage_of_line(outline({{0, -4}, {2, -4}, {2, 0}, {0, 0}}), 2), (Weights{0, 0}));
}

TEST_P(PolygonRamps, LineThatIsNotCrossedWholeIsTheMeanOfItsThirds) {
    // Lines 0.5 to 1.5: the centre at 0.5 belongs to it, that at 1.5 does not: two thirds, one third.
    EXPECT_EQ(coverage(outline({{1, 0.5f}, {3, 0.5f}, {3, 1.5f}, {1, 1.5f}}), 4, 2),
              (std::vector<Weights>{{0, 2730, 2730, 0}, {0, 1365, 1365, 0}}));
}

TEST_P(PolygonRamps, CornerInALineIsRampedThirdByThird) {
    // The left side is upright at 1 down to 0.5, then runs to 2.5 at the line's end, one pixel a third.
    // Third 0: 4096 from pixel 1 on. Third 1, whose centre is the corner: 0.5 to 1.5, of which the edge has 1 to 1.5:
    // pixel 1 (2048 * 4096 + 2048 * 3072) / 4096 = 3584. Third 2: 1.5 to 2.5: 512, 3584.
    EXPECT_EQ(coverage_of_line(outline({{1, 0}, {4, 0}, {4, 1}, {2.5f, 1}, {1, 0.5f}}), 4),
              (Weights{0, (4096 + 3584 + 512) / 3, (4096 + 4096 + 3584) / 3, 4096}));
}

TEST_P(PolygonRamps, PastItsOwnEndAnEdgeIsUpright) {
    // The left edge runs from (2, 1/8) to (4.625, 1). All three thirds are crossed: the line is whole, and its ends
    // would be 1.625 and 4.625. From 1.625 to 2 the edge is upright at 2: 1536 of 12288; the rest ramps with k = 4096 /
    // 10752: 780, 2340, 3792.
    EXPECT_EQ(coverage_of_line(outline({{2, 0.125f}, {8, 0.125f}, {8, 1}, {4.625f, 1}}), 8),
              (Weights{0, 0, (1536 * 4096 + 10752 * 780) / 12288, (1536 * 4096 + 10752 * 2340) / 12288,
                       (1536 * 4096 + 10752 * 3792) / 12288, 4096, 4096, 4096}));
}

TEST_P(PolygonRamps, UprightPartWithinAPixel) {
    // The same half a pixel further right: upright at 2.5, of which pixel 2 has 2048. Ramps of 195, 1560, 3120, 4084.
    constexpr int kUpright = 1536, kSlanted = 10752, kBoth = 12288;
    EXPECT_EQ(coverage_of_line(outline({{2.5f, 0.125f}, {8, 0.125f}, {8, 1}, {5.125f, 1}}), 8),
              (Weights{0, 0, (kUpright * 2048 + kSlanted * 195) / kBoth, (kUpright * 4096 + kSlanted * 1560) / kBoth,
                       (kUpright * 4096 + kSlanted * 3120) / kBoth, (kUpright * 4096 + kSlanted * 4084) / kBoth, 4096,
                       4096}));
}

TEST_P(PolygonRamps, CrossingEdgesAreEvenOdd) {
    // One square inside another, joined by an edge walked twice: the hole is not covered.
    EXPECT_EQ(
        coverage(outline({{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}, {1, 1}, {3, 1}, {3, 3}, {1, 3}, {1, 1}}), 4, 4)[2],
        (Weights{4096, 0, 0, 4096}));
}

TEST_P(PolygonRamps, FieldFlagsSelectLines) {
    const Polygon polygon = outline({{0.25f, 0}, {2, 0}, {2, 4}, {0.25f, 4}});
    const Weights drawn = {3072, 4096}, none = {0, 0};
    EXPECT_EQ(coverage(polygon, 2, 4, BMP_FIELD), (std::vector<Weights>{drawn, none, drawn, none}));
    EXPECT_EQ(coverage(polygon, 2, 4, BMP_FIELD | BMP_FIELD_ODD), (std::vector<Weights>{none, drawn, none, drawn}));
    EXPECT_EQ(coverage(polygon, 2, 4, BMP_FIELD_ODD), (std::vector<Weights>{drawn, drawn, drawn, drawn}));
}

ZEPBMP_FOR_ALL_TABLES(PolygonRamps);

// ---------------------------------------------------------------- solid fill

class PolygonSolid : public PolygonAntialias {
protected:
    // Coverage 3072, 4096, 3072, 0.
    const Polygon cut_ = outline({{0.25f, 0}, {2.75f, 0}, {2.75f, 1}, {0.25f, 1}});
};

TEST_P(PolygonSolid, OpaqueFillIsTheColourInside) {
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_RGBQ, 100);
    fill(dest, nullptr, 0x32ff00c8, 4096, cut_);
    // (100 * 1024 + 200 * 3072) / 4096 = 175; 25; 216.25; 62.5.
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{175, 25, 216, 62, 200, 0, 255, 50, 175, 25, 216, 62, 100, 100, 100, 100}));
}

TEST_P(PolygonSolid, LowerLevelsBlend) {
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_RGBQ, 100);
    fill(dest, nullptr, 0x32ff00c8, 2048, cut_);
    // Edges: 3072 * 2048 / 4096 = 1536: (100 * 2560 + 200 * 1536) / 4096 = 137.5; 62.5; 158.1; 81.25. Inside: halves.
    EXPECT_EQ(bytes_of_line(dest, 0),
              (Bytes{137, 62, 158, 81, 150, 50, 177, 75, 137, 62, 158, 81, 100, 100, 100, 100}));
}

TEST_P(PolygonSolid, LevelZeroChangesNothing) {
    for (const int format : {BMP_FMT_RGBQ, BMP_FMT_YUY2}) {
        const OwnedBitmap dest = make_noise(17, 5, format, 1), plane = make_weights(17, 5, 77),
                          mask = make_filled(17, 5, BMP_FMT_A8, 77);
        const auto dest_before = snapshot(dest), plane_before = snapshot(plane), mask_before = snapshot(mask);
        const Polygon polygon = outline({{0.3f, 0.2f}, {15.1f, 1.7f}, {12.3f, 4.9f}});
        fill(dest, nullptr, 0xffffffff, 0, polygon);
        fill(dest, plane, 0xffffffff, 0, polygon);
        fill(dest, mask, 0xffffffff, 0, polygon);
        EXPECT_EQ(snapshot(dest), dest_before);
        EXPECT_EQ(snapshot(plane), plane_before);
        EXPECT_EQ(snapshot(mask), mask_before);
    }
}

TEST_P(PolygonSolid, LevelOneIsTruncated) {
    const OwnedBitmap dest = make_filled(1, 1, BMP_FMT_RGBQ, 100);
    fill(dest, nullptr, 0x000064c8, 1, in_place(whole(dest)));
    // (100 * 4095 + 200) / 4096 = 100.02; 100 exactly; 99.98 twice.
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{100, 100, 99, 99}));
}

TEST_P(PolygonSolid, PlanesAreBlendedTowardTheirMark) {
    for (const int format : {BMP_FMT_RGBQ, BMP_FMT_YUY2}) {
        const OwnedBitmap dest = make_filled(4, 1, format, 100), map = make_weights(4, 1, 7),
                          mask = make_filled(4, 1, BMP_FMT_A8, 7);
        fill(dest, map, 0, 4096, cut_);
        EXPECT_EQ(weights_of_line(map, 0), (Weights{3073, 4096, 3073, 7})) << "3072 + 7 * 1024 / 4096";
        fill(dest, mask, 0, 4096, cut_);
        EXPECT_EQ(bytes_of_line(mask, 0), (Bytes{97, 128, 97, 7})) << "96 + 7 * 1024 / 4096";

        const OwnedBitmap half_map = make_weights(4, 1, 7), half_mask = make_filled(4, 1, BMP_FMT_A8, 7);
        fill(dest, half_map, 0, 2048, cut_);
        EXPECT_EQ(weights_of_line(half_map, 0), (Weights{1540, 2051, 1540, 7})) << "1536 + 4.4, 2048 + 3.5";
        fill(dest, half_mask, 0, 2048, cut_);
        EXPECT_EQ(bytes_of_line(half_mask, 0), (Bytes{52, 67, 52, 7})) << "48 + 4.4, 64 + 3.5";
    }
}

TEST_P(PolygonSolid, LevelsBeyondTheScaleDrawNothing) {
    const Polygon polygon = outline({{0, 0}, {40, 0}, {40, 2}, {0, 2}});
    for (const int format : {BMP_FMT_RGBQ, BMP_FMT_YUY2}) {
        for (const int level : {0, -1, 4097, INT32_MAX, INT32_MIN}) {
            const OwnedBitmap dest = make_filled(40, 2, format, 0xee), plane = make_weights(40, 2, 5);
            fill(dest, plane, 0x12345678, level, polygon);
            EXPECT_EQ(snapshot(dest), snapshot(make_filled(40, 2, format, 0xee))) << level;
            EXPECT_EQ(snapshot(plane), snapshot(make_weights(40, 2, 5))) << level;
        }
    }
}

TEST_P(PolygonSolid, PlanesDoNotChangeTheColour) {
    for (const int format : {BMP_FMT_RGBQ, BMP_FMT_YUY2}) {
        for (const int level : {4096, 4095, 2048, 1}) {
            const OwnedBitmap alone = make_noise(33, 9, format, 1), with_map = make_noise(33, 9, format, 1),
                              with_mask = make_noise(33, 9, format, 1), map = make_weights(33, 9, 5),
                              mask = make_filled(33, 9, BMP_FMT_A8, 5);
            const Polygon polygon = outline({{0.3f, 0.2f}, {31.1f, 1.7f}, {12.3f, 8.9f}});
            fill(alone, nullptr, 0x12345678, level, polygon);
            fill(with_map, map, 0x12345678, level, polygon);
            fill(with_mask, mask, 0x12345678, level, polygon);
            EXPECT_EQ(snapshot(with_map), snapshot(alone));
            EXPECT_EQ(snapshot(with_mask), snapshot(alone));
        }
    }
}

TEST_P(PolygonSolid, Yuy2ChromaTakesTheMeanOfItsPair) {
    // 0x00YYUUVV: 200, 10, 1. Chroma of pair 0: (3072 + 4096) / 2 = 3584; of pair 1: 1536, its odd pixel is outside.
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_YUY2, 100);
    fill(dest, nullptr, 0xffc80a01, 4096, cut_);
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{175, 21, 200, 13, 175, 66, 100, 62}));

    // At half level the mean is taken first: 1792, 768.
    const OwnedBitmap half = make_filled(4, 1, BMP_FMT_YUY2, 100);
    fill(half, nullptr, 0xffc80a01, 2048, cut_);
    EXPECT_EQ(bytes_of_line(half, 0), (Bytes{137, 60, 150, 56, 137, 83, 100, 81}));
}

TEST_P(PolygonSolid, Yuy2MeanOfAPairIsTruncated) {
    // Coverage 170, 1365, 2730, 3926: means of 767.5 and 3328. U is 16 at 768 / 4096, V 0; 16 * 767 / 4096 = 2.996.
    const Polygon slanted = outline({{0.5f, 0}, {8, 0}, {8, 1}, {3.5f, 1}});
    const OwnedBitmap dest = make_bitmap(8, 1, BMP_FMT_YUY2);
    fill(dest, nullptr, 0x001000, 4096, slanted);
    EXPECT_EQ(bytes_at(line(dest, 0), 8), (Bytes{0, 2, 0, 0, 0, 13, 0, 0}));
    // At half level 383 of 4096, where 768 would give 384: 32 * 383 / 4096 = 2.99.
    const OwnedBitmap half = make_bitmap(8, 1, BMP_FMT_YUY2);
    fill(half, nullptr, 0x002000, 2048, slanted);
    EXPECT_EQ(bytes_at(line(half, 0), 8), (Bytes{0, 2, 0, 0, 0, 13, 0, 0}));
    // The same of a texture.
    const OwnedBitmap texture = make_bitmap(8, 2, BMP_FMT_YUY2), textured = make_bitmap(8, 1, BMP_FMT_YUY2);
    for (int i = 1; i < 32; i += 4)
        texture->pixels[i] = 16;
    map_polygon({.dst = textured.get(), .tex_a = texture.get(), .flags = BMP_MAP_ANTIALIAS}, slanted);
    EXPECT_EQ(bytes_at(line(textured, 0), 8), (Bytes{0, 2, 0, 0, 0, 13, 0, 0}));
}

TEST_P(PolygonSolid, Yuy2ChromaOfAnOddPixelAlone) {
    // Only pixel 1 is covered: 2048 for the chroma. (100 + 10) / 2, (100 + 1) / 2.
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_YUY2, 100);
    fill(dest, nullptr, 0xffc80a01, 4096, in_place({1, 0, 2, 1}));
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{100, 55, 200, 50, 100, 100, 100, 100}));
}

TEST_P(PolygonSolid, Yuy2ChromaOfALastPixelWithoutPartner) {
    const OwnedBitmap dest = make_filled(3, 1, BMP_FMT_YUY2, 100);
    fill(dest, nullptr, 0xffc80a01, 4096, cut_);
    // 3072: (100 * 1024 + 10 * 3072) / 4096 = 32.5, 25.75. The partner's luma lies in the padding.
    EXPECT_EQ(bytes_at(line(dest, 0), 8), (Bytes{175, 21, 200, 13, 175, 32, 100, 25}));
}

TEST_P(PolygonSolid, SourcePositionsAndWeightsDoNotMatter) {
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_RGBQ, 100), other = make_filled(4, 1, BMP_FMT_RGBQ, 100);
    fill(dest, nullptr, 0x32ff00c8, 4096, cut_);
    Polygon odd = cut_;
    for (BmpVertex& corner : odd)
        corner.u = corner.v = corner.w = std::numeric_limits<float>::quiet_NaN();
    fill(other, nullptr, 0x32ff00c8, 4096, odd);
    EXPECT_EQ(snapshot(other), snapshot(dest));
}

ZEPBMP_FOR_ALL_TABLES(PolygonSolid);

// ---------------------------------------------------------------- textures

class PolygonFinishers : public PolygonAntialias {
protected:
    // Coverage 3072, 4096, 3072, 0 of line 0.
    const Polygon cut_ = in_place({0.25f, 0, 2.75f, 1});
};

TEST_P(PolygonFinishers, RgbqIsBlendedByCoverage) {
    const OwnedBitmap texture = make_bitmap(8, 3, BMP_FMT_RGBQ);
    for (int i = 0; i < texture->pitch * 3; ++i)
        texture->pixels[i] = static_cast<uint8_t>(0x32ff00c8u >> 8 * (i % 4));
    const auto draw = [&](const OwnedBitmap& plane) {
        const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_RGBQ, 100);
        map_polygon({.dst = dest.get(), .dst2 = plane.get(), .tex_a = texture.get(), .flags = BMP_MAP_ANTIALIAS}, cut_);
        EXPECT_EQ(bytes_of_line(dest, 0),
                  (Bytes{175, 25, 216, 62, 200, 0, 255, 50, 175, 25, 216, 62, 100, 100, 100, 100}));
    };
    draw(nullptr);
    const OwnedBitmap map = make_weights(4, 1, 7), mask = make_filled(4, 1, BMP_FMT_A8, 7);
    draw(map);
    EXPECT_EQ(weights_of_line(map, 0), (Weights{3073, 4096, 3073, 7}));
    draw(mask);
    EXPECT_EQ(bytes_of_line(mask, 0), (Bytes{97, 128, 97, 7}));
}

TEST_P(PolygonFinishers, Yuy2ChromaTakesTheMeanOfItsPair) {
    const OwnedBitmap texture = make_bitmap(8, 3, BMP_FMT_YUY2);
    for (int i = 0; i < texture->pitch * 3; ++i)
        texture->pixels[i] = std::array<uint8_t, 4>{200, 10, 200, 1}[static_cast<size_t>(i % 4)];
    const auto drawn = [&](const OwnedBitmap& plane, const Polygon& polygon) {
        const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_YUY2, 100);
        map_polygon({.dst = dest.get(), .dst2 = plane.get(), .tex_a = texture.get(), .flags = BMP_MAP_ANTIALIAS},
                    polygon);
        return bytes_of_line(dest, 0);
    };
    const Bytes want = {175, 21, 200, 13, 175, 66, 100, 62};
    EXPECT_EQ(drawn(nullptr, cut_), want);
    const OwnedBitmap map = make_weights(4, 1, 7), mask = make_filled(4, 1, BMP_FMT_A8, 7);
    EXPECT_EQ(drawn(map, cut_), want);
    EXPECT_EQ(weights_of_line(map, 0), (Weights{3073, 4096, 3073, 7}));
    EXPECT_EQ(drawn(mask, cut_), want);
    EXPECT_EQ(bytes_of_line(mask, 0), (Bytes{97, 128, 97, 7}));
    EXPECT_EQ(drawn(nullptr, in_place({1, 0, 2, 1})), (Bytes{100, 55, 200, 50, 100, 100, 100, 100}))
        << "a span of one odd pixel";
}

TEST_P(PolygonFinishers, WeightsAreBlendedAsWords) {
    const OwnedBitmap texture = make_weights(8, 3, 4096), map = make_weights(4, 1, 1000);
    map_polygon({.dst = map.get(), .tex_a = texture.get(), .flags = BMP_MAP_ANTIALIAS}, cut_);
    EXPECT_EQ(weights_of_line(map, 0), (Weights{3072 + 250, 4096, 3072 + 250, 1000}));
    const OwnedBitmap largest = make_weights(8, 3, 65535), large = make_weights(4, 1, 65535);
    map_polygon({.dst = large.get(), .tex_a = largest.get(), .flags = BMP_MAP_ANTIALIAS}, cut_);
    EXPECT_EQ(weights_of_line(large, 0), Weights(4, 65535));
}

TEST_P(PolygonFinishers, ThirdsAreBlendedToo) {
    const OwnedBitmap texture = make_weights(8, 3, 4096), map = make_weights(4, 2, 0);
    map_polygon({.dst = map.get(), .tex_a = texture.get(), .flags = BMP_MAP_ANTIALIAS}, in_place({1, 0.5f, 3, 1.5f}));
    EXPECT_EQ(all_weights(map), (std::vector<Weights>{{0, 2730, 2730, 0}, {0, 1365, 1365, 0}}));
}

TEST_P(PolygonFinishers, FieldSourcesAndFieldDestinations) {
    // Line 100 y of each field of 8 lines lies in its own place; the edges cut pixels 0 and 2.
    const OwnedBitmap texture = make_bitmap(8, 8, BMP_FMT_PWRW, BMP_CREATE_ZERO | 2);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            weights(texture, y)[x] = static_cast<uint16_t>(400 * y);
    const OwnedBitmap map = make_weights(4, 6, 0);
    map_polygon({.dst = map.get(), .tex_a = texture.get(), .flags = BMP_MAP_ANTIALIAS | BMP_FIELD | BMP_FIELD_ODD},
                in_place({0.25f, 0, 2.75f, 6}));
    EXPECT_EQ(
        all_weights(map),
        (std::vector<Weights>{
            {0, 0, 0, 0}, {300, 400, 300, 0}, {0, 0, 0, 0}, {900, 1200, 900, 0}, {0, 0, 0, 0}, {1500, 2000, 1500, 0}}));
}

ZEPBMP_FOR_ALL_TABLES(PolygonFinishers);

}  // namespace
}  // namespace zepbmp::test
