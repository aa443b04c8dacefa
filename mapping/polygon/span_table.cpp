/// \file
/// The selection table of the polygon span kernels: ten groups of 21 filters, two columns.
#include "mapping/polygon/span_table.h"

namespace zepbmp {

constinit SpanKernel span_group[kSpanGroups][kSpanFilters]{};

// Polygon mapping brings the kernels; until a group has some its cells are null, and no export reaches them.
//
// clang-format off
//   group               levels 0, 1   levels 2, 3, 4
const SpanRow kSpanRows[kSpanGroups] = {
    {kSpanYuy2Affine,  {nullptr,      nullptr}},
    {kSpanYuy2Persp,   {nullptr,      nullptr}},
    {kSpanRgbqAffine,  {nullptr,      nullptr}},
    {kSpanRgbqPersp,   {nullptr,      nullptr}},
    {kSpanPwrwAffine,  {nullptr,      nullptr}},
    {kSpanPwrwPersp,   {nullptr,      nullptr}},
    {kSpanYuy2Depth,   {nullptr,      nullptr}},
    {kSpanRgbqDepth,   {nullptr,      nullptr}},
    {kSpanA8TintYuy2,  {nullptr,      nullptr}},
    {kSpanA8TintRgbq,  {nullptr,      nullptr}},
};
// clang-format on

int span_column(int level) { return level >= kLevelMmxExt ? 1 : 0; }

void select_spans(const SpanRow (&rows)[kSpanGroups], int level) {
    for (const SpanRow& row : rows) {
        const SpanKernel* const from = row.column[span_column(level)];
        for (int filter = 0; filter < kSpanFilters; ++filter)
            span_group[row.group][filter] = from ? from[filter] : nullptr;
    }
}

void fill_span_groups(int level) { select_spans(kSpanRows, level); }

}  // namespace zepbmp
