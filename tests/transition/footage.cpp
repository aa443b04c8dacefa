#include "footage.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>

namespace zepbmp::transition {

namespace {

void check(int result) {
    if (result < 0)
        throw std::runtime_error("footage: " + libav_message(result));
}

uint32_t mixed(uint32_t value) {
    value = (value ^ (value >> 16)) * 0x45d9f3bu;
    value = (value ^ (value >> 16)) * 0x45d9f3bu;
    return value ^ (value >> 16);
}

struct Stream {
    CodecPtr codec;
    AVStream* stream = nullptr;

    // The furthest that the stream has come, so that the two grow together.
    double seconds(int64_t position) const { return static_cast<double>(position) * av_q2d(codec->time_base); }
};

class FootageWriter {
public:
    FootageWriter(const std::filesystem::path& path, const Footage& footage)
        : footage_(footage), packet_(make_packet()) {
        check(avformat_alloc_output_context2(&container_, nullptr, nullptr, path.c_str()));
        open_video();
        if (!footage.sound_codec.empty())
            open_sound();
        check(avio_open(&container_->pb, path.c_str(), AVIO_FLAG_WRITE));
        check(avformat_write_header(container_, nullptr));
    }
    ~FootageWriter() {
        avio_closep(&container_->pb);
        avformat_free_context(container_);
    }

    void write() {
        const double length = footage_.frames / footage_.rate.per_second();
        const double sound_length = footage_.sound_seconds > 0 ? footage_.sound_seconds : length;
        const int64_t samples = sound_.codec ? std::llround(sound_length * footage_.sound_rate) : 0;
        int64_t frame = 0, sample = 0;
        while (frame < footage_.frames || sample < samples) {
            const bool picture_next =
                sample >= samples || (frame < footage_.frames && video_.seconds(frame) <= sound_.seconds(sample));
            if (picture_next)
                write_picture(frame++);
            else
                sample += write_sound(sample, samples);
        }
        encode(video_, nullptr);
        if (sound_.codec)
            encode(sound_, nullptr);
        check(av_write_trailer(container_));
    }

private:
    void open(Stream& stream, const AVCodec* encoder, const std::string& options) {
        if (container_->oformat->flags & AVFMT_GLOBALHEADER)
            stream.codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        AVDictionary* settings = nullptr;
        check(av_dict_parse_string(&settings, options.c_str(), "=", ",", 0));
        const int result = avcodec_open2(stream.codec.get(), encoder, &settings);
        const bool all_known = av_dict_count(settings) == 0;
        av_dict_free(&settings);
        check(result);
        if (!all_known)
            throw std::runtime_error("footage: unknown options in " + options);
        stream.stream = avformat_new_stream(container_, nullptr);
        stream.stream->time_base = stream.codec->time_base;
        check(avcodec_parameters_from_context(stream.stream->codecpar, stream.codec.get()));
    }

    static const AVCodec* encoder_of(const std::string& name) {
        const AVCodec* const encoder = avcodec_find_encoder_by_name(name.c_str());
        if (!encoder)
            throw std::runtime_error("footage: no encoder " + name);
        return encoder;
    }

    void open_video() {
        const AVCodec* const encoder = encoder_of(footage_.codec);
        video_.codec.reset(avcodec_alloc_context3(encoder));
        AVCodecContext* const codec = video_.codec.get();
        codec->width = footage_.width;
        codec->height = footage_.height;
        codec->pix_fmt = AV_PIX_FMT_YUV420P;
        codec->framerate = {footage_.rate.num, footage_.rate.den};
        codec->time_base = {footage_.rate.den, footage_.rate.num};
        codec->bit_rate = 800000;
        if (footage_.fields != FieldOrder::kProgressive) {
            codec->flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
            codec->field_order = footage_.fields == FieldOrder::kTopFirst ? AV_FIELD_TT : AV_FIELD_BB;
        }
        open(video_, encoder, footage_.codec_options);
        video_.stream->avg_frame_rate = codec->framerate;
    }

