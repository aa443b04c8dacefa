/// \file
/// bmp_map_rect: cases worked out by hand. Units: 4096 to a pixel across, 2048 to a line down.
#include <gtest/gtest.h>

#include "support/rects.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

using Bytes = std::vector<int>;
using Weights = std::vector<int>;

struct Ends {
    float start, end;
};

/// Byte of every destination before a call; weights where a test does not say otherwise.
constexpr int kKept = 238;

Bytes repeated(const Bytes& bytes, int times) {
    Bytes all;
    for (int i = 0; i < times; ++i)
        all.insert(all.end(), bytes.begin(), bytes.end());
    return all;
}

class RectLiteral : public WithTables {
protected:
    /// One line of RGB8 onto a line of `width` pixels.
    static Bytes across(const Bytes& source, Ends from, int width, Ends to) {
        const OwnedBitmap dest = make_filled(width, 1, BMP_FMT_RGB8, kKept),
                          src = make_picture(static_cast<int>(source.size()), BMP_FMT_RGB8, {source});
        map_rect({.dest = dest.get(),
                  .to = {to.start, 0, to.end, 1},
                  .src = src.get(),
                  .from = {from.start, 0, from.end, 1}});
        return bytes_of_line(dest, 0);
    }
    /// One column of RGB8 onto a column of `height` lines.
    static Bytes down(const Bytes& source, Ends from, int height, Ends to, uint32_t flags = 0,
                      uint32_t create_flags = 0) {
        std::vector<Bytes> lines;
        for (const int byte : source)
            lines.push_back({byte});
        const OwnedBitmap dest = make_filled(1, height, BMP_FMT_RGB8, kKept),
                          src = make_picture(1, BMP_FMT_RGB8, lines, create_flags);
        map_rect({.dest = dest.get(),
                  .to = {0, to.start, 1, to.end},
                  .src = src.get(),
                  .from = {0, from.start, 1, from.end},
                  .flags = flags});
        Bytes column;
        for (int y = 0; y < height; ++y)
            column.push_back(line(dest, y)[0]);
        return column;
    }

    /// Lines of a colour picture with a weight for each pixel, and the same after a mapping.
    struct Picture {
        int width, format;
        std::vector<Bytes> lines;
        std::vector<Weights> weights;
    };
    static void expect_mapped(const Picture& before, const Area& to, const OwnedBitmap& src, const Area& from,
                              const Picture& after, uint32_t flags = 0) {
        const OwnedBitmap dest = make_picture(before.width, before.format, before.lines),
                          map = make_weights(before.width, static_cast<int>(before.lines.size()), kKept);
        for (size_t y = 0; y < before.weights.size(); ++y)
            for (size_t x = 0; x < before.weights[y].size(); ++x)
                weights(map, static_cast<int>(y))[x] = static_cast<uint16_t>(before.weights[y][x]);
        map_rect(
            {.dest = dest.get(), .weight_map = map.get(), .to = to, .src = src.get(), .from = from, .flags = flags});
        for (size_t y = 0; y < after.lines.size(); ++y) {
            EXPECT_EQ(bytes_at(line(dest, static_cast<int>(y)), static_cast<int>(after.lines[y].size())),
                      after.lines[y])
                << "line " << y;
            const uint16_t* const got = weights(map, static_cast<int>(y));
            EXPECT_EQ(Weights(got, got + after.weights[y].size()), after.weights[y]) << "line " << y;
        }
    }

    const UseTables use_{GetParam()};
};

// ---------------------------------------------------------------- scale and place

class RectScale : public RectLiteral {};

TEST_P(RectScale, SameSizeCopies) {
    const OwnedBitmap dest = make_filled(5, 3, BMP_FMT_RGB8, kKept), src = numbered_bytes(5, 3, BMP_FMT_RGB8, 7);
    map_rect({.dest = dest.get(), .to = whole(dest), .src = src.get(), .from = whole(src)});
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(bytes_of_line(dest, y), bytes_of_line(src, y));
}

TEST_P(RectScale, HalvingTruncatesTheMeanOfFour) {
    const OwnedBitmap dest = make_filled(2, 1, BMP_FMT_RGB8, kKept),
                      src = make_picture(4, BMP_FMT_RGB8, {{1, 2, 255, 255}, {3, 5, 255, 254}});
    map_rect({.dest = dest.get(), .to = whole(dest), .src = src.get(), .from = whole(src)});
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{2, 254}));  // 2.75, 254.75
}

TEST_P(RectScale, EnlargingRepeats) {
    EXPECT_EQ(across({10, 20}, {0, 2}, 6, {0, 6}), (Bytes{10, 10, 10, 20, 20, 20}));
    EXPECT_EQ(down({10, 20}, {0, 2}, 6, {0, 6}), (Bytes{10, 10, 10, 20, 20, 20}));
}

// Three columns for two pixels: 8192 / 3, rounded up, is 2731. So the columns have 2731, 1365 + 1366 and 2730 units.
TEST_P(RectScale, UnitsOfAColumnAreRoundedUp) {
    EXPECT_EQ(across({255, 0, 0}, {0, 3}, 2, {0, 2}), (Bytes{170, 0}));  // 255 * 2731 / 4096 = 170.02
    EXPECT_EQ(across({0, 255, 0}, {0, 3}, 2, {0, 2}), (Bytes{84, 85}));  // 84.98 and 85.04
    EXPECT_EQ(across({0, 0, 255}, {0, 3}, 2, {0, 2}), (Bytes{0, 169}));  // 255 * 2730 / 4096 = 169.96
}

// Three rows for two lines: 4096 / 3, rounded up, is 1366: rows of 1366, 682 + 684 and 1364 units.
TEST_P(RectScale, UnitsOfARowAreRoundedUp) {
    EXPECT_EQ(down({255, 0, 0}, {0, 3}, 2, {0, 2}), (Bytes{170, 0}));
    EXPECT_EQ(down({0, 255, 0}, {0, 3}, 2, {0, 2}), (Bytes{84, 85}));
    EXPECT_EQ(down({0, 0, 255}, {0, 3}, 2, {0, 2}), (Bytes{0, 169}));
}

