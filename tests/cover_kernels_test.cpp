/// \file
/// The coverage kernels: every set against formulas written out here, and the plain one against values worked out by
/// hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

#include "core/float_scope.h"
#include "mapping/polygon/cover_kernels.h"
#include "support/cpu_state.h"
#include "support/kernel_planes.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

constexpr int kFull = 4096;

/// d + (s - d) * weight / 4096, toward minus infinity.
int mixed(int64_t d, int64_t s, int64_t weight) {
    return static_cast<int>((d * (kFull - weight) + s * weight) / kFull);
}

int scaled(int coverage, int level) { return coverage * level / kFull; }

uint16_t word_at(const uint8_t* p, int i) {
    uint16_t word;
    std::memcpy(&word, p + 2 * i, sizeof word);
    return word;
}

/// Ordinary coverages and runs of those at which something turns.
void fill_coverages(Random& random, std::span<uint8_t> bytes) {
    size_t i = 0;
    while (i + 1 < bytes.size()) {
        const auto end = std::min(bytes.size() - 1, i + 2 * static_cast<size_t>(random.between(1, 12)));
        const bool noise = random.chance(60);
        const int same = random.pick({0, 1, 2047, 2048, 4095, 4096});
        for (; i < end; i += 2) {
            const int coverage = noise ? random.between(0, kFull) : same;
            bytes[i] = static_cast<uint8_t>(coverage);
            bytes[i + 1] = static_cast<uint8_t>(coverage >> 8);
        }
    }
}

/// The layout of pixels in memory.
enum class Pixels { kRgbq, kYuy2, kPwrw, kA8 };

/// Bytes of a line, whole pairs of YUY2.
int line_bytes(Pixels layout, int pixels) {
    switch (layout) {
        case Pixels::kRgbq: return 4 * pixels;
        case Pixels::kYuy2: return 2 * (pixels + pixels % 2);
        case Pixels::kPwrw: return 2 * pixels;
        default: return pixels;
    }
}

/// d is blended with s of the same length.
void model_line(Pixels layout, uint8_t* d, const uint8_t* s, const uint8_t* coverages, int pixels, int level) {
    const auto mix_byte = [&](int i, int coverage) {
        d[i] = static_cast<uint8_t>(mixed(d[i], s[i], scaled(coverage, level)));
    };
    for (int x = 0; x < pixels; ++x) {
        const int coverage = word_at(coverages, x);
        switch (layout) {
            case Pixels::kRgbq:
                for (int i = 0; i < 4; ++i)
                    mix_byte(4 * x + i, coverage);
                break;
            case Pixels::kYuy2: mix_byte(2 * x, coverage); break;
            case Pixels::kPwrw: {
                const int word = mixed(word_at(d, x), word_at(s, x), scaled(coverage, level));
                d[2 * x] = static_cast<uint8_t>(word);
                d[2 * x + 1] = static_cast<uint8_t>(word >> 8);
                break;
            }
            case Pixels::kA8: mix_byte(x, coverage); break;
        }
    }
    if (layout != Pixels::kYuy2)
        return;
    for (int x = 0; x < pixels; x += 2) {
        const int first = word_at(coverages, x), second = x + 1 < pixels ? word_at(coverages, x + 1) : first;
        mix_byte(2 * x + 1, (first + second) / 2);
        mix_byte(2 * x + 3, (first + second) / 2);
    }
}

class CoverKernelsTest : public WithTables {
protected:
    void lay_out(Random& random, KernelPlane& plane, int bytes, int unit) {
        plane.lay_out(static_cast<size_t>(bytes), 1, 0, random.chance(60),
                      random.chance(40) ? kFlush : unit * random.between(0, 15 / unit));
    }

    /// Every count up to several registers, and a few large ones.
    template <class Check>
    void for_many_counts(Check check) {
        const UseTables use(GetParam());
        constexpr int kSmall = 150;
        int call = 0;
        for (int round = 0; round < rounds(12); ++round) {
            for (int count = 0; count <= kSmall; ++count) {
                Random random(round_seed(call++));
                check(random, count < kSmall ? count : random.between(kSmall, 4000));
                if (HasFatalFailure())
                    return;
            }
        }
    }

