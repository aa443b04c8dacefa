/// \file
/// The selection table of the shape kernels.
#include "shapes/shape_kernels.h"

namespace zepbmp {

constinit ShapeKernels shape_kernels{};

void fill_shape_kernels(int level, int register_bytes) {
    // clang-format off
    static constexpr const ShapeKernels* kColumns[kKernelColumns] = {
        // by level: 0 to 4
        &kShapesPlain, &kShapesPlain, &kShapesPlain, &kShapesPlain, &kShapesSse2,
        // at level 4, registers of 16, 32 and 64 bytes
        &kShapesSse2, &kShapesAvx2,
#if defined(ZEPBMP_HAVE_AVX512)
        &kShapesAvx512,
#endif
    };
    // clang-format on
    shape_kernels = *kColumns[kernel_column(level, register_bytes)];
}

}  // namespace zepbmp
