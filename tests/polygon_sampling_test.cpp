/// \file
/// bmp_map_polygon: filters, tints and the depth test. Cases worked out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "support/polygons.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

using Bytes = std::vector<int>;
using Weights = std::vector<int>;

class PolygonSampling : public WithTables {
protected:
    const UseTables use_{GetParam()};
};

// ---------------------------------------------------------------- nearest samples

class PolygonNearest : public PolygonSampling {};

TEST_P(PolygonNearest, CopiesWhatLiesInPlace) {
    for (const int format : {BMP_FMT_RGBQ, BMP_FMT_YUY2, BMP_FMT_PWRW}) {
        const OwnedBitmap dest = make_filled(8, 5, format, 0xee), texture = make_noise(8, 5, format, 1);
        map_polygon({.dst = dest.get(), .tex_a = texture.get(), .flags = BMP_MAP_NO_FILTER}, in_place(whole(dest)));
        for (int y = 0; y < 5; ++y)
            EXPECT_EQ(bytes_of_line(dest, y), bytes_of_line(texture, y)) << format << " line " << y;
    }
}

TEST_P(PolygonNearest, Yuy2TakesChromaAtEvenPixelsOnly) {
    // Y0 U0 Y1 V0 Y2 U1 Y3 V1, mirrored: pixel 0 shows sample 3 and the chroma of its pair, pixel 2 sample 1.
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_YUY2, 0xee), texture = numbered_bytes(4, 1, BMP_FMT_YUY2, 1);
    map_polygon({.dst = dest.get(), .tex_a = texture.get(), .flags = BMP_MAP_NO_FILTER},
                quad({0, 0, 4, 1}, {4, 0, 0, 1}));
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{7, 6, 5, 8, 3, 2, 1, 4}));
}

TEST_P(PolygonNearest, Yuy2SpansBeginAndEndAtAnyPixel) {
    const auto drawn = [](float left, float right) {
        const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_YUY2, 0), texture = numbered_bytes(4, 1, BMP_FMT_YUY2, 1);
        map_polygon({.dst = dest.get(), .tex_a = texture.get(), .flags = BMP_MAP_NO_FILTER},
                    in_place({left, 0, right, 1}));
        return bytes_of_line(dest, 0);
    };
    EXPECT_EQ(drawn(1, 2), (Bytes{0, 0, 3, 0, 0, 0, 0, 0})) << "one odd pixel: one luma";
    EXPECT_EQ(drawn(3, 4), (Bytes{0, 0, 0, 0, 0, 0, 7, 0}));
    EXPECT_EQ(drawn(2, 3), (Bytes{0, 0, 0, 0, 5, 6, 0, 8})) << "one even pixel: a luma and the pair's chroma";
    EXPECT_EQ(drawn(1, 4), (Bytes{0, 0, 3, 0, 5, 6, 7, 8}));
    EXPECT_EQ(drawn(1, 3), (Bytes{0, 0, 3, 0, 5, 6, 0, 8}));
    EXPECT_EQ(drawn(0, 3), (Bytes{1, 2, 3, 4, 5, 6, 0, 8}));
}

TEST_P(PolygonNearest, Yuy2LastEvenPixelOfAnOddWidthHasItsChroma) {
    const OwnedBitmap dest = make_filled(3, 1, BMP_FMT_YUY2, 0), texture = numbered_bytes(3, 1, BMP_FMT_YUY2, 1);
    map_polygon({.dst = dest.get(), .tex_a = texture.get(), .flags = BMP_MAP_NO_FILTER}, in_place({0, 0, 3, 1}));
    EXPECT_EQ(bytes_at(line(dest, 0), 9), (Bytes{1, 2, 3, 4, 5, 6, 0, 8, 0}));
}

ZEPBMP_FOR_ALL_TABLES(PolygonNearest);

// ---------------------------------------------------------------- bilinear

class PolygonBilinear : public PolygonSampling {
protected:
    static Bytes drawn(const OwnedBitmap& texture, const Polygon& polygon, int width = 4, int y = 0) {
        const OwnedBitmap dest =
            make_filled(width, 4, static_cast<int>(texture->format), static_cast<int>(kUntouchedByte));
        map_polygon({.dst = dest.get(), .tex_a = texture.get()}, polygon);
        return bytes_of_line(dest, y);
    }
    static constexpr int kUntouchedByte = 0xee;
};

// At scale 1 the offset of half a pixel puts every pixel on a sample: a copy, but for the last column and line. Their
// positions are held 16/65536 short of the last sample, which is a fraction of 127/128 from the one before.
TEST_P(PolygonBilinear, UnscaledIsACopyButForTheLastColumnAndLine) {
    const OwnedBitmap texture = make_bitmap(4, 3, BMP_FMT_PWRW), map = make_weights(4, 3, 9999);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x)
            weights(texture, y)[x] = static_cast<uint16_t>(12800 * y + 1280 * x);
    map_polygon({.dst = map.get(), .tex_a = texture.get()}, in_place(whole(map)));
    // A step of 1280 short by 1/128 of it: 10; a step of 12800: 100.
    EXPECT_EQ(
        all_weights(map),
        (std::vector<Weights>{{0, 1280, 2560, 3830}, {12800, 14080, 15360, 16630}, {25500, 26780, 28060, 29330}}));
}

