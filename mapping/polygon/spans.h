/// \file
/// From a pair of edges on a line to a span, and to the kernel that draws it.
#pragma once

#include "core/kernel_tables.h"
#include "mapping/polygon/crossing.h"
#include "mapping/polygon/kernel_choice.h"
#include "mapping/polygon/polygon.h"
#include "mapping/polygon/texture.h"

namespace zepbmp {

/// The pixels whose centres lie between two crossings, within 0 .. width-1.
PixelRange pixels_between(float left, float right, int32_t width);

/// How many drawn lines ahead memory is asked for: that of the texture, which comes piece by piece from many pages, and
/// that of the destination. 8 to 16 lines, and 1 to 4, are alike.
constexpr int kLaterTexelLines = 12, kLaterPixelLines = 2;

/// Makes the spans of one polygon and draws them.
class SpanDrawer {
public:
    /// `mappings`: room for one of each edge.
    SpanDrawer(const Texture& texture, const KernelChoice& kernels, const Polygon& polygon, int sub_lines,
               const Edge* edges, int32_t edge_count, EdgeMapping* mappings);

    /// Pixels with the texture coordinates that the two edges have on `line`, a sub-line where there are some. What
    /// belongs to the destination (line, depth, color, later_pixels, later_depths) is the caller's to set.
    Span between(const Crossing& left, const Crossing& right, int32_t line, const PixelRange& pixels) const;

    void draw(const Span& span) const { kernel_(texture_, span); }

private:
    const EdgeMapping& mapping_of(const Crossing& crossing) const { return mappings_[crossing.edge - edges_]; }
    ptrdiff_t bytes_to_later_lines(const Span& span, const EdgeMapping& mapping, float edge_slope) const;

    SpanKernel* kernel_;
    SpanTexture texture_;
    bool perspective_;
    double u_offset_, v_offset_;
    double later_lines_;
    int32_t texel_bytes_;
    const Edge* edges_;
    const EdgeMapping* mappings_;
};

}  // namespace zepbmp
