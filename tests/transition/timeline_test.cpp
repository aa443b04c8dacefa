#include "timeline.h"

#include <gtest/gtest.h>

#include "contact_sheet.h"
#include "error.h"
#include "progress_bar.h"

namespace zepbmp::transition {
namespace {

constexpr FrameRate kPal{25, 1};
constexpr FrameRate kNtsc{30000, 1001};

TEST(Time, ReadsEveryForm) {
    const struct {
        const char* text;
        double value;
        bool in_frames;
    } cases[] = {{"2s", 2, false},         {"1.5", 1.5, false},         {".5", 0.5, false},
                 {"500ms", 0.5, false},    {"00:01:02.5", 62.5, false}, {"1:30", 90, false},
                 {"2:00:00", 7200, false}, {"50f", 50, true},           {"0", 0, false}};
    for (const auto& c : cases) {
        const std::optional<TimeValue> time = parse_time(c.text);
        ASSERT_TRUE(time) << c.text;
        EXPECT_DOUBLE_EQ(time->value, c.value) << c.text;
        EXPECT_EQ(time->in_frames, c.in_frames) << c.text;
    }
}

TEST(Time, RefusesEverythingElse) {
    for (const char* text :
         {"",        "s",   "-1",  "-1s", "+1",   "2 s", "2m",  "1.5f",        "f",        "1:60", "60:00",
          "1:2:3:4", "1e3", "nan", "inf", "0x10", "1.",  "2s2", "99999999999", "9999999s", "1,5"})
        EXPECT_FALSE(parse_time(text)) << text;
}

TEST(Time, RoundsToWholeFrames) {
    EXPECT_EQ(parse_time("2s")->frames(kPal), 50);
    EXPECT_EQ(parse_time("2s")->frames(kNtsc), 60);
    EXPECT_EQ(parse_time("1:00:00")->frames(kNtsc), 107892);
    EXPECT_EQ(parse_time("7f")->frames(kNtsc), 7);
    EXPECT_EQ(parse_time("10ms")->frames(kPal), 0);
}

TEST(TimelineTest, EndsWithTheFirstVideoUnlessToldOtherwise) {
    const Timeline late = make_timeline({2}, std::nullopt, 250, 100, kPal);
    EXPECT_EQ(late.at, 200);
    EXPECT_EQ(late.duration, 50);
    EXPECT_EQ(late.total, 300);
    const Timeline early = make_timeline({2}, TimeValue{0}, 250, 100, kPal);
    EXPECT_EQ(early.at, 0);
    EXPECT_EQ(early.total, 100);
}

TEST(TimelineTest, KnowsWhoIsSeen) {
    const Timeline line = make_timeline({2, true}, TimeValue{3, true}, 10, 10, kPal);
    for (int frame = 0; frame < line.total; ++frame) {
        EXPECT_EQ(line.shows_a(frame), frame < 5) << frame;
        EXPECT_EQ(line.shows_b(frame), frame >= 3) << frame;
        EXPECT_EQ(line.mixes(frame), frame == 3 || frame == 4) << frame;
    }
    EXPECT_DOUBLE_EQ(line.progress(2), 0);
    EXPECT_DOUBLE_EQ(line.progress(3.5), 0.25);
    EXPECT_DOUBLE_EQ(line.progress(4), 0.5);
    EXPECT_DOUBLE_EQ(line.progress(9), 1);
}

void expect_refused(TimeValue duration, std::optional<TimeValue> at, int64_t frames_a, int64_t frames_b) {
    try {
        make_timeline(duration, at, frames_a, frames_b, kPal);
        ADD_FAILURE() << "accepted " << duration.value;
    } catch (const Error& error) {
        EXPECT_EQ(error.exit_code(), kExitRefused);
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    }
}

TEST(TimelineTest, RefusesWhatDoesNotFit) {
    expect_refused({0.001}, std::nullopt, 100, 100);            // less than a frame
    expect_refused({101, true}, std::nullopt, 100, 200);        // longer than A
    expect_refused({101, true}, std::nullopt, 200, 100);        // longer than B
    expect_refused({50, true}, TimeValue{51, true}, 100, 100);  // past A's end
    EXPECT_EQ(make_timeline({100, true}, std::nullopt, 100, 100, kPal).at, 0);
    EXPECT_EQ(make_timeline({50, true}, TimeValue{50, true}, 100, 100, kPal).at, 50);
}

TEST(EaseTest, KeepsEndsAndMiddle) {
    for (Ease ease : {Ease::kLinear, Ease::kCosine}) {
        EXPECT_DOUBLE_EQ(eased(ease, 0), 0);
        EXPECT_DOUBLE_EQ(eased(ease, 0.5), 0.5);
        EXPECT_DOUBLE_EQ(eased(ease, 1), 1);
        for (int i = 0; i < 100; ++i)
            EXPECT_LT(eased(ease, i / 100.0), eased(ease, (i + 1) / 100.0));
    }
    EXPECT_DOUBLE_EQ(eased(Ease::kLinear, 0.25), 0.25);
    EXPECT_NEAR(eased(Ease::kCosine, 0.25), 0.1464466, 1e-6);
}

TEST(SheetFrames, SpanTheTransition) {
    const Timeline line = make_timeline({48, true}, std::nullopt, 270, 1900, kPal);
    const std::vector<int64_t> frames = sheet_frames(line, 12);
    ASSERT_EQ(frames.size(), 12u);
    EXPECT_EQ(frames.front(), line.at - 1);
    EXPECT_EQ(frames.back(), line.at + line.duration);
    for (size_t i = 1; i < frames.size(); ++i)
        EXPECT_GT(frames[i], frames[i - 1]);
}

TEST(SheetFrames, AreFewWhenThereAreFew) {
    EXPECT_EQ(sheet_frames(make_timeline({1, true}, TimeValue{0}, 1, 1, kPal), 12), std::vector<int64_t>{0});
    EXPECT_EQ(sheet_frames(make_timeline({2, true}, TimeValue{3, true}, 9, 9, kPal), 12),
              (std::vector<int64_t>{2, 3, 4, 5}));
}

TEST(Progress, TellsShareSpeedAndTimeLeft) {
    EXPECT_EQ(progress_text(0, 200, 0, 80), "[" + std::string(40, '-') + "]   0%  0/200 frames");
    const std::string text = progress_text(50, 200, 2, 80);
    EXPECT_NE(text.find(" 25%  50/200 frames  25.0 frames/s  0:06 left"), std::string::npos) << text;
    EXPECT_NE(progress_text(1, 6001, 1, 80).find("100:00 left"), std::string::npos);
}

TEST(Progress, NeverWrapsTheLine) {
    for (int columns = 0; columns < 120; ++columns)
        EXPECT_LE(progress_text(12345, 678901, 100, columns).size(), static_cast<size_t>(columns));
}

}  // namespace
}  // namespace zepbmp::transition