TEST_P(PolygonBilinear, EveryByteOfRgbqIsInterpolated) {
    // Half a pixel right and a quarter down: weights 64, 64 and 96, 32.
    const OwnedBitmap texture = make_bitmap(8, 4, BMP_FMT_RGBQ);
    const auto set = [&](int x, int y, std::initializer_list<int> bytes) {
        std::copy(bytes.begin(), bytes.end(), line(texture, y) + 4 * x);
    };
    set(0, 0, {0, 100, 255, 10});
    set(1, 0, {255, 101, 255, 20});
    set(0, 1, {0, 103, 255, 30});
    set(1, 1, {0, 106, 254, 40});
    const Bytes line0 = drawn(texture, quad({0, 0, 4, 2}, {0.5f, 0.25f, 4.5f, 2.25f}));
    // (p00 + p01) / 2 * 3/4 + (p10 + p11) / 2 / 4: 95.625, 101.5, 254.875, 20; halves are rounded up.
    EXPECT_EQ(Bytes(line0.begin(), line0.begin() + 4), (Bytes{96, 102, 255, 20}));
}

TEST_P(PolygonBilinear, WeightsHaveSevenBits) {
    // u = 0.999 holds 127/128, not more: 128 * 127/128; u = 0.007 (0.9 / 128) holds none.
    const OwnedBitmap texture = make_bitmap(8, 2, BMP_FMT_PWRW), map = make_weights(1, 1, 9999);
    weights(texture, 0)[1] = weights(texture, 1)[1] = 128;
    map_polygon({.dst = map.get(), .tex_a = texture.get()}, quad({0, 0, 1, 1}, {0.999f, 0, 1.999f, 1}));
    EXPECT_EQ(weights(map, 0)[0], 127);
    map_polygon({.dst = map.get(), .tex_a = texture.get()}, quad({0, 0, 1, 1}, {0.007f, 0, 1.007f, 1}));
    EXPECT_EQ(weights(map, 0)[0], 0);
}

TEST_P(PolygonBilinear, WeightsReach65535) {
    const OwnedBitmap texture = make_weights(8, 4, 65535), map = make_weights(4, 2, 0);
    map_polygon({.dst = map.get(), .tex_a = texture.get()}, quad({0, 0, 4, 2}, {0.3f, 0.6f, 4.3f, 2.6f}));
    EXPECT_EQ(all_weights(map), std::vector<Weights>(2, Weights(4, 65535)));
}

TEST_P(PolygonBilinear, Yuy2ChromaBetweenPairsOnlyFromTheSecondPixel) {
    // Pairs (Y U Y V): 10 20 30 40, 50 60 70 80, 90 100 110 120, 130 140 150 160 on both lines.
    const OwnedBitmap texture = make_bitmap(8, 2, BMP_FMT_YUY2);
    for (int y = 0; y < 2; ++y)
        for (int i = 0; i < 16; ++i)
            line(texture, y)[i] = static_cast<uint8_t>(10 * (i + 1));
    // Half a pixel right: even pixels lie on the first of a pair, whose chroma is taken as it is.
    EXPECT_EQ(drawn(texture, quad({0, 0, 4, 1}, {0.5f, 0, 4.5f, 1})), (Bytes{20, 20, 40, 40, 60, 60, 80, 80}));
    // One and a half: even pixels lie on the second; half of this pair's chroma, half of the next one's.
    EXPECT_EQ(drawn(texture, quad({0, 0, 4, 1}, {1.5f, 0, 5.5f, 1})), (Bytes{40, 40, 60, 60, 80, 80, 100, 100}));
    // One: the second pixel, no fraction: this pair's.
    EXPECT_EQ(drawn(texture, quad({0, 0, 4, 1}, {1, 0, 5, 1})), (Bytes{30, 20, 50, 40, 70, 60, 90, 80}));
}

