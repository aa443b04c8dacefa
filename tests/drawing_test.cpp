/// \file
/// bmp_draw_rect, bmp_draw_line, bmp_translate_color: cases worked out by hand.
#include <gtest/gtest.h>

#include <climits>
#include <utility>

#include "support/library.h"
#include "support/owned_bitmap.h"

namespace zepbmp::test {
namespace {

using Bytes = std::vector<int>;

constexpr uint32_t kOr = 16, kAnd = 32;  // modes of bmp_draw_rect

Bytes bytes_of_line(const OwnedBitmap& bitmap, int y) { return bytes_at(line(bitmap, y), bitmap->pitch); }

/// `count` times `value`, then `rest` up to `total`.
Bytes runs(std::initializer_list<std::pair<int, int>> parts) {
    Bytes all;
    for (const auto& [count, value] : parts)
        all.insert(all.end(), static_cast<size_t>(count), value);
    return all;
}

// ---------------------------------------------------------------- rectangles

TEST(DrawRect, FillsColumnsAndLinesUpToTheExclusiveEnds) {
    const OwnedBitmap bitmap = make_filled(6, 5, BMP_FMT_PWRW, 0x11);
    library().draw_rect(bitmap.get(), 2, 1, 5, 3, 0x9999abcd, 0);
    for (int y = 0; y < 5; ++y) {
        const int inside = y == 1 || y == 2 ? 0xabcd : 0x1111;
        EXPECT_EQ(weights_of_line(bitmap, y), runs({{2, 0x1111}, {3, inside}, {1, 0x1111}})) << y;
        EXPECT_EQ(bytes_at(line(bitmap, y) + 12, 4), runs({{4, 0x11}})) << "padding of line " << y;
    }
}

TEST(DrawRect, IsClipped) {
    const auto filled = [](int left, int top, int right, int bottom) {
        const OwnedBitmap bitmap = make_filled(10, 3, BMP_FMT_PWRW, 0);
        library().draw_rect(bitmap.get(), left, top, right, bottom, 1, 0);
        Bytes pixels;
        for (int y = 0; y < 3; ++y)
            for (const int weight : weights_of_line(bitmap, y))
                pixels.push_back(weight);
        return pixels;
    };
    EXPECT_EQ(filled(-5, 0, 4, 1), runs({{4, 1}, {26, 0}}));
    EXPECT_EQ(filled(7, -3, 99, 1), runs({{7, 0}, {3, 1}, {20, 0}}));
    EXPECT_EQ(filled(0, 2, 10, 4), runs({{20, 0}, {10, 1}}));
    EXPECT_EQ(filled(INT_MIN, INT_MIN, INT_MAX, INT_MAX), runs({{30, 1}}));
    const Bytes nothing = runs({{30, 0}});
    EXPECT_EQ(filled(4, 0, 4, 3), nothing) << "right equal to left";
    EXPECT_EQ(filled(5, 0, 4, 3), nothing);
    EXPECT_EQ(filled(0, 2, 10, 2), nothing);
    EXPECT_EQ(filled(0, 2, 10, 1), nothing);
    EXPECT_EQ(filled(10, 0, 20, 3), nothing);
    EXPECT_EQ(filled(0, 3, 10, 9), nothing);
    EXPECT_EQ(filled(-9, 0, 0, 3), nothing);
    EXPECT_EQ(filled(0, -9, 10, -2), nothing);
    EXPECT_EQ(filled(INT_MAX, 0, INT_MIN, 3), nothing) << "a difference that would wrap to 1";
    EXPECT_EQ(filled(0, INT_MAX, 10, INT_MIN), nothing);
}

TEST(DrawRect, FillsEveryPixelOfAnOddWidth) {
    const OwnedBitmap bitmap = make_filled(7, 2, BMP_FMT_PWRW, 0xee);
    library().draw_rect(bitmap.get(), 0, 0, 7, 2, 0x1234, 0);
    for (int y = 0; y < 2; ++y) {
        EXPECT_EQ(weights_of_line(bitmap, y), runs({{7, 0x1234}}));
        EXPECT_EQ(weights(bitmap, y)[7], 0xeeee) << "padding";
    }
}

TEST(DrawRect, StoresThe32BitColorInRgbq) {
    const OwnedBitmap bitmap = make_filled(4, 1, BMP_FMT_RGBQ, 0);
    library().draw_rect(bitmap.get(), 1, 0, 3, 1, 0x44332211, 0);
    EXPECT_EQ(bytes_of_line(bitmap, 0),
              (Bytes{0, 0, 0, 0, 0x11, 0x22, 0x33, 0x44, 0x11, 0x22, 0x33, 0x44, 0, 0, 0, 0}));
}

TEST(DrawRect, Masks8BitPixels) {
    const OwnedBitmap bitmap = make_filled(16, 2, BMP_FMT_RGB8, 0x5a);
    library().draw_rect(bitmap.get(), 1, 0, 4, 1, 0xffffff0f, kAnd);
    library().draw_rect(bitmap.get(), 3, 0, 6, 1, 0xffffff81, kOr);
    EXPECT_EQ(bytes_of_line(bitmap, 0), runs({{1, 0x5a}, {2, 0x0a}, {1, 0x8b}, {2, 0xdb}, {10, 0x5a}}));
    EXPECT_EQ(bytes_of_line(bitmap, 1), runs({{16, 0x5a}}));
}

TEST(DrawRect, OtherModesDrawNothing) {
    for (const int format : {BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_FMT_QUAD3, BMP_FMT_QUAD4, BMP_FMT_QUAD5,
                             BMP_FMT_RGB8, BMP_FMT_A8}) {
        for (const uint32_t mode : {0u, 1u, 16u, 32u, 48u, 64u, 0x10000u, 0x10010u, 0x80000020u}) {
            const bool sets = mode == 0 && (format == BMP_FMT_RGBQ || format == BMP_FMT_PWRW);
            const bool masks = format == BMP_FMT_RGB8 && (mode == kOr || mode == kAnd);
            const OwnedBitmap bitmap = make_filled(9, 3, format, 0x5a);
            const auto before = snapshot(bitmap);
            library().draw_rect(bitmap.get(), 0, 0, 9, 3, 0x01010101, mode);
            EXPECT_EQ(snapshot(bitmap) != before, sets || masks) << "format " << format << " mode " << mode;
        }
    }
}

TEST(DrawRect, ABitmapWithoutPixelsHasNothingToFill) {
    library().draw_rect(make_bitmap(0, 5, BMP_FMT_RGBQ).get(), -1, -1, 9, 9, 1, 0);
    library().draw_rect(make_bitmap(5, 0, BMP_FMT_RGBQ).get(), -1, -1, 9, 9, 1, 0);
}

// ---------------------------------------------------------------- lines

using Points = std::vector<std::pair<int, int>>;

constexpr int kWidth = 12, kHeight = 9;

/// The pixels that a line from (x0, y0) toward (x1, y1) sets, line by line from left to right.
Points drawn(int x0, int y0, int x1, int y1, int format = BMP_FMT_RGB8, uint32_t mode = 0) {
    const OwnedBitmap bitmap = make_filled(kWidth, kHeight, format, 0);
    library().draw_line(bitmap.get(), x0, y0, x1, y1, 0x55, mode);
    Points points;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < bitmap->pitch; ++x)
            if (line(bitmap, y)[x] != 0)
                points.emplace_back(x, y);
    return points;
}

TEST(DrawLine, FlatGoesByTheErrorTerm) {
    EXPECT_EQ(drawn(0, 0, 4, 2), (Points{{0, 0}, {1, 1}, {2, 1}, {3, 2}})) << "the end is not drawn";
    // The error is 2, then 1, then 0, which is a step down and 5; 4, 3, 2 follow.
    EXPECT_EQ(drawn(1, 3, 6, 4), (Points{{1, 3}, {2, 3}, {3, 4}, {4, 4}, {5, 4}}));
    EXPECT_EQ(drawn(6, 4, 1, 3), (Points{{2, 3}, {3, 3}, {4, 3}, {5, 4}, {6, 4}})) << "the other way round";
}

TEST(DrawLine, SteepStepsDown) {
    EXPECT_EQ(drawn(0, 0, 2, 4), (Points{{0, 0}, {1, 1}, {1, 2}, {2, 3}}));
    EXPECT_EQ(drawn(5, 8, 4, 3), (Points{{4, 4}, {4, 5}, {4, 6}, {5, 7}, {5, 8}}));
}

TEST(DrawLine, A45DegreeLineIsADiagonal) {
    EXPECT_EQ(drawn(1, 1, 4, 4), (Points{{1, 1}, {2, 2}, {3, 3}}));
    EXPECT_EQ(drawn(4, 1, 1, 4), (Points{{4, 1}, {3, 2}, {2, 3}}));
    EXPECT_EQ(drawn(1, 4, 0, 3), (Points{{1, 4}}));
}

TEST(DrawLine, LevelAndUprightLines) {
    EXPECT_EQ(drawn(2, 3, 5, 3), (Points{{2, 3}, {3, 3}, {4, 3}}));
    EXPECT_EQ(drawn(5, 3, 2, 3), (Points{{3, 3}, {4, 3}, {5, 3}}));
    EXPECT_EQ(drawn(2, 3, 2, 6), (Points{{2, 3}, {2, 4}, {2, 5}}));
    EXPECT_EQ(drawn(2, 6, 2, 3), (Points{{2, 4}, {2, 5}, {2, 6}}));
    EXPECT_EQ(drawn(2, 3, 3, 3), (Points{{2, 3}}));
    EXPECT_EQ(drawn(2, 3, 2, 4), (Points{{2, 3}}));
    EXPECT_EQ(drawn(3, 3, 3, 3), Points{});
}

TEST(DrawLine, CombinesByItsMode) {
    const auto combined = [](uint32_t mode, int x1, int y1) {
        const OwnedBitmap bitmap = make_filled(40, 40, BMP_FMT_RGB8, 0x5a);
        library().draw_line(bitmap.get(), 0, 0, x1, y1, 0xabcdef3c, mode);
        return static_cast<int>(bitmap->pixels[0]);
    };
    for (const auto& [x1, y1] : Points{{39, 0}, {0, 39}, {39, 39}, {39, 7}, {7, 39}}) {
        for (const uint32_t other_bits : {0u, 0xffffff8fu}) {
            EXPECT_EQ(combined(0x00 | other_bits, x1, y1), 0x3c);
            EXPECT_EQ(combined(0x10 | other_bits, x1, y1), 0x7e);
            EXPECT_EQ(combined(0x20 | other_bits, x1, y1), 0x18);
            EXPECT_EQ(combined(0x30 | other_bits, x1, y1), 0x66);
            for (const uint32_t mode : {0x40u, 0x50u, 0x60u, 0x70u})
                EXPECT_EQ(combined(mode | other_bits, x1, y1), 0x5a) << mode;
        }
    }
}

TEST(DrawLine, OtherFormatsStayUnchanged) {
    for (const int format :
         {BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_FMT_QUAD3, BMP_FMT_QUAD4, BMP_FMT_QUAD5, BMP_FMT_A8})
        for (const uint32_t mode : {0x00u, 0x10u, 0x30u})
            EXPECT_EQ(drawn(0, 0, 4, 2, format, mode), Points{}) << format;
}

// Both XOR: what is drawn twice is gone.
TEST(DrawLine, ThereAndBackWithoutTheEnds) {
    const OwnedBitmap bitmap = make_filled(64, 2, BMP_FMT_RGB8, 0x5a);
    library().draw_line(bitmap.get(), 3, 1, 60, 1, 0xff, 0x30);
    library().draw_line(bitmap.get(), 59, 1, 2, 1, 0xff, 0x30);
    EXPECT_EQ(snapshot(bitmap), snapshot(make_filled(64, 2, BMP_FMT_RGB8, 0x5a)));
}

// ---------------------------------------------------------------- colours

TEST(TranslateColor, ReversesThreeBytesAndDropsTheTop) {
    EXPECT_EQ(library().translate_color(nullptr, 0x00ff8040), 0x004080ffu);
    EXPECT_EQ(library().translate_color(nullptr, 0x12345678), 0x00785634u);
    EXPECT_EQ(library().translate_color(nullptr, 0xff000000), 0u);
    EXPECT_EQ(library().translate_color(nullptr, 0x000000ff), 0x00ff0000u) << "red";
}

TEST(TranslateColor, DoesNotReadItsFirstArgument) {
    EXPECT_EQ(library().translate_color(reinterpret_cast<const void*>(uintptr_t{1}), 0x010203), 0x030201u);
}

TEST(TranslateColor, TwiceGivesTheColorBack) {
    Random random(1);
    for (int i = 0; i < 1000; ++i) {
        const uint32_t color = static_cast<uint32_t>(random.next()) & 0xffffff;
        EXPECT_EQ(library().translate_color(nullptr, library().translate_color(nullptr, color)), color);
    }
}

}  // namespace
}  // namespace zepbmp::test
