/// \file
/// Every composition kernel that this machine can run, byte for byte against the arithmetic of its column.
#include <gtest/gtest.h>

#include "compose/compose_kernels.h"
#include "model/arithmetic.h"
#include "model/model.h"
#include "support/cpu_state.h"
#include "support/kernel_planes.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

constexpr int32_t kLevels[] = {0,    1,    2,  1000,  2047,  2048,  2049,      4095,
                               4096, 5000, -1, -4096, 32767, 32768, 65536 + 5, -70000};

/// One line: bytes of dst from bytes of the sources and masks. `extra` is the level or the colour.
using LineModel = void (*)(bool vector, int count, uint8_t* d, const uint8_t* a, const uint8_t* b, const uint8_t* m1,
                           const uint8_t* m2, uint32_t extra);

struct Planes {
    KernelPlane dst, a, b, m1, m2;
};
using Invoke = void (*)(int count, int lines, const Planes& p, const KernelPlane& a, const KernelPlane& b,
                        uint32_t extra);

struct Slot {
    const char* name;
    int pixel_bytes;
    int mask_bytes;  ///< 0: no mask
    bool two_sources, aligned;
    Invoke invoke;
    LineModel model;
};

// ---------------------------------------------------------------- models of a line

using model::load_u16;

void rgbq_w16(bool vector, int count, uint8_t* d, const uint8_t* a, const uint8_t* b, const uint8_t* m, const uint8_t*,
              uint32_t) {
    for (int i = 0; i < 4 * count; ++i) {
        if (vector)
            d[i] = model::mix_w16_vector(a[i], b[i], load_u16(m + i / 4 * 2));
        else if (i % 4 != 3)
            d[i] = model::mix_w16_reference(a[i], b[i], load_u16(m + i / 4 * 2));
    }
}

void rgbq_a8(bool vector, int count, uint8_t* d, const uint8_t* a, const uint8_t* b, const uint8_t* m, const uint8_t*,
             uint32_t) {
    for (int i = 0; i < 4 * count; ++i) {
        if (vector)
            d[i] = model::mix_a8_vector(a[i], b[i], m[i / 4]);
        else if (i % 4 != 3)
            d[i] = model::mix_a8_reference(a[i], b[i], m[i / 4]);
    }
}

// Chroma takes the weight of its pair's first pixel; an odd last pixel is left alone.
int yuy2_weight_of(int i) { return i % 2 == 0 ? i / 2 : i / 4 * 2; }

void yuy2_w16(bool vector, int count, uint8_t* d, const uint8_t* a, const uint8_t* b, const uint8_t* m, const uint8_t*,
              uint32_t) {
    for (int i = 0; i < count / 2 * 4; ++i) {
        const uint16_t w = load_u16(m + 2 * yuy2_weight_of(i));
        d[i] = vector ? model::mix_w16_vector(a[i], b[i], w) : model::mix_w16_reference(a[i], b[i], w);
    }
}

void yuy2_a8(bool vector, int count, uint8_t* d, const uint8_t* a, const uint8_t* b, const uint8_t* m, const uint8_t*,
             uint32_t) {
    for (int i = 0; i < count / 2 * 4; ++i) {
        const uint8_t w = m[yuy2_weight_of(i)];
        d[i] = vector ? model::mix_a8_vector(a[i], b[i], w) : model::mix_a8_reference(a[i], b[i], w);
    }
}

void level(bool vector, int count, uint8_t* d, const uint8_t* a, const uint8_t* b, const uint8_t*, const uint8_t*,
           uint32_t extra) {
    const auto w2 = static_cast<int32_t>(extra), w1 = static_cast<int32_t>(4096 - extra);
    for (int i = 0; i < count; ++i)
        d[i] = vector ? model::mix_level_vector(a[i], w1, b[i], w2) : model::mix_level_reference(a[i], w1, b[i], w2);
}

