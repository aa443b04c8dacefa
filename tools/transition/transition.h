#pragma once

#include <optional>
#include <string>
#include <vector>

#include "contact_sheet.h"
#include "frame_writer.h"
#include "media_reader.h"
#include "options.h"

namespace zepbmp::transition {

struct Report {
    std::string summary;                // one line: what was written
    std::vector<std::string> warnings;  // one line each
};

/// Makes the video, or a part of it, and the contact sheet if one is asked for. Throws Error or Interrupted; then nothing
/// was written.
Report make_transition(const Options& options);

/// The number of frames of the whole output. Writes the measures if asked for. Throws Error when a run could not write
/// the output or the sheet that are named, too; neither is written.
int64_t count_frames(const Options& options);

/// Finishes both files before either takes its place, so that a failure or an interrupt leaves neither.
void put_in_place(FrameWriter& writer, std::optional<ContactSheet>& sheet);

/// "300 frames, 12.00 s, 1920x1080, 25 frames/s, progressive"
std::string describe_output(int64_t frames, const VideoInfo& video, FieldOrder order);

}  // namespace zepbmp::transition
