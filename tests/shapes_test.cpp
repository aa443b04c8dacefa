/// \file
/// bmp_alpha_rect and bmp_alpha_circle: cases worked out by hand, and what has to hold for every shape.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "support/library.h"
#include "support/owned_bitmap.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

using Weights = std::vector<int>;

constexpr uint32_t kElliptic = BMP_SHAPE_ELLIPTIC | BMP_SHAPE_ELLIPTIC_PLAIN;
constexpr uint32_t kEllipticEdges = BMP_SHAPE_ELLIPTIC | BMP_SHAPE_ELLIPTIC_EDGES;

class Shapes : public WithTables {
protected:
    static void rect(const OwnedBitmap& map, float x, float y, float width, float height,
                     uint32_t flags = BMP_SHAPE_ADD, float radius_x = 0, float radius_y = 0) {
        library().alpha_rect(map.get(), x, y, width, height, radius_x, radius_y, flags);
    }
    static void circle(const OwnedBitmap& map, float cx, float cy, float radius, float feather, float aspect = 1,
                       uint32_t flags = 0) {
        library().alpha_circle(map.get(), cx, cy, radius, feather, aspect, flags);
    }
    static std::vector<Weights> all_lines(const OwnedBitmap& map) {
        std::vector<Weights> lines;
        for (int y = 0; y < map->height; ++y)
            lines.push_back(weights_of_line(map, y));
        return lines;
    }
    static double covered_area(const OwnedBitmap& map) {
        double sum = 0;
        for (const Weights& line : all_lines(map))
            for (const int weight : line)
                sum += weight;
        return sum / 4096;
    }
    static void expect_mirrored(const OwnedBitmap& map, bool left_right, bool top_bottom) {
        const auto lines = all_lines(map);
        for (size_t y = 0; y < lines.size(); ++y) {
            const Weights& line = lines[y];
            if (left_right) {
                ASSERT_EQ(line, Weights(line.rbegin(), line.rend())) << "line " << y;
            }
            if (top_bottom) {
                ASSERT_EQ(line, lines[lines.size() - 1 - y]) << "line " << y;
            }
        }
    }

    const UseTables use_{GetParam()};
};

// ---------------------------------------------------------------- rectangle

class AlphaRect : public Shapes {};

TEST_P(AlphaRect, OnWholePixelsIsFullInsideAndNothingOutside) {
    for (const uint32_t mode : {BMP_SHAPE_ADD, BMP_SHAPE_MAX, kElliptic}) {
        const OwnedBitmap map = make_weights(8, 5, 99);
        rect(map, 2, 1, 3, 2, mode);
        EXPECT_EQ(all_lines(map), (std::vector<Weights>{{99, 99, 99, 99, 99, 99, 99, 99},
                                                        {99, 99, 4096, 4096, 4096, 99, 99, 99},
                                                        {99, 99, 4096, 4096, 4096, 99, 99, 99},
                                                        {99, 99, 99, 99, 99, 99, 99, 99},
                                                        {99, 99, 99, 99, 99, 99, 99, 99}}));
    }
}

TEST_P(AlphaRect, CutPixelsGetTheirCoveredFraction) {
    const OwnedBitmap map = make_bitmap(4, 3, BMP_FMT_PWRW);
    rect(map, 0.5, 1, 2, 1);
    EXPECT_EQ(all_lines(map), (std::vector<Weights>{{0, 0, 0, 0}, {2048, 4096, 2048, 0}, {0, 0, 0, 0}}));

    // Lines 0.75 .. 2.25, columns 1.25 .. 2.5: 48/64 and 32/64 across, 16/64 down.
    const OwnedBitmap other = make_bitmap(4, 3, BMP_FMT_PWRW);
    rect(other, 1.25, 0.75, 1.25, 1.5);
    EXPECT_EQ(all_lines(other),
              (std::vector<Weights>{{0, 48 * 16, 32 * 16, 0}, {0, 48 * 64, 32 * 64, 0}, {0, 48 * 16, 32 * 16, 0}}));
}

