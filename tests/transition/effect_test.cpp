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

constexpr EffectKind kKinds[] = {EffectKind::kCrossfade, EffectKind::kBox,   EffectKind::kCircle,
                                 EffectKind::kBand,      EffectKind::kShape, EffectKind::kFly,
                                 EffectKind::kCube,      EffectKind::kZoom,  EffectKind::kPush};
constexpr Direction kDirections[] = {Direction::kLeft, Direction::kRight, Direction::kUp, Direction::kDown};
constexpr char kArrow[] = "0 -4\n5 2\n2 1\n2 5\n-2 5\n-2 1\n-5 2\n";
constexpr Field kFields[] = {kWholeFrame, kTopField, kBottomField};
constexpr uint8_t kUntouched = 0xa5;

Bitmap noise(int width, int height, unsigned seed) {
    Bitmap bitmap(width, height, Format::yuy2);
    std::mt19937 random(seed);
    for (int i = 0; i < bitmap.pitch() * height; ++i)
        bitmap.record()->pixels[i] = static_cast<uint8_t>(random());
    return bitmap;
}

Bitmap flat(int width, int height, int luma, int chroma = 128) {
    Bitmap bitmap(width, height, Format::yuy2);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            bitmap.pointer(x, y)[0] = static_cast<uint8_t>(luma);
            bitmap.pointer(x, y)[1] = static_cast<uint8_t>(chroma);
        }
    return bitmap;
}

int luma(const Bitmap& bitmap, int x, int y) { return bitmap.pointer(x, y)[0]; }

bool selected(int y, Field field) { return field == kWholeFrame || (y & 1) == (field == kBottomField); }

Bitmap composed(const EffectSettings& settings, const Bitmap& a, const Bitmap& b, double progress,
                Field field = kWholeFrame) {
    Bitmap dest(a.width(), a.height(), Format::yuy2);
    std::memset(dest.record()->pixels, kUntouched, static_cast<size_t>(dest.pitch()) * dest.height());
    Effect effect(settings, a.width(), a.height());
    effect.compose(dest, a, b, progress, field);
    return dest;
}

bool same_line(const Bitmap& one, const Bitmap& other, int y) {
    return std::memcmp(one.pointer(0, y), other.pointer(0, y), one.width() * 2) == 0;
}

EffectSettings settings_of(EffectKind kind, double feather, Ease edge = Ease::kLinear, double line_height = 1) {
    return {kind, feather, edge, line_height, 0x808080, parse_outline(kArrow, "arrow")};
}

/// Every effect, in every direction that it has.
std::vector<EffectSettings> all_settings(double feather, Ease edge = Ease::kLinear, double line_height = 1) {
    std::vector<EffectSettings> all;
    for (EffectKind kind : kKinds)
        for (Direction direction : kDirections)
            if (kind == EffectKind::kPush || direction == Direction::kLeft) {
                all.push_back(settings_of(kind, feather, edge, line_height));
                all.back().direction = direction;
            }
    return all;
}

std::string name(const EffectSettings& s, double progress, Field field) {
    return "effect " + std::to_string(static_cast<int>(s.kind)) + " direction " +
           std::to_string(static_cast<int>(s.direction)) + " feather " + std::to_string(s.feather_px) + " progress " +
           std::to_string(progress) + " field " + std::to_string(static_cast<int>(field));
}

TEST(EffectTest, BeginsWithAAndEndsWithB) {
    const Bitmap a = noise(50, 37, 1), b = noise(50, 37, 2);
    for (double feather : {0.0, 1.0, 12.5, 200.0})
        for (const EffectSettings& settings : all_settings(feather))
            for (const Field field : kFields)
                for (double progress : {-0.5, 0.0, 1.0, 1.5}) {
                    const Bitmap result = composed(settings, a, b, progress, field);
                    for (int y = 0; y < a.height(); ++y)
                        ASSERT_TRUE(!selected(y, field) || same_line(result, progress <= 0 ? a : b, y))
                            << name(settings, progress, field) << " line " << y;
                }
}

