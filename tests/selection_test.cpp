/// \file
/// Which kernel stands in which slot, against the tables typed out here.
#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

#include "compose/compose_kernels.h"
#include "core/kernel_tables.h"
#include "core/line_kernels.h"
#include "mapping/polygon/span_table.h"
#include "shapes/shape_kernels.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

constexpr int kSlots = 12;

/// The slots in order, as addresses that can be compared.
std::vector<void (*)()> in_order(const ComposeSlots& s) {
    const auto any = [](auto kernel) { return reinterpret_cast<void (*)()>(kernel); };
    return {any(s.rgbq_w16),        any(s.rgbq_a8),         any(s.yuy2_w16),   any(s.yuy2_w16_aligned),
            any(s.yuy2_a8),         any(s.yuy2_a8_aligned), any(s.level),      any(s.level_aligned),
            any(s.color_rgbq_band), any(s.color_yuy2_band), any(s.color_rgbq), any(s.color_yuy2)};
}

std::vector<void (*)()> filled(int level, int register_bytes) {
    fill_compose_slots(level, register_bytes);
    const auto slots = in_order(compose_slot);
    fill_kernel_tables(detect_cpu_level());
    return slots;
}

// p plain, m MMX, x MMX with the SSE integer extensions, s SSE2; one column a level.
constexpr const char* kSelection[kSlots] = {
    "pmmmm",  //  0 rgbq_w16
    "pmmmm",  //  1 rgbq_a8
    "pmxxx",  //  2 yuy2_w16
    "pmxxs",  //  3 yuy2_w16_aligned
    "pmxxx",  //  4 yuy2_a8
    "pmxxs",  //  5 yuy2_a8_aligned
    "pmmmm",  //  6 level
    "pmmms",  //  7 level_aligned
    "pmmmm",  //  8 color_rgbq_band
    "pmmmm",  //  9 color_yuy2_band
    "ppppp",  // 10 color_rgbq
    "pmmmm",  // 11 color_yuy2
};

const ComposeSlots& set_named(char letter) {
    return letter == 'p' ? kComposePlain : letter == 'm' ? kComposeMmx : letter == 'x' ? kComposeMmxExt : kComposeSse2;
}

TEST(ComposeSelection, IsThePrintedTable) {
    for (int level = 0; level < kCpuLevels; ++level) {
        const auto slots = filled(level, 8);
        for (int slot = 0; slot < kSlots; ++slot)
            EXPECT_EQ(slots[slot], in_order(set_named(kSelection[slot][level]))[slot])
                << "level " << level << " slot " << slot;
    }
}

TEST(ComposeSelection, AlignedSlotsShareTheirTwinsKernelBelowLevel4) {
    for (int level = 0; level <= 3; ++level) {
        const auto slots = filled(level, kWidestRegister);
        EXPECT_EQ(slots[3], slots[2]) << level;
        EXPECT_EQ(slots[5], slots[4]) << level;
        EXPECT_EQ(slots[7], slots[6]) << level;
    }
    const auto slots = filled(4, 8);
    EXPECT_NE(slots[3], slots[2]);
    EXPECT_NE(slots[5], slots[4]);
    EXPECT_NE(slots[7], slots[6]);
}

TEST(ComposeSelection, Slot10IsOneKernelAtEveryLevelAndWidth) {
    const auto kernel = filled(0, 8)[10];
    for (const Tables& tables : all_tables())
        EXPECT_EQ(filled(tables.level, tables.register_bytes)[10], kernel);
}

TEST(ComposeSelection, EveryOtherSlotHasPlainAndVectorKernelsOfItsOwn) {
    const auto plain = filled(0, 8), mmx = filled(1, 8), ext = filled(2, 8);
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_NE(plain[slot], nullptr) << slot;
        EXPECT_EQ(plain[slot] == mmx[slot], slot == 10) << slot;
        EXPECT_EQ(mmx[slot] != ext[slot], slot >= 2 && slot <= 5) << slot;
        EXPECT_EQ(filled(3, 8)[slot], ext[slot]) << slot;
    }
}

