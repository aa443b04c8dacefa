/// \file
/// The selection table of the coverage kernels.
#include "mapping/polygon/cover_kernels.h"

namespace zepbmp {

constinit CoverKernels cover_kernels{};

void fill_cover_kernels(int level, int register_bytes) {
    // clang-format off
    static constexpr const CoverKernels* kColumns[kKernelColumns] = {
        // by level: 0 to 4
        &kCoverPlain, &kCoverPlain, &kCoverPlain, &kCoverPlain, &kCoverSse2,
        // at level 4, registers of 16, 32 and 64 bytes
        &kCoverSse2, &kCoverAvx2,
#if defined(ZEPBMP_HAVE_AVX512)
        &kCoverAvx512,
#endif
    };
    // clang-format on
    cover_kernels = *kColumns[kernel_column(level, register_bytes)];
}

}  // namespace zepbmp
