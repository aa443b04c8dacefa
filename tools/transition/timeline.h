#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zepbmp::transition {

/// Frames a second as a fraction, so that 30000/1001 stays exact.
struct FrameRate {
    int num = 0;
    int den = 1;
    double per_second() const { return static_cast<double>(num) / den; }
};

/// The sample with which a frame's sound begins; it ends before the next frame's.
int64_t sample_at(int64_t frame, FrameRate rate, int sound_rate);

/// A time as the user wrote it: seconds, or a count of frames.
struct TimeValue {
    double value = 0;
    bool in_frames = false;

    /// Rounded to the nearest whole frame.
    int64_t frames(FrameRate rate) const;
};

/// Reads "2s", "1.5", "500ms", "00:01:02.5", "1:30" or "50f". Nothing when the text is none of these; a sign is none.
std::optional<TimeValue> parse_time(const std::string& text);

/// Where everything lies, in frames of the output: A alone, then `duration` frames of both, then B alone.
struct Timeline {
    int64_t at = 0;        // first frame of the transition, in which B's first frame stands
    int64_t duration = 0;  // frames of the transition, at least 1
    int64_t total = 0;     // frames of the output

    bool shows_a(int64_t frame) const { return frame < at + duration; }
    bool shows_b(int64_t frame) const { return frame >= at; }
    bool mixes(int64_t frame) const { return shows_a(frame) && shows_b(frame); }

    /// Part of the transition that is over at a moment, 0..1; `moment` in frames from the output's start.
    double progress(double moment) const;
};

/// Frames `first` to `end` - 1 of the output.
struct FrameRange {
    int64_t first = 0;
    int64_t end = 0;

    int64_t count() const { return end - first; }
    std::string text() const { return std::to_string(first) + ":" + std::to_string(end); }
};

/// Reads "100:250". Nothing when the text is no such range, or an empty one.
std::optional<FrameRange> parse_frame_range(const std::string& text);

/// Lays out the output; `at` missing means that the transition ends with A. Refuses (Error) what does not fit.
Timeline make_timeline(const TimeValue& duration, const std::optional<TimeValue>& at, int64_t frames_a,
                       int64_t frames_b, FrameRate rate);

enum class Ease { kLinear, kCosine };

/// Maps 0..1 onto 0..1: unchanged, or along half a cosine wave.
double eased(Ease ease, double progress);

}  // namespace zepbmp::transition
