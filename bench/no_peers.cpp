// In place of all the peers, where they are not built. main.cpp empties the lists that these stand in.
#include "drawing_peers.h"
#include "peers.h"
#include "polygon_peers.h"
#include "rect_peers.h"

namespace zepbmp::bench {

Peer libyuv_blend_rgbq(Size) { return {}; }
Peer libyuv_blend_yuy2(Size) { return {}; }
Peer libyuv_interpolate_rgbq(Size, int) { return {}; }
Peer libyuv_interpolate_yuy2(Size, int) { return {}; }
Peer libyuv_field_to_frame(FrameShape) { return {}; }
Peer libyuv_copy_field(FrameShape) { return {}; }
Peer libyuv_copy_rectangle(FrameShape, CopyRectangle) { return {}; }

Peer libyuv_rectangle(FrameShape, const Rectangle&, uint32_t) { return {}; }
Peer opencv_lines(FrameShape, std::vector<LineEnds>, uint32_t) { return {}; }

Peer opencv_warp(FrameShape, FrameShape, const TexturedQuad&, View, Sampling) { return {}; }
Peer opencv_warp_planes(FrameShape, FrameShape, const TexturedQuad&, View, Sampling) { return {}; }
Peer pixman_quad(FrameShape, FrameShape, const TexturedQuad&, Sampling) { return {}; }
Peer pixman_tint(FrameShape, FrameShape, const TexturedQuad&, uint32_t) { return {}; }
Peer cairo_quad(FrameShape, FrameShape, const TexturedQuad&) { return {}; }
Peer cairo_fill(FrameShape, std::vector<Polygon>, uint32_t, int) { return {}; }
Peer agg_fill(FrameShape, std::vector<Polygon>, uint32_t, int) { return {}; }

Peer libyuv_box(const FrameShapes&) { return {}; }
Peer libyuv_box_planes(const FrameShapes&) { return {}; }
Peer opencv_area(const FrameShapes&) { return {}; }
Peer opencv_area_planes(const FrameShapes&) { return {}; }
Peer swscale_area(const FrameShapes&) { return {}; }

}  // namespace zepbmp::bench
