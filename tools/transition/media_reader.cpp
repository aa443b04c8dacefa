#include "media_reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <string_view>
#include <vector>

#include "error.h"
#include "interrupt.h"

extern "C" {
#include <libavutil/display.h>
}

namespace zepbmp::transition {

namespace {

constexpr double kLargestGapSeconds = 0.1;  // a smaller difference between time stamps and samples is no gap
constexpr int kSilencePiece = 4096;
constexpr double kHighestFrameRate = 1000;
constexpr double kKeyframeDistanceSeconds = 0.25;  // nearer ones are left out of measures
constexpr double kStepBackSeconds = 10;            // where a container has passed a keyframe by

AVStream* select_stream(AVFormatContext* container, AVMediaType type) {
    const int index = av_find_best_stream(container, type, -1, -1, nullptr, 0);
    if (index < 0)
        return nullptr;
    AVStream* const stream = container->streams[index];
    if (stream->disposition & AV_DISPOSITION_ATTACHED_PIC)
        return nullptr;
    for (unsigned i = 0; i < container->nb_streams; ++i)
        container->streams[i]->discard = static_cast<int>(i) == index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    return stream;
}

FrameRate frame_rate(const std::filesystem::path& path, AVFormatContext* container, AVStream* stream) {
    const AVRational rate = av_guess_frame_rate(container, stream, nullptr);
    if (rate.num <= 0 || rate.den <= 0 || av_q2d(rate) > kHighestFrameRate)
        throw Error(path.string() + ": its frame rate is unknown", kExitRefused);
    return {rate.num, rate.den};
}

/// Gathers the keyframes at which decoding may begin: nothing that comes before one is shown after it, and the time
/// stamps tell what comes out.
class KeyframeList {
public:
    explicit KeyframeList(double unit_seconds) : unit_seconds_(unit_seconds) {}

    void add(const AVPacket& packet) {
        if (packet.flags & AV_PKT_FLAG_DISCARD)
            return;
        if (packet.pts == AV_NOPTS_VALUE || packet.dts == AV_NOPTS_VALUE || packet.flags & AV_PKT_FLAG_CORRUPT) {
            usable_ = false;
            return;
        }
        const bool first = stamps_.empty();
        const bool far =
            keyframes_.empty() ||
            static_cast<double>(packet.pts - keyframes_.back().pts) * unit_seconds_ >= kKeyframeDistanceSeconds;
        if (packet.flags & AV_PKT_FLAG_KEY && (first || packet.pts > latest_) && far)
            keyframes_.push_back({packet.pts, packet.dts});
        latest_ = first ? packet.pts : std::max(latest_, packet.pts);
        stamps_.push_back(packet.pts);
    }

