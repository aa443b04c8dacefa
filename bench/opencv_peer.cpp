#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "drawing_peers.h"
#include "polygon_peers.h"
#include "rect_peers.h"

namespace zepbmp::bench {
namespace {

int opencv_type(int32_t format) {
    switch (format) {
        case BMP_FMT_RGBQ: return CV_8UC4;
        case BMP_FMT_PWRW: return CV_16UC1;
        default: return CV_8UC1;
    }
}

cv::Mat as_matrix(const Bitmap& frame) {
    return {frame.height, frame.width, opencv_type(static_cast<int32_t>(frame.format)), frame.pixels,
            static_cast<size_t>(frame.pitch)};
}

/// The planes that the bytes of a YUY2 frame are enough for: luma, then pairs of chroma.
struct SemiPlanes {
    cv::Mat luma, chroma;

    explicit SemiPlanes(const Bitmap& frame)
        : luma(frame.height, frame.width, CV_8UC1, frame.pixels),
          chroma(frame.height, frame.width / 2, CV_8UC2, frame.pixels + luma.total()) {}
};

/// A warp between pixels that are numbered by their centres: from those of a frame to those of a texture's part.
class Warp {
public:
    /// Columns of both count `column_step` pixels and lie at the first of them.
    Warp(const TexturedQuad& quad, View view, Sampling sampling, int column_step)
        : part_(quad.part.x / column_step, quad.part.y, quad.part.width / column_step, quad.part.height),
          view_(view),
          flags_((sampling == Sampling::kNearest ? cv::INTER_NEAREST : cv::INTER_LINEAR) | cv::WARP_INVERSE_MAP) {
        const double step = column_step;
        const cv::Matx33d from_index(step, 0, 0.5, 0, 1, 0.5, 0, 0, 1);
        const cv::Matx33d to_index(1 / step, 0, -0.5 / step - part_.x, 0, 1, -0.5 - part_.y, 0, 0, 1);
        map_ = to_index * cv::Matx33d(quad.to_texture.entries) * from_index;
    }

    void operator()(const cv::Mat& texture, cv::Mat frame) const {
        if (view_ == View::kAffine)
            cv::warpAffine(texture(part_), frame, map_.get_minor<2, 3>(0, 0), frame.size(), flags_,
                           cv::BORDER_TRANSPARENT);
        else
            cv::warpPerspective(texture(part_), frame, map_, frame.size(), flags_, cv::BORDER_TRANSPARENT);
    }

private:
    cv::Rect part_;
    View view_;
    int flags_;
    cv::Matx33d map_;
};

void resize_area(const cv::Mat& from, cv::Mat to) { cv::resize(from, to, to.size(), 0, 0, cv::INTER_AREA); }

}  // namespace

Peer opencv_warp(FrameShape frame, FrameShape texture, const TexturedQuad& quad, View view, Sampling sampling) {
    cv::setNumThreads(1);
    const Warp warp(quad, view, sampling, 1);
    return {"OpenCV",
            {frame, texture},
            [warp](const FrameSet& f) { warp(as_matrix(*f[1]), as_matrix(*f[0])); },
            Picture::kSame};
}

Peer opencv_warp_planes(FrameShape frame, FrameShape texture, const TexturedQuad& quad, View view, Sampling sampling) {
    cv::setNumThreads(1);
    const Warp luma(quad, view, sampling, 1), chroma(quad, view, sampling, 2);
    return {"OpenCV",
            {frame, texture},
            [luma, chroma](const FrameSet& f) {
                const SemiPlanes to(*f[0]), from(*f[1]);
                luma(from.luma, to.luma);
                chroma(from.chroma, to.chroma);
            },
            Picture::kSemiPlanar};
}

Peer opencv_area(const FrameShapes& frames) {
    cv::setNumThreads(1);
    return {"OpenCV", frames, [](const FrameSet& f) { resize_area(as_matrix(*f.back()), as_matrix(*f.front())); },
            Picture::kSame};
}

Peer opencv_area_planes(const FrameShapes& frames) {
    cv::setNumThreads(1);
    return {"OpenCV", frames,
            [](const FrameSet& f) {
                const SemiPlanes to(*f.front()), from(*f.back());
                resize_area(from.luma, to.luma);
                resize_area(from.chroma, to.chroma);
            },
            Picture::kSemiPlanar};
}

Peer opencv_lines(FrameShape frame, std::vector<LineEnds> lines, uint32_t color) {
    return {"OpenCV", {frame}, [lines = std::move(lines), color](const FrameSet& f) {
                cv::Mat matrix = as_matrix(*f[0]);
                for (const LineEnds& line : lines)
                    cv::line(matrix, {line.x0, line.y0}, {line.x1, line.y1}, color & 0xff);
            }};
}

}  // namespace zepbmp::bench