    static int any_level(Random& random) {
        return random.chance(40) ? random.pick({0, 1, 2048, 4095, 4096}) : random.between(0, kFull);
    }

    void check_blend(CoverKernels::Blend* CoverKernels::*kernel, Pixels layout) {
        for_many_counts([&](Random& random, int pixels) {
            const int bytes = line_bytes(layout, pixels);
            lay_out(random, dst_, bytes, 1);
            lay_out(random, src_, bytes, 1);
            lay_out(random, coverage_, 2 * pixels, 2);
            dst_.fill(random, fill_pixels);
            src_.fill(random, fill_pixels);
            coverage_.fill(random, fill_coverages);
            call_checked(cover_kernels.*kernel, dst_.first(), src_.first(),
                         reinterpret_cast<const uint16_t*>(coverage_.first()), pixels);
            std::vector<uint8_t> want = dst_.before();
            model_line(layout, dst_.line_in(want, 0), src_.line_before(0), coverage_.line_before(0), pixels, kFull);
            ASSERT_EQ(dst_.difference(want), "") << pixels << " pixels" << how_to_repeat(random);
            ASSERT_EQ(src_.difference(src_.before()), "") << pixels << " pixels" << how_to_repeat(random);
            ASSERT_EQ(coverage_.difference(coverage_.before()), "") << pixels << " pixels" << how_to_repeat(random);
        });
    }

    void check_paint(CoverKernels::Paint* CoverKernels::*kernel, Pixels layout, int value_bytes) {
        for_many_counts([&](Random& random, int pixels) {
            const int bytes = line_bytes(layout, pixels), level = any_level(random);
            lay_out(random, dst_, bytes, 1);
            lay_out(random, coverage_, 2 * pixels, 2);
            dst_.fill(random, fill_pixels);
            coverage_.fill(random, fill_coverages);
            const auto value = static_cast<uint32_t>(random.next());
            const std::vector<uint8_t> source = repeated(value, value_bytes, bytes);
            call_checked(cover_kernels.*kernel, dst_.first(), value,
                         reinterpret_cast<const uint16_t*>(coverage_.first()), pixels, level);
            std::vector<uint8_t> want = dst_.before();
            model_line(layout, dst_.line_in(want, 0), source.data(), coverage_.line_before(0), pixels, level);
            ASSERT_EQ(dst_.difference(want), "") << pixels << " pixels, level " << level << how_to_repeat(random);
            ASSERT_EQ(coverage_.difference(coverage_.before()), "") << pixels << " pixels" << how_to_repeat(random);
        });
    }

    void check_fade(void (*CoverKernels::*kernel)(uint8_t*, uint32_t, int32_t, int32_t), Pixels layout,
                    int value_bytes) {
        for_many_counts([&](Random& random, int count) {
            const int bytes = line_bytes(layout, count), level = std::min(any_level(random), kFull - 1);
            lay_out(random, dst_, bytes, 1);
            dst_.fill(random, fill_pixels);
            const auto value = static_cast<uint32_t>(random.next());
            const std::vector<uint8_t> source = repeated(value, value_bytes, bytes);
            const std::vector<uint16_t> coverages(static_cast<size_t>(count), kFull);
            call_checked(cover_kernels.*kernel, dst_.first(), value, count, level);
            std::vector<uint8_t> want = dst_.before();
            model_line(layout, dst_.line_in(want, 0), source.data(), reinterpret_cast<const uint8_t*>(coverages.data()),
                       count, level);
            ASSERT_EQ(dst_.difference(want), "") << count << " at level " << level << how_to_repeat(random);
        });
    }

    static std::vector<uint8_t> repeated(uint32_t value, int value_bytes, int bytes) {
        std::vector<uint8_t> line(static_cast<size_t>(bytes) + 4);
        for (size_t i = 0; i < line.size(); ++i)
            line[i] = static_cast<uint8_t>(value >> 8 * (i % static_cast<size_t>(value_bytes)));
        return line;
    }

    KernelPlane dst_, src_, coverage_;
};

