#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "effects/stage.h"
#include "outline.h"
#include "picture.h"
#include "timeline.h"

namespace zepbmp::transition {

enum class EffectKind { kCrossfade, kBox, kCircle, kBand, kShape, kFly, kCube, kZoom, kPush };

enum class Direction { kLeft, kRight, kUp, kDown };

struct EffectSettings {
    EffectKind kind = EffectKind::kCrossfade;
    double feather_px = 0;                   // box, circle, band: width of the soft edge; 0 = hard
    Ease edge = Ease::kLinear;               // profile of the soft edge
    double line_height_px = 1;               // of a frame line in pixel widths, so that circles are round on the screen
    uint32_t color_yuv = 0;                  // of the band, or around the cube: Y in bits 16..23, U 8..15, V 0..7
    Outline outline;                         // shape only, and not empty there
    Direction direction = Direction::kLeft;  // push only: the side at which a leaves
};

/// One effect for YUY2 frames of one size, of even width. Pure: the result depends on the arguments alone, files and
/// time play no part.
class Effect {
public:
    Effect(const EffectSettings& settings, int width, int height);

    /// Composes the lines that `field` selects (kWholeFrame, kTopField, kBottomField); the other lines stay untouched.
    /// progress <= 0 gives a's bytes, progress >= 1 gives b's. `dest` is neither of them. A source made with kTwoFields
    /// is read in the lines of `field` alone.
    void compose(Bitmap& dest, const Bitmap& a, const Bitmap& b, double progress, Field field);

private:
    void draw_box(double progress, Field field);
    void draw_soft_box(double half_width, double half_height, Field field);
    void draw_circle(Bitmap& map, double radius, Field field) const;
    void draw_shape(double progress, Field field);
    void draw_flying(const Bitmap& b, double progress, Field field);
    void draw_cube(Bitmap& dest, const Bitmap& a, const Bitmap& b, double progress, Field field);
    void draw_zoomed(const Bitmap& b, double progress, Field field);
    void draw_pushed(const Bitmap& a, const Bitmap& b, double progress, Field field);

    EffectSettings settings_;
    double width_px_;
    double height_px_;   // of the picture as shown, in pixel widths
    double corner_px_;   // from the centre to a corner
    double band_px_;     // width of the colour band
    double outline_px_;  // shape only: factor by which the outline covers the frame
    effects::Stage stage_;
    Bitmap map_;
    std::optional<Bitmap> outer_map_;  // band only
    std::optional<Bitmap> scratch_;    // shape, fly, zoom, push: colours under the weights of map_
    std::optional<Bitmap> map_a_;      // push only
    std::optional<Bitmap> scratch_a_;  // push only: colours under the weights of map_a_
    std::optional<Bitmap> depth_;      // cube only: a float for each pixel
    std::vector<int> column_64ths_;
    std::vector<int> line_64ths_;
};

/// RRGGBB as 0x00YYUUVV in studio range (16..235, 16..240), with the luma weights of the given colour matrix.
uint32_t yuv_from_rgb(uint32_t rgb, double red_weight, double blue_weight);

}  // namespace zepbmp::transition
