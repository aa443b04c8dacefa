#include <libyuv/scale.h>
#include <libyuv/scale_argb.h>
#include <libyuv/scale_uv.h>

#include "rect_peers.h"

namespace zepbmp::bench {
namespace {

uint8_t* chroma(const Bitmap& frame) { return frame.pixels + static_cast<ptrdiff_t>(frame.width) * frame.height; }

}  // namespace

Peer libyuv_box(const FrameShapes& frames) {
    const bool is_rgbq = frames.front().format == BMP_FMT_RGBQ;
    // It halves twice and rounds up each time: more than 1 off on average.
    const bool halves_twice = is_rgbq && frames.back().width == 4 * frames.front().width;
    return {"libyuv", frames,
            [is_rgbq](const FrameSet& f) {
                const Bitmap &to = *f.front(), &from = *f.back();
                if (is_rgbq)
                    libyuv::ARGBScale(from.pixels, from.pitch, from.width, from.height, to.pixels, to.pitch, to.width,
                                      to.height, libyuv::kFilterBox);
                else
                    libyuv::ScalePlane(from.pixels, from.pitch, from.width, from.height, to.pixels, to.pitch, to.width,
                                       to.height, libyuv::kFilterBox);
            },
            halves_twice ? Picture::kOther : Picture::kSame};
}

Peer libyuv_box_planes(const FrameShapes& frames) {
    return {"libyuv", frames,
            [](const FrameSet& f) {
                const Bitmap &to = *f.front(), &from = *f.back();
                libyuv::ScalePlane(from.pixels, from.width, from.width, from.height, to.pixels, to.width, to.width,
                                   to.height, libyuv::kFilterBox);
                libyuv::UVScale(chroma(from), from.width, from.width / 2, from.height, chroma(to), to.width,
                                to.width / 2, to.height, libyuv::kFilterBox);
            },
            Picture::kSemiPlanar};
}

}  // namespace zepbmp::bench
