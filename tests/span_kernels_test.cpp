/// \file
/// The span kernels of polygons: every set against the plain one, and the plain one against values worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <sstream>

#include "core/float_scope.h"
#include "mapping/polygon/filters.h"
#include "mapping/polygon/span_kernels.h"
#include "support/cpu_state.h"
#include "support/kernel_planes.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

using Limits = std::numeric_limits<float>;

struct Group {
    const char* name;
    SpanGroup group;
    int texel_bytes, pixel_bytes;
    bool texel_pairs, pixel_pairs;  ///< YUY2: two share their chroma
    bool affine, depth;
    int vector_filters;  ///< the first ones, for which a set has kernels
};

constexpr Group kGroups[] = {
    {"Yuy2Affine", kSpanYuy2Affine, 2, 2, true, true, true, false, kSpanFilters},
    {"Yuy2Persp", kSpanYuy2Persp, 2, 2, true, true, false, false, kSpanFilters},
    {"RgbqAffine", kSpanRgbqAffine, 4, 4, false, false, true, false, kSpanFilters},
    {"RgbqPersp", kSpanRgbqPersp, 4, 4, false, false, false, false, kSpanFilters},
    {"PwrwAffine", kSpanPwrwAffine, 2, 2, false, false, true, false, 2},
    {"PwrwPersp", kSpanPwrwPersp, 2, 2, false, false, false, false, 2},
    {"Yuy2Depth", kSpanYuy2Depth, 2, 2, true, true, false, true, kSpanFilters},
    {"RgbqDepth", kSpanRgbqDepth, 4, 4, false, false, false, true, kSpanFilters},
    {"A8TintYuy2", kSpanA8TintYuy2, 1, 2, false, true, false, false, 2},
    {"A8TintRgbq", kSpanA8TintRgbq, 1, 4, false, false, false, false, 2},
};

struct Set {
    const char* name;
    Tables needs;
    const SpanSet* kernels;
};

const Set kSets[] = {
    {"sse2", {4, 16}, &kSpansSse2},
    {"avx2", {4, 32}, &kSpansAvx2},
#if defined(ZEPBMP_HAVE_AVX512)
    {"avx512", {4, 64}, &kSpansAvx512},
#endif
};

/// A texture between fences, no byte behind its last texel.
class TextureMemory {
public:
    TextureMemory() : pages_(size_t{6} << 20) {
        Random random(1);
        fill_noise(random, pages_.bytes());
    }

    /// Any size that the filter serves: usually a small one, now and then one of those at which kernels change their
    /// ways.
    void lay_out(Random& random, const Group& group, int filter) {
        const FilterClass *columns_class = nullptr, *rows_class = nullptr;
        if (filter > 0) {
            columns_class = &kColumnClasses[(filter - 1) % kColumnClassCount];
            rows_class = &kRowClasses[(filter - 1) / kColumnClassCount];
        }
        const int least_columns = least_texels(columns_class), least_rows = least_texels(rows_class);
        columns =
            random.chance(20) ? random.between(least_columns, least_columns + 3) : random.between(least_columns, 40);
        rows = random.chance(20) ? random.between(least_rows, least_rows + 3) : random.between(least_rows, 30);
        const int kind = random.between(0, 99);
        if (kind < 8) {
            columns = random.pick({4095, 4096, 4097, 5000, 32767, 32768});
            rows = random.between(least_rows, least_rows + 3);
        } else if (kind < 16) {
            rows = random.pick({4095, 4096, 4097, 5000, 32767, 32768});
            columns = random.between(least_columns, least_columns + 3);
        }
        // Of wider bitmaps 32768 columns are the texture.
        const int line_columns = columns == 32768 ? random.pick({32768, 33000}) : columns;
        const auto bytes_of = [&](int count) {
            return ptrdiff_t{group.texel_pairs ? count + count % 2 : count} * group.texel_bytes;
        };
        pitch = (bytes_of(line_columns) + 3) / 4 * 4;
        if (kind < 30)
            pitch *= random.pick({1, 2});  // 2: a field
        else if (kind < 50)
            pitch += 4 * random.between(1, 8);
        else if (kind < 56)
            pitch = random.pick({32764, 32768, 32772, 65536, 100000});
        else if (kind < 62)
            pitch += random.between(1, 3);  // no vector kernel takes that
        else if (kind < 64)
            pitch *= random.pick({0, -1});  // nor that

        const ptrdiff_t reach = pitch * (rows - 1);
        const size_t extent = static_cast<size_t>(std::abs(reach) + bytes_of(columns));
        const bool at_end = random.chance(60);
        uint8_t* const low =
            place(pages_, extent, at_end, random.chance(60) ? kFlush : group.texel_bytes * random.between(0, 3));
        pixels = reach < 0 ? low - reach : low;
        if (extent <= 1 << 14)
            (group.group == kSpanPwrwAffine || group.group == kSpanPwrwPersp ? fill_weights : fill_pixels)(
                random, {low, extent});
        u_max = static_cast<float>(last_place(columns, columns_class));
        v_max = static_cast<float>(last_place(rows, rows_class));
    }