TEST_P(CoverKernelsTest, BlendRgbq) { check_blend(&CoverKernels::blend_rgbq, Pixels::kRgbq); }
TEST_P(CoverKernelsTest, BlendYuy2) { check_blend(&CoverKernels::blend_yuy2, Pixels::kYuy2); }
TEST_P(CoverKernelsTest, BlendPwrw) { check_blend(&CoverKernels::blend_pwrw, Pixels::kPwrw); }
TEST_P(CoverKernelsTest, PaintRgbq) { check_paint(&CoverKernels::paint_rgbq, Pixels::kRgbq, 4); }
TEST_P(CoverKernelsTest, PaintYuy2) { check_paint(&CoverKernels::paint_yuy2, Pixels::kYuy2, 4); }
TEST_P(CoverKernelsTest, PaintPwrw) { check_paint(&CoverKernels::paint_pwrw, Pixels::kPwrw, 2); }
TEST_P(CoverKernelsTest, PaintA8) { check_paint(&CoverKernels::paint_a8, Pixels::kA8, 1); }
TEST_P(CoverKernelsTest, FadeBytes) { check_fade(&CoverKernels::fade_bytes, Pixels::kA8, 4); }
TEST_P(CoverKernelsTest, FadeWords) { check_fade(&CoverKernels::fade_words, Pixels::kPwrw, 2); }

std::vector<int> some_weights(Random& random) {
    std::vector<int> weights = {0, 1, 2, 15, 16, 17, 2047, 2048, 2049, 4080, 4094, 4095, 4096};
    for (int i = 0; i < 12; ++i)
        weights.push_back(random.between(0, kFull));
    return weights;
}

// Every pair of bytes there is.
TEST_P(CoverKernelsTest, BytesAreExact) {
    const UseTables use(GetParam());
    Random random(round_seed(0));
    std::vector<uint8_t> s(256 * 256), d(256 * 256);
    for (const int weight : some_weights(random)) {
        const std::vector<uint16_t> coverage(s.size() / 4, static_cast<uint16_t>(weight));
        for (size_t i = 0; i < s.size(); ++i) {
            s[i] = static_cast<uint8_t>(i);
            d[i] = static_cast<uint8_t>(i / 256);
        }
        cover_kernels.blend_rgbq(d.data(), s.data(), coverage.data(), 256 * 256 / 4);
        for (size_t i = 0; i < s.size(); ++i)
            ASSERT_EQ(d[i], mixed(static_cast<int>(i / 256), s[i], weight)) << i << " weight " << weight;
    }
}

// Every coverage at every eighth level, and at the levels near the ends.
TEST_P(CoverKernelsTest, LevelsAreExact) {
    const UseTables use(GetParam());
    std::vector<uint16_t> coverage(kFull + 1), d(kFull + 1);
    std::iota(coverage.begin(), coverage.end(), uint16_t{0});
    for (int level = 0; level <= kFull; level += level < 16 || level >= kFull - 16 ? 1 : 8) {
        std::fill(d.begin(), d.end(), uint16_t{0});
        cover_kernels.paint_pwrw(reinterpret_cast<uint8_t*>(d.data()), kFull, coverage.data(), kFull + 1, level);
        for (int c = 0; c <= kFull; ++c)
            ASSERT_EQ(d[static_cast<size_t>(c)], scaled(c, level)) << c << " level " << level;
    }
}

TEST_P(CoverKernelsTest, WordsAreExact) {
    const UseTables use(GetParam());
    Random random(round_seed(0));
    const auto any_word = [&] {
        return static_cast<uint16_t>(random.chance(40) ? random.pick({0, 1, 4095, 4096, 32767, 32768, 65534, 65535})
                                                       : random.between(0, 65535));
    };
    std::vector<uint16_t> s(4096), d(4096), got;
    for (const int weight : some_weights(random)) {
        const std::vector<uint16_t> coverage(s.size(), static_cast<uint16_t>(weight));
        std::generate(s.begin(), s.end(), any_word);
        std::generate(d.begin(), d.end(), any_word);
        got = d;
        cover_kernels.blend_pwrw(reinterpret_cast<uint8_t*>(got.data()), reinterpret_cast<const uint8_t*>(s.data()),
                                 coverage.data(), static_cast<int>(s.size()));
        for (size_t i = 0; i < s.size(); ++i)
            ASSERT_EQ(got[i], mixed(d[i], s[i], weight)) << d[i] << " " << s[i] << " weight " << weight;
    }
}