// What is rounded up is what exceeds a whole number by more than 1/100000. Here 102376 * 4096 / 102401 = 4095 + 1/102401
// stays 4095, so the first pixel has one unit of the second column: 255 * 4095 / 4096 = 254.9.
TEST_P(RectScale, AHundredThousandthIsNotRoundedUp) {
    Bytes source(26, 0);
    source[0] = 255;
    const Bytes got = across(source, {0, 25 + 1.0f / 4096}, 25, {0, 102376.0f / 4096});
    EXPECT_EQ(got[0], 254);
    EXPECT_EQ(got[1], 0);
}

// Five rows for a line: 2048 / 5, rounded up, is 410; the last one has 408.
TEST_P(RectScale, ManyRowsToALine) {
    EXPECT_EQ(down({255, 0, 0, 0, 0}, {0, 5}, 1, {0, 1}), Bytes{51});  // 255 * 410 / 2048 = 51.05
    EXPECT_EQ(down({0, 0, 0, 0, 255}, {0, 5}, 1, {0, 1}), Bytes{50});  // 255 * 408 / 2048 = 50.8
}

TEST_P(RectScale, SourceBeginsInsideAPixel) {
    EXPECT_EQ(across({0, 100, 200, 40}, {0.5f, 2.5f}, 2, {0, 2}), (Bytes{50, 150}));
    EXPECT_EQ(across({0, 100, 200, 40}, {1.25f, 3.25f}, 2, {0, 2}), (Bytes{125, 160}));
    EXPECT_EQ(down({0, 100, 200, 40}, {0.5f, 2.5f}, 2, {0, 2}), (Bytes{50, 150}));
    EXPECT_EQ(down({0, 100, 200, 40}, {1.25f, 3.25f}, 2, {0, 2}), (Bytes{125, 160}));
}

// 2731 units to a column, start 2731 / 2 = 1365.5, truncated: the first column has 1366 left. The pixels take 1366 and
// 2730; 1, 2731 and 1364.
TEST_P(RectScale, SourceStartIsTruncated) {
    EXPECT_EQ(across({255, 0, 0, 0}, {0.5f, 3.5f}, 2, {0, 2}), (Bytes{85, 0}));   // 85.04
    EXPECT_EQ(across({0, 255, 0, 0}, {0.5f, 3.5f}, 2, {0, 2}), (Bytes{169, 0}));  // 169.96 and 0.06
    EXPECT_EQ(across({0, 0, 255, 0}, {0.5f, 3.5f}, 2, {0, 2}), (Bytes{0, 170}));
    EXPECT_EQ(across({0, 0, 0, 255}, {0.5f, 3.5f}, 2, {0, 2}), (Bytes{0, 84}));  // 84.9
}

TEST_P(RectScale, PartsOfPixelsFade) {
    EXPECT_EQ(across({100, 200, 51}, {0, 3}, 5, {0.5f, 3.5f}), (Bytes{50, 150, 125, 25, kKept}));  // 125.5, 25.5
    EXPECT_EQ(down({100, 200}, {0, 2}, 4, {0.25f, 2.25f}), (Bytes{75, 175, 50, kKept}));

    const OwnedBitmap corners = make_filled(3, 3, BMP_FMT_RGB8, kKept), src = make_filled(1, 1, BMP_FMT_RGB8, 200);
    map_rect({.dest = corners.get(), .to = {0.5f, 0.5f, 1.5f, 1.5f}, .src = src.get(), .from = whole(src)});
    EXPECT_EQ(bytes_of_line(corners, 0), (Bytes{50, 50, kKept}));
    EXPECT_EQ(bytes_of_line(corners, 1), (Bytes{50, 50, kKept}));
    EXPECT_EQ(bytes_of_line(corners, 2), Bytes(3, kKept));
}

TEST_P(RectScale, InsideOnePixel) {
    const OwnedBitmap dest = make_filled(3, 2, BMP_FMT_RGB8, kKept), src = make_filled(9, 9, BMP_FMT_RGB8, 255);
    map_rect({.dest = dest.get(), .to = {1.25f, 0.5f, 1.5f, 0.75f}, .src = src.get(), .from = whole(src)});
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{kKept, 15, kKept}));  // 255 / 16
    EXPECT_EQ(bytes_of_line(dest, 1), Bytes(3, kKept));
}

TEST_P(RectScale, StartsAndEndsAreTruncatedToUnits) {
    constexpr float kHalfUnit = 0.5f / 4096, kHalfLineUnit = 0.5f / 2048;
    EXPECT_EQ(across({255, 255}, {0, 2}, 3, {0, 1 + kHalfUnit}), (Bytes{255, kKept, kKept}));
    EXPECT_EQ(across({255, 255}, {0, 2}, 3, {kHalfUnit, 1}), (Bytes{255, kKept, kKept}));
    EXPECT_EQ(across({255, 255}, {0, 2}, 3, {0, 2 - kHalfUnit}), (Bytes{255, 254, kKept}));  // 4095 of 4096
    EXPECT_EQ(down({255, 255}, {0, 2}, 3, {0, 1 + kHalfLineUnit}), (Bytes{255, kKept, kKept}));
    EXPECT_EQ(down({255, 255}, {0, 2}, 3, {kHalfLineUnit, 1}), (Bytes{255, kKept, kKept}));
    EXPECT_EQ(down({255, 255}, {0, 2}, 3, {0, 2 - kHalfLineUnit}), (Bytes{255, 254, kKept}));  // 2047 of 2048
}

