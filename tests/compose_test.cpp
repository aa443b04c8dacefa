/// \file
/// bmp_compose and bmp_compose_color: cases worked out by hand, at every filling of the tables.
#include <gtest/gtest.h>

#include "support/library.h"
#include "support/owned_bitmap.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

using Bytes = std::vector<int>;

class Compose : public WithTables {
protected:
    bool plain() const { return GetParam().level == 0; }
    /// What one of the two arithmetics gives.
    int choose(int plain_value, int vector_value) const { return plain() ? plain_value : vector_value; }

    static OwnedBitmap bitmap_of(int format, std::initializer_list<int> bytes, int height = 1) {
        const int pixel_bytes = bytes_per_pixel(format);
        OwnedBitmap bitmap = make_bitmap(static_cast<int>(bytes.size()) / pixel_bytes, height, format);
        for (int y = 0; y < height; ++y)
            std::copy(bytes.begin(), bytes.end(), line(bitmap, y));
        return bitmap;
    }
    static OwnedBitmap weights_of(std::initializer_list<int> values) {
        OwnedBitmap bitmap = make_bitmap(static_cast<int>(values.size()), 1, BMP_FMT_PWRW);
        std::copy(values.begin(), values.end(), weights(bitmap, 0));
        return bitmap;
    }
    static OwnedBitmap masks_of(std::initializer_list<int> values) { return bitmap_of(BMP_FMT_A8, values); }

    static void compose(const OwnedBitmap& dest, const OwnedBitmap& src1, const OwnedBitmap& src2,
                        const OwnedBitmap& mask, uint32_t flags = 0) {
        EXPECT_EQ(library().compose(dest.get(), src1.get(), src2.get(), mask.get(), flags), 0);
    }
    static void compose_at(const OwnedBitmap& dest, const OwnedBitmap& src1, const OwnedBitmap& src2, int level,
                           uint32_t flags = 0) {
        EXPECT_EQ(library().compose(dest.get(), src1.get(), src2.get(), BMP_INTEGER(level), flags | BMP_COMPOSE_LEVEL),
                  0);
    }
    static void compose_color(const OwnedBitmap& dest, const OwnedBitmap& src1, const OwnedBitmap& src2,
                              const OwnedBitmap& mask1, const OwnedBitmap& mask2, uint32_t color, uint32_t flags = 0) {
        EXPECT_EQ(library().compose_color(dest.get(), src1.get(), src2.get(), mask1.get(), mask2.get(), color, flags),
                  0);
    }

    /// Lines whose first byte has changed from `old`.
    static std::vector<int> changed_lines(const OwnedBitmap& dest, int old) {
        std::vector<int> changed;
        for (int y = 0; y < dest->height; ++y)
            if (line(dest, y)[0] != old)
                changed.push_back(y);
        return changed;
    }

    const UseTables use_{GetParam()};
};

// ---------------------------------------------------------------- which lines

TEST_P(Compose, FieldsOfFiveLines) {
    const auto composed = [&](int height, uint32_t flags) {
        const OwnedBitmap dest = make_filled(8, height, BMP_FMT_YUY2, 7),
                          src = make_filled(8, height, BMP_FMT_YUY2, 200);
        compose(dest, src, src, make_weights(8, height, 4096), flags);
        const auto masked = changed_lines(dest, 7);
        const OwnedBitmap faded = make_filled(8, height, BMP_FMT_RGB8, 7),
                          other = make_filled(8, height, BMP_FMT_RGB8, 200);
        compose_at(faded, other, other, 100, flags);
        EXPECT_EQ(changed_lines(faded, 7), masked);
        const OwnedBitmap colored = make_filled(8, height, BMP_FMT_YUY2, 7);
        compose_color(colored, src, nullptr, make_weights(8, height, 4096), nullptr, 0, flags);
        EXPECT_EQ(changed_lines(colored, 7), masked);
        return masked;
    };
    using Lines = std::vector<int>;
    EXPECT_EQ(composed(5, 0), (Lines{0, 1, 2, 3, 4}));
    EXPECT_EQ(composed(5, 2), (Lines{0, 2, 4}));
    EXPECT_EQ(composed(5, 3), (Lines{1, 3}));
    EXPECT_EQ(composed(5, 1), (Lines{1, 2, 3, 4}));
    EXPECT_EQ(composed(4, 2), (Lines{0, 2}));
    EXPECT_EQ(composed(4, 3), (Lines{1, 3}));
    EXPECT_EQ(composed(0, 0), Lines{});
    EXPECT_EQ(composed(0, 2), Lines{});
    EXPECT_EQ(composed(0, 3), Lines{});
    EXPECT_EQ(composed(1, 1), Lines{});
    EXPECT_EQ(composed(1, 3), Lines{});
    EXPECT_EQ(composed(1, 2), Lines{0});
}

