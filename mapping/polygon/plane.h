/// \file
/// The coverage plane beside a picture.
#pragma once

#include "core/bitmap.h"
#include "mapping/polygon/crossing.h"

namespace zepbmp {

/// A plane of another format than A8 and PWRW, or none, is left alone.
class Plane {
public:
    explicit Plane(const Bitmap* bitmap);

    /// The opaque mark over pixels of a line.
    void mark(int32_t line, const PixelRange& pixels) const;

    /// The mark blended in; coverage is that of pixel 0 first. level 0..4096.
    void blend(int32_t line, const PixelRange& pixels, const uint16_t* coverage, int32_t level) const;

    /// The mark at a level below full.
    void fade(int32_t line, const PixelRange& pixels, int32_t level) const;

private:
    const Bitmap* bitmap_;  ///< null: nothing to mark
    bool words_;            ///< PWRW, else A8
};

}  // namespace zepbmp
