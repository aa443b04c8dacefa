#include "options.h"

#include <gtest/gtest.h>

#include "error.h"

namespace zepbmp::transition {
namespace {

std::vector<std::string> with(std::vector<std::string> more) {
    std::vector<std::string> all = {"a.mp4", "b.mov", "-o", "out.mp4"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

Options accepted(const std::vector<std::string>& more) {
    const CommandLine line = parse_command_line(with(more));
    EXPECT_TRUE(line.run);
    return line.run.value_or(Options{});
}

void expect_refused(const std::vector<std::string>& arguments, const std::string& part_of_message) {
    try {
        parse_command_line(arguments);
        ADD_FAILURE() << "accepted; should say " << part_of_message;
    } catch (const Error& error) {
        EXPECT_EQ(error.exit_code(), kExitRefused);
        EXPECT_NE(std::string(error.what()).find(part_of_message), std::string::npos) << error.what();
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << error.what();
    }
}

TEST(OptionsTest, HasDefaults) {
    const Options options = accepted({"--effect", "circle", "--duration", "2s"});
    EXPECT_EQ(options.input_a, "a.mp4");
    EXPECT_EQ(options.input_b, "b.mov");
    EXPECT_EQ(options.output, "out.mp4");
    EXPECT_EQ(options.effect, EffectKind::kCircle);
    EXPECT_DOUBLE_EQ(options.duration.value, 2);
    EXPECT_FALSE(options.at);
    EXPECT_FALSE(options.sheet);
    EXPECT_DOUBLE_EQ(options.feather_px, 32);
    EXPECT_EQ(options.color_rgb, 0xffffffu);
    EXPECT_EQ(options.ease, Ease::kLinear);
    EXPECT_EQ(options.fields, FieldChoice::kAuto);
    EXPECT_FALSE(options.overwrite);
}

TEST(OptionsTest, ReadsEverything) {
    const Options options =
        accepted({"--effect=band", "--duration=50f", "--at=00:01:02.5", "--feather=7.5", "--color", "#fF8000", "--ease",
                  "cosine", "--fields", "bottom", "--sheet", "sheet.png", "-y"});
    EXPECT_EQ(options.effect, EffectKind::kBand);
    EXPECT_TRUE(options.duration.in_frames);
    EXPECT_DOUBLE_EQ(options.at->value, 62.5);
    EXPECT_DOUBLE_EQ(options.feather_px, 7.5);
    EXPECT_EQ(options.color_rgb, 0xff8000u);
    EXPECT_EQ(options.ease, Ease::kCosine);
    EXPECT_EQ(options.fields, FieldChoice::kBottom);
    EXPECT_EQ(options.sheet, "sheet.png");
    EXPECT_TRUE(options.overwrite);
}

TEST(OptionsTest, KnowsTheEffectsInSpace) {
    EXPECT_EQ(accepted({"--effect", "fly", "--duration", "2s"}).effect, EffectKind::kFly);
    const Options cube = accepted({"--effect", "cube", "--duration", "2s"});
    EXPECT_EQ(cube.effect, EffectKind::kCube);
    EXPECT_EQ(cube.color_rgb, 0u);
    EXPECT_FALSE(cube.points);
    EXPECT_EQ(accepted({"--effect", "cube", "--duration", "2s", "--color", "203040"}).color_rgb, 0x203040u);
    const Options shape = accepted({"--effect", "shape", "--duration", "2s", "--points", "star.txt"});
    EXPECT_EQ(shape.effect, EffectKind::kShape);
    EXPECT_EQ(shape.points, "star.txt");
}

TEST(OptionsTest, KnowsTheEffectsThatResample) {
    EXPECT_EQ(accepted({"--effect", "zoom", "--duration", "2s"}).effect, EffectKind::kZoom);
    const Options push = accepted({"--effect", "push", "--duration", "2s"});
    EXPECT_EQ(push.effect, EffectKind::kPush);
    EXPECT_EQ(push.direction, Direction::kLeft);
    const auto direction = [](const char* word) {
        return accepted({"--effect", "push", "--duration", "2s", "--direction", word}).direction;
    };
    EXPECT_EQ(direction("left"), Direction::kLeft);
    EXPECT_EQ(direction("right"), Direction::kRight);
    EXPECT_EQ(direction("up"), Direction::kUp);
    EXPECT_EQ(direction("down"), Direction::kDown);
}

TEST(OptionsTest, RefusesWithOneLine) {
    const std::vector<std::string> good = {"--effect", "box", "--duration", "2s"};
    const auto plus = [&](std::vector<std::string> more) {
        more.insert(more.begin(), good.begin(), good.end());
        return with(more);
    };
    expect_refused({}, "required");
    expect_refused({"a.mp4"}, "required");
    expect_refused({"a.mp4", "b.mp4", "--effect", "box", "--duration", "2s"}, "output");
    expect_refused(with({"--duration", "2s"}), "effect");
    expect_refused(with({"--effect", "box"}), "duration");
    expect_refused(with({"--effect", "wipe", "--duration", "2s"}),
                   "unknown effect 'wipe': choose crossfade, box, circle, band, shape, fly, cube, zoom or push");
    for (const char* duration : {"0", "0s", "0f", "0ms"})
        expect_refused(with({"--effect", "box", "--duration", duration}), "longer than nothing");
    for (const char* duration : {"-2s", "--", "two", "2 s", "", "1e99"})
        expect_refused(with({"--effect", "box", "--duration", duration}), "duration");
    expect_refused(plus({"--at", "soon"}), "--at 'soon'");
    expect_refused(plus({"--feather", "wide"}), "feather");
    expect_refused(plus({"--feather", "nan"}), "feather");
    expect_refused(plus({"--feather", "5000"}), "feather");
    expect_refused(plus({"--feather=-1"}), "feather");
    expect_refused(plus({"--color", "FF8000"}), "band and cube only");
    expect_refused(plus({"--points", "star.txt"}), "--points has a meaning for --effect shape only");
    expect_refused(with({"--effect", "shape", "--duration", "1s"}), "--effect shape needs --points FILE");
    expect_refused(with({"--effect", "shape", "--duration", "1s", "--points", ""}), "a file name is empty");
    for (const char* effect : {"fly", "shape", "zoom", "push"})
        expect_refused(with({"--effect", effect, "--duration", "1s", "--color", "FF8000"}), "band and cube only");
    expect_refused(with({"--effect", "band", "--duration", "1s", "--color", "red"}), "--color 'red'");
    for (const char* effect : {"crossfade", "shape", "fly", "cube", "zoom", "push"})
        expect_refused(with({"--effect", effect, "--duration", "1s", "--feather", "5"}),
                       "--feather has a meaning for --effect box, circle and band only");
    expect_refused(plus({"--ease", "bounce"}), "unknown ease 'bounce': choose linear or cosine");
    expect_refused(plus({"--direction", "left"}), "--direction has a meaning for --effect push only");
    expect_refused(with({"--effect", "zoom", "--duration", "1s", "--direction", "up"}), "for --effect push only");
    expect_refused(with({"--effect", "push", "--duration", "1s", "--direction", "north"}),
                   "unknown direction 'north': choose left, right, up or down");
    expect_refused(plus({"--fields", "both"}), "unknown field order 'both'");
    expect_refused(plus({"--nonsense"}), "nonsense");
    expect_refused(plus({"c.mp4"}), "c.mp4");
}

TEST(OptionsTest, NeverReplacesAnInput) {
    const std::vector<std::string> rest = {"--effect", "box", "--duration", "2s", "-y"};
    const auto command = [&](std::vector<std::string> start) {
        start.insert(start.end(), rest.begin(), rest.end());
        return start;
    };
    expect_refused(command({"a.mp4", "b.mp4", "-o", "./a.mp4"}), "replace the first video");
    expect_refused(command({"a.mp4", "b.mp4", "-o", "x/../b.mp4"}), "replace the second video");
    expect_refused(command({"a.mp4", "b.mp4", "-o", "o.mp4", "--sheet", "b.mp4"}), "replace the second video");
    expect_refused(command({"a.mp4", "b.mp4", "-o", "o.mp4", "--sheet", "o.mp4"}), "replace the video just written");
    const auto shape = [](std::vector<std::string> more) {
        more.insert(more.begin(), {"a.mp4", "b.mp4", "--effect", "shape", "--duration", "2s", "--points", "p.txt"});
        return more;
    };
    expect_refused(shape({"-o", "./p.txt"}), "replace the shape's corners");
    expect_refused(shape({"-o", "o.mp4", "--sheet", "x/../p.txt"}), "replace the shape's corners");
}

TEST(OptionsTest, PrintsHelpAndVersion) {
    const CommandLine help = parse_command_line({"--help"});
    EXPECT_FALSE(help.run);
    for (const char* part : {"Examples:", "--effect", "--duration", "--at", "--feather", "--color", "--points",
                             "--direction", "--ease", "--fields", "--sheet", "Exit status"})
        EXPECT_NE(help.text.find(part), std::string::npos) << part;
    const CommandLine version = parse_command_line({"--version"});
    EXPECT_FALSE(version.run);
    EXPECT_EQ(version.text.rfind("zepbmp-transition ", 0), 0u) << version.text;
}

}  // namespace
}  // namespace zepbmp::transition