// The last step before the end has to be B almost everywhere: nothing jumps when the transition is over.
TEST(EffectTest, ArrivesAtItsEndsWithoutAJump) {
    const Bitmap a = flat(64, 48, 16), b = flat(64, 48, 235);
    for (double feather : {0.0, 8.0, 40.0})
        for (const EffectSettings& settings : all_settings(feather))
            for (double progress : {0.0005, 0.9995}) {
                const Bitmap result = composed(settings, a, b, progress);
                int changed = 0;
                for (int y = 0; y < a.height(); ++y)
                    for (int x = 0; x < a.width(); ++x)
                        changed += std::abs(luma(result, x, y) - (progress < 0.5 ? 16 : 235)) > 8;
                EXPECT_LE(changed, 12) << name(settings, progress, kWholeFrame);
            }
}

TEST(EffectTest, TouchesOnlyTheLinesOfItsField) {
    const Bitmap a = noise(48, 33, 3), b = noise(48, 33, 4);
    for (double feather : {0.0, 9.0})
        for (const EffectSettings& settings : all_settings(feather, Ease::kCosine, 1.0667))
            for (double progress : {0.2, 0.5, 0.9}) {
                const Bitmap whole = composed(settings, a, b, progress);
                for (const Field field : {kTopField, kBottomField}) {
                    const Bitmap result = composed(settings, a, b, progress, field);
                    for (int y = 0; y < a.height(); ++y) {
                        if (selected(y, field)) {
                            ASSERT_TRUE(same_line(result, whole, y))
                                << name(settings, progress, field) << " line " << y;
                        } else {
                            for (int x = 0; x < a.width() * 2; ++x)
                                ASSERT_EQ(result.pointer(0, y)[x], kUntouched)
                                    << name(settings, progress, field) << " line " << y;
                        }
                    }
                }
            }
}

TEST(EffectTest, CrossfadeMixesEveryByteByOneLevel) {
    const Bitmap a = flat(32, 8, 16, 40), b = flat(32, 8, 235, 200);
    for (double progress : {0.25, 0.5, 0.75}) {
        const Bitmap result = composed(settings_of(EffectKind::kCrossfade, 0), a, b, progress);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 32; ++x) {
                EXPECT_NEAR(luma(result, x, y), 16 + progress * 219, 1);
                EXPECT_NEAR(result.pointer(x, y)[1], 40 + progress * 160, 1);
            }
    }
}

