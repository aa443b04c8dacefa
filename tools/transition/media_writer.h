#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame_converter.h"
#include "frame_writer.h"
#include "libav.h"
#include "media_reader.h"
#include "output_file.h"

namespace zepbmp::transition {

/// Writes a video file: pictures and sound in, compressed streams out.
class MediaWriter : public FrameWriter {
public:
    /// `video` gives size, rate, shape of pixels and colours; `fields` the order of the fields in the file. The file's
    /// ending decides the container. `sound` is what write_sound takes; the encoder's is the nearest that it has.
    MediaWriter(const std::filesystem::path& place, bool overwrite, const VideoInfo& video, FieldOrder fields,
                const std::optional<SoundFormat>& sound);

    /// Format that write_sound takes; nothing when the container takes no sound.
    const std::optional<SoundFormat>& sound_format() const { return sound_format_; }

    std::string description() const override;
    void write_picture(const Bitmap& picture) override;
    void write_sound(float* const* channels, int count) override;
    void finish() override;
    void commit() override { file_.commit(); }

private:
    struct ContainerDeleter {
        void operator()(AVFormatContext* container) const;
    };

    void add_video(const VideoInfo& video, FieldOrder fields);
    void add_sound(const SoundFormat& given);
    AVStream* add_stream(AVCodecContext* codec);
    void convert_sound(float* const* channels, int count);
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
