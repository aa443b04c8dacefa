/// \file
/// What others have for the average over areas. All of them scale the whole source, the last of a call's frames, to the
/// whole destination, the first; weight maps are this library's own.
#pragma once

#include "subject.h"

namespace zepbmp::bench {

using FrameShapes = std::vector<FrameShape>;

// ---------------------------------------------------------------- libyuv, kFilterBox
// A box only at 2:1 and 4:1, and for single bytes at 4:1 and beyond: other ratios, where it is faster, average fewer
// pixels than an area covers.

Peer libyuv_box(const FrameShapes& frames);

/// YUY2 as two planes, by ScalePlane and UVScale; as fast as three planes.
Peer libyuv_box_planes(const FrameShapes& frames);

// ---------------------------------------------------------------- OpenCV, resize with INTER_AREA, one thread

Peer opencv_area(const FrameShapes& frames);

/// YUY2 as two planes, luma and pairs of chroma; two calls.
Peer opencv_area_planes(const FrameShapes& frames);

// ---------------------------------------------------------------- swscale, SWS_AREA
// RGBQ goes through its own YUV at full chroma resolution. An enlargement would be bilinear.

Peer swscale_area(const FrameShapes& frames);

}  // namespace zepbmp::bench