TEST_P(AlphaRect, PositionsAreTruncatedTo64ths) {
    const OwnedBitmap map = make_bitmap(3, 1, BMP_FMT_PWRW);
    rect(map, 0.999f, 0, 1, 1);  // 63.9 -> 63 to 127.9 -> 127
    EXPECT_EQ(weights_of_line(map, 0), (Weights{1 * 64, 63 * 64, 0}));
    const OwnedBitmap negative = make_bitmap(3, 1, BMP_FMT_PWRW);
    rect(negative, -0.5f, 0, 1, 1);
    EXPECT_EQ(weights_of_line(negative, 0), (Weights{2048, 0, 0}));
}

TEST_P(AlphaRect, AddsAtTheEdgesAndSetsTheInside) {
    const OwnedBitmap map = make_weights(4, 3, 1000);
    rect(map, 0.5, 0.5, 2, 2);
    EXPECT_EQ(all_lines(map), (std::vector<Weights>{{1000 + 1024, 1000 + 2048, 1000 + 1024, 1000},
                                                    {1000 + 2048, 4096, 1000 + 2048, 1000},
                                                    {1000 + 1024, 1000 + 2048, 1000 + 1024, 1000}}))
        << "whole pixels of whole lines become full, also where weights add";
}

TEST_P(AlphaRect, AddedWeightsPassFullAndWrapAt65536) {
    const OwnedBitmap map = make_weights(2, 1, 4096);
    rect(map, 0.5, 0, 1, 1);
    EXPECT_EQ(weights_of_line(map, 0), (Weights{6144, 6144}));
    const OwnedBitmap high = make_weights(2, 1, 65000);
    rect(high, 0.5, 0, 1, 1);
    EXPECT_EQ(weights_of_line(high, 0), (Weights{65000 + 2048 - 65536, 65000 + 2048 - 65536}));
}

TEST_P(AlphaRect, MaximumKeepsTheLargerWeightAtTheEdges) {
    const OwnedBitmap map = make_bitmap(4, 1, BMP_FMT_PWRW);
    weights(map, 0)[0] = 3000;
    weights(map, 0)[1] = 60000;
    weights(map, 0)[2] = 100;
    rect(map, 0.5, 0, 2, 1, BMP_SHAPE_MAX);
    EXPECT_EQ(weights_of_line(map, 0), (Weights{3000, 4096, 2048, 0})) << "the inside is set even where it was larger";
}

TEST_P(AlphaRect, BothEdgesInOnePixelAreBothApplied) {
    const OwnedBitmap added = make_bitmap(3, 1, BMP_FMT_PWRW);
    rect(added, 1.25, 0, 0.5, 1);  // the left edge covers 48/64, the right one 48/64
    EXPECT_EQ(weights_of_line(added, 0), (Weights{0, 6144, 0}));
    const OwnedBitmap larger = make_bitmap(3, 1, BMP_FMT_PWRW);
    rect(larger, 1.25, 0, 0.5, 1, BMP_SHAPE_MAX);
    EXPECT_EQ(weights_of_line(larger, 0), (Weights{0, 3072, 0}));
}

TEST_P(AlphaRect, BothEdgesInOneLineAreATopLineOnly) {
    const OwnedBitmap map = make_bitmap(2, 3, BMP_FMT_PWRW);
    rect(map, 0, 1.25, 1, 0.5);  // the top edge covers 48/64
    EXPECT_EQ(all_lines(map), (std::vector<Weights>{{0, 0}, {3072, 0}, {0, 0}}));
}