TEST_P(Compose, FieldsReadTheSameLinesOfEveryBitmap) {
    const OwnedBitmap dest = make_filled(4, 4, BMP_FMT_YUY2, 0);
    const OwnedBitmap src1 = make_bitmap(4, 4, BMP_FMT_YUY2), src2 = make_bitmap(40, 6, BMP_FMT_YUY2);
    const OwnedBitmap mask = make_weights(20, 4, 0);
    for (int y = 0; y < 4; ++y) {
        std::memset(line(src1, y), 10 + y, 16);
        std::memset(line(src2, y), 100 + y, 16);
        weights(mask, y)[0] = weights(mask, y)[1] = y == 1 ? 4096 : 0;
    }
    compose(dest, src1, src2, mask, BMP_FIELD | BMP_FIELD_ODD);
    EXPECT_EQ(bytes_at(line(dest, 1), 8), (Bytes{101, 101, 101, 101, 11, 11, 11, 11}));
    EXPECT_EQ(bytes_at(line(dest, 3), 8), (Bytes{13, 13, 13, 13, 13, 13, 13, 13}));
    EXPECT_EQ(bytes_at(line(dest, 0), 8), Bytes(8, 0));
    EXPECT_EQ(bytes_at(line(dest, 2), 8), Bytes(8, 0));
}

// ---------------------------------------------------------------- which formats

TEST_P(Compose, OtherDestinationsStayAsTheyAre) {
    for (const int format : {BMP_FMT_PWRW, BMP_FMT_A8, BMP_FMT_RGB8, BMP_FMT_QUAD3, BMP_FMT_QUAD4, BMP_FMT_QUAD5}) {
        const OwnedBitmap dest = make_filled(8, 2, format, 7), src = make_filled(8, 2, format, 200);
        compose(dest, src, src, make_weights(8, 2, 2048));
        compose(dest, src, src, make_filled(8, 2, BMP_FMT_A8, 64));
        compose_color(dest, src, src, make_weights(8, 2, 2048), make_weights(8, 2, 2048), 0x123456);
        compose_color(dest, src, nullptr, make_weights(8, 2, 2048), nullptr, 0x123456);
        for (const uint8_t byte : lines_of(dest.get()))
            EXPECT_EQ(byte, 7) << format;
    }
}

TEST_P(Compose, ALevelMixesBytesOfEveryFormatAndThePadding) {
    for (int format = 0; format < 8; ++format) {
        const OwnedBitmap dest = make_filled(5, 2, format, 7), a = make_filled(5, 2, format, 100),
                          b = make_filled(5, 2, format, 200);
        compose_at(dest, a, b, 1024);
        for (const uint8_t byte : lines_of(dest.get()))
            EXPECT_EQ(byte, 125) << format;
    }
}

TEST_P(Compose, ColorReadsEveryMaskAs16Bits) {
    // 0x0800 = half, as the two bytes 0 and 8 of an A8 "mask".
    const OwnedBitmap mask = bitmap_of(BMP_FMT_A8, {0, 8, 0, 8});
    const OwnedBitmap dest = make_bitmap(2, 1, BMP_FMT_YUY2), src = bitmap_of(BMP_FMT_YUY2, {100, 100, 100, 100});
    compose_color(dest, src, nullptr, mask, nullptr, 0x323232);
    EXPECT_EQ(bytes_at(line(dest, 0), 4), Bytes(4, 75));
}

