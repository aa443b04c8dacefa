/// \file
/// The vector span kernels, written once over a texel type (simd/lanes.md) and included by one file per instruction
/// set. Everything here is local to the including file.
///
/// A kernel goes over its span in blocks, each in three passes: where the block's pixels lie on the texture; what the
/// texture has there; into the destination. So a kernel is a projection, a sampler and a writer, and what it needs from
/// memory in the second pass does not wait for the arithmetic of the first.
#pragma once

#include <type_traits>
#include <utility>

#include "mapping/polygon/filters.h"
#include "mapping/polygon/span_kernels.h"
#include "mapping/polygon/span_locate_inl.h"
#include "mapping/polygon/span_sample_inl.h"
#include "mapping/polygon/span_write_inl.h"

namespace zepbmp {
namespace {

/// A kernel.
struct Passes {
    Windows windows;
    int align;        ///< blocks begin with a multiple of it
    int pixel_bytes;  ///< of the destination
    Pass *locate_near, *locate_far, *sample, *write;
};

/// Left to the plain kernel: what the geometry does not serve.
template <class T>
void draw_in_passes(const Passes& passes, SpanKernel* plain, const SpanTexture& texture, const Span& span) {
    if (span.first > span.last)
        return;
    const Geometry geometry = geometry_of(texture, passes.windows);
    if (!geometry.serves)
        return plain(texture, span);
    Pass* const locate = passes.windows.taps_inside && is_near(texture) ? passes.locate_near : passes.locate_far;
    Block block;
    block.pixel_bytes = passes.pixel_bytes;
    for (block.first = span.first & -passes.align; block.first <= span.last; block.first += kSpanBlock) {
        block.count = span.last - block.first < kSpanBlock ? span.last - block.first + 1 : kSpanBlock;
        block.later = reinterpret_cast<uintptr_t>(span.line) + static_cast<uintptr_t>(span.later_pixels) +
                      static_cast<uintptr_t>(ptrdiff_t{block.first} * passes.pixel_bytes);
        locate(texture, geometry, span, block);
        passes.sample(texture, geometry, span, block);
        passes.write(texture, geometry, span, block);
    }
    T::finish();
}

template <class T, SpanGroup kGroup, int kFilter, class Projection, class Sampler, class Writer>
void draw_span(const SpanTexture& texture, const Span& span) {
    constexpr int kTexelsToWindow = Sampler::kWindows.texels_to_window;
    static constexpr Passes kPasses = {
        .windows = Sampler::kWindows,
        .align = Writer::kAlign,
        .pixel_bytes = Writer::kPixelBytes,
        .locate_near = Projection::template locate<T, NearPlacer<T, kTexelsToWindow, Sampler::kWindows.bytes != 0>>,
        .locate_far = Projection::template locate<T, FarPlacer<T, kTexelsToWindow>>,
        .sample = Sampler::template sample<T>,
        .write = Writer::template write<T>,
    };
    draw_in_passes<T>(kPasses, kSpansPlain.kernel[kGroup][kFilter], texture, span);
}

/// The sampler of a box. For one texel of YUY2 four taps are picked out where bytes can be shuffled.
template <class T, class Format, int kColumnBox, int kRowBox>
using SamplerOf = std::conditional_t<kColumnBox == kFractions && kRowBox == kFractions &&
                                         (Format::kTexelsToWindow == 1 || T::kShuffles),
                                     Bilinear<Format>, BoxSampler<Format, kColumnBox, kRowBox>>;

template <class T, SpanGroup kGroup, class Projection, class Writer, class Format, class First, int... kIndex>
constexpr void fill_boxes(SpanSet& set, std::integer_sequence<int, kIndex...>) {
    set.kernel[kGroup][0] = draw_span<T, kGroup, 0, Projection, First, Writer>;
    ((set.kernel[kGroup][1 + kIndex] = draw_span<T, kGroup, 1 + kIndex, Projection,
                                                 SamplerOf<T, Format, kColumnClasses[kIndex % kColumnClassCount].box,
                                                           kRowClasses[kIndex / kColumnClassCount].box>,
                                                 Writer>),
     ...);
}

template <class T>
constexpr SpanSet span_set() {
    constexpr auto boxes = std::make_integer_sequence<int, kSpanFilters - 1>();
    SpanSet set{};
    fill_boxes<T, kSpanYuy2Affine, Affine, WritePairs, Yuy2Texels, NearestPair>(set, boxes);
    fill_boxes<T, kSpanYuy2Persp, Perspective, WritePairs, Yuy2Texels, NearestPair>(set, boxes);
    fill_boxes<T, kSpanYuy2Depth, DepthTested, MergePairs, Yuy2Texels, NearestPair>(set, boxes);
    fill_boxes<T, kSpanRgbqAffine, Affine, WritePixels<4>, RgbqTexels, Nearest<2>>(set, boxes);
    fill_boxes<T, kSpanRgbqPersp, Perspective, WritePixels<4>, RgbqTexels, Nearest<2>>(set, boxes);
    fill_boxes<T, kSpanRgbqDepth, DepthTested, MergePixels, RgbqTexels, Nearest<2>>(set, boxes);
    set.kernel[kSpanPwrwAffine][0] = draw_span<T, kSpanPwrwAffine, 0, Affine, Nearest<1>, WritePixels<2>>;
    set.kernel[kSpanPwrwAffine][1] = draw_span<T, kSpanPwrwAffine, 1, Affine, BilinearWeights, WritePixels<2>>;
    set.kernel[kSpanPwrwPersp][0] = draw_span<T, kSpanPwrwPersp, 0, Perspective, Nearest<1>, WritePixels<2>>;
    set.kernel[kSpanPwrwPersp][1] = draw_span<T, kSpanPwrwPersp, 1, Perspective, BilinearWeights, WritePixels<2>>;
    set.kernel[kSpanA8TintYuy2][0] = draw_span<T, kSpanA8TintYuy2, 0, Perspective, BilinearStrength, TintPairs>;
    set.kernel[kSpanA8TintYuy2][1] = draw_span<T, kSpanA8TintYuy2, 1, Perspective, BilinearStrength, TintPairs>;
    set.kernel[kSpanA8TintRgbq][0] = draw_span<T, kSpanA8TintRgbq, 0, Perspective, BilinearStrength, TintPixels>;
    set.kernel[kSpanA8TintRgbq][1] = draw_span<T, kSpanA8TintRgbq, 1, Perspective, BilinearStrength, TintPixels>;
    return set;
}

}  // namespace
}  // namespace zepbmp
