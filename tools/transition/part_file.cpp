#include "part_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sstream>

#include "error.h"
#include "interrupt.h"
#include "measure.h"

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/murmur3.h>
}

namespace zepbmp::transition {

namespace {

constexpr AVCodecID kPictureCodec = AV_CODEC_ID_UTVIDEO;
constexpr AVCodecID kSoundCodec = AV_CODEC_ID_PCM_F32LE;
constexpr AVCodecID kSealCodec = AV_CODEC_ID_SUBRIP;
constexpr size_t kSamplesKept = 1 << 16;  // of those that are read, before they are given up
constexpr AVRational kMilliseconds = {1, 1000};
const char kFramesTag[] = "ZEPBMP_FRAMES";
const char kTransitionTag[] = "ZEPBMP_TRANSITION";

/// The lines of a text "name=value".
class Lines {
public:
    explicit Lines(const std::string& text) {
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);)
            if (const size_t equals = line.find('='); equals != std::string::npos)
                lines_.emplace_back(line.substr(0, equals), line.substr(equals + 1));
    }
    const std::string* find(const std::string& name) const {
        for (const auto& [key, value] : lines_)
            if (key == name)
                return &value;
        return nullptr;
    }
    auto begin() const { return lines_.begin(); }
    auto end() const { return lines_.end(); }

private:
    std::vector<std::pair<std::string, std::string>> lines_;
};

std::string sound_text(const std::optional<SoundFormat>& sound) {
    if (!sound)
        return "none";
    char layout[128];
    if (av_channel_layout_describe(&sound->layout.get(), layout, sizeof layout) < 0)
        throw Error("the sound's channels have no description");
    return std::to_string(sound->rate) + " " + layout;
}

std::string video_text(const VideoInfo& video) {
    char text[256];
    std::snprintf(text, sizeof text, "%dx%d %d/%d frames/s, pixels %d:%d, colours %d %d %d, turned by %s", video.width,
                  video.height, video.rate.num, video.rate.den, video.sample_aspect.num, video.sample_aspect.den,
                  static_cast<int>(video.matrix), static_cast<int>(video.primaries), static_cast<int>(video.transfer),
                  exact_text(video.rotation_degrees).c_str());
    return text;
}

bool parse_video(const std::string& text, VideoInfo& video) {
    int matrix = 0, primaries = 0, transfer = 0;
    if (std::sscanf(text.c_str(), "%dx%d %d/%d frames/s, pixels %d:%d, colours %d %d %d, turned by %lf", &video.width,
                    &video.height, &video.rate.num, &video.rate.den, &video.sample_aspect.num, &video.sample_aspect.den,
                    &matrix, &primaries, &transfer, &video.rotation_degrees) != 10)
        return false;
    video.matrix = static_cast<AVColorSpace>(matrix);
    video.primaries = static_cast<AVColorPrimaries>(primaries);
    video.transfer = static_cast<AVColorTransferCharacteristic>(transfer);
    return video.width > 0 && video.height > 0 && video.rate.num > 0 && video.rate.den > 0 &&
           video.sample_aspect.num > 0 && video.sample_aspect.den > 0 && std::isfinite(video.rotation_degrees);
}

bool parse_sound(const std::string& text, std::optional<SoundFormat>& sound) {
    if (text == "none")
        return true;
    char* rest = nullptr;
    const long rate = std::strtol(text.c_str(), &rest, 10);
    AVChannelLayout layout{};
    if (rate <= 0 || rate > INT32_MAX || *rest != ' ' || av_channel_layout_from_string(&layout, rest + 1) < 0)
        return false;
    sound = SoundFormat{static_cast<int>(rate), ChannelLayout(layout)};
    av_channel_layout_uninit(&layout);
    return true;
}

bool parse_timeline(const std::string& text, Timeline& timeline) {
    long long at = 0, duration = 0, total = 0;
    if (std::sscanf(text.c_str(), "%lld + %lld of %lld", &at, &duration, &total) != 3)
        return false;
    timeline = {at, duration, total};
    return at >= 0 && duration > 0 && at + duration <= total;
}

