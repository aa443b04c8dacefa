/// \file
/// Textured polygons with anti-aliased edges: spans go to a scratch line, which is blended in by coverage.
#include <cstring>

#include "mapping/polygon/antialiased_walk.h"
#include "mapping/polygon/spans.h"

namespace zepbmp {
namespace {

/// How a texture's pixels are put into the destination.
struct Finisher {
    CoverKernels::Blend* blend;
    int pixel_bytes;
    bool in_pairs;
};

Finisher finisher_of(uint32_t format) {
    switch (format) {
        case BMP_FMT_YUY2: return {cover_kernels.blend_yuy2, 2, true};
        case BMP_FMT_RGBQ: return {cover_kernels.blend_rgbq, 4, false};
        case BMP_FMT_PWRW: return {cover_kernels.blend_pwrw, 2, false};
        default: return {};  // has no kernel
    }
}

constexpr int32_t kMostPixelBytes = 4;

/// The middle sub-line comes last: where they overlap it shows.
constexpr int kRenderOrder[kSubLines] = {0, 2, 1};

/// Renders the spans between a sub-line's pairs of edges, as far as their coverages `covers` reach. What is asked for
/// ahead is the line itself, `to_line` bytes from the scratch line.
void render(uint8_t* scratch, ptrdiff_t to_line, const AntialiasedWalk& walk, int sub_line, const EdgeCover* covers,
            const SpanDrawer& spans, bool in_pairs) {
    const Crossing* const crossings = walk.crossings(sub_line);
    for (int32_t i = 0; i + 1 < walk.count(sub_line); i += 2) {
        PixelRange pixels = {covers[i].pixels.first, covers[i + 1].pixels.end};
        if (pixels.empty())
            continue;
        if (in_pairs)
            pixels.first &= ~1;
        Span span = spans.between(crossings[i], crossings[i + 1], walk.line() * kSubLines + sub_line, pixels);
        span.line = scratch;
        span.later_pixels = to_line;
        spans.draw(span);
    }
}

}  // namespace

void draw_antialiased(const Target& target, const Texture& texture, const KernelChoice& kernels,
                      const Polygon& polygon) {
    const int32_t width = target.picture.width;
    if (width <= 0)
        return;
    const uint64_t scratch_bytes =
        Arena::bytes<uint8_t>((uint64_t{static_cast<uint32_t>(width)} + 1) * kMostPixelBytes);
    const LineCoverer::Extent extent = AntialiasedWalk::extent_of(target, polygon);
    Arena arena;
    if (!arena.reserve(AntialiasedWalk::bytes(extent) + scratch_bytes + Arena::bytes<EdgeMapping>(extent.edges)))
        return;
    AntialiasedWalk walk(arena, target, polygon, extent);
    const SpanDrawer spans(texture, kernels, polygon, kSubLines, walk.edges(), walk.edge_count(),
                           arena.array<EdgeMapping>(extent.edges));
    uint8_t* const scratch = arena.array<uint8_t>(scratch_bytes);
    std::memset(scratch, 0, scratch_bytes);  // what has no coverage is blended, too
    const Finisher finisher = finisher_of(texture.format);
    const Plane plane(target.plane);

    while (walk.next()) {
        uint8_t* const line = line_address(target.picture, walk.line());
        const auto to_line =
            static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(line) - reinterpret_cast<uintptr_t>(scratch));
        if (walk.whole()) {
            render(scratch, to_line, walk, 1, walk.covers(0), spans, finisher.in_pairs);
        } else {
            for (const int sub_line : kRenderOrder)
                render(scratch, to_line, walk, sub_line, walk.covers(sub_line), spans, finisher.in_pairs);
        }
        for (const CoverSegment& segment : walk.coverage()) {
            const int32_t count = segment.pixels.end - segment.pixels.first;
            const ptrdiff_t offset = ptrdiff_t{segment.pixels.first} * finisher.pixel_bytes;
            if (segment.full) {
                line_kernels.copy[kStoreCached](line + offset, scratch + offset,
                                                static_cast<size_t>(count) * static_cast<size_t>(finisher.pixel_bytes));
                plane.mark(walk.line(), segment.pixels);
            } else {
                finisher.blend(line + offset, scratch + offset, walk.coverage().coverage() + segment.pixels.first,
                               count);
                plane.blend(walk.line(), segment.pixels, walk.coverage().coverage(), kWeightFull);
            }
        }
    }
}

}  // namespace zepbmp