    SpanTexture texture() const { return {pixels, pitch, columns, rows, u_max, v_max}; }

    uint8_t* pixels = nullptr;
    ptrdiff_t pitch = 0;
    int columns = 0, rows = 0;
    float u_max = 0, v_max = 0;

private:
    static int last_place(int texels, const FilterClass* of) {
        return static_cast<int>((texels - 1) * int64_t{kTexel} - (of ? of->margin : 0));
    }
    static int least_texels(const FilterClass* of) {
        int texels = 1;
        while (last_place(texels, of) < 0)
            ++texels;
        return texels;
    }

    FencedPages pages_;
};

/// Where on the texture, 16.16: mostly on it, often where a texel begins or the texture ends.
double place_on(Random& random, int texels) {
    const double whole = double{kTexel} * texels;
    switch (random.below(6)) {
        case 0: return kTexel * static_cast<double>(random.between(0, texels)) + random.between(-1, 1);
        case 1: return whole - random.between(0, 3 * kTexel);
        case 2: return random.between(-kTexel, 2 * kTexel);
        default: return whole * (random.between(-200, 1200) / 1000.0);
    }
}

float any_float(Random& random) {
    return random.pick({0.0f,
                        -0.0f,
                        1.0f,
                        -1.0f,
                        65536.0f,
                        1e9f,
                        -1e9f,
                        2147483648.0f,
                        -2147483648.0f,
                        4294967296.0f,
                        1e30f,
                        -1e30f,
                        Limits::max(),
                        -Limits::max(),
                        Limits::min(),
                        Limits::denorm_min(),
                        1e-40f,
                        -1e-40f,
                        Limits::infinity(),
                        -Limits::infinity(),
                        Limits::quiet_NaN()});
}

/// From one place on the texture to another.
void lay_out_positions(Random& random, const Group& group, const TextureMemory& texture, Span& span) {
    const int steps = std::max(1, span.last - span.first);
    const auto line = [&](double from, double to, float& slope, float& start) {
        const double step = (to - from) / steps;
        slope = static_cast<float>(step);
        start = static_cast<float>(from - step * span.first);
    };
    const double u0 = place_on(random, texture.columns), v0 = place_on(random, texture.rows);
    double u1 = place_on(random, texture.columns), v1 = place_on(random, texture.rows);
    if (random.chance(20))
        u1 = u0 + steps * random.pick({0.0, 512.0, 32768.0, 65536.0, -65536.0, 131072.0});
    if (random.chance(20))
        v1 = v0 + steps * random.pick({0.0, 512.0, 1.0, -65536.0});
    if (group.affine) {
        line(u0, u1, span.du, span.u_start);
        line(v0, v1, span.dv, span.v_start);
    } else {
        double w0 = random.between(1, 256) / 64.0, w1 = random.between(1, 256) / 64.0;
        if (random.chance(20))
            w1 = -w1;
        else if (random.chance(20))
            w1 = w0;
        line(w0, w1, span.dw, span.w_start);
        if (random.chance(10)) {  // 0 at a pixel
            span.dw = random.pick({0.25f, -0.25f, 1 / 64.0f});
            span.w_start = -span.dw * static_cast<float>(random.between(span.first, span.first + steps));
        }
        span.u_off = random.pick({-32768.0f, -262144.0f, 0.0f, 12345.678f});
        span.v_off = random.pick({-32768.0f, -131072.0f - 16384.0f, 16384.0f, -0.0f});
        line((u0 - span.u_off) * w0, (u1 - span.u_off) * w1, span.du, span.u_start);
        line((v0 - span.v_off) * w0, (v1 - span.v_off) * w1, span.dv, span.v_start);
    }
    if (random.chance(15)) {
        float* const fields[] = {&span.du, &span.u_start, &span.dv,    &span.v_start,
                                 &span.dw, &span.w_start, &span.u_off, &span.v_off};
        for (int i = random.between(1, 3); i > 0; --i)
            *fields[random.below(group.affine ? 4 : 8)] = any_float(random);
    }
}