TEST_P(PolygonBilinear, Yuy2ChromaIsRoundedHalfUpBothWays) {
    // A line of 0, one of 1, three pairs: half a line down every sum is a half.
    const OwnedBitmap texture = make_bitmap(6, 2, BMP_FMT_YUY2);
    std::memset(line(texture, 1), 1, 16);
    EXPECT_EQ(drawn(texture, quad({0, 0, 2, 1}, {0, 0.5f, 2, 1.5f}), 2), (Bytes{1, 1, 1, 1}));
    EXPECT_EQ(drawn(texture, quad({0, 0, 2, 1}, {1.5f, 0.5f, 3.5f, 1.5f}), 2), (Bytes{1, 1, 1, 1}));
    // A 128th less is no half.
    EXPECT_EQ(drawn(texture, quad({0, 0, 2, 1}, {0, 0.49f, 2, 1.49f}), 2), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(drawn(texture, quad({0, 0, 2, 1}, {1.5f, 0.49f, 3.5f, 1.49f}), 2), (Bytes{0, 0, 0, 0}));
}

TEST_P(PolygonBilinear, SourceTooSmallForItIsNearest) {
    // One line or one column: there is no pair to interpolate between. Centres at 0.5, 1.5, ...
    const OwnedBitmap flat = numbered_weights(4, 1), thin = numbered_weights(1, 4), map = make_weights(4, 4, 9999);
    map_polygon({.dst = map.get(), .tex_a = flat.get()}, in_place({0, 0, 4, 1}));
    EXPECT_EQ(weights_of_line(map, 0), (Weights{0, 1, 2, 3}));
    map_polygon({.dst = map.get(), .tex_a = thin.get()}, in_place({0, 0, 1, 4}));
    for (int y = 0; y < 4; ++y)
        EXPECT_EQ(weights(map, y)[0], 100 * y);
}

ZEPBMP_FOR_ALL_TABLES(PolygonBilinear);

// ---------------------------------------------------------------- filter classes

class PolygonClasses : public PolygonSampling {
protected:
    using Taps = std::map<int, int>;

    // Moves the source by 65/256, so that a fraction of 128ths falls between two.
    static constexpr float kShift = 65.0f / 256;

    /// What each column of a source gives to pixel `x` of the `columns` that show `source_columns` of it. A column
    /// holds 3072: a weight w of a box of W columns gives 24 w / W.
    static Taps columns_at(int x, int source_columns, int columns) {
        return taps_at(x, source_columns, columns, 3072, true);
    }
    /// The same of lines. A line holds 1536: a weight w of a box of H lines gives 12 w / H.
    static Taps lines_at(int y, int source_lines, int lines) { return taps_at(y, source_lines, lines, 1536, false); }

private:
    static Taps taps_at(int at, int from, int to, int weight, bool across) {
        const int size = from + 8, middle = at * from / to;
        const OwnedBitmap texture = across ? make_bitmap(size, 3, BMP_FMT_PWRW) : make_bitmap(3, size, BMP_FMT_PWRW);
        const OwnedBitmap map = across ? make_bitmap(to, 2, BMP_FMT_PWRW) : make_bitmap(2, to, BMP_FMT_PWRW);
        const float reach = static_cast<float>(from) + kShift, end = static_cast<float>(to);
        const Polygon polygon =
            across ? quad({0, 0, end, 2}, {kShift, 0, reach, 2}) : quad({0, 0, 2, end}, {0, kShift, 2, reach});
        Taps taps;
        for (int i = std::max(middle - 10, 0); i < std::min(middle + 12, size); ++i) {
            const auto set = [&](int value) {
                for (int k = 0; k < 3; ++k)
                    (across ? weights(texture, k)[i] : weights(texture, i)[k]) = static_cast<uint16_t>(value);
            };
            set(weight);
            map_polygon({.dst = map.get(), .tex_a = texture.get()}, polygon);
            if (const int got = across ? weights(map, 0)[at] : weights(map, at)[0])
                taps[i] = got;
            set(0);
        }
        return taps;
    }
};

// The pixel's centre is (x + 0.5) * ratio + 65/256; half the box's width to the left of it lie its columns.
TEST_P(PolygonClasses, ColumnsTurnAt134And201And268And536) {
    // 66.91890625: fraction 117. Below 1.34: 1 column.
    EXPECT_EQ(columns_at(50, 133, 100), (Taps{{66, 11 * 24}, {67, 117 * 24}}));
    // 66.92390625: 118. 1.34 and up: 2 columns.
    EXPECT_EQ(columns_at(50, 134, 100), (Taps{{66, 10 * 12}, {67, 128 * 12}, {68, 118 * 12}}));
    // 100.25390625: 32.
    EXPECT_EQ(columns_at(50, 200, 100), (Taps{{100, 96 * 12}, {101, 128 * 12}, {102, 32 * 12}}));
    // 100.25890625: 33. 2.01 and up: 3.
    EXPECT_EQ(columns_at(50, 201, 100), (Taps{{100, 95 * 8}, {101, 1024}, {102, 1024}, {103, 33 * 8}}));
    // 133.58890625: 75.
    EXPECT_EQ(columns_at(50, 267, 100), (Taps{{133, 53 * 8}, {134, 1024}, {135, 1024}, {136, 75 * 8}}));
    // 106.79390625: 101. 2.68 and up: 4.
    EXPECT_EQ(columns_at(40, 268, 100), (Taps{{106, 27 * 6}, {107, 768}, {108, 768}, {109, 768}, {110, 101 * 6}}));
    // 268.42890625: 54.
    EXPECT_EQ(columns_at(50, 535, 100), (Taps{{268, 74 * 6}, {269, 768}, {270, 768}, {271, 768}, {272, 54 * 6}}));
    // 266.93390625: 119. 5.36 and up: 8.
    EXPECT_EQ(columns_at(50, 536, 100), (Taps{{266, 9 * 3},
                                              {267, 384},
                                              {268, 384},
                                              {269, 384},
                                              {270, 384},
                                              {271, 384},
                                              {272, 384},
                                              {273, 384},
                                              {274, 119 * 3}}));
}

TEST_P(PolygonClasses, LinesTurnAt1005And134And268) {
    // 100.25390625: fraction 32. Below 1.005: 1 line.
    EXPECT_EQ(lines_at(100, 200, 200), (Taps{{100, 96 * 12}, {101, 32 * 12}}));
    // 100.50640625: 64. 1.005 and up: a line and a half, weights of 192. Up to 64: two lines, 128 - 64 and 64 + 64.
    EXPECT_EQ(lines_at(100, 201, 200), (Taps{{100, 64 * 8}, {101, 128 * 8}}));
    // 150.75640625: 96. Above 64: three lines, 128 - 96, 128, 96 - 64.
    EXPECT_EQ(lines_at(150, 201, 200), (Taps{{150, 32 * 8}, {151, 128 * 8}, {152, 32 * 8}}));
    // 66.66890625: 85.
    EXPECT_EQ(lines_at(50, 133, 100), (Taps{{66, 43 * 8}, {67, 128 * 8}, {68, 21 * 8}}));
    // 66.92390625: 118. 1.34 and up: 2 lines.
    EXPECT_EQ(lines_at(50, 134, 100), (Taps{{66, 10 * 6}, {67, 128 * 6}, {68, 118 * 6}}));
    // 134.08890625: 11.
    EXPECT_EQ(lines_at(50, 267, 100), (Taps{{134, 117 * 6}, {135, 128 * 6}, {136, 11 * 6}}));
    // 106.79390625: 101. 2.68 and up: 4.
    EXPECT_EQ(lines_at(40, 268, 100), (Taps{{106, 27 * 3}, {107, 384}, {108, 384}, {109, 384}, {110, 101 * 3}}));
}

TEST_P(PolygonClasses, HalvesAreRoundedUp) {
    // 3 columns (2.5 source columns a pixel) at 0.5 * 2.5 + 2 - 1.5 = 1.75: weights 32, 128, 128, 96 of 384. A 3 with
    // weight 32 is a quarter, a 6 a half.
    const OwnedBitmap texture = make_bitmap(8, 2, BMP_FMT_PWRW), map = make_bitmap(1, 1, BMP_FMT_PWRW);
    const Polygon polygon = quad({0, 0, 1, 1}, {2, 0, 4.5f, 1});
    for (const auto& [value, want] : {std::pair{3, 0}, {5, 0}, {6, 1}, {12, 1}, {17, 1}, {18, 2}}) {
        weights(texture, 0)[1] = weights(texture, 1)[1] = static_cast<uint16_t>(value);
        map_polygon({.dst = map.get(), .tex_a = texture.get()}, polygon);
        EXPECT_EQ(weights(map, 0)[0], want) << value;
    }
}

TEST_P(PolygonClasses, FieldSourcesReduceByHalf) {
    // 16 frame lines on 8: a ratio of 2, of field lines 1: one line. At y = 2: 2.5 * 2 * 0.5 + 0.25 - 0.5 = 2.25.
    const OwnedBitmap texture = make_bitmap(2, 16, BMP_FMT_PWRW, BMP_CREATE_ZERO | 2), map = make_weights(1, 8, 9999);
    for (const int x : {0, 1})
        weights(texture, 4)[x] = 12800;
    map_polygon({.dst = map.get(), .tex_a = texture.get()}, quad({0, 0, 1, 8}, {0, 0, 1, 16}));
    Weights lines;
    for (const Weights& line : all_weights(map))
        lines.push_back(line[0]);
    // Field line 2 has 3/4 of line 2, 1/4 of line 1, which lies at 1.25.
    EXPECT_EQ(lines, (Weights{0, 12800 / 4, 12800 * 3 / 4, 0, 0, 0, 0, 0}));
}

TEST_P(PolygonClasses, SmallSourcesGetASmallerBox) {
    // 5 columns at a ratio of 10 ask for 8 columns; 4 fit exactly: u_max = 4 - 196624/65536 > 0. All 5 taps are there:
    // the position 2.5 - 2 = 0.5 has weights 64, 128, 128, 128, 64 of 512; with 12288 in one column.
    const auto drawn = [](int columns, int column) {
        const OwnedBitmap texture = make_bitmap(columns, 2, BMP_FMT_PWRW), map = make_weights(1, 1, 9999);
        weights(texture, 0)[column] = weights(texture, 1)[column] = 12288;
        const float middle = static_cast<float>(columns) / 2;
        map_polygon({.dst = map.get(), .tex_a = texture.get()}, quad({0, 0, 1, 1}, {middle - 5, 0, middle + 5, 1}));
        return static_cast<int>(weights(map, 0)[0]);
    };
    EXPECT_EQ((Weights{drawn(5, 0), drawn(5, 1), drawn(5, 2), drawn(5, 3), drawn(5, 4)}),
              (Weights{1536, 3072, 3072, 3072, 1536}));
    // 4 columns: u_max of 4 would be below 0, a box of 3: 2 - 1.5 = 0.5.
    EXPECT_EQ((Weights{drawn(4, 0), drawn(4, 1), drawn(4, 2), drawn(4, 3)}), (Weights{2048, 4096, 4096, 2048}));
    // 3 columns: a box of 2, 1.5 - 1 = 0.5.
    EXPECT_EQ((Weights{drawn(3, 0), drawn(3, 1), drawn(3, 2)}), (Weights{3072, 6144, 3072}));
    // 2 columns: 1 - 0.5 = 0.5.
    EXPECT_EQ((Weights{drawn(2, 0), drawn(2, 1)}), (Weights{6144, 6144}));
    EXPECT_EQ(drawn(1, 0), 12288);
}

TEST_P(PolygonClasses, Yuy2ChromaHasTheWeightsOfItsLumas) {
    // 6 columns on 4 pixels: 2 columns. Pixel 0: 0.75 - 1 is held to 0: columns 0 and 1. Pixel 2: 3.75 - 1 = 2.75: 32
    // of column 2, 128 of 3, 96 of 4: chroma 160 of pair 1, 96 of pair 2.
    const OwnedBitmap texture = make_bitmap(8, 2, BMP_FMT_YUY2), dest = make_filled(4, 1, BMP_FMT_YUY2, 0xee);
    for (int y = 0; y < 2; ++y) {
        const int bytes[] = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120, 130, 140, 150, 160};
        std::copy(std::begin(bytes), std::end(bytes), line(texture, y));
    }
    map_polygon({.dst = dest.get(), .tex_a = texture.get()}, quad({0, 0, 4, 1}, {0, 0, 6, 1}));
    // Luma 1: 2.25 - 1 = 1.25: (30 * 96 + 50 * 128 + 70 * 32) / 256 = 45. Luma 2: (50 * 32 + 70 * 128 + 90 * 96) / 256
    // = 75. Luma 3: 5.25 - 1 = 4.25: (90 * 96 + 110 * 128 + 130 * 32) / 256 = 105.
    // Chroma 1: (60 * 160 + 100 * 96) / 256 = 75, (80 * 160 + 120 * 96) / 256 = 95.
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{20, 20, 45, 40, 75, 75, 105, 95}));
}