// ---------------------------------------------------------------- RGBQ

TEST_P(Compose, RgbqFullWeightCopiesTheSecondSource) {
    const OwnedBitmap dest = bitmap_of(BMP_FMT_RGBQ, {1, 2, 3, 4}), a = bitmap_of(BMP_FMT_RGBQ, {10, 20, 30, 40}),
                      b = bitmap_of(BMP_FMT_RGBQ, {255, 128, 1, 200});
    compose(dest, a, b, weights_of({4096}));
    EXPECT_EQ(bytes_at(line(dest, 0), 4), (Bytes{255, 128, 1, choose(4, 200)}))
        << "the fourth byte is kept at level 0 only";
}

TEST_P(Compose, RgbqWeightZeroCopiesTheFirstSource) {
    const OwnedBitmap dest = bitmap_of(BMP_FMT_RGBQ, {1, 2, 3, 4}), a = bitmap_of(BMP_FMT_RGBQ, {255, 128, 1, 40}),
                      b = bitmap_of(BMP_FMT_RGBQ, {9, 9, 9, 9});
    compose(dest, a, b, weights_of({0}));
    EXPECT_EQ(bytes_at(line(dest, 0), 4), (Bytes{255, 128, 1, choose(4, 40)}));
}

// 101 * 3072 + 3 * 1024 = 313344 = 76.5 * 4096; apart: 75.75 -> 75 and 0.75 -> 0.
// 255 * 1024 + 255 * 3072 = 255 * 4096; apart: 63.75 -> 63 and 191.25 -> 191.
TEST_P(Compose, RgbqRoundsOnceAtLevel0AndEachTermElsewhere) {
    const OwnedBitmap dest = bitmap_of(BMP_FMT_RGBQ, {0, 0, 0, 0}), a = bitmap_of(BMP_FMT_RGBQ, {101, 255, 100, 0}),
                      b = bitmap_of(BMP_FMT_RGBQ, {3, 255, 200, 0});
    compose(dest, a, b, weights_of({1024}));
    EXPECT_EQ(bytes_at(line(dest, 0), 3), (Bytes{choose(76, 75), choose(255, 254), 125}));
}

TEST_P(Compose, RgbqHalfOfAByteMaskIsTheMeanTruncated) {
    const OwnedBitmap dest = bitmap_of(BMP_FMT_RGBQ, {1, 2, 3, 4}), a = bitmap_of(BMP_FMT_RGBQ, {100, 255, 0, 10}),
                      b = bitmap_of(BMP_FMT_RGBQ, {201, 254, 255, 21});
    compose(dest, a, b, masks_of({64}));
    EXPECT_EQ(bytes_at(line(dest, 0), 4), (Bytes{150, 254, 127, choose(4, 15)}));
}

// (200 * 5000 + 100 * -904) / 4096 = 222.07; apart: 244.14 -> 244 and -22.07 -> -23.
// (255 * 8192 - 4096 * 128) / 4096 = 382 = 126 modulo 256, held to 255 elsewhere.
TEST_P(Compose, RgbqWeightsBeyondFullExtrapolate) {
    const OwnedBitmap dest = bitmap_of(BMP_FMT_RGBQ, {0, 0, 0, 0, 0, 0, 0, 0}),
                      a = bitmap_of(BMP_FMT_RGBQ, {100, 100, 100, 0, 128, 128, 128, 0}),
                      b = bitmap_of(BMP_FMT_RGBQ, {200, 200, 200, 0, 255, 255, 0, 0});
    compose(dest, a, b, weights_of({5000, 8192}));
    EXPECT_EQ(bytes_at(line(dest, 0), 3), Bytes(3, choose(222, 221)));
    EXPECT_EQ(bytes_at(line(dest, 0) + 4, 3), (Bytes{choose(126, 255), choose(126, 255), choose(128, 0)}))
        << "-128 is 128 in its low 8 bits, or held to 0";
}

