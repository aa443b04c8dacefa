#pragma once

#include <string>

#include "picture.h"

namespace zepbmp::transition {

/// Takes pictures and sound, front to back, into a file. The file appears when commit() has returned; until then, and
/// if anything fails, nothing is to be seen of it.
class FrameWriter {
public:
    virtual ~FrameWriter() = default;

    /// "h264 and aac" and the like, for messages.
    virtual std::string description() const = 0;

    /// The next picture: YUY2, of the video's size, its width rounded up to even.
    virtual void write_picture(const Bitmap& picture) = 0;

    /// The next samples, planar floats. Not for a file without sound.
    virtual void write_sound(float* const* channels, int count) = 0;

    /// Completes the file, which stays hidden.
    virtual void finish() = 0;

    /// Puts the finished file in its place.
    virtual void commit() = 0;
};

}  // namespace zepbmp::transition