TEST_P(RectScale, RectanglesWithoutAUnitDrawNothing) {
    constexpr float kUnit = 1.0f / 4096;
    for (const Ends& ends : {Ends{1, 1}, Ends{2, 1}, Ends{1.5f, 0.5f}, Ends{1, 1 + kUnit / 2},
                             Ends{1 + kUnit / 4, 1 + kUnit * 3 / 4}, Ends{3, 3}, Ends{-2, 0}, Ends{4, 1}}) {
        EXPECT_EQ(across({1, 2, 3}, {0, 3}, 3, ends), Bytes(3, kKept)) << ends.start << " to " << ends.end;
        EXPECT_EQ(down({1, 2, 3}, {0, 3}, 3, ends), Bytes(3, kKept)) << ends.start << " to " << ends.end;
    }
}

// ---------------------------------------------------------------- clipping

class RectClipping : public RectLiteral {
protected:
    /// The same happens in both directions.
    static void expect(const Bytes& source, Ends from, int size, Ends to, const Bytes& want) {
        EXPECT_EQ(across(source, from, size, to), want);
        EXPECT_EQ(down(source, from, size, to), want);
    }
};

TEST_P(RectClipping, SourceStartsBeforeItsFirstPixel) {
    expect({1, 2, 3, 4}, {-2, 2}, 4, {0, 4}, {kKept, kKept, 1, 2});
    // Twice as large: the destination's start moves by -(-1) * 8 / 4 = 2.
    expect({1, 2, 3, 4}, {-1, 3}, 8, {0, 8}, {kKept, kKept, 1, 1, 2, 2, 3, 3});
}

TEST_P(RectClipping, DestinationStartsBeforeItsFirstPixel) {
    expect({1, 2, 3, 4}, {0, 4}, 4, {-2, 2}, {3, 4, kKept, kKept});
    // Twice as large: the source's start moves by -(-2) * 4 / 8 = 1.
    expect({1, 2, 3, 4}, {0, 4}, 8, {-2, 6}, {2, 2, 3, 3, 4, 4, kKept, kKept});
}

TEST_P(RectClipping, BothStartBefore) {
    // The source first: the destination then starts at -3 + 1 = -2, so the source at 2.
    expect({1, 2, 3, 4, 5, 6, 7, 8}, {-1, 7}, 8, {-3, 5}, {3, 4, 5, 6, 7, kKept, kKept, kKept});
    // The destination starts at -1 + 3 = 2.
    expect({1, 2, 3, 4, 5, 6, 7, 8}, {-3, 5}, 8, {-1, 7}, {kKept, kKept, 1, 2, 3, 4, 5, kKept});
}

TEST_P(RectClipping, SourceStartsBehindItsLastPixel) {
    // From 6 back to 2, half of it behind the end: the destination starts at 0 - 2 * 4 / -4 = 2, the source at 4, and
    // whatever lies behind the last pixel is the last pixel.
    expect({1, 2, 3, 4}, {6, 2}, 4, {0, 4}, {kKept, kKept, 4, 4});
}

TEST_P(RectClipping, DestinationStartsBehindItsLastPixel) {
    expect({1, 2, 3, 4}, {0, 4}, 4, {6, 2}, Bytes(4, kKept));
    expect({1, 2, 3, 4}, {4, 0}, 4, {6, 4}, Bytes(4, kKept));
}

TEST_P(RectClipping, EndsAreNotClipped) {
    // The end stays where it is although the start has moved.
    expect({1, 2, 3, 4}, {-4, 4}, 8, {0, 8}, {kKept, kKept, kKept, kKept, 1, 2, 3, 4});
    expect({1, 2, 3, 4, 5, 6, 7, 8}, {0, 8}, 4, {-4, 4}, {5, 6, 7, 8});
}

// The start moves to 7 - 8e-8, which single precision stores as 7. Unrounded it would lie a unit before pixel 7, and
// pixel 6 would have become 255 / 4096 = 0.
TEST_P(RectClipping, ClippedStartsAreSinglePrecision) {
    constexpr float kStep20 = 1.0f / (1 << 20), kStep22 = 1.0f / (1 << 22);
    Bytes want(15, kKept);
    std::fill_n(want.begin() + 7, 7, 255);
    EXPECT_EQ(across({255, 255}, {-1.5f, 1.5f + kStep22}, 15, {0, 14 + kStep20}), want);
    EXPECT_EQ(down({255, 255}, {-1.5f, 1.5f + kStep22}, 15, {0, 14 + kStep20}), want);
}

// ---------------------------------------------------------------- at the source's end, and past it

class RectSourceEnd : public RectLiteral {};

// Turned round or empty, a source has columns of one unit each.
TEST_P(RectSourceEnd, TurnedRoundSourceIsWalkedInSingleUnits) {
    EXPECT_EQ(across({0, 0, 0, 0, 0, 0, 0, 255}, {3, 1}, 2, {0, 2}), (Bytes{254, 255}));  // 255 * 4092 / 4096
    EXPECT_EQ(across({255, 255, 255, 255, 255, 255, 255, 0}, {3, 1}, 2, {0, 2}), (Bytes{0, 0}));
    EXPECT_EQ(down({0, 0, 0, 0, 0, 0, 0, 255}, {3, 1}, 2, {0, 2}), (Bytes{254, 255}));  // 255 * 2044 / 2048
}

TEST_P(RectSourceEnd, EmptySourceIsWalkedInSingleUnits) {
    EXPECT_EQ(across({0, 0, 0, 255}, {2, 2}, 2, {0, 2}), (Bytes{254, 255}));  // 255 * 4095 / 4096
    EXPECT_EQ(across({0, 0, 255, 0}, {2, 2}, 2, {0, 2}), (Bytes{0, 0}));
    EXPECT_EQ(down({0, 0, 255}, {1, 1}, 2, {0, 2}), (Bytes{254, 255}));  // 255 * 2047 / 2048
    EXPECT_EQ(across({0, 0, 7}, {3, 3}, 2, {0, 2}), (Bytes{7, 7}));
}

