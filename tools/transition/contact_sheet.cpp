#include "contact_sheet.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "error.h"

namespace zepbmp::transition {

namespace {

constexpr int kColumns = 4;
constexpr int kTiles = 12;
constexpr int kTileWidth = 320;
constexpr int kGap = 10;
constexpr int kBarHeight = 3;
constexpr int kBytesPerPixel = 3;
constexpr uint32_t kBackground = 0x202226;
constexpr uint32_t kBarRest = 0x44474d;
constexpr uint32_t kBarDone = 0xe8a33d;

}  // namespace

std::vector<int64_t> sheet_frames(const Timeline& timeline, int tiles) {
    const int64_t first = std::max<int64_t>(timeline.at - 1, 0);
    const int64_t last = std::min(timeline.at + timeline.duration, timeline.total - 1);
    const int64_t count = std::min<int64_t>(tiles, last - first + 1);
    if (count == 1)
        return {first};
    std::vector<int64_t> frames;
    for (int64_t i = 0; i < count; ++i)
        frames.push_back(first + (i * (last - first) + (count - 1) / 2) / (count - 1));
    return frames;
}

ContactSheet::ContactSheet(const std::filesystem::path& place, bool overwrite, const Timeline& timeline, int width,
                           int height, double line_height_px, AVColorSpace matrix)
    : file_(place, overwrite),
      timeline_(timeline),
      frames_(sheet_frames(timeline, kTiles)),
      picture_width_(width),
      matrix_(matrix) {
    const double tile_height = kTileWidth * height * line_height_px / width;
    tile_ = make_picture_frame(kTileWidth, std::clamp(static_cast<int>(std::lround(tile_height)), 16, 4 * kTileWidth),
                               AV_PIX_FMT_RGB24);
    const int columns = std::min<int>(kColumns, static_cast<int>(frames_.size()));
    const int rows = (static_cast<int>(frames_.size()) + columns - 1) / columns;
    sheet_ = make_picture_frame(columns * (kTileWidth + kGap) + kGap, rows * (tile_->height + kBarHeight + kGap) + kGap,
                                AV_PIX_FMT_RGB24);
    fill(0, 0, sheet_->width, sheet_->height, kBackground);
}

void ContactSheet::fill(int left, int top, int width, int height, uint32_t rgb) {
    for (int y = top; y < top + height; ++y) {
        uint8_t* pixel = sheet_->data[0] + y * sheet_->linesize[0] + left * kBytesPerPixel;
        for (int x = 0; x < width; ++x) {
            *pixel++ = static_cast<uint8_t>(rgb >> 16);
            *pixel++ = static_cast<uint8_t>(rgb >> 8);
            *pixel++ = static_cast<uint8_t>(rgb);
        }
    }
}

void ContactSheet::offer(int64_t frame, const Bitmap& picture) {
    if (taken_ == frames_.size() || frame != frames_[taken_])
        return;
    PictureView to = view_of(*tile_);
    to.matrix = matrix_;
    scaler_.convert(view_of(picture, picture_width_, matrix_), to);

    const int index = static_cast<int>(taken_++);
    const int left = kGap + index % kColumns * (kTileWidth + kGap);
    const int top = kGap + index / kColumns * (tile_->height + kBarHeight + kGap);
    for (int y = 0; y < tile_->height; ++y)
        std::memcpy(sheet_->data[0] + (top + y) * sheet_->linesize[0] + left * kBytesPerPixel,
                    tile_->data[0] + y * tile_->linesize[0], kTileWidth * kBytesPerPixel);
    const double over = timeline_.progress(static_cast<double>(frame) + 0.5);
    fill(left, top + tile_->height, kTileWidth, kBarHeight, kBarRest);
    fill(left, top + tile_->height, static_cast<int>(std::lround(over * kTileWidth)), kBarHeight, kBarDone);
}

void ContactSheet::finish() {
    const std::string& name = file_.temporary_name();
    const auto check = [&](bool good, const std::string& reason) {
        if (!good)
            throw Error("the contact sheet cannot be written: " + reason);
    };
    const AVCodec* const encoder = avcodec_find_encoder(AV_CODEC_ID_PNG);
    check(encoder != nullptr, "no PNG encoder");
    const CodecPtr codec(avcodec_alloc_context3(encoder));
    if (!codec)
        throw std::bad_alloc();
    codec->width = sheet_->width;
    codec->height = sheet_->height;
    codec->pix_fmt = AV_PIX_FMT_RGB24;
    codec->time_base = {1, 1};
    const PacketPtr packet = make_packet();
    AVDictionary* settings = nullptr;
    av_dict_set(&settings, "pred", "mixed", 0);
    int result = avcodec_open2(codec.get(), encoder, &settings);
    av_dict_free(&settings);
    if (result >= 0)
        result = avcodec_send_frame(codec.get(), sheet_.get());
    if (result >= 0)
        result = avcodec_send_frame(codec.get(), nullptr);
    if (result >= 0)
        result = avcodec_receive_packet(codec.get(), packet.get());
    check(result >= 0, libav_message(result));

    std::FILE* const file = std::fopen(name.c_str(), "wb");
    check(file != nullptr, std::strerror(errno));
    const bool written = std::fwrite(packet->data, 1, packet->size, file) == static_cast<size_t>(packet->size);
    const bool closed = std::fclose(file) == 0;
    check(written && closed, std::strerror(errno));
}

}  // namespace zepbmp::transition