uint8_t byte_of(uint32_t color, int k) { return static_cast<uint8_t>(color >> (8 * k)); }

void rgbq_band(bool vector, int count, uint8_t* d, const uint8_t* a, const uint8_t* b, const uint8_t* m1,
               const uint8_t* m2, uint32_t color) {
    for (int i = 0; i < 4 * count; ++i) {
        const uint16_t low = load_u16(m1 + i / 4 * 2), high = load_u16(m2 + i / 4 * 2);
        if (vector)
            d[i] = model::band_rgbq_vector(a[i], b[i], byte_of(color, i % 4), low, high);
        else if (i % 4 != 3)
            d[i] = model::band_rgbq_reference(a[i], b[i], byte_of(color, 2 - i % 4), low, high);
    }
}

/// Y U Y V of a colour argument, by position in a pair.
uint8_t yuy2_color(uint32_t color, int i) { return byte_of(color, i % 4 == 1 ? 1 : i % 4 == 3 ? 0 : 2); }

void yuy2_band(bool vector, int count, uint8_t* d, const uint8_t* a, const uint8_t* b, const uint8_t* m1,
               const uint8_t* m2, uint32_t color) {
    for (int i = 0; i < count / 2 * 4; ++i) {
        const int at = i / 4 * 4;  // of the pair's weights
        const uint16_t a0 = load_u16(m1 + at), a1 = load_u16(m1 + at + 2), b0 = load_u16(m2 + at),
                       b1 = load_u16(m2 + at + 2);
        const uint8_t c = yuy2_color(color, i);
        if (i % 2)
            d[i] = (vector ? model::band_chroma_vector : model::band_chroma_reference)(a[i], b[i], c, a0, a1, b0, b1);
        else
            d[i] = (vector ? model::band_luma_vector : model::band_luma_reference)(a[i], b[i], c, i % 4 ? a1 : a0,
                                                                                   i % 4 ? b1 : b0);
    }
}

void rgbq_color(bool, int count, uint8_t* d, const uint8_t* a, const uint8_t*, const uint8_t* m, const uint8_t*,
                uint32_t color) {
    for (int i = 0; i < 4 * count; ++i)
        if (i % 4 != 3)
            d[i] = model::colour_rgbq(a[i], byte_of(color, i % 4), load_u16(m + i / 4 * 2));
}

void yuy2_color_line(bool vector, int count, uint8_t* d, const uint8_t* a, const uint8_t*, const uint8_t* m,
                     const uint8_t*, uint32_t color) {
    for (int i = 0; i < count / 2 * 4; ++i) {
        const uint16_t w0 = load_u16(m + i / 4 * 4), w1 = load_u16(m + i / 4 * 4 + 2);
        const uint8_t c = yuy2_color(color, i);
        if (i % 2)
            d[i] = (vector ? model::colour_chroma_vector : model::colour_chroma_reference)(a[i], c, w0, w1);
        else
            d[i] = (vector ? model::colour_luma_vector : model::colour_luma_reference)(a[i], c, i % 4 ? w1 : w0);
    }
}

// ---------------------------------------------------------------- calls

template <ComposeMixKernel* ComposeSlots::*kSlot>
void mix(int count, int lines, const Planes& p, const KernelPlane& a, const KernelPlane& b, uint32_t) {
    call_checked(compose_slot.*kSlot, count, lines, p.dst.first(), p.dst.skip(), a.first(), a.skip(), b.first(),
                 b.skip(), p.m1.first(), p.m1.skip());
}

template <ComposeLevelKernel* ComposeSlots::*kSlot>
void fade(int count, int lines, const Planes& p, const KernelPlane& a, const KernelPlane& b, uint32_t extra) {
    call_checked(compose_slot.*kSlot, count, lines, p.dst.first(), p.dst.skip(), a.first(), a.skip(),
                 static_cast<int32_t>(4096 - extra), b.first(), b.skip(), static_cast<int32_t>(extra));
}