// A source of one unit: 127 pixels wide, its column spans 127 * 2^24 units; 128 pixels wide it would span 2^31, which
// no 32-bit integer holds, and spans 1.
TEST_P(RectSourceEnd, ColumnsSpanLessThan31Bits) {
    constexpr float kUnit = 1.0f / 4096;
    EXPECT_EQ(across({9, 9, 50, 70}, {2, 2 + kUnit}, 127, {0, 127}), Bytes(127, 50));
    Bytes want(128, 70);
    want[0] = 69;  // (50 + 70 * 4095) / 4096 = 69.995
    EXPECT_EQ(across({9, 9, 50, 70}, {2, 2 + kUnit}, 128, {0, 128}), want);
}

// 127 * 2^24 units to a column, a hundred columns before the start.
TEST_P(RectSourceEnd, StartsHave64Bits) {
    Bytes source(102, 3);
    source[100] = 77;
    EXPECT_EQ(across(source, {100, 100 + 1.0f / 4096}, 127, {0, 127}), Bytes(127, 77));
}

TEST_P(RectSourceEnd, SourceWithoutAPixelDrawsNothing) {
    for (const auto& [width, height] : {std::pair{0, 3}, {3, 0}}) {
        const OwnedBitmap src = make_bitmap(width, height, BMP_FMT_RGBQ), dest = make_filled(3, 3, BMP_FMT_RGBQ, kKept),
                          map = make_weights(3, 3, 77);
        const std::vector<uint8_t> before = snapshot(dest), weights_before = snapshot(map);
        map_rect(
            {.dest = dest.get(), .weight_map = map.get(), .to = whole(dest), .src = src.get(), .from = whole(src)});
        EXPECT_EQ(snapshot(dest), before);
        EXPECT_EQ(snapshot(map), weights_before);
    }
}

// ---------------------------------------------------------------- fields

class RectFields : public RectLiteral {
protected:
    static constexpr uint32_t kEven = BMP_FIELD, kOdd = BMP_FIELD | BMP_FIELD_ODD;
    static constexpr uint32_t kInterlaced = 2;
};

TEST_P(RectFields, LinesOfTheOtherFieldStay) {
    const Bytes source = {10, 20, 30, 40, 50};
    EXPECT_EQ(down(source, {0, 5}, 5, {0, 5}, kEven), (Bytes{10, kKept, 30, kKept, 50}));
    EXPECT_EQ(down(source, {0, 5}, 5, {0, 5}, kOdd), (Bytes{kKept, 20, kKept, 40, kKept}));
    // The parity is the line's, wherever the rectangle starts, and the source moves on over lines that stay.
    EXPECT_EQ(down(source, {0, 4}, 5, {1, 5}, kEven), (Bytes{kKept, kKept, 20, kKept, 40}));
    EXPECT_EQ(down(source, {0, 4}, 5, {1, 5}, kOdd), (Bytes{kKept, 10, kKept, 30, kKept}));
    // Rows of 1536 units: line 1 has 1024 of row 0, line 2 the rest of it and row 1, line 3 row 2 and 512 of row 3.
    EXPECT_EQ(down(source, {0, 4}, 5, {1.5f, 4.5f}, kOdd), (Bytes{kKept, 5, kKept, 32, kKept}));
}

TEST_P(RectFields, OddAloneChangesNothing) {
    const Bytes source = {0, 200, 0, 200, 0, 200, 0, 200};
    for (const uint32_t create_flags : {0u, 1u, 2u, 3u})
        EXPECT_EQ(down(source, {0, 8}, 4, {0, 4}, BMP_FIELD_ODD, create_flags), Bytes(4, 100)) << create_flags;
}

// Even lines 0, odd lines 200: a frame is 100 on average.
TEST_P(RectFields, InterlacedSourceIsReadAsOneField) {
    const Bytes source = {0, 200, 0, 200, 0, 200, 0, 200};
    for (const uint32_t create_flags : {0u, 1u}) {
        EXPECT_EQ(down(source, {0, 8}, 4, {0, 4}, kEven, create_flags), (Bytes{100, kKept, 100, kKept}));
        EXPECT_EQ(down(source, {0, 8}, 4, {0, 4}, kOdd, create_flags), (Bytes{kKept, 100, kKept, 100}));
    }
    for (const uint32_t create_flags : {2u, 3u}) {
        EXPECT_EQ(down(source, {0, 8}, 4, {0, 4}, kEven, create_flags), (Bytes{0, kKept, 0, kKept}));
        EXPECT_EQ(down(source, {0, 8}, 4, {0, 4}, kOdd, create_flags), (Bytes{kKept, 200, kKept, 200}));
        EXPECT_EQ(down(source, {0, 8}, 4, {0, 4}, 0, create_flags), Bytes(4, 100));
    }
}

TEST_P(RectFields, FrameInPlaceIsCopied) {
    const Bytes source = {10, 20, 30, 40, 50, 60, 70, 80};
    EXPECT_EQ(down(source, {0, 8}, 8, {0, 8}, kEven, kInterlaced), (Bytes{10, kKept, 30, kKept, 50, kKept, 70, kKept}));
    EXPECT_EQ(down(source, {0, 8}, 8, {0, 8}, kOdd, kInterlaced), (Bytes{kKept, 20, kKept, 40, kKept, 60, kKept, 80}));
    // Five lines: three in the even field, two in the odd one.
    const Bytes five = {10, 20, 30, 40, 50};
    EXPECT_EQ(down(five, {0, 5}, 5, {0, 5}, kEven, kInterlaced), (Bytes{10, kKept, 30, kKept, 50}));
    EXPECT_EQ(down(five, {0, 5}, 5, {0, 5}, kOdd, kInterlaced), (Bytes{kKept, 20, kKept, 40, kKept}));
}

// Half the lines, each field's rows 0, 200, 0, 200. The even field is read from 0.25 on: 3/4 of one row, 1/4 of the
// next. The odd one from -0.25 on, which moves the destination by 0.25: line 1 has 1/4 of row 0 and 3/4 of row 1.
TEST_P(RectFields, FieldsLieAQuarterOfARowApart) {
    EXPECT_EQ(down({0, 9, 200, 9, 0, 9, 200, 9}, {0, 8}, 4, {0, 4}, kEven, kInterlaced), (Bytes{50, kKept, 50, kKept}));
    EXPECT_EQ(down({9, 0, 9, 200, 9, 0, 9, 200}, {0, 8}, 4, {0, 4}, kOdd, kInterlaced),
              (Bytes{kKept, 150, kKept, 150}));
}