TEST(EffectTest, ShapesGrowFromTheCentre) {
    const int width = 96, height = 64;
    const Bitmap a = flat(width, height, 16), b = flat(width, height, 235);
    for (EffectKind kind : {EffectKind::kBox, EffectKind::kCircle})
        for (double feather : {0.0, 10.0}) {
            const EffectSettings settings = settings_of(kind, feather);
            double last_sum = 0;
            for (double progress : {0.1, 0.3, 0.5, 0.7, 0.9}) {
                const Bitmap result = composed(settings, a, b, progress);
                double sum = 0;
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x) {
                        sum += luma(result, x, y);
                        EXPECT_EQ(luma(result, x, y), luma(result, width - 1 - x, y))
                            << name(settings, progress, kWholeFrame);
                        EXPECT_EQ(luma(result, x, y), luma(result, x, height - 1 - y))
                            << name(settings, progress, kWholeFrame);
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
    const Bitmap a = flat(width, height, 0), b = flat(width, height, 200);
    for (double line_height : {1.0, 1.0667, 0.9}) {
        const Bitmap result = composed(settings_of(EffectKind::kBox, 0, Ease::kLinear, line_height), a, b, 0.5);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                EXPECT_NEAR(luma(result, x, y), x >= 25 && x < 75 && y >= 15 && y < 45 ? 200 : 0, 4);
    }
}

TEST(EffectTest, SoftBoxWeightIsTheSmallerRamp) {
    const int width = 80, height = 60;
    const double feather = 12.5, progress = 0.6;
    const Bitmap a = flat(width, height, 0), b = flat(width, height, 255);
    for (Ease edge : {Ease::kLinear, Ease::kCosine})
        for (double line_height : {1.0, 2.0}) {
            const Bitmap result = composed(settings_of(EffectKind::kBox, feather, edge, line_height), a, b, progress);
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
    const Bitmap a = flat(width, height, 0), b = flat(width, height, 200);
    for (double line_height : {0.8, 1.0, 1.5}) {
        const Bitmap result = composed(settings_of(EffectKind::kCircle, 4, Ease::kLinear, line_height), a, b, 0.3);
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
    const Bitmap a = flat(width, height, 16), b = flat(width, height, 235);
    EffectSettings settings = settings_of(EffectKind::kBand, 2);
    settings.color_yuv = 0x6030c0;
    const Bitmap result = composed(settings, a, b, 0.5);
    std::string order;
    for (int x = width / 2; x < width; ++x) {
        const char what = luma(result, x, height / 2) == 235 ? 'B' : luma(result, x, height / 2) == 16 ? 'A' : 'c';
        if (luma(result, x, height / 2) == 0x60) {
            const uint8_t* const pair = result.pointer(x & ~1, height / 2);
            EXPECT_EQ(pair[1], 0x30);
            EXPECT_EQ(pair[3], 0xc0);
        }
        if (order.empty() || order.back() != what)
            order += what;
    }
    EXPECT_EQ(order, "BcA");
}

struct PlanePoint {
    double x, y;
};

/// The part of a polygon on one side of a line: where nx*x + ny*y <= limit.
std::vector<PlanePoint> clipped(const std::vector<PlanePoint>& polygon, double nx, double ny, double limit) {
    std::vector<PlanePoint> result;
    for (size_t i = 0; i < polygon.size(); ++i) {
        const PlanePoint &p = polygon[i], &q = polygon[(i + 1) % polygon.size()];
        const double over_p = nx * p.x + ny * p.y - limit, over_q = nx * q.x + ny * q.y - limit;
        if (over_p <= 0)
            result.push_back(p);
        if ((over_p < 0 && over_q > 0) || (over_p > 0 && over_q < 0)) {
            const double t = over_p / (over_p - over_q);
            result.push_back({p.x + t * (q.x - p.x), p.y + t * (q.y - p.y)});
        }
    }
    return result;
}

double area(const std::vector<PlanePoint>& polygon) {
    double twice = 0;
    for (size_t i = 0; i < polygon.size(); ++i) {
        const PlanePoint &p = polygon[i], &q = polygon[(i + 1) % polygon.size()];
        twice += p.x * q.y - q.x * p.y;
    }
    return std::abs(twice) / 2;
}

/// The part of pixel (x, y) that a polygon covers, 0..1.
double covered(const std::vector<PlanePoint>& polygon, int x, int y) {
    return area(clipped(clipped(clipped(clipped(polygon, -1, 0, -x), 1, 0, x + 1), 0, -1, -y), 0, 1, y + 1));
}

/// How far the coverage that the library finds may be off, as a part of full. Lines on which a corner lies are sampled
/// three times; on the others it is the area to a few 4096ths.
double coverage_tolerance(const std::vector<PlanePoint>& polygon, int y) {
    for (const PlanePoint& corner : polygon)
        if (corner.y > y - 0.01 && corner.y < y + 1.01)
            return 0.25;
    return 0.01;
}

constexpr double kMixCut = 2;  // a mix cuts each of its two products down to a whole number

std::vector<PlanePoint> flight_outline(int width, int height, double line_height, double progress) {
    std::vector<PlanePoint> corners;
    for (const BmpVertex& corner : effects::Stage(width, height, line_height).flying(progress, 0))
        corners.push_back({corner.x, corner.y});
    return corners;
}

// Each pixel takes as much of B as the picture covers of it: edges are blended once, and with B's own colour.
TEST(EffectTest, FlyingPictureIsBlendedByItsCoverage) {
    const int width = 96, height = 64;
    const Bitmap a = flat(width, height, 20, 60), b = flat(width, height, 220, 180);
    for (double line_height : {1.0, 1.5})
        for (double progress : {0.002, 0.02, 0.1, 0.25, 0.4, 0.6, 0.8, 0.95, 0.99}) {
            const std::vector<PlanePoint> outline = flight_outline(width, height, line_height, progress);
            const Bitmap result =
                composed(settings_of(EffectKind::kFly, 0, Ease::kLinear, line_height), a, b, progress);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const double part = covered(outline, x, y);
                    const double chroma_part = covered(outline, x & ~1, y);
                    const double tolerance = coverage_tolerance(outline, y);
                    ASSERT_NEAR(luma(result, x, y), 20 + 200 * part, 200 * tolerance + kMixCut)
                        << x << " " << y << " at " << progress;
                    ASSERT_NEAR(result.pointer(x, y)[1], 60 + 120 * chroma_part, 120 * tolerance + kMixCut)
                        << x << " " << y << " at " << progress;
                }
        }
}

// What one frame leaves in the effect's bitmaps does not show in the next one.
TEST(EffectTest, RemembersNothing) {
    const int width = 96, height = 64;
    const Bitmap a = noise(width, height, 5), b = noise(width, height, 6), dark = flat(width, height, 16);
    for (const EffectSettings& settings : all_settings(4)) {
        Effect effect(settings, width, height);
        Bitmap dest(width, height, Format::yuy2);
        for (double progress : {0.9, 0.3, 0.6, 0.1}) {
            effect.compose(dest, dark, dark, 1 - progress, kWholeFrame);
            effect.compose(dest, a, b, progress, kWholeFrame);
            const Bitmap fresh = composed(settings, a, b, progress);
            for (int y = 0; y < height; ++y)
                ASSERT_TRUE(same_line(dest, fresh, y)) << name(settings, progress, kWholeFrame) << " line " << y;
        }
    }
}

// Just before the end B's pixels are where they belong, in frames as well as in fields.
TEST(EffectTest, MappedPicturesArriveInPlace) {
    const int width = 96, height = 64;
    const Bitmap a = flat(width, height, 16), b = noise(width, height, 7);
    Bitmap b_fields(width, height, Format::yuy2, kTwoFields);
    copy(b_fields, b);
    for (EffectKind kind : {EffectKind::kFly, EffectKind::kCube, EffectKind::kZoom, EffectKind::kPush})
        for (const Field field : kFields) {
            const Bitmap result =
                composed(settings_of(kind, 0), a, field == kWholeFrame ? b : b_fields, 0.99999, field);
            for (int y = 2; y < height - 2; ++y)
                for (int x = 2; x < width - 2; ++x)
                    if (selected(y, field)) {
                        ASSERT_NEAR(luma(result, x, y), luma(b, x, y), 6)
                            << x << " " << y << " field " << static_cast<int>(field);
                    }
        }
}

// Mixed, but by nothing else than A, B and the colour around the cube; in frames of a few pixels next to nothing is
// seen of a flight, and its edges may be darker.
TEST(EffectTest, HandlesSmallAndSlimFrames) {
    constexpr struct {
        int width;
        int height;
        int darkest;
    } kFrames[] = {{2, 1, 0}, {2, 2, 0}, {2, 40, 0}, {40, 1, 0}, {16, 16, 98}, {16, 40, 98}, {60, 16, 98}};
    for (const auto& frame : kFrames)
        for (const Scan fields : {Scan::progressive, kTwoFields}) {
            Bitmap a(frame.width, frame.height, Format::yuy2, fields);
            Bitmap b(frame.width, frame.height, Format::yuy2, fields);
            std::memset(a.record()->pixels, 100, static_cast<size_t>(a.pitch()) * a.height());
            std::memset(b.record()->pixels, 150, static_cast<size_t>(b.pitch()) * b.height());
            for (EffectSettings settings : all_settings(3, Ease::kLinear, 1.2))
                for (const Field field : kFields)
                    for (double progress : {1e-9, 0.01, 0.1, 0.3, 0.5, 0.7, 0.9, 1 - 1e-9}) {
                        settings.color_yuv = 0x707070;
                        const Bitmap result = composed(settings, a, b, progress, field);
                        const int darkest = settings.kind == EffectKind::kFly ? frame.darkest : 98;
                        for (int y = 0; y < frame.height; ++y)
                            for (int x = 0; x < 2 * frame.width; ++x) {
                                const int value = result.pointer(0, y)[x];
                                ASSERT_TRUE(selected(y, field) ? value >= darkest && value <= 150 : value == kUntouched)
                                    << name(settings, progress, field) << " " << frame.width << "x" << frame.height
                                    << ": " << value;
                            }
                    }
        }
}

TEST(EffectTest, MappingReadsOneFieldOfTwo) {
    const int width = 96, height = 64;
    const auto striped = [&](int top, int bottom) {
        Bitmap bitmap(width, height, Format::yuy2, kTwoFields);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                bitmap.pointer(x, y)[0] = static_cast<uint8_t>(y & 1 ? bottom : top);
                bitmap.pointer(x, y)[1] = 128;
            }
        return bitmap;
    };
    const Bitmap a = striped(40, 60), b = striped(100, 200);
    for (EffectKind kind : {EffectKind::kFly, EffectKind::kCube, EffectKind::kZoom, EffectKind::kPush})
        for (const Field field : {kTopField, kBottomField}) {
            const int luma_a = field == kTopField ? 40 : 60, luma_b = field == kTopField ? 100 : 200;
            EffectSettings settings = settings_of(kind, 0);
            settings.color_yuv = 0x108080;
            const Bitmap result = composed(settings, a, b, 0.6, field);
            int of_a = 0, of_b = 0, of_others = 0;
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width && selected(y, field); ++x) {
                    const int value = luma(result, x, y);
                    of_a += value == luma_a;
                    of_b += value == luma_b;
                    of_others += kind == EffectKind::kCube ? value != luma_a && value != luma_b && value != 16
                                                           : value < luma_a - kMixCut || value > luma_b;
                }
            EXPECT_GT(of_a, width * height / 10);
            EXPECT_GT(of_b, width * height / 10);
            EXPECT_EQ(of_others, 0);
        }
}

/// What a line of a cube shows from left to right: A, B or the colour around it.
std::string cube_line(const Bitmap& picture, int y) {
    std::string order;
    for (int x = 0; x < picture.width(); ++x) {
        const int value = luma(picture, x, y);
        const char what = value == 100 ? 'A' : value == 200 ? 'B' : value == 0x60 ? '.' : '?';
        if (order.empty() || order.back() != what)
            order += what;
    }
    return order;
}

TEST(EffectTest, CubeTurnsFromAToB) {
    const int width = 96, height = 64;
    const Bitmap a = flat(width, height, 100), b = flat(width, height, 200);
    EffectSettings settings = settings_of(EffectKind::kCube, 0);
    settings.color_yuv = 0x6030c0;
    const Bitmap half = composed(settings, a, b, 0.5);
    EXPECT_EQ(cube_line(half, height / 2), ".AB.");
    EXPECT_EQ(cube_line(half, 0), ".AB.");
    EXPECT_EQ(luma(half, width / 2 - 1, height / 2), 100);
    EXPECT_EQ(luma(half, width / 2, height / 2), 200);
    EXPECT_EQ(half.pointer(0, 0)[1], 0x30);
    EXPECT_EQ(half.pointer(1, 0)[1], 0xc0);
    for (int y = 0; y < height; ++y) {
        int unlike = 0;  // where a slanted edge meets a pixel's centre, the pixel belongs to one side of it
        for (int x = 0; x < width; ++x)
            unlike += luma(half, x, y) != luma(half, x, height - 1 - y);
        EXPECT_LE(unlike, 2) << y;
    }

    int last_b = 0;
    for (double progress : {0.3, 0.5, 0.7, 0.9}) {
        const Bitmap result = composed(settings, a, b, progress);
        int of_b = 0;
        for (int x = 0; x < width; ++x)
            of_b += luma(result, x, height / 2) == 200;
        EXPECT_GT(of_b, last_b) << progress;
        last_b = of_b;
    }
}

// Until it has turned far enough the right side is behind the front, though it is drawn later.
TEST(EffectTest, NearerSideHidesTheOther) {
    const int width = 96, height = 64;
    const Bitmap a = flat(width, height, 100), b = flat(width, height, 200);
    EffectSettings settings = settings_of(EffectKind::kCube, 0);
    settings.color_yuv = 0x608080;
    for (int y : {0, 7, height / 2, height - 1}) {
        EXPECT_EQ(cube_line(composed(settings, a, b, 0.1), y).find('B'), std::string::npos);
        EXPECT_EQ(cube_line(composed(settings, a, b, 0.9), y).find('A'), std::string::npos);
    }
    EXPECT_NE(cube_line(composed(settings, a, b, 0.1), height / 2).find('A'), std::string::npos);
}

TEST(EffectTest, ShapeIsBlendedByItsCoverage) {
    const int width = 96, height = 64;
    const Bitmap a = flat(width, height, 20), b = flat(width, height, 220);
    const std::string diamond = "0 -3\n2 0\n0 3\n-2 0\n";
    for (double line_height : {1.0, 1.5, 0.8})
        for (double progress : {0.05, 0.3, 0.6, 0.9}) {
            EffectSettings settings = settings_of(EffectKind::kShape, 0, Ease::kLinear, line_height);
            settings.outline = parse_outline(diamond, "diamond");
            const double scale = progress * covering_scale(settings.outline, width / 2.0, height * line_height / 2);
            std::vector<PlanePoint> outline;
            for (const OutlinePoint& point : settings.outline)
                outline.push_back({width / 2.0 + scale * point.x, height / 2.0 + scale * point.y / line_height});
            const Bitmap result = composed(settings, a, b, progress);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    ASSERT_NEAR(luma(result, x, y), 20 + 200 * covered(outline, x, y),
                                200 * coverage_tolerance(outline, y) + kMixCut)
                        << x << " " << y << " at " << progress;
        }
}

TEST(EffectTest, ShapeIsNotStretchedOnTheScreen) {
    const int width = 120, height = 120;
    const Bitmap a = flat(width, height, 0), b = flat(width, height, 200);
    for (double line_height : {0.8, 1.0, 1.5}) {
        EffectSettings settings = settings_of(EffectKind::kShape, 0, Ease::kLinear, line_height);
        settings.outline = parse_outline("0 0\n1 0\n1 1\n0 1", "square");
        const Bitmap result = composed(settings, a, b, 0.3);
        double across = 0, down = 0;
        for (int i = 0; i < width; ++i) {
            across += luma(result, i, height / 2) / 200.0;
            down += luma(result, width / 2, i) / 200.0 * line_height;
        }
        EXPECT_GT(across, 20);
        EXPECT_NEAR(across, down, 0.1) << line_height;
    }
}

/// In pixels and frame lines, right and bottom exclusive.
struct Area {
    double left, top, right, bottom;
};

Area zoomed_area(int width, int height, double progress) {
    return {width / 2.0 * (1 - progress), height / 2.0 * (1 - progress), width / 2.0 * (1 + progress),
            height / 2.0 * (1 + progress)};
}

struct Push {
    Area a, b;
};

Push pushed_areas(int width, int height, double progress, Direction direction) {
    const double w = width, h = height, x = width * progress, y = height * progress;
    switch (direction) {
        case Direction::kLeft: return {{0, 0, w - x, h}, {w - x, 0, w, h}};
        case Direction::kRight: return {{x, 0, w, h}, {0, 0, x, h}};
        case Direction::kUp: return {{0, 0, w, h - y}, {0, h - y, w, h}};
        case Direction::kDown: break;
    }
    return {{0, y, w, h}, {0, 0, w, y}};
}

double overlap(double from, double to, double other_from, double other_to) {
    return std::max(0.0, std::min(to, other_to) - std::max(from, other_from));
}

/// The part of pixel (x, y) that an area covers, 0..1.
double covered(const Area& area, int x, int y) {
    return overlap(area.left, area.right, x, x + 1) * overlap(area.top, area.bottom, y, y + 1);
}

/// Mean of count samples, each 1 wide, over from..to. The first one and the last one go on for ever.
template <class Sample>
double mean_over(double from, double to, int count, Sample sample) {
    double sum = 0;
    for (int i = static_cast<int>(std::floor(from)); i < to; ++i)
        sum += overlap(from, to, i, i + 1) * sample(std::clamp(i, 0, count - 1));
    return sum / (to - from);
}

/// Bytes of a pair of pixels: of each pixel's luma the first one is meant.
enum Component { kLuma = 0, kU = 1, kV = 3 };

int value_of(const Bitmap& picture, Component component, int x, int y) {
    return picture.pointer(component == kLuma ? x : x & ~1, y)[component];
}

/// What a picture that fills `area` shows within columns begin..end-1 of a line: the mean of what the area covers
/// there. Of a picture with two fields the one that `field` selects is shown.
double shown(const Bitmap& picture, const Area& area, Field field, Component component, int begin, int end, int y) {
    const double scale_x = (area.right - area.left) / picture.width();
    const double scale_y = (area.bottom - area.top) / picture.height();
    const double left = (std::max<double>(begin, area.left) - area.left) / scale_x;
    const double right = (std::min<double>(end, area.right) - area.left) / scale_x;
    double top = (std::max<double>(y, area.top) - area.top) / scale_y;
    double bottom = (std::min<double>(y + 1, area.bottom) - area.top) / scale_y;
    int first = 0, step = 1;
    if (field != kWholeFrame && picture.is_interlaced()) {
        first = field == kBottomField ? 1 : 0;
        step = 2;
        // Line n of the field and line 2n + first of the frame have one centre.
        top = (top - (first + 0.5)) / 2 + 0.5;
        bottom = (bottom - (first + 0.5)) / 2 + 0.5;
    }
    return mean_over(top, bottom, (picture.height() - first + step - 1) / step, [&](int row) {
        return mean_over(left, right, picture.width(),
                         [&](int column) { return value_of(picture, component, column, row * step + first); });
    });
}

// How much less than a pixel's mean the mapping leaves at edges, where it cuts to whole numbers: a pair's colour twice.
// Elsewhere it rounds to nearest.
constexpr double kMapCut = 2;
constexpr double kMapRounding = 0.501;

/// `a_area` is where all of A is seen; B is seen over it in `b_area`.
void expect_areas(const EffectSettings& settings, const Bitmap& a, const Area& a_area, const Bitmap& b,
                  const Area& b_area, double progress, Field field) {
    const Bitmap result = composed(settings, a, b, progress, field);
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width() && selected(y, field); ++x)
            for (Component component : {kLuma, kU, kV}) {
                const int begin = component == kLuma ? x : x & ~1, end = begin + (component == kLuma ? 1 : 2);
                const double part = covered(b_area, begin, y);
                double want = 0;
                if (part < 1)
                    want += (1 - part) * shown(a, a_area, field, component, begin, end, y);
                if (part > 0)
                    want += part * shown(b, b_area, field, component, begin, end, y);
                const int value = value_of(result, component, x, y);
                ASSERT_TRUE(value >= want - kMixCut - kMapCut && value <= want + kMapRounding)
                    << value << " for " << want << ": " << name(settings, progress, field) << " " << x << " " << y
                    << " component " << component;
            }
}