const uint16_t* words(const KernelPlane& plane) { return reinterpret_cast<const uint16_t*>(plane.first()); }

template <ComposeBandKernel* ComposeSlots::*kSlot>
void band(int count, int lines, const Planes& p, const KernelPlane& a, const KernelPlane& b, uint32_t color) {
    call_checked(compose_slot.*kSlot, count, lines, p.dst.first(), p.dst.skip(), a.first(), a.skip(), b.first(),
                 b.skip(), words(p.m1), p.m1.skip(), words(p.m2), p.m2.skip(), color);
}

template <ComposeColorKernel* ComposeSlots::*kSlot>
void color(int count, int lines, const Planes& p, const KernelPlane& a, const KernelPlane&, uint32_t color_word) {
    call_checked(compose_slot.*kSlot, count, lines, p.dst.first(), p.dst.skip(), a.first(), a.skip(), words(p.m1),
                 p.m1.skip(), color_word);
}

using S = ComposeSlots;
constexpr Slot kSlots[] = {
    {"rgbq_w16", 4, 2, true, false, mix<&S::rgbq_w16>, rgbq_w16},
    {"rgbq_a8", 4, 1, true, false, mix<&S::rgbq_a8>, rgbq_a8},
    {"yuy2_w16", 2, 2, true, false, mix<&S::yuy2_w16>, yuy2_w16},
    {"yuy2_w16_aligned", 2, 2, true, true, mix<&S::yuy2_w16_aligned>, yuy2_w16},
    {"yuy2_a8", 2, 1, true, false, mix<&S::yuy2_a8>, yuy2_a8},
    {"yuy2_a8_aligned", 2, 1, true, true, mix<&S::yuy2_a8_aligned>, yuy2_a8},
    {"level", 1, 0, true, false, fade<&S::level>, level},
    {"level_aligned", 1, 0, true, true, fade<&S::level_aligned>, level},
    {"color_rgbq_band", 4, 2, true, false, band<&S::color_rgbq_band>, rgbq_band},
    {"color_yuy2_band", 2, 2, true, false, band<&S::color_yuy2_band>, yuy2_band},
    {"color_rgbq", 4, 2, false, false, color<&S::color_rgbq>, rgbq_color},
    {"color_yuy2", 2, 2, false, false, color<&S::color_yuy2>, yuy2_color_line},
};

// ---------------------------------------------------------------- one call

enum class InPlace { kNo, kFirst, kSecond };

class ComposeKernels : public testing::TestWithParam<std::tuple<Tables, int>> {
protected:
    void SetUp() override {
        const std::string reason = why_not(tables());
        if (!reason.empty())
            GTEST_SKIP() << reason;
    }
    const Tables& tables() const { return std::get<0>(GetParam()); }
    const Slot& slot() const { return kSlots[std::get<1>(GetParam())]; }

    /// A plane of the call. Kernels of aligned slots get image lines at multiples of 16, and the masks of 16-bit ones.
    void lay_out(Random& random, KernelPlane& plane, int bytes_per_pixel, int count, int lines, int skew, bool aligned,
                 bool written) {
        const int line_bytes = bytes_per_pixel * count;
        int step = line_bytes + (random.chance(40) ? 0 : random.between(0, 40));
        if (aligned)
            step = (step + 15) & ~15;
        if (random.chance(30))
            step = -step;
        if (!written && random.chance(5))
            step = 0;  // one line again and again
        const bool at_end = random.chance(60);
        if (aligned)
            skew = 0;
        plane.lay_out(static_cast<size_t>(line_bytes), lines, step, at_end, skew);
    }

