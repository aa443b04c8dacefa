/// \file
/// How wide a soft edge is drawn. Pixels.
#pragma once

namespace zepbmp::effects {

/// A soft edge's weights are sampled at a few points of a pixel: a ramp narrower than this would be a jagged edge.
constexpr double kLeastFeather = 1;

/// What is narrower is drawn as a hard edge, 0, which is anti-aliased.
constexpr double drawn_feather(double feather) { return feather < kLeastFeather ? 0 : feather; }

}  // namespace zepbmp::effects
