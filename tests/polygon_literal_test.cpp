/// \file
/// bmp_map_polygon: what its arguments mean, which lines and pixels a polygon has. Cases worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "support/polygons.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

using Bytes = std::vector<int>;
using Weights = std::vector<int>;

constexpr uint32_t kSolid = BMP_MAP_EXTRA | BMP_MAP_SOLID;

class PolygonLiteral : public WithTables {
protected:
    /// A PWRW texture, nearest samples, into a map full of 9999.
    static std::vector<Weights> nearest(const Polygon& polygon, const OwnedBitmap& texture, int width, int height,
                                        uint32_t flags = 0) {
        const OwnedBitmap map = make_weights(width, height, kUntouched);
        map_polygon({.dst = map.get(), .tex_a = texture.get(), .flags = flags | BMP_MAP_NO_FILTER}, polygon);
        return all_weights(map);
    }
    /// The same, with a texture that is 1 everywhere.
    static std::vector<Weights> ones(const Polygon& polygon, int width, int height, uint32_t flags = 0) {
        return nearest(polygon, make_weights(4, 4, 1), width, height, flags);
    }
    static constexpr int kUntouched = 9999;

    const UseTables use_{GetParam()};
};

// ---------------------------------------------------------------- the bitmaps' roles

class PolygonRoles : public PolygonLiteral {};

TEST_P(PolygonRoles, FirstTextureIsTheSource) {
    const OwnedBitmap dest = make_filled(4, 2, BMP_FMT_RGBQ, 0xee), a = numbered_bytes(4, 2, BMP_FMT_RGBQ, 1),
                      b = numbered_bytes(4, 2, BMP_FMT_RGBQ, 100);
    map_polygon({.dst = dest.get(), .tex_a = a.get(), .tex_b = b.get(), .flags = BMP_MAP_NO_FILTER},
                in_place(whole(dest)));
    EXPECT_EQ(snapshot(dest), snapshot(a));
}

TEST_P(PolygonRoles, SecondTextureStandsInForAMissingFirst) {
    const OwnedBitmap dest = make_filled(4, 2, BMP_FMT_RGBQ, 0xee), b = numbered_bytes(4, 2, BMP_FMT_RGBQ, 100);
    map_polygon({.dst = dest.get(), .tex_b = b.get(), .flags = BMP_MAP_NO_FILTER}, in_place(whole(dest)));
    EXPECT_EQ(snapshot(dest), snapshot(b));
}

TEST_P(PolygonRoles, SecondDestinationStandsInForAMissingFirst) {
    // It is drawn into, not marked: it is no coverage plane.
    const OwnedBitmap colour = make_filled(4, 2, BMP_FMT_RGBQ, 0xee), a = numbered_bytes(4, 2, BMP_FMT_RGBQ, 1);
    map_polygon({.dst2 = colour.get(), .tex_a = a.get(), .flags = BMP_MAP_NO_FILTER}, in_place(whole(colour)));
    EXPECT_EQ(snapshot(colour), snapshot(a));

    const OwnedBitmap map = make_weights(4, 2, 7), texture = numbered_weights(4, 2);
    map_polygon({.dst2 = map.get(), .tex_a = texture.get(), .flags = BMP_MAP_NO_FILTER}, in_place(whole(map)));
    EXPECT_EQ(all_weights(map), (std::vector<Weights>{{0, 1, 2, 3}, {100, 101, 102, 103}}));

    const OwnedBitmap solid = make_filled(2, 1, BMP_FMT_RGBQ, 0xee);
    map_polygon({.dst2 = solid.get(), .tex_a = BMP_INTEGER(0x04030201), .tex_b = BMP_INTEGER(4096), .flags = kSolid},
                in_place(whole(solid)));
    EXPECT_EQ(bytes_of_line(solid, 0), (Bytes{1, 2, 3, 4, 1, 2, 3, 4}));
}

TEST_P(PolygonRoles, SecondDestinationIsMarkedWhereSpansAre) {
    const Area area = {1, 0, 3, 1};
    const OwnedBitmap a = numbered_bytes(4, 2, BMP_FMT_RGBQ, 1);
    const OwnedBitmap dest = make_filled(4, 2, BMP_FMT_RGBQ, 0xee), mask = make_filled(4, 2, BMP_FMT_A8, 0x33);
    map_polygon({.dst = dest.get(), .dst2 = mask.get(), .tex_a = a.get(), .flags = BMP_MAP_NO_FILTER}, in_place(area));
    EXPECT_EQ(bytes_of_line(mask, 0), (Bytes{0x33, 0x80, 0x80, 0x33}));
    EXPECT_EQ(bytes_of_line(mask, 1), Bytes(4, 0x33));

    const OwnedBitmap map = make_weights(4, 2, 7);
    map_polygon({.dst = dest.get(), .dst2 = map.get(), .tex_a = a.get(), .flags = BMP_MAP_NO_FILTER}, in_place(area));
    EXPECT_EQ(all_weights(map), (std::vector<Weights>{{7, 0x1000, 0x1000, 7}, {7, 7, 7, 7}}));
    EXPECT_EQ(bytes_of_line(dest, 0),
              (Bytes{0xee, 0xee, 0xee, 0xee, 5, 6, 7, 8, 9, 10, 11, 12, 0xee, 0xee, 0xee, 0xee}));
}