TEST_P(AlphaRect, FieldsBeginAtTheirParity) {
    const auto drawn = [](float y, uint32_t flags) {
        const OwnedBitmap map = make_bitmap(1, 8, BMP_FMT_PWRW);
        rect(map, 0, y, 1, 4, flags);
        Weights column;
        for (int line = 0; line < 8; ++line)
            column.push_back(weights(map, line)[0]);
        return column;
    };
    EXPECT_EQ(drawn(1, BMP_FIELD), (Weights{0, 0, 4096, 0, 4096, 0, 0, 0}))
        << "line 1 is odd: drawing starts at line 2";
    EXPECT_EQ(drawn(1, BMP_FIELD | BMP_FIELD_ODD), (Weights{0, 4096, 0, 4096, 0, 0, 0, 0}));
    EXPECT_EQ(drawn(2, BMP_FIELD), (Weights{0, 0, 4096, 0, 4096, 0, 0, 0}));
    EXPECT_EQ(drawn(2, BMP_FIELD | BMP_FIELD_ODD), (Weights{0, 0, 0, 4096, 0, 4096, 0, 0}));
    EXPECT_EQ(drawn(2, BMP_FIELD_ODD), (Weights{0, 0, 4096, 4096, 4096, 4096, 0, 0}))
        << "the odd flag alone is nothing";
    // 1.5 to 5.5: lines 1 and 5 are cut, and both are odd.
    EXPECT_EQ(drawn(1.5, BMP_FIELD), (Weights{0, 0, 4096, 0, 4096, 0, 0, 0}));
    EXPECT_EQ(drawn(1.5, BMP_FIELD | BMP_FIELD_ODD), (Weights{0, 2048, 0, 4096, 0, 2048, 0, 0}));
}

TEST_P(AlphaRect, OtherModesDrawNothing) {
    for (const uint32_t mode : {0x20u, 0x30u, 0x40u, 0x50u, 0x60u, 0x70u}) {
        const OwnedBitmap map = make_weights(6, 4, 5);
        rect(map, 1.5, 1, 3, 2, mode);
        EXPECT_EQ(all_lines(map), std::vector<Weights>(4, Weights(6, 5))) << mode;
    }
}

TEST_P(AlphaRect, IsClippedToTheMap) {
    const OwnedBitmap map = make_bitmap(3, 2, BMP_FMT_PWRW);
    rect(map, -10, -10, 100, 100);
    EXPECT_EQ(all_lines(map), std::vector<Weights>(2, Weights(3, 4096)));
    EXPECT_EQ(weights(map, 0)[3], 0) << "the padding is not drawn on";
    for (const auto& [x, y] : {std::pair{3.0f, 0.0f}, {0.0f, 2.0f}, {-5.0f, 0.0f}, {0.0f, -5.0f}, {100.0f, 100.0f}}) {
        const OwnedBitmap outside = make_bitmap(3, 2, BMP_FMT_PWRW);
        rect(outside, x, y, 5, 5);
        EXPECT_EQ(all_lines(outside), std::vector<Weights>(2, Weights(3, 0))) << x << " " << y;
    }
}

TEST_P(AlphaRect, EmptyOnesDrawNothing) {
    const OwnedBitmap map = make_bitmap(5, 5, BMP_FMT_PWRW);
    rect(map, 2, 2, 0, 3);
    rect(map, 2, 2, 3, 0);
    rect(map, 2, 2, -1, 3);
    rect(map, 2, 2, 3, -1);
    rect(map, std::nanf(""), 2, 3, 3);
    rect(map, 2, 2, 3, std::nanf(""));
    EXPECT_EQ(all_lines(map), std::vector<Weights>(5, Weights(5, 0)));
}

// ---------------------------------------------------------------- elliptical corners

