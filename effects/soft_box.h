/// \file
/// A box with soft edges, and rounded corners if wanted, in a weight map.
#pragma once

#include <cstdint>
#include <memory>

#include "zepbmp.h"

namespace zepbmp::effects {

struct BoxShape {
    double centre_x;  ///< pixels, as all of these
    double centre_y;
    double half_width;
    double half_height;
    double radius;   ///< of the corners; 0: square ones
    double feather;  ///< width of the soft edge inside the box; below kLeastFeather: a hard, anti-aliased edge
    bool cosine;     ///< raised-cosine ramp instead of the linear one
};

/// Draws such boxes into weight maps of one size.
class SoftBox {
public:
    /// Without memory it is not ready, and draws nothing.
    SoftBox(int width, int height);
    ~SoftBox();
    SoftBox(const SoftBox&) = delete;
    SoftBox& operator=(const SoftBox&) = delete;

    bool ready() const { return corner_ && columns_; }

    /// Weights of the whole map; 0 around the box. A soft box's weight is that of its nearest side, sampled at the pixel's
    /// centre; in a rounded corner it is that of a disc. Corners are at least as round as the soft edge is wide, if at
    /// all.
    void draw(Bitmap& map, const BoxShape& box);

private:
    void draw_soft(Bitmap& map, const BoxShape& box);
    void round_corners(Bitmap& map, const BoxShape& box);

    Bitmap* corner_;  // a disc, of which a quarter is needed
    std::unique_ptr<uint16_t[]> columns_;
};

}  // namespace zepbmp::effects
