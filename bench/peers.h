/// \file
/// The yardsticks, and what libyuv has for the same jobs. A YUY2 frame serves it as planes: luma, then two of half the
/// width.
#pragma once

#include "subject.h"

namespace zepbmp::bench {

Yardstick memcpy_of(double bytes);  ///< reads half of them and writes half
Yardstick memset_of(double bytes);

/// BlendPlane with a byte of alpha for every byte.
Peer libyuv_blend_rgbq(Size size);
/// BlendPlane on three planes, with a mask of half the width for two of them.
Peer libyuv_blend_yuy2(Size size);
/// ARGBInterpolate and InterpolatePlane; `level` 0..4096 becomes 0..256.
Peer libyuv_interpolate_rgbq(Size size, int level);
Peer libyuv_interpolate_yuy2(Size size, int level);
/// CopyPlane of every second line, InterpolatePlane for those between.
Peer libyuv_field_to_frame(FrameShape frame);
Peer libyuv_copy_field(FrameShape frame);

/// CopyPlane; offsets in bytes and lines.
struct CopyRectangle {
    int32_t dest_x_bytes, dest_y, src_x_bytes, src_y, width_bytes, height;
};
Peer libyuv_copy_rectangle(FrameShape frame, CopyRectangle rectangle);

}  // namespace zepbmp::bench