std::string described(const Group& group, int filter, const TextureMemory& texture, const Span& span) {
    std::ostringstream text;
    text << group.name << " filter " << filter << ", texture " << texture.columns << " x " << texture.rows << " pitch "
         << texture.pitch << " maxima " << texture.u_max << " " << texture.v_max << ", pixels " << span.first << ".."
         << span.last << " u " << span.du << " " << span.u_start << " v " << span.dv << " " << span.v_start << " w "
         << span.dw << " " << span.w_start << " offsets " << span.u_off << " " << span.v_off << " color " << std::hex
         << span.color;
    return text.str();
}

class SpanKernelsTest : public testing::TestWithParam<std::tuple<Set, Group>> {
protected:
    void SetUp() override {
        const std::string reason = why_not(set().needs);
        if (!reason.empty())
            GTEST_SKIP() << reason;
    }
    static const Set& set() { return std::get<0>(GetParam()); }
    static const Group& group() { return std::get<1>(GetParam()); }

    static void lay_out_pixels(Random& random, Span& span) {
        span.first = random.pick({0, 1, 2, 3, random.between(0, 40), random.between(200, 300)});
        switch (random.below(10)) {
            case 0: span.last = span.first - random.between(1, 3); break;
            case 1: span.last = span.first + random.between(250, 260); break;
            case 2: span.last = span.first + random.between(505, 600); break;
            default: span.last = span.first + random.between(0, 40);
        }
    }

    /// The same place for the kernel tested and for the plain one.
    void lay_out_lines(Random& random, const Span& span) {
        const bool empty = span.first > span.last, at_end = random.chance(60);
        const int first = group().pixel_pairs ? span.first & ~1 : span.first;
        const int last = group().pixel_pairs ? span.last | 1 : span.last;
        const size_t pixels = empty ? 0 : static_cast<size_t>(last - first + 1);
        const size_t bytes = pixels * static_cast<size_t>(group().pixel_bytes);
        const int skew = random.chance(50) ? kFlush : random.between(0, 15);
        const uint64_t seed = random.next();
        for (KernelPlane* line : {&got_, &plain_}) {
            line->lay_out(bytes, 1, 0, at_end, skew);
            Random fill(seed);
            line->fill(fill, fill_pixels);
        }
        line_bytes_ = bytes;
        line_first_ = first;
        if (!group().depth)
            return;
        depth_bytes_ = empty ? 0 : static_cast<size_t>(span.last - span.first + 1) * sizeof(float);
        const int depth_skew = random.chance(50) ? kFlush : 4 * random.between(0, 3);
        for (KernelPlane* depth : {&got_depth_, &plain_depth_}) {
            depth->lay_out(depth_bytes_, 1, 0, at_end, depth_skew);
            Random fill(seed + 1);
            depth->fill(fill, fill_noise);
        }
    }

    void call(SpanKernel* kernel, const SpanTexture& texture, Span span, const KernelPlane& line,
              const KernelPlane& depth) const {
        span.line = line.first() - ptrdiff_t{line_first_} * group().pixel_bytes;
        if (group().depth)
            span.depth = reinterpret_cast<float*>(depth.first()) - span.first;
        call_checked(kernel, texture, span);
    }

    /// Depths around the span's own w, which the plain kernel tells.
    void lay_out_depths(Random& random, SpanKernel* plain, const SpanTexture& texture, const Span& span) {
        const size_t count = depth_bytes_ / sizeof(float);
        const std::vector<float> nowhere(count, -Limits::infinity());
        if (count > 0)
            std::memcpy(plain_depth_.first(), nowhere.data(), depth_bytes_);
        call(plain, texture, span, plain_, plain_depth_);
        std::vector<float> depths(count);
        if (count > 0)
            std::memcpy(depths.data(), plain_depth_.first(), depth_bytes_);
        const int passing = random.pick({0, 50, 50, 50, 100});
        for (float& depth : depths) {
            switch (random.below(12)) {
                case 0: break;
                case 1: depth = std::nextafter(depth, Limits::infinity()); break;
                case 2: depth = std::nextafter(depth, -Limits::infinity()); break;
                case 3: depth = any_float(random); break;
                default: depth += random.chance(passing) ? -1.0f : 1.0f;
            }
        }
        for (const KernelPlane* line : {&got_depth_, &plain_depth_}) {
            if (count > 0)
                std::memcpy(line->first(), depths.data(), depth_bytes_);
        }
        if (line_bytes_ > 0)
            std::memcpy(plain_.first(), plain_.line_before(0), line_bytes_);
    }