TEST_P(Compose, RgbqWritesOnePixelOfPaddingUnderAByteMaskOnly) {
    const OwnedBitmap a = make_filled(3, 1, BMP_FMT_RGBQ, 50), b = make_filled(3, 1, BMP_FMT_RGBQ, 50);
    const OwnedBitmap dest = make_filled(3, 1, BMP_FMT_RGBQ, 7);
    compose(dest, a, b, make_weights(3, 1, 4096));
    EXPECT_EQ(bytes_at(line(dest, 0) + 12, 4), Bytes(4, 7));
    compose(dest, a, b, make_filled(3, 1, BMP_FMT_A8, 128));
    EXPECT_EQ(bytes_at(line(dest, 0) + 12, 4), (Bytes{50, 50, 50, choose(7, 50)}));
}

// ---------------------------------------------------------------- YUY2

TEST_P(Compose, Yuy2ChromaTakesTheFirstPixelsWeight) {
    const OwnedBitmap dest = make_bitmap(4, 1, BMP_FMT_YUY2),
                      a = bitmap_of(BMP_FMT_YUY2, {16, 16, 16, 16, 16, 16, 16, 16}),
                      b = bitmap_of(BMP_FMT_YUY2, {240, 240, 240, 240, 240, 240, 240, 240});
    compose(dest, a, b, weights_of({4096, 0, 0, 4096}));
    EXPECT_EQ(bytes_at(line(dest, 0), 8), (Bytes{240, 240, 16, 240, 16, 16, 240, 16}));
    compose(dest, a, b, weights_of({1024, 2048, 3072, 0}));
    EXPECT_EQ(bytes_at(line(dest, 0), 8), (Bytes{72, 72, 128, 72, 184, 184, 16, 184}));
    compose(dest, a, b, masks_of({128, 0, 0, 128}));
    EXPECT_EQ(bytes_at(line(dest, 0), 8), (Bytes{240, 240, 16, 240, 16, 16, 240, 16}));
    compose(dest, a, b, masks_of({32, 64, 96, 0}));
    EXPECT_EQ(bytes_at(line(dest, 0), 8), (Bytes{72, 72, 128, 72, 184, 184, 16, 184}));
}

// 8 pixels for aligned bitmaps, 4 where one of them is not; an 8-bit mask is not asked.
TEST_P(Compose, Yuy2WritesWholeGroupsIntoThePadding) {
    const OwnedBitmap a = make_filled(1, 1, BMP_FMT_YUY2, 50);
    const auto written = [&](const OwnedBitmap& dest, const Bitmap* mask) {
        std::memset(line(dest, 0), 7, 16);
        library().compose(dest.get(), a.get(), a.get(), mask, 0);
        int bytes = 16;
        while (bytes > 0 && line(dest, 0)[bytes - 1] == 7)
            --bytes;
        return bytes;
    };
    const OwnedBitmap dest = make_bitmap(1, 1, BMP_FMT_YUY2), w16 = make_weights(1, 1, 4096),
                      a8 = make_filled(1, 1, BMP_FMT_A8, 128);
    EXPECT_EQ(written(dest, w16.get()), 16);
    EXPECT_EQ(written(dest, a8.get()), 16);

    const OwnedBitmap wide_weights = make_weights(32, 2, 4096), wide_masks = make_filled(32, 2, BMP_FMT_A8, 128);
    Bitmap odd_weights = *wide_weights, odd_masks = *wide_masks;
    odd_weights.pixels += 2;
    odd_masks.pixels += 1;
    EXPECT_EQ(written(dest, &odd_weights), 8);
    EXPECT_EQ(written(dest, &odd_masks), 16) << "the mask's alignment does not count";
    odd_masks.pixels -= 1;
    odd_masks.pitch += 3;
    EXPECT_EQ(written(dest, &odd_masks), 16) << "nor its pitch";
    odd_weights.pixels -= 2;
    odd_weights.pitch += 2;
    EXPECT_EQ(written(dest, &odd_weights), 8);
}

// ---------------------------------------------------------------- a level

