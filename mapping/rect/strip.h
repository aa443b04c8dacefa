/// \file
/// A rectangle's columns, strip by strip: kernels take so many pixels at a time, over all lines.
#pragma once

#include "mapping/rect/axis.h"

namespace zepbmp {

/// Pixels of the rectangle; the first one is 0. All that are drawn, and those among them that are whole: covered from
/// side to side, and no part of a pair's half.
struct Extent {
    int32_t whole_begin, whole_end, end;
};

/// Of pixels that are drawn `together`, 1 or 2, from a multiple of that number on. The first pixel of a line of pairs
/// is never a whole one. Nothing is drawn from the destination's pixel `width` on.
Extent extent_of(const Axis& columns, int32_t width, int32_t together);

/// Part of an extent: `begin` .. `end` - 1.
struct Strip {
    int32_t begin, whole_begin, whole_end, end;
};

/// The strips of an extent from left to right, with the source pixels under each of their pixels.
class StripColumns {
public:
    StripColumns(const Axis& axis, const Extent& extent, bool in_pairs);

    /// Goes to the next strip, at first to the first one. False behind the last one.
    bool next();

    const Strip& strip() const { return strip_; }
    const AreaColumns& whole() const { return whole_; }
    /// From the strip's pixel i on, where i counts from the rectangle's first one.
    const AreaSpan* span(int32_t i) const { return spans_ + (i - strip_.begin); }

private:
    static constexpr int32_t kMostEnds = 4;  ///< pixels before the first whole one and behind the last one

    void find_spans();

    const Axis& axis_;
    const Extent extent_;
    const bool in_pairs_;
    const int32_t most_pixels_;
    Strip strip_;
    AreaColumns whole_;
    AreaSpan spans_[kAreaPixels + kMostEnds];
    AreaSpan pair_spans_[kAreaPixels / 2];
};

}  // namespace zepbmp