constexpr const char* kOrders[] = {"progressive", "top field first", "bottom field first"};

bool parse_order(const std::string& text, FieldOrder& order) {
    for (FieldOrder known : {FieldOrder::kProgressive, FieldOrder::kTopFirst, FieldOrder::kBottomFirst})
        if (text == kOrders[static_cast<int>(known)]) {
            order = known;
            return true;
        }
    return false;
}

bool parse_transition(const std::string& text, PartHeader& header) {
    const size_t end = text.find("timeline=");
    if (end == std::string::npos)
        return false;
    header.request = text.substr(0, end);
    const Lines lines(text);
    const auto parsed = [&](const char* name, auto parse, auto& value) {
        const std::string* const found = lines.find(name);
        return found && parse(*found, value);
    };
    return parsed("timeline", parse_timeline, header.timeline) && parsed("video", parse_video, header.video) &&
           parsed("fields", parse_order, header.order) && parsed("sound", parse_sound, header.sound);
}

/// YUY2 as three planes, byte for byte.
void unpack(const Bitmap& from, AVFrame& to) {
    for (int y = 0; y < from.height(); ++y) {
        const uint8_t* in = from.pointer(0, y);
        uint8_t* luma = to.data[0] + static_cast<ptrdiff_t>(y) * to.linesize[0];
        uint8_t* u = to.data[1] + static_cast<ptrdiff_t>(y) * to.linesize[1];
        uint8_t* v = to.data[2] + static_cast<ptrdiff_t>(y) * to.linesize[2];
        for (int pair = 0; pair < from.width() / 2; ++pair, in += 4) {
            luma[2 * pair] = in[0];
            u[pair] = in[1];
            luma[2 * pair + 1] = in[2];
            v[pair] = in[3];
        }
    }
}

void pack(const AVFrame& from, Bitmap& to) {
    for (int y = 0; y < to.height(); ++y) {
        const uint8_t* luma = from.data[0] + static_cast<ptrdiff_t>(y) * from.linesize[0];
        const uint8_t* u = from.data[1] + static_cast<ptrdiff_t>(y) * from.linesize[1];
        const uint8_t* v = from.data[2] + static_cast<ptrdiff_t>(y) * from.linesize[2];
        uint8_t* out = to.pointer(0, y);
        for (int pair = 0; pair < to.width() / 2; ++pair, out += 4) {
            out[0] = luma[2 * pair];
            out[1] = u[pair];
            out[2] = luma[2 * pair + 1];
            out[3] = v[pair];
        }
    }
}

}  // namespace

std::string PartHeader::transition() const {
    std::ostringstream text;
    text << request << "timeline=" << timeline.at << " + " << timeline.duration << " of " << timeline.total
         << "\nvideo=" << video_text(video) << "\nfields=" << kOrders[static_cast<int>(order)]
         << "\nsound=" << sound_text(sound) << '\n';
    return text.str();
}

std::string first_difference(const std::string& transition, const std::string& other) {
    if (transition == other)
        return {};
    const Lines lines(transition), others(other);
    for (const auto& [name, value] : lines) {
        const std::string* const found = others.find(name);
        if (!found || *found != value)
            return name + " is " + (found ? *found : "missing") + ", not " + value;
    }
    return "it says more of it";
}

void Seal::Deleter::operator()(AVMurMur3* hash) const { av_free(hash); }

Seal::Seal() : pictures_(av_murmur3_alloc()), sound_(av_murmur3_alloc()) {
    if (!pictures_ || !sound_)
        throw std::bad_alloc();
    av_murmur3_init(pictures_.get());
    av_murmur3_init(sound_.get());
}

void Seal::add_picture(const Bitmap& picture) {
    for (int y = 0; y < picture.height(); ++y)
        av_murmur3_update(pictures_.get(), picture.pointer(0, y), static_cast<size_t>(picture.width()) * 2);
}

void Seal::add_sound(const uint8_t* data, size_t bytes) { av_murmur3_update(sound_.get(), data, bytes); }

