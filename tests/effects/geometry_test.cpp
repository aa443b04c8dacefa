#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "effects/feather.h"
#include "effects/pinned_quad.h"
#include "effects/reach.h"
#include "effects/trigonometry.h"

namespace zepbmp::effects {
namespace {

TEST(TrigonometryTest, IsExactToFourUnits) {
    constexpr int kSteps = 100'000;                                   // in a quarter turn
    constexpr double kUnit = std::numeric_limits<double>::epsilon();  // the last place of 1
    for (int i = -kSteps; i <= kSteps; ++i) {
        const double angle = std::numbers::pi / 2 * i / kSteps;
        const long double exact = std::sin(static_cast<long double>(angle));
        ASSERT_LE(std::abs(sine(angle) - exact), 4 * kUnit * std::abs(exact)) << angle;
        ASSERT_LE(std::abs(cosine(angle) - std::cos(static_cast<long double>(angle))), 4 * kUnit) << angle;
    }
    EXPECT_EQ(sine(0), 0);
    EXPECT_EQ(cosine(0), 1);
}

/// The distances' inverses, of a picture of 64 x 48 pixels whose other values stand in their places.
std::array<float, 4> nearness_of(const std::array<PixelPoint, 4>& corners) {
    const Quad quad = pinned(corners, 64, 48);
    const float u[] = {0, 64, 64, 0}, v[] = {0, 0, 48, 48};
    for (size_t i = 0; i < quad.size(); ++i) {
        EXPECT_EQ(quad[i].u, u[i]);
        EXPECT_EQ(quad[i].v, v[i]);
        EXPECT_EQ(quad[i].x, static_cast<float>(corners[i].x));
        EXPECT_EQ(quad[i].y, static_cast<float>(corners[i].y));
    }
    return {quad[0].w, quad[1].w, quad[2].w, quad[3].w};
}

using Nearness = std::array<float, 4>;
constexpr Nearness kFlat = {1, 1, 1, 1};

TEST(PinnedQuadTest, ParallelogramsAreFlat) {
    EXPECT_EQ(nearness_of({{{0, 0}, {64, 0}, {64, 48}, {0, 48}}}), kFlat);
    EXPECT_EQ(nearness_of({{{64, 0}, {0, 0}, {0, 48}, {64, 48}}}), kFlat) << "mirrored";
    EXPECT_EQ(nearness_of({{{3, 5}, {40, 9}, {50, 29}, {13, 25}}}), kFlat);
}

TEST(PinnedQuadTest, SeesAPerspective) {
    // Twice as wide below as above: twice as near.
    EXPECT_EQ(nearness_of({{{16, 0}, {48, 0}, {64, 64}, {0, 64}}}), (Nearness{1, 1, 2, 2}));
    EXPECT_EQ(nearness_of({{{48, 0}, {16, 0}, {0, 64}, {64, 64}}}), (Nearness{1, 1, 2, 2})) << "mirrored";
    // The points (0, 0, 1), (24, 0, 2), (24, 24, 4) and (0, 24, 3) of a plane, divided by their distance, the third.
    EXPECT_EQ(nearness_of({{{0, 0}, {12, 0}, {6, 6}, {0, 8}}}), (Nearness{1, 1 / 2.0f, 1 / 4.0f, 1 / 3.0f}));
}

TEST(PinnedQuadTest, WhatIsNotConvexIsFlat) {
    EXPECT_EQ(nearness_of({{{0, 0}, {64, 0}, {0, 48}, {64, 48}}}), kFlat) << "crossing";
    EXPECT_EQ(nearness_of({{{0, 0}, {64, 0}, {9, 9}, {0, 48}}}), kFlat) << "dented";
    EXPECT_EQ(nearness_of({{{0, 0}, {64, 0}, {32, 24}, {0, 48}}}), kFlat) << "three on a line";
    EXPECT_EQ(nearness_of({{{7, 7}, {7, 7}, {7, 7}, {7, 7}}}), kFlat) << "a point";
}

TEST(ReachTest, GoesToTheFartherSides) {
    const Reach middle(32, 24, 64, 48);
    EXPECT_EQ(middle.x, 32);
    EXPECT_EQ(middle.y, 24);
    EXPECT_EQ(middle.corner(), 40);
    const Reach outside(-20, 13, 64, 48);
    EXPECT_EQ(outside.x, 84);
    EXPECT_EQ(outside.y, 35);
    EXPECT_EQ(outside.corner(), 91);
    EXPECT_EQ(Reach(64, 60, 64, 48).y, 60);
}

TEST(ReachTest, AnArcCutsOffItsPartOfTheDiagonal) {
    EXPECT_EQ(cut_by_arc(0), 0);
    EXPECT_NEAR(cut_by_arc(10), 2.928932188134525, 1e-14);
}

TEST(FeatherTest, BelowAPixelTheEdgeIsHard) {
    EXPECT_EQ(drawn_feather(0), 0);
    EXPECT_EQ(drawn_feather(std::nextafter(1, 0)), 0);
    EXPECT_EQ(drawn_feather(1), 1);
    EXPECT_EQ(drawn_feather(17.5), 17.5);
}

}  // namespace
}  // namespace zepbmp::effects
