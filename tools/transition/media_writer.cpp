#include "media_writer.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <new>
#include <string_view>

#include "error.h"
#include "interrupt.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/opt.h>
}

namespace zepbmp::transition {

namespace {

constexpr int kPieceOfUnframedSound = 1024;
constexpr int64_t kSoundBitsPerChannel = 96000;

/// Whether a container takes a codec. MPEG-TS takes both of those asked for here, but says nothing about codecs.
bool takes(const AVOutputFormat* container, AVCodecID codec) {
    return avformat_query_codec(container, codec, FF_COMPLIANCE_NORMAL) == 1 ||
           std::string_view(container->name) == "mpegts";
}

/// The first of the named encoders whose streams fit into the container, else the container's own choice.
const AVCodec* choose_encoder(const AVOutputFormat* container, std::initializer_list<const char*> names,
                              AVCodecID own) {
    for (const char* name : names) {
        const AVCodec* const encoder = avcodec_find_encoder_by_name(name);
        if (encoder && takes(container, encoder->id))
            return encoder;
    }
    return own == AV_CODEC_ID_NONE ? nullptr : avcodec_find_encoder(own);
}

/// 4:2:0 where the size allows it (its chroma lines span two lines, of one field if there are fields).
AVPixelFormat choose_pixel_format(const AVCodec* encoder, int width, int height, bool interlaced) {
    const AVPixelFormat wished = width % 2 != 0                       ? AV_PIX_FMT_YUV444P
                                 : height % (interlaced ? 4 : 2) != 0 ? AV_PIX_FMT_YUV422P
                                                                      : AV_PIX_FMT_YUV420P;
    const AVPixelFormat* const supported = encoder->pix_fmts;
    if (!supported)
        return wished;
    for (const AVPixelFormat* format = supported; *format != AV_PIX_FMT_NONE; ++format)
        if (*format == wished)
            return wished;
    for (const AVPixelFormat* format = supported; *format != AV_PIX_FMT_NONE; ++format)
        if (*format == AV_PIX_FMT_YUV420P)
            return *format;
    return supported[0];
}

int choose_rate(const AVCodec* encoder, int wished) {
    int best = wished;
    if (const int* rate = encoder->supported_samplerates) {
        best = *rate;
        for (; *rate != 0; ++rate)
            if (std::abs(*rate - wished) < std::abs(best - wished))
                best = *rate;
    }
    return best;
}

ChannelLayout choose_layout(const AVCodec* encoder, const ChannelLayout& wished) {
    AVChannelLayout named{};
    av_channel_layout_default(&named, wished.channels());
    const ChannelLayout usual = wished.get().order == AV_CHANNEL_ORDER_UNSPEC ? ChannelLayout(named) : wished;
    if (!encoder->ch_layouts)
        return usual;
    for (const AVChannelLayout* layout = encoder->ch_layouts; layout->nb_channels != 0; ++layout)
        if (av_channel_layout_compare(layout, &usual.get()) == 0)
            return usual;
    for (const AVChannelLayout* layout = encoder->ch_layouts; layout->nb_channels != 0; ++layout)
        if (layout->nb_channels == std::min(wished.channels(), 2))
            return ChannelLayout(*layout);
    return ChannelLayout(encoder->ch_layouts[0]);
}

}  // namespace

MediaWriter::MediaWriter(const std::filesystem::path& place, bool overwrite, const VideoInfo& video, FieldOrder fields,
                         const std::optional<SoundFormat>& sound)
    : place_(place.string()),
      file_(place, overwrite),
      packet_(make_packet()),
      fields_(fields),
      matrix_(known_matrix(video.matrix, video.height)) {
    const AVOutputFormat* const format = av_guess_format(nullptr, place_.c_str(), nullptr);
    if (!format || format->video_codec == AV_CODEC_ID_NONE || (format->flags & AVFMT_NOFILE) ||
        std::string(format->name).starts_with("image2"))
        throw Error(place_ + ": the ending names no video container (try .mp4, .mkv, .mov or .avi)", kExitRefused);
    AVFormatContext* made = nullptr;
    if (avformat_alloc_output_context2(&made, format, nullptr, file_.temporary_name().c_str()) < 0)
        throw std::bad_alloc();
    container_.reset(made);
    add_video(video, fields);
    if (sound && format->audio_codec != AV_CODEC_ID_NONE)
        add_sound(*sound);
    check(avio_open(&container_->pb, ("file:" + file_.temporary_name()).c_str(), AVIO_FLAG_WRITE));
    AVDictionary* settings = nullptr;
    av_dict_set(&settings, "movflags", "+faststart", 0);
    const int result = avformat_write_header(container_.get(), &settings);
    av_dict_free(&settings);
    check(result);
}

void MediaWriter::ContainerDeleter::operator()(AVFormatContext* container) const {
    if (container->pb)
        avio_closep(&container->pb);
    avformat_free_context(container);
}

std::string MediaWriter::description() const {
    const auto name = [](const CodecPtr& codec) -> std::string {
        const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec->codec_id);
        return descriptor ? descriptor->name : "unknown";
    };
    return name(video_codec_) + (sound_codec_ ? " and " + name(sound_codec_) : "");
}

