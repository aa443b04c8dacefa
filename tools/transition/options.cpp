#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <utility>

#include "error.h"

namespace zepbmp::transition {

namespace fs = std::filesystem;

namespace {

constexpr double kDefaultFeatherPx = 32;
constexpr double kWidestFeatherPx = 4096;
constexpr uint32_t kWhite = 0xffffff;
constexpr uint32_t kBlack = 0;

const char kExamples[] = R"(Times: 2s, 1.5, 500ms, 00:01:02.5, or frames of the first video: 50f

Examples:
  a two-second dissolve at the end of the first video
    zepbmp-transition beach.mp4 city.mov -o trip.mp4 --effect crossfade --duration 2s

  a wide soft circle after four seconds, easing in and out, with a contact sheet
    zepbmp-transition beach.mp4 city.mov -o trip.mp4 --effect circle --duration 50f --at 4s \
        --feather 120 --ease cosine --sheet trip.png

  an orange ring, from and to interlaced video with the top field first
    zepbmp-transition tape1.avi tape2.avi -o tape.mp4 --effect band --duration 1.5s \
        --color FF8000 --fields top

  a vertical push: the first video is squeezed out at the top
    zepbmp-transition beach.mp4 city.mov -o trip.mp4 --effect push --direction up --duration 1s

  a shape of one's own, whose corners stand in a text file
    zepbmp-transition beach.mp4 city.mov -o trip.mp4 --effect shape --points heart.txt --duration 2s

  the same in two parts, which may be made at once and on two machines
    zepbmp-transition beach.mp4 city.mov -o 1.mkv --effect box --duration 2s --frames 0:300
    zepbmp-transition beach.mp4 city.mov -o 2.mkv --effect box --duration 2s --frames 300:612
    zepbmp-transition join 1.mkv 2.mkv -o trip.mp4      (see zepbmp-transition join --help)

Exit status: 0 done, 1 failed while working, 2 the request cannot be carried out, 128 + signal if interrupted.)";

const char kJoinNotes[] =
    R"(The output is what one run without --frames would have written: its encoder is given the same pictures and
the same sound. Parts that belong to different transitions, are missing, overlap or are damaged are refused.

Exit status: 0 done, 1 failed while working, 2 the request cannot be carried out, 128 + signal if interrupted.)";

[[noreturn]] void refuse(const std::string& message) { throw Error(message, kExitRefused); }

template <class Value, size_t N>
Value choose(const char* what, const std::string& word, const std::array<std::pair<const char*, Value>, N>& choices) {
    std::string all;
    for (size_t i = 0; i < N; ++i) {
        if (word == choices[i].first)
            return choices[i].second;
        all += (i == 0 ? "" : i + 1 < N ? ", " : " or ") + std::string(choices[i].first);
    }
    refuse("unknown " + std::string(what) + " '" + word + "': choose " + all);
}

template <class Value, size_t N>
std::string name_among(const std::array<std::pair<const char*, Value>, N>& choices, Value value) {
    return std::find_if(choices.begin(), choices.end(), [&](const auto& choice) { return choice.second == value; })
        ->first;
}

constexpr std::array<std::pair<const char*, EffectKind>, 9> kEffects = {{{"crossfade", EffectKind::kCrossfade},
                                                                         {"box", EffectKind::kBox},
                                                                         {"circle", EffectKind::kCircle},
                                                                         {"band", EffectKind::kBand},
                                                                         {"shape", EffectKind::kShape},
                                                                         {"fly", EffectKind::kFly},
                                                                         {"cube", EffectKind::kCube},
                                                                         {"zoom", EffectKind::kZoom},
                                                                         {"push", EffectKind::kPush}}};
constexpr std::array<std::pair<const char*, Direction>, 4> kDirections = {
    {{"left", Direction::kLeft}, {"right", Direction::kRight}, {"up", Direction::kUp}, {"down", Direction::kDown}}};
constexpr std::array<std::pair<const char*, Ease>, 2> kEases = {{{"linear", Ease::kLinear}, {"cosine", Ease::kCosine}}};
constexpr std::array<std::pair<const char*, FieldChoice>, 4> kFields = {{{"auto", FieldChoice::kAuto},
                                                                         {"top", FieldChoice::kTop},
                                                                         {"bottom", FieldChoice::kBottom},
                                                                         {"progressive", FieldChoice::kProgressive}}};

/// Parses a command line; a text when it asks for one.
std::optional<std::string> parse(CLI::App& app, std::vector<std::string> arguments) {
    try {
        std::reverse(arguments.begin(), arguments.end());
        app.parse(arguments);
    } catch (const CLI::CallForHelp&) {
        return app.help();
    } catch (const CLI::CallForVersion&) {
        return app.version() + "\n";
    } catch (const CLI::ParseError& error) {
        std::string message = error.what();
        if (const size_t end = message.find('\n'); end != std::string::npos)
            message.resize(end);
        refuse(message + " (see --help)");
    }
    return std::nullopt;
}