TEST_P(PolygonClasses, Yuy2ChromaOfThreeColumns) {
    // 10 columns on 4 pixels: 3 columns. Pixel 2: 6.25 - 1.5 = 4.75: 32 of column 4, 128 of 5 and 6, 96 of 7: chroma
    // 160 of pair 2, 224 of pair 3, of 384.
    const OwnedBitmap texture = make_bitmap(12, 2, BMP_FMT_YUY2), dest = make_filled(4, 1, BMP_FMT_YUY2, 0xee);
    for (int y = 0; y < 2; ++y) {
        for (int i = 0; i < 4; ++i)
            line(texture, y)[8 + i] = static_cast<uint8_t>(12 * (i + 1));
        for (int i = 0; i < 4; ++i)
            line(texture, y)[12 + i] = static_cast<uint8_t>(120 + 12 * i);
    }
    map_polygon({.dst = dest.get(), .tex_a = texture.get()}, quad({0, 0, 4, 1}, {0, 0, 10, 1}));
    // Luma: (12 * 32 + 36 * 128 + 120 * 128 + 144 * 96) / 384 = 89. U: (24 * 160 + 132 * 224) / 384 = 87.
    // V: (48 * 160 + 156 * 224) / 384 = 111.
    const Bytes got = bytes_of_line(dest, 0);
    EXPECT_EQ((Bytes{got[4], got[5], got[7]}), (Bytes{89, 87, 111}));
}