// The last frame line is field rows 3.75 to 4.25, of which row 4 does not exist.
TEST_P(RectFields, RowBehindTheFieldsLastIsTheLast) {
    const Bytes source = {10, 20, 30, 40, 50, 60, 70, 80};
    EXPECT_EQ(down(source, {7, 8}, 1, {0, 1}, kEven, kInterlaced), Bytes{70});
    EXPECT_EQ(down(source, {7, 8}, 2, {0, 2}, kOdd, kInterlaced), (Bytes{kKept, 80}));
}

// Five lines are 2.5 rows: the source starts 1.25 rows behind its end, so the destination starts 1.25 lines later, at
// 2.25; line 2 is covered by 3/4.
TEST_P(RectFields, ClippingHalvesTheHeightExactly) {
    EXPECT_EQ(down({1, 2, 3, 4, 200}, {7, 1}, 4, {1, 4}, kEven, kInterlaced), (Bytes{kKept, kKept, 150, kKept}));
}

TEST_P(RectFields, FieldWithoutALineDrawsNothing) {
    EXPECT_EQ(down({77}, {0, 1}, 4, {0, 4}, kOdd, kInterlaced), Bytes(4, kKept));
    EXPECT_EQ(down({77}, {0, 1}, 4, {0, 4}, kEven, kInterlaced), (Bytes{77, kKept, 77, kKept}));
    const OwnedBitmap src = make_filled(4, 1, BMP_FMT_YUY2, 5), map = make_weights(4, 4, 77),
                      dest = make_filled(4, 4, BMP_FMT_YUY2, kKept);
    src->create_flags = kInterlaced;
    map_rect({.dest = dest.get(),
              .weight_map = map.get(),
              .to = whole(dest),
              .src = src.get(),
              .from = whole(src),
              .flags = kOdd});
    EXPECT_EQ(bytes_of_line(dest, 1), Bytes(8, kKept));
    EXPECT_EQ(all_weights(map), std::vector<Weights>(4, Weights(4, 77)));
}

// ---------------------------------------------------------------- what is drawn at all

class RectPaths : public RectLiteral {
protected:
    static bool draws(int format, bool with_map, const int32_t* src_size = nullptr) {
        const OwnedBitmap dest = make_filled(4, 4, format, kKept), map = make_weights(4, 4, 77),
                          src = make_filled(4, 4, format, 5);
        const std::vector<uint8_t> before = snapshot(dest), weights_before = snapshot(map);
        map_rect({.dest = dest.get(),
                  .weight_map = with_map ? map.get() : nullptr,
                  .to = whole(dest),
                  .src = src.get(),
                  .src_size = src_size,
                  .from = whole(src)});
        const bool drawn = snapshot(dest) != before;
        EXPECT_EQ(snapshot(map) != weights_before, drawn && with_map) << format;
        return drawn;
    }
};

TEST_P(RectPaths, FormatAndMapBelongTogether) {
    for (int format = BMP_FMT_YUY2; format <= BMP_FMT_A8; ++format) {
        EXPECT_EQ(draws(format, false), format == BMP_FMT_RGB8) << format;
        EXPECT_EQ(draws(format, true), format == BMP_FMT_YUY2 || format == BMP_FMT_RGBQ) << format;
    }
}

TEST_P(RectPaths, ASourceSizeDrawsNothing) {
    const int32_t size[2] = {4, 4};
    EXPECT_FALSE(draws(BMP_FMT_RGB8, false, size));
    EXPECT_FALSE(draws(BMP_FMT_RGBQ, true, size));
    EXPECT_FALSE(draws(BMP_FMT_YUY2, true, size));
}

TEST_P(RectPaths, ASourceSizeNeedsNoSource) {
    const int32_t size[2] = {4, 4};
    for (const uint32_t flags : {0u, BMP_FIELD, BMP_FIELD | BMP_FIELD_ODD}) {
        const OwnedBitmap dest = make_filled(4, 4, BMP_FMT_RGB8, kKept);
        map_rect({.dest = dest.get(), .to = {-1, -1, 3, 3}, .src_size = size, .from = {-1, 6, 3, 3}, .flags = flags});
        EXPECT_EQ(bytes_of_line(dest, 1), Bytes(4, kKept)) << flags;
    }
}

TEST_P(RectPaths, TheSourcesFormatIsTheDestinations) {
    const OwnedBitmap src = numbered_bytes(2, 1, BMP_FMT_QUAD4, 20), dest = make_filled(2, 1, BMP_FMT_RGBQ, kKept),
                      map = make_weights(2, 1, 0);
    map_rect({.dest = dest.get(), .weight_map = map.get(), .to = whole(dest), .src = src.get(), .from = whole(src)});
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{20, 21, 22, kKept, 24, 25, 26, kKept}));
}

// ---------------------------------------------------------------- RGBQ

class RectRgbq : public RectLiteral {
protected:
    /// A pixel onto a part of one: what it becomes in bytes 0 to 2 where the source is `now`, and its weight.
    struct Mixed {
        int byte, weight;
        bool operator==(const Mixed&) const = default;
    };
    static Mixed mixed(int old, int weight, int now, const Area& to) {
        const OwnedBitmap dest = make_picture(1, BMP_FMT_RGBQ, {{old, old, old, 99}}), map = make_weights(1, 1, weight),
                          src = make_picture(1, BMP_FMT_RGBQ, {{now, now, now, 33}});
        map_rect({.dest = dest.get(), .weight_map = map.get(), .to = to, .src = src.get(), .from = whole(src)});
        const Bytes got = bytes_of_line(dest, 0);
        EXPECT_EQ(got, (Bytes{got[0], got[0], got[0], 99}));
        return {got[0], weights(map, 0)[0]};
    }
    static constexpr Area kHalf = {0.5f, 0, 1, 1};
};