TimeValue time_option(const char* name, const std::string& text) {
    const std::optional<TimeValue> time = parse_time(text);
    if (!time)
        refuse(std::string(name) + " '" + text + "' is not a time such as 2s, 500ms, 00:01:02.5 or 50f");
    return *time;
}

uint32_t parse_color(const std::string& text) {
    const std::string digits = text.starts_with('#') ? text.substr(1) : text;
    if (digits.size() != 6 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        refuse("--color '" + text + "' is not a colour such as FF8000");
    return static_cast<uint32_t>(std::stoul(digits, nullptr, 16));
}

bool same_file(const fs::path& one, const fs::path& other) {
    std::error_code ignored;
    if (fs::equivalent(one, other, ignored))
        return true;
    const auto full = [](const fs::path& path) {
        std::error_code failed;
        const fs::path absolute = fs::absolute(path, failed);
        return failed ? fs::path() : fs::weakly_canonical(absolute, failed);
    };
    const fs::path full_one = full(one), full_other = full(other);
    return !full_one.empty() && full_one == full_other;
}

void refuse_same_file(const fs::path& output, const fs::path& other, const char* what) {
    if (same_file(output, other))
        refuse(output.string() + ": the output would replace " + what);
}

CommandLine parse_join(std::vector<std::string> arguments) {
    JoinOptions options;
    std::vector<std::string> parts;
    std::string output, sheet;
    CLI::App app("Puts together what --frames has written: all parts of one transition, in any order.",
                 "zepbmp-transition join");
    app.footer(kJoinNotes);
    app.get_formatter()->column_width(28);
    app.add_option("PART", parts, "the parts, which together hold every frame once")->required();
    app.add_option("-o,--output", output, "video to write; the ending decides the container")
        ->required()
        ->type_name("FILE");
    CLI::Option* const sheet_option =
        app.add_option("--sheet", sheet, "also write a contact sheet of the transition")->type_name("PNG");
    app.add_flag("-y,--overwrite", options.overwrite, "replace output files that exist");
    if (std::optional<std::string> text = parse(app, std::move(arguments)))
        return {{}, {}, *std::move(text)};

    options.parts.assign(parts.begin(), parts.end());
    options.output = output;
    const bool nameless = std::find(parts.begin(), parts.end(), "") != parts.end();
    if (nameless || output.empty() || (*sheet_option && sheet.empty()))
        refuse("a file name is empty");
    if (*sheet_option) {
        options.sheet = sheet;
        refuse_same_file(*options.sheet, options.output, "the video just written");
    }
    for (const fs::path& part : options.parts) {
        refuse_same_file(options.output, part, "a part");
        if (options.sheet)
            refuse_same_file(*options.sheet, part, "a part");
    }
    return {{}, options, {}};
}

}  // namespace

std::string name_of(EffectKind effect) { return name_among(kEffects, effect); }
std::string name_of(Direction direction) { return name_among(kDirections, direction); }
std::string name_of(Ease ease) { return name_among(kEases, ease); }
std::string name_of(FieldChoice fields) { return name_among(kFields, fields); }

