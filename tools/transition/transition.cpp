#include "transition.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "audio_fade.h"
#include "contact_sheet.h"
#include "effect.h"
#include "error.h"
#include "frame_converter.h"
#include "interrupt.h"
#include "media_reader.h"
#include "media_writer.h"
#include "progress_bar.h"

namespace zepbmp::transition {

namespace {

// What is shown from one moment to the next is the newest frame at this part of the way. Not at its beginning, since
// rounded time stamps may lie a little late; and at no simple fraction, at which a frame of another rate often begins.
constexpr double kSamplingPoint = 0.45;

bool interlaced(FieldOrder order) { return order != FieldOrder::kProgressive; }

FieldOrder resolve(FieldChoice choice, FieldOrder flagged) {
    switch (choice) {
        case FieldChoice::kTop: return FieldOrder::kTopFirst;
        case FieldChoice::kBottom: return FieldOrder::kBottomFirst;
        case FieldChoice::kProgressive: return FieldOrder::kProgressive;
        case FieldChoice::kAuto: break;
    }
    return flagged;
}

Field first_field(FieldOrder order) { return order == FieldOrder::kTopFirst ? kTopField : kBottomField; }

FrameConverter::Mode converter_mode(FieldOrder source, FieldOrder output) {
    if (!interlaced(source))
        return FrameConverter::Mode::kWhole;
    return interlaced(output) ? FrameConverter::Mode::kFields : FrameConverter::Mode::kDeinterlace;
}

/// One of the two videos as bitmaps of the output's size.
class PictureSource {
public:
    PictureSource(VideoReader& reader, FieldOrder order, const VideoInfo& output, FieldOrder output_order)
        : reader_(reader),
          order_(order),
          converter_(converter_mode(order, output_order), output.width, known_matrix(output.matrix, output.height)),
          picture_((output.width + 1) & ~1, output.height, Format::yuy2,
                   interlaced(order) && interlaced(output_order) ? kTwoFields : Scan::progressive) {}

    /// The picture that holds what is seen at a time of this video. `field` tells which field is asked for, since the
    /// second one of a frame was taken half a frame later than the first one.
    const Bitmap& at(double seconds, Field field) {
        if (field != kWholeFrame && interlaced(order_) && field != first_field(order_))
            seconds -= 0.5 / reader_.info().rate.per_second();
        const AVFrame* const frame = reader_.frame_at(seconds);
        if (converted_ != reader_.frame_number()) {
            converter_.convert(*frame, picture_);
            converted_ = reader_.frame_number();
        }
        return picture_;
    }

private:
    VideoReader& reader_;
    FieldOrder order_;
    FrameConverter converter_;
    Bitmap picture_;
    int64_t converted_ = 0;
};

/// Composes the output's pictures one after another.
class PictureTrack {
public:
    PictureTrack(const Options& options, VideoReader& reader_a, VideoReader& reader_b, const Timeline& timeline)
        : timeline_(timeline),
          rate_(reader_a.info().rate),
          order_(resolve(options.fields, reader_a.info().fields)),
          ease_(options.ease),
          a_(reader_a, order_, reader_a.info(), order_),
          b_(reader_b, resolve(options.fields, reader_b.info().fields), reader_a.info(), order_),
          picture_((reader_a.info().width + 1) & ~1, reader_a.info().height, Format::yuy2),
          effect_(effect_settings(options, reader_a.info()), picture_.width(), picture_.height()) {}

    FieldOrder order() const { return order_; }

    const Bitmap& make(int64_t frame) {
        if (!interlaced(order_)) {
            compose(frame, static_cast<double>(frame), 1.0, kWholeFrame);
        } else {
            const Field first = first_field(order_);
            const Field second = first == kTopField ? kBottomField : kTopField;
            compose(frame, static_cast<double>(frame), 0.5, first);
            compose(frame, static_cast<double>(frame) + 0.5, 0.5, second);
        }
        return picture_;
    }

private:
    static EffectSettings effect_settings(const Options& options, const VideoInfo& info) {
        const LumaWeights weights = luma_weights(known_matrix(info.matrix, info.height));
        return {options.effect,
                options.feather_px,
                options.ease,
                info.line_height_px(),
                yuv_from_rgb(options.color_rgb, weights.red, weights.blue),
                options.points ? read_outline(*options.points) : Outline(),
                options.direction};
    }

    /// `moment` and `span` in frames: what is composed is shown from moment to moment + span.
    void compose(int64_t frame, double moment, double span, Field field) {
        const double begin_b = static_cast<double>(timeline_.at);
        const auto seconds = [&](double frames) { return (frames + span * kSamplingPoint) / rate_.per_second(); };
        const Bitmap* const a = timeline_.shows_a(frame) ? &a_.at(seconds(moment), field) : nullptr;
        const Bitmap* const b = timeline_.shows_b(frame) ? &b_.at(seconds(moment - begin_b), field) : nullptr;
        if (a && b)
            effect_.compose(picture_, *a, *b, eased(ease_, timeline_.progress(moment + span / 2)), field);
        else
            copy(picture_, a ? *a : *b, field);
    }

    Timeline timeline_;
    FrameRate rate_;
    FieldOrder order_;
    Ease ease_;
    PictureSource a_;
    PictureSource b_;
    Bitmap picture_;
    Effect effect_;
};

/// Samples of all channels, planar.
class SoundBuffer {
public:
    SoundBuffer(int channels, int count) : samples_(static_cast<size_t>(channels) * count), channels_(channels) {
        for (int c = 0; c < channels; ++c)
            channels_[c] = samples_.data() + static_cast<size_t>(c) * count;
    }
    float* const* channels() const { return channels_.data(); }

private:
    std::vector<float> samples_;
    std::vector<float*> channels_;
};

/// Fades the sound of one file into that of the other.
class SoundTrack {
public:
    SoundTrack(const SoundFormat& format, const Timeline& timeline, FrameRate rate)
        : format_(format), timeline_(timeline), rate_(rate) {}

