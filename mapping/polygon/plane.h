/// \file
/// The coverage plane beside a picture, and the lines that a field flag selects.
#pragma once

#include "core/bitmap.h"
#include "core/kernel_tables.h"
#include "mapping/polygon/spans.h"

namespace zepbmp {

/// With BMP_FIELD the lines of BMP_FIELD_ODD's parity, else all.
class SelectedLines {
public:
    explicit SelectedLines(uint32_t flags)
        : mask_(flags & BMP_FIELD ? 1 : 0), parity_(flags & BMP_FIELD ? static_cast<int32_t>(flags & 1) : 0) {}

    bool operator()(int32_t line) const { return (line & mask_) == parity_; }
    int32_t step() const { return mask_ + 1; }

private:
    int32_t mask_, parity_;
};

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