    std::vector<Keyframe> take() {
        std::sort(stamps_.begin(), stamps_.end());
        if (!usable_ || std::adjacent_find(stamps_.begin(), stamps_.end()) != stamps_.end())
            return {};
        return std::move(keyframes_);
    }

private:
    double unit_seconds_;
    bool usable_ = true;
    int64_t latest_ = 0;
    std::vector<int64_t> stamps_;
    std::vector<Keyframe> keyframes_;
};

FieldOrder field_order(const AVFrame& frame) {
    if (!frame.interlaced_frame)
        return FieldOrder::kProgressive;
    return frame.top_field_first ? FieldOrder::kTopFirst : FieldOrder::kBottomFirst;
}

double rotation_of(const AVStream* stream) {
    const uint8_t* const matrix = av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (!matrix)
        return 0;
    const double degrees = av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
    return std::isfinite(degrees) ? degrees : 0;
}

}  // namespace

LibavPtr<AVFormatContext> open_container(const std::filesystem::path& path) {
    struct stat state {};
    if (stat(path.c_str(), &state) != 0)
        throw Error(path.string() + ": " + std::strerror(errno), kExitRefused);
    if (S_ISDIR(state.st_mode))
        throw Error(path.string() + ": is a folder", kExitRefused);

    AVDictionary* settings = nullptr;
    av_dict_set(&settings, "protocol_whitelist", "file", 0);
    AVFormatContext* opened = nullptr;
    int result = avformat_open_input(&opened, ("file:" + path.string()).c_str(), nullptr, &settings);
    av_dict_free(&settings);
    LibavPtr<AVFormatContext> container(opened);
    if (result >= 0)
        result = avformat_find_stream_info(container.get(), nullptr);
    // Texts would be taken for pictures of a terminal.
    if (result >= 0 && std::string_view(container->iformat->name) == "tty")
        result = AVERROR_INVALIDDATA;
    if (result == AVERROR_INVALIDDATA)
        throw Error(path.string() + ": is not a video that can be read", kExitRefused);
    if (result < 0)
        throw Error(path.string() + ": cannot be read: " + libav_message(result), kExitRefused);
    check_reading(*container, path);
    return container;
}

StreamDecoder::StreamDecoder(const std::filesystem::path& path, AVMediaType type)
    : path_(path), container_(open_container(path)), packet_(make_packet()), frame_(make_frame()) {
    const char* const kind = av_get_media_type_string(type);
    stream_ = select_stream(container_.get(), type);
    if (!stream_)
        throw Error(path.string() + ": has no " + kind, kExitRefused);
    const AVCodec* const decoder = avcodec_find_decoder(stream_->codecpar->codec_id);
    if (!decoder)
        throw Error(
            path.string() + ": no decoder for its " + kind + " (" + avcodec_get_name(stream_->codecpar->codec_id) + ")",
            kExitRefused);
    codec_.reset(avcodec_alloc_context3(decoder));
    if (!codec_)
        throw std::bad_alloc();
    avcodec_parameters_to_context(codec_.get(), stream_->codecpar);
    codec_->pkt_timebase = stream_->time_base;
    codec_->thread_count = 0;  // as many as the machine has processors
    if (const int result = avcodec_open2(codec_.get(), decoder, nullptr); result < 0)
        throw Error(path.string() + ": its " + kind + " cannot be decoded: " + libav_message(result), kExitRefused);
}

// The next packet of the stream; false at the end.
bool StreamDecoder::read_packet() {
    for (;;) {
        check_interrupt();
        av_packet_unref(packet_.get());
        if (!read_frame(*container_, *packet_, path_))
            return false;
        if (packet_->stream_index == stream_->index)
            return true;
    }
}

void StreamDecoder::feed() {
    if (!packet_waits_ && !read_packet()) {
        avcodec_send_packet(codec_.get(), nullptr);
        return;
    }
    packet_waits_ = false;
    if (sought_ && !(packet_->flags & AV_PKT_FLAG_DISCARD)) {
        if (packet_->pts == AV_NOPTS_VALUE)
            throw SeekDoubt(path_);
        if (packet_->pts >= *sought_ && !awaited_.insert(packet_->pts).second)
            throw SeekDoubt(path_);
    }
    if (avcodec_send_packet(codec_.get(), packet_.get()) < 0)
        ++damaged_packets_;
    av_packet_unref(packet_.get());
}

const AVFrame* StreamDecoder::next() {
    for (;;) {
        const int result = avcodec_receive_frame(codec_.get(), frame_.get());
        if (result >= 0) {
            if (sought_ && !expected(*frame_))
                continue;
            return frame_.get();
        }
        if (result == AVERROR_EOF) {
            if (!awaited_.empty())
                throw SeekDoubt(path_);
            return nullptr;
        }
        if (result != AVERROR(EAGAIN))
            ++damaged_packets_;
        feed();
    }
}

// False for a frame that is shown before the keyframe and needs what lies before it, too.
bool StreamDecoder::expected(const AVFrame& frame) {
    const int64_t stamp = frame.best_effort_timestamp;
    if (stamp == AV_NOPTS_VALUE)
        throw SeekDoubt(path_);
    if (stamp < *sought_)
        return false;
    if (awaited_.empty() || stamp != *awaited_.begin() || frame.flags & AV_FRAME_FLAG_CORRUPT ||
        frame.decode_error_flags != 0)
        throw SeekDoubt(path_);
    awaited_.erase(awaited_.begin());
    return true;
}

// Reads on from a time to the keyframe's packet; false when the container begins behind it.
bool StreamDecoder::find(const Keyframe& keyframe, int64_t from) {
    if (av_seek_frame(container_.get(), stream_->index, from, AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    while (read_packet()) {
        if (!(packet_->flags & AV_PKT_FLAG_KEY) || packet_->flags & AV_PKT_FLAG_DISCARD)
            continue;
        if (packet_->pts == AV_NOPTS_VALUE || packet_->pts > keyframe.pts)
            return false;
        if (packet_->pts == keyframe.pts)
            return true;
    }
    return false;
}

void StreamDecoder::seek(const Keyframe& keyframe) {
    avcodec_flush_buffers(codec_.get());
    const auto step = static_cast<int64_t>(kStepBackSeconds / av_q2d(stream_->time_base));
    if (!find(keyframe, keyframe.dts) && !find(keyframe, keyframe.dts - step))
        throw SeekDoubt(path_);
    sought_ = keyframe.pts;
    awaited_.clear();
    packet_waits_ = true;
}

// Walks all packets, since what containers say about lengths is often wrong.
VideoMeasure measure_video(const std::filesystem::path& path) {
    const LibavPtr<AVFormatContext> container = open_container(path);
    AVStream* const stream = select_stream(container.get(), AVMEDIA_TYPE_VIDEO);
    if (!stream)
        throw Error(path.string() + ": has no video", kExitRefused);
    const FrameRate rate = frame_rate(path, container.get(), stream);
    const PacketPtr packet = make_packet();
    const double unit = av_q2d(stream->time_base);
    KeyframeList keyframes(unit);
    int64_t packets = 0;
    double begin = INFINITY, end = -INFINITY;
    while (read_frame(*container, *packet, path)) {
        check_interrupt();
        if (packet->stream_index == stream->index) {
            const int64_t stamp = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
            if (stamp != AV_NOPTS_VALUE) {
                begin = std::min(begin, stamp * unit);
                end = std::max(end, (stamp + packet->duration) * unit);
                if (packet->duration <= 0)
                    end = std::max(end, stamp * unit + 1 / rate.per_second());
            }
            keyframes.add(*packet);
            ++packets;
        }
        av_packet_unref(packet.get());
    }
    return {end > begin ? end - begin : static_cast<double>(packets) / rate.per_second(), keyframes.take()};
}

VideoReader::VideoReader(const std::filesystem::path& path, VideoMeasure measure)
    : path_(path),
      decoder_(path, AVMEDIA_TYPE_VIDEO),
      measure_(std::move(measure)),
      current_(make_frame()),
      next_(make_frame()) {
    AVStream* const stream = decoder_.stream();
    info_.rate = frame_rate(path, decoder_.container(), stream);
    info_.length_seconds = measure_.length_seconds;

    advance();
    if (!has_next_)
        throw Error(path.string() + ": no frame of its video can be decoded", kExitRefused);
    info_.start_seconds = next_time_;
    info_.width = next_->width;
    info_.height = next_->height;
    const AVRational aspect = av_guess_sample_aspect_ratio(decoder_.container(), stream, next_.get());
    if (aspect.num > 0 && aspect.den > 0)
        info_.sample_aspect = aspect;
    info_.fields = field_order(*next_);
    info_.matrix = next_->colorspace;
    info_.primaries = next_->color_primaries;
    info_.transfer = next_->color_trc;
    info_.rotation_degrees = rotation_of(stream);
}

int64_t VideoReader::frames(FrameRate rate) const { return std::llround(info_.length_seconds * rate.num / rate.den); }

double VideoReader::time_of(const AVFrame& frame) const {
    if (frame.best_effort_timestamp != AV_NOPTS_VALUE)
        return static_cast<double>(frame.best_effort_timestamp) * av_q2d(decoder_.stream()->time_base);
    return has_next_ ? next_time_ + 1 / info_.rate.per_second() : 0;
}

void VideoReader::advance() {
    const AVFrame* const frame = decoder_.next();
    if (frame) {
        next_time_ = time_of(*frame);
        av_frame_unref(next_.get());
        av_frame_ref(next_.get(), frame);
    }
    has_next_ = frame != nullptr;
}

void VideoReader::skip_to(double seconds) {
    const double unit = av_q2d(decoder_.stream()->time_base);
    const auto after =
        std::partition_point(measure_.keyframes.begin(), measure_.keyframes.end(), [&](const Keyframe& keyframe) {
            return static_cast<double>(keyframe.pts) * unit - info_.start_seconds <= seconds;
        });
    if (after == measure_.keyframes.begin() || !has_next_)
        return;
    const Keyframe& keyframe = *std::prev(after);
    if (static_cast<double>(keyframe.pts) * unit <= next_time_)
        return;
    decoder_.seek(keyframe);
    frame_number_ = 0;
    advance();
    if (!has_next_ || next_time_ - info_.start_seconds > seconds)
        throw SeekDoubt(path_);
}

const AVFrame* VideoReader::frame_at(double seconds) {
    while (has_next_ && (frame_number_ == 0 || next_time_ - info_.start_seconds <= seconds)) {
        std::swap(current_, next_);
        ++frame_number_;
        advance();
    }
    return current_.get();
}

std::optional<SoundFormat> find_sound(const std::filesystem::path& path) {
    const LibavPtr<AVFormatContext> container = open_container(path);
    const AVStream* const stream = select_stream(container.get(), AVMEDIA_TYPE_AUDIO);
    if (!stream || !avcodec_find_decoder(stream->codecpar->codec_id))
        return std::nullopt;
    if (stream->codecpar->sample_rate <= 0 || stream->codecpar->ch_layout.nb_channels <= 0)
        return std::nullopt;
    if (stream->codecpar->ch_layout.order != AV_CHANNEL_ORDER_UNSPEC)
        return SoundFormat{stream->codecpar->sample_rate, ChannelLayout(stream->codecpar->ch_layout)};
    AVChannelLayout usual{};
    av_channel_layout_default(&usual, stream->codecpar->ch_layout.nb_channels);
    return SoundFormat{stream->codecpar->sample_rate, ChannelLayout(usual)};
}

SoundReader::SoundReader(const std::filesystem::path& path, const SoundFormat& format, double video_start_seconds)
    : decoder_(path, AVMEDIA_TYPE_AUDIO),
      format_(format),
      video_start_seconds_(video_start_seconds),
      samples_(av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, format.layout.channels(), 1)) {
    if (!samples_)
        throw std::bad_alloc();
}

void SoundReader::read(float* const* channels, int count) {
    while (!ended_ && av_audio_fifo_size(samples_.get()) < count)
        ended_ = !decode_more();
    std::vector<void*> planes(channels, channels + format_.layout.channels());
    const int got = std::max(0, av_audio_fifo_read(samples_.get(), planes.data(), count));
    for (int c = 0; c < format_.layout.channels(); ++c)
        std::fill(channels[c] + got, channels[c] + count, 0.0f);
}

void SoundReader::skip(int64_t count) {
    const FramePtr past = make_sound_frame(kSilencePiece, format_.rate, format_.layout.get(), AV_SAMPLE_FMT_FLTP);
    for (; count > 0; count -= kSilencePiece)
        read(reinterpret_cast<float**>(past->extended_data), static_cast<int>(std::min<int64_t>(count, kSilencePiece)));
}

// One step: a piece of the silence that is due, or the held frame, or the next one is fetched and held.
bool SoundReader::decode_more() {
    if (silence_due_ > 0) {
        store_silence(static_cast<int>(std::min<int64_t>(silence_due_, kSilencePiece)));
    } else if (held_) {
        prepare_resampler(*held_);
        store_resampled(held_);
        held_ = nullptr;
    } else if ((held_ = decoder_.next())) {
        align(*held_);
    } else {
        drain_resampler();
        return false;
    }
    return true;
}

void SoundReader::prepare_resampler(const AVFrame& frame) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    if (resampler_ && resampler_input_.rate == frame.sample_rate && resampler_input_format_ == format &&
        av_channel_layout_compare(&resampler_input_.layout.get(), &frame.ch_layout) == 0)
        return;
    drain_resampler();
    resampler_ = make_resampler(format_.rate, format_.layout.get(), AV_SAMPLE_FMT_FLTP, frame.sample_rate,
                                frame.ch_layout, format);
    resampler_input_ = {frame.sample_rate, ChannelLayout(frame.ch_layout)};
    resampler_input_format_ = format;
}

void SoundReader::drain_resampler() {
    if (resampler_)
        store_resampled(nullptr);
    resampler_.reset();
}

// Makes the number of samples agree with the frame's time stamp, where the two lie apart.
void SoundReader::align(const AVFrame& frame) {
    if (frame.best_effort_timestamp == AV_NOPTS_VALUE)
        return;
    const double seconds =
        static_cast<double>(frame.best_effort_timestamp) * av_q2d(decoder_.stream()->time_base) - video_start_seconds_;
    const int64_t waiting = resampler_ ? swr_get_delay(resampler_.get(), format_.rate) : 0;
    const int64_t missing = std::llround(seconds * format_.rate) - (stored_ + waiting - to_drop_);
    const bool first = !resampler_ && stored_ == 0 && to_drop_ == 0;
    if (!first && std::abs(static_cast<double>(missing)) < kLargestGapSeconds * format_.rate)
        return;
    drain_resampler();
    if (missing > 0)
        silence_due_ = missing;
    else
        to_drop_ -= missing;
}

void SoundReader::store_resampled(const AVFrame* frame) {
    const uint8_t** const input = frame ? const_cast<const uint8_t**>(frame->extended_data) : nullptr;
    const int input_count = frame ? frame->nb_samples : 0;
    const int room = swr_get_out_samples(resampler_.get(), input_count) + 32;
    const FramePtr out = make_sound_frame(room, format_.rate, format_.layout.get(), AV_SAMPLE_FMT_FLTP);
    const int got = swr_convert(resampler_.get(), out->extended_data, room, input, input_count);
    if (got < 0)
        throw Error("the sound cannot be converted: " + libav_message(got));
    const int dropped = static_cast<int>(std::min<int64_t>(got, to_drop_));
    to_drop_ -= dropped;
    if (dropped == got)
        return;
    stored_ += got - dropped;
    std::vector<void*> planes(format_.layout.channels());
    for (size_t c = 0; c < planes.size(); ++c)
        planes[c] = reinterpret_cast<float*>(out->extended_data[c]) + dropped;
    if (av_audio_fifo_write(samples_.get(), planes.data(), got - dropped) < 0)
        throw std::bad_alloc();
}

void SoundReader::store_silence(int count) {
    const FramePtr silence = make_sound_frame(count, format_.rate, format_.layout.get(), AV_SAMPLE_FMT_FLTP);
    av_samples_set_silence(silence->extended_data, 0, count, format_.layout.channels(), AV_SAMPLE_FMT_FLTP);
    if (av_audio_fifo_write(samples_.get(), reinterpret_cast<void**>(silence->extended_data), count) < 0)
        throw std::bad_alloc();
    stored_ += count;
    silence_due_ -= count;
}

}  // namespace zepbmp::transition
