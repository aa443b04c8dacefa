/// \file
/// Bitmaps that a test lays out byte by byte.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fence.h"
#include "formats.h"
#include "random.h"
#include "zepbmp.h"

namespace zepbmp::test {

/// How a frame lies in memory.
struct FrameLayout {
    int width = 0;
    int height = 0;
    int format = BMP_FMT_YUY2;
    int pitch = 0;
    int last_line_bytes = 0;  ///< of the last line; the fence stands right behind them when at_end
    bool at_end = true;
    int skew = kFlush;  ///< of the first pixel's address from a multiple of 16, or kFlush

    size_t extent() const {
        return height > 0
                   ? static_cast<size_t>(height - 1) * static_cast<size_t>(pitch) + static_cast<size_t>(last_line_bytes)
                   : 0;
    }
};

int round_up(int value, int multiple);

/// As bmp_create lays a frame out, or with lines that begin at any multiple of the pixel's size. `line_bytes` is what a
/// line has to hold.
FrameLayout any_layout(Random& random, int width, int height, int format, int line_bytes);

/// A bitmap record over fenced memory. Everything around the lines is a canary: it is filled and compared with them.
class Frame {
public:
    explicit Frame(size_t capacity = size_t{1} << 18) : pages_(std::make_unique<FencedPages>(capacity)) {}

    void lay_out(const FrameLayout& layout);

    Bitmap* bitmap() { return &record_; }
    const Bitmap* bitmap() const { return &record_; }
    const FrameLayout& layout() const { return layout_; }

    /// The lines and what lies around them.
    std::span<uint8_t> bytes() const { return bytes_; }

    /// Noise, with what `fill` does over the lines.
    void fill(Random& random, void (*fill_lines)(Random&, std::span<uint8_t>));

    /// Becomes a copy: the same layout, the same distance from a 16-byte boundary, the same bytes.
    void copy(const Frame& other);

    /// Empty, or where record or bytes differ from the wanted frame's, padding and surroundings included.
    std::string difference(const Frame& want) const;

private:
    std::unique_ptr<FencedPages> pages_;
    FrameLayout layout_;
    Bitmap record_{};
    std::span<uint8_t> bytes_;
};

/// The lines of a bitmap that the library made, padding included.
std::span<uint8_t> lines_of(const Bitmap* bitmap);

/// Position and values of the first of two ranges' differing bytes, or nothing.
std::string first_difference(std::span<const uint8_t> got, std::span<const uint8_t> want);

}  // namespace zepbmp::test
