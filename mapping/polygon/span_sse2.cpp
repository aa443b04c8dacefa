#include "simd/texels_sse2.h"
//
#include "mapping/polygon/span_inl.h"

namespace zepbmp {

extern constexpr SpanSet kSpansSse2 = span_set<Texels128>();

}  // namespace zepbmp
