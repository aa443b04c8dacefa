/// \file
/// The bitmap formats, as a host knows them.
#pragma once

#include "zepbmp.h"

namespace zepbmp::test {

inline int bytes_per_pixel(int format) {
    switch (format) {
        case BMP_FMT_YUY2:
        case BMP_FMT_PWRW: return 2;
        case BMP_FMT_RGB8:
        case BMP_FMT_A8: return 1;
        default: return 4;
    }
}

}  // namespace zepbmp::test