TEST_P(RectRgbq, WholePixelsAreCopiedOverAnyWeight) {
    const OwnedBitmap src = numbered_bytes(3, 2, BMP_FMT_RGBQ, 1);
    const Picture before = {
        3, BMP_FMT_RGBQ, {Bytes(12, kKept), Bytes(12, kKept)}, {{0, 4096, 60000}, {1, 2048, 65535}}};
    const Picture after = {
        3,
        BMP_FMT_RGBQ,
        {{1, 2, 3, kKept, 5, 6, 7, kKept, 9, 10, 11, kKept}, {51, 52, 53, kKept, 55, 56, 57, kKept, 59, 60, 61, kKept}},
        {Weights(3, 4096), Weights(3, 4096)}};
    expect_mapped(before, {0, 0, 3, 2}, src, {0, 0, 3, 2}, after);
    expect_mapped(after, {0, 0, 3, 2}, src, {0, 0, 3, 2}, after);
}

// Nothing is there yet: a part of a pixel takes the colour whole, and the weight of the part.
TEST_P(RectRgbq, PartsKeepTheirColourOnAClearedMap) {
    const OwnedBitmap src = make_picture(2, BMP_FMT_RGBQ, {{10, 20, 31, 1, 11, 23, 34, 2}});
    expect_mapped({4, BMP_FMT_RGBQ, {Bytes(16, kKept)}, {{0, 0, 0, 0}}}, {0.5f, 0, 2.5f, 1}, src, {0, 0, 2, 1},
                  {4,
                   BMP_FMT_RGBQ,
                   {{10, 20, 31, kKept, 10, 21, 32, kKept, 11, 23, 34, kKept, kKept, kKept, kKept, kKept}},  // 10.5 ...
                   {{2048, 4096, 2048, 0}}});
    EXPECT_EQ(mixed(kKept, 0, 7, {0.5f, 0.5f, 1, 1}), (Mixed{7, 1024}));
    EXPECT_EQ(mixed(kKept, 0, 7, {0.75f, 0, 1, 0.25f}), (Mixed{7, 256}));
    EXPECT_EQ(mixed(kKept, 0, 7, {0, 0, 1.0f / 4096, 1.0f / 2048}), (Mixed{7, 0}));  // one unit of 2^23
}

TEST_P(RectRgbq, PartsAreMixedByTheStoredWeight) {
    EXPECT_EQ(mixed(200, 2048, 100, kHalf), (Mixed{150, 4096}));
    EXPECT_EQ(mixed(7, 4096, 100, kHalf), (Mixed{38, 6144}));                // (100 + 2 * 7) / 3
    EXPECT_EQ(mixed(7, 4096, 100, {0, 0.5f, 1, 1}), (Mixed{38, 6144}));      // half a line
    EXPECT_EQ(mixed(0, 1024, 255, {0.5f, 0.5f, 1, 1}), (Mixed{127, 2048}));  // 127.5
    // One unit beside a weight of 5: (255 + 10 * 5 * 2048) / (1 + 5 * 2048) = 10.02.
    EXPECT_EQ(mixed(10, 5, 255, {0, 0, 1.0f / 4096, 1.0f / 2048}), (Mixed{10, 5}));
}

TEST_P(RectRgbq, WeightsGrowPastFullAndWrap) {
    EXPECT_EQ(mixed(0, 4096, 255, kHalf).weight, 6144);
    EXPECT_EQ(mixed(0, 63488, 255, kHalf), (Mixed{7, 0}));       // 255 * 2048 / 65536 = 7.97
    EXPECT_EQ(mixed(0, 65535, 255, kHalf), (Mixed{7, 2047}));    // 255 * 2048 / 67583 = 7.7
    EXPECT_EQ(mixed(255, 65535, 0, kHalf), (Mixed{247, 2047}));  // 255 * 65535 / 67583 = 247.3; the sum has 35 bits
    EXPECT_EQ(mixed(255, 65535, 255, kHalf), (Mixed{255, 2047}));
}

TEST_P(RectRgbq, InsideAndEndsTruncateAlike) {
    const OwnedBitmap src = make_picture(14, BMP_FMT_RGBQ, {repeated({1, 10, 254, 0, 2, 13, 255, 0}, 7)});
    expect_mapped(
        {8, BMP_FMT_RGBQ, {Bytes(32, kKept)}, {Weights(8, 0)}}, {0, 0, 7, 1}, src, {0, 0, 14, 1},
        {8, BMP_FMT_RGBQ, {repeated({1, 11, 254, kKept}, 7)}, {{4096, 4096, 4096, 4096, 4096, 4096, 4096, 0}}});
}

// ---------------------------------------------------------------- YUY2

class RectYuy2 : public RectLiteral {
protected:
    static OwnedBitmap source(const Bytes& bytes) {
        return make_picture(static_cast<int>(bytes.size() / 2), BMP_FMT_YUY2, {bytes});
    }
    /// One line over one line, the whole of both.
    static void expect_line(const Bytes& before, const Weights& weights_before, Ends to, const OwnedBitmap& src,
                            Ends from, const Bytes& after, const Weights& weights_after) {
        const int width = static_cast<int>(weights_before.size());
        expect_mapped({width, BMP_FMT_YUY2, {before}, {weights_before}}, {to.start, 0, to.end, 1}, src,
                      {from.start, 0, from.end, 1}, {width, BMP_FMT_YUY2, {after}, {weights_after}});
    }
    const Bytes old_pair = {100, 60, 100, 80}, new_pair = {201, 90, 50, 20};
};

