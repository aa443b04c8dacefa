/// \file
/// The area kernels: every set against sums written out here, and against values worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>

#include "mapping/rect/area_kernels.h"
#include "support/cpu_state.h"
#include "support/kernel_planes.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

constexpr int kPixelUnits = 4096;  // across
constexpr int kLineUnits = 2048;
constexpr int kPixelBits = 23;  // of both
constexpr int kMostTestedColumns = 6000;

/// Bytes offset, offset + stride, ... of a line. They belong to its pixels, or to its pairs of pixels.
struct Channel {
    int offset, stride;
    bool of_pairs, rounded;
};

struct Layout {
    const char* name;
    int bytes_per_pixel;
    int together;  ///< pixels that share bytes
    bool has_weights;
    std::vector<Channel> channels;
    void (*AreaKernels::*plan)(const AreaColumns& columns, AreaScratch& scratch);
    AreaKernels::Draw* AreaKernels::*draw;
};

const Layout kLayouts[] = {
    {"Rgbq",
     4,
     1,
     true,
     {{0, 4, false, false}, {1, 4, false, false}, {2, 4, false, false}},
     &AreaKernels::plan_rgbq,
     &AreaKernels::rgbq},
    {"Yuy2",
     2,
     2,
     true,
     {{0, 2, false, true}, {1, 4, true, true}, {3, 4, true, true}},
     &AreaKernels::plan_yuy2,
     &AreaKernels::yuy2},
    {"Rgb8", 1, 1, false, {{0, 1, false, false}}, &AreaKernels::plan_rgb8, &AreaKernels::rgb8},
};

struct Set {
    const char* name;
    Tables needs;
    const AreaKernels* kernels;
};

const Set kSets[] = {
    {"plain", {0, 8}, &kAreaPlain},
    {"sse2", {4, 16}, &kAreaSse2},
    {"avx2", {4, 32}, &kAreaAvx2},
#if defined(ZEPBMP_HAVE_AVX512)
    {"avx512", {4, 64}, &kAreaAvx512},
#endif
};

int64_t quotient_down(int64_t value, int64_t divisor) { return value / divisor - (value % divisor < 0); }

/// What the units from .. from + units - 1 cover of `size` source pixels, each `step` units wide. The first and the
/// last of these have no outer end.
AreaSpan span_over(int64_t from, int64_t units, int64_t step, int64_t size) {
    const int64_t first = std::clamp<int64_t>(quotient_down(from, step), 0, size - 1);
    const int64_t last = std::clamp<int64_t>(quotient_down(from + units - 1, step), 0, size - 1);
    AreaSpan span = {static_cast<int32_t>(first), static_cast<int32_t>(last - first + 1), static_cast<int32_t>(units),
                     0};
    if (last > first) {
        span.first_weight = static_cast<int32_t>((first + 1) * step - from);
        span.last_weight = static_cast<int32_t>(from + units - last * step);
    }
    return span;
}

int weight_at(const AreaSpan& span, int i, int inner_weight) {
    return i == 0 ? span.first_weight : i + 1 == span.count ? span.last_weight : inner_weight;
}

/// A run of whole pixels over a line of the source.
struct PixelRun {
    PixelRun(const Layout& layout, int count, int step, int64_t from, int size) {
        const int64_t units = kPixelUnits;
        for (int i = 0; i < count; ++i)
            spans.push_back(span_over(from + i * units, units, step, size));
        for (int i = 0; layout.together == 2 && i < count / 2; ++i)
            pair_spans.push_back(span_over(from + 2 * i * units, 2 * units, 2 * int64_t{step}, (size + 1) / 2));
        columns = {count, spans.data(), step, layout.together == 2 ? pair_spans.data() : nullptr,
                   layout.together == 2 ? 2 * step : 0};
    }
    PixelRun(const PixelRun&) = delete;
    PixelRun& operator=(const PixelRun&) = delete;

    /// Whether a vector kernel's own memory has room for it.
    bool fits(const Layout& layout, int register_bytes) const {
        const std::vector<AreaSpan>& outer = layout.together == 2 ? pair_spans : spans;
        const int last = outer.back().first + outer.back().count;
        int most = 0;
        for (const std::vector<AreaSpan>& all : {spans, pair_spans}) {
            for (const AreaSpan& span : all)
                most = std::max(most, span.count);
        }
        const int blocks = (most + kAreaBlockColumns - 1) / kAreaBlockColumns;
        const int group = register_bytes / layout.bytes_per_pixel;
        const int padded = (columns.count + group - 1) / group * group;
        return layout.together * (last - outer.front().first) <= kAreaColumns && padded * blocks <= kAreaBlocks;
    }

