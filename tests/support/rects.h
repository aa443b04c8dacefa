/// \file
/// Calls of bmp_map_rect.
#pragma once

#include "pictures.h"

namespace zepbmp::test {

/// The arguments; what is not named is null or 0.
struct RectArguments {
    Bitmap* dest = nullptr;
    Bitmap* weight_map = nullptr;
    Area to{};
    const Bitmap* src = nullptr;
    const int32_t* src_size = nullptr;
    Area from{};
    uint32_t flags = 0;
};

inline void map_rect(const RectArguments& a) {
    library().map_rect(a.dest, a.weight_map, a.to.left, a.to.top, a.to.right, a.to.bottom, a.src, a.src_size,
                       a.from.left, a.from.top, a.from.right, a.from.bottom, a.flags);
}

}  // namespace zepbmp::test
