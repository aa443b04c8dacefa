#include "transition.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>

#include "audio_fade.h"
#include "contact_sheet.h"
#include "effect.h"
#include "error.h"
#include "frame_converter.h"
#include "interrupt.h"
#include "measure.h"
#include "media_reader.h"
#include "media_writer.h"
#include "part_file.h"
#include "progress_bar.h"
#include "sound_buffer.h"

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
          picture_(even(output.width), output.height, Format::yuy2,
                   interlaced(order) && interlaced(output_order) ? kTwoFields : Scan::progressive) {}

    /// The picture that holds what is seen at a time of this video. `field` tells which field is asked for, since the
    /// second one of a frame was taken half a frame later than the first one.
    const Bitmap& at(double seconds, Field field) {
        if (field != kWholeFrame && interlaced(order_) && field != first_field(order_))
            seconds -= half_frame_seconds();
        const AVFrame* const frame = reader_.frame_at(seconds);
        if (converted_ != reader_.frame_number()) {
            converter_.convert(*frame, picture_);
            converted_ = reader_.frame_number();
        }
        return picture_;
    }

    /// Spares decoding what no call from `seconds` on asks for.
    void skip_to(double seconds) { reader_.skip_to(seconds - half_frame_seconds()); }

private:
    double half_frame_seconds() const { return 0.5 / reader_.info().rate.per_second(); }

    VideoReader& reader_;
    FieldOrder order_;
    FrameConverter converter_;
    Bitmap picture_;
    int64_t converted_ = 0;
};

/// Whether a part's beginning is sought in the inputs, or reached by decoding all that comes before.
enum class Seeking { kAllowed, kForbidden };

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
          picture_(even(reader_a.info().width), reader_a.info().height, Format::yuy2),
          effect_(effect_settings(options, reader_a.info()), picture_.width(), picture_.height()) {}

    FieldOrder order() const { return order_; }

    /// Prepares make() for a frame other than the first one. The frame before it is made, too: in it a source may have
    /// been asked for a later moment than in the frame itself.
    void begin_at(int64_t frame, Seeking seeking) {
        if (frame == 0)
            return;
        if (seeking == Seeking::kAllowed) {
            const double begin_b = static_cast<double>(timeline_.at);
            const double before = static_cast<double>(frame - 1);
            if (timeline_.shows_a(frame - 1))
                a_.skip_to(before / rate_.per_second());
            if (timeline_.shows_b(frame - 1))
                b_.skip_to((before - begin_b) / rate_.per_second());
        }
        make(frame - 1);
    }

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

    /// Prepares write() for a frame other than the first one.
    void begin_at(int64_t frame) {
        if (a_ && timeline_.shows_a(frame))
            a_->skip(begin_of(frame));
        if (b_ && timeline_.shows_b(frame))
            b_->skip(begin_of(frame) - begin_of(timeline_.at));
    }

    /// Writes the samples that belong to a frame.
    void write(int64_t frame, FrameWriter& writer) {
        const SoundFade fade{begin_of(timeline_.at), begin_of(timeline_.at + timeline_.duration)};
        const int64_t begin = begin_of(frame);
        const int count = static_cast<int>(begin_of(frame + 1) - begin);
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
    int64_t begin_of(int64_t frame) const { return sample_at(frame, rate_, format_.rate); }

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

void warn_of_damage(std::vector<std::string>& warnings, const std::filesystem::path& path, int packets) {
    if (packets > 0)
        warnings.push_back(path.string() + ": " + std::to_string(packets) + " of its packets cannot be decoded");
}

VideoMeasure measure_of(const Options& options, const std::filesystem::path& video) {
    return options.measures && !options.count ? read_measure(*options.measures, video) : measure_video(video);
}

/// The two videos, and where their frames lie.
struct Inputs {
    explicit Inputs(const Options& options)
        : a(options.input_a, measure_of(options, options.input_a)),
          b(options.input_b, measure_of(options, options.input_b)) {
        refuse_different_rotation(a.info(), b.info());
        const FrameRate rate = a.info().rate;
        timeline = make_timeline(options.duration, options.at, a.frames(rate), b.frames(rate), rate);
    }

    VideoReader a;
    VideoReader b;
    Timeline timeline;
};

/// All that the output's pictures and sound depend on, but for what stands in every part's header anyway.
std::string request_text(const Options& options, const Inputs& inputs) {
    std::ostringstream text;
    text << "version=" << ZEPBMP_TOOL_VERSION << "\nlibraries=avcodec " << avcodec_version() << ", avformat "
         << avformat_version() << ", swscale " << swscale_version() << ", swresample " << swresample_version()
         << "\nfirst video=" << fingerprint(options.input_a) << "\nsecond video=" << fingerprint(options.input_b)
         << "\neffect=" << name_of(options.effect) << '\n'
         << "feather=" << exact_text(options.feather_px) << "\ncolour=" << std::hex << options.color_rgb << std::dec
         << "\ndirection=" << name_of(options.direction) << "\nease=" << name_of(options.ease)
         << "\nfields of both=" << name_of(options.fields) << "\nlengths=" << exact_text(inputs.a.info().length_seconds)
         << ' ' << exact_text(inputs.b.info().length_seconds) << '\n';
    if (options.points)
        text << "points=" << fingerprint(*options.points) << '\n';
    return text.str();
}

FrameRange frames_of(const Options& options, const Timeline& timeline) {
    const FrameRange range = options.frames.value_or(FrameRange{0, timeline.total});
    if (range.end > timeline.total)
        throw Error(
            "--frames " + range.text() + " reaches beyond the output's " + std::to_string(timeline.total) + " frames",
            kExitRefused);
    return range;
}

/// Begins the outputs of a run and gives them up, to find out whether they can be written.
void try_outputs(const Options& options, const Inputs& inputs) {
    const VideoInfo& info = inputs.a.info();
    std::optional<SoundFormat> sound = find_sound(options.input_a);
    if (!sound)
        sound = find_sound(options.input_b);
    const FieldOrder order = resolve(options.fields, info.fields);
    const MediaWriter writer(options.output, options.overwrite, info, order, sound);
    if (options.sheet)
        const ContactSheet sheet(*options.sheet, options.overwrite, inputs.timeline, info.width, info.height,
                                 info.line_height_px(), known_matrix(info.matrix, info.height));
}

Report render(const Options& options, Seeking seeking) {
    Inputs inputs(options);
    const Timeline& timeline = inputs.timeline;
    const FrameRange range = frames_of(options, timeline);
    const VideoInfo& info = inputs.a.info();
    const std::optional<SoundFormat> sound_a = find_sound(options.input_a);
    const std::optional<SoundFormat> sound_b = find_sound(options.input_b);
    std::optional<SoundFormat> sound_format = sound_a ? sound_a : sound_b;
    PictureTrack pictures(options, inputs.a, inputs.b, timeline);

    std::unique_ptr<FrameWriter> writer;
    if (options.frames) {
        const PartHeader header{range, request_text(options, inputs), timeline, info, pictures.order(), sound_format};
        writer = std::make_unique<PartWriter>(options.output, options.overwrite, header);
    } else {
        auto media =
            std::make_unique<MediaWriter>(options.output, options.overwrite, info, pictures.order(), sound_format);
        sound_format = media->sound_format();
        writer = std::move(media);
    }
    std::optional<SoundTrack> sound;
    if (sound_format) {
        sound.emplace(*sound_format, timeline, info.rate);
        if (sound_a && timeline.shows_a(range.first))
            sound->open_a(options, inputs.a);
        if (sound_b && timeline.shows_b(range.end - 1))
            sound->open_b(options, inputs.b);
    }
    std::optional<ContactSheet> sheet;
    if (options.sheet)
        sheet.emplace(*options.sheet, options.overwrite, timeline, info.width, info.height, info.line_height_px(),
                      known_matrix(info.matrix, info.height));

    pictures.begin_at(range.first, seeking);
    if (sound)
        sound->begin_at(range.first);
    {
        ProgressBar progress(range.count());
        for (int64_t frame = range.first; frame < range.end; ++frame) {
            check_interrupt();
            const Bitmap& picture = pictures.make(frame);
            writer->write_picture(picture);
            if (sound)
                sound->write(frame, *writer);
            if (sheet)
                sheet->offer(frame, picture);
            progress.update(frame - range.first + 1);
        }
    }
    put_in_place(*writer, sheet);

    Report report;
    report.summary = options.output.string() + ": ";
    if (options.frames)
        report.summary += "frames " + range.text() + " of " + std::to_string(timeline.total) + ": ";
    report.summary += describe_output(range.count(), info, pictures.order()) + ", " + writer->description();
    warn_of_damage(report.warnings, options.input_a,
                   inputs.a.damaged_packets() + (sound ? sound->damaged_packets_a() : 0));
    warn_of_damage(report.warnings, options.input_b,
                   inputs.b.damaged_packets() + (sound ? sound->damaged_packets_b() : 0));
    return report;
}

}  // namespace

