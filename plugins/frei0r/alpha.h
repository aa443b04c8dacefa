/// \file
/// The fourth byte where two frames meet.
#pragma once

#include "zepbmp.h"

namespace zepbmp::frei0r {

/// Alpha of a composition, rounded to nearest, so that what is opaque stays so: composing itself cuts each product. The
/// second frame has the weight of `inner`, an opaque colour what `outer` is above it, the first frame the rest. For a
/// composition without a colour the two are one map. Pixels whose weights are nothing or everything are left alone:
/// theirs are copies already.
void round_alpha(Bitmap& out, const Bitmap& first, const Bitmap& second, const Bitmap& inner, const Bitmap& outer);

/// Makes a picture that was blended into transparent black by `coverage` one of straight alpha: a colour is divided by
/// the coverage: of those that give the same byte again when they are blended, it is the middle one. Alpha is what the
/// blending left.
void divide_by_coverage(Bitmap& picture, const Bitmap& coverage);

}  // namespace zepbmp::frei0r
