/// \file
/// bmp_display into a memory device context, pixel by pixel.
///
/// What a call shows is settled by SetDIBitsToDevice. Its source y counts from the bitmap's last line upward, top-down
/// bitmaps included; bmp_display passes 0. The start line tells which line of the picture, counted in the same way, the
/// buffer's last line is. Together: line k of the rectangle shows the bitmap's line
///     bitmap height - rectangle height + start line + k
/// and where there is no such line the device keeps what it has.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <stdexcept>
#include <vector>

#include "support/library.h"
#include "support/owned_bitmap.h"

namespace zepbmp::test {
namespace {

constexpr uint32_t kUntouched = 0x00654321;

/// 32-bit pixels that a device context draws on.
class Canvas {
public:
    static constexpr int kWidth = 40, kHeight = 16;

    Canvas() : context_(CreateCompatibleDC(nullptr)) {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = kWidth;
        info.bmiHeader.biHeight = -kHeight;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        section_ = CreateDIBSection(context_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        if (!section_)
            throw std::runtime_error("Windows makes no bitmap to draw on");
        before_ = SelectObject(context_, section_);
        pixels_ = static_cast<uint32_t*>(bits);
        std::fill_n(pixels_, kWidth * kHeight, kUntouched);
    }
    ~Canvas() {
        SelectObject(context_, before_);
        DeleteObject(section_);
        DeleteDC(context_);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    HDC context() const { return context_; }

    /// Red in bits 16..23, green 8..15, blue 0..7.
    uint32_t color(int x, int y) const {
        GdiFlush();
        return pixels_[y * kWidth + x] & 0xffffff;
    }

    std::vector<uint32_t> colors(int x, int y, int count) const {
        std::vector<uint32_t> found;
        for (int i = 0; i < count; ++i)
            found.push_back(color(x + i, y));
        return found;
    }

private:
    HDC context_;
    HBITMAP section_;
    HGDIOBJ before_;
    uint32_t* pixels_;
};

/// The arguments of bmp_display but for the device context and the bitmap.
struct Place {
    int dest_x, dest_y, width, height, src_x, start_line;
};

std::ostream& operator<<(std::ostream& out, const Place& p) {
    return out << p.width << " x " << p.height << " at " << p.dest_x << ", " << p.dest_y << ", source x " << p.src_x
               << ", start line " << p.start_line;
}

int display(const Canvas& canvas, const Place& p, const OwnedBitmap& bitmap) {
    return library().display(canvas.context(), p.dest_x, p.dest_y, p.width, p.height, bitmap.get(), p.src_x,
                             p.start_line);
}

Place whole(const OwnedBitmap& bitmap) { return {0, 0, bitmap->width, bitmap->height, 0, 0}; }

uint32_t rgb(int red, int green, int blue) { return static_cast<uint32_t>(red << 16 | green << 8 | blue); }

/// Five bits as eight: the upper three again below.
int eight_bits(int five) { return five << 3 | five >> 2; }

/// The colour that is shown for a stored pixel; columns count into the padding. Palettes are grey ramps.
uint32_t shown(const OwnedBitmap& bitmap, int x, int y) {
    const uint8_t* const p = line(bitmap, y) + x * bitmap->bytes_per_pixel;
    switch (bitmap->bytes_per_pixel) {
        case 1: return rgb(p[0], p[0], p[0]);
        case 2: {
            const int word = p[0] | p[1] << 8;
            return rgb(eight_bits(word >> 10 & 31), eight_bits(word >> 5 & 31), eight_bits(word & 31));
        }
        default: return rgb(p[2], p[1], p[0]);
    }
}

void expect_shown(const Canvas& canvas, const Place& p, const OwnedBitmap& bitmap) {
    const int stored_width = bitmap->pitch / bitmap->bytes_per_pixel;
    for (int y = 0; y < Canvas::kHeight; ++y) {
        for (int x = 0; x < Canvas::kWidth; ++x) {
            const int column = x - p.dest_x, row = y - p.dest_y;
            const int from_x = p.src_x + column, from_y = bitmap->height - p.height + p.start_line + row;
            const bool inside = column >= 0 && column < p.width && row >= 0 && row < p.height && from_x >= 0 &&
                                from_x < stored_width && from_y >= 0 && from_y < bitmap->height;
            ASSERT_EQ(canvas.color(x, y), inside ? shown(bitmap, from_x, from_y) : kUntouched)
                << "format " << bitmap->format << ", " << p << ": pixel " << x << ", " << y;
        }
    }
}

// ---------------------------------------------------------------- colours

TEST(Display, ShowsRgbqAsItIs) {
    const OwnedBitmap bitmap = make_bitmap(3, 2, BMP_FMT_RGBQ);
    const uint32_t pixels[2][3] = {{0x00ff0000, 0x0000ff00, 0x000000ff}, {0x00123456, 0xff000000, 0x00ffffff}};
    for (int y = 0; y < 2; ++y)
        std::memcpy(line(bitmap, y), pixels[y], sizeof pixels[y]);
    const Canvas canvas;
    EXPECT_EQ(display(canvas, {5, 7, 3, 2, 0, 0}, bitmap), 2);
    EXPECT_EQ(canvas.colors(4, 6, 5), std::vector<uint32_t>(5, kUntouched));
    EXPECT_EQ(canvas.colors(4, 7, 5), (std::vector<uint32_t>{kUntouched, 0xff0000, 0x00ff00, 0x0000ff, kUntouched}));
    EXPECT_EQ(canvas.colors(4, 8, 5), (std::vector<uint32_t>{kUntouched, 0x123456, 0x000000, 0xffffff, kUntouched}));
    EXPECT_EQ(canvas.colors(4, 9, 5), std::vector<uint32_t>(5, kUntouched));
}

// Words of five bits a colour, red uppermost, the top bit unused, whatever they mean in the library.
TEST(Display, ShowsSixteenBitsAsFiveAColour) {
    for (const int format : {BMP_FMT_YUY2, BMP_FMT_PWRW}) {
        const OwnedBitmap bitmap = make_bitmap(8, 1, format);
        const uint16_t words[] = {0x7c00, 0x03e0, 0x001f, 0x8000, 0xffff, 4096, 0x8080, 0x0421};
        std::memcpy(line(bitmap, 0), words, sizeof words);
        const Canvas canvas;
        EXPECT_EQ(display(canvas, whole(bitmap), bitmap), 1);
        EXPECT_EQ(canvas.colors(0, 0, 9), (std::vector<uint32_t>{0xff0000, 0x00ff00, 0x0000ff, 0x000000, 0xffffff,
                                                                 0x210000, 0x002100, 0x080808, kUntouched}))
            << format;
    }
}

TEST(Display, ShowsIndicesAsGreysAtFirst) {
    const OwnedBitmap bitmap = make_bitmap(5, 1, BMP_FMT_RGB8);
    std::memcpy(line(bitmap, 0), "\x00\x01\x80\xfe\xff", 5);
    const Canvas canvas;
    EXPECT_EQ(display(canvas, whole(bitmap), bitmap), 1);
    EXPECT_EQ(canvas.colors(0, 0, 6),
              (std::vector<uint32_t>{0x000000, 0x010101, 0x808080, 0xfefefe, 0xffffff, kUntouched}));
}

TEST(Display, ShowsThePalettesColors) {
    const OwnedBitmap bitmap = make_bitmap(4, 1, BMP_FMT_RGB8);
    std::memcpy(line(bitmap, 0), "\x00\x07\x80\xff", 4);
    library().set_palette(bitmap.get(), 7, 0x00ff8040);
    library().set_palette(bitmap.get(), 255, library().translate_color(nullptr, RGB(1, 2, 3)));
    const Canvas canvas;
    EXPECT_EQ(display(canvas, whole(bitmap), bitmap), 1);
    EXPECT_EQ(canvas.colors(0, 0, 4), (std::vector<uint32_t>{0x000000, 0xff8040, 0x808080, 0x010203}));
}

TEST(Display, ShowsAPaletteThatChangedSinceTheLastTime) {
    const OwnedBitmap bitmap = make_filled(4, 1, BMP_FMT_RGB8, 9);
    const Canvas canvas;
    display(canvas, whole(bitmap), bitmap);
    const void* const header = bitmap->dib_info;
    library().set_palette(bitmap.get(), 9, 0x0000ffff);
    display(canvas, whole(bitmap), bitmap);
    EXPECT_EQ(bitmap->dib_info, header);
    EXPECT_EQ(canvas.colors(0, 0, 4), std::vector<uint32_t>(4, 0x00ffff));
}

// ---------------------------------------------------------------- places

/// Lines are told apart by their blue byte: 1 in the first one.
OwnedBitmap numbered_lines(int height) {
    OwnedBitmap bitmap = make_bitmap(4, height, BMP_FMT_RGBQ);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < 4; ++x)
            line(bitmap, y)[4 * x] = static_cast<uint8_t>(y + 1);
    return bitmap;
}

std::vector<uint32_t> lines_shown(const Canvas& canvas, int count) {
    std::vector<uint32_t> found;
    for (int y = 0; y < count; ++y)
        found.push_back(canvas.color(0, y));
    return found;
}

TEST(Display, AStartLineBringsThatLineToTheTop) {
    const OwnedBitmap bitmap = numbered_lines(5);
    const Canvas canvas;
    EXPECT_GT(display(canvas, {0, 0, 4, 5, 0, 2}, bitmap), 0);
    EXPECT_EQ(lines_shown(canvas, 6), (std::vector<uint32_t>{3, 4, 5, kUntouched, kUntouched, kUntouched}));
}

TEST(Display, AFlatRectangleShowsTheLastLines) {
    const OwnedBitmap bitmap = numbered_lines(5);
    const Canvas canvas;
    EXPECT_EQ(display(canvas, {0, 0, 4, 2, 0, 0}, bitmap), 5);
    EXPECT_EQ(lines_shown(canvas, 3), (std::vector<uint32_t>{4, 5, kUntouched}));
}

TEST(Display, AHighRectangleShowsTheLinesAtItsBottom) {
    const OwnedBitmap bitmap = numbered_lines(3);
    const Canvas canvas;
    EXPECT_EQ(display(canvas, {0, 0, 4, 5, 0, 0}, bitmap), 3);
    EXPECT_EQ(lines_shown(canvas, 6), (std::vector<uint32_t>{kUntouched, kUntouched, 1, 2, 3, kUntouched}));
}

TEST(Display, PaddingIsPartOfTheLine) {
    const OwnedBitmap bitmap = make_filled(5, 1, BMP_FMT_RGBQ, 0x77);
    ASSERT_EQ(bitmap->pitch, 32);
    std::memset(line(bitmap, 0), 0x11, 5 * 4);
    const Canvas canvas;
    EXPECT_EQ(display(canvas, {0, 0, 20, 1, 0, 0}, bitmap), 1);
    EXPECT_EQ(canvas.colors(0, 0, 9), (std::vector<uint32_t>{0x111111, 0x111111, 0x111111, 0x111111, 0x111111, 0x777777,
                                                             0x777777, 0x777777, kUntouched}));
}

// Every format at every place, against the formula above.
TEST(Display, ShowsTheBitmapAtItsPlace) {
    const Place places[] = {{0, 0, 13, 9, 0, 0}, {4, 3, 13, 9, 0, 0}, {1, 1, 5, 9, 3, 0},    {1, 1, 40, 9, 0, 0},
                            {1, 1, 40, 9, 6, 0}, {2, 1, 13, 9, 0, 4}, {2, 1, 13, 9, 0, 8},   {2, 1, 13, 4, 0, 0},
                            {2, 1, 13, 4, 0, 3}, {2, 1, 7, 12, 2, 3}, {-3, -2, 13, 9, 0, 0}, {30, 12, 13, 9, 0, 0},
                            {2, 1, 6, 9, -2, 0}, {0, 0, 13, 1, 0, 0}, {0, 0, 1, 9, 12, 1},   {100, 100, 13, 9, 0, 0}};
    for (const int format : {BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_FMT_QUAD4, BMP_FMT_RGB8}) {
        const OwnedBitmap bitmap = make_noise(13, 9, format, 7);
        for (const Place& place : places) {
            const Canvas canvas;
            EXPECT_GT(display(canvas, place, bitmap), 0) << place;
            ASSERT_NO_FATAL_FAILURE(expect_shown(canvas, place, bitmap));
        }
    }
}

// ---------------------------------------------------------------- results

TEST(Display, ReturnsTheNumberOfLines) {
    const OwnedBitmap bitmap = make_bitmap(13, 9, BMP_FMT_RGBQ);
    EXPECT_EQ(display(Canvas(), whole(bitmap), bitmap), 9);
    EXPECT_EQ(display(Canvas(), {3, 3, 4, 9, 2, 0}, bitmap), 9);
}

TEST(Display, ReturnsNothingWhereNothingIsShown) {
    const OwnedBitmap bitmap = make_bitmap(13, 9, BMP_FMT_RGBQ);
    EXPECT_EQ(library().display(nullptr, 0, 0, 13, 9, bitmap.get(), 0, 0), 0) << "no device context";
    const Canvas canvas;
    for (const int start_line : {9, 10, INT32_MAX, -1, INT32_MIN}) {
        EXPECT_EQ(display(canvas, {0, 0, 13, 9, 0, start_line}, bitmap), 0) << start_line;
        ASSERT_EQ(canvas.color(0, 0), kUntouched);
    }
    const OwnedBitmap empty = make_bitmap(13, 0, BMP_FMT_RGBQ);
    EXPECT_EQ(display(canvas, {0, 0, 13, 9, 0, 0}, empty), 0) << "no line";
}

// The call as the interface promises it, argument by argument, whatever a version of Windows makes of it.
TEST(Display, IsOneCallOfSetDIBitsToDevice) {
    Random random(round_seed(0));
    for (int i = 0; i < 200; ++i) {
        const int width = random.between(1, 20), height = random.between(1, 12);
        const OwnedBitmap bitmap = make_noise(width, height, random.between(0, 1) ? BMP_FMT_RGBQ : BMP_FMT_YUY2, 3);
        const Place p = {random.between(-5, 40), random.between(-5, 16), random.between(1, 40),
                         random.between(1, 16),  random.between(-3, 20), random.between(0, height)};
        BITMAPINFO info{};
        info.bmiHeader.biSize = 40;
        info.bmiHeader.biWidth = bitmap->pitch / bitmap->bytes_per_pixel;
        info.bmiHeader.biHeight = -height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = static_cast<WORD>(bitmap->bit_count);
        const Canvas got, want;
        const int lines = SetDIBitsToDevice(want.context(), p.dest_x, p.dest_y, static_cast<DWORD>(p.width),
                                            static_cast<DWORD>(p.height), p.src_x, 0, static_cast<UINT>(p.start_line),
                                            static_cast<UINT>(height), bitmap->pixels, &info, DIB_RGB_COLORS);
        EXPECT_EQ(display(got, p, bitmap), lines) << p;
        for (int y = 0; y < Canvas::kHeight; ++y)
            ASSERT_EQ(got.colors(0, y, Canvas::kWidth), want.colors(0, y, Canvas::kWidth)) << p << ", line " << y;
    }
}

}  // namespace
}  // namespace zepbmp::test