TEST_P(RectYuy2, InPlaceOnAClearedMapCopies) {
    const OwnedBitmap src = numbered_bytes(7, 2, BMP_FMT_YUY2, 3), dest = make_filled(7, 2, BMP_FMT_YUY2, kKept),
                      map = make_weights(7, 2, 0);
    map_rect({.dest = dest.get(), .weight_map = map.get(), .to = whole(dest), .src = src.get(), .from = whole(src)});
    for (int y = 0; y < 2; ++y) {
        EXPECT_EQ(bytes_of_line(dest, y), bytes_of_line(src, y));
        EXPECT_EQ(weights_of_line(map, y), Weights(7, 4096));
        // V of the last pixel lies behind the line, the luma before it is nobody's.
        EXPECT_EQ(line(dest, y)[15], line(src, y)[15]);
        EXPECT_EQ(line(dest, y)[14], kKept);
    }
}

// The first pair of a line is mixed pixel by pixel. Pixel 0: luma (201 + 100) / 2; the pair's weights are 8192, so U is
// (90 + 2 * 60) / 3 and V (20 + 2 * 80) / 3. Pixel 1: luma (50 + 100) / 2; the pair's weights are 8192 + 4096 by now: U
// (90 + 3 * 70) / 4, V (20 + 3 * 60) / 4.
TEST_P(RectYuy2, AgainInPlaceMixesTheFirstPair) {
    Bytes after = {150, 75, 75, 50};
    after.insert(after.end(), {201, 90, 50, 20, 201, 90, 50, 20});
    expect_line(repeated(old_pair, 3), Weights(6, 4096), {0, 6}, source(repeated(new_pair, 3)), {0, 6}, after,
                {8192, 8192, 4096, 4096, 4096, 4096});
}

// The partner of a last odd pixel is weight 5, behind the line.
TEST_P(RectYuy2, LastOddPixelIsMixedWithItsPairsWeights) {
    for (const auto& [partner, u, v] : {std::tuple{0, 75, 50}, {4096, 70, 60}, {8192, 67, 65}}) {  // 67.5
        const OwnedBitmap dest = make_picture(5, BMP_FMT_YUY2, {repeated(old_pair, 3)}), map = make_weights(5, 1, 4096),
                          src = make_picture(5, BMP_FMT_YUY2, {repeated(new_pair, 3)});
        weights(map, 0)[5] = static_cast<uint16_t>(partner);
        map_rect(
            {.dest = dest.get(), .weight_map = map.get(), .to = {0, 0, 5, 1}, .src = src.get(), .from = {0, 0, 5, 1}});
        EXPECT_EQ(bytes_at(line(dest, 0) + 4, 8), (Bytes{201, 90, 50, 20, 150, u, 100, v})) << partner;
        EXPECT_EQ(Weights(weights(map, 0), weights(map, 0) + 6), (Weights{8192, 8192, 4096, 4096, 8192, partner}));
    }
}

// Pixels 1 and 4 belong to pairs that are not whole; between them columns 1 and 2 make the pair (2, 3), with chroma
// from both of the source's pairs: 93.5 and 22, to nearest.
TEST_P(RectYuy2, FromAnOddPixelOn) {
    const Bytes src = {201, 90, 50, 20, 10, 97, 30, 24};
    expect_line(repeated(old_pair, 3), Weights(6, 4096), {1, 5}, source(src), {0, 4},
                {100, 70, 150, 60, 50, 94, 10, 22, 65, 72, 100, 61},  // pixel 4: U 72.3, V 61.3
                {4096, 8192, 4096, 4096, 8192, 4096});
}

// Two whole pixels behind the first pair are copied; one and a half are mixed.
TEST_P(RectYuy2, PairsAreCopiedWhereEightThousandUnitsRemain) {
    expect_line(repeated(old_pair, 2), Weights(4, 4096), {0, 4}, source(repeated(new_pair, 2)), {0, 4},
                {150, 75, 75, 50, 201, 90, 50, 20}, {8192, 8192, 4096, 4096});
    // Pixel 2: as pixel 0. Pixel 3, half: luma (50 + 2 * 100) / 3; U (90 * 2048 + 70 * 12288) / 14336 = 72.9,
    // V (20 * 2048 + 60 * 12288) / 14336 = 54.3.
    expect_line(repeated(old_pair, 2), Weights(4, 4096), {0, 3.5f}, source(repeated(new_pair, 2)), {0, 3.5f},
                {150, 75, 75, 50, 150, 72, 83, 54}, {8192, 8192, 8192, 6144});
}

// Halved: luma 1.5 everywhere, U 10.5, V 20.5. The first pair truncates, the others round to nearest.
TEST_P(RectYuy2, TheInsideRoundsToNearest) {
    expect_line(Bytes(12, kKept), Weights(6, 0), {0, 6}, source(repeated({1, 10, 2, 21, 1, 11, 2, 20}, 3)), {0, 12},
                {1, 10, 1, 20, 2, 11, 2, 21, 2, 11, 2, 21}, Weights(6, 4096));
}

// The same over two rows (1 and 2, 1.5 on average) and three (rows of 683, 683 and 682 units: 255 * 682 / 2048 = 84.9).
TEST_P(RectYuy2, TheInsideRoundsToNearestOverSeveralRows) {
    for (const int width : {4, 8}) {  // same scale, halved
        const Bytes one = repeated({1}, 2 * width), two = repeated({2}, 2 * width), none = repeated({0}, 2 * width),
                    white = repeated({255}, 2 * width);
        const Area to = {0, 0, 4, 1};
        const Picture before = {4, BMP_FMT_YUY2, {Bytes(8, kKept)}, {Weights(4, 0)}};
        const float right = static_cast<float>(width);
        expect_mapped(before, to, make_picture(width, BMP_FMT_YUY2, {one, two}), {0, 0, right, 2},
                      {4, BMP_FMT_YUY2, {{1, 1, 1, 1, 2, 2, 2, 2}}, {Weights(4, 4096)}});
        expect_mapped(before, to, make_picture(width, BMP_FMT_YUY2, {none, none, white}), {0, 0, right, 3},
                      {4, BMP_FMT_YUY2, {{84, 84, 84, 84, 85, 85, 85, 85}}, {Weights(4, 4096)}});
    }
}