ZEPBMP_FOR_ALL_TABLES(PolygonClasses);

// ---------------------------------------------------------------- tint

class PolygonTint : public PolygonSampling {
protected:
    static void tint(const OwnedBitmap& dest, const OwnedBitmap& strength, uint32_t color, const Polygon& polygon,
                     uint32_t flags = 0) {
        map_polygon(
            {.dst = dest.get(), .tex_a = BMP_INTEGER(color), .tex_b = strength.get(), .flags = flags | BMP_MAP_EXTRA},
            polygon);
    }
};

TEST_P(PolygonTint, NoStrengthKeepsRgbqAndLowersYuy2) {
    const OwnedBitmap none = make_filled(16, 4, BMP_FMT_A8, 0), rgbq = make_bitmap(16, 4, BMP_FMT_RGBQ),
                      yuy2 = make_bitmap(32, 4, BMP_FMT_YUY2);
    for (int y = 0; y < 4; ++y) {
        for (int i = 0; i < 64; ++i)
            line(rgbq, y)[i] = line(yuy2, y)[i] = static_cast<uint8_t>(64 * y + i);
    }
    const std::vector<uint8_t> before = snapshot(rgbq);
    for (const uint32_t filter : {0u, BMP_MAP_NO_FILTER}) {
        tint(rgbq, none, 0xffffffff, in_place(whole(rgbq)), filter);
        EXPECT_EQ(snapshot(rgbq), before);
        const std::vector<uint8_t> high = snapshot(yuy2);
        tint(yuy2, none, 0xffffff, quad(whole(yuy2), whole(none)), filter);
        std::vector<uint8_t> want = high;
        for (uint8_t& byte : want)
            byte = static_cast<uint8_t>(byte - (byte > 0));
        EXPECT_EQ(snapshot(yuy2), want) << "d * 255 >> 8";
    }
}

TEST_P(PolygonTint, FullStrengthIsTheColourInRgbqAndLessInYuy2) {
    const OwnedBitmap full = make_filled(4, 2, BMP_FMT_A8, 255), rgbq = make_filled(2, 1, BMP_FMT_RGBQ, 77),
                      yuy2 = make_filled(4, 1, BMP_FMT_YUY2, 77);
    for (const uint32_t filter : {0u, BMP_MAP_NO_FILTER}) {
        tint(rgbq, full, 0x99c80a01, in_place(whole(rgbq)), filter);
        EXPECT_EQ(bytes_of_line(rgbq, 0), (Bytes{1, 10, 200, 77, 1, 10, 200, 77})) << "byte 3 is kept";
        // 0x00YYUUVV: 200, 10, 1, each * 255 >> 8.
        tint(yuy2, full, 0x99c80a01, in_place(whole(yuy2)), filter);
        EXPECT_EQ(bytes_of_line(yuy2, 0), (Bytes{199, 9, 199, 0, 199, 9, 199, 0}));
    }
}