// ---------------------------------------------------------------- ramps

/// trunc(n * k) where the product is rounded to double precision, in integers; 0 <= n < 2^35, k > 0.
int64_t product(int64_t n, float k) {
    constexpr int kFloatBits = 24, kDoubleBits = 53;
    int exponent;
    const auto mantissa = static_cast<int64_t>(std::ldexp(std::frexp(k, &exponent), kFloatBits));
    auto p = static_cast<uint64_t>(n) * static_cast<uint64_t>(mantissa);
    const int excess = static_cast<int>(std::bit_width(p)) - kDoubleBits;
    if (excess > 0) {
        const uint64_t half = uint64_t{1} << (excess - 1), odd = p >> excess & 1;
        p = (p + (half - 1) + odd) >> excess << excess;
    }
    const int shift = kFloatBits - exponent;
    return shift >= 64 ? 0 : static_cast<int64_t>(p >> shift);
}

/// The area of pixel x right of the line from (a, 0) to (b, 1).
int64_t ramp_area(int32_t x, const CoverRamp& ramp) {
    const int64_t left = int64_t{x} * kFull, right = left + kFull;
    const bool begins = ramp.a >= left, ends = ramp.b <= right;
    if (begins && ends)
        return (right - ramp.a + right - ramp.b) / 2;
    if (begins)
        return product((right - ramp.a) * (right - ramp.a), ramp.k) / 8192;
    if (ends)
        return kFull - product((ramp.b - left) * (ramp.b - left), ramp.k) / 8192;
    return product(left + kFull / 2 - ramp.a, ramp.k);
}

class CoverRampTest : public CoverKernelsTest {
protected:
    /// The pixels that the ramp touches, as far as they lie in first..end-1.
    void check(Random& random, int64_t a, int64_t b, int64_t first, int64_t end) {
        const CoverRamp ramp = {static_cast<int32_t>(a), static_cast<int32_t>(b),
                                static_cast<float>(4096.0 / static_cast<double>(b - a))};
        first = std::max(first, a >> 12);
        end = std::min(end, (b + (kFull - 1)) >> 12);
        if (first > end)
            first = end;
        const auto pixels = static_cast<size_t>(end - first);
        lay_out(random, dst_, static_cast<int>(2 * pixels), 2);
        dst_.fill(random, fill_noise);
        // Addresses count from pixel 0, which may lie far outside.
        const auto zero = reinterpret_cast<uintptr_t>(dst_.first()) - 2 * static_cast<uintptr_t>(first);
        {
            const FloatScope scope;
            call_checked(cover_kernels.ramp, reinterpret_cast<uint16_t*>(zero), static_cast<int32_t>(first),
                         static_cast<int32_t>(end), ramp);
        }
        std::vector<uint8_t> want = dst_.before();
        for (int64_t x = first; x < end; ++x) {
            const auto area = static_cast<uint16_t>(ramp_area(static_cast<int32_t>(x), ramp));
            std::memcpy(dst_.line_in(want, 0) + 2 * (x - first), &area, sizeof area);
        }
        ASSERT_EQ(dst_.difference(want), "")
            << a << ".." << b << " pixels " << first << ".." << end << how_to_repeat(random);
    }
};

TEST_P(CoverRampTest, OfAFewPixels) {
    const UseTables use(GetParam());
    for (int round = 0; round < rounds(40000); ++round) {
        Random random(round_seed(round));
        const int a = random.between(0, 8 * kFull), length = random.between(1, random.pick({16, kFull, 5 * kFull}));
        check(random, random.chance(20) ? a & -kFull : a,
              random.chance(20) ? (a + length + kFull) & -kFull : a + length, 0, INT32_MAX);
        if (HasFatalFailure())
            return;
    }
}

TEST_P(CoverRampTest, OfManyPixels) {
    const UseTables use(GetParam());
    for (int round = 0; round < rounds(4000); ++round) {
        Random random(round_seed(round));
        const int a = random.between(-100 * kFull, 20 * kFull), length = random.between(1, 300 * kFull);
        check(random, a, int64_t{a} + length, random.between(0, 9), random.between(20, 250));
        if (HasFatalFailure())
            return;
    }
}