TEST_P(Compose, LevelsAtTheEndsCopy) {
    const OwnedBitmap dest = make_bitmap(50, 2, BMP_FMT_YUY2), a = make_noise(50, 2, BMP_FMT_YUY2, 1),
                      b = make_noise(50, 2, BMP_FMT_YUY2, 2);
    compose_at(dest, a, b, 0);
    EXPECT_EQ(snapshot(dest), snapshot(a));
    compose_at(dest, a, b, 4096);
    EXPECT_EQ(snapshot(dest), snapshot(b));
}

// Truncated at level 0; elsewhere each term is cut to quarters and the sum rounded to nearest.
TEST_P(Compose, LevelsBetweenRoundAsTheirColumn) {
    const OwnedBitmap dest = make_bitmap(8, 1, BMP_FMT_A8), a = bitmap_of(BMP_FMT_A8, {0, 1, 100, 255, 7, 254, 0, 255}),
                      b = bitmap_of(BMP_FMT_A8, {255, 2, 101, 255, 9, 255, 1, 0});
    compose_at(dest, a, b, 2048);
    EXPECT_EQ(bytes_at(line(dest, 0), 8),
              plain() ? (Bytes{127, 1, 100, 255, 8, 254, 0, 127}) : (Bytes{128, 2, 101, 255, 8, 255, 1, 128}));
    // 3/4 and 1/4: 63.75, 1.25, 100.25, 255, 7.5, 254.25, 0.25, 191.25
    compose_at(dest, a, b, 1024);
    EXPECT_EQ(bytes_at(line(dest, 0), 8),
              plain() ? (Bytes{63, 1, 100, 255, 7, 254, 0, 191}) : (Bytes{64, 1, 100, 255, 8, 254, 0, 191}));
}

// Level 5000: weights -904 and 5000. 100 and 200: 222.07. 255 and 0: -56.28 at level 0 is 0xfffff... >> 12, low bits
// 199.
TEST_P(Compose, LevelsBeyondFullExtrapolate) {
    const OwnedBitmap dest = make_bitmap(2, 1, BMP_FMT_A8), a = bitmap_of(BMP_FMT_A8, {100, 255}),
                      b = bitmap_of(BMP_FMT_A8, {200, 0});
    compose_at(dest, a, b, 5000);
    EXPECT_EQ(bytes_at(line(dest, 0), 2), (Bytes{222, choose(199, 0)}));
}

// ---------------------------------------------------------------- the band

TEST_P(Compose, BandShowsTheColorWhereTheMasksDiffer) {
    const OwnedBitmap a = make_filled(4, 1, BMP_FMT_YUY2, 40), b = make_filled(4, 1, BMP_FMT_YUY2, 80);
    const OwnedBitmap dest = make_bitmap(4, 1, BMP_FMT_YUY2);
    compose_color(dest, a, b, weights_of({0, 0, 4096, 4096}), weights_of({0, 0, 4096, 4096}), 0xc8b4a0);
    EXPECT_EQ(bytes_at(line(dest, 0), 8), (Bytes{40, 40, 40, 40, 80, 80, 80, 80})) << "equal masks: no colour";
    compose_color(dest, a, b, weights_of({0, 0, 0, 0}), weights_of({4096, 4096, 4096, 4096}), 0xc8b4a0);
    EXPECT_EQ(bytes_at(line(dest, 0), 8), (Bytes{200, 180, 200, 160, 200, 180, 200, 160})) << "Y U Y V of 0x00YYUUVV";
}

TEST_P(Compose, BandOfYuy2WeighsChromaByThePairsSums) {
    const OwnedBitmap a = make_filled(2, 1, BMP_FMT_YUY2, 0), b = make_filled(2, 1, BMP_FMT_YUY2, 128);
    const OwnedBitmap dest = make_bitmap(2, 1, BMP_FMT_YUY2);
    // a0 = 0, a1 = 2048; b0 = 4096, b1 = 2048: U = (0 * (8192 - 6144) + 128 * 2048 + 64 * 4096) / 8192 = 32 + 32
    compose_color(dest, a, b, weights_of({0, 2048}), weights_of({4096, 2048}), 0x404020);
    EXPECT_EQ(bytes_at(line(dest, 0), 4), (Bytes{64, 64, 64, 48}));
}

