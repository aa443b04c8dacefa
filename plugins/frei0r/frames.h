/// \file
/// A host's frames as bitmaps.
#pragma once

#include "plugin.h"

namespace zepbmp::frei0r {

/// Frames of one size. A frame that lies as a bitmap does (16-byte aligned, lines of whole 16 bytes) is used where it
/// lies; any other is copied, once, into or from memory that is made with the object.
class Frames {
public:
    static constexpr int kMostInputs = 2;

    Frames(int width, int height, int inputs);

    bool ready() const;

    /// Valid until the next call for the same input. `out_frame` is where the result will be written: an input there is
    /// copied, so that drawing does not change it.
    Bitmap input(int index, const uint32_t* frame, const uint32_t* out_frame);
    /// What is drawn in it reaches the frame with deliver().
    Bitmap output(uint32_t* frame);
    void deliver(uint32_t* frame) const;

private:
    bool lies_as_a_bitmap(const uint32_t* frame) const;
    Bitmap over(uint32_t* frame) const;

    int width_;
    int height_;
    int inputs_;
    std::array<OwnedBitmap, kMostInputs> input_copies_;
    OwnedBitmap output_copy_;
};

}  // namespace zepbmp::frei0r