    std::vector<AreaSpan> spans, pair_spans;
    AreaColumns columns;
};

/// Draws a run: sums of lines, then of columns, in 64 bits.
void model_run(const Layout& layout, uint8_t* dst, const AreaLines& lines, const AreaColumns& columns) {
    const AreaSpan& last = columns.spans[columns.count - 1];
    const int end = (last.first + last.count + layout.together - 1) / layout.together * layout.together;
    std::vector<uint64_t> sums(static_cast<size_t>(end) * static_cast<size_t>(layout.bytes_per_pixel));
    for (int y = 0; y < lines.span.count; ++y) {
        const uint8_t* const line = lines.pixels + lines.pitch * (lines.span.first + y);
        const auto weight = static_cast<uint64_t>(weight_at(lines.span, y, lines.inner_weight));
        for (size_t i = 0; i < sums.size(); ++i)
            sums[i] += weight * line[i];
    }
    for (const Channel& channel : layout.channels) {
        const int bits = channel.of_pairs ? kPixelBits + 1 : kPixelBits;
        for (int i = 0; i < (channel.of_pairs ? columns.count / 2 : columns.count); ++i) {
            const AreaSpan& span = channel.of_pairs ? columns.pair_spans[i] : columns.spans[i];
            const int inner_weight = channel.of_pairs ? columns.inner_pair_weight : columns.inner_weight;
            uint64_t sum = channel.rounded ? uint64_t{1} << (bits - 1) : 0;
            for (int k = 0; k < span.count; ++k)
                sum += static_cast<uint64_t>(weight_at(span, k, inner_weight)) *
                       sums[static_cast<size_t>(channel.offset + channel.stride * (span.first + k))];
            dst[channel.offset + channel.stride * i] = static_cast<uint8_t>(sum >> bits);
        }
    }
}

/// A kernel's memory, a fence right behind it.
class Scratch {
public:
    Scratch() : pages_(sizeof(AreaScratch)) { spoil(); }

    void spoil() const { std::memset(static_cast<void*>(&get()), 0xa5, sizeof(AreaScratch)); }
    AreaScratch& get() const {
        static_assert(sizeof(AreaScratch) % alignof(AreaScratch) == 0);
        return *reinterpret_cast<AreaScratch*>(place(pages_, sizeof(AreaScratch), true, kFlush));
    }

private:
    FencedPages pages_;
};

/// Bytes whose sums are the largest and the smallest, and all between.
void fill_samples(Random& random, std::span<uint8_t> bytes) {
    switch (random.below(10)) {
        case 0: std::fill(bytes.begin(), bytes.end(), uint8_t{0}); break;
        case 1: std::fill(bytes.begin(), bytes.end(), uint8_t{255}); break;
        case 2:
            for (size_t i = 0; i < bytes.size();) {
                const size_t run = std::min<size_t>(1 + random.below(100), bytes.size() - i);
                std::memset(bytes.data() + i, random.pick({0, 255}), run);
                i += run;
            }
            break;
        case 3: fill_pixels(random, bytes); break;
        default: fill_noise(random, bytes);
    }
}

/// Lines between fences: no byte before the first pixel, or none behind the last.
class Source {
public:
    Source() : pages_(kCapacity) {
        Random random(1);
        fill_noise(random, pages_.bytes());
    }

    void lay_out(Random& random, int line_bytes, int wanted_lines) {
        pitch = line_bytes;
        if (random.chance(60))
            pitch = (pitch + 15) / 16 * 16 * random.pick({1, 1, 2});
        lines = static_cast<int>(std::clamp<ptrdiff_t>((kMostBytes - line_bytes) / pitch, 1, wanted_lines));
        const auto extent = static_cast<size_t>(pitch * (lines - 1) + line_bytes);
        const int skew = random.chance(70) ? kFlush : random.between(0, 15);
        pixels = place(pages_, extent, random.chance(60), skew);
        end = pixels + extent;
        fill_samples(random, {pixels, extent});
    }

