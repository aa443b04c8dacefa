#include "simd/lanes_avx512.h"
//
#include "shapes/shape_inl.h"

namespace zepbmp {

extern constexpr ShapeKernels kShapesAvx512 = shape_set<Lanes512, Floats512>();

}  // namespace zepbmp