// Parts of the way at which a pixel's size on the frame is a whole number of the units that the mapping counts in.
constexpr int kExactSteps[] = {1, 2, 5, 16, 21, 32, 43, 48, 63};
constexpr double kExactStep = 1.0 / 64;

Bitmap with_two_fields(const Bitmap& picture) {
    Bitmap fields(picture.width(), picture.height(), Format::yuy2, kTwoFields);
    copy(fields, picture);
    return fields;
}

TEST(EffectTest, ZoomedPictureGrowsFromTheMiddle) {
    const int width = 96;
    for (int height : {64, 33}) {
        const Bitmap a = noise(width, height, 8), b = noise(width, height, 9);
        const Bitmap a_fields = with_two_fields(a), b_fields = with_two_fields(b);
        const EffectSettings settings = settings_of(EffectKind::kZoom, 0);
        for (int steps : kExactSteps)
            for (const Field field : kFields) {
                const double progress = steps * kExactStep;
                const Area whole = {0, 0, width * 1.0, height * 1.0}, area = zoomed_area(width, height, progress);
                expect_areas(settings, a, whole, b, area, progress, field);
                if (field != kWholeFrame)
                    expect_areas(settings, a_fields, whole, b_fields, area, progress, field);
            }
    }
}

TEST(EffectTest, PushSqueezesAOutAndStretchesB) {
    const int width = 96;
    for (int height : {64, 33}) {
        const Bitmap a = noise(width, height, 10), b = noise(width, height, 11);
        const Bitmap a_fields = with_two_fields(a), b_fields = with_two_fields(b);
        EffectSettings settings = settings_of(EffectKind::kPush, 0);
        for (Direction direction : kDirections)
            for (int steps : kExactSteps)
                for (const Field field : kFields) {
                    settings.direction = direction;
                    const double progress = steps * kExactStep;
                    const Push areas = pushed_areas(width, height, progress, direction);
                    expect_areas(settings, a, areas.a, b, areas.b, progress, field);
                    if (field != kWholeFrame)
                        expect_areas(settings, a_fields, areas.a, b_fields, areas.b, progress, field);
                }
    }
}