TEST_P(CoverRampTest, LongerThanAnyFrame) {
    const UseTables use(GetParam());
    for (int round = 0; round < rounds(2000); ++round) {
        Random random(round_seed(round));
        const int64_t a = -(int64_t{1} << random.between(1, 31)) + random.between(0, kFull);
        const int64_t b = std::min<int64_t>(int64_t{1} << random.between(13, 31), INT32_MAX) - random.between(0, kFull);
        const int first = random.chance(50) ? 0 : random.between(0, (1 << 19) - 200);
        check(random, a, b, first, int64_t{first} + random.between(0, 200));
        if (HasFatalFailure())
            return;
    }
}

// ---------------------------------------------------------------- ends

class CoverEndsTest : public CoverKernelsTest {
protected:
    static CoverRamp edge(Random& random, int first) {
        const auto on_pixel = [&](int at) { return random.chance(20) ? at & -kFull : at; };
        const int near = 2 * kFull;
        const int a = on_pixel(random.between(first * kFull - near, (first + 8) * kFull + near));
        const int length = random.chance(20) ? 0 : random.between(1, random.pick({16, kFull, 9 * kFull}));
        const int b = std::max(a, on_pixel(a + length));
        return {a, b, a < b ? static_cast<float>(4096.0 / (b - a)) : 0};
    }

    static int64_t area_right_of(int32_t x, const CoverRamp& edge) {
        if (edge.b <= x * kFull)
            return kFull;
        return edge.a >= (x + 1) * kFull ? 0 : ramp_area(x, edge);
    }
};

TEST_P(CoverEndsTest, OfTwoEdges) {
    const UseTables use(GetParam());
    for (int round = 0; round < rounds(20000); ++round) {
        Random random(round_seed(round));
        const int first = random.pick({0, 0, 2, 1000, 100000}), last = first + kCoverEnd + random.between(0, 20);
        const CoverRamp left = edge(random, first), right = edge(random, last);
        lay_out(random, dst_, 2 * (last + kCoverEnd - first), 2);
        dst_.fill(random, fill_noise);
        const auto zero = reinterpret_cast<uintptr_t>(dst_.first()) - 2 * static_cast<uintptr_t>(first);
        {
            const FloatScope scope;
            call_checked(cover_kernels.ends, reinterpret_cast<uint16_t*>(zero), first, left, last, right);
        }
        std::vector<uint8_t> want = dst_.before();
        const auto set = [&](int x, int64_t area) {
            const auto word = static_cast<uint16_t>(area);
            std::memcpy(dst_.line_in(want, 0) + 2 * (x - first), &word, sizeof word);
        };
        for (int i = 0; i < kCoverEnd; ++i) {
            set(first + i, area_right_of(first + i, left));
            set(last + i, kFull - area_right_of(last + i, right));
        }
        ASSERT_EQ(dst_.difference(want), "") << left.a << ".." << left.b << " from " << first << ", " << right.a << ".."
                                             << right.b << " from " << last << how_to_repeat(random);
    }
}

ZEPBMP_FOR_ALL_TABLES(CoverKernelsTest);
ZEPBMP_FOR_ALL_TABLES(CoverRampTest);
ZEPBMP_FOR_ALL_TABLES(CoverEndsTest);

// ---------------------------------------------------------------- worked out by hand

std::vector<int> plain_ramp(int32_t a, int32_t b, float k, int32_t end) {
    uint16_t coverage[8] = {};
    const FloatScope scope;
    kCoverPlain.ramp(coverage, 0, end, {a, b, k});
    return {coverage, coverage + end};
}

TEST(PlainCover, Ramps) {
    EXPECT_EQ(plain_ramp(0, 4096, 1, 1), (std::vector{2048}));
    EXPECT_EQ(plain_ramp(1024, 2048, 4, 1), (std::vector{2560}));
    EXPECT_EQ(plain_ramp(1024, 2049, 3.99609756f, 1), (std::vector{2559}));
    EXPECT_EQ(plain_ramp(2048, 6144, 1, 2), (std::vector{512, 3584}));
    EXPECT_EQ(plain_ramp(0, 3 * 4096, 1 / 3.0f, 3), (std::vector{682, 2048, 3414}));
    EXPECT_EQ(plain_ramp(4095, 4 * 4096 + 1, 4096 / 12290.0f, 5), (std::vector{0, 682, 2048, 3413, 4096}));
}

