#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame_converter.h"
#include "libav.h"
#include "media_reader.h"
#include "output_file.h"

namespace zepbmp::transition {

/// Writes a video file: pictures and sound in, compressed streams out. The file appears when commit() has returned;
/// until then, and if anything fails, nothing is to be seen of it.
class MediaWriter {
public:
    /// `video` gives size, rate, shape of pixels and colours; `fields` the order of the fields in the file. The file's
    /// ending decides the container. `sound` is what is wished for; see sound_format().
    MediaWriter(const std::filesystem::path& place, bool overwrite, const VideoInfo& video, FieldOrder fields,
                const std::optional<SoundFormat>& sound);

    /// Format that write_sound takes: the one wished for, or the nearest that the encoder has.
    const std::optional<SoundFormat>& sound_format() const { return sound_format_; }

    /// "H.264, AAC" and the like, for messages.
    std::string description() const;

    /// The next picture: YUY2, of the video's size, its width rounded up to even.
    void write_picture(const Bitmap& picture);

    /// The next samples, planar floats.
    void write_sound(float* const* channels, int count);

    /// Writes what the encoders still hold and closes the file, which stays hidden.
    void finish();

    /// Puts the finished file in its place.
    void commit() { file_.commit(); }

private:
    struct ContainerDeleter {
        void operator()(AVFormatContext* container) const;
    };

    void add_video(const VideoInfo& video, FieldOrder fields);
    void add_sound(const SoundFormat& wished);
    AVStream* add_stream(AVCodecContext* codec);
    void encode_sound(int at_least);
    void encode(AVCodecContext* codec, AVStream* stream, const AVFrame* frame);
    void check(int result) const;

    std::string place_;
    OutputFile file_;
    std::unique_ptr<AVFormatContext, ContainerDeleter> container_;  // closed before the file goes
    PacketPtr packet_;

    CodecPtr video_codec_;
    AVStream* video_stream_ = nullptr;
    FieldOrder fields_;
    AVColorSpace matrix_;
    Scaler scaler_;
    FramePtr picture_;
    int64_t pictures_ = 0;

    std::optional<SoundFormat> sound_format_;
    CodecPtr sound_codec_;
    AVStream* sound_stream_ = nullptr;
    LibavPtr<AVAudioFifo> sound_queue_;
    LibavPtr<SwrContext> sound_converter_;
    int sound_piece_ = 0;  // samples that the encoder takes at a time
    int64_t samples_ = 0;
};

}  // namespace zepbmp::transition