// Wherever an edge lies, a pixel takes as much of B as B's area covers of it, and the rest from A.
TEST(EffectTest, ZoomAndPushAreBlendedByTheirCoverage) {
    const int width = 50, height = 37;
    constexpr double kUnit = 1.0 / 2048;  // of a pixel or a line, to which edges are cut
    for (const Scan fields : {Scan::progressive, kTwoFields}) {
        Bitmap a = flat(width, height, 20, 60), b = flat(width, height, 220, 180);
        if (fields == kTwoFields) {
            a = with_two_fields(a);
            b = with_two_fields(b);
        }
        for (const Field field : kFields)
            for (double progress : {0.0003, 0.0123, 0.1, 1.0 / 3, 0.4567, 0.5, 0.77, 0.999}) {
                const auto expect_blended = [&](const EffectSettings& settings, const Area& area) {
                    const Bitmap result = composed(settings, a, b, progress, field);
                    for (int y = 0; y < height; ++y)
                        for (int x = 0; x < width && selected(y, field); ++x) {
                            ASSERT_NEAR(luma(result, x, y), 20 + 200 * covered(area, x, y), kMixCut + 200 * 3 * kUnit)
                                << name(settings, progress, field) << " " << x << " " << y;
                            ASSERT_NEAR(value_of(result, kU, x, y), 60 + 120 * covered(area, x & ~1, y),
                                        kMixCut + 120 * 3 * kUnit)
                                << name(settings, progress, field) << " " << x << " " << y;
                        }
                };
                expect_blended(settings_of(EffectKind::kZoom, 0), zoomed_area(width, height, progress));
                EffectSettings push = settings_of(EffectKind::kPush, 0);
                for (Direction direction : kDirections) {
                    push.direction = direction;
                    expect_blended(push, pushed_areas(width, height, progress, direction).b);
                }
            }
    }
}

// At half the size each pixel is the mean of four, rounded to nearest.
TEST(EffectTest, ZoomReducesByExactMeans) {
    const int width = 96, height = 64;
    const Bitmap a = noise(width, height, 12), b = noise(width, height, 13);
    const Bitmap result = composed(settings_of(EffectKind::kZoom, 0), a, b, 0.5);
    for (int y = 0; y < height / 2; ++y)
        for (int x = 2; x < width / 2; ++x) {  // the first pixel of a line is cut, and the colour of its pair
            const int sum = luma(b, 2 * x, 2 * y) + luma(b, 2 * x + 1, 2 * y) + luma(b, 2 * x, 2 * y + 1) +
                            luma(b, 2 * x + 1, 2 * y + 1);
            ASSERT_EQ(luma(result, width / 4 + x, height / 4 + y), (sum + 2) / 4) << x << " " << y;
        }
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
