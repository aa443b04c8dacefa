/// \file
/// From a pair of edges on a line to a call of a span kernel.
#pragma once

#include "core/kernel_tables.h"
#include "mapping/polygon/crossing.h"
#include "mapping/polygon/kernel_choice.h"
#include "mapping/polygon/texture.h"

namespace zepbmp {

/// The pixels whose centres lie between two crossings, within 0 .. width-1.
PixelRange pixels_between(float left, float right, int32_t width);

/// Draws spans of one polygon.
class SpanDrawer {
public:
    /// `mappings`: room for one of each edge. later_pixels: a hint, bytes from a line that is drawn to a later one.
    SpanDrawer(const Texture& texture, const KernelChoice& kernels, const Polygon& polygon, int sub_lines,
               ptrdiff_t later_pixels, const Edge* edges, int32_t edge_count, EdgeMapping* mappings);

    /// Draws pixels of a line with the texture coordinates that the two edges have on `line`, a sub-line where there
    /// are some.
    ///   destination   pixel 0
    ///   depth         of the depth groups: value 0 of the destination line
    void draw(uint8_t* destination, const PixelRange& pixels, int32_t line, const Crossing& left, const Crossing& right,
              float* depth = nullptr, uint32_t tint = 0) const;

private:
    const EdgeMapping& mapping_of(const Crossing& crossing) const { return mappings_[crossing.edge - edges_]; }
    ptrdiff_t bytes_to_later_lines(const Span& span, const EdgeMapping& mapping, float edge_slope) const;

    SpanKernel* kernel_;
    SpanTexture texture_;
    bool perspective_;
    double u_offset_, v_offset_;
    double prefetch_lines_;
    ptrdiff_t later_pixels_;
    int32_t texel_bytes_;
    const Edge* edges_;
    const EdgeMapping* mappings_;
};

}  // namespace zepbmp