// From pixel 1.25 to 3.25, and upright at 10.75.
TEST(PlainCover, Ends) {
    uint16_t coverage[18];
    std::fill(std::begin(coverage), std::end(coverage), uint16_t{7});
    {
        const FloatScope scope;
        kCoverPlain.ends(coverage, 0, {5120, 13312, 0.5f}, 9, {44032, 44032, 0});
    }
    const uint16_t want[] = {0, 576, 2560, 4032, 4096, 4096, 4096, 4096, 7, 4096, 3072, 0, 0, 0, 0, 0, 0, 7};
    EXPECT_EQ(std::vector(std::begin(coverage), std::end(coverage)), std::vector(std::begin(want), std::end(want)));
}

TEST(PlainCover, BlendsAreCutTowardMinusInfinity) {
    const auto blend = [](uint8_t d, uint8_t s, uint16_t coverage) {
        uint8_t pixel[4] = {d, d, d, d};
        const uint8_t source[4] = {s, s, s, s};
        kCoverPlain.blend_rgbq(pixel, source, &coverage, 1);
        EXPECT_TRUE(pixel[0] == pixel[1] && pixel[0] == pixel[2] && pixel[0] == pixel[3]);
        return int{pixel[0]};
    };
    EXPECT_EQ(blend(100, 200, 0), 100);
    EXPECT_EQ(blend(100, 200, 1), 100);
    EXPECT_EQ(blend(200, 100, 1), 199);
    EXPECT_EQ(blend(100, 200, 4095), 199);
    EXPECT_EQ(blend(200, 100, 4095), 100);
    EXPECT_EQ(blend(0, 255, 2048), 127);
    EXPECT_EQ(blend(255, 0, 2048), 127);
    EXPECT_EQ(blend(7, 255, 4096), 255);
}

TEST(PlainCover, ChromaTakesThePairsMeanAndAnOddPixelItsOwn) {
    uint8_t pairs[8] = {0, 0, 0, 0, 0, 0, 77, 0};
    const uint16_t coverage[3] = {0, 4095, 1000};
    kCoverPlain.paint_yuy2(pairs, 0xc8c8c8c8, coverage, 3, 4096);
    const uint8_t want[8] = {0, 99, 199, 99, 48, 48, 77, 48};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(pairs[i], want[i]) << i;
}

TEST(PlainCover, LevelScalesTheMean) {
    uint8_t pair[4] = {};
    const uint16_t coverage[2] = {4096, 3};
    kCoverPlain.paint_yuy2(pair, 0xffffffff, coverage, 2, 2048);
    const uint8_t want[4] = {127, 63, 0, 63};  // weights 2048, 2049 * 2048 / 4096 = 1024, 1
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(pair[i], want[i]) << i;
}

TEST(PlainCover, WordsAndMarks) {
    uint16_t words[3] = {0, 65535, 4096};
    const uint16_t coverage[3] = {2048, 1, 4095};
    kCoverPlain.paint_pwrw(reinterpret_cast<uint8_t*>(words), 0x10001000, coverage, 3, 4096);
    EXPECT_EQ(words[0], 2048);
    EXPECT_EQ(words[1], 65520);  // -61439 / 4096 is cut to -15
    EXPECT_EQ(words[2], 4096);
    uint8_t marks[3] = {0, 128, 255};
    kCoverPlain.paint_a8(marks, 0x80808080, coverage, 3, 2048);
    EXPECT_EQ(marks[0], 32);
    EXPECT_EQ(marks[1], 128);
    EXPECT_EQ(marks[2], 191);  // weight 2047: 255 - 127 * 2047 / 4096 = 191.53
    kCoverPlain.fade_bytes(marks, 0x80808080, 1, 4095);
    EXPECT_EQ(marks[0], 127);
    kCoverPlain.fade_words(reinterpret_cast<uint8_t*>(words), 0x1000, 1, 2048);
    EXPECT_EQ(words[0], 3072);
}

}  // namespace
}  // namespace zepbmp::test
