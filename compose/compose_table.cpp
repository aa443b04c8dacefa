/// \file
/// The selection table of composition.
#include "compose/compose_kernels.h"

namespace zepbmp {

constinit ComposeSlots compose_slot{};
constinit ComposeColorKernel* color_rgbq_form = nullptr;

namespace {

enum KernelSet : uint8_t { plain, mmx, mmxext, sse2, avx2, avx512, kKernelSets };

constexpr const ComposeSlots* kSets[kKernelSets] = {
    &kComposePlain,  &kComposeMmx, &kComposeMmxExt, &kComposeSse2, &kComposeAvx2,
#if defined(ZEPBMP_HAVE_AVX512)
    &kComposeAvx512,
#endif
};

template <class Kernel>
struct Row {
    Kernel* ComposeSlots::*slot;
    KernelSet column[kKernelColumns];
};

using S = ComposeSlots;

// In a row of an "aligned" slot, mmx and mmxext name the kernels of its unaligned twin: only sse2 has kernels of its
// own there.
//
// clang-format off
//                           by level                                   at level 4, registers of
//   slot                    0       1       2       3       4          16 bytes 32      64
constexpr Row<ComposeMixKernel> kMixRows[] = {
    {&S::rgbq_w16,         {plain,  mmx,    mmx,    mmx,    mmx,       sse2,    avx2,   avx512}},
    {&S::rgbq_a8,          {plain,  mmx,    mmx,    mmx,    mmx,       sse2,    avx2,   avx512}},
    {&S::yuy2_w16,         {plain,  mmx,    mmxext, mmxext, mmxext,    sse2,    avx2,   avx512}},
    {&S::yuy2_w16_aligned, {plain,  mmx,    mmxext, mmxext, sse2,      sse2,    avx2,   avx512}},
    {&S::yuy2_a8,          {plain,  mmx,    mmxext, mmxext, mmxext,    sse2,    avx2,   avx512}},
    {&S::yuy2_a8_aligned,  {plain,  mmx,    mmxext, mmxext, sse2,      sse2,    avx2,   avx512}},
};
constexpr Row<ComposeLevelKernel> kLevelRows[] = {
    {&S::level,            {plain,  mmx,    mmx,    mmx,    mmx,       sse2,    avx2,   avx512}},
    {&S::level_aligned,    {plain,  mmx,    mmx,    mmx,    sse2,      sse2,    avx2,   avx512}},
};
constexpr Row<ComposeBandKernel> kBandRows[] = {
    {&S::color_rgbq_band,  {plain,  mmx,    mmx,    mmx,    mmx,       sse2,    avx2,   avx512}},
    {&S::color_yuy2_band,  {plain,  mmx,    mmx,    mmx,    mmx,       sse2,    avx2,   avx512}},
};
constexpr Row<ComposeColorKernel> kColorRows[] = {
    {&S::color_rgbq,       {plain,  plain,  plain,  plain,  plain,     plain,   plain,  plain}},
    {&S::color_yuy2,       {plain,  mmx,    mmx,    mmx,    mmx,       sse2,    avx2,   avx512}},
};
// What the one kernel of slot color_rgbq passes its calls on to; all of these write the same bytes.
constexpr KernelSet kColorRgbqForm[kKernelColumns] =
                           {plain,  plain,  plain,  plain,  plain,     plain,   avx2,   avx512};
// clang-format on

template <class Kernel, size_t kRows>
void fill(const Row<Kernel> (&rows)[kRows], int column) {
    for (const Row<Kernel>& row : rows)
        compose_slot.*row.slot = kSets[row.column[column]]->*row.slot;
}

}  // namespace

void fill_compose_slots(int level, int register_bytes) {
    const int column = kernel_column(level, register_bytes);
    fill(kMixRows, column);
    fill(kLevelRows, column);
    fill(kBandRows, column);
    fill(kColorRows, column);
    const KernelSet form = kColorRgbqForm[column];
    color_rgbq_form = form == plain ? color_rgbq_plain : kSets[form]->color_rgbq;
}

}  // namespace zepbmp
