/// \file
/// What others have for rectangles of one colour and for lines.
#pragma once

#include <vector>

#include "subject.h"

namespace zepbmp::bench {

struct Rectangle {
    int32_t left, top, width, height;
};

/// ARGBRect.
Peer libyuv_rectangle(FrameShape frame, const Rectangle& rectangle, uint32_t color);

struct LineEnds {
    int32_t x0, y0, x1, y1;
};

/// cv::line, 8-connected, a call for each. It draws the end point, too, and steps its own way.
Peer opencv_lines(FrameShape frame, std::vector<LineEnds> lines, uint32_t color);

}  // namespace zepbmp::bench