// Radii of 2 on whole pixels, the centre of the corner at (2, 2). Of pixel (0, 0) the sample nearest to it lies (1.25,
// 1.25) away: inside; the next ones (1.75, 1.25) = 2.15: outside. Of pixel (1, 0) the samples lie 0.25 and 0.75 across,
// 1.25 and 1.75 up, all within 2. So every corner is 1024 and everything else full.
TEST_P(AlphaRect, EllipticalCornersAreSampledTwiceTwice) {
    const OwnedBitmap map = make_bitmap(8, 6, BMP_FMT_PWRW);
    rect(map, 0, 0, 8, 6, kElliptic, 2, 2);
    const Weights whole(8, 4096), ends = {1024, 4096, 4096, 4096, 4096, 4096, 4096, 1024};
    EXPECT_EQ(all_lines(map), (std::vector<Weights>{ends, whole, whole, whole, whole, ends}));
}

TEST_P(AlphaRect, EllipticalCornersKeepTheLargerWeight) {
    const OwnedBitmap map = make_weights(8, 6, 3000);
    weights(map, 3)[4] = 5000;
    rect(map, 0, 0, 8, 6, kElliptic, 2, 2);
    EXPECT_EQ(weights(map, 0)[0], 3000);
    EXPECT_EQ(weights(map, 0)[1], 4096);
    EXPECT_EQ(weights(map, 3)[4], 5000) << "also inside";
}

TEST_P(AlphaRect, EveryEllipticalFlagDrawsTheSamePicture) {
    const OwnedBitmap want = make_bitmap(40, 30, BMP_FMT_PWRW);
    rect(want, 3.25, 2.5, 33, 25.5, kElliptic, 9, 7);
    for (const uint32_t flags : {kEllipticEdges, kElliptic | kEllipticEdges, kElliptic | BMP_SHAPE_MAX,
                                 kElliptic | 0x70u, kElliptic | 0x40000u}) {
        const OwnedBitmap map = make_bitmap(40, 30, BMP_FMT_PWRW);
        rect(map, 3.25, 2.5, 33, 25.5, flags, 9, 7);
        EXPECT_EQ(snapshot(map), snapshot(want)) << flags;
    }
    for (const uint32_t flags : {BMP_SHAPE_ELLIPTIC, BMP_SHAPE_ELLIPTIC_PLAIN, BMP_SHAPE_ELLIPTIC_EDGES}) {
        const OwnedBitmap map = make_bitmap(40, 30, BMP_FMT_PWRW), plain = make_bitmap(40, 30, BMP_FMT_PWRW);
        rect(map, 3.25, 2.5, 33, 25.5, flags, 9, 7);
        rect(plain, 3.25, 2.5, 33, 25.5, 0, 9, 7);
        EXPECT_EQ(snapshot(map), snapshot(plain)) << "one flag alone is a plain rectangle: " << flags;
    }
}

TEST_P(AlphaRect, EllipticalFieldsAreLinesOfTheWhole) {
    const OwnedBitmap whole = make_bitmap(40, 30, BMP_FMT_PWRW);
    rect(whole, 3.25, 2.5, 33, 25.5, kElliptic, 9, 7);
    for (const uint32_t odd : {0u, 1u}) {
        const OwnedBitmap field = make_bitmap(40, 30, BMP_FMT_PWRW);
        rect(field, 3.25, 2.5, 33, 25.5, kElliptic | BMP_FIELD | odd, 9, 7);
        for (int y = 0; y < 30; ++y)
            EXPECT_EQ(weights_of_line(field, y),
                      y % 2 == static_cast<int>(odd) ? weights_of_line(whole, y) : Weights(40, 0))
                << y;
    }
}

// Radii that leave no straight part are shrunk, keeping their ratio, until the ellipse fits half the rectangle.
TEST_P(AlphaRect, LargeRadiiAreShrunk) {
    const auto drawn = [](float width, float height, float radius_x, float radius_y) {
        const OwnedBitmap map = make_bitmap(64, 64, BMP_FMT_PWRW);
        rect(map, 0, 0, width, height, kElliptic, radius_x, radius_y);
        return snapshot(map);
    };
    EXPECT_EQ(drawn(60, 20, 100, 50), drawn(60, 20, 20, 10)) << "height limits: 20 * 100 / 50 = 40 < 60";
    EXPECT_EQ(drawn(20, 60, 50, 100), drawn(20, 60, 10, 20)) << "width limits";
    EXPECT_EQ(drawn(40, 40, 1000, 1000), drawn(40, 40, 20, 20));
    EXPECT_NE(drawn(60, 20, 100, 50), drawn(60, 20, 30, 10));
}