TEST_P(PolygonRoles, SecondDestinationOfAnotherFormatIsLeftAlone) {
    for (const int format : {BMP_FMT_YUY2, BMP_FMT_RGBQ, BMP_FMT_QUAD3, BMP_FMT_QUAD4, BMP_FMT_QUAD5, BMP_FMT_RGB8}) {
        for (const uint32_t edges : {BMP_MAP_NO_FILTER, BMP_MAP_ANTIALIAS}) {
            const OwnedBitmap dest = make_filled(4, 2, BMP_FMT_RGBQ, 0xee), other = make_filled(4, 2, format, 0x33),
                              a = make_filled(4, 2, BMP_FMT_RGBQ, 0x44);
            map_polygon({.dst = dest.get(), .dst2 = other.get(), .tex_a = a.get(), .flags = edges},
                        in_place(whole(dest)));
            EXPECT_EQ(bytes_of_line(other, 0), Bytes(static_cast<size_t>(4 * other->bytes_per_pixel), 0x33)) << format;
            EXPECT_EQ(bytes_of_line(dest, 1), Bytes(16, 0x44)) << format;
        }
    }
}

TEST_P(PolygonRoles, ExtraTakesTheSecondTextureAndTheFirstAsColour) {
    const OwnedBitmap dest = make_filled(2, 1, BMP_FMT_RGBQ, 50), full = make_filled(2, 1, BMP_FMT_A8, 255);
    map_polygon({.dst = dest.get(), .tex_a = BMP_INTEGER(0x00030201), .tex_b = full.get(), .flags = BMP_MAP_EXTRA},
                in_place(whole(dest)));
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{1, 2, 3, 50, 1, 2, 3, 50}));
}

TEST_P(PolygonRoles, TintColourZeroIsANullFirstTexture) {
    const OwnedBitmap dest = make_filled(2, 1, BMP_FMT_RGBQ, 50), full = make_filled(2, 1, BMP_FMT_A8, 255);
    map_polygon({.dst = dest.get(), .tex_b = full.get(), .flags = BMP_MAP_EXTRA}, in_place(whole(dest)));
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{0, 0, 0, 50, 0, 0, 0, 50}));
}

TEST_P(PolygonRoles, ExtraWithADepthBufferDrawsTheSecondTexture) {
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_RGBQ, 0xee), a = numbered_bytes(4, 1, BMP_FMT_RGBQ, 1),
                      b = numbered_bytes(4, 1, BMP_FMT_RGBQ, 100), depth = make_depth(4, 1, 0);
    map_polygon({.dst = dest.get(),
                 .aux = depth.get(),
                 .tex_a = a.get(),
                 .tex_b = b.get(),
                 .flags = BMP_MAP_EXTRA | BMP_MAP_NO_FILTER},
                in_place(whole(dest)));
    EXPECT_EQ(snapshot(dest), snapshot(b));
    EXPECT_EQ(depths(depth, 0)[3], 1.0f);
}

TEST_P(PolygonRoles, SolidFlagAloneIsNothingSpecial) {
    const OwnedBitmap dest = make_filled(4, 2, BMP_FMT_RGBQ, 0xee), a = numbered_bytes(4, 2, BMP_FMT_RGBQ, 1),
                      b = numbered_bytes(4, 2, BMP_FMT_RGBQ, 100);
    map_polygon({.dst = dest.get(), .tex_a = a.get(), .tex_b = b.get(), .flags = BMP_MAP_SOLID | BMP_MAP_NO_FILTER},
                in_place(whole(dest)));
    EXPECT_EQ(snapshot(dest), snapshot(a));
}

TEST_P(PolygonRoles, SolidFillIgnoresTheDepthBuffer) {
    const OwnedBitmap dest = make_filled(4, 2, BMP_FMT_RGBQ, 0xee), depth = make_depth(4, 2, 1e30f);
    const std::vector<uint8_t> before = snapshot(depth);
    for (const uint32_t more : {0u, BMP_MAP_NO_FILTER, BMP_MAP_ANTIALIAS, BMP_MAP_NO_FILTER | BMP_MAP_ANTIALIAS}) {
        std::memset(dest->pixels, 0xee, 32);
        map_polygon({.dst = dest.get(),
                     .aux = depth.get(),
                     .tex_a = BMP_INTEGER(0x04030201),
                     .tex_b = BMP_INTEGER(4096),
                     .flags = kSolid | more},
                    in_place({1, 0, 2, 2}));
        EXPECT_EQ(bytes_of_line(dest, 1),
                  (Bytes{0xee, 0xee, 0xee, 0xee, 1, 2, 3, 4, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee}));
        EXPECT_EQ(snapshot(depth), before);
    }
}

TEST_P(PolygonRoles, NoFilterMeansNoAntialiasing) {
    // Columns 0.75 to 2.25 hold the centre of pixel 1 only.
    const Polygon cut = in_place({0.75f, 0, 2.25f, 1});
    EXPECT_EQ(ones(cut, 4, 1, BMP_MAP_ANTIALIAS), (std::vector<Weights>{{kUntouched, 1, kUntouched, kUntouched}}));
}

TEST_P(PolygonRoles, DepthBufferMeansNoAntialiasing) {
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_RGBQ, 10), a = make_filled(4, 2, BMP_FMT_RGBQ, 200),
                      depth = make_depth(4, 1, 0);
    map_polygon({.dst = dest.get(), .aux = depth.get(), .tex_a = a.get(), .flags = BMP_MAP_ANTIALIAS},
                in_place({0.75f, 0, 2.25f, 1}));
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{10, 10, 10, 10, 200, 200, 200, 200, 10, 10, 10, 10, 10, 10, 10, 10}));
}

TEST_P(PolygonRoles, ALargerPixelGetsTheTexturesLayout) {
    // Pixel x of a YUY2 texture is bytes 2x and 2x + 1, also where the destination's pixels have 4.
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_RGBQ, 0xee), a = numbered_bytes(4, 1, BMP_FMT_YUY2, 1);
    map_polygon({.dst = dest.get(), .tex_a = a.get(), .flags = BMP_MAP_NO_FILTER}, in_place({0, 0, 4, 1}));
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee}));
}

