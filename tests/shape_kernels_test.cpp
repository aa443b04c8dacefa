/// \file
/// Runs and ramps of the shapes: every kernel set against the plain one, and the plain ones against formulas.
#include <gtest/gtest.h>

#include <cmath>

#include "core/arithmetic.h"
#include "core/float_scope.h"
#include "core/kernel_tables.h"
#include "model/model.h"
#include "shapes/ramp.h"
#include "shapes/shape_kernels.h"
#include "support/cpu_state.h"
#include "support/kernel_planes.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

class ShapeKernelsTest : public WithTables {
protected:
    template <class Combine>
    void check_runs(void (*ShapeKernels::*kernel)(uint16_t*, int32_t, int32_t), Combine combine) {
        const UseTables use(GetParam());
        int call = 0;
        for (int round = 0; round < rounds(8); ++round) {
            for (int count = 0; count <= 150; ++count) {
                Random random(round_seed(call++));
                plane_.lay_out(static_cast<size_t>(2 * count), 1, 0, random.chance(60),
                               random.chance(40) ? kFlush : 2 * random.between(0, 7));
                plane_.fill(random, fill_weights);
                const int v =
                    random.chance(50) ? random.between(0, 4096) : random.pick({0, 1, 4096, 32767, 32768, 65535});
                call_checked(shape_kernels.*kernel, reinterpret_cast<uint16_t*>(plane_.first()), count, v);
                std::vector<uint8_t> want = plane_.before();
                for (int i = 0; i < count; ++i) {
                    uint16_t weight;
                    std::memcpy(&weight, plane_.line_in(want, 0) + 2 * i, 2);
                    weight = static_cast<uint16_t>(combine(int{weight}, v));
                    std::memcpy(plane_.line_in(want, 0) + 2 * i, &weight, 2);
                }
                ASSERT_EQ(plane_.difference(want), "") << count << " weights, v " << v << how_to_repeat(random);
            }
        }
    }

    KernelPlane plane_, other_;
};

TEST_P(ShapeKernelsTest, AddRunWraps) {
    check_runs(&ShapeKernels::add_run, [](int weight, int v) { return (weight + v) % 65536; });
}

TEST_P(ShapeKernelsTest, MaxRunComparesUnsigned) {
    check_runs(&ShapeKernels::max_run, [](int weight, int v) { return weight < v ? v : weight; });
}

double ramp_width(Random& random, double radius) {
    switch (random.below(8)) {
        case 0: return random.pick({1e-30, 1e30, 1e-3, 1e9, std::nan(""), HUGE_VAL, 1e-300});
        case 1: return random.pick({1.0, 2.0, 1024.0, 512.0, 64.0});
        case 2: return radius;
        default: return static_cast<double>(1 + random.below(1 << 16)) / random.pick({64, 640, 6400});
    }
}

TEST_P(ShapeKernelsTest, RampIsThePlainOne) {
    const UseTables use(GetParam());
    for (int round = 0; round < rounds(60000); ++round) {
        Random random(round_seed(round));
        const int width = random.between(1, 400), first = random.between(0, width - 1),
                  end = random.between(first, width);
        const double radius =
            random.chance(5) ? random.pick({0.0, -3.0, 1e30, 1e6, 1e-30}) : random.between(0, 64 * 500) / 64.0;
        const bool linear = random.chance(50);
        // Where in a pixel the centre lies decides how near to a step the distances come: whole, halves, 64ths,
        // anything.
        const auto near = [&](int low, int high) {
            return random.between(low, high) +
                   random.pick({0.0, 0.5, random.below(64) / 64.0, random.below(1 << 24) / 16777216.0});
        };
        const RampLine line = {
            .cx = random.chance(3) ? random.pick({1e9, -1e9, 1e30, std::nan(""), HUGE_VAL}) : near(-200, 600),
            .dy = random.chance(3) ? random.pick({1e9, 1e30, std::nan("")}) : near(-300, 300),
            .radius = radius,
            .scale = 1024 / ramp_width(random, radius),
            .table = (linear ? kLinearRamp : kCosineRamp).weight,
            .linear = linear};
        const bool at_end = random.chance(60);
        for (KernelPlane* plane : {&plane_, &other_}) {
            plane->lay_out(static_cast<size_t>(2 * width), 1, 0, at_end, kFlush);
            Random fill(random.seed() + 1);
            plane->fill(fill, fill_noise);
        }
        {
            const FloatScope scope;
            kShapesPlain.ramp(reinterpret_cast<uint16_t*>(other_.first()), first, end, line);
        }
        {
            const FloatScope scope;
            call_checked(shape_kernels.ramp, reinterpret_cast<uint16_t*>(plane_.first()), first, end, line);
        }
        std::vector<uint8_t> want = plane_.before();
        std::memcpy(plane_.line_in(want, 0), other_.first(), static_cast<size_t>(2 * width));
        ASSERT_EQ(plane_.difference(want), "")
            << first << ".." << end << " of " << width << " cx " << line.cx << " dy " << line.dy << " radius " << radius
            << " scale " << line.scale << (linear ? " linear" : " cosine") << how_to_repeat(random);
    }
}

