#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "effect.h"
#include "timeline.h"

namespace zepbmp::transition {

enum class FieldChoice { kAuto, kTop, kBottom, kProgressive };

struct Options {
    std::filesystem::path input_a;
    std::filesystem::path input_b;
    std::filesystem::path output;
    std::optional<std::filesystem::path> sheet;
    std::optional<FrameRange> frames;               // a part of the output, without loss
    std::optional<std::filesystem::path> measures;  // written with count, else read
    bool count = false;                             // only tells the number of frames; output may be empty
    std::optional<std::filesystem::path> points;    // for the shape, and only for it
    EffectKind effect = EffectKind::kCrossfade;
    TimeValue duration;
    std::optional<TimeValue> at;
    double feather_px = 0;
    uint32_t color_rgb = 0;
    Direction direction = Direction::kLeft;
    Ease ease = Ease::kLinear;
    FieldChoice fields = FieldChoice::kAuto;
    bool overwrite = false;
};

/// Parts to put together.
struct JoinOptions {
    std::vector<std::filesystem::path> parts;  // in any order
    std::filesystem::path output;
    std::optional<std::filesystem::path> sheet;
    bool overwrite = false;
};

/// What the command line asks for: a run, parts to join, or a text to print (--help, --version).
struct CommandLine {
    std::optional<Options> run;
    std::optional<JoinOptions> join;
    std::string text;
};

/// As the command line names them.
std::string name_of(EffectKind effect);
std::string name_of(Direction direction);
std::string name_of(Ease ease);
std::string name_of(FieldChoice fields);

/// Reads and checks a command line, without the program's name. Throws Error (kExitRefused) with a line that says what
/// is wrong. Looks at the files only as far as telling whether outputs would replace inputs.
CommandLine parse_command_line(std::vector<std::string> arguments);

}  // namespace zepbmp::transition
