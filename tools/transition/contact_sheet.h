#pragma once

#include <cstdint>
#include <vector>

#include "frame_converter.h"
#include "output_file.h"
#include "timeline.h"

namespace zepbmp::transition {

/// The frames that a sheet of `tiles` tiles shows: evenly from the last frame before the transition to the first one
/// after it. Fewer if there are fewer, ascending, none twice.
std::vector<int64_t> sheet_frames(const Timeline& timeline, int tiles);

/// Small pictures of the transition in rows, with the part that is over drawn as a line under each. A PNG file.
class ContactSheet {
public:
    /// Frames of `width` x `height`; `width` may be one less than the bitmaps'.
    ContactSheet(const std::filesystem::path& place, bool overwrite, const Timeline& timeline, int width, int height,
                 double line_height_px, AVColorSpace matrix);

    /// Takes the frame if the sheet shows it. Frames come in ascending order.
    void offer(int64_t frame, const Bitmap& picture);

    /// Writes the file, which stays hidden.
    void finish();

    /// Puts the finished file in its place.
    void commit() { file_.commit(); }

private:
    void fill(int left, int top, int width, int height, uint32_t rgb);

    OutputFile file_;
    Timeline timeline_;
    std::vector<int64_t> frames_;
    size_t taken_ = 0;
    int picture_width_;
    AVColorSpace matrix_;
    Scaler scaler_;
    FramePtr tile_;
    FramePtr sheet_;
};

}  // namespace zepbmp::transition
