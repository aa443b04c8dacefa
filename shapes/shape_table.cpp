/// \file
/// The selection table of the shape kernels.
#include "shapes/shape_kernels.h"

namespace zepbmp {

ShapeKernels shape_kernels = kShapesPlain;

void fill_shape_kernels(int level, int register_bytes) {
    //                                                          level 0        level 1        level 2        level 3        level 4
    static constexpr const ShapeKernels* kLevel[kCpuLevels] = {&kShapesPlain, &kShapesPlain, &kShapesPlain, &kShapesPlain, &kShapesSse2};
    if (register_bytes > usable_register_bytes())
        register_bytes = usable_register_bytes();
    const ShapeKernels* set = kLevel[level];
    if (level == kLevelSse2 && register_bytes >= 32)
        set = &kShapesAvx2;
#if defined(ZEPBMP_HAVE_AVX512)
    if (level == kLevelSse2 && register_bytes >= 64)
        set = &kShapesAvx512;
#endif
    shape_kernels = *set;
}

}  // namespace zepbmp
