#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "media_reader.h"

namespace zepbmp::transition {

/// The shortest decimal number that reads back as this value.
std::string exact_text(double value);

/// Tells a file from others without reading all of it: its size and a digest of pieces from its beginning to its end.
std::string fingerprint(const std::filesystem::path& path);

/// Writes what was measured of two videos to a text file, whole or not at all.
void write_measures(const std::filesystem::path& place, bool overwrite, const std::filesystem::path& a,
                    const VideoMeasure& measure_a, const std::filesystem::path& b, const VideoMeasure& measure_b);

/// What a file of measures says of a video. Throws Error (kExitRefused) when it cannot be read or knows no such video.
VideoMeasure read_measure(const std::filesystem::path& measures, const std::filesystem::path& video);

}  // namespace zepbmp::transition
