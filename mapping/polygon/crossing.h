/// \file
/// Where edges cross a line, and the pixels between.
#pragma once

#include "mapping/polygon/edges.h"

namespace zepbmp {

/// An edge where it crosses the centre of a line or sub-line.
struct Crossing {
    const Edge* edge;
    float x;
};

/// Pixels first .. end-1.
struct PixelRange {
    int32_t first, end;

    bool empty() const { return first >= end; }
};

}  // namespace zepbmp