    /// Nothing but the plain kernel's pixels has changed.
    static void compare(const KernelPlane& got, const KernelPlane& plain, size_t bytes, const std::string& context) {
        std::vector<uint8_t> want = got.before(), plain_want = plain.before();
        if (bytes > 0) {
            std::memcpy(got.line_in(want, 0), plain.first(), bytes);
            std::memcpy(plain.line_in(plain_want, 0), plain.first(), bytes);
        }
        ASSERT_EQ(plain.difference(plain_want), "") << "plain, " << context;
        ASSERT_EQ(got.difference(want), "") << context;
    }

    TextureMemory texture_;
    KernelPlane got_, plain_, got_depth_, plain_depth_;
    size_t line_bytes_ = 0, depth_bytes_ = 0;
    int line_first_ = 0;
};

TEST_P(SpanKernelsTest, AreThePlainOnes) {
    const UseTables use(set().needs);
    const auto& kernels = set().kernels->kernel[group().group];
    const auto& plain_kernels = kSpansPlain.kernel[group().group];
    for (int filter = 0; filter < kSpanFilters; ++filter) {
        EXPECT_EQ(kernels[filter] != nullptr, filter < group().vector_filters) << filter;
        EXPECT_NE(kernels[filter], plain_kernels[filter]) << filter;
    }
    ASSERT_FALSE(HasFailure());
    for (int round = 0; round < rounds(group().vector_filters == kSpanFilters ? 2400 : 800); ++round) {
        Random random(round_seed(round));
        const int filter = random.between(0, group().vector_filters - 1);
        texture_.lay_out(random, group(), filter);
        const SpanTexture texture = texture_.texture();
        Span span{};
        lay_out_pixels(random, span);
        lay_out_positions(random, group(), texture_, span);
        span.color = random.chance(20) ? random.pick({0u, 0xffffffffu, 0xff00ff00u}) : random.below(UINT32_MAX);
        span.later_texels = static_cast<ptrdiff_t>(random.chance(50) ? 0 : random.next());
        span.later_pixels = static_cast<ptrdiff_t>(random.chance(50) ? 0 : random.next());
        lay_out_lines(random, span);
        const std::string context = described(group(), filter, texture_, span) + how_to_repeat(random);
        const FloatScope scope;
        if (group().depth)
            lay_out_depths(random, plain_kernels[filter], texture, span);
        call(plain_kernels[filter], texture, span, plain_, plain_depth_);
        call(kernels[filter], texture, span, got_, got_depth_);
        compare(got_, plain_, line_bytes_, context);
        if (group().depth)
            compare(got_depth_, plain_depth_, depth_bytes_, context);
        if (HasFailure())
            return;
    }
}

// Offsets of more than 31 bits are left to the plain kernel, which reads nothing of a line that weighs nothing. So one
// line of memory does.
TEST_P(SpanKernelsTest, LeaveWhatOffsetsDoNotReach) {
    const UseTables use(set().needs);
    for (int filter = 0; filter < std::min(group().vector_filters, 1 + kColumnClassCount); ++filter) {
        Random random(round_seed(filter));
        const int columns = 16, rows = 3;
        const int margin = filter > 0 ? kColumnClasses[filter - 1].margin : 0;
        FencedPages pages(64);
        fill_noise(random, pages.bytes());
        const SpanTexture texture = {
            .pixels = place(pages, columns * static_cast<size_t>(group().texel_bytes), true, kFlush),
            .pitch = 1 << 30,
            .columns = columns,
            .rows = rows,
            .u_max = static_cast<float>((columns - 1) * kTexel - margin),
            .v_max = (rows - 1) * kTexel - 16};
        Span span{};
        span.first = 3;
        span.last = 40;
        span.du = 20000;
        span.v_start = -1;
        span.w_start = 1;
        lay_out_lines(random, span);
        const FloatScope scope;
        if (group().depth)
            lay_out_depths(random, kSpansPlain.kernel[group().group][filter], texture, span);
        call(kSpansPlain.kernel[group().group][filter], texture, span, plain_, plain_depth_);
        call(set().kernels->kernel[group().group][filter], texture, span, got_, got_depth_);
        compare(got_, plain_, line_bytes_, std::string(group().name) + " filter " + std::to_string(filter));
    }
}

