/// \file
/// The selection table of the polygon span kernels: ten groups of 21 filters.
#include "mapping/polygon/span_table.h"

namespace zepbmp {

constinit SpanKernel* span_group[kSpanGroups][kSpanFilters]{};

namespace {

constexpr const SpanSet *plain = &kSpansPlain, *sse2 = &kSpansSse2, *avx2 = &kSpansAvx2;
#if defined(ZEPBMP_HAVE_AVX512)
constexpr const SpanSet* avx512 = &kSpansAvx512;
#else
constexpr const SpanSet* avx512 = nullptr;  // no column of this build
#endif

}  // namespace

// All kernels of a group write the same bytes at every level.
//
// clang-format off
//                      by level                               at level 4, registers of
//   group              0       1       2       3       4      16 bytes 32      64
const SpanRow kSpanRows[kSpanGroups] = {
    {kSpanYuy2Affine,  {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
    {kSpanYuy2Persp,   {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
    {kSpanRgbqAffine,  {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
    {kSpanRgbqPersp,   {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
    {kSpanPwrwAffine,  {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
    {kSpanPwrwPersp,   {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
    {kSpanYuy2Depth,   {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
    {kSpanRgbqDepth,   {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
    {kSpanA8TintYuy2,  {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
    {kSpanA8TintRgbq,  {plain,  plain,  plain,  plain,  sse2,  sse2,    avx2,   avx512}},
};
// clang-format on

void select_spans(const SpanRow (&rows)[kSpanGroups], int column) {
    for (const SpanRow& row : rows) {
        const auto& preferred = row.column[column]->kernel[row.group];
        for (int filter = 0; filter < kSpanFilters; ++filter)
            span_group[row.group][filter] =
                preferred[filter] ? preferred[filter] : kSpansPlain.kernel[row.group][filter];
    }
}

void fill_span_groups(int level, int register_bytes) { select_spans(kSpanRows, kernel_column(level, register_bytes)); }

}  // namespace zepbmp