TEST_P(AlphaRect, RadiiBelowA64thAreSquareCorners) {
    for (const auto& [radius_x, radius_y] : {std::pair{0.0f, 0.0f}, {0.01f, 5.0f}, {5.0f, 0.01f}}) {
        const OwnedBitmap map = make_bitmap(20, 20, BMP_FMT_PWRW), plain = make_bitmap(20, 20, BMP_FMT_PWRW);
        rect(map, 2.5, 3.25, 12, 13.5, kElliptic, radius_x, radius_y);
        rect(plain, 2.5, 3.25, 12, 13.5, BMP_SHAPE_MAX);
        EXPECT_EQ(snapshot(map), snapshot(plain)) << radius_x << " " << radius_y;
    }
}

TEST_P(AlphaRect, AreSymmetricWhereTheRectangleIs) {
    for (int round = 0; round < rounds(200); ++round) {
        Random random(round_seed(round));
        const int width = random.between(1, 60), height = random.between(1, 60);
        const OwnedBitmap map = make_bitmap(width, height, BMP_FMT_PWRW);
        // In 64ths: as far from the left edge as from the right one, also outside the map.
        const float x = static_cast<float>(random.between(-640, 32 * width)) / 64,
                    y = static_cast<float>(random.between(-640, 32 * height)) / 64;
        const float radius_x = static_cast<float>(random.below(2500)) / 64,
                    radius_y = static_cast<float>(random.below(2500)) / 64;
        const float w = static_cast<float>(width) - 2 * x, h = static_cast<float>(height) - 2 * y;
        rect(map, x, y, w, h, kElliptic, radius_x, radius_y);
        expect_mirrored(map, true, true);
        ASSERT_FALSE(HasFatalFailure()) << width << " x " << height << " at " << x << " " << y << " radii " << radius_x
                                        << " " << radius_y << how_to_repeat(random);
    }
}

// A plain rectangle covers its area exactly; edges in one pixel or one line are the exceptions told above.
TEST_P(AlphaRect, CoversItsArea) {
    for (int round = 0; round < rounds(200); ++round) {
        Random random(round_seed(round));
        const OwnedBitmap map = make_bitmap(50, 40, BMP_FMT_PWRW);
        const int x0 = random.between(0, 64 * 20), y0 = random.between(0, 64 * 15);
        const int w = random.between(64 * 2, 64 * 30), h = random.between(64 * 2, 64 * 25);
        rect(map, static_cast<float>(x0) / 64, static_cast<float>(y0) / 64, static_cast<float>(w) / 64,
             static_cast<float>(h) / 64);
        ASSERT_EQ(covered_area(map), static_cast<double>(w) * h / 4096) << how_to_repeat(random);
    }
}

// The corners leave (4 - pi) rx ry uncovered. A sample more or less at every edge pixel of the four quarters errs by
// far less than a quarter pixel each, as the errors have both signs.
TEST_P(AlphaRect, EllipticalCornersCoverTheirArea) {
    for (const auto& [rx, ry] : {std::pair{30.0, 30.0}, {40.0, 20.0}, {12.0, 35.0}}) {
        const OwnedBitmap map = make_bitmap(120, 100, BMP_FMT_PWRW);
        rect(map, 10, 10, 100, 80, kElliptic, static_cast<float>(rx), static_cast<float>(ry));
        const double want = 100 * 80 - (4 - std::numbers::pi) * rx * ry;
        EXPECT_NEAR(covered_area(map), want, 2 * std::numbers::pi * std::max(rx, ry) / 16) << rx << " " << ry;
    }
}

