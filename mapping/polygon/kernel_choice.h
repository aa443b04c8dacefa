/// \file
/// Which kernels a mapping uses: formats, flags and perspective weights to a span group.
#pragma once

#include "core/bitmap.h"
#include "mapping/polygon/polygon.h"

namespace zepbmp {

struct KernelChoice {
    int group;         ///< kNoGroup: nothing is drawn
    bool perspective;  ///< texture coordinates are divided by w
    bool antialiased;  ///< drawn by way of coverages
};

constexpr int kNoGroup = -1;

KernelChoice choose_kernels(const Bitmap& destination, const Bitmap& texture, bool has_depth, const Polygon& polygon);

}  // namespace zepbmp