TEST_P(PolygonTint, BlendsByStrength) {
    // 77 * 155 + 200 * 100 = 31935: / 255 = 125.2, >> 8 = 124. 77 * 155 + 0 = 11935: 46.8, 46. 77 * 155 + 25500 =
    // 37435: 146.8, 146.
    const OwnedBitmap strength = make_filled(4, 2, BMP_FMT_A8, 100), rgbq = make_filled(1, 1, BMP_FMT_RGBQ, 77),
                      yuy2 = make_filled(2, 1, BMP_FMT_YUY2, 77);
    tint(rgbq, strength, 0xff00c8, in_place(whole(rgbq)));
    EXPECT_EQ(bytes_of_line(rgbq, 0), (Bytes{125, 46, 146, 77}));
    tint(yuy2, strength, 0xff00c8, in_place(whole(yuy2)));
    EXPECT_EQ(bytes_of_line(yuy2, 0), (Bytes{146, 46, 146, 124}));
}

TEST_P(PolygonTint, WithoutAFilterIsBilinearAndNotMoved) {
    // Pixel x has u = x + 0.5: the mean of strengths x and x + 1; the last is held to the last strength.
    const OwnedBitmap strength = make_bitmap(4, 1, BMP_FMT_A8), rgbq = make_bitmap(4, 1, BMP_FMT_RGBQ);
    const int strengths[] = {0, 100, 201, 255};
    std::copy(std::begin(strengths), std::end(strengths), line(strength, 0));
    const auto firsts = [&] { return Bytes{line(rgbq, 0)[0], line(rgbq, 0)[4], line(rgbq, 0)[8], line(rgbq, 0)[12]}; };
    tint(rgbq, strength, 0x0000ff, in_place(whole(rgbq)), BMP_MAP_NO_FILTER);
    EXPECT_EQ(firsts(), (Bytes{50, 151, 228, 255})) << "halves are rounded up";
    EXPECT_EQ(line(rgbq, 0)[1], 0);
}

TEST_P(PolygonTint, FilterOneIsMovedByHalfAPixel) {
    const OwnedBitmap strength = make_bitmap(4, 2, BMP_FMT_A8), rgbq = make_bitmap(4, 1, BMP_FMT_RGBQ);
    const int strengths[] = {0, 100, 201, 255};
    for (int y = 0; y < 2; ++y)
        std::copy(std::begin(strengths), std::end(strengths), line(strength, y));
    tint(rgbq, strength, 0x0000ff, in_place(whole(rgbq)));
    // The last: 201 / 128 + 255 * 127 / 128 = 254.6.
    EXPECT_EQ((Bytes{line(rgbq, 0)[0], line(rgbq, 0)[4], line(rgbq, 0)[8], line(rgbq, 0)[12]}),
              (Bytes{0, 100, 201, 255}));
}

TEST_P(PolygonTint, Yuy2ChromaFollowsTheEvenPixel) {
    // Strengths 255 0 0 255: chroma of pair 0 is tinted, that of pair 1 is not (but loses one).
    const OwnedBitmap strength = make_bitmap(5, 2, BMP_FMT_A8), yuy2 = make_filled(4, 1, BMP_FMT_YUY2, 50);
    for (int y = 0; y < 2; ++y)
        line(strength, y)[0] = line(strength, y)[3] = 255;
    tint(yuy2, strength, 0x808080, in_place({0, 0, 4, 1}));
    EXPECT_EQ(bytes_of_line(yuy2, 0), (Bytes{127, 127, 49, 127, 49, 49, 127, 49}));

    // A span of one odd pixel: one luma.
    const OwnedBitmap full = make_filled(5, 2, BMP_FMT_A8, 255), other = make_filled(4, 1, BMP_FMT_YUY2, 50);
    tint(other, full, 0x808080, in_place({1, 0, 2, 1}));
    EXPECT_EQ(bytes_of_line(other, 0), (Bytes{50, 50, 127, 50, 50, 50, 50, 50}));
}

TEST_P(PolygonTint, LargestFilterIsABoxOf8By4) {
    // Ratios of 8 and 4, one pixel in the middle: 8 - 4 = 4, 6 - 2 = 4. No fractions: columns 4 to 11, lines 4 to 7.
    const auto strength_at = [](int column, int row) {
        const OwnedBitmap strength = make_bitmap(24, 16, BMP_FMT_A8), rgbq = make_bitmap(1, 1, BMP_FMT_RGBQ);
        line(strength, row)[column] = 255;
        tint(rgbq, strength, 0xff, quad({0, 0, 1, 1}, {4, 4, 12, 8}));
        return static_cast<int>(line(rgbq, 0)[0]);
    };
    // 255 / 32 = 7.97: 8.
    EXPECT_EQ(strength_at(4, 4), 8);
    EXPECT_EQ(strength_at(11, 7), 8);
    EXPECT_EQ(strength_at(8, 6), 8);
    EXPECT_EQ(strength_at(3, 5), 0);
    EXPECT_EQ(strength_at(12, 5), 0);
    EXPECT_EQ(strength_at(8, 3), 0);
    EXPECT_EQ(strength_at(8, 8), 0);
}