    uint8_t* pixels = nullptr;
    const uint8_t* end = nullptr;
    ptrdiff_t pitch = 0;
    int lines = 0;

private:
    static constexpr ptrdiff_t kMostBytes = 1 << 17;
    static constexpr size_t kCapacity = size_t{1} << 18;
    FencedPages pages_;
};

/// How wide a source pixel is: reductions by up to 70 and a few stronger ones, enlargements.
int any_step(Random& random, int count) {
    switch (random.below(12)) {
        case 10: return kPixelUnits;
        case 11: return kPixelUnits / 2;
        case 0: return kPixelUnits / random.between(1, 70);
        case 1: return kPixelUnits / random.between(1, 70) + random.between(-1, 1);
        case 2: return random.between(kPixelUnits * 3 / 7, kPixelUnits * 5 / 9);  // 16 pixels over about 32 columns
        case 3: return random.pick({4095, 4096, 4097, 8191, 8192, 8193});
        case 4: return kPixelUnits + random.between(1, 3 * kPixelUnits);
        case 5: return random.chance(80) ? random.between(kPixelUnits, 40 * kPixelUnits) : 1 << 26;
        case 6: return std::max(1, kPixelUnits * count / (kAreaColumns + random.between(-4, 4)));
        case 7: return random.chance(10) ? random.between(1, 60) : random.between(60, kPixelUnits);
        default: {  // by a ratio of small numbers
            const int ratio = random.between(1, 700);
            return std::max(1, kPixelUnits * 10 / ratio);
        }
    }
}

int any_line_step(Random& random) {
    switch (random.below(6)) {
        case 0: return kLineUnits / random.between(1, 300);
        case 1: return kLineUnits >> random.between(0, 11);
        case 2: return random.between(1, 40);
        case 3: return random.between(kLineUnits, 10 * kLineUnits);
        default: return random.between(100, kLineUnits);
    }
}

class AreaKernelsTest : public testing::TestWithParam<std::tuple<Set, Layout>> {
protected:
    void SetUp() override {
        const std::string reason = why_not(set().needs);
        if (!reason.empty())
            GTEST_SKIP() << reason;
        fill_area_kernels(set().needs.level, set().needs.register_bytes);
        ASSERT_EQ(area_kernels.*layout().plan, set().kernels->*layout().plan);
        ASSERT_EQ(area_kernels.*layout().draw, set().kernels->*layout().draw);
    }
    void TearDown() override { fill_kernel_tables(detect_cpu_level()); }

    static const Set& set() { return std::get<0>(GetParam()); }
    static const Layout& layout() { return std::get<1>(GetParam()); }
    static bool is_vector() { return set().kernels != &kAreaPlain; }

    void plan(const PixelRun& run, const std::string& context) {
        call_checked(area_kernels.*layout().plan, run.columns, std::ref(scratch_.get()));
        if (is_vector()) {
            ASSERT_EQ(scratch_.get().way != AreaWay::kOneByOne, run.fits(layout(), set().needs.register_bytes))
                << context;
        }
    }

    void lay_out_target(Random& random, int count) {
        const auto place_in = [&](KernelPlane& plane, int unit_bytes) {
            plane.lay_out(static_cast<size_t>(count) * static_cast<size_t>(unit_bytes), 1, 0, random.chance(60),
                          random.chance(50) ? kFlush : unit_bytes * random.between(0, 15 / unit_bytes));
            plane.fill(random, fill_noise);
        };
        place_in(dst_, layout().bytes_per_pixel);
        place_in(weights_, 2);
    }

    /// Draws with what has been planned; compares pixels, weights and what is around them.
    void check_draw(const PixelRun& run, const AreaLines& lines, bool has_weights, StoreKind store,
                    ptrdiff_t later_pixels, const std::string& context) {
        const AreaTarget target = {dst_.first(), has_weights ? reinterpret_cast<uint16_t*>(weights_.first()) : nullptr,
                                   later_pixels, store};
        call_checked(area_kernels.*layout().draw, target, lines, run.columns, std::ref(scratch_.get()));
        line_kernels.end_stream();
        std::vector<uint8_t> want = dst_.before(), want_weights = weights_.before();
        model_run(layout(), dst_.line_in(want, 0), lines, run.columns);
        if (has_weights) {
            const std::vector<uint16_t> full(static_cast<size_t>(run.columns.count), kPixelUnits);
            std::memcpy(weights_.line_in(want_weights, 0), full.data(), 2 * full.size());
        }
        ASSERT_EQ(dst_.difference(want), "") << context;
        ASSERT_EQ(weights_.difference(want_weights), "") << "weights, " << context;
    }

