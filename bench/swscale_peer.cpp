extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <stdexcept>

#include "rect_peers.h"

namespace zepbmp::bench {
namespace {

AVPixelFormat pixel_format(int32_t format) {
    switch (format) {
        case BMP_FMT_RGBQ: return AV_PIX_FMT_BGRA;
        case BMP_FMT_YUY2: return AV_PIX_FMT_YUYV422;
        default: return AV_PIX_FMT_GRAY8;
    }
}

/// Full chroma resolution for RGBQ; of YUY2, whose chroma has half of it, that would only cost time.
int flags(int32_t format) {
    return format == BMP_FMT_RGBQ ? SWS_AREA | SWS_FULL_CHR_H_INP | SWS_FULL_CHR_H_INT : SWS_AREA;
}

std::shared_ptr<SwsContext> prepared(FrameShape from, FrameShape to) {
    const std::shared_ptr<SwsContext> context(
        sws_getContext(from.width, from.height, pixel_format(from.format), to.width, to.height, pixel_format(to.format),
                       flags(to.format), nullptr, nullptr, nullptr),
        sws_freeContext);
    if (!context)
        throw std::runtime_error("swscale does not scale these frames");
    return context;
}

}  // namespace

Peer swscale_area(const FrameShapes& frames) {
    return {"swscale", frames,
            [context = prepared(frames.back(), frames.front())](const FrameSet& f) {
                const uint8_t* const from[] = {f.back()->pixels, nullptr, nullptr, nullptr};
                uint8_t* const to[] = {f.front()->pixels, nullptr, nullptr, nullptr};
                const int from_pitch[] = {f.back()->pitch, 0, 0, 0}, to_pitch[] = {f.front()->pitch, 0, 0, 0};
                sws_scale(context.get(), from, from_pitch, 0, f.back()->height, to, to_pitch);
            },
            Picture::kSame};
}

}  // namespace zepbmp::bench
