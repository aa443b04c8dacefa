#include <cstring>

#include "peers.h"

namespace zepbmp::bench {

Yardstick memcpy_of(double bytes) {
    const FrameShape half = raw_bytes(bytes / 2);
    return {{"memcpy",
             {half, half},
             [](const FrameSet& f) { std::memcpy(f[0]->pixels, f[1]->pixels, static_cast<size_t>(f[0]->width)); }},
            36};
}

Yardstick memset_of(double bytes) {
    return {{"memset",
             {raw_bytes(bytes)},
             [](const FrameSet& f) { std::memset(f[0]->pixels, 0, static_cast<size_t>(f[0]->width)); }},
            30};
}

}  // namespace zepbmp::bench
