#include "simd/lanes_sse2.h"
//
#include "shapes/shape_inl.h"

namespace zepbmp {

extern constexpr ShapeKernels kShapesSse2 = shape_set<Lanes128, Floats128>();

}  // namespace zepbmp