INSTANTIATE_TEST_SUITE_P(, SpanKernelsTest, testing::Combine(testing::ValuesIn(kSets), testing::ValuesIn(kGroups)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) + "_" + std::get<1>(info.param).name;
                         });

// ---------------------------------------------------------------- worked out by hand

constexpr float kHalfTexel = 32768, kOneTexel = 65536;

/// A plain kernel's call on small memory.
struct PlainCase {
    std::vector<uint8_t> texels;
    int pitch = 0, columns = 0, rows = 0;
    float u_max = 0, v_max = 0;
    std::vector<uint8_t> line;
    Span span{};
    std::vector<float> depth = {};

    std::vector<int> draw(SpanGroup group, int filter) {
        span.line = line.data();
        span.depth = depth.data();
        const FloatScope scope;
        kSpansPlain.kernel[group][filter]({texels.data(), pitch, columns, rows, u_max, v_max}, span);
        return {line.begin(), line.end()};
    }
};

/// Two equal lines of RGBQ texels whose bytes are value, 0, 255 - value, 9.
PlainCase rgbq_line(std::initializer_list<int> values, int margin) {
    PlainCase made;
    for (int copy = 0; copy < 2; ++copy) {
        for (const int value : values) {
            for (const int byte : {value, 0, 255 - value, 9})
                made.texels.push_back(static_cast<uint8_t>(byte));
        }
    }
    made.columns = static_cast<int>(values.size());
    made.pitch = 4 * made.columns;
    made.rows = 2;
    made.u_max = static_cast<float>((made.columns - 1) * kTexel - margin);
    made.line.assign(16, 77);
    return made;
}

/// Byte 0 of the one pixel that lies at u.
int first_byte_at(PlainCase made, SpanGroup group, int filter, float u, float v = 0) {
    made.span.u_start = u;
    made.span.v_start = v;
    made.span.w_start = 1;
    return made.draw(group, filter)[0];
}

TEST(PlainSpans, NearestIsTheTexelThatHoldsThePlace) {
    const PlainCase made = rgbq_line({10, 20, 30}, 0);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 0, 0), 10);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 0, 65535.99f), 10);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 0, 65536), 20);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 0, 2 * 65536), 30);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 0, 1e30f), 30);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 0, Limits::infinity()), 30);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 0, -65536), 10);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 0, -Limits::infinity()), 10);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 0, Limits::quiet_NaN()), 10);
}

TEST(PlainSpans, WritePixelsFirstToLast) {
    PlainCase made = rgbq_line({10, 20, 30}, 0);
    made.span.du = kOneTexel;
    made.span.first = 1;
    made.span.last = 2;
    EXPECT_EQ(made.draw(kSpanRgbqAffine, 0),
              (std::vector{77, 77, 77, 77, 20, 0, 235, 9, 30, 0, 225, 9, 77, 77, 77, 77}));
    made.line.assign(16, 77);
    made.span.first = 3;
    EXPECT_EQ(made.draw(kSpanRgbqAffine, 0), std::vector(16, 77));
}

TEST(PlainSpans, EachOperationRoundsToSinglePrecision) {
    // 3 * 8388609 = 25165827 becomes 25165828: less 25100292 that is a whole texel, not 65535.
    PlainCase made = rgbq_line({10, 20, 30}, 0);
    made.span.first = made.span.last = 3;
    made.span.du = 8388609;
    made.span.u_start = -25100292;
    EXPECT_EQ(made.draw(kSpanRgbqAffine, 0)[12], 20);

    // 1 / 41 is rounded down: 41 texels times that lie before the first.
    made = rgbq_line({10, 20, 30}, 0);
    made.span.u_start = 41 * kOneTexel;
    made.span.w_start = 41;
    EXPECT_EQ(made.draw(kSpanRgbqPersp, 0)[0], 10);
}

TEST(PlainSpans, PerspectiveDividesByWAndThenAddsTheOffset) {
    PlainCase made = rgbq_line({10, 20, 30, 40, 50}, 0);
    made.span.last = 3;
    made.span.u_start = 2 * kOneTexel;
    made.span.dw = -0.25f;
    made.span.w_start = 1;
    made.span.u_off = -kOneTexel;
    // 2 / 1, 2 / 0.75, 2 / 0.5, 2 / 0.25, less 1
    const std::vector<int> line = made.draw(kSpanRgbqPersp, 0);
    EXPECT_EQ((std::vector{line[0], line[4], line[8], line[12]}), (std::vector{20, 20, 40, 50}));
}

