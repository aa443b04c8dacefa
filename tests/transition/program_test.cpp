// Runs the program itself on small clips and looks at what it leaves behind.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "clips.h"
#include "frame_converter.h"
#include "program.h"

namespace zepbmp::transition {
namespace {

constexpr double kLumaTolerance = 3;  // of the encoder

TEST(Program, JoinsTwoVideosOfDifferentKind) {
    const ScratchFolder folder;
    Clip a, b;
    a.luma = [](double frame) { return 40 + static_cast<int>(4 * frame); };
    a.tone_hz = 500;
    b.width = 96;
    b.height = 80;
    b.rate = {10, 1};
    b.frames = 15;
    b.luma = [](double frame) { return 220 - static_cast<int>(5 * frame); };
    b.tone_hz = 1500;
    b.sound_rate = 44100;
    write_clip(folder / "a.mp4", a);
    write_clip(folder / "b.mov", b);
    const Result result = run(command(folder / "a.mp4", folder / "b.mov", folder / "out.mp4",
                                      {"--effect", "crossfade", "--duration", "10f", "--at", "6f"}));
    expect_done(result);
    EXPECT_NE(result.out.find("44 frames, 1.76 s, 64x48, 25 frames/s, progressive, h264 and aac"), std::string::npos)
        << result.out;
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.mp4", "b.mov", "out.mp4"}));

    const Contents contents = read_contents(folder / "out.mp4");
    EXPECT_EQ(contents.info.width, 64);
    EXPECT_EQ(contents.info.height, 48);
    EXPECT_DOUBLE_EQ(contents.info.rate.per_second(), 25);
    EXPECT_NEAR(contents.info.length_seconds, 44 / 25.0, 1e-3);
    ASSERT_EQ(contents.top.size(), 44u);  // 6 + 1.5 s of B, 38 frames
    for (int frame = 0; frame < 44; ++frame) {
        const int frame_b = std::clamp(static_cast<int>(std::floor(((frame - 6) + 0.45) * 10 / 25)), 0, 14);
        const double luma_a = a.luma(frame), luma_b = b.luma(frame_b);
        const double part = std::clamp((frame + 0.5 - 6) / 10, 0.0, 1.0);
        const double want = frame < 6 ? luma_a : frame >= 16 ? luma_b : luma_a + part * (luma_b - luma_a);
        EXPECT_NEAR(contents.top[frame], want, kLumaTolerance) << frame;
        EXPECT_NEAR(contents.bottom[frame], want, kLumaTolerance) << frame;
        EXPECT_FALSE(contents.interlaced[frame]);
    }

    const int rate = contents.sound_rate;
    ASSERT_EQ(rate, 48000);
    const auto level = [&](double from_frame, double to_frame, double hz) {
        return tone_level(contents.sound, static_cast<int>(from_frame / 25 * rate),
                          static_cast<int>(to_frame / 25 * rate), hz, rate);
    };
    EXPECT_NEAR(level(1, 5.5, 500), 0.5, 0.05);
    EXPECT_NEAR(level(1, 5.5, 1500), 0, 0.03);
    EXPECT_NEAR(level(10.5, 11.5, 500), 0.5 * std::sqrt(0.5), 0.06);
    EXPECT_NEAR(level(10.5, 11.5, 1500), 0.5 * std::sqrt(0.5), 0.06);
    EXPECT_NEAR(level(17, 40, 500), 0, 0.03);
    EXPECT_NEAR(level(17, 40, 1500), 0.5, 0.05);
}

// A dissolve and the push show a share of B that grows evenly, the zoom one that grows with the square.
TEST(Program, ComposesFieldByField) {
    const struct {
        Arguments effect;
        double power;
    } cases[] = {{{"--effect", "crossfade"}, 1},
                 {{"--effect", "push"}, 1},
                 {{"--effect", "push", "--direction", "down"}, 1},
                 {{"--effect", "zoom"}, 2}};
    for (FieldOrder order : {FieldOrder::kTopFirst, FieldOrder::kBottomFirst}) {
        const ScratchFolder folder;
        Clip a, b;
        a.fields = b.fields = order;
        a.luma = [](double frame) { return 30 + static_cast<int>(4 * frame); };
        b.luma = [](double frame) { return 210 - static_cast<int>(4 * frame); };
        b.height = 64;
        write_clip(folder / "a.mkv", a);
        write_clip(folder / "b.mkv", b);
        for (const auto& c : cases) {
            Arguments more = {"--duration", "10f", "-y"};
            more.insert(more.end(), c.effect.begin(), c.effect.end());
            expect_done(run(command(folder / "a.mkv", folder / "b.mkv", folder / "out.mkv", more)));
            const Contents contents = read_contents(folder / "out.mkv");
            ASSERT_EQ(contents.top.size(), 30u);
            EXPECT_EQ(contents.info.fields, order);
            for (int frame = 0; frame < 30; ++frame) {
                EXPECT_TRUE(contents.interlaced[frame]);
                EXPECT_EQ(contents.top_first[frame], order == FieldOrder::kTopFirst);
                for (double half : {0.0, 0.5}) {
                    const double moment = frame + half;
                    const double part = std::pow(std::clamp((moment + 0.25 - 10) / 10, 0.0, 1.0), c.power);
                    const double want = a.luma(moment) * (1 - part) + b.luma(moment - 10) * part;
                    const bool top = (half == 0) == (order == FieldOrder::kTopFirst);
                    EXPECT_NEAR((top ? contents.top : contents.bottom)[frame], want, kLumaTolerance)
                        << c.effect.back() << " " << frame << (top ? " top" : " bottom");
                }
            }
        }
    }
}

// Pictures that are moved, turned or squeezed hold in each field what that field's moment shows.
TEST(Program, MapsFieldByField) {
    const ScratchFolder folder;
    Clip a, b;
    a.frames = b.frames = 12;
    a.fields = b.fields = FieldOrder::kTopFirst;
    a.luma = [](double moment) { return moment == std::floor(moment) ? 50 : 60; };
    b.luma = [](double moment) { return moment == std::floor(moment) ? 100 : 200; };
    write_clip(folder / "a.mkv", a);
    write_clip(folder / "b.mkv", b);
    for (const char* effect : {"fly", "cube", "zoom", "push"}) {
        expect_done(run(command(folder / "a.mkv", folder / "b.mkv", folder / "out.mkv",
                                {"--effect", effect, "--duration", "8f", "-y"})));
        const Contents contents = read_contents(folder / "out.mkv");
        ASSERT_EQ(contents.top.size(), 16u);
        for (int frame = 9; frame < 12; ++frame) {
            EXPECT_LE(contents.top[frame], 100 + kLumaTolerance) << effect << frame;
            EXPECT_GE(contents.bottom[frame], 1.4 * contents.top[frame]) << effect << frame;
        }
        EXPECT_NEAR(contents.top[12], 100, kLumaTolerance) << effect;
        EXPECT_NEAR(contents.bottom[12], 200, kLumaTolerance) << effect;
    }
}

// Field order is A's; each field of B is shown in the lines that it was taken for, at its own time.
TEST(Program, MixesBothFieldOrders) {
    const ScratchFolder folder;
    Clip a, b;
    a.fields = FieldOrder::kTopFirst;
    b.fields = FieldOrder::kBottomFirst;
    b.luma = [](double frame) { return 40 + static_cast<int>(8 * frame); };
    write_clip(folder / "a.mkv", a);
    write_clip(folder / "b.mkv", b);
    expect_done(
        run(command(folder / "a.mkv", folder / "b.mkv", folder / "out.mkv", {"--effect", "box", "--duration", "4f"})));
    const Contents contents = read_contents(folder / "out.mkv");
    ASSERT_EQ(contents.top.size(), 36u);
    for (int frame = 21; frame < 36; ++frame) {
        const int frame_b = frame - 16;
        EXPECT_NEAR(contents.top[frame], b.luma(frame_b - 0.5), kLumaTolerance) << frame;
        EXPECT_NEAR(contents.bottom[frame], b.luma(frame_b), kLumaTolerance) << frame;
    }
}

TEST(Program, ObeysTheFieldsOption) {
    const ScratchFolder folder;
    Clip clip;
    clip.frames = 8;
    write_clip(folder / "plain.mkv", clip);
    clip.fields = FieldOrder::kTopFirst;
    clip.luma = [](double moment) { return moment == std::floor(moment) ? 60 : 180; };
    write_clip(folder / "combed.mkv", clip);
    const auto fields_of = [&](const char* a, const char* choice) {
        expect_done(run(command(folder / a, folder / a, folder / "out.mkv",
                                {"--effect", "circle", "--duration", "4f", "--fields", choice, "-y"})));
        return read_contents(folder / "out.mkv").info.fields;
    };
    EXPECT_EQ(fields_of("plain.mkv", "auto"), FieldOrder::kProgressive);
    EXPECT_EQ(fields_of("plain.mkv", "top"), FieldOrder::kTopFirst);
    EXPECT_EQ(fields_of("plain.mkv", "bottom"), FieldOrder::kBottomFirst);
    EXPECT_EQ(fields_of("combed.mkv", "auto"), FieldOrder::kTopFirst);
    EXPECT_EQ(fields_of("combed.mkv", "progressive"), FieldOrder::kProgressive);

    // An interlaced B in a progressive A: its combing goes.
    expect_done(run(command(folder / "plain.mkv", folder / "combed.mkv", folder / "out.mkv",
                            {"--effect", "circle", "--duration", "4f", "-y"})));
    const Contents contents = read_contents(folder / "out.mkv");
    EXPECT_EQ(contents.info.fields, FieldOrder::kProgressive);
    EXPECT_NEAR(contents.top.back(), 60, kLumaTolerance);
    EXPECT_NEAR(contents.bottom.back(), 60, kLumaTolerance);
}

TEST(Program, EveryEffectRunsThrough) {
    const ScratchFolder folder;
    Clip clip;
    write_clip(folder / "a.mp4", clip);
    clip.luma = [](double) { return 180; };
    write_clip(folder / "b.mp4", clip);
    std::ofstream(folder / "points.txt") << "0.5 0\n1 0.8 # right\n0 0.8\n";
    for (const char* effect : {"crossfade", "box", "circle", "band", "shape", "fly", "cube", "zoom", "push"})
        for (const char* ease : {"linear", "cosine"}) {
            Arguments more = {"--effect", effect, "--duration", "0.4s", "--ease", ease, "-y"};
            if (more[1] == "shape")
                more.insert(more.end(), {"--points", folder / "points.txt"});
            expect_done(run(command(folder / "a.mp4", folder / "b.mp4", folder / "out.avi", more)));
            const Contents contents = read_contents(folder / "out.avi");
            ASSERT_EQ(contents.top.size(), 30u);
            EXPECT_NEAR(contents.top[9], 60, kLumaTolerance) << effect;
            EXPECT_GT(contents.top[15], contents.top[10]) << effect;
            EXPECT_NEAR(contents.top[20], 180, kLumaTolerance) << effect;
        }
}

TEST(Program, KeepsPixelShapeAndOddSizes) {
    const ScratchFolder folder;
    Clip a, b;
    a.width = 65;
    a.height = 49;
    a.frames = 6;
    a.sample_aspect = {16, 15};
    b.frames = 6;
    b.luma = [](double) { return 190; };
    write_clip(folder / "a.mkv", a);
    write_clip(folder / "b.mkv", b);
    for (const char* effect : {"circle", "band", "fly", "cube", "zoom", "push"}) {
        expect_done(run(command(folder / "a.mkv", folder / "b.mkv", folder / "out.mkv",
                                {"--effect", effect, "--duration", "4f", "-y"})));
        const Contents contents = read_contents(folder / "out.mkv");
        EXPECT_EQ(contents.info.width, 65);
        EXPECT_EQ(contents.info.height, 49);
        EXPECT_EQ(av_cmp_q(contents.info.sample_aspect, {16, 15}), 0);
        ASSERT_EQ(contents.last_column.size(), 8u);
        EXPECT_NEAR(contents.last_column.front(), 60, kLumaTolerance);
        EXPECT_NEAR(contents.last_column.back(), 190, kLumaTolerance);
    }
}

TEST(Program, FillsMissingSoundWithSilence) {
    const ScratchFolder folder;
    Clip clip;
    write_clip(folder / "silent.mp4", clip);
    clip.tone_hz = 1000;
    write_clip(folder / "loud.mp4", clip);
    const Arguments fade = {"--effect", "crossfade", "--duration", "5f", "-y"};
    const auto sound_of = [&](const char* a, const char* b) {
        expect_done(run(command(folder / a, folder / b, folder / "out.mp4", fade)));
        return read_contents(folder / "out.mp4").sound;
    };
    const int begin = 2 * 48000 / 25, a_end = 14 * 48000 / 25, b_begin = 21 * 48000 / 25, end = 34 * 48000 / 25;
    const std::vector<float> rising = sound_of("silent.mp4", "loud.mp4");
    ASSERT_FALSE(rising.empty());
    EXPECT_NEAR(tone_level(rising, begin, a_end, 1000, 48000), 0, 0.02);
    EXPECT_NEAR(tone_level(rising, b_begin, end, 1000, 48000), 0.5, 0.05);
    const std::vector<float> falling = sound_of("loud.mp4", "silent.mp4");
    ASSERT_FALSE(falling.empty());
    EXPECT_NEAR(tone_level(falling, begin, a_end, 1000, 48000), 0.5, 0.05);
    EXPECT_NEAR(tone_level(falling, b_begin, end, 1000, 48000), 0, 0.02);
    EXPECT_TRUE(sound_of("silent.mp4", "silent.mp4").empty());
}

TEST(Program, WritesAContactSheet) {
    const ScratchFolder folder;
    Clip a, b;
    b.luma = [](double) { return 200; };
    write_clip(folder / "a.mp4", a);
    write_clip(folder / "b.mp4", b);
    expect_done(run(command(folder / "a.mp4", folder / "b.mp4", folder / "out.mp4",
                            {"--effect", "circle", "--duration", "15f", "--sheet", folder / "sheet.png"})));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.mp4", "b.mp4", "out.mp4", "sheet.png"}));
    StreamDecoder decoder(folder / "sheet.png", AVMEDIA_TYPE_VIDEO);
    const AVFrame* const sheet = decoder.next();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->width, 4 * 330 + 10);
    EXPECT_EQ(sheet->height, 3 * (240 + 3 + 10) + 10);
    ASSERT_EQ(sheet->format, AV_PIX_FMT_RGB24);
    const auto grey = [&](int x, int y) { return sheet->data[0][y * sheet->linesize[0] + 3 * x]; };
    EXPECT_NEAR(grey(10 + 160, 10 + 120), (60 - 16) * 255 / 219, 4);
    EXPECT_NEAR(grey(sheet->width - 170, sheet->height - 130), (200 - 16) * 255 / 219, 4);
    EXPECT_NEAR(grey(2, 2), 0x20, 1);
}

TEST(Program, RefusesBadRequestsWithOneLineAndStatus2) {
    const ScratchFolder folder;
    Clip clip;
    write_clip(folder / "a.mp4", clip);
    write_clip(folder / "b.mp4", clip);
    std::ofstream(folder / "noise.mp4") << std::string(5000, 'x');
    std::ofstream(folder / "empty.mp4");
    std::ofstream(folder / "text.txt") << "no video\n";
    std::ofstream(folder / "taken.mp4") << "precious";
    std::ofstream(folder / "line.txt") << "# a line\n0 0\n1 1\n2 2\n";
    std::filesystem::create_directory(folder / "folder.mp4");
    const std::vector<std::string> before = folder.names();

    const std::filesystem::path a = folder / "a.mp4", b = folder / "b.mp4", out = folder / "out.mp4";
    const auto circle = [](std::string duration, Arguments more = {}) {
        more.insert(more.begin(), {"--effect", "circle", "--duration", std::move(duration)});
        return more;
    };
    const auto shape = [&](const std::string& points) {
        return command(a, b, out, {"--effect", "shape", "--duration", "0.2s", "--points", folder / points});
    };
    const struct {
        Arguments arguments;
        const char* part;
    } cases[] = {
        {{}, "required"},
        {command(a, b, out, {"--effect", "shape", "--duration", "0.2s"}), "needs --points FILE"},
        {shape("none.txt"), "none.txt: No such file"},
        {shape("folder.mp4"), "folder.mp4: is a folder"},
        {shape("text.txt"), "text.txt:1: not a corner"},
        {shape("line.txt"), "line.txt: the polygon has no area"},
        {command(folder / "none.mp4", b, out, circle("0.2s")), "none.mp4: No such file"},
        {command(a, folder / "none.mp4", out, circle("0.2s")), "none.mp4: No such file"},
        {command(folder / "noise.mp4", b, out, circle("0.2s")), "noise.mp4: "},
        {command(a, folder / "empty.mp4", out, circle("0.2s")), "empty.mp4: "},
        {command(a, folder / "text.txt", out, circle("0.2s")), "text.txt: is not a video"},
        {command(folder / "folder.mp4", b, out, circle("0.2s")), "folder.mp4: is a folder"},
        {command(a, b, out, {"--effect", "wipe", "--duration", "1s"}), "unknown effect 'wipe'"},
        {command("", b, out, {"--effect", "box", "--duration", "1s"}), "a file name is empty"},
        {command(a, b, "", {"--effect", "box", "--duration", "1s"}), "a file name is empty"},
        {command(a, b, out, {"--effect", "box", "--duration", "1s", "--sheet", ""}), "a file name is empty"},
        {command(a, b, out, circle("0s")), "longer than nothing"},
        {command(a, b, out, circle("1ms")), "shorter than one frame"},
        {command(a, b, out, circle("5s")), "the first video lasts only 0.80 s (20 frames)"},
        {command(a, b, out, circle("0.4s", {"--at", "0.6s"})), "after the first video's end"},
        {command(a, b, folder / "taken.mp4", circle("0.2s")), "exists already"},
        {command(a, b, folder / "folder.mp4", circle("0.2s", {"-y"})), "not a plain file"},
        {command(a, b, a, circle("0.2s", {"-y"})), "replace the first video"},
        {command(a, b, folder / "nowhere/out.mp4", circle("0.2s")), "cannot be written"},
        {command(a, b, folder / "out.xyz", circle("0.2s")), "ending"},
        {command(a, b, folder / "out.png", circle("0.2s")), "ending"},
        {command(a, b, out, circle("0.2s", {"--sheet", folder / "taken.mp4"})), "exists already"},
        {command(a, b, out, circle("0.2s", {"--sheet", folder / "nowhere/s.png"})), "cannot be written"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.part);
        expect_one_line(run(c.arguments), 2, c.part);
        EXPECT_EQ(folder.names(), before);
    }
    EXPECT_EQ(file_text(folder / "taken.mp4"), "precious");
}

TEST(Program, ReplacesAFileOnlyWhenTold) {
    const ScratchFolder folder;
    Clip clip;
    clip.frames = 6;
    write_clip(folder / "a.mp4", clip);
    std::ofstream(folder / "out.mp4") << "old";
    expect_done(run(command(folder / "a.mp4", folder / "a.mp4", folder / "out.mp4",
                            {"--effect", "box", "--duration", "2f", "-y"})));
    EXPECT_EQ(read_contents(folder / "out.mp4").top.size(), 10u);
}

TEST(Program, ToleratesADamagedEnd) {
    const ScratchFolder folder;
    Clip clip;
    clip.width = 320;
    clip.height = 240;
    clip.frames = 40;
    clip.luma = [](double frame) { return 40 + static_cast<int>(frame * 37) % 160; };
    write_clip(folder / "a.mkv", clip);
    std::filesystem::resize_file(folder / "a.mkv", std::filesystem::file_size(folder / "a.mkv") * 3 / 4);
    expect_done(
        run(command(folder / "a.mkv", folder / "a.mkv", folder / "out.mkv", {"--effect", "box", "--duration", "2f"})));
    EXPECT_GT(read_contents(folder / "out.mkv").top.size(), 10u);
}

TEST(Program, LeavesNothingWhenTheDiskIsFull) {
    const ScratchFolder folder;
    Clip clip;
    clip.tone_hz = 500;
    write_clip(folder / "a.mp4", clip);
    const std::vector<std::string> before = folder.names();
    const Result result = run(
        command(folder / "a.mp4", folder / "a.mp4", folder / "out.mp4", {"--effect", "box", "--duration", "4f"}), 2000);
    EXPECT_EQ(result.exit_code, 1) << result.err;
    EXPECT_NE(result.err.find("out.mp4: cannot be written"), std::string::npos) << result.err;
    EXPECT_EQ(folder.names(), before);
}

TEST(Program, LeavesNothingWhenInterrupted) {
    const ScratchFolder folder;
    Clip clip;
    clip.width = 1280;
    clip.height = 720;
    clip.frames = 200;
    clip.luma = [](double frame) { return 40 + static_cast<int>(frame) % 160; };
    write_clip(folder / "long.mp4", clip);
    const std::vector<std::string> before = folder.names();
    for (int signal : {SIGINT, SIGTERM}) {
        const pid_t child = fork();
        if (child == 0) {
            dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
            dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
            exec_program(command(folder / "long.mp4", folder / "long.mp4", folder / "out.mp4",
                                 {"--effect", "circle", "--duration", "4s", "--sheet", folder / "sheet.png"}));
        }
        for (int tries = 0; folder.names() == before && tries < 1000; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_NE(folder.names(), before) << "the work never began";
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        kill(child, signal);
        EXPECT_EQ(wait_for(child), -signal);
        EXPECT_EQ(folder.names(), before);
    }
}

TEST(Program, ShowsLinesWithoutATerminal) {
    const ScratchFolder folder;
    Clip clip;
    write_clip(folder / "a.mp4", clip);
    const Result result =
        run(command(folder / "a.mp4", folder / "a.mp4", folder / "out.mp4", {"--effect", "box", "--duration", "4f"}));
    expect_done(result);
    EXPECT_EQ(result.err.find('\r'), std::string::npos);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 10) << result.err;
    EXPECT_NE(result.err.find("100%  36/36 frames"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("frames/s"), std::string::npos) << result.err;
}

TEST(Program, DrawsABarOnATerminal) {
    const ScratchFolder folder;
    Clip clip;
    write_clip(folder / "a.mp4", clip);
    const Arguments arguments =
        command(folder / "a.mp4", folder / "a.mp4", folder / "out.mp4", {"--effect", "box", "--duration", "4f"});
    int terminal = -1;
    const winsize size{24, 70, 0, 0};
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0)
        exec_program(arguments);
    std::string seen;
    char piece[4096];
    for (ssize_t got; (got = read(terminal, piece, sizeof piece)) > 0;)
        seen.append(piece, got);
    close(terminal);
    EXPECT_EQ(wait_for(child), 0);
    EXPECT_NE(seen.find("\r[#"), std::string::npos) << seen;
    EXPECT_NE(seen.find("100%  36/36 frames"), std::string::npos) << seen;
    EXPECT_NE(seen.find("0:00 left"), std::string::npos) << seen;
    EXPECT_NE(seen.find("out.mp4: 36 frames"), std::string::npos) << seen;
}

TEST(Program, PrintsHelp) {
    const Result result = run({"--help"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_NE(result.out.find("Examples:"), std::string::npos);
    EXPECT_EQ(result.err, "");
}

}  // namespace
}  // namespace zepbmp::transition