void MediaWriter::check(int result) const {
    if (result < 0)
        throw Error(place_ + ": cannot be written: " + libav_message(result));
}

AVStream* MediaWriter::add_stream(AVCodecContext* codec) {
    AVStream* const stream = avformat_new_stream(container_.get(), nullptr);
    if (!stream)
        throw std::bad_alloc();
    stream->time_base = codec->time_base;
    check(avcodec_parameters_from_context(stream->codecpar, codec));
    return stream;
}

void MediaWriter::add_video(const VideoInfo& video, FieldOrder fields) {
    const AVOutputFormat* const format = container_->oformat;
    const AVCodec* const encoder = choose_encoder(format, {"libx264", "mpeg4"}, format->video_codec);
    if (!encoder)
        throw Error(place_ + ": no encoder for a video of this ending", kExitRefused);
    video_codec_.reset(avcodec_alloc_context3(encoder));
    AVCodecContext* const codec = video_codec_.get();
    if (!codec)
        throw std::bad_alloc();

    const bool interlaced = fields != FieldOrder::kProgressive;
    codec->width = video.width;
    codec->height = video.height;
    codec->pix_fmt = choose_pixel_format(encoder, video.width, video.height, interlaced);
    codec->sample_aspect_ratio = video.sample_aspect;
    codec->framerate = {video.rate.num, video.rate.den};
    codec->time_base = {video.rate.den, video.rate.num};
    codec->color_range = AVCOL_RANGE_MPEG;
    codec->colorspace = video.matrix == AVCOL_SPC_UNSPECIFIED ? AVCOL_SPC_UNSPECIFIED : matrix_;
    codec->color_primaries = video.primaries;
    codec->color_trc = video.transfer;
    codec->thread_count = 0;
    if (interlaced) {
        codec->flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
        codec->field_order = fields == FieldOrder::kTopFirst ? AV_FIELD_TT : AV_FIELD_BB;
    }
    if (format->flags & AVFMT_GLOBALHEADER)
        codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;

    AVDictionary* settings = nullptr;
    if (encoder->id == AV_CODEC_ID_H264) {
        av_dict_set(&settings, "preset", "fast", 0);
        av_dict_set(&settings, "crf", "18", 0);
    } else {  // a constant, high quality
        codec->flags |= AV_CODEC_FLAG_QSCALE;
        codec->global_quality = 3 * FF_QP2LAMBDA;
    }
    const int result = avcodec_open2(codec, encoder, &settings);
    av_dict_free(&settings);
    if (result < 0)
        throw Error(place_ + ": the " + encoder->name + " encoder refuses this video: " + libav_message(result),
                    kExitRefused);

    video_stream_ = add_stream(codec);
    video_stream_->avg_frame_rate = codec->framerate;
    video_stream_->sample_aspect_ratio = video.sample_aspect;
    if (video.rotation_degrees != 0) {
        auto* const matrix = reinterpret_cast<int32_t*>(
            av_stream_new_side_data(video_stream_, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(int32_t)));
        if (!matrix)
            throw std::bad_alloc();
        av_display_rotation_set(matrix, -video.rotation_degrees);
    }
}