    /// Lays out a run, a source and a few lines of it.
    void check_any_call(Random& random, int count) {
        const bool halves = random.chance(8);
        const int step = halves ? kPixelUnits / 2 : any_step(random, count);
        count = std::min(count, std::max(2, static_cast<int>(int64_t{kMostTestedColumns} * step / kPixelUnits)));
        count -= count % layout().together;
        const int64_t units = int64_t{kPixelUnits} * count;
        const int64_t column = int64_t{step} * layout().together;
        int64_t from = random.chance(30) ? 0 : random.between(0, 1 << 14) % (30 * column);
        if (random.chance(10))
            from = -random.between(1, 2 * kPixelUnits);
        if (random.chance(20))
            from -= quotient_down(from, step) * step;
        else if (random.chance(30))
            from = quotient_down(from, step) * step;
        const auto touched = static_cast<int>(std::max<int64_t>(1, quotient_down(from + units - 1, step) + 1));
        const int beyond = random.chance(40) ? random.between(0, 80) : 0;
        const int size = random.chance(25) ? std::max(1, touched - random.between(1, 8)) : touched + beyond;
        const PixelRun run(layout(), count, step, from, size);

        const int together = layout().together;
        const int line_bytes = (size + together - 1) / together * together * layout().bytes_per_pixel;
        source_.lay_out(random, line_bytes, random.chance(60) ? random.between(1, 20) : random.between(1, 300));
        if (random.chance(50))
            scratch_.spoil();
        ASSERT_NO_FATAL_FAILURE(plan(run, how_to_repeat(random)));
        note_way();

        for (int i = random.between(1, 3); i > 0; --i) {
            const int all = random.chance(75) ? kLineUnits : random.between(1, kLineUnits);
            const int line_step = halves && random.chance(70) ? kLineUnits / 2 : any_line_step(random);
            const int bottom = line_step * source_.lines;
            int64_t line_from = int64_t{line_step} * random.between(0, source_.lines - 1);
            if (random.chance(25))
                line_from = bottom - all;
            else if (random.chance(40))
                line_from = random.between(random.chance(20) ? -kLineUnits : 0, std::max(0, bottom - kLineUnits));
            const AreaLines lines = {.pixels = source_.pixels,
                                     .pitch = source_.pitch,
                                     .span = span_over(line_from, all, line_step, source_.lines),
                                     .inner_weight = line_step,
                                     .end = source_.end,
                                     .later = random.between(0, source_.lines),
                                     .ahead = random.chance(50) ? 0 : random.between(1, 40)};
            note_halves(lines);
            lay_out_target(random, count);
            std::ostringstream context;
            context << count << " pixels, step " << step << " from " << from << " of " << size << ", pitch "
                    << source_.pitch << ", lines " << lines.span.first << " + " << lines.span.count << " of "
                    << source_.lines << ", weights " << lines.span.first_weight << " " << lines.inner_weight << " "
                    << lines.span.last_weight << how_to_repeat(random);
            ASSERT_NO_FATAL_FAILURE(check_draw(run, lines, layout().has_weights && random.chance(80),
                                               random.chance(50) ? kStoreStreamed : kStoreCached,
                                               random.pick<ptrdiff_t>({0, 64, -64, 4096, 1 << 20}), context.str()));
        }
    }

    void note_way() {
        if (!is_vector())
            return;
        const AreaScratch& scratch = scratch_.get();
        ++ways_[static_cast<size_t>(scratch.way)];
        blocks_ += scratch.way == AreaWay::kBlocks && scratch.reach > kAreaBlockColumns;
        more_weights_ += scratch.has_more;
    }

    void note_halves(const AreaLines& lines) {
        const bool two = lines.span.first_weight == kLineUnits / 2 && lines.span.last_weight == kLineUnits / 2;
        halves_ += is_vector() && scratch_.get().halves && two;
    }

