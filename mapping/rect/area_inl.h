/// \file
/// Area resampling, written once over a lane type (simd/lanes.md) and included by one file per instruction set.
/// Everything here is local to the including file.
#pragma once

#include <cstddef>
#include <cstdint>

#include "mapping/rect/area_columns_inl.h"
#include "mapping/rect/area_errands_inl.h"
#include "mapping/rect/area_half_inl.h"
#include "mapping/rect/area_lines_inl.h"
#include "mapping/rect/area_plan_inl.h"

namespace zepbmp {
namespace {

template <class L, class Format>
void plan_pixels(const AreaColumns& c, AreaScratch& s) {
    constexpr int kPixels = L::kBytes / Format::kBytes;
    choose_way<L, kPixels>(c.spans[0].first, columns_end(c.spans, c.count), c.count, reach_of<L>(c.spans, c.count), s);
    if (s.way != AreaWay::kOneByOne)
        make_plan<L, kPixels>(c.spans, c.count, c.inner_weight, s.first, s, s.pixels, nullptr);
    s.halves = s.way == AreaWay::kHalfScale && are_halves(c.spans, c.count, kColumnUnits);
    L::finish();
}

template <class L>
void plan_yuy2(const AreaColumns& c, AreaScratch& s) {
    constexpr int kPixels = L::kBytes / Yuy2::kBytes;
    const int32_t pairs = c.count / 2;
    choose_way<L, kPixels>(2 * c.pair_spans[0].first, 2 * columns_end(c.pair_spans, pairs), c.count,
                           reach_of_both(reach_of<L>(c.spans, c.count), reach_of<L>(c.pair_spans, pairs)), s);
    if (s.way != AreaWay::kOneByOne) {
        make_plan<L, kPixels>(c.spans, c.count, c.inner_weight, s.first, s, s.pixels, nullptr);
        make_plan<L, kPixels / 2>(c.pair_spans, pairs, c.inner_pair_weight, s.first / 2, s, s.pairs, s.more_weights);
    }
    s.halves = s.way == AreaWay::kHalfScale && are_halves(c.spans, c.count, kColumnUnits) &&
               are_halves(c.pair_spans, pairs, 2 * kColumnUnits);
    L::finish();
}

/// The kernel for a way.
template <class L, class Format, bool kMore>
auto columns_drawer(const AreaScratch& s) {
    switch (s.way) {
        case AreaWay::kSameScale: return draw_columns<L, Format, ByScale<L, 1>, kMore>;
        case AreaWay::kHalfScale: return draw_columns<L, Format, ByScale<L, 2>, kMore>;
        case AreaWay::kLookUp:
            if constexpr (L::kLooksUp)
                return s.reach == 2 ? draw_columns<L, Format, ByLookup<L, 2, false>, kMore>
                                    : draw_columns<L, Format, ByLookup<L, 3, false>, kMore>;
            [[fallthrough]];
        case AreaWay::kLookUpOneWindow:
            if constexpr (L::kLooksUp)
                return s.reach == 2 ? draw_columns<L, Format, ByLookup<L, 2, true>, kMore>
                                    : draw_columns<L, Format, ByLookup<L, 3, true>, kMore>;
            [[fallthrough]];
        default:
            return blocks_of(s) == 1 ? draw_columns<L, Format, ByBlocks<L, 1>, kMore>
                                     : draw_columns<L, Format, ByBlocks<L, 0>, kMore>;
    }
}

/// kSampleZero times the weights of a pixel that is whole across.
uint32_t total_of(const AreaLines& lines) {
    return static_cast<uint32_t>(units_of(lines.span, lines.inner_weight)) * (kColumnUnits * kSampleZero);
}

template <class L, class Format>
void draw(const AreaTarget& target, const AreaLines& lines, const AreaColumns& columns, AreaScratch& s,
          AreaKernels::Draw* one_by_one) {
    if (s.way == AreaWay::kOneByOne)
        return one_by_one(target, lines, columns, s);
    const ptrdiff_t offset = ptrdiff_t{s.first} * Format::kBytes, bytes = ptrdiff_t{s.columns} * Format::kBytes;
    const ptrdiff_t column_steps = ptrdiff_t{columns.count} * Format::kBytes / L::kBytes;
    const bool halves = s.halves && are_halves(lines);
    const ptrdiff_t line_steps = halves ? 0 : (bytes + kStepBytes - 1) / kStepBytes * rounds_of(lines);
    Errands<L> errands(lines, offset, bytes, target, columns.count, line_steps + column_steps);
    if (halves) {
        draw_halves<L, Format>(target, lines, columns.count, errands, s);
    } else {
        sum_span<L, typename Format::Lines>(lines, offset, bytes, errands, s);
        const auto draw_all = Format::kPairs && s.has_more ? columns_drawer<L, Format, Format::kPairs>(s)
                                                           : columns_drawer<L, Format, false>(s);
        draw_all(target, columns.count, total_of(lines), errands, s);
    }
    errands.finish();
    L::finish();
}

template <class L>
void rgbq(const AreaTarget& target, const AreaLines& lines, const AreaColumns& columns, AreaScratch& scratch) {
    draw<L, Rgbq>(target, lines, columns, scratch, kAreaPlain.rgbq);
}
template <class L>
void yuy2(const AreaTarget& target, const AreaLines& lines, const AreaColumns& columns, AreaScratch& scratch) {
    draw<L, Yuy2>(target, lines, columns, scratch, kAreaPlain.yuy2);
}
template <class L>
void rgb8(const AreaTarget& target, const AreaLines& lines, const AreaColumns& columns, AreaScratch& scratch) {
    draw<L, Rgb8>(target, lines, columns, scratch, kAreaPlain.rgb8);
}

template <class L>
constexpr AreaKernels area_set() {
    return {
        .plan_rgbq = plan_pixels<L, Rgbq>,
        .plan_yuy2 = plan_yuy2<L>,
        .plan_rgb8 = plan_pixels<L, Rgb8>,
        .rgbq = rgbq<L>,
        .yuy2 = yuy2<L>,
        .rgb8 = rgb8<L>,
    };
}

}  // namespace
}  // namespace zepbmp
