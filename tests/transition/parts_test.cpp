// Parts of a transition, and what joining them gives: to the byte what one run writes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "clips.h"
#include "footage.h"
#include "part_file.h"
#include "program.h"

namespace zepbmp::transition {
namespace {

namespace fs = std::filesystem;

constexpr char kOpenGroups[] = "g=12,bf=3,x264-params=open-gop=1:scenecut=0,preset=veryfast";

std::string part_name(const std::string& frames) {
    std::string name = "part-" + frames + ".mkv";
    std::replace(name.begin(), name.end(), ':', '-');
    return name;
}

/// Two videos in a folder, and the options of a transition between them.
struct Request {
    const ScratchFolder& folder;
    std::string a;
    std::string b;
    Arguments options;

    Arguments with(const fs::path& output, const Arguments& more = {}) const {
        Arguments all = options;
        all.insert(all.end(), more.begin(), more.end());
        return command(folder / a, folder / b, output, all);
    }
    fs::path part(const std::string& frames, const Arguments& more = {}) const {
        const fs::path path = folder / part_name(frames);
        Arguments all = {"--frames", frames};
        all.insert(all.end(), more.begin(), more.end());
        const Result result = run(with(path, all));
        EXPECT_EQ(result.exit_code, 0) << result.err;
        EXPECT_EQ(result.err.find("warning"), std::string::npos) << result.err;
        return path;
    }
    int64_t count(const Arguments& more = {}) const {
        Arguments all = {(folder / a).string(), (folder / b).string(), "--count"};
        all.insert(all.end(), options.begin(), options.end());
        all.insert(all.end(), more.begin(), more.end());
        const Result result = run(all);
        EXPECT_EQ(result.exit_code, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return std::atoll(result.out.c_str());
    }
};

Arguments join(const std::vector<fs::path>& parts, const fs::path& output, const Arguments& more = {}) {
    Arguments all = {"join", "-o", output.string()};
    all.insert(all.end(), parts.begin(), parts.end());
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

/// Every frame's bytes and samples.
struct PartContents {
    std::vector<std::string> pictures;
    std::vector<std::string> sound;
};

PartContents contents_of(const fs::path& path) {
    PartReader reader(path);
    const PartHeader& header = reader.header();
    Bitmap picture((header.video.width + 1) & ~1, header.video.height, Format::yuy2);
    PartContents contents;
    for (int64_t frame = header.frames.first; frame < header.frames.end; ++frame) {
        reader.read_picture(picture);
        std::string bytes;
        for (int y = 0; y < picture.height(); ++y)
            bytes.append(reinterpret_cast<const char*>(picture.pointer(0, y)), 2 * picture.width());
        contents.pictures.push_back(bytes);
        if (!header.sound)
            continue;
        const int count = static_cast<int>(sample_at(frame + 1, header.video.rate, header.sound->rate) -
                                           sample_at(frame, header.video.rate, header.sound->rate));
        std::vector<float> samples(header.sound->layout.channels() * count);
        std::vector<float*> channels;
        for (int c = 0; c < header.sound->layout.channels(); ++c)
            channels.push_back(samples.data() + c * count);
        reader.read_sound(channels.data(), count);
        contents.sound.emplace_back(reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(float));
    }
    reader.finish();
    return contents;
}

/// Samples of one channel after another, as all channels of one sample after another.
std::string interleaved(const std::string& planar, size_t channels) {
    const size_t count = planar.size() / sizeof(float) / channels;
    std::string bytes;
    for (size_t i = 0; i < count; ++i)
        for (size_t c = 0; c < channels; ++c)
            bytes.append(planar, (c * count + i) * sizeof(float), sizeof(float));
    return bytes;
}

/// Cuts the output before each of the given frames, compares every part with all of it in one part, and the parts
/// joined with what one run writes.
void expect_parts_equal_the_whole(const Request& request, const std::vector<int64_t>& cuts) {
    const int64_t total = request.count({"--measures", request.folder / "measures.txt"});
    const PartContents whole = contents_of(request.part("0:" + std::to_string(total)));
    ASSERT_EQ(static_cast<int64_t>(whole.pictures.size()), total);
    const std::set<std::string> different(whole.pictures.begin(), whole.pictures.end());
    ASSERT_GE(static_cast<int64_t>(different.size()), total / 3) << "frames cannot be told apart";

    std::vector<fs::path> parts;
    for (size_t i = 0; i <= cuts.size(); ++i) {
        const int64_t first = i == 0 ? 0 : cuts[i - 1], end = i == cuts.size() ? total : cuts[i];
        const std::string frames = std::to_string(first) + ":" + std::to_string(end);
        // Every second part reads the measures, the others measure for themselves.
        const Arguments measured = {"--measures", request.folder / "measures.txt"};
        parts.insert(parts.begin(), request.part(frames, i % 2 == 0 ? measured : Arguments()));
        const PartContents part = contents_of(parts.front());
        for (int64_t frame = first; frame < end; ++frame) {
            EXPECT_TRUE(part.pictures.at(frame - first) == whole.pictures.at(frame)) << "picture " << frame;
            if (!whole.sound.empty()) {
                EXPECT_TRUE(part.sound.at(frame - first) == whole.sound.at(frame)) << "sound of frame " << frame;
            }
        }
    }
    expect_done(run(request.with(request.folder / "whole.mp4", {"--sheet", request.folder / "whole.png"})));
    expect_done(run(join(parts, request.folder / "joined.mp4", {"--sheet", request.folder / "joined.png"})));
    EXPECT_TRUE(file_text(request.folder / "joined.mp4") == file_text(request.folder / "whole.mp4"));
    EXPECT_TRUE(file_text(request.folder / "joined.png") == file_text(request.folder / "whole.png"));
}

TEST(Parts, OfOpenGroupsOddRatesAndNoisySound) {
    const ScratchFolder folder;
    Footage a, b;
    a.rate = {30000, 1001};
    a.frames = 45;
    a.codec_options = kOpenGroups;
    a.sound_codec = "aac";
    b.width = 80;
    b.codec = "mpeg2video";
    b.codec_options = "g=10,bf=2";
    b.rate = {24, 1};
    b.sound_codec = "ac3";
    b.sound_rate = 44100;
    b.seed = 2;
    write_footage(folder / "a.mp4", a);
    write_footage(folder / "b.mkv", b);
    // Frames 15 to 44 are the transition.
    expect_parts_equal_the_whole({folder, "a.mp4", "b.mkv", {"--effect", "fly", "--duration", "30f"}},
                                 {1, 14, 15, 16, 29, 31, 44, 45, 60});
}

TEST(Parts, OfInterlacedVideosOfTwoRates) {
    const ScratchFolder folder;
    Footage a, b;
    a.frames = 30;
    a.fields = FieldOrder::kTopFirst;
    a.codec_options = "g=8,bf=2";
    a.sound_codec = "pcm_s16le";
    a.sound_rate = 32000;
    a.sound_seconds = 2;  // the picture lasts 1.2
    b.fields = FieldOrder::kBottomFirst;
    b.rate = {10, 1};
    b.frames = 20;
    b.height = 48;
    b.codec_options = "g=6,bf=1";
    b.seed = 2;
    write_footage(folder / "a.mkv", a);
    write_footage(folder / "b.mp4", b);
    expect_parts_equal_the_whole(
        {folder, "a.mkv", "b.mp4", {"--effect", "push", "--duration", "12f", "--ease", "cosine"}},
        {7, 18, 19, 22, 29, 31, 32, 33, 51});
}

TEST(Parts, WithoutSound) {
    const ScratchFolder folder;
    Footage a, b;
    a.width = 97;  // odd: the output's bitmaps are a column wider
    a.height = 63;
    a.codec = "ffv1";
    b.codec_options = "g=9,bf=2";
    b.rate = {60, 1};
    b.frames = 60;
    b.seed = 2;
    write_footage(folder / "a.mkv", a);
    write_footage(folder / "b.ts", b);
    const Request request{folder, "a.mkv", "b.ts", {"--effect", "cube", "--duration", "9f", "--at", "11f"}};
    expect_parts_equal_the_whole(request, {10, 12, 19, 20, 28});
    EXPECT_FALSE(PartReader(folder / part_name("0:10")).header().sound);
}

// AVI has no presentation times: such a video is decoded from its beginning.
TEST(Parts, OfVideosInWhichNothingCanBeSought) {
    const ScratchFolder folder;
    Footage a;
    a.codec = "mpeg4";
    a.codec_options = "g=10,bf=2";
    a.sound_codec = "mp2";
    write_footage(folder / "a.avi", a);
    expect_parts_equal_the_whole({folder, "a.avi", "a.avi", {"--effect", "circle", "--duration", "20f"}}, {25, 33, 50});
    EXPECT_NE(file_text(folder / "measures.txt").find("keyframes 0"), std::string::npos);
}

// A container that takes 48 kHz at most, from parts that hold the first video's 96 kHz.
TEST(Parts, KeepTheSoundUntilTheContainerIsKnown) {
    const ScratchFolder folder;
    Footage a;
    a.sound_codec = "pcm_s16le";
    a.sound_rate = 96000;
    a.sound_channels = 1;
    write_footage(folder / "a.mkv", a);
    const Request request{folder, "a.mkv", "a.mkv", {"--effect", "box", "--duration", "10f"}};
    const std::vector<fs::path> parts = {request.part("0:33"), request.part("33:70")};
    expect_done(run(request.with(folder / "whole.mpg")));
    expect_done(run(join(parts, folder / "joined.mpg")));
    EXPECT_EQ(find_sound(folder / "whole.mpg").value_or(SoundFormat{}).rate, 48000);
    EXPECT_TRUE(file_text(folder / "joined.mpg") == file_text(folder / "whole.mpg"));
}

// What is decoded for a part is its own length and a group of pictures.
TEST(Parts, AreSoughtInTheInputs) {
    const ScratchFolder folder;
    Footage footage;
    footage.frames = 120;
    footage.codec_options = kOpenGroups;
    write_footage(folder / "a.mp4", footage);
    VideoReader reader(folder / "a.mp4");
    ASSERT_GE(reader.measure().keyframes.size(), 8u);
    for (int frame = 0; frame < 120; frame += 5) {
        const double seconds = (frame + 0.45) / 25;
        VideoReader whole(folder / "a.mp4", reader.measure()), part(folder / "a.mp4", reader.measure());
        part.skip_to(seconds);
        const AVFrame* const sought = part.frame_at(seconds);
        EXPECT_LE(part.frame_number(), 12);
        const AVFrame* const reached = whole.frame_at(seconds);
        EXPECT_EQ(whole.frame_number(), frame + 1);
        for (int y = 0; y < 64; ++y)
            ASSERT_EQ(
                std::memcmp(sought->data[0] + y * sought->linesize[0], reached->data[0] + y * reached->linesize[0], 96),
                0)
                << frame;
    }
}

// Keyframes that are none: found out, said, and made good.
TEST(Parts, DoNotDependOnWhatMeasuresSayOfKeyframes) {
    const ScratchFolder folder;
    Footage footage;
    footage.codec_options = kOpenGroups;
    write_footage(folder / "a.mp4", footage);
    const Request request{folder, "a.mp4", "a.mp4", {"--effect", "box", "--duration", "10f"}};
    EXPECT_EQ(request.count({"--measures", folder / "measures.txt"}), 70);
    const PartContents whole = contents_of(request.part("25:70"));
    std::istringstream in(file_text(folder / "measures.txt"));
    std::ofstream out(folder / "wrong.txt");
    for (std::string line; std::getline(in, line);) {
        int64_t pts = 0, dts = 0;
        if (std::sscanf(line.c_str(), "%" SCNd64 " %" SCNd64, &pts, &dts) == 2 && pts > 0)
            out << pts + 512 << ' ' << dts << '\n';  // the frame behind it
        else
            out << line << '\n';
    }
    out.close();
    const Result result =
        run(request.with(folder / "wrong.mkv", {"--frames", "25:70", "--measures", folder / "wrong.txt"}));
    expect_done(result);
    EXPECT_NE(result.err.find("warning: " + (folder / "a.mp4").string() + ": was decoded from its beginning"),
              std::string::npos)
        << result.err;
    EXPECT_TRUE(contents_of(folder / "wrong.mkv").pictures == whole.pictures);
}

class RefusedParts : public testing::Test {
protected:
    RefusedParts() {
        Footage footage;
        footage.frames = 20;
        footage.sound_codec = "aac";
        write_footage(folder_ / "a.mp4", footage);
        footage.seed = 2;
        write_footage(folder_ / "b.mp4", footage);
    }
    void expect_refused(const Arguments& arguments, const std::string& part_of_message) {
        SCOPED_TRACE(part_of_message);
        const std::vector<std::string> before = folder_.names();
        expect_one_line(run(arguments), 2, part_of_message);
        EXPECT_EQ(folder_.names(), before);
    }

    ScratchFolder folder_;
    Request request_{folder_, "a.mp4", "b.mp4", {"--effect", "band", "--duration", "8f"}};  // 32 frames
};

TEST_F(RefusedParts, Ranges) {
    const fs::path out = folder_ / "part.mkv";
    for (const char* range : {"5", "5:", ":5", "5:5", "7:5", "-1:5", "1.5:3", "5f:7f", "1:2:3", "a:b"})
        expect_refused(request_.with(out, {"--frames=" + std::string(range)}), "is not a range");
    expect_refused(request_.with(out, {"--frames", "0:33"}), "--frames 0:33 reaches beyond the output's 32 frames");
    expect_refused(request_.with(folder_ / "part.mp4", {"--frames", "0:3"}), "a part's ending is .mkv");
    expect_refused(request_.with(out, {"--frames", "0:3", "--sheet", folder_ / "sheet.png"}),
                   "no meaning with --frames");
    expect_refused(request_.with(out, {"--count", "--frames", "0:3"}), "--frames has no meaning");
    expect_refused(request_.with(out, {"--measures", folder_ / "none.txt"}), "none.txt: is not a file that");
    request_.count({"--measures", folder_ / "measures.txt"});
    const std::string measures = file_text(folder_ / "measures.txt");
    const size_t length = measures.find("length ");
    for (const char* wrong : {"length inf", "length nan", "length -1"}) {
        std::ofstream(folder_ / "wrong.txt")
            << measures.substr(0, length) << wrong << measures.substr(measures.find('\n', length));
        expect_refused(request_.with(out, {"--measures", folder_ / "wrong.txt"}), "does not describe");
    }
    const Request other{folder_, "a.mp4", "other.mp4", request_.options};
    Footage footage;
    write_footage(folder_ / "other.mp4", footage);
    expect_refused(other.with(out, {"--measures", folder_ / "measures.txt"}), "does not describe");
    expect_refused({folder_ / "a.mp4", folder_ / "b.mp4", "--count", "--effect", "box", "--duration", "8f",
                    "--measures", folder_ / "measures.txt"},
                   "exists already");
}

// What would be found out only when the parts are joined.
TEST_F(RefusedParts, OutputsThatACountTries) {
    const fs::path out = folder_ / "out.mp4", sheet = folder_ / "sheet.png";
    expect_refused(request_.with(folder_ / "out.xyz", {"--count"}), "out.xyz: the ending names no video container");
    expect_refused(request_.with(folder_ / "none" / "out.mp4", {"--count"}), "out.mp4: cannot be written");
    expect_refused(request_.with(folder_ / "a.mp4", {"--count", "-y"}), "the output would replace the first video");
    expect_refused(request_.with(out, {"--count", "--sheet", folder_ / "none" / "sheet.png"}),
                   "sheet.png: cannot be written");
    std::ofstream(sheet) << "precious";
    expect_refused(request_.with(out, {"--count", "--sheet", sheet}), "sheet.png: exists already");
    const std::vector<std::string> before = folder_.names();
    const Result result = run(request_.with(out, {"--count", "--sheet", sheet, "-y"}));
    expect_done(result);
    EXPECT_EQ(result.out, "32\n");
    EXPECT_EQ(folder_.names(), before);
    EXPECT_EQ(file_text(sheet), "precious");
}

TEST_F(RefusedParts, Joins) {
    const fs::path begin = request_.part("0:10"), middle = request_.part("10:20"), end = request_.part("20:32"),
                   longer = request_.part("9:20"), out = folder_ / "out.mp4";
    expect_refused({"join"}, "required");
    expect_refused({"join", begin}, "--output is required");
    expect_refused({"join", begin, "-o", ""}, "a file name is empty");
    expect_refused(join({begin, end}, out), "frames 10:20 of 32 are in none of the parts");
    expect_refused(join({middle, end}, out), "frames 0:10 of 32 are in none of the parts");
    expect_refused(join({begin, middle}, out), "frames 20:32 of 32 are in none of the parts");
    expect_refused(join({end, begin, longer}, out), "overlap: frames 0:10 and 9:20");
    expect_refused(join({begin, middle, middle, end}, out), "overlap");
    expect_refused(join({begin, middle, end}, middle, {"-y"}), "replace a part");
    expect_refused(join({begin, middle, end, folder_ / "a.mp4"}, out), "a.mp4: is no part of a transition");
    expect_refused(join({begin, folder_ / "none.mkv"}, out), "none.mkv: No such file");
    expect_refused(join({begin, middle, end}, folder_ / "out.xyz"), "ending");

    const Request other{folder_, "a.mp4", "b.mp4", {"--effect", "band", "--duration", "8f", "--feather", "3"}};
    std::ofstream(folder_ / "taken.mp4") << "precious";
    expect_refused(join({begin, middle, end}, folder_ / "taken.mp4"), "exists already");
    EXPECT_EQ(file_text(folder_ / "taken.mp4"), "precious");
    fs::rename(end, folder_ / "kept.mkv");
    const fs::path foreign = other.part("20:32");
    expect_refused(join({begin, middle, foreign}, out), "belongs to another transition than");
    expect_refused(join({begin, middle, foreign}, out), "its feather is 3, not 32");
    fs::rename(foreign, folder_ / "foreign.mkv");
    const Request turned{folder_, "b.mp4", "a.mp4", request_.options};
    expect_refused(join({begin, middle, turned.part("20:32")}, out), "its first video is");
    expect_done(run(join({begin, folder_ / "kept.mkv", middle}, out)));
}

TEST_F(RefusedParts, DamagedOnes) {
    const fs::path begin = request_.part("0:10"), end = request_.part("10:32");
    const std::string bytes = file_text(begin);
    const std::vector<std::string> sound_before = contents_of(begin).sound;
    const auto expect_damage_found = [&](const std::string& changed) {
        std::ofstream(begin, std::ios::binary) << changed;
        const std::vector<std::string> before = folder_.names();
        const Result result = run(join({begin, end}, folder_ / "out.mp4"));
        EXPECT_EQ(result.exit_code, 2) << result.err;
        EXPECT_NE(result.err.find("part-0-10.mkv: is damaged or not whole"), std::string::npos) << result.err;
        EXPECT_EQ(folder_.names(), before);
    };
    // A missing end is found before any work is done.
    for (size_t kept : {bytes.size() / 5, bytes.size() / 2, bytes.size() - 700}) {
        std::ofstream(begin, std::ios::binary) << bytes.substr(0, kept);
        expect_refused(join({end, begin}, folder_ / "out.mp4"), "part-0-10.mkv: is damaged or not whole");
    }
    // A bit of a sample: sound stands in the file as it is.
    const std::string sound = interleaved(sound_before.at(5), 2);
    const size_t sound_place = bytes.find(sound);
    ASSERT_NE(sound_place, std::string::npos);
    std::string changed_sound = bytes;
    changed_sound[sound_place + sound.size() / 2] ^= 1;
    expect_damage_found(changed_sound);
    // A bit anywhere: pictures and sound make up nearly all of the file.
    for (size_t place = bytes.size() / 6; place < bytes.size() * 9 / 10; place += bytes.size() / 8) {
        SCOPED_TRACE(place);
        std::string changed = bytes;
        changed[place] = static_cast<char>(changed[place] ^ 4);
        expect_damage_found(changed);
    }
}

TEST_F(RefusedParts, NothingIsLeftWhenTheDiskIsFull) {
    const std::vector<std::string> before = folder_.names();
    const Result result = run(request_.with(folder_ / "part.mkv", {"--frames", "0:32"}), 20000);
    EXPECT_EQ(result.exit_code, 1) << result.err;
    EXPECT_NE(result.err.find("part.mkv: cannot be written"), std::string::npos) << result.err;
    EXPECT_EQ(folder_.names(), before);
}

TEST_F(RefusedParts, NothingIsLeftWhenJoiningIsInterrupted) {
    Footage footage;
    footage.width = 640;
    footage.height = 480;
    footage.frames = 60;
    footage.codec = "mpeg2video";
    write_footage(folder_ / "long.mkv", footage);
    const Request request{folder_, "long.mkv", "long.mkv", {"--effect", "crossfade", "--duration", "4f"}};
    const fs::path part = request.part("0:116");
    const std::vector<std::string> before = folder_.names();
    const pid_t child = fork();
    if (child == 0) {
        dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        exec_program(join({part}, folder_ / "out.mp4"));
    }
    for (int tries = 0; folder_.names() == before && tries < 1000; ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_NE(folder_.names(), before) << "the work never began";
    kill(child, SIGTERM);
    EXPECT_EQ(wait_for(child), -SIGTERM);
    EXPECT_EQ(folder_.names(), before);
}

TEST(Parts, OfSoundAreTheSameFromAnyFrameOn) {
    const ScratchFolder folder;
    Footage footage;
    footage.sound_codec = "aac";
    footage.sound_rate = 44100;
    write_footage(folder / "a.mp4", footage);
    AVChannelLayout stereo;
    av_channel_layout_default(&stereo, 2);
    const SoundFormat format{48000, ChannelLayout(stereo)};
    const int count = 70000;
    std::vector<float> left(count), right(count);
    float* const all[] = {left.data(), right.data()};
    SoundReader(folder / "a.mp4", format, 0).read(all, count);
    for (int begin : {1, 1919, 1920, 20000, 65000}) {
        std::vector<float> later_left(count - begin), later_right(count - begin);
        float* const later[] = {later_left.data(), later_right.data()};
        SoundReader reader(folder / "a.mp4", format, 0);
        reader.skip(begin);
        reader.read(later, count - begin);
        EXPECT_TRUE(std::equal(later_left.begin(), later_left.end(), left.begin() + begin)) << begin;
        EXPECT_TRUE(std::equal(later_right.begin(), later_right.end(), right.begin() + begin)) << begin;
    }
}

TEST(Parts, PrintTheirHelp) {
    const Result result = run({"join", "--help"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_NE(result.out.find("PART"), std::string::npos);
    EXPECT_EQ(result.err, "");
}

}  // namespace
}  // namespace zepbmp::transition