// ---------------------------------------------------------------- circle

class AlphaCircle : public Shapes {};

TEST_P(AlphaCircle, WithoutRadiusClearsEveryLine) {
    for (const float radius : {0.0f, -5.0f}) {
        const OwnedBitmap map = make_weights(20, 6, 777);
        circle(map, 10, 3, radius, 0);
        EXPECT_EQ(all_lines(map), std::vector<Weights>(6, Weights(20, 0)));
    }
}

TEST_P(AlphaCircle, LargerThanTheMapIsFull) {
    for (const float feather : {0.0f, 5.0f}) {
        const OwnedBitmap map = make_weights(20, 6, 777);
        circle(map, 10, 3, 100, feather);
        EXPECT_EQ(all_lines(map), std::vector<Weights>(6, Weights(20, 4096)));
        EXPECT_EQ(weights(map, 0)[20], 777) << "the padding is not drawn on";
    }
}

// The centre of a 4 x 4 map, radius 1. Of pixel (1, 1), counted from the centre, samples lie at 1/8, 3/8, 5/8, 7/8 each
// way. dx^2 + dy^2 <= 1 in 64ths (1 9 25 49 <= 64): 7/8 goes with 1/8 (50) and 3/8 (58), not with 5/8 (74); the others
// all: 13 of 16.
TEST_P(AlphaCircle, HardEdgesAreSampledFourTimesFour) {
    const OwnedBitmap map = make_weights(4, 4, 777);
    circle(map, 2, 2, 1, 0);
    const Weights none(4, 0), some = {0, 13 * 256, 13 * 256, 0};
    EXPECT_EQ(all_lines(map), (std::vector<Weights>{none, some, some, none}));
}

TEST_P(AlphaCircle, APixelHalfInsideAHardEdgeIsHalfFull) {
    // The edge passes x = 50.5 nearly upright beside the centre's lines.
    const OwnedBitmap map = make_bitmap(120, 60, BMP_FMT_PWRW);
    circle(map, 10, 30, 40.5, 0);
    EXPECT_NEAR(weights(map, 29)[50], 2048, 256);
    EXPECT_NEAR(weights(map, 30)[50], 2048, 256);
    for (const Weights& line : all_lines(map))
        for (const int weight : line)
            ASSERT_EQ(weight % 256, 0);
}

TEST_P(AlphaCircle, LeavesTheOtherFieldAlone) {
    for (const float feather : {0.0f, 4.0f}) {
        const OwnedBitmap whole = make_bitmap(30, 20, BMP_FMT_PWRW);
        circle(whole, 15, 10, 8, feather);
        const auto drawn = [&](uint32_t flags) {
            const OwnedBitmap map = make_weights(30, 20, 777);
            circle(map, 15, 10, 8, feather, 1, flags);
            std::vector<int> lines;
            for (int y = 0; y < 20; ++y) {
                if (weights_of_line(map, y) == weights_of_line(whole, y))
                    lines.push_back(y);
                else
                    EXPECT_EQ(weights_of_line(map, y), Weights(30, 777)) << y;
            }
            return lines;
        };
        EXPECT_EQ(drawn(2), (std::vector{0, 2, 4, 6, 8, 10, 12, 14, 16, 18}));
        EXPECT_EQ(drawn(3), (std::vector{1, 3, 5, 7, 9, 11, 13, 15, 17, 19}));
        EXPECT_EQ(drawn(1), (std::vector{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19}));
        EXPECT_EQ(drawn(0).size(), 20u);
    }
    const OwnedBitmap one_line = make_weights(30, 1, 777);
    circle(one_line, 15, 0, 8, 0, 1, 1);
    EXPECT_EQ(weights_of_line(one_line, 0), Weights(30, 777)) << "there is no line 1";
}

