#include "simd/texels_avx512.h"
//
#include "mapping/polygon/span_inl.h"

namespace zepbmp {

extern constexpr SpanSet kSpansAvx512 = span_set<Texels512>();

}  // namespace zepbmp