TEST(ComposeSelection, WidthsReplaceKernelsAtLevel4Only) {
    for (int level = 0; level <= 3; ++level)
        EXPECT_EQ(filled(level, kWidestRegister), filled(level, 8)) << level;
    if (usable_register_bytes() < 16)
        GTEST_SKIP() << "this machine has no wider registers";
    for (int width = 16; width <= usable_register_bytes(); width *= 2) {
        const auto narrow = filled(4, width / 2), wide = filled(4, width);
        for (int slot = 0; slot < kSlots; ++slot) {
            const bool own_kernel = slot != 10 && !(width == 16 && (slot == 3 || slot == 5 || slot == 7));
            EXPECT_EQ(wide[slot] != narrow[slot], own_kernel) << "slot " << slot << " at " << width;
        }
    }
}

TEST(ComposeSelection, MoreWidthThanThereIsMeansWhatThereIs) {
    EXPECT_EQ(filled(4, 1024), filled(4, usable_register_bytes()));
}

// ---------------------------------------------------------------- lines and shapes

TEST(LineSelection, TakesTheSetOfTheLevel) {
    const LineKernels* const want[] = {&kLinePlain, &kLineMmx, &kLineMmxExt, &kLineMmxExt, &kLineSse2};
    for (int level = 0; level < kCpuLevels; ++level) {
        fill_line_kernels(level, 8);
        EXPECT_EQ(line_kernels.fill[kStoreCached], want[level]->fill[kStoreCached]) << level;
        EXPECT_EQ(line_kernels.fill[kStoreStreamed], want[level]->fill[kStoreStreamed]) << level;
        EXPECT_EQ(line_kernels.copy[kStoreCached], want[level]->copy[kStoreCached]) << level;
        EXPECT_EQ(line_kernels.copy[kStoreStreamed], want[level]->copy[kStoreStreamed]) << level;
        EXPECT_EQ(line_kernels.interpolate[kStoreCached], want[level]->interpolate[kStoreCached]) << level;
        EXPECT_EQ(line_kernels.interpolate[kStoreStreamed], want[level]->interpolate[kStoreStreamed]) << level;
    }
    fill_kernel_tables(detect_cpu_level());
}

TEST(ShapeSelection, IsPlainBelowLevel4) {
    for (int level = 0; level < kCpuLevels; ++level) {
        fill_shape_kernels(level, 8);
        const ShapeKernels& want = level < 4 ? kShapesPlain : kShapesSse2;
        EXPECT_EQ(shape_kernels.add_run, want.add_run) << level;
        EXPECT_EQ(shape_kernels.max_run, want.max_run) << level;
        EXPECT_EQ(shape_kernels.ramp, want.ramp) << level;
    }
    fill_kernel_tables(detect_cpu_level());
}

// ---------------------------------------------------------------- spans

/// A kernel that can be told from every other: only its address counts.
template <int kNumber>
void numbered_span(const SpanTexture&, const Span&) {
    asm volatile("" : : "i"(kNumber));
}

template <int kFirst, int... kNumber>
SpanSet numbered(std::integer_sequence<int, kNumber...>) {
    SpanSet set;
    ((set.kernel[kNumber / kSpanFilters][kNumber % kSpanFilters] = numbered_span<kFirst + kNumber>), ...);
    return set;
}

constexpr auto kAllKernels = std::make_integer_sequence<int, kSpanGroups * kSpanFilters>();

/// Rows that name one of two sets, by turns.
class SpanSelection : public testing::Test {
protected:
    void SetUp() override {
        std::memcpy(before_, span_group, sizeof before_);
        for (int group = 0; group < kSpanGroups; ++group) {
            rows_[group].group = static_cast<SpanGroup>(group);
            for (int column = 0; column < kKernelColumns; ++column)
                rows_[group].column[column] = &sets_[(group + column) % 2];
        }
    }
    void TearDown() override { std::memcpy(span_group, before_, sizeof before_); }

