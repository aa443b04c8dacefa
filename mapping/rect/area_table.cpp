/// \file
/// The selection table of the area kernels.
#include "mapping/rect/area_kernels.h"

namespace zepbmp {

constinit AreaKernels area_kernels{};

void fill_area_kernels(int level, int register_bytes) {
    // clang-format off
    static constexpr const AreaKernels* kColumns[kKernelColumns] = {
        // by level: 0 to 4
        &kAreaPlain, &kAreaPlain, &kAreaPlain, &kAreaPlain, &kAreaSse2,
        // at level 4, registers of 16, 32 and 64 bytes
        &kAreaSse2, &kAreaAvx2,
#if defined(ZEPBMP_HAVE_AVX512)
        &kAreaAvx512,
#endif
    };
    // clang-format on
    area_kernels = *kColumns[kernel_column(level, register_bytes)];
}

}  // namespace zepbmp
