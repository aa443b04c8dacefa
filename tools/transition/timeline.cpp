#include "timeline.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string_view>
#include <system_error>

#include "error.h"

namespace zepbmp::transition {

namespace {

constexpr double kLongestSeconds = 1e6;
constexpr size_t kMostDigits = 9;

enum class Digits { kWhole, kFraction };

/// Digits, with a point among or before them if fractions are allowed; no sign, no exponent.
std::optional<double> parse_number(std::string_view text, Digits digits) {
    const std::string_view allowed = digits == Digits::kFraction ? "0123456789." : "0123456789";
    if (text.empty() || text.size() > kMostDigits || text.back() == '.' ||
        text.find_first_not_of(allowed) != std::string_view::npos)
        return std::nullopt;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

bool take_ending(std::string_view& text, std::string_view ending) {
    if (!text.ends_with(ending))
        return false;
    text.remove_suffix(ending.size());
    return true;
}

std::string seconds_text(int64_t frames, FrameRate rate) {
    char text[64];
    std::snprintf(text, sizeof text, "%.2f s (%lld %s)", static_cast<double>(frames) / rate.per_second(),
                  static_cast<long long>(frames), frames == 1 ? "frame" : "frames");
    return text;
}

}  // namespace

int64_t sample_at(int64_t frame, FrameRate rate, int sound_rate) {
    return std::llround(static_cast<double>(frame) * rate.den * sound_rate / rate.num);
}

int64_t TimeValue::frames(FrameRate rate) const {
    return std::llround(in_frames ? value : value * rate.num / rate.den);
}

std::optional<TimeValue> parse_time(const std::string& text) {
    std::string_view rest = text;
    if (take_ending(rest, "f")) {
        const std::optional<double> frames = parse_number(rest, Digits::kWhole);
        return frames ? std::optional(TimeValue{*frames, true}) : std::nullopt;
    }
    double seconds = 0;
    if (const size_t colon = rest.find(':'); colon != std::string_view::npos) {
        const size_t last_colon = rest.rfind(':');
        if (last_colon != colon) {
            const std::optional<double> hours = parse_number(rest.substr(0, colon), Digits::kWhole);
            if (!hours)
                return std::nullopt;
            seconds = *hours * 3600;
            rest.remove_prefix(colon + 1);
        }
        const size_t split = rest.find(':');
        const std::optional<double> minutes = parse_number(rest.substr(0, split), Digits::kWhole);
        const std::optional<double> remainder = parse_number(rest.substr(split + 1), Digits::kFraction);
        if (!minutes || !remainder || *minutes >= 60 || *remainder >= 60)
            return std::nullopt;
        seconds += *minutes * 60 + *remainder;
    } else {
        const double unit = take_ending(rest, "ms") ? 1e-3 : 1;
        if (unit == 1)
            take_ending(rest, "s");
        const std::optional<double> number = parse_number(rest, Digits::kFraction);
        if (!number)
            return std::nullopt;
        seconds = *number * unit;
    }
    return seconds <= kLongestSeconds ? std::optional(TimeValue{seconds, false}) : std::nullopt;
}

std::optional<FrameRange> parse_frame_range(const std::string& text) {
    const std::string_view whole = text;
    const size_t colon = whole.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    const std::optional<double> first = parse_number(whole.substr(0, colon), Digits::kWhole);
    const std::optional<double> end = parse_number(whole.substr(colon + 1), Digits::kWhole);
    if (!first || !end || *first >= *end)
        return std::nullopt;
    return FrameRange{static_cast<int64_t>(*first), static_cast<int64_t>(*end)};
}

double Timeline::progress(double moment) const {
    return std::clamp((moment - static_cast<double>(at)) / static_cast<double>(duration), 0.0, 1.0);
}

Timeline make_timeline(const TimeValue& duration, const std::optional<TimeValue>& at, int64_t frames_a,
                       int64_t frames_b, FrameRate rate) {
    Timeline line;
    line.duration = duration.frames(rate);
    if (line.duration < 1)
        throw Error("the transition would be shorter than one frame", kExitRefused);
    if (line.duration > frames_a)
        throw Error("the transition takes " + seconds_text(line.duration, rate) + ", but the first video lasts only " +
                        seconds_text(frames_a, rate),
                    kExitRefused);
    if (line.duration > frames_b)
        throw Error("the transition takes " + seconds_text(line.duration, rate) + ", but the second video lasts only " +
                        seconds_text(frames_b, rate),
                    kExitRefused);
    line.at = at ? at->frames(rate) : frames_a - line.duration;
    if (line.at + line.duration > frames_a)
        throw Error("the transition would end at " + seconds_text(line.at + line.duration, rate) +
                        ", after the first video's end at " + seconds_text(frames_a, rate),
                    kExitRefused);
    line.total = line.at + frames_b;
    return line;
}

double eased(Ease ease, double progress) {
    return ease == Ease::kCosine ? (1 - std::cos(std::numbers::pi * progress)) / 2 : progress;
}

}  // namespace zepbmp::transition