    SpanSet sets_[2] = {numbered<0>(kAllKernels), numbered<1000>(kAllKernels)};
    SpanRow rows_[kSpanGroups];
    SpanKernel* before_[kSpanGroups][kSpanFilters];
};

TEST_F(SpanSelection, CopiesTwentyOneOfEachGroup) {
    ASSERT_EQ(sizeof span_group / sizeof(SpanKernel*), 210u);
    for (int column = 0; column < kKernelColumns; ++column) {
        std::memset(span_group, 0, sizeof span_group);
        select_spans(rows_, column);
        for (int group = 0; group < 10; ++group) {
            for (int filter = 0; filter < 21; ++filter)
                EXPECT_EQ(span_group[group][filter], sets_[(group + column) % 2].kernel[group][filter])
                    << "column " << column << " group " << group << " filter " << filter;
        }
    }
}

TEST_F(SpanSelection, LeavesTheOtherGroupsAlone) {
    for (int only = 0; only < kSpanGroups; ++only) {
        SpanRow rows[kSpanGroups];
        for (SpanRow& row : rows)
            row = rows_[only];
        SpanKernel* const mark = numbered_span<-1>;
        for (auto& group : span_group)
            for (SpanKernel*& cell : group)
                cell = mark;
        select_spans(rows, 4);
        for (int group = 0; group < kSpanGroups; ++group) {
            for (int filter = 0; filter < kSpanFilters; ++filter)
                EXPECT_EQ(span_group[group][filter], group == only ? sets_[only % 2].kernel[only][filter] : mark);
        }
    }
}

TEST_F(SpanSelection, WhatASetLacksIsPlain) {
    sets_[0].kernel[kSpanRgbqPersp][7] = nullptr;
    rows_[kSpanRgbqPersp].column[4] = &sets_[0];
    select_spans(rows_, 4);
    EXPECT_EQ(span_group[kSpanRgbqPersp][7], kSpansPlain.kernel[kSpanRgbqPersp][7]);
    EXPECT_EQ(span_group[kSpanRgbqPersp][8], sets_[0].kernel[kSpanRgbqPersp][8]);
}

TEST_F(SpanSelection, GroupsStandInTheirOrder) {
    EXPECT_EQ(kSpanYuy2Affine, 0);
    EXPECT_EQ(kSpanYuy2Persp, 1);
    EXPECT_EQ(kSpanRgbqAffine, 2);
    EXPECT_EQ(kSpanRgbqPersp, 3);
    EXPECT_EQ(kSpanPwrwAffine, 4);
    EXPECT_EQ(kSpanPwrwPersp, 5);
    EXPECT_EQ(kSpanYuy2Depth, 6);
    EXPECT_EQ(kSpanRgbqDepth, 7);
    EXPECT_EQ(kSpanA8TintYuy2, 8);
    EXPECT_EQ(kSpanA8TintRgbq, 9);
    for (int group = 0; group < kSpanGroups; ++group)
        EXPECT_EQ(kSpanRows[group].group, group);
}

TEST_F(SpanSelection, PlainKernelsAreAllThere) {
    for (const auto& group : kSpansPlain.kernel) {
        for (SpanKernel* const kernel : group)
            EXPECT_NE(kernel, nullptr);
    }
}

TEST_F(SpanSelection, FillTakesTheLibrarysOwnRows) {
    for (int level = 0; level < kCpuLevels; ++level) {
        select_spans(rows_, level);
        fill_span_groups(level, 8);
        for (int group = 0; group < kSpanGroups; ++group) {
            EXPECT_EQ(kSpanRows[group].column[level] == &kSpansPlain, level < 4) << "group " << group;
            for (int filter = 0; filter < kSpanFilters; ++filter) {
                SpanKernel* const kernel = kSpanRows[group].column[level]->kernel[group][filter];
                EXPECT_EQ(span_group[group][filter], kernel ? kernel : kSpansPlain.kernel[group][filter])
                    << group << " " << filter;
            }
        }
    }
}