// Pairs of the same scale inside one row: with f units of a column left where a pair begins, its luma, and its chroma
// by whether that column is the first or the second of its pair.
TEST_P(RectYuy2, SameScaleInOneRow) {
    constexpr int kWidth = 40;
    const OwnedBitmap src = make_noise(2 * kWidth, 1, BMP_FMT_YUY2, 5);
    const uint8_t* const s = line(src, 0);
    for (const int f : {1, 2, 3, 1024, 2047, 2048, 2049, 4000, 4094, 4095, 4096}) {
        for (const int start : {0, 1, 2, 7}) {
            const OwnedBitmap dest = make_filled(kWidth, 1, BMP_FMT_YUY2, kKept), map = make_weights(kWidth, 1, 77);
            const float left = static_cast<float>(start) + static_cast<float>(4096 - f) / 4096;
            map_rect({.dest = dest.get(),
                      .weight_map = map.get(),
                      .to = {0, 0, kWidth, 1},
                      .src = src.get(),
                      .from = {left, 0, left + kWidth, 1}});
            for (int x = 2; x < kWidth; x += 2) {
                const int a = start + x;  // the first column under the pair
                const auto luma = [&](int column) {
                    return (s[2 * column] * f + s[2 * column + 2] * (4096 - f) + 2048) >> 12;
                };
                const auto chroma = [&](int byte) {
                    const int current = s[a / 2 * 4 + byte], next = s[a / 2 * 4 + 4 + byte];
                    return a % 2 == 0 ? (current * (4096 + f) + next * (4096 - f) + 4096) >> 13
                                      : (current * f + next * (8192 - f) + 4096) >> 13;
                };
                ASSERT_EQ(bytes_at(line(dest, 0) + 2 * x, 4), (Bytes{luma(a), chroma(1), luma(a + 1), chroma(3)}))
                    << "f " << f << ", start " << start << ", pixel " << x;
                ASSERT_EQ(weights(map, 0)[x], 4096);
                ASSERT_EQ(weights(map, 0)[x + 1], 4096);
            }
        }
    }
}

// Lines that are not whole are mixed pixel by pixel. The upper half onto nothing, then the lower half: luma
// (new + old) / 2; U of pixel 0 (new + 2 * old) / 3, then of pixel 1 with weights 4096 + 2048: (new + 3 * old) / 4.
TEST_P(RectYuy2, PartsOfLinesAreMixed) {
    const Area upper = {0, 0, 4, 0.5f}, lower = {0, 0.5f, 4, 1};
    const Picture cleared = {4, BMP_FMT_YUY2, {Bytes(8, kKept)}, {Weights(4, 0)}},
                  half = {4, BMP_FMT_YUY2, {repeated(old_pair, 2)}, {Weights(4, 2048)}},
                  full = {4, BMP_FMT_YUY2, {repeated({150, 75, 75, 50}, 2)}, {Weights(4, 4096)}};
    expect_mapped(cleared, upper, source(repeated(old_pair, 2)), {0, 0, 4, 1}, half);
    expect_mapped(half, lower, source(repeated(new_pair, 2)), {0, 0, 4, 1}, full);
}

// Pixel 0: (255 * 4096 + 0 * 65535) / 69631 = 15.0; the pair's weights are 131070: 255 * 4096 / 135166 = 7.7. The new
// weight is 69631 - 65536 = 4095, so pixel 1 finds 4095 + 65535: (255 * 4096 + 7 * 69630) / 73726 = 20.8.
TEST_P(RectYuy2, WeightsWrapAndSumsDoNot) {
    expect_line({0, 0, 0, 0}, {65535, 65535}, {0, 2}, source({255, 255, 255, 255}), {0, 2}, {15, 20, 15, 20},
                {4095, 4095});
    // The other way round: 255 * 65535 / 69631 = 239.9998; 255 * 131070 / 135166 = 247.3, then
    // 247 * 69630 / 73726 = 233.3.
    expect_line({255, 255, 255, 255}, {65535, 65535}, {0, 2}, source({0, 0, 0, 0}), {0, 2}, {239, 233, 239, 233},
                {4095, 4095});
}

// One pixel, first or second of its pair: chroma goes by both weights, luma and weight are its own.
TEST_P(RectYuy2, APixelAlone) {
    expect_line(old_pair, {0, 12288}, {0, 1}, source(new_pair), {0, 1}, {201, 67, 100, 65}, {4096, 12288});
    expect_line(old_pair, {12288, 0}, {1, 2}, source(new_pair), {1, 2}, {100, 67, 50, 65}, {12288, 4096});
    expect_line(old_pair, {0, 0}, {0.25f, 0.5f}, source(new_pair), {0, 1}, {201, 90, 100, 20}, {1024, 0});
}

// U and V of a last odd column are those of its pair, of which V lies behind the line; columns behind it are the same.
TEST_P(RectYuy2, OddSourceHasItsLastPair) {
    const OwnedBitmap src = make_picture(3, BMP_FMT_YUY2, {{9, 9, 9, 9, 40, 50, 60, 70}});
    expect_line(Bytes(8, kKept), Weights(4, 0), {0, 4}, src, {2, 3}, {40, 50, 40, 70, 40, 50, 40, 70},
                Weights(4, 4096));
    expect_line(Bytes(8, kKept), Weights(4, 0), {0, 4}, src, {3, 3}, {40, 50, 40, 70, 40, 50, 40, 70},
                Weights(4, 4096));
}

ZEPBMP_FOR_ALL_TABLES(RectScale);
ZEPBMP_FOR_ALL_TABLES(RectClipping);
ZEPBMP_FOR_ALL_TABLES(RectSourceEnd);
ZEPBMP_FOR_ALL_TABLES(RectFields);
ZEPBMP_FOR_ALL_TABLES(RectPaths);
ZEPBMP_FOR_ALL_TABLES(RectRgbq);
ZEPBMP_FOR_ALL_TABLES(RectYuy2);

}  // namespace
}  // namespace zepbmp::test
