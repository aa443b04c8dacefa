#pragma once

#include <optional>

#include "libav.h"
#include "picture.h"

namespace zepbmp::transition {

/// Frames are composed in studio range with one colour matrix; these are its luma weights.
struct LumaWeights {
    double red;
    double blue;
};

/// The matrix itself when it is known, else the customary one for the height.
AVColorSpace known_matrix(AVColorSpace matrix, int height);
LumaWeights luma_weights(AVColorSpace matrix);

/// Memory of a picture, or of one field of it.
struct PictureView {
    uint8_t* data[4] = {};
    int stride[4] = {};
    int width = 0;
    int height = 0;
    AVPixelFormat format = AV_PIX_FMT_NONE;
    bool full_range = false;
    AVColorSpace matrix = AVCOL_SPC_SMPTE170M;

    /// Every second line, from line 0 (parity 0) or 1.
    PictureView field(int parity) const;
};

PictureView view_of(const AVFrame& frame);

/// `width` may be one less than the bitmap's: bitmaps hold whole pairs of pixels.
PictureView view_of(const Bitmap& bitmap, int width, AVColorSpace matrix);

/// Scales and converts between pictures of one kind after another.
class Scaler {
public:
    void convert(const PictureView& from, const PictureView& to);

    /// Each field on its own, so that no line takes anything from a line of another moment.
    void convert_fields(const PictureView& from, const PictureView& to);

private:
    struct Context {
        LibavPtr<SwsContext> sws;
        PictureView from;
        PictureView to;
    };
    static void convert(Context& context, const PictureView& from, const PictureView& to);

    Context contexts_[2];
};

/// Turns decoded frames into YUY2 bitmaps of the output's size and matrix. A bitmap that is one pixel wider repeats the
/// last column there.
class FrameConverter {
public:
    /// How a frame of the source becomes one of the output.
    enum class Mode {
        kWhole,       // source and output are progressive, or the output alone is interlaced
        kFields,      // both are interlaced
        kDeinterlace  // the source alone is interlaced: its top field is rebuilt to a frame
    };

    FrameConverter(Mode mode, int width, AVColorSpace matrix) : mode_(mode), width_(width), matrix_(matrix) {}

    void convert(const AVFrame& frame, Bitmap& to);

private:
    Mode mode_;
    int width_;
    AVColorSpace matrix_;
    Scaler scaler_;
    Scaler native_scaler_;
    std::optional<Bitmap> native_;
};

}  // namespace zepbmp::transition
