#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "audio_fade.h"

namespace zepbmp::transition {
namespace {

TEST(FadeSound, LeavesBothSidesAsTheyAre) {
    const std::vector<float> a(100, 0.5f), b(100, -0.25f);
    std::vector<float> out(100);
    fade_sound(out.data(), a.data(), b.data(), 100, 1000, {1040, 1060});
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(out[i], 0.5f);
    for (int i = 60; i < 100; ++i)
        EXPECT_EQ(out[i], -0.25f);
}

TEST(FadeSound, KeepsThePower) {
    const int count = 64;
    const std::vector<float> one(count, 1.0f), none(count, 0.0f);
    std::vector<float> falling(count), rising(count);
    fade_sound(falling.data(), one.data(), none.data(), count, 0, {0, count});
    fade_sound(rising.data(), none.data(), one.data(), count, 0, {0, count});
    for (int i = 0; i < count; ++i) {
        EXPECT_NEAR(falling[i] * falling[i] + rising[i] * rising[i], 1, 1e-6);
        EXPECT_NEAR(falling[i], rising[count - 1 - i], 1e-6);
        EXPECT_LT(falling[i], i > 0 ? falling[i - 1] : 1.0f);
    }
}

TEST(FadeSound, HoldsTheSumToFullScale) {
    const std::vector<float> one(9, 1.0f);
    std::vector<float> out(9);
    fade_sound(out.data(), one.data(), one.data(), 9, 0, {0, 9});
    for (float sample : out)
        EXPECT_LE(sample, 1.0f);
}

TEST(FadeSound, IsTheSameInPiecesAndInPlace) {
    std::vector<float> a(90), b(90), whole(90);
    for (int i = 0; i < 90; ++i) {
        a[i] = static_cast<float>(std::sin(i * 0.3));
        b[i] = static_cast<float>(std::cos(i * 0.7));
    }
    const SoundFade fade{20, 70};
    fade_sound(whole.data(), a.data(), b.data(), 90, 0, fade);
    for (int begin = 0; begin < 90; begin += 7)
        fade_sound(a.data() + begin, a.data() + begin, b.data() + begin, std::min(7, 90 - begin), begin, fade);
    EXPECT_EQ(a, whole);
}

}  // namespace
}  // namespace zepbmp::transition