TEST_P(Compose, BandOfRgbqSwapsTheColorAtLevel0) {
    const OwnedBitmap a = make_filled(1, 1, BMP_FMT_RGBQ, 40), b = make_filled(1, 1, BMP_FMT_RGBQ, 80);
    const OwnedBitmap dest = make_filled(1, 1, BMP_FMT_RGBQ, 7);
    compose_color(dest, a, b, weights_of({0}), weights_of({4096}), 0x44332211);
    EXPECT_EQ(bytes_at(line(dest, 0), 4), plain() ? (Bytes{0x33, 0x22, 0x11, 7}) : (Bytes{0x11, 0x22, 0x33, 0x44}));
    compose_color(dest, a, b, weights_of({2048}), weights_of({2048}), 0x44332211);
    EXPECT_EQ(bytes_at(line(dest, 0), 3), Bytes(3, 60)) << "equal masks: no colour";
}

// 101/4 + 103/4 + 102/2 = 102 exactly; apart 25.25 -> 25, 25.75 -> 25, 51 -> 51.
TEST_P(Compose, BandOfRgbqRoundsOnceAtLevel0AndEachTermElsewhere) {
    const OwnedBitmap a = make_filled(1, 1, BMP_FMT_RGBQ, 101), b = make_filled(1, 1, BMP_FMT_RGBQ, 103);
    const OwnedBitmap dest = make_bitmap(1, 1, BMP_FMT_RGBQ);
    compose_color(dest, a, b, weights_of({1024}), weights_of({3072}), 0x666666);
    EXPECT_EQ(bytes_at(line(dest, 0), 3), Bytes(3, choose(102, 101)));
}

// ---------------------------------------------------------------- over a colour

TEST_P(Compose, OverAColorTheWeightIsTheSources) {
    const OwnedBitmap src = make_filled(2, 1, BMP_FMT_YUY2, 100), dest = make_bitmap(2, 1, BMP_FMT_YUY2);
    compose_color(dest, src, nullptr, weights_of({0, 4096}), nullptr, 0xc83214);
    EXPECT_EQ(bytes_at(line(dest, 0), 4), (Bytes{200, 75, 100, 60}))
        << "chroma: halfway, by the sum of the pair's weights";
    compose_color(dest, src, nullptr, weights_of({0, 0}), nullptr, 0xc83214);
    EXPECT_EQ(bytes_at(line(dest, 0), 4), (Bytes{200, 50, 200, 20}));
    compose_color(dest, src, nullptr, weights_of({4096, 4096}), nullptr, 0xc83214);
    EXPECT_EQ(bytes_at(line(dest, 0), 4), Bytes(4, 100));
}

// 101 and 100 at half: 100.5, rounded up in YUY2 at every level.
TEST_P(Compose, OverAColorYuy2RoundsHalvesUp) {
    const OwnedBitmap src = make_filled(2, 1, BMP_FMT_YUY2, 101), dest = make_bitmap(2, 1, BMP_FMT_YUY2);
    compose_color(dest, src, nullptr, weights_of({2048, 2048}), nullptr, 0x646464);
    EXPECT_EQ(bytes_at(line(dest, 0), 4), Bytes(4, 101));
}

TEST_P(Compose, OverAColorRgbqIsTheSameAtEveryLevel) {
    const OwnedBitmap src = bitmap_of(BMP_FMT_RGBQ, {101, 101, 101, 101, 9, 9, 9, 9, 0, 0, 0, 0}),
                      dest = make_filled(3, 1, BMP_FMT_RGBQ, 7);
    compose_color(dest, src, nullptr, weights_of({2048, 0, 4096}), nullptr, 0x44332264);
    EXPECT_EQ(bytes_at(line(dest, 0), 12), (Bytes{100, (101 + 0x22) / 2, 76, 7, 0x64, 0x22, 0x33, 7, 0, 0, 0, 7}))
        << "truncated, bits 0..7 to byte 0, the fourth byte kept";
}

