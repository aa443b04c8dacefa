#include "frame.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

namespace zepbmp::test {

int round_up(int value, int multiple) { return (value + multiple - 1) / multiple * multiple; }

FrameLayout any_layout(Random& random, int width, int height, int format, int line_bytes) {
    const int step = format == BMP_FMT_YUY2 ? 4 : bytes_per_pixel(format);
    FrameLayout layout = {.width = width, .height = height, .format = format, .at_end = random.chance(60)};
    if (random.chance(40)) {
        layout.pitch = layout.last_line_bytes = round_up(line_bytes, 16);
        layout.skew = 0;
    } else {
        layout.pitch = round_up(line_bytes + (random.chance(50) ? 0 : random.between(0, 40)), step);
        layout.last_line_bytes = line_bytes;
        layout.skew = random.chance(60) ? kFlush : step * random.between(0, 16 / step - 1);
    }
    return layout;
}

void Frame::lay_out(const FrameLayout& layout) {
    layout_ = layout;
    uint8_t* const first = place(*pages_, layout.extent(), layout.at_end, layout.skew);
    bytes_ = around(*pages_, first, layout.extent());
    // What the library has no business reading is set too, to something that shows when it is used.
    record_ = {.width = layout.width,
               .height = layout.height,
               .pitch = layout.pitch,
               .bit_count = 8 * bytes_per_pixel(layout.format),
               .pixels = first,
               .dib_info = nullptr,
               .fourcc = 0x21212121,
               .interlace = 77,
               .reserved = 0xdeadbeef,
               .bytes_per_pixel = bytes_per_pixel(layout.format),
               .create_flags = 3,
               .format = static_cast<uint32_t>(layout.format)};
}

void Frame::fill(Random& random, void (*fill_lines)(Random&, std::span<uint8_t>)) {
    fill_noise(random, bytes_);
    fill_lines(random, {record_.pixels, layout_.extent()});
}

void Frame::copy(const Frame& other) {
    lay_out(other.layout_);
    std::memcpy(bytes_.data(), other.bytes_.data(), bytes_.size());
}

std::string Frame::difference(const Frame& want) const {
    Bitmap record = record_;
    record.pixels = want.record_.pixels;
    const auto same_word = [&](auto Bitmap::*word) { return record.*word == want.record_.*word; };
    if (!(same_word(&Bitmap::width) && same_word(&Bitmap::height) && same_word(&Bitmap::pitch) &&
          same_word(&Bitmap::bit_count) && same_word(&Bitmap::dib_info) && same_word(&Bitmap::fourcc) &&
          same_word(&Bitmap::interlace) && same_word(&Bitmap::reserved) && same_word(&Bitmap::bytes_per_pixel) &&
          same_word(&Bitmap::create_flags) && same_word(&Bitmap::format)))
        return "the record has changed";
    if (bytes_.empty() || std::memcmp(bytes_.data(), want.bytes_.data(), bytes_.size()) == 0)
        return "";
    size_t i = 0;
    while (bytes_[i] == want.bytes_[i])
        ++i;
    const auto at = static_cast<long>(i) - static_cast<long>(record_.pixels - bytes_.data());
    const int pitch = layout_.pitch > 0 ? layout_.pitch : 1;
    char text[160];
    std::snprintf(text, sizeof text,
                  "byte %ld from the first pixel (line %ld, byte %ld): %d, want %d; %d x %d, format %d, pitch %d", at,
                  at / pitch, at % pitch, bytes_[i], want.bytes_[i], layout_.width, layout_.height, layout_.format,
                  layout_.pitch);
    return text;
}

std::span<uint8_t> lines_of(const Bitmap* bitmap) {
    return {bitmap->pixels, static_cast<size_t>(bitmap->pitch) * static_cast<size_t>(bitmap->height)};
}

std::string first_difference(std::span<const uint8_t> got, std::span<const uint8_t> want) {
    if (got.size() != want.size())
        return std::to_string(got.size()) + " bytes, want " + std::to_string(want.size());
    for (size_t i = 0; i < got.size(); ++i) {
        if (got[i] != want[i])
            return "byte " + std::to_string(i) + ": " + std::to_string(got[i]) + ", want " + std::to_string(want[i]);
    }
    return "";
}

}  // namespace zepbmp::test