CommandLine parse_command_line(std::vector<std::string> arguments) {
    if (!arguments.empty() && arguments.front() == "join") {
        arguments.erase(arguments.begin());
        return parse_join(std::move(arguments));
    }
    Options options;
    std::string input_a, input_b, output, sheet, points, effect, duration, at, color, frames, measures;
    std::string direction = "left", ease = "linear", fields = "auto";
    double feather = kDefaultFeatherPx;

    CLI::App app(
        "Joins two videos by a transition: the first one up to --at, then both for --duration, then the second.",
        "zepbmp-transition");
    app.set_version_flag("--version", "zepbmp-transition " ZEPBMP_TOOL_VERSION);
    app.footer(kExamples);
    app.get_formatter()->column_width(28);
    app.add_option("A", input_a, "first video; the output has its size, frame rate and fields")->required();
    app.add_option("B", input_b, "second video; scaled to the first one's size")->required();
    CLI::Option* const output_option =
        app.add_option("-o,--output", output, "video to write; the ending decides the container")->type_name("FILE");
    app.add_option("--effect", effect, "crossfade, box, circle, band, shape, fly, cube, zoom or push")
        ->required()
        ->type_name("NAME");
    app.add_option("--duration", duration, "length of the transition")->required()->type_name("TIME");
    CLI::Option* const at_option =
        app.add_option("--at", at, "where it begins in A (as late as possible if not given)")->type_name("TIME");
    CLI::Option* const feather_option =
        app.add_option("--feather", feather, "width of the soft edge of box, circle, band; 0 = hard (32)")
            ->type_name("PX");
    CLI::Option* const color_option =
        app.add_option("--color", color, "colour of the band (FFFFFF) or around the cube (000000)")
            ->type_name("RRGGBB");
    CLI::Option* const points_option =
        app.add_option("--points", points, "the shape's corners, a line \"x y\" for each, y down, in any unit")
            ->type_name("FILE");
    CLI::Option* const direction_option =
        app.add_option("--direction", direction, "left, right, up or down: where push moves the first video (left)")
            ->type_name("NAME");
    app.add_option("--ease", ease, "linear or cosine: course of the motion and of the soft edge (linear)")
        ->type_name("NAME");
    app.add_option("--fields", fields, "auto, top, bottom or progressive: which field is first (auto: as flagged)")
        ->type_name("NAME");
    CLI::Option* const sheet_option =
        app.add_option("--sheet", sheet, "also write a contact sheet of the transition")->type_name("PNG");
    CLI::Option* const frames_option =
        app.add_option("--frames", frames,
                       "only frames FIRST to END - 1 of the output, counted from 0; written to a .mkv without loss, "
                       "for 'zepbmp-transition join'")
            ->type_name("FIRST:END");
    app.add_flag("--count", options.count,
                 "only print the number of frames that the whole output has; with --output or --sheet, check "
                 "that they could be written");
    CLI::Option* const measures_option =
        app.add_option("--measures", measures,
                       "written with --count: what was found by reading the videos to their ends; read otherwise, "
                       "instead of reading them")
            ->type_name("FILE");
    app.add_flag("-y,--overwrite", options.overwrite, "replace output files that exist");

    if (std::optional<std::string> text = parse(app, std::move(arguments)))
        return {{}, {}, *std::move(text)};

    options.input_a = input_a;
    options.input_b = input_b;
    options.output = output;
    options.effect = choose("effect", effect, kEffects);
    options.direction = choose("direction", direction, kDirections);
    options.ease = choose("ease", ease, kEases);
    options.fields = choose("field order", fields, kFields);
    options.duration = time_option("--duration", duration);
    if (options.duration.value <= 0)
        refuse("--duration must be longer than nothing");
    if (*at_option)
        options.at = time_option("--at", at);
    if (!(feather >= 0 && feather <= kWidestFeatherPx))
        refuse("--feather must lie between 0 and 4096 pixels");
    const bool soft = options.effect == EffectKind::kBox || options.effect == EffectKind::kCircle ||
                      options.effect == EffectKind::kBand;
    if (*feather_option && !soft)
        refuse("--feather has a meaning for --effect box, circle and band only");
    options.feather_px = feather;
    if (*color_option && options.effect != EffectKind::kBand && options.effect != EffectKind::kCube)
        refuse("--color has a meaning for --effect band and cube only");
    options.color_rgb = *color_option ? parse_color(color) : options.effect == EffectKind::kCube ? kBlack : kWhite;
    if (*points_option && options.effect != EffectKind::kShape)
        refuse("--points has a meaning for --effect shape only");
    if (!*points_option && options.effect == EffectKind::kShape)
        refuse("--effect shape needs --points FILE");
    if (*direction_option && options.effect != EffectKind::kPush)
        refuse("--direction has a meaning for --effect push only");
    if (options.count && *frames_option)
        refuse("--count is about the whole output: --frames has no meaning with it");
    if (options.count && *sheet_option && !*output_option)
        refuse("--sheet has a meaning with --count if --output is given, too");
    if (!options.count && !*output_option)
        refuse("--output is required (see --help)");
    if (input_a.empty() || input_b.empty() || (*output_option && output.empty()) || (*sheet_option && sheet.empty()) ||
        (*points_option && points.empty()) || (*measures_option && measures.empty()))
        refuse("a file name is empty");
    if (*frames_option) {
        options.frames = parse_frame_range(frames);
        if (!options.frames)
            refuse("--frames '" + frames +
                   "' is not a range FIRST:END such as 0:250, the second number the larger one");
        if (*sheet_option)
            refuse("--sheet has no meaning with --frames: give it to 'zepbmp-transition join'");
        if (options.output.extension() != ".mkv")
            refuse(output + ": a part's ending is .mkv");
    }
    if (*measures_option) {
        options.measures = measures;
        if (options.count) {
            refuse_same_file(*options.measures, options.input_a, "the first video");
            refuse_same_file(*options.measures, options.input_b, "the second video");
        }
        if (*output_option)
            refuse_same_file(options.output, *options.measures, "the measures");
    }
    if (*points_option)
        options.points = points;
    if (options.count) {
        if (options.points && options.measures)
            refuse_same_file(*options.measures, *options.points, "the shape's corners");
        if (!*output_option)
            return {options, {}, {}};
    }
    refuse_same_file(options.output, options.input_a, "the first video");
    refuse_same_file(options.output, options.input_b, "the second video");
    if (*sheet_option) {
        options.sheet = sheet;
        refuse_same_file(*options.sheet, options.input_a, "the first video");
        refuse_same_file(*options.sheet, options.input_b, "the second video");
        refuse_same_file(*options.sheet, options.output, "the video just written");
    }
    if (options.points) {
        refuse_same_file(options.output, *options.points, "the shape's corners");
        if (options.sheet)
            refuse_same_file(*options.sheet, *options.points, "the shape's corners");
    }
    return {options, {}, {}};
}

}  // namespace zepbmp::transition
