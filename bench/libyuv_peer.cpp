#include "drawing_peers.h"
#include "peers.h"

#include <libyuv/planar_functions.h>

namespace zepbmp::bench {
namespace {

/// The planes that the bytes of a YUY2 frame are enough for.
struct Planes {
    uint8_t *y, *u, *v;

    Planes(const Bitmap& frame, Size size) : y(frame.pixels) {
        const size_t luma = static_cast<size_t>(size.width) * static_cast<size_t>(size.height);
        u = y + luma;
        v = u + luma / 2;
    }
};

int interpolation(int level) { return (level * 256 + 2048) / 4096; }

}  // namespace

Peer libyuv_blend_rgbq(Size size) {
    const FrameShape frame = {BMP_FMT_RGBQ, size.width, size.height};
    return {"libyuv", {frame, frame, frame, frame}, [](const FrameSet& f) {
                const int pitch = f[0]->pitch;
                libyuv::BlendPlane(f[1]->pixels, pitch, f[2]->pixels, pitch, f[3]->pixels, pitch, f[0]->pixels, pitch,
                                   f[0]->width * 4, f[0]->height);
            }};
}

Peer libyuv_blend_yuy2(Size size) {
    const FrameShape frame = {BMP_FMT_YUY2, size.width, size.height};
    const FrameShape mask = {BMP_FMT_A8, size.width, size.height},
                     half_mask = {BMP_FMT_A8, size.width / 2, size.height};
    return {"libyuv", {frame, frame, frame, mask, half_mask}, [size](const FrameSet& f) {
                const Planes d(*f[0], size), a(*f[1], size), b(*f[2], size);
                const int w = size.width, half = w / 2, h = size.height;
                libyuv::BlendPlane(a.y, w, b.y, w, f[3]->pixels, f[3]->pitch, d.y, w, w, h);
                libyuv::BlendPlane(a.u, half, b.u, half, f[4]->pixels, f[4]->pitch, d.u, half, half, h);
                libyuv::BlendPlane(a.v, half, b.v, half, f[4]->pixels, f[4]->pitch, d.v, half, half, h);
            }};
}

Peer libyuv_interpolate_rgbq(Size size, int level) {
    const FrameShape frame = {BMP_FMT_RGBQ, size.width, size.height};
    return {"libyuv",
            {frame, frame, frame},
            [level](const FrameSet& f) {
                const int pitch = f[0]->pitch;
                libyuv::ARGBInterpolate(f[1]->pixels, pitch, f[2]->pixels, pitch, f[0]->pixels, pitch, f[0]->width,
                                        f[0]->height, interpolation(level));
            },
            Picture::kSame};
}

Peer libyuv_interpolate_yuy2(Size size, int level) {
    const FrameShape frame = {BMP_FMT_YUY2, size.width, size.height};
    return {"libyuv", {frame, frame, frame}, [size, level](const FrameSet& f) {
                const Planes d(*f[0], size), a(*f[1], size), b(*f[2], size);
                const int w = size.width, half = w / 2, h = size.height, i = interpolation(level);
                libyuv::InterpolatePlane(a.y, w, b.y, w, d.y, w, w, h, i);
                libyuv::InterpolatePlane(a.u, half, b.u, half, d.u, half, half, h, i);
                libyuv::InterpolatePlane(a.v, half, b.v, half, d.v, half, half, h, i);
            }};
}

Peer libyuv_field_to_frame(FrameShape frame) {
    return {"libyuv",
            {frame, frame},
            [](const FrameSet& f) {
                const int pitch = f[0]->pitch, step = 2 * pitch, height = f[0]->height, fields = (height + 1) / 2;
                const uint8_t* const src = f[1]->pixels;
                uint8_t* const dst = f[0]->pixels;
                libyuv::CopyPlane(src, step, dst, step, pitch, fields);
                libyuv::InterpolatePlane(src, step, src + step, step, dst + pitch, step, pitch, fields - 1, 128);
                const ptrdiff_t last = static_cast<ptrdiff_t>(step) * (fields - 1);
                libyuv::CopyPlane(src + last, pitch, dst + last + pitch, pitch, pitch, height % 2 == 0);
            },
            Picture::kSame};
}

Peer libyuv_copy_field(FrameShape frame) {
    return {"libyuv",
            {frame, frame},
            [](const FrameSet& f) {
                const int step = 2 * f[0]->pitch;
                libyuv::CopyPlane(f[1]->pixels, step, f[0]->pixels, step, f[0]->pitch, (f[0]->height + 1) / 2);
            },
            Picture::kSame};
}

Peer libyuv_copy_rectangle(FrameShape frame, CopyRectangle r) {
    return {"libyuv",
            {frame, frame},
            [r](const FrameSet& f) {
                const int pitch = f[0]->pitch;
                libyuv::CopyPlane(f[1]->pixels + static_cast<ptrdiff_t>(r.src_y) * pitch + r.src_x_bytes, pitch,
                                  f[0]->pixels + static_cast<ptrdiff_t>(r.dest_y) * pitch + r.dest_x_bytes, pitch,
                                  r.width_bytes, r.height);
            },
            Picture::kSame};
}

Peer libyuv_rectangle(FrameShape frame, const Rectangle& r, uint32_t color) {
    return {"libyuv",
            {frame},
            [=](const FrameSet& f) {
                libyuv::ARGBRect(f[0]->pixels, f[0]->pitch, r.left, r.top, r.width, r.height, color);
            },
            Picture::kSame};
}

}  // namespace zepbmp::bench