// A feather of twice the radius: at the centre the ramp has come half way, k = trunc(radius * 1024 / feather + 0.5).
TEST_P(AlphaCircle, AFeatherBeyondTheRadiusNeverReachesFull) {
    const OwnedBitmap map = make_bitmap(21, 21, BMP_FMT_PWRW);
    circle(map, 10.5, 10.5, 8, 16);
    EXPECT_EQ(weights(map, 10)[10], 2048);  // 8 * 64 = 512, times 4
    circle(map, 10.5, 10.5, 8, 32);
    EXPECT_EQ(weights(map, 10)[10], 1024);
    circle(map, 10.5, 10.5, 8, 32, 1, BMP_SHAPE_COSINE);
    EXPECT_EQ(weights(map, 10)[10], 600);  // k = 256
    circle(map, 10.5, 10.5, 8, 9);
    EXPECT_EQ(weights(map, 10)[10], 4 * 910);  // 8 * 1024 / 9 + 0.5 = 910.7
    for (const Weights& line : all_lines(map))
        for (const int weight : line)
            ASSERT_LT(weight, 4096);
}

// Pixel (x, 20) lies x - 20 from the centre; radius 18, feather 16: k = (18 - d) * 64.
TEST_P(AlphaCircle, RampsAcrossTheFeather) {
    const OwnedBitmap linear = make_bitmap(41, 41, BMP_FMT_PWRW), cosine = make_bitmap(41, 41, BMP_FMT_PWRW);
    circle(linear, 20.5, 20.5, 18, 16);
    circle(cosine, 20.5, 20.5, 18, 16, 1, BMP_SHAPE_COSINE);
    for (int d = 3; d <= 16; ++d) {
        EXPECT_EQ(weights(linear, 20)[20 + d], (18 - d) * 256) << d;
        EXPECT_EQ(weights(linear, 20)[20 - d], (18 - d) * 256) << d;
        EXPECT_EQ(weights(linear, 20 + d)[20], (18 - d) * 256) << d;
        EXPECT_EQ(weights(linear, 20 - d)[20], (18 - d) * 256) << d;
    }
    EXPECT_EQ(weights(linear, 20)[20], 4096);
    EXPECT_EQ(weights(linear, 20)[20 + 10], 2048);
    EXPECT_EQ(weights(cosine, 20)[20 + 10], 2048) << "halfway through the feather";
    EXPECT_EQ(weights(cosine, 20)[20 + 14], 600);  // k = 256
    EXPECT_EQ(weights(cosine, 20)[20 + 16], 156);  // k = 128
    EXPECT_EQ(weights(cosine, 20)[20 + 6], 3496);  // k = 768
    EXPECT_EQ(weights(cosine, 20)[20], 4096);
}

TEST_P(AlphaCircle, AspectIsTheHeightOfALine) {
    // Lines twice as high: line y of 10 covers 2y .. 2y + 2 of 20.
    const OwnedBitmap map = make_bitmap(40, 10, BMP_FMT_PWRW);
    circle(map, 20, 10, 8, 0, 2);
    for (int y = 0; y < 10; ++y) {
        const Weights line = weights_of_line(map, y);
        const bool crossed = 2 * y + 2 > 2 && 2 * y < 18;
        EXPECT_EQ(std::any_of(line.begin(), line.end(), [](int w) { return w > 0; }), crossed) << y;
    }
    EXPECT_NEAR(2 * covered_area(map), std::numbers::pi * 64, 3);
}

TEST_P(AlphaCircle, IsSymmetricAboutAnyQuarterPixelCentre) {
    for (int round = 0; round < rounds(150); ++round) {
        Random random(round_seed(round));
        const int width = random.between(1, 90), height = random.between(1, 60);
        const OwnedBitmap map = make_bitmap(width, height, BMP_FMT_PWRW);
        const float radius = static_cast<float>(random.below(64 * 50)) / 64;
        circle(map, static_cast<float>(width) / 2, static_cast<float>(height) / 2, radius, 0, 1);
        expect_mirrored(map, true, true);
        ASSERT_FALSE(HasFatalFailure()) << width << " x " << height << " radius " << radius << how_to_repeat(random);
    }
}