TEST(PlainSpans, PlacesCountTo128thsOfATexel) {
    const PlainCase made = rgbq_line({0, 255, 10, 11}, 16);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 1, 511), 0);
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 1, 512), 2);      // 255 / 128
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 1, 1024), 4);     // 3.98
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 1, 65535), 253);  // 127 * 255 / 128 = 253.01
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 1, 163840), 11);  // 10.5
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 1, 163328), 10);  // 10.492
    EXPECT_EQ(first_byte_at(made, kSpanRgbqAffine, 1, 1e9f), 11);    // 127 parts of the last texel
}

TEST(PlainSpans, BoxesAverageColumns) {
    EXPECT_EQ(first_byte_at(rgbq_line({0, 100, 200}, 65552), kSpanRgbqAffine, 2, 0), 50);
    EXPECT_EQ(first_byte_at(rgbq_line({0, 100, 200, 0}, 65552), kSpanRgbqAffine, 2, kHalfTexel), 100);
    EXPECT_EQ(first_byte_at(rgbq_line({0, 30, 90, 200}, 131088), kSpanRgbqAffine, 3, 0), 40);
    EXPECT_EQ(first_byte_at(rgbq_line({0, 30, 90, 200, 0}, 131088), kSpanRgbqAffine, 3, kHalfTexel), 73);  // 220 / 3
    EXPECT_EQ(first_byte_at(rgbq_line({0, 30, 90, 201, 0}, 196624), kSpanRgbqAffine, 4, 0), 80);           // 80.25
}

/// Byte 0 of column c is 16c, byte 1 of line r 32r, in an RGBQ texture of 16 x 8.
PlainCase ramps() {
    PlainCase made;
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 16; ++x) {
            for (const int byte : {16 * x, 32 * y, 0, 255})
                made.texels.push_back(static_cast<uint8_t>(byte));
        }
    }
    made.pitch = 64;
    made.columns = 16;
    made.rows = 8;
    made.line.assign(4, 77);
    return made;
}

std::vector<int> pixel_of_ramps(int filter, float u, float v) {
    PlainCase made = ramps();
    const int row_class = (filter - 1) / kColumnClassCount, column_class = (filter - 1) % kColumnClassCount;
    made.u_max = static_cast<float>(15 * kTexel - kColumnClasses[column_class].margin);
    made.v_max = static_cast<float>(7 * kTexel - kRowClasses[row_class].margin);
    made.span.u_start = u;
    made.span.v_start = v;
    return made.draw(kSpanRgbqAffine, filter);
}

TEST(PlainSpans, BoxOfOneAndAHalfLines) {
    EXPECT_EQ(pixel_of_ramps(6, 0, 0), (std::vector{0, 11, 0, 255}));                   // 32 * 64 / 192 = 10.67
    EXPECT_EQ(pixel_of_ramps(6, 0, kHalfTexel), (std::vector{0, 21, 0, 255}));          // 32 * 128 / 192 = 21.33
    EXPECT_EQ(pixel_of_ramps(6, kHalfTexel, 100 * 512), (std::vector{8, 33, 0, 255}));  // (128 + 2 * 36) / 6 = 33.33
    EXPECT_EQ(pixel_of_ramps(6, 1e9f, 1e9f), (std::vector{240, 213, 0, 255}));          // 63/128: 65, 127 of 192
    EXPECT_EQ(pixel_of_ramps(6, 13 * kOneTexel + 94 * 512, 0), (std::vector{220, 11, 0, 255}));
}

TEST(PlainSpans, BoxOfEightColumnsAndFourLines) {
    EXPECT_EQ(pixel_of_ramps(20, 0, 0), (std::vector{56, 48, 0, 255}));
    EXPECT_EQ(pixel_of_ramps(20, 3 * 512, 512), (std::vector{56, 48, 0, 255}));      // 56.375, 48.25
    EXPECT_EQ(pixel_of_ramps(20, 4 * 512, 2 * 512), (std::vector{57, 49, 0, 255}));  // 56.5, 48.5
    EXPECT_EQ(pixel_of_ramps(20, kHalfTexel, kHalfTexel), (std::vector{64, 64, 0, 255}));
    EXPECT_EQ(pixel_of_ramps(20, 1e9f, 1e9f), (std::vector{184, 176, 0, 255}));  // 183.875, 175.75
}

