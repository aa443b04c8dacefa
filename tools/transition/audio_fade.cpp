#include "audio_fade.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zepbmp::transition {

void fade_sound(float* out, const float* a, const float* b, int count, int64_t position, SoundFade fade) {
    for (int i = 0; i < count; ++i) {
        const int64_t at = position + i;
        if (at < fade.begin) {
            out[i] = a[i];
        } else if (at >= fade.end) {
            out[i] = b[i];
        } else {
            const double part =
                (static_cast<double>(at - fade.begin) + 0.5) / static_cast<double>(fade.end - fade.begin);
            const double angle = part * std::numbers::pi / 2;
            out[i] = static_cast<float>(std::clamp(a[i] * std::cos(angle) + b[i] * std::sin(angle), -1.0, 1.0));
        }
    }
}

}  // namespace zepbmp::transition