// Each pixel on the edge is off by less than a row of samples, 4/16; over the whole edge, where the errors have both
// signs, the mean stays below a sample, 1/16.
TEST_P(AlphaCircle, HardOnesCoverTheirArea) {
    for (int round = 0; round < rounds(60); ++round) {
        Random random(round_seed(round));
        const OwnedBitmap map = make_bitmap(130, 130, BMP_FMT_PWRW);
        const double radius = 8 + random.below(52 * 64) / 64.0;
        circle(map, 65 + static_cast<float>(random.below(64)) / 64, 65 + static_cast<float>(random.below(64)) / 64,
               static_cast<float>(radius), 0);
        ASSERT_NEAR(covered_area(map), std::numbers::pi * radius * radius, 2 * std::numbers::pi * radius / 16)
            << how_to_repeat(random);
    }
}

// Either ramp is on the whole half full: the volume is that of a cone's frustum, pi (R^2 + R Ri + Ri^2) / 3 for the
// linear one.
TEST_P(AlphaCircle, SoftOnesCoverTheirVolume) {
    for (int round = 0; round < rounds(60); ++round) {
        Random random(round_seed(round));
        const OwnedBitmap map = make_bitmap(130, 130, BMP_FMT_PWRW);
        const double radius = 10 + random.below(50 * 64) / 64.0, feather = 2 + random.below(8 * 64) / 64.0,
                     inner = radius - feather;
        circle(map, 65.25, 64.5, static_cast<float>(radius), static_cast<float>(feather));
        const double want = std::numbers::pi * (radius * radius + radius * inner + inner * inner) / 3;
        ASSERT_NEAR(covered_area(map), want, 2 * std::numbers::pi * radius / 16)
            << radius << " " << feather << how_to_repeat(random);
    }
}

// From the centre outward no weight rises, on any line.
TEST_P(AlphaCircle, WeightsFallFromTheCentreOutward) {
    for (const uint32_t ramp : {0u, BMP_SHAPE_COSINE}) {
        for (const float feather : {0.0f, 3.0f, 12.5f, 40.0f}) {
            const OwnedBitmap map = make_bitmap(81, 81, BMP_FMT_PWRW);
            circle(map, 40.5, 40.5, 30, feather, 1, ramp);
            for (int y = 0; y < 81; ++y) {
                for (int x = 41; x < 81; ++x) {
                    ASSERT_LE(weights(map, y)[x], weights(map, y)[x - 1]) << x << " " << y;
                    ASSERT_LE(weights(map, y)[80 - x], weights(map, y)[81 - x]) << x << " " << y;
                }
            }
        }
    }
}

TEST_P(AlphaCircle, OddValuesStayInsideTheMap) {
    for (const float value : {std::nanf(""), HUGE_VALF, -HUGE_VALF, 1e30f, -1e30f, 1e-40f, 0.0f, -1.0f}) {
        const OwnedBitmap map = make_weights(33, 9, 777);
        for (const float feather : {0.0f, 5.0f, 1e-30f, 1e30f}) {
            circle(map, value, 4, 5, feather);
            circle(map, 16, value, 5, feather);
            circle(map, 16, 4, value, feather);
            circle(map, 16, 4, 5, value);
            circle(map, 16, 4, 5, feather, value);
        }
        for (int y = 0; y < 9; ++y) {
            for (const int weight : weights_of_line(map, y))
                EXPECT_LE(weight, 4096);
            for (int x = 33; x < map->pitch / 2; ++x)
                EXPECT_EQ(weights(map, y)[x], 777);
        }
    }
}

ZEPBMP_FOR_ALL_TABLES(AlphaRect);
ZEPBMP_FOR_ALL_TABLES(AlphaCircle);

}  // namespace
}  // namespace zepbmp::test