TEST_P(PolygonRoles, AnEqualPixelGetsTheTexturesLayout) {
    for (const int format : {BMP_FMT_QUAD3, BMP_FMT_QUAD4, BMP_FMT_QUAD5}) {
        const OwnedBitmap dest = make_filled(4, 1, format, 0xee), a = numbered_bytes(4, 1, BMP_FMT_RGBQ, 1);
        map_polygon({.dst = dest.get(), .tex_a = a.get(), .flags = BMP_MAP_NO_FILTER}, in_place({0, 0, 4, 1}));
        EXPECT_EQ(snapshot(dest), snapshot(a)) << format;
    }
    const OwnedBitmap dest = make_filled(4, 1, BMP_FMT_PWRW, 0xee), a = numbered_bytes(4, 1, BMP_FMT_YUY2, 1);
    map_polygon({.dst = dest.get(), .tex_a = a.get(), .flags = BMP_MAP_NO_FILTER}, in_place({0, 0, 4, 1}));
    EXPECT_EQ(bytes_of_line(dest, 0), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

struct Unpaired {
    const char* what;
    int texture, dest;
    uint32_t flags;
    bool with_depth;
};

constexpr Unpaired kUnpaired[] = {
    {"weights onto YUY2", BMP_FMT_PWRW, BMP_FMT_YUY2, 0, false},
    {"weights onto RGBQ", BMP_FMT_PWRW, BMP_FMT_RGBQ, 0, false},
    {"weights onto quads", BMP_FMT_PWRW, BMP_FMT_QUAD3, 0, false},
    {"weights onto A8", BMP_FMT_PWRW, BMP_FMT_A8, 0, false},
    {"weights onto RGBQ, antialiased", BMP_FMT_PWRW, BMP_FMT_RGBQ, BMP_MAP_ANTIALIAS, false},
    {"weights with a depth buffer", BMP_FMT_PWRW, BMP_FMT_PWRW, 0, true},
    {"weights with extra", BMP_FMT_PWRW, BMP_FMT_PWRW, BMP_MAP_EXTRA, false},
    {"A8 without extra, onto RGBQ", BMP_FMT_A8, BMP_FMT_RGBQ, 0, false},
    {"A8 without extra, onto YUY2", BMP_FMT_A8, BMP_FMT_YUY2, 0, false},
    {"A8 with a depth buffer", BMP_FMT_A8, BMP_FMT_RGBQ, BMP_MAP_EXTRA, true},
    {"A8 antialiased", BMP_FMT_A8, BMP_FMT_RGBQ, BMP_MAP_EXTRA | BMP_MAP_ANTIALIAS, false},
    {"A8 onto A8", BMP_FMT_A8, BMP_FMT_A8, BMP_MAP_EXTRA, false},
    {"A8 onto weights", BMP_FMT_A8, BMP_FMT_PWRW, BMP_MAP_EXTRA, false},
    {"A8 onto quads", BMP_FMT_A8, BMP_FMT_QUAD3, BMP_MAP_EXTRA, false},
    {"YUY2 with extra", BMP_FMT_YUY2, BMP_FMT_YUY2, BMP_MAP_EXTRA, false},
    {"RGBQ with extra", BMP_FMT_RGBQ, BMP_FMT_RGBQ, BMP_MAP_EXTRA, false},
    {"RGBQ with extra, antialiased", BMP_FMT_RGBQ, BMP_FMT_RGBQ, BMP_MAP_EXTRA | BMP_MAP_ANTIALIAS, false},
    {"RGBQ onto smaller pixels", BMP_FMT_RGBQ, BMP_FMT_YUY2, 0, false},
    {"RGBQ onto smaller pixels, antialiased", BMP_FMT_RGBQ, BMP_FMT_PWRW, BMP_MAP_ANTIALIAS, false},
    {"RGBQ onto smaller pixels, depth", BMP_FMT_RGBQ, BMP_FMT_YUY2, 0, true},
    {"YUY2 onto smaller pixels", BMP_FMT_YUY2, BMP_FMT_A8, 0, false},
    {"YUY2 onto smaller pixels, depth", BMP_FMT_YUY2, BMP_FMT_RGB8, 0, true},
    {"a texture of quads", BMP_FMT_QUAD3, BMP_FMT_RGBQ, 0, false},
    {"a texture of indices", BMP_FMT_RGB8, BMP_FMT_RGB8, 0, false},
};

TEST_P(PolygonRoles, CombinationsWithoutAKernelDrawNothing) {
    for (const Unpaired& pair : kUnpaired) {
        for (const uint32_t filter : {0u, BMP_MAP_NO_FILTER}) {
            if (filter && (pair.flags & BMP_MAP_ANTIALIAS))
                continue;
            const OwnedBitmap dest = make_noise(8, 4, pair.dest, 1), map = make_weights(8, 4, 7),
                              texture = make_noise(8, 4, pair.texture, 2), depth = make_depth(8, 4, 0);
            const auto dest_before = snapshot(dest), map_before = snapshot(map), depth_before = snapshot(depth);
            const bool extra = pair.flags & BMP_MAP_EXTRA;
            map_polygon({.dst = dest.get(),
                         .dst2 = map.get(),
                         .aux = pair.with_depth ? depth.get() : nullptr,
                         .tex_a = extra ? BMP_INTEGER(0x808080) : texture.get(),
                         .tex_b = extra ? texture.get() : nullptr,
                         .flags = pair.flags | filter},
                        in_place(whole(dest)));
            EXPECT_EQ(snapshot(dest), dest_before) << pair.what;
            EXPECT_EQ(snapshot(map), map_before) << pair.what << ": the coverage plane";
            EXPECT_EQ(snapshot(depth), depth_before) << pair.what << ": the depth buffer";
        }
    }
}

TEST_P(PolygonRoles, ExtraWithoutColourOrDepthDrawsNoColourTexture) {
    const OwnedBitmap dest = make_filled(4, 2, BMP_FMT_RGBQ, 0xee), b = numbered_bytes(4, 2, BMP_FMT_RGBQ, 100);
    const std::vector<uint8_t> before = snapshot(dest);
    map_polygon({.dst = dest.get(), .tex_b = b.get(), .flags = BMP_MAP_EXTRA}, in_place(whole(dest)));
    EXPECT_EQ(snapshot(dest), before);
}

TEST_P(PolygonRoles, SolidFillKnowsTwoDestinationFormats) {
    for (const int format : {BMP_FMT_PWRW, BMP_FMT_QUAD3, BMP_FMT_QUAD4, BMP_FMT_QUAD5, BMP_FMT_RGB8, BMP_FMT_A8}) {
        const OwnedBitmap dest = make_noise(8, 4, format, 1), map = make_weights(8, 4, 7);
        const auto dest_before = snapshot(dest), map_before = snapshot(map);
        map_polygon({.dst = dest.get(),
                     .dst2 = map.get(),
                     .tex_a = BMP_INTEGER(0x04030201),
                     .tex_b = BMP_INTEGER(4096),
                     .flags = kSolid},
                    in_place(whole(dest)));
        EXPECT_EQ(snapshot(dest), dest_before) << format;
        EXPECT_EQ(snapshot(map), map_before) << format;
    }
}

TEST_P(PolygonRoles, OneOtherPerspectiveWeightIsEnough) {
    // On line 0, 3/8 down the left side, w is 1 - 0.75 * 0.375 = 0.71875 there and 1 on the right: the centre of pixel
    // 2, 5/16 of the way, has u = 2.5 / 0.80664 = 3.1. In an affine mapping u is 2.5.
    const OwnedBitmap texture = make_weights(8, 1, 0);
    for (int x = 0; x < 8; ++x)
        weights(texture, 0)[x] = static_cast<uint16_t>(x);
    const Polygon polygon = {{0, 0, 1, 0, -1}, {8, 0, 1, 8, -1}, {8, 0, 1, 8, 3}, {0, 0, 0.25f, 0, 3}};
    EXPECT_EQ(nearest(polygon, texture, 8, 1)[0], (Weights{0, 1, 3, 4, 5, 6, 6, 7}));
}

TEST_P(PolygonRoles, FewerThanThreeCornersDrawNothing) {
    const OwnedBitmap texture = make_weights(4, 4, 1);
    for (const uint32_t edges : {BMP_MAP_NO_FILTER, BMP_MAP_ANTIALIAS}) {
        for (size_t corners : {0u, 1u, 2u}) {
            const OwnedBitmap map = make_weights(4, 4, 7);
            Polygon polygon = in_place({0, 0, 4, 4});
            std::swap(polygon[1], polygon[2]);  // the first two are a diagonal
            polygon.resize(corners);
            map_polygon({.dst = map.get(), .tex_a = texture.get(), .flags = edges}, polygon);
            EXPECT_EQ(all_weights(map), std::vector<Weights>(4, Weights(4, 7))) << corners;
        }
    }
    const OwnedBitmap map = make_weights(4, 4, 7);
    const Polygon polygon = in_place({0, 0, 4, 4});
    library().map_polygon(map.get(), nullptr, nullptr, texture.get(), nullptr, polygon.data(), -4, 0);
    EXPECT_EQ(all_weights(map), std::vector<Weights>(4, Weights(4, 7)));
}

ZEPBMP_FOR_ALL_TABLES(PolygonRoles);

// ---------------------------------------------------------------- which pixels, which source position

class PolygonSpans : public PolygonLiteral {};

TEST_P(PolygonSpans, APixelWhoseCentreIsOnTheLeftEdgeBelongsToIt) {
    constexpr int o = kUntouched;
    constexpr float step = 1.0f / 4096;
    EXPECT_EQ(ones(outline({{0.5f, 0}, {2.5f, 0}, {2.5f, 1}, {0.5f, 1}}), 4, 1), (std::vector<Weights>{{1, 1, o, o}}));
    EXPECT_EQ(ones(outline({{0.5f + step, 0}, {2.5f + step, 0}, {2.5f + step, 1}, {0.5f + step, 1}}), 4, 1),
              (std::vector<Weights>{{o, 1, 1, o}}));
    // Less than a whole 4096th is truncated away.
    EXPECT_EQ(
        ones(outline({{0.5f + step / 2, 0}, {2.5f + step / 2, 0}, {2.5f + step / 2, 1}, {0.5f + step / 2, 1}}), 4, 1),
        (std::vector<Weights>{{1, 1, o, o}}));
}

TEST_P(PolygonSpans, ALineWhoseCentreIsOnTheTopEdgeBelongsToIt) {
    constexpr int o = kUntouched;
    constexpr float step = 1.0f / 4096;
    const auto column = [](float top, float bottom) {
        Weights lines;
        for (const Weights& line : ones(outline({{0, top}, {1, top}, {1, bottom}, {0, bottom}}), 1, 4))
            lines.push_back(line[0]);
        return lines;
    };
    EXPECT_EQ(column(0.5f, 2.5f), (Weights{1, 1, o, o}));
    EXPECT_EQ(column(0.5f + step, 2.5f + step), (Weights{o, 1, 1, o}));
    EXPECT_EQ(column(0.5f + step / 2, 2.5f + step / 2), (Weights{1, 1, o, o}));
    EXPECT_EQ(column(-0.5f, 0.5f), (Weights{o, o, o, o}));
    EXPECT_EQ(column(-0.5f, 0.5f + step), (Weights{1, o, o, o}));
}

TEST_P(PolygonSpans, ASpanWithoutAPixelCentreDrawsNothing) {
    // Columns 0.75 to 1.25 hold no centre; nor do lines 0.75 to 1.25.
    const OwnedBitmap dest = make_weights(3, 3, 7), plane = make_weights(3, 3, 8), texture = make_weights(4, 4, 1);
    for (const Area& thin : {Area{0.75f, 0, 1.25f, 3}, Area{0, 0.75f, 3, 1.25f}}) {
        map_polygon({.dst = dest.get(), .dst2 = plane.get(), .tex_a = texture.get(), .flags = BMP_MAP_NO_FILTER},
                    in_place(thin));
        EXPECT_EQ(all_weights(dest), std::vector<Weights>(3, Weights(3, 7)));
        EXPECT_EQ(all_weights(plane), std::vector<Weights>(3, Weights(3, 8)));
    }
}

TEST_P(PolygonSpans, AreClippedToTheDestination) {
    constexpr int o = kUntouched;
    const OwnedBitmap texture = numbered_weights(6, 6);
    // The source moves with the polygon: destination (0, 0) shows source (2, 1).
    EXPECT_EQ(nearest(quad({-2, -1, 4, 5}, {0, 0, 6, 6}), texture, 3, 3),
              (std::vector<Weights>{{102, 103, 104}, {202, 203, 204}, {302, 303, 304}}));
    EXPECT_EQ(nearest(quad({-2, -1, 1, 2}, {0, 0, 3, 3}), texture, 3, 3),
              (std::vector<Weights>{{102, o, o}, {202, o, o}, {o, o, o}}));
    EXPECT_EQ(nearest(quad({2, 2, 5, 5}, {0, 0, 3, 3}), texture, 3, 3),
              (std::vector<Weights>{{o, o, o}, {o, o, o}, {o, o, 0}}));
    EXPECT_EQ(nearest(quad({2, -4, 5, 2}, {0, 0, 3, 6}), texture, 3, 3),
              (std::vector<Weights>{{o, o, 400}, {o, o, 500}, {o, o, o}}));
    const std::vector<Weights> none(3, Weights(3, o));
    for (const Area& outside : {Area{0, 3, 3, 6}, Area{0, 1000, 3, 2000}, Area{0, -6, 3, 0}, Area{0, -2000, 3, -1000},
                                Area{3, 0, 6, 3}, Area{-6, 0, 0, 3}, Area{1e9f, 0, 2e9f, 3}, Area{0, 1e9f, 3, 2e9f}})
        EXPECT_EQ(nearest(quad(outside, {0, 0, 6, 6}), texture, 3, 3), none) << outside.left << " " << outside.top;
}

TEST_P(PolygonSpans, DestinationsWithoutALineOrAPixelAreNotTouched) {
    // The destination's memory ends at its first pixel: touching it would be a fault.
    const OwnedBitmap texture = make_filled(8, 8, BMP_FMT_RGBQ, 1);
    Frame dest, plane, depth;
    for (const auto& size : {std::pair{7, 0}, {0, 5}, {0, 0}}) {
        const auto lay_out = [&](Frame& frame, int format) {
            frame.lay_out(
                {.width = size.first, .height = size.second, .format = format, .pitch = 32, .last_line_bytes = 0});
        };
        lay_out(dest, BMP_FMT_RGBQ);
        lay_out(plane, BMP_FMT_PWRW);
        lay_out(depth, BMP_FMT_QUAD3);
        const Polygon polygon = outline({{-3, -3}, {9, -2}, {8, 7}, {-2, 8}});
        MapArguments arguments = {.dst = dest.bitmap(), .dst2 = plane.bitmap(), .tex_a = texture.get()};
        for (const uint32_t edges : {0u, BMP_MAP_NO_FILTER, BMP_MAP_ANTIALIAS}) {
            arguments.flags = edges;
            map_polygon(arguments, polygon);
        }
        arguments.aux = depth.bitmap();
        map_polygon(arguments, polygon);
        map_polygon({.dst = dest.bitmap(), .dst2 = plane.bitmap(), .tex_b = BMP_INTEGER(4096), .flags = kSolid},
                    polygon);
    }
}

TEST_P(PolygonSpans, HugePolygonsAreHeldToThe32BitRange) {
    const std::vector<Weights> all(3, Weights(3, 1));
    EXPECT_EQ(ones(outline({{-1e9f, -1e9f}, {1e9f, -1e9f}, {1e9f, 1e9f}, {-1e9f, 1e9f}}), 3, 3), all);
    EXPECT_EQ(ones(outline({{-1e30f, -1e30f}, {1e30f, -1e30f}, {1e30f, 1e30f}, {-1e30f, 1e30f}}), 3, 3), all);
}

TEST_P(PolygonSpans, ConcavePolygonsHaveSeveralSpansInALine) {
    // A notch from columns 1 to 5 of the top reaches down to (3, 2). Line 0: 0 to 1.5 and 4.5 to 6; line 1: 0 to 2.5
    // and 3.5 to 6.
    constexpr int o = kUntouched;
    EXPECT_EQ(ones(outline({{0, 0}, {1, 0}, {3, 2}, {5, 0}, {6, 0}, {6, 3}, {0, 3}}), 6, 3),
              (std::vector<Weights>{{1, o, o, o, 1, 1}, {1, 1, o, 1, 1, 1}, {1, 1, 1, 1, 1, 1}}));
}

TEST_P(PolygonSpans, SelfCrossingPolygonsAreEvenOdd) {
    // A bow tie lying on its side. Lines 0 and 3: 0 to 0.5 and 3.5 to 4; lines 1 and 2: 0 to 1.5 and 2.5 to 4.
    constexpr int o = kUntouched;
    EXPECT_EQ(ones(outline({{0, 0}, {4, 4}, {4, 0}, {0, 4}}), 4, 4),
              (std::vector<Weights>{{o, o, o, 1}, {1, o, 1, 1}, {1, o, 1, 1}, {o, o, o, 1}}));
    // One square inside another, joined by an edge walked twice: a hole.
    EXPECT_EQ(ones(outline({{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}, {1, 1}, {3, 1}, {3, 3}, {1, 3}, {1, 1}}), 4, 4),
              (std::vector<Weights>{{1, 1, 1, 1}, {1, o, o, 1}, {1, o, o, 1}, {1, 1, 1, 1}}));
}

TEST_P(PolygonSpans, FieldFlagsSelectLines) {
    constexpr int o = kUntouched;
    const OwnedBitmap texture = numbered_weights(1, 5);
    const auto drawn = [&](uint32_t flags) {
        Weights column;
        for (const Weights& line : nearest(in_place({0, 0, 1, 5}), texture, 1, 5, flags))
            column.push_back(line[0]);
        return column;
    };
    EXPECT_EQ(drawn(0), (Weights{0, 100, 200, 300, 400}));
    EXPECT_EQ(drawn(BMP_FIELD), (Weights{0, o, 200, o, 400}));
    EXPECT_EQ(drawn(BMP_FIELD | BMP_FIELD_ODD), (Weights{o, 100, o, 300, o}));
    EXPECT_EQ(drawn(BMP_FIELD_ODD), (Weights{0, 100, 200, 300, 400})) << "the odd flag alone skips no line";
}

TEST_P(PolygonSpans, CornersWithoutAPlaceDrawNothing) {
    const float odd[] = {std::nanf(""), std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity()};
    const OwnedBitmap texture = make_weights(4, 4, 1), colour = make_filled(4, 4, BMP_FMT_RGBQ, 5);
    for (const float value : odd) {
        for (size_t corner = 0; corner < 4; ++corner) {
            for (float BmpVertex::*member : {&BmpVertex::x, &BmpVertex::y}) {
                Polygon polygon = in_place({0, 0, 4, 4});
                polygon[corner].*member = value;
                for (const uint32_t edges : {0u, BMP_MAP_NO_FILTER, BMP_MAP_ANTIALIAS}) {
                    const OwnedBitmap map = make_weights(4, 4, 7);
                    map_polygon({.dst = map.get(), .tex_a = texture.get(), .flags = edges}, polygon);
                    EXPECT_EQ(all_weights(map), std::vector<Weights>(4, Weights(4, 7))) << value << " " << corner;
                }
                const OwnedBitmap solid = make_filled(4, 4, BMP_FMT_RGBQ, 9);
                map_polygon({.dst = solid.get(), .tex_b = BMP_INTEGER(4096), .flags = kSolid}, polygon);
                EXPECT_EQ(snapshot(solid), std::vector<uint8_t>(64, 9)) << value << " " << corner;
            }
        }
    }
}

TEST_P(PolygonSpans, AnyNumberOfCornersWillDo) {
    // 1024 corners up the left side of a square, 1024 down its right side, in steps of 1/128 line.
    Polygon polygon;
    for (int i = 0; i < 1024; ++i)
        polygon.push_back({0, 0, 1, 0, static_cast<float>(1023 - i) / 128});
    for (int i = 0; i < 1024; ++i)
        polygon.push_back({0, 0, 1, 8, static_cast<float>(i) / 128});
    std::vector<Weights> want(8, Weights(8, 1));
    EXPECT_EQ(ones(polygon, 8, 8), want);
}

// ---------------------------------------------------------------- source positions

TEST_P(PolygonSpans, SourcePositionsBelongToPixelCentres) {
    // 8 source columns on 4 pixels: centres at 1, 3, 5, 7; 2 lines on 4: 0.25, 0.75, 1.25, 1.75.
    EXPECT_EQ(nearest(quad({0, 0, 4, 4}, {0, 0, 8, 2}), numbered_weights(8, 2), 4, 4),
              (std::vector<Weights>{{1, 3, 5, 7}, {1, 3, 5, 7}, {101, 103, 105, 107}, {101, 103, 105, 107}}));
}

TEST_P(PolygonSpans, SourcePositionsOutsideAreHeldToTheSource) {
    // Columns -1.5 .. 4.5 and lines -1.5 .. 2.5 of a source of 3 x 2.
    EXPECT_EQ(nearest(quad({0, 0, 7, 5}, {-2, -2, 5, 3}), numbered_weights(3, 2), 7, 5),
              (std::vector<Weights>{{0, 0, 0, 1, 2, 2, 2},
                                    {0, 0, 0, 1, 2, 2, 2},
                                    {0, 0, 0, 1, 2, 2, 2},
                                    {100, 100, 100, 101, 102, 102, 102},
                                    {100, 100, 100, 101, 102, 102, 102}}));
}

TEST_P(PolygonSpans, SourcePositionsThatAreNoNumbersAreZero) {
    const OwnedBitmap texture = numbered_weights(3, 2);
    Polygon polygon = in_place({0, 0, 3, 2});
    for (BmpVertex& corner : polygon)
        corner.u = std::nanf("");
    EXPECT_EQ(nearest(polygon, texture, 3, 2), (std::vector<Weights>{{0, 0, 0}, {100, 100, 100}}));
    polygon = in_place({0, 0, 3, 2});
    for (BmpVertex& corner : polygon)
        corner.v = std::nanf("");
    EXPECT_EQ(nearest(polygon, texture, 3, 2), (std::vector<Weights>{{0, 1, 2}, {0, 1, 2}}));
    polygon = in_place({0, 0, 3, 2});
    for (BmpVertex& corner : polygon)
        corner.w = std::nanf("");
    EXPECT_EQ(nearest(polygon, texture, 3, 2), (std::vector<Weights>{{0, 0, 0}, {0, 0, 0}}))
        << "weights that are not equal to themselves: perspective";
}

TEST_P(PolygonSpans, EqualWeightsAreAffineWhateverTheyAre) {
    const OwnedBitmap texture = numbered_weights(4, 3);
    const std::vector<Weights> want = {{0, 1, 2, 3}, {100, 101, 102, 103}, {200, 201, 202, 203}};
    for (const float w : {1.0f, 0.1f, 7.0f, 0.0f, -3.0f, 1e-40f, std::numeric_limits<float>::infinity()})
        EXPECT_EQ(nearest(quad({0, 0, 4, 3}, {0, 0, 4, 3}, w), texture, 4, 3), want) << w;
}

TEST_P(PolygonSpans, UnequalWeightsArePerspective) {
    // From u = 0, w = 1 to u = 11, w = 3. Centres at t = 1/4 and 3/4: u = 33 t / (1 + 2 t) = 5.5 and 9.9; affine: 2.75
    // and 8.25.
    Polygon polygon = quad({0, 0, 2, 1}, {0, 0, 11, 1});
    EXPECT_EQ(nearest(polygon, numbered_weights(11, 1), 2, 1), (std::vector<Weights>{{2, 8}}));
    polygon[1].w = polygon[2].w = 3;
    EXPECT_EQ(nearest(polygon, numbered_weights(11, 1), 2, 1), (std::vector<Weights>{{5, 9}}));

    // The same downwards.
    polygon = quad({0, 0, 1, 2}, {0, 0, 1, 11});
    polygon[2].w = polygon[3].w = 3;
    EXPECT_EQ(nearest(polygon, numbered_weights(1, 11), 1, 2), (std::vector<Weights>{{500}, {900}}));
}

TEST_P(PolygonSpans, LinesAboveTheDestinationAreWalkedToo) {
    // From u = 0 at line -4 to u = 8 at line 4 along slanting sides: the interpolation starts at the true ends.
    const Polygon polygon = {{0, 0, 1, -4, -4}, {8, 0, 1, 4, -4}, {16, 0, 1, 8, 4}, {8, 0, 1, 0, 4}};
    // u - x = 4 everywhere along the top, (y + 4) / 2 more at line y: x + 4 + (y + 4) / 2 at centres. Line 0, pixel 0:
    // 0.5 + 4 + 2.25 = 6.75.
    EXPECT_EQ(nearest(polygon, numbered_weights(20, 1), 4, 4),
              (std::vector<Weights>{{6, 7, 8, 9}, {7, 8, 9, 10}, {7, 8, 9, 10}, {8, 9, 10, 11}}));
}

// ---------------------------------------------------------------- field sources

// An even field's line k has its centre at frame line 2k + 0.5, an odd one's at 2k + 1.5: line y shows field line
// (y + 0.5) / 2 + 0.25 or - 0.25, held to 0 .. 3.
TEST_P(PolygonSpans, FieldSourceShowsOneFieldInItsPlace) {
    const auto column = [](int create_flags, uint32_t flags) {
        Weights lines;
        for (const Weights& line :
             nearest(in_place({0, 0, 1, 8}), numbered_weights(1, 8, static_cast<uint32_t>(create_flags)), 1, 8, flags))
            lines.push_back(line[0]);
        return lines;
    };
    constexpr int o = kUntouched;
    for (const int field : {2, 3}) {
        EXPECT_EQ(column(field, 0), (Weights{0, 200, 200, 400, 400, 600, 600, 600}));
        EXPECT_EQ(column(field, BMP_FIELD_ODD), (Weights{100, 100, 300, 300, 500, 500, 700, 700}))
            << "the odd flag alone picks the source's odd field";
        EXPECT_EQ(column(field, BMP_FIELD), (Weights{0, o, 200, o, 400, o, 600, o}));
        EXPECT_EQ(column(field, BMP_FIELD | BMP_FIELD_ODD), (Weights{o, 100, o, 300, o, 500, o, 700}));
    }
    for (const int frame : {0, 1})
        EXPECT_EQ(column(frame, BMP_FIELD_ODD), (Weights{0, 100, 200, 300, 400, 500, 600, 700}));
}

TEST_P(PolygonSpans, FieldSourceIsInterpolatedBetweenItsOwnLines) {
    // With filter 1 an even field's position is (y + 0.5) / 2 + 0.25 - 0.5 = y / 2: whole on even lines, the mean of
    // two field lines on odd ones; an odd field's (y - 1) / 2. Both are held to [0, 3 - 16/65536].
    const OwnedBitmap texture = numbered_weights(2, 8, 2);
    for (const uint32_t parity : {0u, 1u}) {
        const OwnedBitmap map = make_weights(1, 8, kUntouched);
        map_polygon({.dst = map.get(), .tex_a = texture.get(), .flags = parity}, in_place({0, 0, 1, 8}));
        Weights lines;
        for (const Weights& line : all_weights(map))
            lines.push_back(line[0]);
        // The last position has the fraction 127 / 128: 400 / 128 + 600 * 127 / 128 = 598.4, or 500, 700: 698.4.
        EXPECT_EQ(lines, parity ? (Weights{100, 100, 200, 300, 400, 500, 600, 698})
                                : (Weights{0, 100, 200, 300, 400, 500, 598, 598}));
    }
}

TEST_P(PolygonSpans, FieldSourceOfAnOddHeightHasHalfTheLines) {
    // Five lines: fields of lines 0, 2 and of lines 1, 3.
    const OwnedBitmap texture = numbered_weights(1, 5, 2);
    EXPECT_EQ(nearest(in_place({0, 0, 1, 5}), texture, 1, 5), (std::vector<Weights>{{0}, {200}, {200}, {200}, {200}}));
    EXPECT_EQ(nearest(in_place({0, 0, 1, 5}), texture, 1, 5, BMP_FIELD_ODD),
              (std::vector<Weights>{{100}, {100}, {300}, {300}, {300}}));
}

TEST_P(PolygonSpans, SourceWithoutALineOrAPixelDrawsNothing) {
    constexpr int o = kUntouched;
    EXPECT_EQ(nearest(in_place({0, 0, 2, 1}), numbered_weights(2, 1, 2), 2, 1), (std::vector<Weights>{{o, o}}));
    EXPECT_EQ(nearest(in_place({0, 0, 2, 1}), numbered_weights(2, 0), 2, 1), (std::vector<Weights>{{o, o}}));
    EXPECT_EQ(nearest(in_place({0, 0, 2, 1}), numbered_weights(0, 2), 2, 1), (std::vector<Weights>{{o, o}}));
}

// ---------------------------------------------------------------- the direction of the filter

TEST_P(PolygonSpans, LongestEdgeMetFirstGivesTheDirection) {
    // A square, so that all four edges tie; u grows by 6 along x and along y. The edge from the last corner to the
    // first is met first: it is upright and its source direction is u, so that u counts as the vertical. rv = 12 / 4 =
    // 3: class 3; rh = 0: class 0, one column wide. u = 1.5 (x + y + 1) - 0.5.
    const OwnedBitmap texture = make_bitmap(16, 8, BMP_FMT_PWRW);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x)
            weights(texture, y)[x] = static_cast<uint16_t>(128 * x * x);
    const auto draw = [&](const Polygon& polygon) {
        const OwnedBitmap map = make_weights(4, 4, kUntouched);
        map_polygon({.dst = map.get(), .tex_a = texture.get()}, polygon);
        return all_weights(map);
    };
    const Polygon square = {{0, 2, 1, 0, 0}, {6, 2, 1, 4, 0}, {12, 2, 1, 4, 4}, {6, 2, 1, 0, 4}};
    EXPECT_EQ(draw(square)[0][0], 128 * 1) << "u = 1";
    EXPECT_EQ(draw(square)[1][1], 128 * 16) << "u = 4";

    // Begun one corner later, the level edge at the top is met first: rh = 3, a box of 4 columns from 1.5 (x + y + 1) -
    // 2.
    Polygon later = square;
    std::rotate(later.begin(), later.begin() + 1, later.end());
    EXPECT_EQ(draw(later)[0][0], 128 * (0 + 1 + 4 + 9) / 4) << "u = -0.5, held to 0";
    EXPECT_EQ(draw(later)[1][1], 128 * (4 / 2 + 9 + 16 + 25 + 36 / 2) / 4) << "u = 2.5";
}

TEST_P(PolygonSpans, LevelEdgesCountForTheDirection) {
    // 8 x 4 pixels; v grows by 12 along x and by 12 along y, u stays. The level edges are longest, their source
    // direction is v: rh = 24 / 8 = 3, class 3, a box of 4 columns from u = 2.5 - 2. An upright edge would make it rv =
    // 6, a box of one column and 4 lines.
    const OwnedBitmap texture = make_bitmap(16, 32, BMP_FMT_PWRW);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 16; ++x)
            weights(texture, y)[x] = static_cast<uint16_t>(128 * x * x);
    const OwnedBitmap map = make_weights(8, 4, kUntouched);
    map_polygon({.dst = map.get(), .tex_a = texture.get()},
                {{2.5f, 0, 1, 0, 0}, {2.5f, 12, 1, 8, 0}, {2.5f, 24, 1, 8, 4}, {2.5f, 12, 1, 0, 4}});
    EXPECT_EQ(weights(map, 1)[3], 32 * (0 + 1 + 4 + 9 + 16 / 2));
}

TEST_P(PolygonSpans, ReductionIsMeasuredAlongTheTurnedSource) {
    // A right triangle of 40 x 20, turned by 36.87 degrees and not scaled: both ratios are 1. Turned the other way the
    // source would be 32 x 40 on 44 x 24: rv = 1.67, a box of two lines, which gives 500 everywhere. Of the pixel at
    // (20, 12) the source position is 0.8 * 10.5 - 0.6 * 4.5 = 5.7 lines, less a half: 25/128 of line 6.
    const OwnedBitmap texture = make_bitmap(41, 21, BMP_FMT_PWRW), map = make_weights(50, 27, kUntouched);
    for (int y = 0; y < 21; y += 2)
        for (int x = 0; x < 41; ++x)
            weights(texture, y)[x] = 1000;
    map_polygon({.dst = map.get(), .tex_a = texture.get()}, {{0, 0, 1, 16, 2}, {40, 0, 1, 48, 26}, {0, 20, 1, 4, 18}});
    EXPECT_EQ(weights(map, 12)[20], 195) << "25000 / 128";
}

ZEPBMP_FOR_ALL_TABLES(PolygonSpans);

}  // namespace
}  // namespace zepbmp::test