TEST_P(Compose, ColorLeavesAnOddLastYuy2PixelAlone) {
    const OwnedBitmap src = make_filled(5, 2, BMP_FMT_YUY2, 90), w = make_weights(5, 2, 0);
    for (const bool band : {false, true}) {
        const OwnedBitmap dest = make_filled(5, 2, BMP_FMT_YUY2, 7);
        compose_color(dest, src, band ? make_filled(5, 2, BMP_FMT_YUY2, 90) : nullptr, w,
                      band ? make_weights(5, 2, 4096) : nullptr, 0x212223);
        for (int y = 0; y < 2; ++y) {
            EXPECT_EQ(bytes_at(line(dest, y), 8), (Bytes{0x21, 0x22, 0x21, 0x23, 0x21, 0x22, 0x21, 0x23})) << y;
            EXPECT_EQ(bytes_at(line(dest, y) + 8, 8), Bytes(8, 7)) << y;
        }
    }
}

// ---------------------------------------------------------------- properties

/// Random weights 0..4096, noise, one line of each format.
class ComposeProperties : public Compose {
protected:
    static OwnedBitmap random_weights(Random& random, int width) {
        OwnedBitmap w = make_bitmap(width, 1, BMP_FMT_PWRW);
        for (int x = 0; x < width; ++x)
            weights(w, 0)[x] = static_cast<uint16_t>(random.below(4097));
        return w;
    }
};

TEST_P(ComposeProperties, ComplementingTheWeightsSwapsTheSources) {
    for (int round = 0; round < rounds(100); ++round) {
        Random random(round_seed(round));
        const int width = 2 * random.between(1, 60);
        const int format = random.pick({BMP_FMT_YUY2, BMP_FMT_RGBQ});
        const OwnedBitmap a = make_noise(width, 1, format, random.next()),
                          b = make_noise(width, 1, format, random.next());
        const OwnedBitmap w = random_weights(random, width), swapped = random_weights(random, width);
        const int padded = w->pitch / 2;
        for (int x = 0; x < padded; ++x)
            weights(swapped, 0)[x] = static_cast<uint16_t>(4096 - weights(w, 0)[x]);
        const OwnedBitmap one = make_bitmap(width, 1, format), other = make_bitmap(width, 1, format);
        compose(one, a, b, w);
        compose(other, b, a, swapped);
        ASSERT_EQ(snapshot(one), snapshot(other)) << how_to_repeat(random);
        const int level = random.between(0, 4096);
        compose_at(one, a, b, level);
        compose_at(other, b, a, 4096 - level);
        ASSERT_EQ(snapshot(one), snapshot(other)) << level << how_to_repeat(random);
    }
}

// Where both sources agree, weights do not show: exactly at level 0, at most one less where terms are cut apart.
TEST_P(ComposeProperties, ConstantsStayConstant) {
    for (int byte = 0; byte < 256; ++byte) {
        Random random(round_seed(byte));
        const OwnedBitmap src = make_filled(64, 1, BMP_FMT_YUY2, byte), w = random_weights(random, 64),
                          dest = make_bitmap(64, 1, BMP_FMT_YUY2);
        compose(dest, src, src, w);
        for (int i = 0; i < 128; ++i) {
            const int weight = weights(w, 0)[i % 2 ? i / 4 * 2 : i / 2];
            const int want = plain() || byte * weight % 4096 == 0 ? byte : byte - 1;
            ASSERT_EQ(line(dest, 0)[i], want) << i << " weight " << weight;
        }
        const OwnedBitmap masks = make_bitmap(64, 1, BMP_FMT_A8);
        for (int x = 0; x < 64; ++x)
            line(masks, 0)[x] = static_cast<uint8_t>(random.below(129));
        compose(dest, src, src, masks);
        ASSERT_EQ(bytes_at(line(dest, 0), 128), Bytes(128, byte)) << "byte masks are exact at every level";
        compose_at(dest, src, src, random.between(0, 4096));
        ASSERT_EQ(bytes_at(line(dest, 0), 128), Bytes(128, byte)) << "levels round to nearest or truncate exactly";
    }
}

ZEPBMP_FOR_ALL_TABLES(Compose);
ZEPBMP_FOR_ALL_TABLES(ComposeProperties);

}  // namespace
}  // namespace zepbmp::test