std::string Seal::text() {
    std::string text = "sealed";
    for (AVMurMur3* hash : {pictures_.get(), sound_.get()}) {
        uint8_t digest[16];
        av_murmur3_final(hash, digest);
        text += ' ';
        for (uint8_t byte : digest) {
            char pair[3];
            std::snprintf(pair, sizeof pair, "%02x", byte);
            text += pair;
        }
    }
    return text;
}

PartWriter::PartWriter(const std::filesystem::path& place, bool overwrite, const PartHeader& header)
    : place_(place.string()), file_(place, overwrite), packet_(make_packet()) {
    AVFormatContext* made = nullptr;
    if (avformat_alloc_output_context2(&made, nullptr, "matroska", file_.temporary_name().c_str()) < 0)
        throw std::bad_alloc();
    container_.reset(made);
    add_video(header);
    if (header.sound)
        add_sound(*header.sound);
    add_seal();
    av_dict_set(&container_->metadata, kFramesTag, header.frames.text().c_str(), 0);
    av_dict_set(&container_->metadata, kTransitionTag, header.transition().c_str(), 0);
    check(avio_open(&container_->pb, ("file:" + file_.temporary_name()).c_str(), AVIO_FLAG_WRITE));
    check(avformat_write_header(container_.get(), nullptr));
}

void PartWriter::ContainerDeleter::operator()(AVFormatContext* container) const {
    if (container->pb)
        avio_closep(&container->pb);
    avformat_free_context(container);
}

void PartWriter::check(int result) const {
    if (result < 0)
        throw Error(place_ + ": cannot be written: " + libav_message(result));
}

std::string PartWriter::description() const {
    return std::string("without loss, utvideo") + (sound_stream_ ? " and pcm_f32le" : "");
}

AVStream* PartWriter::add_stream() {
    AVStream* const stream = avformat_new_stream(container_.get(), nullptr);
    if (!stream)
        throw std::bad_alloc();
    return stream;
}

void PartWriter::add_video(const PartHeader& header) {
    const AVCodec* const encoder = avcodec_find_encoder(kPictureCodec);
    if (!encoder)
        throw Error("this libavcodec has no Ut Video encoder, which parts need", kExitRefused);
    codec_.reset(avcodec_alloc_context3(encoder));
    AVCodecContext* const codec = codec_.get();
    if (!codec)
        throw std::bad_alloc();
    const VideoInfo& video = header.video;
    codec->width = even(video.width);
    codec->height = video.height;
    codec->pix_fmt = AV_PIX_FMT_YUV422P;
    codec->framerate = {video.rate.num, video.rate.den};
    codec->time_base = {video.rate.den, video.rate.num};
    codec->sample_aspect_ratio = video.sample_aspect;
    codec->color_range = AVCOL_RANGE_MPEG;
    codec->colorspace = video.matrix;
    codec->thread_count = 0;
    codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    AVDictionary* settings = nullptr;
    av_dict_set(&settings, "pred", "median", 0);
    const int result = avcodec_open2(codec, encoder, &settings);
    av_dict_free(&settings);
    if (result < 0)
        throw Error(place_ + ": the Ut Video encoder refuses this video: " + libav_message(result), kExitRefused);
    video_stream_ = add_stream();
    video_stream_->time_base = codec->time_base;
    video_stream_->avg_frame_rate = codec->framerate;
    video_stream_->sample_aspect_ratio = video.sample_aspect;
    check(avcodec_parameters_from_context(video_stream_->codecpar, codec));
}

void PartWriter::add_sound(const SoundFormat& format) {
    sound_stream_ = add_stream();
    sound_stream_->time_base = {1, format.rate};
    AVCodecParameters* const parameters = sound_stream_->codecpar;
    parameters->codec_type = AVMEDIA_TYPE_AUDIO;
    parameters->codec_id = kSoundCodec;
    parameters->format = AV_SAMPLE_FMT_FLT;
    parameters->sample_rate = format.rate;
    parameters->bits_per_coded_sample = 32;
    parameters->block_align = 4 * format.layout.channels();
    check(av_channel_layout_copy(&parameters->ch_layout, &format.layout.get()));
}

