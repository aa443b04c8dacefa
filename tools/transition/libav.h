#pragma once

#include <filesystem>
#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace zepbmp::transition {

struct LibavDeleter {
    void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
    void operator()(SwrContext* resampler) const { swr_free(&resampler); }
    void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
};

template <class T>
using LibavPtr = std::unique_ptr<T, LibavDeleter>;

using FramePtr = LibavPtr<AVFrame>;
using PacketPtr = LibavPtr<AVPacket>;
using CodecPtr = LibavPtr<AVCodecContext>;

FramePtr make_frame();
PacketPtr make_packet();

/// A picture with its own buffers.
FramePtr make_picture_frame(int width, int height, AVPixelFormat format);

/// A piece of sound with its own buffers.
FramePtr make_sound_frame(int samples, int rate, const AVChannelLayout& layout, AVSampleFormat format);

/// Converts sound from one rate, layout and sample format to another. Throws Error when libswresample cannot.
LibavPtr<SwrContext> make_resampler(int rate_out, const AVChannelLayout& layout_out, AVSampleFormat format_out,
                                    int rate_in, const AVChannelLayout& layout_in, AVSampleFormat format_in);

/// What a negative libav result means, in words.
std::string libav_message(int result);

/// Throws Error when reading the file has failed so far. libav reports that as the end of the file, or not at all.
void check_reading(const AVFormatContext& container, const std::filesystem::path& path);

/// Reads the next packet; false at the end. Throws Error when the file cannot be read, which is no end.
bool read_frame(AVFormatContext& container, AVPacket& packet, const std::filesystem::path& path);

/// Copies a channel layout by value; frees itself.
class ChannelLayout {
public:
    ChannelLayout() = default;
    explicit ChannelLayout(const AVChannelLayout& layout) { av_channel_layout_copy(&layout_, &layout); }
    ChannelLayout(const ChannelLayout& other) : ChannelLayout(other.layout_) {}
    ChannelLayout& operator=(const ChannelLayout& other) {
        av_channel_layout_copy(&layout_, &other.layout_);
        return *this;
    }
    ~ChannelLayout() { av_channel_layout_uninit(&layout_); }
    const AVChannelLayout& get() const { return layout_; }
    int channels() const { return layout_.nb_channels; }

private:
    AVChannelLayout layout_{};
};

}  // namespace zepbmp::transition