    /// The runs have gone every way that the set has.
    void check_ways() const {
        if (!is_vector())
            return;
        for (const AreaWay way : {AreaWay::kOneByOne, AreaWay::kSameScale, AreaWay::kHalfScale, AreaWay::kLookUp,
                                  AreaWay::kLookUpOneWindow, AreaWay::kBlocks}) {
            const bool looks_up = way == AreaWay::kLookUp || way == AreaWay::kLookUpOneWindow;
            const bool exists = !looks_up || set().needs.register_bytes == 64;
            EXPECT_EQ(ways_[static_cast<size_t>(way)] > 0, exists) << "way " << static_cast<int>(way);
        }
        EXPECT_GT(halves_, 0);
        EXPECT_GT(blocks_, 0);
        EXPECT_EQ(more_weights_ > 0, layout().together == 2);
    }

    Scratch scratch_;
    Source source_;
    KernelPlane dst_, weights_;
    int ways_[6] = {};  ///< runs by AreaWay
    int halves_ = 0, blocks_ = 0, more_weights_ = 0;
};

// Mostly small counts, each of which comes many times; some around the largest one.
TEST_P(AreaKernelsTest, AreTheSums) {
    constexpr int kCalls = 4000;
    const int calls = rounds(kCalls);
    for (int call = 0; call < calls; ++call) {
        Random random(round_seed(call));
        int count = random.between(1, 70);
        if (random.chance(6))
            count = kAreaPixels - random.between(0, 70);
        else if (random.chance(6))
            count = random.between(70, kAreaPixels);
        check_any_call(random, std::max(layout().together, count - count % layout().together));
        if (HasFailure())
            return;
    }
    if (calls >= kCalls)
        check_ways();
}

struct ByHand {
    std::string layout;
    std::vector<uint8_t> lines[2];
    std::vector<uint8_t> drawn;
};

// A quarter of the first line and three of the second. Two pixels, the first of which takes a quarter of its first
// column: 10 20 over 50 60 give 17.5 over 57.5, then 47.5. The pair takes five eighths of its first pair: 10 20 over
// 50 60 give 13.75 over 53.75, then 43.75; 100 104 give 101.5.
const ByHand kByHand[] = {
    {"Rgbq",
     {{10, 0, 255, 1, 20, 0, 255, 2, 30, 1, 255, 3}, {50, 0, 255, 4, 60, 0, 255, 5, 70, 2, 255, 6}},
     {47, 0, 255, 9, 57, 1, 255, 9}},
    {"Yuy2", {{10, 10, 20, 100, 30, 20, 7, 104}, {50, 50, 60, 100, 70, 60, 7, 104}}, {48, 44, 58, 102}},
    {"Rgb8", {{10, 20, 30}, {50, 60, 70}}, {47, 57}},
};

TEST_P(AreaKernelsTest, AreWorkedOutByHand) {
    for (const ByHand& by_hand : kByHand) {
        if (by_hand.layout != layout().name)
            continue;
        const PixelRun run(layout(), 2, 4096, 3072, 3);
        std::vector<uint8_t> source = by_hand.lines[0];
        source.insert(source.end(), by_hand.lines[1].begin(), by_hand.lines[1].end());
        const AreaLines lines = {.pixels = source.data(),
                                 .pitch = static_cast<ptrdiff_t>(by_hand.lines[0].size()),
                                 .span = {0, 2, 512, 1536},
                                 .inner_weight = 2048,
                                 .end = source.data() + source.size(),
                                 .later = 0,
                                 .ahead = 0};
        std::vector<uint8_t> dst(by_hand.drawn.size(), 9);
        ASSERT_NO_FATAL_FAILURE(plan(run, by_hand.layout));
        call_checked(area_kernels.*layout().draw, AreaTarget{dst.data(), nullptr, 0, kStoreCached}, lines, run.columns,
                     std::ref(scratch_.get()));
        EXPECT_EQ(dst, by_hand.drawn);
        return;
    }
    FAIL() << "nothing was worked out for " << layout().name;
}

INSTANTIATE_TEST_SUITE_P(, AreaKernelsTest, testing::Combine(testing::ValuesIn(kSets), testing::ValuesIn(kLayouts)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) + "_" + std::get<1>(info.param).name;
                         });

}  // namespace
}  // namespace zepbmp::test
