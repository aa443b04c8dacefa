#include "effects/stage.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zepbmp::effects {
namespace {

constexpr struct {
    int width;
    int height;
    double line_height_px;
} kFrames[] = {{96, 64, 1}, {720, 576, 1.0667}, {64, 200, 1}, {1920, 1080, 1}, {352, 288, 0.5}};

void expect_whole_frame(const Quad& quad, int width, int height) {
    const float x[] = {0, 1, 1, 0}, y[] = {0, 0, 1, 1};
    for (size_t i = 0; i < quad.size(); ++i) {
        const BmpVertex& corner = quad[i];
        EXPECT_NEAR(corner.x, x[i] * static_cast<float>(width), 1e-3);
        EXPECT_NEAR(corner.y, y[i] * static_cast<float>(height), 1e-3);
        EXPECT_NEAR(corner.u, x[i] * static_cast<float>(width), 1e-3);
        EXPECT_NEAR(corner.v, y[i] * static_cast<float>(height), 1e-3);
        EXPECT_NEAR(corner.w, 1, 1e-6);
    }
}

/// The texture position that a quad shows at a point of the frame, from its first three corners: u*w, v*w and w are
/// linear there.
struct Sample {
    double u, v, w;
};
Sample sample_at(const Quad& quad, double x, double y) {
    const BmpVertex &p = quad[0], &q = quad[1], &r = quad[2];
    const double qx = q.x - p.x, qy = q.y - p.y, rx = r.x - p.x, ry = r.y - p.y;
    const double area = qx * ry - qy * rx;
    const double to_q = ((x - p.x) * ry - (y - p.y) * rx) / area;
    const double to_r = (qx * (y - p.y) - qy * (x - p.x)) / area;
    const auto linear = [&](double at_p, double at_q, double at_r) {
        return at_p + to_q * (at_q - at_p) + to_r * (at_r - at_p);
    };
    const double w = linear(p.w, q.w, r.w);
    return {linear(p.u * p.w, q.u * q.w, r.u * r.w) / w, linear(p.v * p.w, q.v * q.w, r.v * r.w) / w, w};
}

TEST(StageTest, FlightEndsAtTheFrame) {
    for (const auto& frame : kFrames)
        expect_whole_frame(Stage(frame.width, frame.height, frame.line_height_px).flying(1, 0), frame.width,
                           frame.height);
}

TEST(StageTest, FlightBeginsTinyAndTurnedAway) {
    for (const auto& frame : kFrames) {
        const Quad quad = Stage(frame.width, frame.height, frame.line_height_px).flying(1e-4, 0);
        const double width = quad[1].x - quad[0].x, height = (quad[3].y - quad[0].y) * frame.line_height_px;
        EXPECT_GT(width, 0);
        EXPECT_GT(height, 0);
        EXPECT_LT(width, 1e-4 * frame.width);
        EXPECT_LT(width / frame.width, 0.7 * height / (frame.height * frame.line_height_px));
        EXPECT_GT(quad[0].x, 0);
        EXPECT_GT(quad[0].y, 0);
    }
}

TEST(StageTest, FlyingPictureStaysBehindTheFrameAndNeverTurnsOver) {
    for (const auto& frame : kFrames) {
        const Stage stage(frame.width, frame.height, frame.line_height_px);
        for (int step = 1; step < 1000; ++step) {
            const Quad quad = stage.flying(step / 1000.0, 0);
            for (size_t i = 0; i < 4; ++i) {
                const BmpVertex &p = quad[i], &q = quad[(i + 1) % 4], &r = quad[(i + 2) % 4];
                EXPECT_GT((q.x - p.x) * (r.y - q.y) - (q.y - p.y) * (r.x - q.x), 0) << step << " corner " << i;
                EXPECT_GT(p.w, 0) << step;
            }
            EXPECT_GT(thickness(quad), 0);
        }
    }
}

// What a margin adds lies in the picture's plane: every point of the picture keeps its place.
TEST(StageTest, MarginMovesNothing) {
    for (const auto& frame : kFrames) {
        const Stage stage(frame.width, frame.height, frame.line_height_px);
        for (double progress : {0.05, 0.3, 0.7, 0.99}) {
            const Quad quad = stage.flying(progress, 0), wide = stage.flying(progress, 0.2);
            for (const BmpVertex& corner : quad) {
                const Sample sample = sample_at(wide, corner.x, corner.y);
                EXPECT_NEAR(sample.u, corner.u, 2e-3 * frame.width / progress);
                EXPECT_NEAR(sample.v, corner.v, 2e-3 * frame.height / progress);
                EXPECT_NEAR(sample.w, corner.w, 1e-4);
            }
            EXPECT_FLOAT_EQ(wide[0].u, -0.2f * static_cast<float>(frame.width));
            EXPECT_FLOAT_EQ(wide[2].v, 1.2f * static_cast<float>(frame.height));
        }
    }
}

TEST(StageTest, CubeShowsOneSideAtEachEnd) {
    for (const auto& frame : kFrames) {
        const Stage stage(frame.width, frame.height, frame.line_height_px);
        expect_whole_frame(stage.cube_front(0), frame.width, frame.height);
        expect_whole_frame(stage.cube_right(1), frame.width, frame.height);
    }
}

TEST(StageTest, CubeSidesShareTheirEdgeAndStayInTheFrame) {
    for (const auto& frame : kFrames) {
        const Stage stage(frame.width, frame.height, frame.line_height_px);
        for (int step = 0; step <= 100; ++step) {
            const Quad front = stage.cube_front(step / 100.0), right = stage.cube_right(step / 100.0);
            for (const auto& [of_front, of_right] : {std::pair(1, 0), std::pair(2, 3)}) {
                EXPECT_EQ(front[of_front].x, right[of_right].x);
                EXPECT_EQ(front[of_front].y, right[of_right].y);
                EXPECT_EQ(front[of_front].w, right[of_right].w);
                EXPECT_NEAR(front[of_front].w, 1, 1e-6);
            }
            EXPECT_NEAR(front[1].y, 0, 1e-3);
            EXPECT_NEAR(front[2].y, frame.height, 1e-3);
            for (const Quad& quad : {front, right})
                for (const BmpVertex& corner : quad) {
                    EXPECT_GE(corner.x, -1e-3);
                    EXPECT_LE(corner.x, static_cast<float>(frame.width) + 1e-3);
                    EXPECT_GE(corner.y, -1e-3);
                    EXPECT_LE(corner.y, static_cast<float>(frame.height) + 1e-3);
                }
        }
    }
}

TEST(StageTest, CubeTurnsAlikeBothWays) {
    const Stage stage(96, 64, 1);
    for (double turn : {0.1, 0.4, 0.5, 0.8}) {
        const Quad front = stage.cube_front(turn), right = stage.cube_right(1 - turn);
        constexpr size_t kMirrored[] = {1, 0, 3, 2};
        for (size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(front[i].x, 96 - right[kMirrored[i]].x, 1e-4);
            EXPECT_NEAR(front[i].y, right[kMirrored[i]].y, 1e-4);
            EXPECT_NEAR(front[i].w, right[kMirrored[i]].w, 1e-6);
        }
    }
}

TEST(StageTest, ThicknessIsTheShorterWayAcross) {
    const auto corner = [](float x, float y) { return BmpVertex{0, 0, 1, x, y}; };
    EXPECT_DOUBLE_EQ(thickness({corner(0, 0), corner(7, 0), corner(7, 3), corner(0, 3)}), 3);
    EXPECT_DOUBLE_EQ(thickness({corner(0, 0), corner(10, 0), corner(14, 3), corner(4, 3)}), 3);
    EXPECT_NEAR(thickness({corner(0, 0), corner(4, 4), corner(3, 5), corner(-1, 1)}), std::sqrt(2), 1e-12);
    EXPECT_DOUBLE_EQ(thickness({corner(0, 0), corner(8, 0), corner(8, 2), corner(0, 6)}), 16 / std::sqrt(80));
}

}  // namespace
}  // namespace zepbmp::effects