void MediaWriter::add_sound(const SoundFormat& given) {
    const AVOutputFormat* const format = container_->oformat;
    const AVCodec* const encoder = choose_encoder(format, {"aac"}, format->audio_codec);
    if (!encoder)
        throw Error(place_ + ": no encoder for the sound of this ending", kExitRefused);
    sound_codec_.reset(avcodec_alloc_context3(encoder));
    AVCodecContext* const codec = sound_codec_.get();
    if (!codec)
        throw std::bad_alloc();

    sound_format_ = given;
    const ChannelLayout layout = choose_layout(encoder, given.layout);
    codec->sample_rate = choose_rate(encoder, given.rate);
    codec->time_base = {1, codec->sample_rate};
    codec->sample_fmt = encoder->sample_fmts ? encoder->sample_fmts[0] : AV_SAMPLE_FMT_FLTP;
    codec->bit_rate = kSoundBitsPerChannel * layout.channels();
    check(av_channel_layout_copy(&codec->ch_layout, &layout.get()));
    if (format->flags & AVFMT_GLOBALHEADER)
        codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (const int result = avcodec_open2(codec, encoder, nullptr); result < 0)
        throw Error(place_ + ": the " + encoder->name + " encoder refuses this sound: " + libav_message(result),
                    kExitRefused);

    sound_stream_ = add_stream(codec);
    sound_piece_ = codec->frame_size > 0 ? codec->frame_size : kPieceOfUnframedSound;
    sound_queue_.reset(av_audio_fifo_alloc(codec->sample_fmt, layout.channels(), sound_piece_));
    sound_converter_ = make_resampler(codec->sample_rate, codec->ch_layout, codec->sample_fmt, given.rate,
                                      given.layout.get(), AV_SAMPLE_FMT_FLTP);
    if (!sound_queue_)
        throw std::bad_alloc();
}

void MediaWriter::write_picture(const Bitmap& picture) {
    AVCodecContext* const codec = video_codec_.get();
    if (!picture_ || av_frame_is_writable(picture_.get()) == 0)  // the encoder still holds the last one
        picture_ = make_picture_frame(codec->width, codec->height, codec->pix_fmt);
    PictureView to = view_of(*picture_);
    to.full_range = false;
    to.matrix = matrix_;
    const PictureView from = view_of(picture, codec->width, matrix_);
    if (fields_ == FieldOrder::kProgressive)
        scaler_.convert(from, to);
    else
        scaler_.convert_fields(from, to);

    picture_->pts = pictures_++;
    picture_->interlaced_frame = fields_ != FieldOrder::kProgressive;
    picture_->top_field_first = fields_ == FieldOrder::kTopFirst;
    picture_->quality = codec->global_quality;
    picture_->sample_aspect_ratio = codec->sample_aspect_ratio;
    encode(codec, video_stream_, picture_.get());
}

void MediaWriter::write_sound(float* const* channels, int count) {
    convert_sound(channels, count);
    encode_sound(sound_piece_);
}

// Without channels, the rest that the resampler holds.
void MediaWriter::convert_sound(float* const* channels, int count) {
    const AVCodecContext* const codec = sound_codec_.get();
    const int room = swr_get_out_samples(sound_converter_.get(), count) + 32;
    const FramePtr out = make_sound_frame(room, codec->sample_rate, codec->ch_layout, codec->sample_fmt);
    const auto in = const_cast<const uint8_t**>(reinterpret_cast<const uint8_t* const*>(channels));
    const int got = swr_convert(sound_converter_.get(), out->extended_data, room, in, count);
    check(got);
    if (av_audio_fifo_write(sound_queue_.get(), reinterpret_cast<void**>(out->extended_data), got) < 0)
        throw std::bad_alloc();
}

void MediaWriter::encode_sound(int at_least) {
    AVCodecContext* const codec = sound_codec_.get();
    while (av_audio_fifo_size(sound_queue_.get()) >= at_least) {
        const int count = std::min(av_audio_fifo_size(sound_queue_.get()), sound_piece_);
        const FramePtr frame = make_sound_frame(count, codec->sample_rate, codec->ch_layout, codec->sample_fmt);
        av_audio_fifo_read(sound_queue_.get(), reinterpret_cast<void**>(frame->extended_data), count);
        frame->pts = samples_;
        samples_ += count;
        encode(codec, sound_stream_, frame.get());
    }
}

void MediaWriter::encode(AVCodecContext* codec, AVStream* stream, const AVFrame* frame) {
    check(avcodec_send_frame(codec, frame));
    for (;;) {
        check_interrupt();  // an encoder that is being emptied gives many packets in one call
        const int result = avcodec_receive_packet(codec, packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        check(result);
        if (codec->codec_type == AVMEDIA_TYPE_VIDEO && packet_->duration == 0)
            packet_->duration = 1;
        av_packet_rescale_ts(packet_.get(), codec->time_base, stream->time_base);
        packet_->stream_index = stream->index;
        check(av_interleaved_write_frame(container_.get(), packet_.get()));
    }
}

void MediaWriter::finish() {
    encode(video_codec_.get(), video_stream_, nullptr);
    if (sound_codec_) {
        convert_sound(nullptr, 0);
        encode_sound(1);
        encode(sound_codec_.get(), sound_stream_, nullptr);
    }
    check(av_write_trailer(container_.get()));
    check(avio_closep(&container_->pb));
}

}  // namespace zepbmp::transition
