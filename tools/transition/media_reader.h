#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "libav.h"
#include "picture.h"
#include "timeline.h"

namespace zepbmp::transition {

/// Decodes the best stream of one kind, front to back. Damaged packets are skipped and counted.
class StreamDecoder {
public:
    /// Throws Error (kExitRefused) when the file cannot be read or has no such stream that can be decoded.
    StreamDecoder(const std::filesystem::path& path, AVMediaType type);

    /// The next frame, or null at the end. Valid until the next call.
    const AVFrame* next();

    AVFormatContext* container() const { return container_.get(); }
    AVStream* stream() const { return stream_; }
    const AVCodecContext& codec() const { return *codec_; }
    int damaged_packets() const { return damaged_packets_; }

private:
    void feed();

    LibavPtr<AVFormatContext> container_;
    AVStream* stream_ = nullptr;
    CodecPtr codec_;
    PacketPtr packet_;
    FramePtr frame_;
    int damaged_packets_ = 0;
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

/// A video's pictures by time, front to back.
class VideoReader {
public:
    explicit VideoReader(const std::filesystem::path& path);

    const VideoInfo& info() const { return info_; }
    int damaged_packets() const { return decoder_.damaged_packets(); }

    /// Frames of the given rate that the video fills.
    int64_t frames(FrameRate rate) const;

    /// The newest frame whose time is not after `seconds` (0 = first frame); the last one when the video is over. Times
    /// must not fall from call to call. Valid until the next call.
    const AVFrame* frame_at(double seconds);

    /// Grows whenever frame_at went on to another frame, so that a caller can keep what it made of the old one.
    int64_t frame_number() const { return frame_number_; }

private:
    double time_of(const AVFrame& frame) const;
    void advance();

    StreamDecoder decoder_;
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

/// The format of a file's sound; nothing when the file has none that can be decoded.
std::optional<SoundFormat> find_sound(const std::filesystem::path& path);

/// A file's sound as planar floats in one format, on the time line of its video: sample 0 is heard as the first frame
/// appears. Silence fills the time before the sound begins, gaps in it, and the time after its end.
class SoundReader {
public:
    SoundReader(const std::filesystem::path& path, const SoundFormat& format, double video_start_seconds);

    /// The next `count` samples of every channel.
    void read(float* const* channels, int count);

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