    void check(uint64_t seed, int count, int skew) {
        Random random(seed);
        const Slot& s = slot();
        const bool vector = tables().level > 0;
        const int lines = random.chance(5) ? 0 : random.between(1, 4);
        const int other = random.chance(50) ? kFlush : random.pick({0, 1, 2, 4, 6, 8, 14});
        lay_out(random, planes_.dst, s.pixel_bytes, count, lines, skew, s.aligned, true);
        lay_out(random, planes_.a, s.pixel_bytes, count, lines, random.chance(50) ? skew : other, s.aligned, false);
        lay_out(random, planes_.b, s.pixel_bytes, count, lines, random.chance(50) ? kFlush : other, s.aligned, false);
        const bool aligned_mask = s.aligned && s.mask_bytes == 2;
        lay_out(random, planes_.m1, s.mask_bytes, count, lines, random.chance(50) ? kFlush : other, aligned_mask,
                false);
        lay_out(random, planes_.m2, s.mask_bytes, count, lines, random.chance(50) ? kFlush : other, aligned_mask,
                false);
        const auto fill_mask = s.mask_bytes == 1 ? fill_masks : fill_weights;
        planes_.dst.fill(random, fill_pixels);
        planes_.a.fill(random, fill_pixels);
        planes_.b.fill(random, fill_pixels);
        planes_.m1.fill(random, fill_mask);
        planes_.m2.fill(random, fill_mask);
        const auto extra = s.mask_bytes == 0 ? static_cast<uint32_t>(kLevels[random.below(std::size(kLevels))])
                                             : static_cast<uint32_t>(random.next());
        const InPlace in_place = random.pick({InPlace::kNo, InPlace::kNo, InPlace::kFirst, InPlace::kSecond});
        const KernelPlane& a = in_place == InPlace::kFirst ? planes_.dst : planes_.a;
        const KernelPlane& b = in_place == InPlace::kSecond && s.two_sources ? planes_.dst : planes_.b;

        const bool streams = random.chance(50);
        const ForceStreaming streaming(streams);
        s.invoke(count, lines, planes_, a, b, extra);

        std::vector<uint8_t> want = planes_.dst.before();
        for (int y = 0; y < lines && count > 0; ++y)
            s.model(vector, count, planes_.dst.line_in(want, y), a.line_before(y), b.line_before(y),
                    planes_.m1.line_before(y), planes_.m2.line_before(y), extra);
        const auto context = [&] {
            return std::string(s.name) + " count " + std::to_string(count) + " lines " + std::to_string(lines) +
                   " skew " + std::to_string(skew) + " extra " + std::to_string(static_cast<int32_t>(extra)) +
                   (streams ? " streamed" : " cached") + " in place " + std::to_string(static_cast<int>(in_place)) +
                   " steps " + std::to_string(planes_.dst.step()) + " " + std::to_string(a.step()) + " " +
                   std::to_string(b.step()) + " " + std::to_string(planes_.m1.step()) + " " +
                   std::to_string(planes_.m2.step()) + how_to_repeat(random);
        };
        ASSERT_EQ(planes_.dst.difference(want), "") << context();
        if (&a != &planes_.dst) {
            ASSERT_EQ(planes_.a.difference(planes_.a.before()), "") << "a source was written: " << context();
        }
        if (&b != &planes_.dst) {
            ASSERT_EQ(planes_.b.difference(planes_.b.before()), "") << "a source was written: " << context();
        }
        ASSERT_EQ(planes_.m1.difference(planes_.m1.before()), "") << "a mask was written: " << context();
        ASSERT_EQ(planes_.m2.difference(planes_.m2.before()), "") << "a mask was written: " << context();
    }

    Planes planes_;
};

constexpr int kSkews[] = {kFlush, 0, 1, 2, 4, 6, 8, 14};
constexpr int kLongestLine = 720;

