/// \file
/// bmp_set_palette, bmp_display: the display header as the graphics interface reads it. Field offsets are those of
/// Windows' BITMAPINFOHEADER.
#include <gtest/gtest.h>

#include "support/library.h"
#include "support/owned_bitmap.h"

namespace zepbmp::test {
namespace {

template <class T>
T field(const OwnedBitmap& bitmap, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const uint8_t*>(bitmap->dib_info) + offset, sizeof value);
    return value;
}

uint32_t color(const OwnedBitmap& bitmap, int index) {
    return field<uint32_t>(bitmap, 40 + 4 * static_cast<size_t>(index));
}

/// Builds the header. Without a device context nothing is shown.
void build_header(const OwnedBitmap& bitmap) {
    EXPECT_EQ(library().display(nullptr, 0, 0, 10, 10, bitmap.get(), 0, 0), 0);
    ASSERT_NE(bitmap->dib_info, nullptr);
}

void expect_header(const OwnedBitmap& bitmap, int width, int bit_count, int colors) {
    ASSERT_NE(bitmap->dib_info, nullptr);
    EXPECT_EQ(field<uint32_t>(bitmap, 0), 40u) << "biSize";
    EXPECT_EQ(field<int32_t>(bitmap, 4), width) << "biWidth";
    EXPECT_EQ(field<int32_t>(bitmap, 8), -bitmap->height) << "biHeight";
    EXPECT_EQ(field<uint16_t>(bitmap, 12), 1) << "biPlanes";
    EXPECT_EQ(field<uint16_t>(bitmap, 14), bit_count) << "biBitCount";
    EXPECT_EQ(field<uint32_t>(bitmap, 16), 0u) << "biCompression";
    EXPECT_EQ(field<uint32_t>(bitmap, 20), 0u) << "biSizeImage";
    EXPECT_EQ(field<int32_t>(bitmap, 24), 0) << "biXPelsPerMeter";
    EXPECT_EQ(field<int32_t>(bitmap, 28), 0) << "biYPelsPerMeter";
    EXPECT_EQ(field<uint32_t>(bitmap, 32), static_cast<uint32_t>(colors)) << "biClrUsed";
    EXPECT_EQ(field<uint32_t>(bitmap, 36), 0u) << "biClrImportant";
}

TEST(DisplayHeader, IsThereOnlyWhenItIsNeeded) {
    const OwnedBitmap bitmap = make_bitmap(8, 8, BMP_FMT_RGB8);
    EXPECT_EQ(bitmap->dib_info, nullptr);
    library().clear(bitmap.get(), 0);
    library().draw_rect(bitmap.get(), 0, 0, 8, 8, 1, 16);
    EXPECT_EQ(bitmap->dib_info, nullptr);
    library().set_palette(bitmap.get(), 0, 0);
    EXPECT_NE(bitmap->dib_info, nullptr);
}

TEST(DisplayHeader, DescribesThePaddedLineFromTheTop) {
    struct Case {
        int format, width, padded, bits, colors;
    };
    for (const Case& c : {Case{BMP_FMT_YUY2, 100, 104, 16, 0},
                          {BMP_FMT_PWRW, 8, 8, 16, 0},
                          {BMP_FMT_RGBQ, 5, 8, 32, 0},
                          {BMP_FMT_QUAD3, 4, 4, 32, 0},
                          {BMP_FMT_QUAD4, 1, 4, 32, 0},
                          {BMP_FMT_QUAD5, 9, 12, 32, 0},
                          {BMP_FMT_RGB8, 17, 32, 8, 256},
                          {BMP_FMT_A8, 16, 16, 8, 0}}) {
        const OwnedBitmap bitmap = make_bitmap(c.width, 7, c.format);
        build_header(bitmap);
        SCOPED_TRACE(c.format);
        expect_header(bitmap, c.padded, c.bits, c.colors);
    }
    EXPECT_EQ(make_bitmap(100, 7, BMP_FMT_YUY2)->pitch, 208);
}

// Such a format takes the height for the bytes of a pixel.
TEST(DisplayHeader, ComesForUnknownFormats) {
    const OwnedBitmap bitmap = make_bitmap(6, 3, 99);
    build_header(bitmap);
    expect_header(bitmap, 32 / 3, 24, 0);
    const OwnedBitmap empty = make_bitmap(6, 0, 99);
    build_header(empty);
    expect_header(empty, 0, 0, 0);
}

TEST(DisplayHeader, IsBuiltOnce) {
    const OwnedBitmap bitmap = make_bitmap(20, 4, BMP_FMT_RGB8);
    build_header(bitmap);
    const void* const header = bitmap->dib_info;
    build_header(bitmap);
    library().set_palette(bitmap.get(), 7, 0x123456);
    build_header(bitmap);
    EXPECT_EQ(bitmap->dib_info, header);
    EXPECT_EQ(color(bitmap, 7), 0x123456u) << "what was set stays";
}

TEST(Palette, StartsAsAGreyRamp) {
    const OwnedBitmap bitmap = make_bitmap(20, 4, BMP_FMT_RGB8);
    build_header(bitmap);
    for (int i = 0; i < 256; ++i)
        EXPECT_EQ(color(bitmap, i), static_cast<uint32_t>(i << 16 | i << 8 | i)) << i;
}

// The graphics interface reads a table behind each header of 8 bits.
TEST(Palette, EveryEightBitPictureHasOne) {
    for (const int format : {BMP_FMT_A8, 99}) {
        const OwnedBitmap bitmap = make_bitmap(16, 1, format);  // one line: an unknown format's pixel has one byte
        library().set_palette(bitmap.get(), 3, 0x5a5a5a);
        expect_header(bitmap, 16, 8, 0);
        for (int i = 0; i < 256; ++i)
            EXPECT_EQ(color(bitmap, i), static_cast<uint32_t>(i * 0x010101)) << i;
    }
}

TEST(Palette, HoldsTheWholeWordThatWasSet) {
    const OwnedBitmap bitmap = make_bitmap(20, 4, BMP_FMT_RGB8);
    library().set_palette(bitmap.get(), 255, 0x00ff0000);
    library().set_palette(bitmap.get(), 0, 0xa1b2c3d4);
    EXPECT_EQ(color(bitmap, 255), 0x00ff0000u);
    EXPECT_EQ(color(bitmap, 0), 0xa1b2c3d4u);
    EXPECT_EQ(color(bitmap, 1), 0x010101u);
    EXPECT_EQ(color(bitmap, 254), 0xfefefeu);
    expect_header(bitmap, 32, 8, 256);
}

TEST(Palette, OtherIndicesStoreNothing) {
    const OwnedBitmap bitmap = make_bitmap(20, 4, BMP_FMT_RGB8);
    for (const int32_t index : {-1, 256, 257, INT32_MAX, INT32_MIN, -10}) {
        library().set_palette(bitmap.get(), index, 0x5a5a5a5a);
        expect_header(bitmap, 32, 8, 256);
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(color(bitmap, i), static_cast<uint32_t>(i * 0x010101)) << index;
    }
}

TEST(Palette, OtherFormatsGetAHeaderAlone) {
    for (const int format : {BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_A8}) {
        const OwnedBitmap bitmap = make_bitmap(16, 4, format);
        library().set_palette(bitmap.get(), 0, 0x5a5a5a5a);
        expect_header(bitmap, 16, bitmap->bit_count, 0);
    }
}

// The lines are shown as they are: neither a palette nor a display writes them.
TEST(Display, LeavesThePixelsAlone) {
    const OwnedBitmap bitmap = make_noise(30, 5, BMP_FMT_RGB8, 1);
    const auto before = snapshot(bitmap);
    library().set_palette(bitmap.get(), 3, 9);
    build_header(bitmap);
    EXPECT_EQ(snapshot(bitmap), before);
}

}  // namespace
}  // namespace zepbmp::test