ZEPBMP_FOR_ALL_TABLES(ShapeKernelsTest);

TEST(PlainRamp, IsItsFormula) {
    for (int round = 0; round < rounds(300); ++round) {
        Random random(round_seed(round));
        const RampLine line = {.cx = random.below(64 * 100) / 64.0,
                               .dy = random.between(-64 * 50, 64 * 50) / 64.0,
                               .radius = random.below(64 * 100) / 64.0,
                               .scale = random.pick({16.0, 32.0, 64.0, 102.4, 1024 / 7.0}),
                               .table = kLinearRamp.weight,
                               .linear = true};
        uint16_t got[100], want[100];
        {
            const ModelPrecision precision;
            kShapesPlain.ramp(got, 0, 100, line);
            for (int x = 0; x < 100; ++x) {
                const double dx = x - line.cx + 0.5, d = std::sqrt(dx * dx + line.dy * line.dy);
                const double step = (line.radius - d) * line.scale + 0.5;
                const int k = step < 0 ? 0 : step > 1024 ? 1024 : static_cast<int>(step);
                want[x] = static_cast<uint16_t>(4 * k);
            }
        }
        for (int x = 0; x < 100; ++x)
            ASSERT_EQ(got[x], want[x]) << x << how_to_repeat(random);
    }
}

// ---------------------------------------------------------------- tables

TEST(RampTables, LinearIsFourTimesTheStep) {
    for (int k = 0; k <= 1024; ++k)
        EXPECT_EQ(kLinearRamp.weight[k], 4 * k);
}

TEST(RampTables, CosineHasItsKnownValues) {
    EXPECT_EQ(kCosineRamp.weight[0], 0);
    EXPECT_EQ(kCosineRamp.weight[128], 156);
    EXPECT_EQ(kCosineRamp.weight[256], 600);
    EXPECT_EQ(kCosineRamp.weight[512], 2048);
    EXPECT_EQ(kCosineRamp.weight[768], 3496);
    EXPECT_EQ(kCosineRamp.weight[1024], 4096);
}

TEST(RampTables, CosineIsItsFormulaEverywhere) {
    for (int k = 0; k <= 1024; ++k) {
        EXPECT_EQ(kCosineRamp.weight[k], model::cosine_ramp(k)) << k;
        EXPECT_EQ(kCosineRamp.weight[k] + kCosineRamp.weight[1024 - k], 4096) << k;
    }
}

// ---------------------------------------------------------------- float to integer

TEST(Arithmetic, TruncatesTowardZeroAndHoldsNothing) {
    EXPECT_EQ(trunc_to_int32(0.999), 0);
    EXPECT_EQ(trunc_to_int32(-0.999), 0);
    EXPECT_EQ(trunc_to_int32(-1.5), -1);
    EXPECT_EQ(trunc_to_int32(2147483647.0), 2147483647);
    EXPECT_EQ(trunc_to_int32(2147483647.9), 2147483647);
    EXPECT_EQ(trunc_to_int32(2147483648.0), INT32_MIN);
    EXPECT_EQ(trunc_to_int32(-2147483648.0), INT32_MIN);
    EXPECT_EQ(trunc_to_int32(-2147483648.9), INT32_MIN);
    EXPECT_EQ(trunc_to_int32(1e300), INT32_MIN);
    EXPECT_EQ(trunc_to_int32(-1e300), INT32_MIN);
    EXPECT_EQ(trunc_to_int32(HUGE_VAL), INT32_MIN);
    EXPECT_EQ(trunc_to_int32(-HUGE_VAL), INT32_MIN);
    EXPECT_EQ(trunc_to_int32(std::nan("")), INT32_MIN);
}

}  // namespace
}  // namespace zepbmp::test
