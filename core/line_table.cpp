/// \file
/// The selection table of the line kernels.
#include "core/line_kernels.h"

namespace zepbmp {

constinit LineKernels line_kernels{};
constinit size_t stream_threshold_bytes = SIZE_MAX;

void fill_line_kernels(int level, int register_bytes) {
    // clang-format off
    static constexpr const LineKernels* kColumns[kKernelColumns] = {
        // by level: 0 to 4
        &kLinePlain, &kLineMmx, &kLineMmxExt, &kLineMmxExt, &kLineSse2,
        // at level 4, registers of 16, 32 and 64 bytes
        &kLineSse2, &kLineAvx2,
#if defined(ZEPBMP_HAVE_AVX512)
        &kLineAvx512,
#endif
    };
    // clang-format on
    line_kernels = *kColumns[kernel_column(level, register_bytes)];
}

}  // namespace zepbmp
