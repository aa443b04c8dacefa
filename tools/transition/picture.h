#pragma once

#include "zepbmp.hpp"

namespace zepbmp::transition {

/// Of a picture whose two fields are of different moments: mapping takes one of them as its source.
constexpr Scan kTwoFields = Scan::interlaced;

/// The lines of an interlaced frame's two fields.
constexpr Field kWholeFrame = Field::both;
constexpr Field kTopField = Field::even;
constexpr Field kBottomField = Field::odd;

/// Width of a picture's bitmap: YUY2 has whole pairs.
constexpr int even(int width) { return (width + 1) & ~1; }

enum class FieldOrder { kProgressive, kTopFirst, kBottomFirst };

}  // namespace zepbmp::transition
