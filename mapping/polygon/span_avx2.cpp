#include "simd/texels_avx2.h"
//
#include "mapping/polygon/span_inl.h"

namespace zepbmp {

extern constexpr SpanSet kSpansAvx2 = span_set<Texels256>();

}  // namespace zepbmp