// ---------------------------------------------------------------- load

/// What the tables hold when main() begins, before any test has filled them anew.
class AsLoaded : public testing::Environment {
public:
    void SetUp() override {
        slots = in_order(compose_slot);
        lines = line_kernels;
        shapes = shape_kernels;
        spans = in_a_row(span_group);
        covers = cover_kernels;
        threshold = stream_threshold_bytes;
    }

    std::vector<void (*)()> slots;
    LineKernels lines;
    ShapeKernels shapes;
    std::vector<SpanKernel*> spans;
    CoverKernels covers;
    size_t threshold = 0;

    template <class Groups>
    static std::vector<SpanKernel*> in_a_row(const Groups& groups) {
        std::vector<SpanKernel*> all;
        for (const auto& group : groups)
            all.insert(all.end(), std::begin(group), std::end(group));
        return all;
    }
};
auto* const as_loaded = static_cast<AsLoaded*>(testing::AddGlobalTestEnvironment(new AsLoaded));

TEST(Load, HasFilledTheTablesForThisMachine) {
    fill_kernel_tables(detect_cpu_level());
    EXPECT_EQ(as_loaded->slots, in_order(compose_slot));
    for (int store = 0; store < kStoreKinds; ++store) {
        EXPECT_EQ(as_loaded->lines.fill[store], line_kernels.fill[store]);
        EXPECT_EQ(as_loaded->lines.copy[store], line_kernels.copy[store]);
        EXPECT_EQ(as_loaded->lines.interpolate[store], line_kernels.interpolate[store]);
    }
    EXPECT_EQ(as_loaded->lines.end_stream, line_kernels.end_stream);
    EXPECT_EQ(as_loaded->lines.prefetch, line_kernels.prefetch);
    EXPECT_EQ(as_loaded->shapes.add_run, shape_kernels.add_run);
    EXPECT_EQ(as_loaded->shapes.max_run, shape_kernels.max_run);
    EXPECT_EQ(as_loaded->shapes.ramp, shape_kernels.ramp);
    EXPECT_EQ(as_loaded->spans, as_loaded->in_a_row(span_group));
    EXPECT_EQ(as_loaded->covers.ramp, cover_kernels.ramp);
    EXPECT_EQ(as_loaded->covers.ends, cover_kernels.ends);
    EXPECT_EQ(as_loaded->covers.blend_rgbq, cover_kernels.blend_rgbq);
    EXPECT_EQ(as_loaded->covers.blend_yuy2, cover_kernels.blend_yuy2);
    EXPECT_EQ(as_loaded->covers.blend_pwrw, cover_kernels.blend_pwrw);
    EXPECT_EQ(as_loaded->covers.paint_rgbq, cover_kernels.paint_rgbq);
    EXPECT_EQ(as_loaded->covers.paint_yuy2, cover_kernels.paint_yuy2);
    EXPECT_EQ(as_loaded->covers.paint_pwrw, cover_kernels.paint_pwrw);
    EXPECT_EQ(as_loaded->covers.paint_a8, cover_kernels.paint_a8);
    EXPECT_EQ(as_loaded->covers.fade_bytes, cover_kernels.fade_bytes);
    EXPECT_EQ(as_loaded->covers.fade_words, cover_kernels.fade_words);
}

TEST(Load, HasSetTheStreamingThreshold) {
    const size_t cache = detect_l2_cache_bytes();
    if (cache) {
        EXPECT_EQ(as_loaded->threshold, cache);
    } else {
        EXPECT_GE(as_loaded->threshold, size_t{64} << 10);
        EXPECT_LE(as_loaded->threshold, size_t{64} << 20);
    }
}

}  // namespace
}  // namespace zepbmp::test