// The digests are known when all is written, and Matroska's tags come first: so they are a subtitle after the end.
void PartWriter::add_seal() {
    seal_stream_ = add_stream();
    seal_stream_->time_base = kMilliseconds;
    seal_stream_->codecpar->codec_type = AVMEDIA_TYPE_SUBTITLE;
    seal_stream_->codecpar->codec_id = kSealCodec;
}

void PartWriter::write(AVStream* stream, AVRational unit) {
    av_packet_rescale_ts(packet_.get(), unit, stream->time_base);
    packet_->stream_index = stream->index;
    check(av_write_frame(container_.get(), packet_.get()));
    av_packet_unref(packet_.get());
}

void PartWriter::encode(const AVFrame* frame) {
    check(avcodec_send_frame(codec_.get(), frame));
    for (;;) {
        check_interrupt();
        const int result = avcodec_receive_packet(codec_.get(), packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        check(result);
        packet_->duration = 1;
        write(video_stream_, codec_->time_base);
    }
}

void PartWriter::write_picture(const Bitmap& picture) {
    if (!picture_ || av_frame_is_writable(picture_.get()) == 0)
        picture_ = make_picture_frame(codec_->width, codec_->height, codec_->pix_fmt);
    unpack(picture, *picture_);
    seal_.add_picture(picture);
    picture_->pts = pictures_++;
    encode(picture_.get());
}

void PartWriter::write_sound(float* const* channels, int count) {
    const int channel_count = sound_stream_->codecpar->ch_layout.nb_channels;
    const int bytes = count * channel_count * static_cast<int>(sizeof(float));
    if (av_new_packet(packet_.get(), bytes) < 0)
        throw std::bad_alloc();
    uint8_t* out = packet_->data;
    for (int i = 0; i < count; ++i)
        for (int c = 0; c < channel_count; ++c, out += sizeof(float))
            std::memcpy(out, &channels[c][i], sizeof(float));
    seal_.add_sound(packet_->data, static_cast<size_t>(bytes));
    packet_->pts = packet_->dts = samples_;
    packet_->duration = count;
    packet_->flags |= AV_PKT_FLAG_KEY;
    samples_ += count;
    write(sound_stream_, {1, sound_stream_->codecpar->sample_rate});
}

void PartWriter::finish() {
    encode(nullptr);
    const std::string text = seal_.text();
    if (av_new_packet(packet_.get(), static_cast<int>(text.size())) < 0)
        throw std::bad_alloc();
    std::copy(text.begin(), text.end(), packet_->data);
    packet_->pts = packet_->dts = av_rescale_q(pictures_, codec_->time_base, kMilliseconds);
    packet_->duration = 1;
    packet_->flags |= AV_PKT_FLAG_KEY;
    write(seal_stream_, kMilliseconds);
    check(av_write_trailer(container_.get()));
    check(avio_closep(&container_->pb));
}

PartReader::PartReader(const std::filesystem::path& path)
    : path_(path), container_(open_container(path)), packet_(make_packet()) {
    const auto tag = [&](const char* name) -> std::string {
        const AVDictionaryEntry* const entry = av_dict_get(container_->metadata, name, nullptr, 0);
        return entry ? entry->value : "";
    };
    for (unsigned i = 0; i < container_->nb_streams; ++i) {
        AVStream* const stream = container_->streams[i];
        switch (stream->codecpar->codec_id) {
            case kPictureCodec: video_stream_ = stream; break;
            case kSoundCodec: sound_stream_ = stream; break;
            case kSealCodec: seal_stream_ = stream; break;
            default: break;
        }
    }
    const std::optional<FrameRange> frames = parse_frame_range(tag(kFramesTag));
    if (!frames || !parse_transition(tag(kTransitionTag), header_) || !video_stream_ || !seal_stream_)
        throw Error(path.string() + ": is no part of a transition", kExitRefused);
    header_.frames = *frames;
    const AVCodecParameters& video = *video_stream_->codecpar;
    if (frames->end > header_.timeline.total || header_.sound.has_value() != (sound_stream_ != nullptr) ||
        video.width != even(header_.video.width) || video.height != header_.video.height ||
        (sound_stream_ && sound_stream_->codecpar->ch_layout.nb_channels != header_.sound->layout.channels()))
        damaged();

    const AVCodec* const decoder = avcodec_find_decoder(kPictureCodec);
    codec_.reset(avcodec_alloc_context3(decoder));
    if (!codec_)
        throw std::bad_alloc();
    avcodec_parameters_to_context(codec_.get(), &video);
    codec_->thread_count = 0;
    codec_->err_recognition = AV_EF_EXPLODE;
    if (!decoder || avcodec_open2(codec_.get(), decoder, nullptr) < 0)
        damaged();
}

void PartReader::damaged() const { throw Error(path_.string() + ": is damaged or not whole", kExitRefused); }

bool PartReader::ends_with_seal() {
    const int64_t behind = av_rescale_q(header_.frames.count(), {header_.video.rate.den, header_.video.rate.num},
                                        video_stream_->time_base);
    if (av_seek_frame(container_.get(), video_stream_->index, behind, AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    while (read_frame(*container_, *packet_, path_)) {
        const bool seal = packet_->stream_index == seal_stream_->index;
        av_packet_unref(packet_.get());
        if (seal)
            return true;
    }
    return false;
}

bool PartReader::read_packet() {
    check_interrupt();
    if (!read_frame(*container_, *packet_, path_)) {
        if (drained_)
            return false;
        drained_ = true;
        decode(nullptr);
        return true;
    }
    if (packet_->stream_index == video_stream_->index) {
        decode(packet_.get());
    } else if (sound_stream_ && packet_->stream_index == sound_stream_->index) {
        if (packet_->size % static_cast<int>(sizeof(float)) != 0)
            damaged();
        const size_t before = samples_.size();
        samples_.resize(before + packet_->size / sizeof(float));
        std::memcpy(samples_.data() + before, packet_->data, packet_->size);
        seal_.add_sound(packet_->data, packet_->size);
    } else if (packet_->stream_index == seal_stream_->index) {
        seal_text_.assign(reinterpret_cast<const char*>(packet_->data), packet_->size);
    }
    av_packet_unref(packet_.get());
    return true;
}

// Without a packet, what the decoder still holds.
void PartReader::decode(const AVPacket* packet) {
    if (avcodec_send_packet(codec_.get(), packet) < 0)
        damaged();
    for (;;) {
        FramePtr frame = make_frame();
        const int result = avcodec_receive_frame(codec_.get(), frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0 || frame->format != AV_PIX_FMT_YUV422P || frame->width != codec_->width ||
            frame->height != codec_->height)
            damaged();
        pictures_.push_back(std::move(frame));
    }
}

void PartReader::read_picture(Bitmap& picture) {
    while (pictures_.empty())
        if (!read_packet())
            damaged();
    pack(*pictures_.front(), picture);
    pictures_.pop_front();
    seal_.add_picture(picture);
}

void PartReader::read_sound(float* const* channels, int count) {
    const size_t channel_count = header_.sound->layout.channels();
    while (samples_.size() - samples_taken_ < channel_count * count)
        if (!read_packet())
            damaged();
    const float* in = samples_.data() + samples_taken_;
    for (int i = 0; i < count; ++i)
        for (size_t c = 0; c < channel_count; ++c)
            channels[c][i] = *in++;
    samples_taken_ += channel_count * count;
    if (samples_taken_ >= kSamplesKept) {
        samples_.erase(samples_.begin(), samples_.begin() + static_cast<ptrdiff_t>(samples_taken_));
        samples_taken_ = 0;
    }
}

void PartReader::finish() {
    while (read_packet()) {
    }
    if (!pictures_.empty() || samples_taken_ != samples_.size() || seal_text_ != seal_.text())
        damaged();
}

}  // namespace zepbmp::transition