    void open_sound() {
        const AVCodec* const encoder = encoder_of(footage_.sound_codec);
        sound_.codec.reset(avcodec_alloc_context3(encoder));
        AVCodecContext* const codec = sound_.codec.get();
        codec->sample_rate = footage_.sound_rate;
        codec->time_base = {1, footage_.sound_rate};
        codec->sample_fmt = encoder->sample_fmts[0];
        codec->bit_rate = 96000;
        av_channel_layout_default(&codec->ch_layout, footage_.sound_channels);
        open(sound_, encoder, "");
        to_encoder_ = make_resampler(footage_.sound_rate, codec->ch_layout, codec->sample_fmt, footage_.sound_rate,
                                     codec->ch_layout, AV_SAMPLE_FMT_FLTP);
    }

    // Shapes that move, a pattern that never repeats, and every field of its own moment.
    void write_picture(int64_t frame) {
        const FramePtr picture = make_picture_frame(footage_.width, footage_.height, AV_PIX_FMT_YUV420P);
        const bool fields = footage_.fields != FieldOrder::kProgressive;
        const int second_field = footage_.fields == FieldOrder::kTopFirst ? 1 : 0;
        for (int plane = 0; plane < 3; ++plane) {
            const int shift = plane == 0 ? 0 : 1;
            for (int y = 0; y < footage_.height >> shift; ++y) {
                const int moment = static_cast<int>(2 * frame) + (fields && y % 2 == second_field ? 1 : 0);
                for (int x = 0; x < footage_.width >> shift; ++x) {
                    const int slope = 3 * (x << shift) + 2 * (y << shift) + (5 + plane) * moment;
                    const uint32_t block = mixed(static_cast<uint32_t>((x << shift) / 8 + 64 * ((y << shift) / 8) +
                                                                       4096 * (moment / 6 + 100 * footage_.seed)));
                    picture->data[plane][y * picture->linesize[plane] + x] =
                        static_cast<uint8_t>(30 + (slope + static_cast<int>(block % 60)) % 190);
                }
            }
        }
        picture->pts = frame;
        picture->interlaced_frame = fields;
        picture->top_field_first = footage_.fields == FieldOrder::kTopFirst;
        encode(video_, picture.get());
    }

    // Noise with a tone: encoders put noise of their own in the place of it, whose generator runs on from packet to
    // packet.
    int write_sound(int64_t begin, int64_t end) {
        AVCodecContext* const codec = sound_.codec.get();
        const int piece = codec->frame_size > 0 ? codec->frame_size : 1024;
        const int count = static_cast<int>(std::min<int64_t>(piece, end - begin));
        const FramePtr floats = make_sound_frame(count, footage_.sound_rate, codec->ch_layout, AV_SAMPLE_FMT_FLTP);
        for (int c = 0; c < footage_.sound_channels; ++c)
            for (int i = 0; i < count; ++i) {
                const auto at = static_cast<uint32_t>(begin + i);
                const double noise = mixed(at * 7 + static_cast<uint32_t>(c + 31 * footage_.seed)) / 4294967296.0 - 0.5;
                reinterpret_cast<float*>(floats->extended_data[c])[i] =
                    static_cast<float>(0.3 * noise + 0.3 * std::sin(at * (0.05 + 0.01 * c)));
            }
        const FramePtr frame = make_sound_frame(count, footage_.sound_rate, codec->ch_layout, codec->sample_fmt);
        check(swr_convert(to_encoder_.get(), frame->extended_data, count,
                          const_cast<const uint8_t**>(floats->extended_data), count));
        frame->pts = begin;
        encode(sound_, frame.get());
        return count;
    }

    void encode(const Stream& stream, const AVFrame* frame) {
        check(avcodec_send_frame(stream.codec.get(), frame));
        while (avcodec_receive_packet(stream.codec.get(), packet_.get()) >= 0) {
            if (packet_->duration == 0 && stream.codec->codec_type == AVMEDIA_TYPE_VIDEO)
                packet_->duration = 1;
            av_packet_rescale_ts(packet_.get(), stream.codec->time_base, stream.stream->time_base);
            packet_->stream_index = stream.stream->index;
            check(av_interleaved_write_frame(container_, packet_.get()));
        }
    }

    Footage footage_;
    PacketPtr packet_;
    AVFormatContext* container_ = nullptr;
    Stream video_;
    Stream sound_;
    LibavPtr<SwrContext> to_encoder_;
};

}  // namespace

void write_footage(const std::filesystem::path& path, const Footage& footage) { FootageWriter(path, footage).write(); }

}  // namespace zepbmp::transition
