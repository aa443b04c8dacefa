#pragma once

#include <filesystem>
#include <string>

#include "media_reader.h"

namespace zepbmp::transition {

/// A made-up video in which every frame, every field and every moment of the sound differs from all others.
struct Footage {
    int width = 96;
    int height = 64;
    FrameRate rate{25, 1};
    int frames = 40;
    FieldOrder fields = FieldOrder::kProgressive;
    std::string codec = "libx264";
    std::string codec_options;  // "g=12,bf=2"
    std::string sound_codec;    // empty: no sound
    int sound_rate = 48000;
    int sound_channels = 2;
    double sound_seconds = 0;  // 0: as long as the video
    int seed = 1;
};

/// The file's ending decides the container.
void write_footage(const std::filesystem::path& path, const Footage& footage);

}  // namespace zepbmp::transition
