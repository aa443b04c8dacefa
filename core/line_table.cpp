/// \file
/// The selection table of the line kernels.
#include "core/line_kernels.h"

namespace zepbmp {

LineKernels line_kernels = kLinePlain;
size_t stream_threshold_bytes = SIZE_MAX;

void fill_line_kernels(int level, int register_bytes) {
    //                                               level 0      level 1    level 2       level 3       level 4
    static constexpr const LineKernels* kLevel[kCpuLevels] = {&kLinePlain, &kLineMmx, &kLineMmxExt, &kLineMmxExt, &kLineSse2};
    if (register_bytes > usable_register_bytes())
        register_bytes = usable_register_bytes();
    const LineKernels* set = kLevel[level];
    if (level == kLevelSse2 && register_bytes >= 32)
        set = &kLineAvx2;
#if defined(ZEPBMP_HAVE_AVX512)
    if (level == kLevelSse2 && register_bytes >= 64)
        set = &kLineAvx512;
#endif
    line_kernels = *set;
}

}  // namespace zepbmp
