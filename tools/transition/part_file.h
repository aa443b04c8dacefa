#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame_writer.h"
#include "libav.h"
#include "media_reader.h"
#include "output_file.h"
#include "timeline.h"

struct AVMurMur3;

namespace zepbmp::transition {

/// What a part says of itself and of the transition to which it belongs.
struct PartHeader {
    FrameRange frames;
    std::string request;  // lines "name=value" of all that the whole's pictures and sound depend on
    Timeline timeline;
    VideoInfo video;  // of the output; its fields are those of the first video's flags
    FieldOrder order = FieldOrder::kProgressive;
    std::optional<SoundFormat> sound;

    /// All but `frames`, as lines: equal for the parts of one transition.
    std::string transition() const;
};

/// The request, or the transition, that differs: "effect is circle, not box". Empty when they are equal.
std::string first_difference(const std::string& transition, const std::string& other);

/// Digest of what goes into a part; equal to that of what comes out of it, if the part is whole and undamaged.
class Seal {
public:
    Seal();
    void add_picture(const Bitmap& picture);
    void add_sound(const uint8_t* data, size_t bytes);
    std::string text();

private:
    struct Deleter {
        void operator()(AVMurMur3* hash) const;
    };
    std::unique_ptr<AVMurMur3, Deleter> pictures_;
    std::unique_ptr<AVMurMur3, Deleter> sound_;
};

/// Writes pictures and sound without loss: Ut Video, which is fast, and floating-point samples, in Matroska. A seal ends
/// the file.
class PartWriter : public FrameWriter {
public:
    PartWriter(const std::filesystem::path& place, bool overwrite, const PartHeader& header);

    std::string description() const override;
    void write_picture(const Bitmap& picture) override;
    void write_sound(float* const* channels, int count) override;
    void finish() override;
    void commit() override { file_.commit(); }

private:
    struct ContainerDeleter {
        void operator()(AVFormatContext* container) const;
    };
    void add_video(const PartHeader& header);
    void add_sound(const SoundFormat& format);
    void add_seal();
    AVStream* add_stream();
    void encode(const AVFrame* frame);
    void write(AVStream* stream, AVRational unit);
    void check(int result) const;

    std::string place_;
    OutputFile file_;
    std::unique_ptr<AVFormatContext, ContainerDeleter> container_;
    PacketPtr packet_;
    CodecPtr codec_;
    AVStream* video_stream_ = nullptr;
    AVStream* sound_stream_ = nullptr;
    AVStream* seal_stream_ = nullptr;
    FramePtr picture_;
    int64_t pictures_ = 0;
    int64_t samples_ = 0;
    Seal seal_;
};

/// Reads a part front to back. Throws Error (kExitRefused) for a file that is none, is not whole or is damaged;
/// Error (kExitFailed) when reading fails.
class PartReader {
public:
    explicit PartReader(const std::filesystem::path& path);

    const PartHeader& header() const { return header_; }

    /// Whether the file's end is there. Then nothing can be read from this object any more.
    bool ends_with_seal();

    void read_picture(Bitmap& picture);
    void read_sound(float* const* channels, int count);

    /// Compares all that was read with what was written.
    void finish();

private:
    bool read_packet();
    void decode(const AVPacket* packet);
    [[noreturn]] void damaged() const;

    std::filesystem::path path_;
    LibavPtr<AVFormatContext> container_;
    AVStream* video_stream_ = nullptr;
    AVStream* sound_stream_ = nullptr;
    AVStream* seal_stream_ = nullptr;
    PartHeader header_;
    CodecPtr codec_;
    PacketPtr packet_;
    bool drained_ = false;
    std::deque<FramePtr> pictures_;
    std::vector<float> samples_;  // interleaved
    size_t samples_taken_ = 0;
    std::string seal_text_;
    Seal seal_;
};

}  // namespace zepbmp::transition
