#include "effect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace zepbmp::transition {
namespace {

constexpr EffectKind kKinds[] = {EffectKind::kCrossfade, EffectKind::kBox, EffectKind::kCircle, EffectKind::kBand};
constexpr unsigned kFields[] = {kWholeFrame, kTopField, kBottomField};
constexpr uint8_t kUntouched = 0xa5;

BitmapPtr noise(int width, int height, unsigned seed) {
    BitmapPtr bitmap = make_bitmap(width, height, BMP_FMT_YUY2);
    std::mt19937 random(seed);
    for (int i = 0; i < bitmap->pitch * height; ++i)
        bitmap->pixels[i] = static_cast<uint8_t>(random());
    return bitmap;
}

BitmapPtr flat(int width, int height, int luma, int chroma = 128) {
    BitmapPtr bitmap = make_bitmap(width, height, BMP_FMT_YUY2);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            bmp_pointer(bitmap.get(), x, y)[0] = static_cast<uint8_t>(luma);
            bmp_pointer(bitmap.get(), x, y)[1] = static_cast<uint8_t>(chroma);
        }
    return bitmap;
}

int luma(const BitmapPtr& bitmap, int x, int y) { return bmp_pointer(bitmap.get(), x, y)[0]; }

bool selected(int y, unsigned field) {
    return field == kWholeFrame || (y & 1) == static_cast<int>(field & BMP_FIELD_ODD);
}

BitmapPtr composed(const EffectSettings& settings, const BitmapPtr& a, const BitmapPtr& b, double progress,
                   unsigned field = kWholeFrame) {
    BitmapPtr dest = make_bitmap(a->width, a->height, BMP_FMT_YUY2);
    std::memset(dest->pixels, kUntouched, static_cast<size_t>(dest->pitch) * dest->height);
    Effect effect(settings, a->width, a->height);
    effect.compose(dest.get(), a.get(), b.get(), progress, field);
    return dest;
}

bool same_line(const BitmapPtr& one, const BitmapPtr& other, int y) {
    return std::memcmp(bmp_pointer(one.get(), 0, y), bmp_pointer(other.get(), 0, y), one->width * 2) == 0;
}

EffectSettings settings_of(EffectKind kind, double feather, Ease edge = Ease::kLinear, double line_height = 1) {
    return {kind, feather, edge, line_height, 0x808080};
}

std::string name(const EffectSettings& s, double progress, unsigned field) {
    return "effect " + std::to_string(static_cast<int>(s.kind)) + " feather " + std::to_string(s.feather_px) +
           " progress " + std::to_string(progress) + " field " + std::to_string(field);
}

TEST(EffectTest, BeginsWithAAndEndsWithB) {
    const BitmapPtr a = noise(50, 37, 1), b = noise(50, 37, 2);
    for (EffectKind kind : kKinds)
        for (double feather : {0.0, 1.0, 12.5, 200.0})
            for (unsigned field : kFields)
                for (double progress : {-0.5, 0.0, 1.0, 1.5}) {
                    const EffectSettings settings = settings_of(kind, feather);
                    const BitmapPtr result = composed(settings, a, b, progress, field);
                    for (int y = 0; y < a->height; ++y)
                        ASSERT_TRUE(!selected(y, field) || same_line(result, progress <= 0 ? a : b, y))
                            << name(settings, progress, field) << " line " << y;
                }
}

// The last step before the end has to be B almost everywhere: nothing jumps when the transition is over.
TEST(EffectTest, ArrivesAtItsEndsWithoutAJump) {
    const BitmapPtr a = flat(64, 48, 16), b = flat(64, 48, 235);
    for (EffectKind kind : kKinds)
        for (double feather : {0.0, 8.0, 40.0}) {
            const EffectSettings settings = settings_of(kind, feather);
            for (double progress : {0.0005, 0.9995}) {
                const BitmapPtr result = composed(settings, a, b, progress);
                int changed = 0;
                for (int y = 0; y < a->height; ++y)
                    for (int x = 0; x < a->width; ++x)
                        changed += std::abs(luma(result, x, y) - (progress < 0.5 ? 16 : 235)) > 8;
                EXPECT_LE(changed, 12) << name(settings, progress, kWholeFrame);
            }
        }
}

TEST(EffectTest, TouchesOnlyTheLinesOfItsField) {
    const BitmapPtr a = noise(48, 33, 3), b = noise(48, 33, 4);
    for (EffectKind kind : kKinds)
        for (double feather : {0.0, 9.0})
            for (double progress : {0.2, 0.5, 0.9}) {
                const EffectSettings settings = settings_of(kind, feather, Ease::kCosine, 1.0667);
                const BitmapPtr whole = composed(settings, a, b, progress);
                for (unsigned field : {kTopField, kBottomField}) {
                    const BitmapPtr result = composed(settings, a, b, progress, field);
                    for (int y = 0; y < a->height; ++y) {
                        if (selected(y, field)) {
                            ASSERT_TRUE(same_line(result, whole, y))
                                << name(settings, progress, field) << " line " << y;
                        } else {
                            for (int x = 0; x < a->width * 2; ++x)
                                ASSERT_EQ(bmp_pointer(result.get(), 0, y)[x], kUntouched)
                                    << name(settings, progress, field) << " line " << y;
                        }
                    }
                }
            }
}

