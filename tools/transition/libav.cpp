#include "libav.h"

#include <new>

#include "error.h"

namespace zepbmp::transition {

namespace {

template <class T>
LibavPtr<T> owned(T* object) {
    if (!object)
        throw std::bad_alloc();
    return LibavPtr<T>(object);
}

}  // namespace

FramePtr make_frame() { return owned(av_frame_alloc()); }

PacketPtr make_packet() { return owned(av_packet_alloc()); }

FramePtr make_picture_frame(int width, int height, AVPixelFormat format) {
    FramePtr frame = make_frame();
    frame->width = width;
    frame->height = height;
    frame->format = format;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        throw std::bad_alloc();
    return frame;
}

FramePtr make_sound_frame(int samples, int rate, const AVChannelLayout& layout, AVSampleFormat format) {
    FramePtr frame = make_frame();
    frame->nb_samples = samples;
    frame->sample_rate = rate;
    frame->format = format;
    if (av_channel_layout_copy(&frame->ch_layout, &layout) < 0 || av_frame_get_buffer(frame.get(), 0) < 0)
        throw std::bad_alloc();
    return frame;
}

LibavPtr<SwrContext> make_resampler(int rate_out, const AVChannelLayout& layout_out, AVSampleFormat format_out,
                                    int rate_in, const AVChannelLayout& layout_in, AVSampleFormat format_in) {
    AVChannelLayout out = layout_out, in = layout_in;  // the call below only reads them, and says so in later versions
    SwrContext* made = nullptr;
    int result = swr_alloc_set_opts2(&made, &out, format_out, rate_out, &in, format_in, rate_in, 0, nullptr);
    LibavPtr<SwrContext> resampler(made);
    if (result >= 0)
        result = swr_init(made);
    if (result < 0)
        throw Error("the sound cannot be converted: " + libav_message(result));
    return resampler;
}

std::string libav_message(int result) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(result, text, sizeof text);
    return text;
}

void check_reading(const AVFormatContext& container, const std::filesystem::path& path) {
    if (container.pb && container.pb->error < 0 && container.pb->error != AVERROR_EOF)
        throw Error(path.string() + ": cannot be read: " + libav_message(container.pb->error));
}

// A packet that a failure has cut short is handed out like a whole one, so each is doubted.
bool read_frame(AVFormatContext& container, AVPacket& packet, const std::filesystem::path& path) {
    const int result = av_read_frame(&container, &packet);
    check_reading(container, path);
    return result >= 0;
}

}  // namespace zepbmp::transition