void put_in_place(FrameWriter& writer, std::optional<ContactSheet>& sheet) {
    writer.finish();
    if (sheet)
        sheet->finish();
    check_interrupt();
    writer.commit();
    if (sheet)
        sheet->commit();
}

std::string describe_output(int64_t frames, const VideoInfo& video, FieldOrder order) {
    char text[160];
    std::snprintf(text, sizeof text, "%lld %s, %.2f s, %dx%d, %.5g frames/s, %s", static_cast<long long>(frames),
                  frames == 1 ? "frame" : "frames", static_cast<double>(frames) / video.rate.per_second(), video.width,
                  video.height, video.rate.per_second(),
                  order == FieldOrder::kProgressive ? "progressive"
                  : order == FieldOrder::kTopFirst  ? "top field first"
                                                    : "bottom field first");
    return text;
}

Report make_transition(const Options& options) {
    try {
        return render(options, options.frames ? Seeking::kAllowed : Seeking::kForbidden);
    } catch (const SeekDoubt& doubt) {
        Report report = render(options, Seeking::kForbidden);
        report.warnings.push_back(std::string(doubt.what()) +
                                  ": was decoded from its beginning, since seeking in it is not exact");
        return report;
    }
}

int64_t count_frames(const Options& options) {
    const Inputs inputs(options);
    if (!options.output.empty())
        try_outputs(options, inputs);
    if (options.measures)
        write_measures(*options.measures, options.overwrite, options.input_a, inputs.a.measure(), options.input_b,
                       inputs.b.measure());
    return inputs.timeline.total;
}

}  // namespace zepbmp::transition