/// Y0 U Y1 V of three pairs, twice.
PlainCase yuy2_texture(int margin) {
    PlainCase made;
    for (int copy = 0; copy < 2; ++copy) {
        for (const int byte : {10, 100, 20, 200, 30, 110, 40, 220, 50, 150, 60, 250})
            made.texels.push_back(static_cast<uint8_t>(byte));
    }
    made.pitch = 12;
    made.columns = 6;
    made.rows = 2;
    made.u_max = static_cast<float>(5 * kTexel - margin);
    made.line.assign(8, 77);
    return made;
}

TEST(PlainSpans, AnEvenPixelWritesItsPairsChroma) {
    PlainCase made = yuy2_texture(0);
    made.span.du = kOneTexel;
    made.span.u_start = kOneTexel;
    made.span.last = 3;
    EXPECT_EQ(made.draw(kSpanYuy2Affine, 0), (std::vector{20, 100, 30, 200, 40, 110, 50, 220}));
    made.line.assign(8, 77);
    made.span.first = 1;
    made.span.last = 2;
    EXPECT_EQ(made.draw(kSpanYuy2Affine, 0), (std::vector{77, 77, 30, 77, 40, 110, 77, 220}));
}

TEST(PlainSpans, ATexelWeighsAsMuchInChromaAsInLuma) {
    PlainCase made = yuy2_texture(16);
    made.span.u_start = kHalfTexel;
    EXPECT_EQ(made.draw(kSpanYuy2Affine, 1), (std::vector{15, 100, 77, 200, 77, 77, 77, 77}));
    made.span.u_start = kOneTexel + kHalfTexel / 2;
    EXPECT_EQ(made.draw(kSpanYuy2Affine, 1), (std::vector{23, 103, 77, 205, 77, 77, 77, 77}));  // 22.5, 102.5, 205
    // Columns 1 to 4, of which the outer ones weigh half: one half of pair 0, all of pair 1, one half of pair 2.
    made = yuy2_texture(131088);
    made.span.u_start = kOneTexel + kHalfTexel;
    EXPECT_EQ(made.draw(kSpanYuy2Affine, 3), (std::vector{35, 115, 77, 222, 77, 77, 77, 77}));  // 35, 115, 221.67
}

uint16_t weight_of(std::initializer_list<uint16_t> words, int filter, float u) {
    PlainCase made;
    made.columns = static_cast<int>(words.size());
    made.rows = 2;
    made.pitch = 2 * made.columns;
    for (int copy = 0; copy < 2; ++copy) {
        for (const uint16_t word : words) {
            made.texels.push_back(static_cast<uint8_t>(word));
            made.texels.push_back(static_cast<uint8_t>(word >> 8));
        }
    }
    made.u_max = static_cast<float>((made.columns - 1) * kTexel - 16);
    made.span.u_start = u;
    made.line.assign(2, 77);
    const std::vector<int> line = made.draw(kSpanPwrwAffine, filter);
    return static_cast<uint16_t>(line[0] | line[1] << 8);
}

TEST(PlainSpans, WeightsAreWholeWords) {
    EXPECT_EQ(weight_of({1, 4097, 3}, 0, kOneTexel), 4097);
    EXPECT_EQ(weight_of({0, 65535, 0}, 1, kHalfTexel), 32768);  // 32767.5
    EXPECT_EQ(weight_of({65535, 65535, 65535}, 1, 512), 65535);
    EXPECT_EQ(weight_of({4096, 0, 0}, 1, 512), 4064);
    EXPECT_EQ(weight_of({0, 63, 0}, 1, 512), 0);  // 63 / 128
    EXPECT_EQ(weight_of({0, 64, 0}, 1, 512), 1);
}

/// What four bytes, a pixel or a pair, become under a tint of the same strength everywhere.
std::vector<int> tinted(SpanGroup group, uint8_t byte, uint32_t color, uint8_t strength, int first = 0) {
    PlainCase made;
    made.texels.assign(4, strength);
    made.columns = made.rows = made.pitch = 2;
    made.u_max = made.v_max = kOneTexel;
    made.line.assign(4, byte);
    made.span.first = first;
    made.span.last = group == kSpanA8TintRgbq ? 0 : 1;
    made.span.color = color;
    made.span.w_start = 1;
    return made.draw(group, 0);
}

