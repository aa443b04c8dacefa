#include "join.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "contact_sheet.h"
#include "error.h"
#include "interrupt.h"
#include "media_writer.h"
#include "part_file.h"
#include "progress_bar.h"
#include "sound_buffer.h"

namespace zepbmp::transition {

namespace fs = std::filesystem;

namespace {

struct Part {
    fs::path path;
    PartHeader header;
};

[[noreturn]] void refuse(const std::string& message) { throw Error(message, kExitRefused); }

/// Looks at every part's beginning and end.
std::vector<Part> open_parts(const std::vector<fs::path>& paths) {
    std::vector<Part> parts;
    for (const fs::path& path : paths) {
        check_interrupt();
        PartReader reader(path);
        parts.push_back({path, reader.header()});
        const std::string difference =
            first_difference(parts.front().header.transition(), parts.back().header.transition());
        if (!difference.empty())
            refuse(path.string() + ": belongs to another transition than " + paths.front().string() + ": its " +
                   difference);
        if (!reader.ends_with_seal())
            refuse(path.string() + ": is damaged or not whole");
    }
    return parts;
}

/// Puts the parts in order; every frame has to be in one part, and in no other.
void arrange(std::vector<Part>& parts) {
    std::sort(parts.begin(), parts.end(),
              [](const Part& one, const Part& other) { return one.header.frames.first < other.header.frames.first; });
    const int64_t total = parts.front().header.timeline.total;
    const auto missing = [&](int64_t first, int64_t end) {
        refuse("frames " + FrameRange{first, end}.text() + " of " + std::to_string(total) +
               " are in none of the parts");
    };
    int64_t end = 0;
    for (size_t i = 0; i < parts.size(); ++i) {
        const FrameRange& frames = parts[i].header.frames;
        if (frames.first > end)
            missing(end, frames.first);
        if (frames.first < end)
            refuse(parts[i - 1].path.string() + " and " + parts[i].path.string() + " overlap: frames " +
                   parts[i - 1].header.frames.text() + " and " + frames.text());
        end = frames.end;
    }
    if (end < total)
        missing(end, total);
}

void copy_sound(PartReader& reader, int64_t frame, MediaWriter& writer) {
    const PartHeader& header = reader.header();
    const int64_t begin = sample_at(frame, header.video.rate, header.sound->rate);
    const int count = static_cast<int>(sample_at(frame + 1, header.video.rate, header.sound->rate) - begin);
    if (count == 0)
        return;
    const SoundBuffer piece(header.sound->layout.channels(), count);
    reader.read_sound(piece.channels(), count);
    if (writer.sound_format())
        writer.write_sound(piece.channels(), count);
}

}  // namespace

Report join_parts(const JoinOptions& options) {
    std::vector<Part> parts = open_parts(options.parts);
    arrange(parts);
    const PartHeader& whole = parts.front().header;
    const VideoInfo& video = whole.video;
    const AVColorSpace matrix = known_matrix(video.matrix, video.height);
    MediaWriter writer(options.output, options.overwrite, video, whole.order, whole.sound);
    std::optional<ContactSheet> sheet;
    if (options.sheet)
        sheet.emplace(*options.sheet, options.overwrite, whole.timeline, video.width, video.height,
                      video.line_height_px(), matrix);
    Bitmap picture(even(video.width), video.height, Format::yuy2);
    {
        ProgressBar progress(whole.timeline.total);
        for (const Part& part : parts) {
            PartReader reader(part.path);
            if (reader.header().frames.text() != part.header.frames.text() ||
                reader.header().transition() != part.header.transition())
                refuse(part.path.string() + ": was changed meanwhile");
            for (int64_t frame = part.header.frames.first; frame < part.header.frames.end; ++frame) {
                check_interrupt();
                reader.read_picture(picture);
                writer.write_picture(picture);
                if (whole.sound)
                    copy_sound(reader, frame, writer);
                if (sheet)
                    sheet->offer(frame, picture);
                progress.update(frame + 1);
            }
            reader.finish();
        }
    }
    put_in_place(writer, sheet);

    Report report;
    report.summary = options.output.string() + ": " + describe_output(whole.timeline.total, video, whole.order) + ", " +
                     writer.description() + ", from " + std::to_string(parts.size()) +
                     (parts.size() == 1 ? " part" : " parts");
    return report;
}

}  // namespace zepbmp::transition
