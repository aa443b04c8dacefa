#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "media_reader.h"

namespace zepbmp::transition {

/// A made-up video: every frame, or every field, is of one luma; the chroma is neutral.
struct Clip {
    int width = 64;
    int height = 48;
    FrameRate rate{25, 1};
    int frames = 20;
    AVRational sample_aspect{1, 1};
    FieldOrder fields = FieldOrder::kProgressive;
    std::function<int(double)> luma = [](double) { return 60; };  // of a moment, in frames
    double tone_hz = 0;                                           // 0: no sound
    int sound_rate = 48000;
};

void write_clip(const std::filesystem::path& path, const Clip& clip);

/// What can be told of a video by decoding all of it.
struct Contents {
    VideoInfo info;
    std::vector<double> top;     // mean luma of each frame's even lines
    std::vector<double> bottom;  // and of its odd lines
    std::vector<double> last_column;
    std::vector<bool> interlaced;
    std::vector<bool> top_first;
    std::vector<float> sound;  // first channel, as long as the video; empty when there is no sound
    int sound_rate = 0;
};

Contents read_contents(const std::filesystem::path& path);

/// Amplitude of one frequency in samples begin..end-1.
double tone_level(const std::vector<float>& sound, int begin, int end, double hz, int rate);

/// An empty folder that goes with the object.
class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    const std::filesystem::path& path() const { return path_; }

    /// Names of all files in it, hidden ones too, sorted.
    std::vector<std::string> names() const;

private:
    std::filesystem::path path_;
};

}  // namespace zepbmp::transition