TEST_P(PolygonTint, OneStrengthTintsAll) {
    const OwnedBitmap one = make_filled(1, 1, BMP_FMT_A8, 255), rgbq = make_filled(3, 2, BMP_FMT_RGBQ, 9);
    tint(rgbq, one, 0x030201, quad(whole(rgbq), whole(one)));
    EXPECT_EQ(bytes_of_line(rgbq, 1), (Bytes{1, 2, 3, 9, 1, 2, 3, 9, 1, 2, 3, 9}));
}

TEST_P(PolygonTint, MarksTheCoveragePlane) {
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_RGBQ, 9), plane = make_weights(4, 1, 7),
                      none = make_filled(4, 2, BMP_FMT_A8, 0);
    map_polygon({.dst = dest.get(), .dst2 = plane.get(), .tex_b = none.get(), .flags = BMP_MAP_EXTRA},
                in_place({1, 0, 3, 1}));
    EXPECT_EQ(weights_of_line(plane, 0), (Weights{7, 0x1000, 0x1000, 7}));
}

ZEPBMP_FOR_ALL_TABLES(PolygonTint);

// ---------------------------------------------------------------- depth

class PolygonDepth : public PolygonSampling {
protected:
    static std::vector<float> depths_of(const OwnedBitmap& depth, int y) {
        return {depths(depth, y), depths(depth, y) + depth->width};
    }
    static void draw(const OwnedBitmap& dest, const OwnedBitmap& depth, const OwnedBitmap& texture,
                     const Polygon& polygon, uint32_t flags = BMP_MAP_NO_FILTER) {
        map_polygon({.dst = dest.get(), .aux = depth.get(), .tex_a = texture.get(), .flags = flags}, polygon);
    }
};

TEST_P(PolygonDepth, OnlyLargerWeightsAreDrawnAndKept) {
    const OwnedBitmap dest = make_filled(5, 1, BMP_FMT_RGBQ, 0), depth = make_depth(5, 1, 0),
                      texture = numbered_bytes(5, 1, BMP_FMT_RGBQ, 1);
    const float stored[] = {0, 1, 2, -INFINITY, 0.99f};
    std::copy(std::begin(stored), std::end(stored), depths(depth, 0));
    draw(dest, depth, texture, in_place(whole(dest)));
    EXPECT_EQ(depths_of(depth, 0), (std::vector<float>{1, 1, 2, 1, 1})) << "an equal one is not larger";
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0, 13, 14, 15, 16, 17, 18, 19, 20}));
}

TEST_P(PolygonDepth, NotANumberIsNeverLarger) {
    const OwnedBitmap dest = make_filled(2, 1, BMP_FMT_RGBQ, 0), depth = make_depth(2, 1, std::nanf("")),
                      texture = numbered_bytes(2, 1, BMP_FMT_RGBQ, 1);
    draw(dest, depth, texture, in_place(whole(dest)));
    EXPECT_EQ(bytes_of_line(dest, 0), Bytes(8, 0));
    EXPECT_TRUE(std::isnan(depths(depth, 0)[0]));
    const OwnedBitmap empty = make_depth(2, 1, -INFINITY);
    draw(dest, empty, texture, quad(whole(dest), whole(dest), std::nanf("")));
    EXPECT_EQ(bytes_of_line(dest, 0), Bytes(8, 0));
    EXPECT_EQ(depths_of(empty, 0), (std::vector<float>{-INFINITY, -INFINITY}));
}

TEST_P(PolygonDepth, WhatIsNearerHidesAll) {
    for (const int format : {BMP_FMT_RGBQ, BMP_FMT_YUY2}) {
        for (const uint32_t filter : {0u, BMP_MAP_NO_FILTER}) {
            const OwnedBitmap dest = make_noise(37, 5, format, 1), depth = make_depth(37, 5, 1e30f),
                              texture = make_noise(37, 5, format, 2);
            const auto dest_before = snapshot(dest), depth_before = snapshot(depth);
            draw(dest, depth, texture, in_place(whole(dest)), filter);
            EXPECT_EQ(snapshot(dest), dest_before);
            EXPECT_EQ(snapshot(depth), depth_before);
        }
    }
}

TEST_P(PolygonDepth, Yuy2ChromaIsWrittenWithTheEvenPixelOnly) {
    for (const uint32_t filter : {0u, BMP_MAP_NO_FILTER}) {
        const OwnedBitmap texture = numbered_bytes(6, 2, BMP_FMT_YUY2, 1);
        std::memcpy(line(texture, 1), line(texture, 0), 16);
        const auto drawn = [&](std::initializer_list<float> stored) {
            const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_YUY2, 0), depth = make_depth(4, 1, 0);
            std::copy(stored.begin(), stored.end(), depths(depth, 0));
            draw(dest, depth, texture, in_place({0, 0, 4, 1}), filter);
            return bytes_of_line(dest, 0);
        };
        EXPECT_EQ(drawn({5, 0, 5, 0}), (Bytes{0, 0, 3, 0, 0, 0, 7, 0}));
        EXPECT_EQ(drawn({0, 5, 0, 5}), (Bytes{1, 2, 0, 4, 5, 6, 0, 8}));
        EXPECT_EQ(drawn({5, 5, 5, 0}), (Bytes{0, 0, 0, 0, 0, 0, 7, 0}));
        EXPECT_EQ(drawn({0, 0, 0, 0}), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    }
}

