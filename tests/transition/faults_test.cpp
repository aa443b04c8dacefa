// Disks that fail and file systems that can do little: nothing wrong is taken for right, nothing is lost.
#include "faults.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "clips.h"
#include "error.h"
#include "footage.h"
#include "join.h"
#include "output_file.h"
#include "part_file.h"
#include "program.h"
#include "transition.h"

namespace zepbmp::transition {
namespace {

namespace fs = std::filesystem;

/// Two videos, and a part that holds the whole of the transition between them.
class FailingDisk : public testing::Test {
protected:
    FailingDisk() {
        Footage footage;
        footage.width = 320;
        footage.height = 240;
        footage.sound_codec = "pcm_s16le";
        write_footage(video_, footage);
        footage.seed = 2;
        write_footage(folder_ / "b.mkv", footage);
        request_.input_a = video_;
        request_.input_b = folder_ / "b.mkv";
        request_.duration = {8, true};
        request_.output = part_;
        request_.frames = FrameRange{0, 72};
        make_transition(request_);
        request_.frames.reset();
        request_.output = folder_ / "out.mp4";
    }

    /// Expects that an action fails where a byte in the midst of the file has to be read, says so, and leaves no file.
    void expect_failure(const fs::path& path, const std::function<void()>& action) {
        const std::vector<std::string> before = folder_.names();
        const auto place = static_cast<int64_t>(fs::file_size(path)) * 3 / 4;
        action();  // nothing but the disk is in the way
        remove(folder_ / "out.mp4");
        const UnreadableBytes bytes(path, place, place + 4096);
        try {
            action();
            ADD_FAILURE() << "nothing was noticed";
        } catch (const Error& error) {
            EXPECT_EQ(std::string(error.what()), path.string() + ": cannot be read: Input/output error");
            EXPECT_EQ(error.exit_code(), kExitFailed);
        }
        EXPECT_GT(bytes.failures(), 0);
        EXPECT_EQ(folder_.names(), before);
    }

    ScratchFolder folder_;
    fs::path video_ = folder_ / "a.mov";
    fs::path part_ = folder_ / "part.mkv";
    Options request_;
};

TEST_F(FailingDisk, IsNoEndOfAVideo) {
    expect_failure(video_, [&] { measure_video(video_); });
    const VideoMeasure measure = measure_video(video_);
    expect_failure(video_, [&] {
        VideoReader reader(video_, measure);
        for (int frame = 0; frame < 40; ++frame)
            reader.frame_at(frame / 25.0);
    });
    expect_failure(request_.input_b, [&] { make_transition(request_); });
}

TEST_F(FailingDisk, IsNoEndOfASound) {
    const SoundFormat format = find_sound(video_).value_or(SoundFormat{});
    ASSERT_EQ(format.rate, 48000);
    expect_failure(video_, [&] { SoundReader(video_, format, 0).skip(48000 * 40 / 25); });
}

TEST_F(FailingDisk, IsNoDamageOfAPart) {
    expect_failure(part_, [&] {
        PartReader reader(part_);
        Bitmap picture(320, 240, Format::yuy2);
        for (int frame = 0; frame < 72; ++frame)
            reader.read_picture(picture);
    });
    expect_failure(part_, [&] { join_parts({{part_}, folder_ / "out.mp4", {}, false}); });
    const auto bytes = static_cast<int64_t>(fs::file_size(part_));
    PartReader reader(part_);
    const UnreadableBytes end(part_, bytes * 3 / 4, bytes);
    EXPECT_THROW(
        {
            if (!reader.ends_with_seal())
                throw std::runtime_error("taken for a part that is not whole");
        },
        Error);
}

class RenamingOnAPoorFileSystem : public testing::TestWithParam<bool> {};

TEST_P(RenamingOnAPoorFileSystem, ReplacesNothingUnasked) {
    const PoorFileSystem poor(GetParam());
    const ScratchFolder folder;
    const fs::path place = folder / "out";
    const auto write = [&](bool overwrite, const std::string& text, const std::string& meanwhile) {
        OutputFile file(place, overwrite);
        std::ofstream(file.temporary_name()) << text;
        if (!meanwhile.empty())
            std::ofstream(place) << meanwhile;
        file.commit();
    };
    write(false, "first", "");
    EXPECT_EQ(file_text(place), "first");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"out"});
    write(true, "second", "");
    EXPECT_EQ(file_text(place), "second");
    fs::remove(place);
    try {
        write(false, "third", "precious");
        ADD_FAILURE() << "a file that came there meanwhile was replaced";
    } catch (const Error& error) {
        EXPECT_EQ(std::string(error.what()), place.string() + ": cannot be put in place: File exists");
    }
    EXPECT_EQ(file_text(place), "precious");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"out"});
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutLinks, RenamingOnAPoorFileSystem, testing::Bool());

}  // namespace
}  // namespace zepbmp::transition
