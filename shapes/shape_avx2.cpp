#include "simd/lanes_avx2.h"
//
#include "shapes/shape_inl.h"

namespace zepbmp {

extern constexpr ShapeKernels kShapesAvx2 = shape_set<Lanes256, Floats256>();

}  // namespace zepbmp