    void open_a(const Options& options, const VideoReader& video) {
        a_ = std::make_unique<SoundReader>(options.input_a, format_, video.info().start_seconds);
    }
    void open_b(const Options& options, const VideoReader& video) {
        b_ = std::make_unique<SoundReader>(options.input_b, format_, video.info().start_seconds);
    }

    /// Writes the samples that belong to a frame.
    void write(int64_t frame, MediaWriter& writer) {
        const SoundFade fade{sample_at(timeline_.at), sample_at(timeline_.at + timeline_.duration)};
        const int64_t begin = sample_at(frame);
        const int count = static_cast<int>(sample_at(frame + 1) - begin);
        if (count == 0)
            return;
        const int channels = format_.layout.channels();
        const SoundBuffer a(channels, count), b(channels, count);
        if (a_ && timeline_.shows_a(frame))
            a_->read(a.channels(), count);
        if (b_ && timeline_.shows_b(frame))
            b_->read(b.channels(), count);
        for (int c = 0; c < channels; ++c)
            fade_sound(a.channels()[c], a.channels()[c], b.channels()[c], count, begin, fade);
        writer.write_sound(a.channels(), count);
    }

    int damaged_packets_a() const { return a_ ? a_->damaged_packets() : 0; }
    int damaged_packets_b() const { return b_ ? b_->damaged_packets() : 0; }

private:
    int64_t sample_at(int64_t frame) const {
        return std::llround(static_cast<double>(frame) * rate_.den * format_.rate / rate_.num);
    }

    SoundFormat format_;
    Timeline timeline_;
    FrameRate rate_;
    std::unique_ptr<SoundReader> a_;
    std::unique_ptr<SoundReader> b_;
};

void refuse_different_rotation(const VideoInfo& a, const VideoInfo& b) {
    const double difference = std::abs(std::remainder(a.rotation_degrees - b.rotation_degrees, 360));
    if (difference < 1)
        return;
    char text[128];
    std::snprintf(text, sizeof text, "the two videos are flagged as turned by different angles (%.0f and %.0f degrees)",
                  a.rotation_degrees, b.rotation_degrees);
    throw Error(text, kExitRefused);
}

std::string summary(const Options& options, const VideoInfo& info, FieldOrder order, int64_t frames,
                    const std::string& codecs) {
    char text[160];
    std::snprintf(text, sizeof text, ": %lld frames, %.2f s, %dx%d, %.5g frames/s, %s, ",
                  static_cast<long long>(frames), static_cast<double>(frames) / info.rate.per_second(), info.width,
                  info.height, info.rate.per_second(),
                  order == FieldOrder::kProgressive ? "progressive"
                  : order == FieldOrder::kTopFirst  ? "top field first"
                                                    : "bottom field first");
    return options.output.string() + text + codecs;
}

void warn_of_damage(std::vector<std::string>& warnings, const std::filesystem::path& path, int packets) {
    if (packets > 0)
        warnings.push_back(path.string() + ": " + std::to_string(packets) + " of its packets cannot be decoded");
}

}  // namespace

Report make_transition(const Options& options) {
    VideoReader video_a(options.input_a);
    VideoReader video_b(options.input_b);
    const VideoInfo& info = video_a.info();
    refuse_different_rotation(info, video_b.info());
    const Timeline timeline =
        make_timeline(options.duration, options.at, video_a.frames(info.rate), video_b.frames(info.rate), info.rate);

    const std::optional<SoundFormat> sound_a = find_sound(options.input_a);
    const std::optional<SoundFormat> sound_b = find_sound(options.input_b);
    PictureTrack pictures(options, video_a, video_b, timeline);
    MediaWriter writer(options.output, options.overwrite, info, pictures.order(), sound_a ? sound_a : sound_b);
    std::optional<SoundTrack> sound;
    if (writer.sound_format()) {
        sound.emplace(*writer.sound_format(), timeline, info.rate);
        if (sound_a)
            sound->open_a(options, video_a);
        if (sound_b)
            sound->open_b(options, video_b);
    }
    std::optional<ContactSheet> sheet;
    if (options.sheet)
        sheet.emplace(*options.sheet, options.overwrite, timeline, info.width, info.height, info.line_height_px(),
                      known_matrix(info.matrix, info.height));

    {
        ProgressBar progress(timeline.total);
        for (int64_t frame = 0; frame < timeline.total; ++frame) {
            check_interrupt();
            const Bitmap& picture = pictures.make(frame);
            writer.write_picture(picture);
            if (sound)
                sound->write(frame, writer);
            if (sheet)
                sheet->offer(frame, picture);
            progress.update(frame + 1);
        }
    }
    // Both files are whole before either takes its place, so that a failure or an interrupt leaves neither.
    writer.finish();
    if (sheet)
        sheet->finish();
    check_interrupt();
    writer.commit();
    if (sheet)
        sheet->commit();

    Report report;
    report.summary = summary(options, info, pictures.order(), timeline.total, writer.description());
    warn_of_damage(report.warnings, options.input_a,
                   video_a.damaged_packets() + (sound ? sound->damaged_packets_a() : 0));
    warn_of_damage(report.warnings, options.input_b,
                   video_b.damaged_packets() + (sound ? sound->damaged_packets_b() : 0));
    return report;
}

}  // namespace zepbmp::transition