TEST_P(ComposeKernels, WritesTheBytesOfItsColumn) {
    const UseTables use(tables());
    int call = 0;
    for (int round = 0; round < rounds(6); ++round) {
        for (int count = 0; count <= 71; ++count) {
            for (const int skew : kSkews) {
                check(round_seed(call++), count == 71 ? kLongestLine : count, skew);
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

// The kernel's own contract, apart from any random choice: nothing is touched, not even the addresses given.
TEST_P(ComposeKernels, TouchesNothingWithoutPixelsOrLines) {
    const UseTables use(tables());
    for (KernelPlane* plane : {&planes_.dst, &planes_.a, &planes_.b, &planes_.m1, &planes_.m2})
        plane->lay_out(0, 0, 32, true, kFlush);
    for (const bool streams : {false, true}) {
        const ForceStreaming streaming(streams);
        slot().invoke(0, 3, planes_, planes_.a, planes_.b, 1000);
        slot().invoke(16, 0, planes_, planes_.a, planes_.b, 1000);
        slot().invoke(0, 0, planes_, planes_.a, planes_.b, 1000);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , ComposeKernels,
    testing::Combine(testing::ValuesIn(all_tables()), testing::Range(0, static_cast<int>(std::size(kSlots)))),
    [](const auto& info) {
        return tables_name({std::get<0>(info.param), 0}) + "_" + kSlots[std::get<1>(info.param)].name;
    });

// ---------------------------------------------------------------- every weight there is

class ComposeEveryWeight : public WithTables {};

// With every byte of the first source; the second one's follow from both.
TEST_P(ComposeEveryWeight, RgbqW16) {
    const UseTables use(GetParam());
    const bool vector = GetParam().level > 0;
    constexpr int kPixels = 256;
    uint8_t a[4 * kPixels], b[4 * kPixels], dst[4 * kPixels];
    uint16_t weights[kPixels];
    const int stride = rounds(16) >= 16 ? 1 : 7;
    for (int w = 0; w < 65536; w += stride) {
        for (int p = 0; p < kPixels; ++p) {
            std::memset(a + 4 * p, p, 4);
            std::memset(b + 4 * p, (37 * p + 101 * w) & 0xff, 4);
            weights[p] = static_cast<uint16_t>(w);
        }
        compose_slot.rgbq_w16(kPixels, 1, dst, 0, a, 0, b, 0, weights, 0);
        for (int p = 0; p < kPixels; ++p) {
            const uint8_t want = vector ? model::mix_w16_vector(a[4 * p], b[4 * p], weights[p])
                                        : model::mix_w16_reference(a[4 * p], b[4 * p], weights[p]);
            ASSERT_EQ(dst[4 * p], want) << p << " " << int{b[4 * p]} << " weight " << w;
        }
    }
}

// Every pair of bytes under every mask byte.
TEST_P(ComposeEveryWeight, RgbqA8) {
    const UseTables use(GetParam());
    const bool vector = GetParam().level > 0;
    constexpr int kPixels = 256;
    uint8_t a[4 * kPixels], b[4 * kPixels], dst[4 * kPixels], masks[kPixels];
    const int stride = rounds(16) >= 16 ? 1 : 7;
    for (int mask = 0; mask < 256; ++mask) {
        std::memset(masks, mask, sizeof masks);
        for (int q = 0; q < 256; q += stride) {
            for (int p = 0; p < kPixels; ++p)
                std::memset(a + 4 * p, p, 4);
            std::memset(b, q, sizeof b);
            compose_slot.rgbq_a8(kPixels, 1, dst, 0, a, 0, b, 0, masks, 0);
            for (int p = 0; p < kPixels; ++p) {
                const uint8_t want = vector ? model::mix_a8_vector(a[4 * p], b[4 * p], masks[p])
                                            : model::mix_a8_reference(a[4 * p], b[4 * p], masks[p]);
                ASSERT_EQ(dst[4 * p], want) << p << " " << q << " mask " << mask;
            }
        }
    }
}

ZEPBMP_FOR_ALL_TABLES(ComposeEveryWeight);

}  // namespace
}  // namespace zepbmp::test
