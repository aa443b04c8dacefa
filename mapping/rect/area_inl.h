/// \file
/// Area resampling, written once over a lane type (simd/lanes.md) and included by one file per instruction set.
/// Everything here is local to the including file.
#pragma once

#include <cstddef>
#include <cstdint>

#include "mapping/rect/area_columns_inl.h"
#include "mapping/rect/area_lines_inl.h"
#include "mapping/rect/area_plan_inl.h"

namespace zepbmp {
namespace {

/// Plan and blocks agree on the pixels of a register of bytes.
template <class L, class Format>
constexpr int kBlockPixels = L::kBytes / Format::kBytes;

template <class L>
void plan_rgb8(const AreaColumns& c, AreaScratch& s) {
    if (choose_way<L>(c.spans[0].first, columns_end(c.spans, c.count), reach_of<L, 1>(c.spans, c.count), s))
        make_plan<L, 1, kBlockPixels<L, Rgb8>>(c.spans, c.count, c.inner_weight, s.first, s.pairs, s.pixels);
    L::finish();
}

template <class L>
void plan_rgbq(const AreaColumns& c, AreaScratch& s) {
    if (choose_way<L>(c.spans[0].first, columns_end(c.spans, c.count), reach_of<L, 2>(c.spans, c.count), s))
        make_plan<L, 2, kBlockPixels<L, Rgbq>>(c.spans, c.count, c.inner_weight, s.first, s.pairs, s.pixels);
    L::finish();
}

template <class L>
void plan_yuy2(const AreaColumns& c, AreaScratch& s) {
    const int32_t pairs = c.count / 2;
    const Reach luma = reach_of<L, 1>(c.spans, c.count), chroma = reach_of<L, 2>(c.pair_spans, pairs);
    const Reach both = {luma.columns > chroma.columns ? luma.columns : chroma.columns,
                        luma.words > chroma.words ? luma.words : chroma.words};
    if (choose_way<L>(2 * c.pair_spans[0].first, 2 * columns_end(c.pair_spans, pairs), both, s)) {
        make_plan<L, 1, kBlockPixels<L, Yuy2>>(c.spans, c.count, c.inner_weight, s.first, s.pairs, s.pixels);
        make_plan<L, 2, kBlockPixels<L, Yuy2> / 2>(c.pair_spans, pairs, c.inner_pair_weight, s.first / 2, s.pairs,
                                                   s.pair_pixels);
    }
    L::finish();
}

template <class L, class Format, bool kLow>
void draw_planned(uint8_t* dst, int32_t count, const AreaScratch& s) {
    switch (s.pairs) {
        case 1: return draw_columns<L, Format, Way<1, false, kLow>>(dst, count, s);
        case 2:
            if constexpr (L::kWideWindows)
                if (s.wide)
                    return draw_columns<L, Format, Way<2, true, kLow>>(dst, count, s);
            return draw_columns<L, Format, Way<2, false, kLow>>(dst, count, s);
        default: return draw_columns<L, Format, Way<3, L::kWideWindows, kLow>>(dst, count, s);
    }
}

template <class L, class Format>
void draw(uint8_t* dst, const AreaLines& lines, const AreaColumns& columns, AreaScratch& s,
          AreaKernels::Draw* one_by_one) {
    if (s.pairs == 0)
        return one_by_one(dst, lines, columns, s);
    if (sum_span<L, typename Format::Lines>(lines, ptrdiff_t{s.first} * Format::kBytes,
                                            ptrdiff_t{s.columns} * Format::kBytes, s))
        draw_planned<L, Format, true>(dst, columns.count, s);
    else
        draw_planned<L, Format, false>(dst, columns.count, s);
    L::finish();
}

template <class L>
void rgbq(uint8_t* dst, const AreaLines& lines, const AreaColumns& columns, AreaScratch& scratch) {
    draw<L, Rgbq>(dst, lines, columns, scratch, kAreaPlain.rgbq);
}
template <class L>
void yuy2(uint8_t* dst, const AreaLines& lines, const AreaColumns& columns, AreaScratch& scratch) {
    draw<L, Yuy2>(dst, lines, columns, scratch, kAreaPlain.yuy2);
}
template <class L>
void rgb8(uint8_t* dst, const AreaLines& lines, const AreaColumns& columns, AreaScratch& scratch) {
    draw<L, Rgb8>(dst, lines, columns, scratch, kAreaPlain.rgb8);
}

template <class L>
constexpr AreaKernels area_set() {
    return {
        .plan_rgbq = plan_rgbq<L>,
        .plan_yuy2 = plan_yuy2<L>,
        .plan_rgb8 = plan_rgb8<L>,
        .rgbq = rgbq<L>,
        .yuy2 = yuy2<L>,
        .rgb8 = rgb8<L>,
    };
}

}  // namespace
}  // namespace zepbmp
