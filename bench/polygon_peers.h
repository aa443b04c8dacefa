/// \file
/// What others have for polygons. All of them write the pixels that the library writes, give or take the edges.
#pragma once

#include "quads.h"
#include "subject.h"

namespace zepbmp::bench {

enum class Sampling { kNearest, kBilinear, kBox2, kBox4 };

// ---------------------------------------------------------------- OpenCV, one thread
// warpAffine or warpPerspective from the shown part of the texture; BORDER_TRANSPARENT leaves the rest of the frame
// alone. There is no turned box.

Peer opencv_warp(FrameShape frame, FrameShape texture, const TexturedQuad& quad, View view, Sampling sampling);

/// YUY2 as two planes, luma and pairs of chroma; two calls.
Peer opencv_warp_planes(FrameShape frame, FrameShape texture, const TexturedQuad& quad, View view, Sampling sampling);

// ---------------------------------------------------------------- pixman
// SRC with a transformed texture, clipped to a region made before: the quad's pixels, a rectangle for each line. Faster
// than OVER of a texture that is transparent outside. A box is a separable convolution with the same taps and as
// many phases as the library's.

Peer pixman_quad(FrameShape frame, FrameShape texture, const TexturedQuad& quad, Sampling sampling);

/// The A8 texture as the mask of a solid colour, OVER.
Peer pixman_tint(FrameShape frame, FrameShape texture, const TexturedQuad& quad, uint32_t color);

// ---------------------------------------------------------------- cairo, ANTIALIAS_GOOD

/// The quad as a path filled with the texture as a pattern: FILTER_BILINEAR, EXTEND_PAD, OVER.
Peer cairo_quad(FrameShape frame, FrameShape texture, const TexturedQuad& quad);

/// A fill for each polygon. SOURCE for an opaque colour, OVER for another one: the faster of the two. `level` is
/// 0..4096.
Peer cairo_fill(FrameShape frame, std::vector<Polygon> polygons, uint32_t color, int level);

// ---------------------------------------------------------------- Anti-Grain Geometry

/// rasterizer_scanline_aa, scanline_p8, renderer_scanline_aa_solid on pixfmt_bgra32.
Peer agg_fill(FrameShape frame, std::vector<Polygon> polygons, uint32_t color, int level);

}  // namespace zepbmp::bench
