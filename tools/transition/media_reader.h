#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "libav.h"
#include "picture.h"
#include "timeline.h"

namespace zepbmp::transition {

/// Opens a file and reads what it says about its streams. Throws Error: kExitRefused when it is no video file that can be
/// opened, kExitFailed when reading it fails.
LibavPtr<AVFormatContext> open_container(const std::filesystem::path& path);

/// A place where decoding can begin: time stamps of a packet, in units of its stream.
struct Keyframe {
    int64_t pts = 0;
    int64_t dts = 0;
};

/// Thrown where decoding from a keyframe on may not give what decoding from the beginning gives. No Error: the work is
/// then done again without seeking.
class SeekDoubt : public std::runtime_error {
public:
    explicit SeekDoubt(const std::filesystem::path& path) : std::runtime_error(path.string()) {}
};

/// Decodes the best stream of one kind, front to back. Damaged packets are skipped and counted.
class StreamDecoder {
public:
    /// Throws Error (kExitRefused) when the file cannot be read or has no such stream that can be decoded.
    StreamDecoder(const std::filesystem::path& path, AVMediaType type);

    /// The next frame, or null at the end. Valid until the next call.
    const AVFrame* next();

    /// Goes on at a keyframe: the next frame is that one. From then on each frame that comes out has to be the earliest
    /// of those that went in and have not come out, and undamaged; otherwise next() throws SeekDoubt.
    void seek(const Keyframe& keyframe);

    AVFormatContext* container() const { return container_.get(); }
    AVStream* stream() const { return stream_; }
    const AVCodecContext& codec() const { return *codec_; }
    int damaged_packets() const { return damaged_packets_; }

private:
    bool read_packet();
    void feed();
    bool find(const Keyframe& keyframe, int64_t from);
    bool expected(const AVFrame& frame);

    std::filesystem::path path_;
    LibavPtr<AVFormatContext> container_;
    AVStream* stream_ = nullptr;
    CodecPtr codec_;
    PacketPtr packet_;
    FramePtr frame_;
    int damaged_packets_ = 0;
    std::optional<int64_t> sought_;  // time stamp of the keyframe at which decoding began
    std::set<int64_t> awaited_;      // time stamps from there on of what went in and has not come out
    bool packet_waits_ = false;      // packet_ is read and goes in next
};

struct VideoInfo {
    int width = 0;
    int height = 0;
    FrameRate rate;
    AVRational sample_aspect{1, 1};
    FieldOrder fields = FieldOrder::kProgressive;  // as the first frame is flagged
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    double rotation_degrees = 0;  // how a player turns the picture
    double start_seconds = 0;     // time stamp of the first frame
    double length_seconds = 0;    // from the first frame's begin to the last one's end

    /// Height of a line in pixel widths.
    double line_height_px() const { return static_cast<double>(sample_aspect.den) / sample_aspect.num; }
};

/// What only reading all of a file tells of its video.
struct VideoMeasure {
    double length_seconds = 0;        // from the first frame's begin to the last one's end
    std::vector<Keyframe> keyframes;  // ascending, some time apart; none where time stamps do not tell all frames apart
};

VideoMeasure measure_video(const std::filesystem::path& path);

/// A video's pictures by time, front to back.
class VideoReader {
public:
    explicit VideoReader(const std::filesystem::path& path) : VideoReader(path, measure_video(path)) {}
    VideoReader(const std::filesystem::path& path, VideoMeasure measure);

    const VideoInfo& info() const { return info_; }
    const VideoMeasure& measure() const { return measure_; }
    int damaged_packets() const { return decoder_.damaged_packets(); }

    /// Frames of the given rate that the video fills.
    int64_t frames(FrameRate rate) const;

    /// Spares decoding what comes before: frame_at will be asked for no time before `seconds`. It answers as if nothing
    /// had been left out, or throws SeekDoubt, as this call does.
    void skip_to(double seconds);

    /// The newest frame whose time is not after `seconds` (0 = first frame); the last one when the video is over. Times
    /// must not fall from call to call. Valid until the next call.
    const AVFrame* frame_at(double seconds);

    /// Grows whenever frame_at went on to another frame, so that a caller can keep what it made of the old one.
    int64_t frame_number() const { return frame_number_; }

private:
    double time_of(const AVFrame& frame) const;
    void advance();

    std::filesystem::path path_;
    StreamDecoder decoder_;
    VideoMeasure measure_;
    VideoInfo info_;
    FramePtr current_;
    FramePtr next_;
    bool has_next_ = false;
    double next_time_ = 0;
    int64_t frame_number_ = 0;
};

struct SoundFormat {
    int rate = 0;
    ChannelLayout layout;
};

/// The format of a file's sound, its channels named; nothing when the file has none that can be decoded.
std::optional<SoundFormat> find_sound(const std::filesystem::path& path);

/// A file's sound as planar floats in one format, on the time line of its video: sample 0 is heard as the first frame
/// appears. Silence fills the time before the sound begins, gaps in it, and the time after its end.
class SoundReader {
public:
    SoundReader(const std::filesystem::path& path, const SoundFormat& format, double video_start_seconds);

    /// The next `count` samples of every channel.
    void read(float* const* channels, int count);

    /// Goes past samples. They are decoded: what decoders and resamplers give depends on all that came before.
    void skip(int64_t count);

    int damaged_packets() const { return decoder_.damaged_packets(); }

private:
    bool decode_more();
    void prepare_resampler(const AVFrame& frame);
    void drain_resampler();
    void align(const AVFrame& frame);
    void store_resampled(const AVFrame* frame);
    void store_silence(int count);

    StreamDecoder decoder_;
    SoundFormat format_;
    double video_start_seconds_;
    LibavPtr<SwrContext> resampler_;
    SoundFormat resampler_input_;
    AVSampleFormat resampler_input_format_ = AV_SAMPLE_FMT_NONE;
    LibavPtr<AVAudioFifo> samples_;
    const AVFrame* held_ = nullptr;  // decoded, its samples not stored yet
    int64_t stored_ = 0;             // output samples so far
    int64_t silence_due_ = 0;        // samples of silence before the held frame
    int64_t to_drop_ = 0;            // samples that lie before the first frame of the video, or overlap
    bool ended_ = false;
};

}  // namespace zepbmp::transition