TEST(EffectTest, CrossfadeMixesEveryByteByOneLevel) {
    const BitmapPtr a = flat(32, 8, 16, 40), b = flat(32, 8, 235, 200);
    for (double progress : {0.25, 0.5, 0.75}) {
        const BitmapPtr result = composed(settings_of(EffectKind::kCrossfade, 0), a, b, progress);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 32; ++x) {
                EXPECT_NEAR(luma(result, x, y), 16 + progress * 219, 1);
                EXPECT_NEAR(bmp_pointer(result.get(), x, y)[1], 40 + progress * 160, 1);
            }
    }
}

TEST(EffectTest, ShapesGrowFromTheCentre) {
    const int width = 96, height = 64;
    const BitmapPtr a = flat(width, height, 16), b = flat(width, height, 235);
    for (EffectKind kind : {EffectKind::kBox, EffectKind::kCircle})
        for (double feather : {0.0, 10.0}) {
            const EffectSettings settings = settings_of(kind, feather);
            double last_sum = 0;
            for (double progress : {0.1, 0.3, 0.5, 0.7, 0.9}) {
                const BitmapPtr result = composed(settings, a, b, progress);
                double sum = 0;
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x) {
                        sum += luma(result, x, y);
                        EXPECT_EQ(luma(result, x, y), luma(result, width - 1 - x, y)) << name(settings, progress, 0);
                        EXPECT_EQ(luma(result, x, y), luma(result, x, height - 1 - y)) << name(settings, progress, 0);
                    }
                EXPECT_GT(sum, last_sum);
                last_sum = sum;
                if (progress == 0.5) {
                    EXPECT_EQ(luma(result, width / 2, height / 2), 235);
                    EXPECT_EQ(luma(result, 0, 0), 16);
                }
            }
        }
}

TEST(EffectTest, HardBoxCoversItsShareOfTheFrame) {
    const int width = 100, height = 60;
    const BitmapPtr a = flat(width, height, 0), b = flat(width, height, 200);
    for (double line_height : {1.0, 1.0667, 0.9}) {
        const BitmapPtr result = composed(settings_of(EffectKind::kBox, 0, Ease::kLinear, line_height), a, b, 0.5);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                EXPECT_NEAR(luma(result, x, y), x >= 25 && x < 75 && y >= 15 && y < 45 ? 200 : 0, 4);
    }
}

TEST(EffectTest, SoftBoxWeightIsTheSmallerRamp) {
    const int width = 80, height = 60;
    const double feather = 12.5, progress = 0.6;
    const BitmapPtr a = flat(width, height, 0), b = flat(width, height, 255);
    for (Ease edge : {Ease::kLinear, Ease::kCosine})
        for (double line_height : {1.0, 2.0}) {
            const BitmapPtr result =
                composed(settings_of(EffectKind::kBox, feather, edge, line_height), a, b, progress);
            const double half_width = progress * (width / 2.0 + feather);
            const double half_height = progress * (height / 2.0 * line_height + feather);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const double inside_x = half_width - std::abs(x + 0.5 - width / 2.0);
                    const double inside_y = half_height - std::abs(y + 0.5 - height / 2.0) * line_height;
                    const double part = eased(edge, std::clamp(std::min(inside_x, inside_y) / feather, 0.0, 1.0));
                    ASSERT_NEAR(luma(result, x, y), 255 * part, 255.0 / 64 / 2 + 1.5) << x << " " << y;
                }
        }
}

TEST(EffectTest, CircleIsRoundOnTheScreen) {
    const int width = 120, height = 120;
    const BitmapPtr a = flat(width, height, 0), b = flat(width, height, 200);
    for (double line_height : {0.8, 1.0, 1.5}) {
        const BitmapPtr result = composed(settings_of(EffectKind::kCircle, 4, Ease::kLinear, line_height), a, b, 0.3);
        double across = 0, down = 0;
        for (int i = 0; i < width; ++i) {
            across += luma(result, i, height / 2) / 200.0;
            down += luma(result, width / 2, i) / 200.0 * line_height;
        }
        EXPECT_GT(across, 20);
        EXPECT_NEAR(across, down, 2 * line_height) << line_height;
    }
}

TEST(EffectTest, BandRunsBetweenBAndA) {
    const int width = 128, height = 96;
    const BitmapPtr a = flat(width, height, 16), b = flat(width, height, 235);
    EffectSettings settings = settings_of(EffectKind::kBand, 2);
    settings.band_color_yuv = 0x6030c0;
    const BitmapPtr result = composed(settings, a, b, 0.5);
    std::string order;
    for (int x = width / 2; x < width; ++x) {
        const char what = luma(result, x, height / 2) == 235 ? 'B' : luma(result, x, height / 2) == 16 ? 'A' : 'c';
        if (luma(result, x, height / 2) == 0x60) {
            const uint8_t* const pair = bmp_pointer(result.get(), x & ~1, height / 2);
            EXPECT_EQ(pair[1], 0x30);
            EXPECT_EQ(pair[3], 0xc0);
        }
        if (order.empty() || order.back() != what)
            order += what;
    }
    EXPECT_EQ(order, "BcA");
}

TEST(YuvFromRgb, KnownColours) {
    EXPECT_EQ(yuv_from_rgb(0x000000, 0.299, 0.114), 0x108080u);
    EXPECT_EQ(yuv_from_rgb(0xffffff, 0.299, 0.114), 0xeb8080u);
    EXPECT_EQ(yuv_from_rgb(0xff0000, 0.299, 0.114), 0x515af0u);    // 81 90 240
    EXPECT_EQ(yuv_from_rgb(0x0000ff, 0.299, 0.114), 0x29f06eu);    // 41 240 110
    EXPECT_EQ(yuv_from_rgb(0xff0000, 0.2126, 0.0722), 0x3f66f0u);  // 63 102 240
}

}  // namespace
}  // namespace zepbmp::transition
