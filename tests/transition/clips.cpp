#include "clips.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <numbers>
#include <stdexcept>

#include "media_writer.h"

namespace zepbmp::transition {

namespace {

[[maybe_unused]] const bool kLibavIsQuiet = (av_log_set_level(AV_LOG_QUIET), true);

void fill_lines(Bitmap& picture, int first, int step, int luma) {
    for (int y = first; y < picture.height(); y += step)
        for (int x = 0; x < picture.width(); ++x) {
            picture.pointer(x, y)[0] = static_cast<uint8_t>(luma);
            picture.pointer(x, y)[1] = 128;
        }
}

double mean_luma(const Bitmap& picture, int first_line, int line_step, int first_column, int width) {
    double sum = 0;
    int count = 0;
    for (int y = first_line; y < picture.height(); y += line_step)
        for (int x = first_column; x < width; ++x, ++count)
            sum += picture.pointer(x, y)[0];
    return count > 0 ? sum / count : 0;
}

}  // namespace

void write_clip(const std::filesystem::path& path, const Clip& clip) {
    VideoInfo video;
    video.width = clip.width;
    video.height = clip.height;
    video.rate = clip.rate;
    video.sample_aspect = clip.sample_aspect;
    std::optional<SoundFormat> sound;
    if (clip.tone_hz > 0) {
        AVChannelLayout stereo;
        av_channel_layout_default(&stereo, 2);
        sound = SoundFormat{clip.sound_rate, ChannelLayout(stereo)};
    }
    MediaWriter writer(path, true, video, clip.fields, sound);
    Bitmap picture((clip.width + 1) & ~1, clip.height, Format::yuy2);
    int64_t samples = 0;
    for (int frame = 0; frame < clip.frames; ++frame) {
        if (clip.fields == FieldOrder::kProgressive) {
            fill_lines(picture, 0, 1, clip.luma(frame));
        } else {
            const int first = clip.fields == FieldOrder::kTopFirst ? 0 : 1;
            fill_lines(picture, first, 2, clip.luma(frame));
            fill_lines(picture, 1 - first, 2, clip.luma(frame + 0.5));
        }
        writer.write_picture(picture);
        if (!writer.sound_format())
            continue;
        const int rate = writer.sound_format()->rate;
        const int64_t end = std::llround((frame + 1) / clip.rate.per_second() * rate);
        std::vector<float> tone;
        for (; samples < end; ++samples)
            tone.push_back(static_cast<float>(
                0.5 * std::sin(2 * std::numbers::pi * clip.tone_hz * static_cast<double>(samples) / rate)));
        float* const channels[] = {tone.data(), tone.data()};
        writer.write_sound(channels, static_cast<int>(tone.size()));
    }
    writer.finish();
    writer.commit();
}

Contents read_contents(const std::filesystem::path& path) {
    Contents contents;
    {
        const VideoReader reader(path);
        contents.info = reader.info();
    }
    const int width = contents.info.width;
    Bitmap picture((width + 1) & ~1, contents.info.height, Format::yuy2);
    const bool fields = contents.info.fields != FieldOrder::kProgressive;
    FrameConverter converter(fields ? FrameConverter::Mode::kFields : FrameConverter::Mode::kWhole, width,
                             known_matrix(contents.info.matrix, contents.info.height));
    StreamDecoder decoder(path, AVMEDIA_TYPE_VIDEO);
    while (const AVFrame* frame = decoder.next()) {
        converter.convert(*frame, picture);
        contents.top.push_back(mean_luma(picture, 0, 2, 0, width));
        contents.bottom.push_back(mean_luma(picture, 1, 2, 0, width));
        contents.last_column.push_back(mean_luma(picture, 0, 1, width - 1, width));
        contents.interlaced.push_back(frame->interlaced_frame != 0);
        contents.top_first.push_back(frame->top_field_first != 0);
    }
    if (const std::optional<SoundFormat> format = find_sound(path)) {
        SoundReader sound(path, *format, contents.info.start_seconds);
        const int count = static_cast<int>(std::llround(contents.info.length_seconds * format->rate));
        contents.sound.resize(count);
        std::vector<float> others(count);
        std::vector<float*> channels(format->layout.channels(), others.data());
        channels[0] = contents.sound.data();
        sound.read(channels.data(), count);
        contents.sound_rate = format->rate;
    }
    return contents;
}

double tone_level(const std::vector<float>& sound, int begin, int end, double hz, int rate) {
    std::complex<double> sum = 0;
    for (int i = begin; i < end; ++i)
        sum += std::polar<double>(1, -2 * std::numbers::pi * hz * i / rate) * static_cast<double>(sound.at(i));
    return 2 * std::abs(sum) / (end - begin);
}

ScratchFolder::ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "transition-test-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder");
    path_ = name;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> ScratchFolder::names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace zepbmp::transition