TEST(PlainSpans, ATintOfRgbqReachesItsColorAndLeavesTheFourthByte) {
    EXPECT_EQ(tinted(kSpanA8TintRgbq, 100, 0x00c80aff, 255), (std::vector{255, 10, 200, 100}));
    EXPECT_EQ(tinted(kSpanA8TintRgbq, 100, 0xffc80aff, 0), (std::vector{100, 100, 100, 100}));
    EXPECT_EQ(tinted(kSpanA8TintRgbq, 100, 0xffc80064, 128), (std::vector{100, 49, 150, 100}));  // 49.8, 150.2
    EXPECT_EQ(tinted(kSpanA8TintRgbq, 255, 0x00000000, 1), (std::vector{254, 254, 254, 255}));
}

TEST(PlainSpans, ATintOfYuy2FallsShortOfItsColor) {
    EXPECT_EQ(tinted(kSpanA8TintYuy2, 100, 0x00c80aff, 255), (std::vector{199, 9, 199, 254}));
    EXPECT_EQ(tinted(kSpanA8TintYuy2, 200, 0xff000000, 0), (std::vector{199, 199, 199, 199}));
    EXPECT_EQ(tinted(kSpanA8TintYuy2, 100, 0x00c86400, 128), (std::vector{149, 99, 149, 49}));
    EXPECT_EQ(tinted(kSpanA8TintYuy2, 100, 0x00c80aff, 255, 1), (std::vector{100, 100, 199, 100}));
}

TEST(PlainSpans, AStrengthIsSampledBetweenTexels) {
    PlainCase made;
    made.texels = {0, 255, 0, 255};
    made.columns = made.rows = made.pitch = 2;
    made.u_max = made.v_max = kOneTexel;
    made.line = {0, 0, 0, 0};
    made.span.u_start = kHalfTexel;
    made.span.w_start = 1;
    made.span.color = 0xffffff;
    EXPECT_EQ(made.draw(kSpanA8TintRgbq, 0), (std::vector{128, 128, 128, 0}));  // 127.5
    made.line = {0, 0, 0, 0};
    made.span.u_start = 1e9f;  // the last texel
    EXPECT_EQ(made.draw(kSpanA8TintRgbq, 0), (std::vector{255, 255, 255, 0}));
}

TEST(PlainSpans, OnlyNearerPixelsAreDrawn) {
    PlainCase made = rgbq_line({10, 10, 10}, 0);
    made.line.assign(20, 77);
    made.depth = {0, 10, Limits::quiet_NaN(), 1.25f, -Limits::infinity()};
    made.span.last = 4;
    made.span.dw = 0.25f;
    made.span.w_start = 0.5f;
    const std::vector<int> line = made.draw(kSpanRgbqDepth, 0);
    EXPECT_EQ((std::vector{line[0], line[4], line[8], line[12], line[16]}), (std::vector{10, 77, 77, 77, 10}));
    EXPECT_EQ(made.depth[0], 0.5f);
    EXPECT_EQ(made.depth[1], 10);
    EXPECT_TRUE(std::isnan(made.depth[2]));
    EXPECT_EQ(made.depth[3], 1.25f);
    EXPECT_EQ(made.depth[4], 1.5f);
}

TEST(PlainSpans, AHiddenEvenPixelKeepsItsPairsChroma) {
    PlainCase made = yuy2_texture(0);
    made.depth = {2, 0, 0, 2};
    made.span.last = 3;
    made.span.w_start = 1;
    EXPECT_EQ(made.draw(kSpanYuy2Depth, 0), (std::vector{77, 77, 10, 77, 10, 100, 77, 200}));
}

TEST(PlainSpans, DepthIsSummedUpFromTheFirstPixel) {
    PlainCase made = rgbq_line({10, 10, 10}, 0);
    made.line.assign(44, 77);
    made.depth.assign(11, -1.0f);
    made.span.last = 10;
    made.span.dw = 0.1f;
    made.draw(kSpanRgbqDepth, 0);
    EXPECT_EQ(std::bit_cast<uint32_t>(made.depth[10]), 0x3f800001u);  // ten additions
    made.depth.assign(11, -1.0f);
    made.span.first = 10;
    made.draw(kSpanRgbqDepth, 0);
    EXPECT_EQ(made.depth[10], 1.0f);
}

}  // namespace
}  // namespace zepbmp::test