TEST_P(PolygonDepth, WeightIsASumAlongTheSpan) {
    // w runs from 1 at the left edge to 2 at the right one. Its first value is first * dw + w_start; then dw is added
    // for each pixel. Columns 10 to 110: dw = 1/100, w_start = 1 - (10 - 0.5) / 100.
    constexpr int kFirst = 10, kPixels = 100;
    const OwnedBitmap depth = make_depth(kFirst + kPixels, 1, 0),
                      dest = make_filled(kFirst + kPixels, 1, BMP_FMT_RGBQ, 0),
                      texture = make_noise(4, 4, BMP_FMT_RGBQ, 1);
    Polygon polygon = quad({kFirst, 0, kFirst + kPixels, 1}, {0, 0, 4, 4});
    polygon[1].w = polygon[2].w = 2;
    draw(dest, depth, texture, polygon);

    const volatile float step = static_cast<float>(1.0 / kPixels),
                         start = static_cast<float>(1 - (kFirst - 0.5) / kPixels);
    volatile float product = static_cast<float>(kFirst) * step;
    volatile float w = product + start;
    int differs = 0;
    for (int x = 0; x < kFirst; ++x)
        ASSERT_EQ(depths(depth, 0)[x], 0.0f);
    for (int x = kFirst; x < kFirst + kPixels; ++x) {
        const float stored = depths(depth, 0)[x];
        ASSERT_EQ(stored, w) << "pixel " << x;
        volatile float anew = static_cast<float>(x) * step;
        anew = anew + start;
        differs += stored != anew;
        w = w + step;
    }
    EXPECT_GT(differs, 10) << "the test's own numbers do not tell the sum from the product";
}

TEST_P(PolygonDepth, PlanesThatCutShowTheNearerOne) {
    // w from 1 to 3 against w = 2: the first hides to the right of the middle. Equal source: colours tell.
    const OwnedBitmap dest = make_filled(8, 1, BMP_FMT_RGBQ, 0), depth = make_depth(8, 1, 0),
                      red = make_filled(2, 2, BMP_FMT_RGBQ, 100), blue = make_filled(2, 2, BMP_FMT_RGBQ, 200);
    Polygon slanted = quad(whole(dest), whole(red));
    slanted[1].w = slanted[2].w = 3;
    for (const bool slanted_first : {false, true}) {
        std::fill_n(depths(depth, 0), 8, 0.0f);
        if (slanted_first)
            draw(dest, depth, red, slanted);
        draw(dest, depth, blue, quad(whole(dest), whole(blue), 2));
        if (!slanted_first)
            draw(dest, depth, red, slanted);
        Bytes want(16, 200);
        want.resize(32, 100);
        EXPECT_EQ(bytes_of_line(dest, 0), want);
    }
}

TEST_P(PolygonDepth, EqualWeightsAreTestedToo) {
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_YUY2, 0), depth = make_depth(4, 1, 2),
                      texture = numbered_bytes(4, 1, BMP_FMT_YUY2, 1);
    draw(dest, depth, texture, quad(whole(dest), whole(dest), 1.5f));
    EXPECT_EQ(bytes_of_line(dest, 0), Bytes(8, 0));
    draw(dest, depth, texture, quad(whole(dest), whole(dest), 4));
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(depths_of(depth, 0), std::vector<float>(4, 4));
}

TEST_P(PolygonDepth, FieldLinesHaveTheirOwnDepths) {
    const OwnedBitmap dest = make_filled(2, 4, BMP_FMT_RGBQ, 0), depth = make_depth(2, 4, 0),
                      texture = make_filled(2, 4, BMP_FMT_RGBQ, 9);
    depths(depth, 3)[0] = 5;
    draw(dest, depth, texture, in_place(whole(dest)), BMP_MAP_NO_FILTER | BMP_FIELD | BMP_FIELD_ODD);
    EXPECT_EQ(bytes_of_line(dest, 0), Bytes(8, 0));
    EXPECT_EQ(bytes_of_line(dest, 1), Bytes(8, 9));
    EXPECT_EQ(bytes_of_line(dest, 3), (Bytes{0, 0, 0, 0, 9, 9, 9, 9}));
    EXPECT_EQ(depths_of(depth, 0), (std::vector<float>{0, 0}));
    EXPECT_EQ(depths_of(depth, 1), (std::vector<float>{1, 1}));
    EXPECT_EQ(depths_of(depth, 3), (std::vector<float>{5, 1}));
}

TEST_P(PolygonDepth, CoveragePlaneIsMarkedOverTheWholeSpan) {
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_RGBQ, 0), depth = make_depth(4, 1, 5),
                      plane = make_weights(4, 1, 7), texture = make_filled(4, 2, BMP_FMT_RGBQ, 9);
    map_polygon({.dst = dest.get(), .dst2 = plane.get(), .aux = depth.get(), .tex_a = texture.get()},
                in_place({1, 0, 3, 1}));
    EXPECT_EQ(weights_of_line(plane, 0), (Weights{7, 0x1000, 0x1000, 7}));
    EXPECT_EQ(bytes_of_line(dest, 0), Bytes(16, 0));
}

ZEPBMP_FOR_ALL_TABLES(PolygonDepth);

}  // namespace
}  // namespace zepbmp::test
