#pragma once

#include <cstdint>
#include <vector>

#include "picture.h"
#include "timeline.h"

namespace zepbmp::transition {

enum class EffectKind { kCrossfade, kBox, kCircle, kBand };

struct EffectSettings {
    EffectKind kind = EffectKind::kCrossfade;
    double feather_px = 0;        // width of the soft edge; 0 = hard
    Ease edge = Ease::kLinear;    // profile of the soft edge
    double line_height_px = 1;    // height of a frame line in pixel widths, so that circles are round on the screen
    uint32_t band_color_yuv = 0;  // Y in bits 16..23, U 8..15, V 0..7
};

/// One effect for YUY2 frames of one size. Pure: the result depends on the arguments alone, files and time play no
/// part.
class Effect {
public:
    Effect(const EffectSettings& settings, int width, int height);

    /// Composes the lines that `field` selects (kWholeFrame, kTopField, kBottomField); the other lines stay untouched.
    /// progress <= 0 gives a's bytes, progress >= 1 gives b's.
    void compose(Bitmap* dest, const Bitmap* a, const Bitmap* b, double progress, unsigned field);

private:
    void draw_box(double progress, unsigned field);
    void draw_soft_box(double half_width, double half_height, unsigned field);
    void draw_circle(Bitmap* map, double radius, unsigned field) const;

    EffectSettings settings_;
    double width_px_;
    double height_px_;  // of the picture as shown, in pixel widths
    double corner_px_;  // from the centre to a corner
    double band_px_;    // width of the colour band
    BitmapPtr map_;
    BitmapPtr outer_map_;  // band only
    std::vector<int> column_64ths_;
    std::vector<int> line_64ths_;
};

/// RRGGBB as 0x00YYUUVV in studio range (16..235, 16..240), with the luma weights of the given colour matrix.
uint32_t yuv_from_rgb(uint32_t rgb, double red_weight, double blue_weight);

}  // namespace zepbmp::transition
