#pragma once

#include <cstdint>

namespace zepbmp::transition {

/// Sample positions between which the sound goes over from A to B.
struct SoundFade {
    int64_t begin = 0;
    int64_t end = 0;
};

/// Mixes `count` samples of one channel, the first of which is sample `position` of the output, with equal power:
/// A's gain falls along a cosine, B's rises along a sine, so that two unlike sounds stay equally loud in between.
/// Before the fade the result is a's samples, behind it b's. The sum is held to -1..1. `out` may be a or b.
void fade_sound(float* out, const float* a, const float* b, int count, int64_t position, SoundFade fade);

}  // namespace zepbmp::transition
