#include "effects/stage.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/trigonometry.h"

namespace zepbmp::effects {

namespace {

// Where a flight begins. The angles and the sideways shift shrink in proportion to what is left of the way, the upward
// shift with its square: a curved path.
constexpr double kFlightYaw = -0.9;     // radians; the left side is turned away
constexpr double kFlightPitch = -0.4;   // radians; the upper side is turned away
constexpr double kFlightRight = -0.35;  // of the frame's shorter side, as is the next
constexpr double kFlightDown = -0.2;

// Of the frame's height. Nearer by, corners of very high frames would come behind the viewer.
constexpr double kLeastDistance = 0.25;

// Corners in the order of Quad, in halves of the picture's width and height.
constexpr struct {
    int x;
    int y;
} kCorners[] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};

}  // namespace

Stage::Stage(int width, int height, double line_height_px)
    : width_px_(width),
      height_px_(height * line_height_px),
      line_height_px_(line_height_px),
      distance_px_(std::max(width_px_, height_px_ * kLeastDistance)) {}

BmpVertex Stage::seen(const Point& point, double u, double v) const {
    const double w = distance_px_ / (distance_px_ + point.z);
    return {static_cast<float>(u), static_cast<float>(v), static_cast<float>(w),
            static_cast<float>(width_px_ / 2 + w * point.x),
            static_cast<float>((height_px_ / 2 + w * point.y) / line_height_px_)};
}

Quad Stage::flying(double progress, double margin) const {
    const double rest = 1 - progress;
    const double yaw = kFlightYaw * rest, pitch = kFlightPitch * rest;
    // At this z things are seen in `progress` times their size, and shifts as well; so the shifts are divided by it.
    const double shift = std::min(width_px_, height_px_) * rest / progress;
    const Point centre = {kFlightRight * shift, kFlightDown * shift * rest, distance_px_ * (1 / progress - 1)};
    Quad quad;
    for (size_t i = 0; i < quad.size(); ++i) {
        const double part_x = kCorners[i].x * (0.5 + margin), part_y = kCorners[i].y * (0.5 + margin);
        const double x = part_x * width_px_, y = part_y * height_px_;
        const double y_turned = y * cosine(pitch), z_turned = y * sine(pitch);
        const Point corner = {centre.x + x * cosine(yaw) - z_turned * sine(yaw), centre.y + y_turned,
                              centre.z + x * sine(yaw) + z_turned * cosine(yaw)};
        quad[i] = seen(corner, (part_x + 0.5) * width_px_, (part_y + 0.5) * height_px_ / line_height_px_);
    }
    return quad;
}

Quad Stage::cube_side(double turn, int side) const {
    const double angle = turn * std::numbers::pi / 2;
    const double half = width_px_ / 2;
    // The axis; the edge between the two sides then has z = 0.
    const double axis_z = half * (cosine(angle) + sine(angle));
    Quad quad;
    for (size_t i = 0; i < quad.size(); ++i) {
        // The sides as they stand at turn 0: the front from left to right, the right side from the front backward.
        const double x = side == 0 ? kCorners[i].x * half : half;
        const double z = side == 0 ? -half : kCorners[i].x * half;
        const Point corner = {x * cosine(angle) + z * sine(angle), kCorners[i].y * height_px_ / 2,
                              axis_z - x * sine(angle) + z * cosine(angle)};
        quad[i] = seen(corner, (kCorners[i].x + 1) * half, (kCorners[i].y + 1) * height_px_ / 2 / line_height_px_);
    }
    return quad;
}

double thickness(const Quad& quad) {
    double least = INFINITY;
    for (size_t i = 0; i < quad.size(); ++i) {
        const BmpVertex& from = quad[i];
        const BmpVertex& to = quad[(i + 1) % 4];
        const double dx = to.x - from.x, dy = to.y - from.y;
        for (size_t k : {(i + 2) % 4, (i + 3) % 4}) {
            const double area = dx * (quad[k].y - from.y) - dy * (quad[k].x - from.x);
            least = std::min(least, std::abs(area) / std::sqrt(dx * dx + dy * dy));
        }
    }
    return least;
}

}  // namespace zepbmp::effects
