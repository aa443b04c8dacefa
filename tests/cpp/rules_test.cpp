/// \file
/// Every rule of every operation: which error, of which argument, and what it says.
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "zepbmp.hpp"

namespace {

using zepbmp::ArgumentError;
using zepbmp::Field;
using zepbmp::Format;
using zepbmp::Level;
using zepbmp::NotDistinct;
using zepbmp::NullArgument;
using zepbmp::OutOfRange;
using zepbmp::PaletteIndex;
using zepbmp::Parity;
using zepbmp::Rgbq;
using zepbmp::Sampling;
using zepbmp::Vertex;
using zepbmp::Weight;
using zepbmp::WrongChoice;
using zepbmp::WrongFormat;
using zepbmp::WrongSize;
using zepbmp::Yuv;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
constexpr auto kNoField = static_cast<Field>(1);

/// The call throws exactly this kind of error, with this message.
template <class Error, class Call>
void refused(const std::string& message, Call call) {
    try {
        call();
        ADD_FAILURE() << "made: " << message;
    } catch (const ArgumentError& error) {
        EXPECT_EQ(typeid(error), typeid(Error)) << error.what();
        EXPECT_EQ(error.what(), message);
    }
}

zepbmp::Bitmap moved_away() {
    zepbmp::Bitmap bitmap(1, 1, Format::a8);
    const zepbmp::Bitmap elsewhere = std::move(bitmap);
    return bitmap;
}

std::vector<Vertex> triangle() { return {{0, 0, 1, 1, 1}, {9, 0, 1, 8, 1}, {0, 9, 1, 1, 8}}; }

/// Bitmaps of 16 x 12 pixels in every format, smaller ones, and one that was moved away.
class CppRules : public testing::Test {
protected:
    zepbmp::Bitmap yuy2{16, 12, Format::yuy2}, yuy2_2{16, 12, Format::yuy2}, rgbq{16, 12, Format::rgbq},
        rgbq_2{16, 12, Format::rgbq}, pwrw{16, 12, Format::pwrw}, pwrw_2{16, 12, Format::pwrw},
        quad{16, 12, Format::quad3}, rgb8{16, 12, Format::rgb8}, rgb8_2{16, 12, Format::rgb8}, a8{16, 12, Format::a8};
    zepbmp::Bitmap narrow_yuy2{15, 12, Format::yuy2}, low_yuy2{16, 11, Format::yuy2}, low_pwrw{16, 11, Format::pwrw},
        low_a8{16, 11, Format::a8}, low_quad{16, 11, Format::quad3};
    zepbmp::Bitmap gone = moved_away();
    const std::vector<Vertex> corners = triangle();
};

TEST(CppErrors, HaveTheirPartsAndSurviveCopying) {
    const OutOfRange error("map_rect", "dx1", "2000", "must lie inside the destination (0..1920)");
    const OutOfRange copy = error;
    EXPECT_STREQ(copy.what(), "map_rect: dx1 is 2000, must lie inside the destination (0..1920)");
    EXPECT_EQ(copy.operation(), "map_rect");
    EXPECT_EQ(copy.argument(), "dx1");
    EXPECT_EQ(copy.value(), "2000");
    EXPECT_EQ(copy.rule(), "must lie inside the destination (0..1920)");
    static_assert(std::is_base_of_v<std::invalid_argument, ArgumentError>);
    static_assert(std::is_nothrow_copy_constructible_v<OutOfRange>);
}

TEST_F(CppRules, Numbers) {
    refused<OutOfRange>("Level: value is 4097, must lie within 0..4096", [] { Level(4097); });
    refused<OutOfRange>("Level: value is -1, must lie within 0..4096", [] { Level(-1); });
    // What int does not hold is not cut to what it does.
    refused<OutOfRange>("Level: value is 4294967297, must lie within 0..4096", [] { Level(int64_t{4294967297}); });
    refused<OutOfRange>("Level: value is 18446744073709551615, must lie within 0..4096", [] { Level(UINT64_MAX); });
    refused<OutOfRange>("PaletteIndex: value is -1, must lie within 0..255",
                        [] { PaletteIndex(static_cast<signed char>(-1)); });
    refused<OutOfRange>("Weight: value is 4097, must lie within 0..4096", [] { Weight(4097); });
    refused<OutOfRange>("PaletteIndex: value is 256, must lie within 0..255", [] { PaletteIndex(256); });
    EXPECT_EQ(Level(0).value(), 0);
    EXPECT_EQ(Weight(4096).value(), 4096);
    EXPECT_EQ(Weight(uint16_t{4096}).value(), 4096);
    EXPECT_EQ(PaletteIndex(uint8_t{255}).value(), 255);
}

TEST_F(CppRules, MakingABitmap) {
    const auto make = [](int width, int height, Format format) { zepbmp::Bitmap(width, height, format); };
    refused<OutOfRange>("Bitmap: width is -1, must lie within 0..1073741816", [&] { make(-1, 1, Format::yuy2); });
    refused<OutOfRange>("Bitmap: width is 536870909, must lie within 0..536870908",
                        [&] { make(536870909, 1, Format::rgbq); });
    refused<OutOfRange>("Bitmap: width is 2147483633, must lie within 0..2147483632",
                        [&] { make(2147483633, 1, Format::a8); });
    refused<OutOfRange>("Bitmap: height is -1, must lie within 0..2147483647", [&] { make(0, -1, Format::yuy2); });
    refused<OutOfRange>("Bitmap: format is 8, must lie within 0..7", [&] { make(1, 1, static_cast<Format>(8)); });
    refused<WrongChoice>("Bitmap: scan is 1, must be one of the enumeration's values",
                         [] { zepbmp::Bitmap(1, 1, Format::a8, static_cast<zepbmp::Scan>(1)); });
    refused<WrongChoice>("Bitmap: contents is 8, must be one of the enumeration's values", [] {
        zepbmp::Bitmap(1, 1, Format::a8, zepbmp::Scan::progressive, static_cast<zepbmp::Contents>(8));
    });
    if constexpr (sizeof(void*) == 4) {
        // 65536 lines of 65536 bytes are 2^32, which wraps.
        refused<OutOfRange>("Bitmap: height is 65536, must lie within 0..65535",
                            [&] { make(65536, 65536, Format::a8); });
        // 67108863 lines of 64 bytes are 2^32 - 64.
        refused<OutOfRange>("Bitmap: height is 67108863, must lie within 0..67108862",
                            [&] { make(64, 67108863, Format::a8); });
    }
}

TEST_F(CppRules, TakingOverARecord) {
    refused<NullArgument>("Bitmap::adopt: record is null, must point to something",
                          [] { zepbmp::Bitmap::adopt(nullptr); });
    ::Bitmap* const odd = bmp_create(2, 2, 99, BMP_CREATE_ZERO);
    refused<WrongFormat>(
        "Bitmap::adopt: record is unknown, must be YUY2 or RGBQ or PWRW or QUAD3 or QUAD4 or QUAD5 or RGB8 or A8",
        [&] { zepbmp::Bitmap::adopt(odd); });
    bmp_destroy(odd);
    if constexpr (sizeof(void*) == 4) {
        ::Bitmap* const wrapped = bmp_create(-16, 0, BMP_FMT_A8, 0);
        ASSERT_NE(wrapped, nullptr);
        refused<OutOfRange>("Bitmap::adopt: width is -16, must lie within 0..2147483632",
                            [&] { zepbmp::Bitmap::adopt(wrapped); });
        bmp_destroy(wrapped);
    }
}

TEST_F(CppRules, ReadingABitmap) {
    const std::string empty = "empty, must hold a bitmap, not one that was moved away";
    refused<NullArgument>("width: bitmap is " + empty, [&] { static_cast<void>(gone.width()); });
    refused<NullArgument>("height: bitmap is " + empty, [&] { static_cast<void>(gone.height()); });
    refused<NullArgument>("pitch: bitmap is " + empty, [&] { static_cast<void>(gone.pitch()); });
    refused<NullArgument>("bytes_per_pixel: bitmap is " + empty, [&] { static_cast<void>(gone.bytes_per_pixel()); });
    refused<NullArgument>("format: bitmap is " + empty, [&] { static_cast<void>(gone.format()); });
    refused<NullArgument>("is_interlaced: bitmap is " + empty, [&] { static_cast<void>(gone.is_interlaced()); });
    refused<NullArgument>("row: bitmap is " + empty, [&] { gone.row<Format::a8>(0); });
    refused<NullArgument>("line: bitmap is " + empty, [&] { gone.line(0); });
    refused<NullArgument>("pointer: bitmap is " + empty, [&] { gone.pointer(0, 0); });
    refused<WrongFormat>("row: bitmap is A8, must be PWRW", [&] { a8.row<Format::pwrw>(0); });
    refused<WrongFormat>("depth_row: bitmap is RGBQ, must be QUAD3 or QUAD4 or QUAD5", [&] { rgbq.depth_row(0); });
    refused<OutOfRange>("row: y is 12, must lie inside the bitmap (0..11)", [&] { a8.row<Format::a8>(12); });
    refused<OutOfRange>("row: y is -1, must lie inside the bitmap (0..11)", [&] { a8.row<Format::a8>(-1); });
    refused<OutOfRange>("line: y is 12, must lie inside the bitmap (0..11)", [&] { a8.line(12); });
    refused<OutOfRange>("depth_row: y is 12, must lie inside the bitmap (0..11)", [&] { quad.depth_row(12); });
    refused<OutOfRange>("pointer: x is 16, must lie inside the bitmap (0..15)", [&] { a8.pointer(16, 0); });
    refused<OutOfRange>("pointer: y is -1, must lie inside the bitmap (0..11)", [&] { a8.pointer(0, -1); });
}

TEST_F(CppRules, Clear) {
    refused<NullArgument>("clear: bitmap is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::clear(gone); });
    refused<WrongChoice>("clear: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::clear(a8, kNoField); });
}

TEST_F(CppRules, Copy) {
    refused<NullArgument>("copy: destination is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::copy(gone, a8); });
    refused<NullArgument>("copy: source is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::copy(a8, gone); });
    refused<WrongFormat>("copy: source is RGBQ, must have as many bytes a pixel as YUY2",
                         [&] { zepbmp::copy(yuy2, rgbq); });
    refused<WrongSize>("copy: source is 15x12, must be as large as destination (16x12)",
                       [&] { zepbmp::copy(yuy2, narrow_yuy2); });
    refused<WrongSize>("copy: source is 16x12, must be as large as destination (16x11)",
                       [&] { zepbmp::copy(low_yuy2, yuy2); });
    refused<WrongChoice>("copy: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::copy(yuy2, yuy2_2, kNoField); });
    zepbmp::copy(yuy2, yuy2);
    zepbmp::copy(pwrw, yuy2);  // as many bytes a pixel
}

TEST_F(CppRules, Blt) {
    refused<NullArgument>("blt: destination is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::blt(gone, {}, {}, a8, {}); });
    refused<NullArgument>("blt: source is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::blt(a8, {}, {}, gone, {}); });
    refused<WrongFormat>("blt: source is RGBQ, must have as many bytes a pixel as A8",
                         [&] { zepbmp::blt(a8, {}, {}, rgbq, {}); });
    refused<WrongChoice>("blt: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::blt(a8, {}, {}, a8, {}, kNoField); });
    const auto rule = [](const char* argument, const char* value) {
        return std::string("blt: ") + argument + " is " + value + ", must lie within -2147483648..2147483647";
    };
    refused<OutOfRange>(rule("dest_x + width", "2147483648"), [&] { zepbmp::blt(a8, {1, 0}, {kMost, 1}, a8, {}); });
    refused<OutOfRange>(rule("dest_y + height", "2147483648"), [&] { zepbmp::blt(a8, {0, 1}, {1, kMost}, a8, {}); });
    refused<OutOfRange>(rule("src_x + width", "2147483648"), [&] { zepbmp::blt(a8, {}, {kMost, 1}, a8, {1, 0}); });
    refused<OutOfRange>(rule("src_y + height", "-2147483649"), [&] { zepbmp::blt(a8, {}, {1, -1}, a8, {0, kLeast}); });
    zepbmp::blt(a8, {}, {kMost, kMost}, a8, {});
}

TEST_F(CppRules, Interporate) {
    refused<NullArgument>("interporate: destination is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::interporate(gone, a8, Parity::even); });
    refused<NullArgument>("interporate: source is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::interporate(a8, gone, Parity::even); });
    refused<WrongFormat>("interporate: source is A8, must have as many bytes a pixel as YUY2",
                         [&] { zepbmp::interporate(yuy2, a8, Parity::even); });
    refused<WrongSize>("interporate: source is 16x11, must be at least as large as destination (16x12)",
                       [&] { zepbmp::interporate(yuy2, low_yuy2, Parity::even); });
    refused<WrongSize>("interporate: source is 15x12, must be at least as large as destination (16x12)",
                       [&] { zepbmp::interporate(yuy2, narrow_yuy2, Parity::even); });
    zepbmp::interporate(low_yuy2, yuy2, Parity::even);
    refused<WrongChoice>("interporate: field is 2, must be one of the enumeration's values",
                         [&] { zepbmp::interporate(yuy2, yuy2, static_cast<Parity>(2)); });
}

TEST_F(CppRules, DrawRect) {
    refused<WrongFormat>("draw_rect: bitmap is YUY2, must be RGBQ", [&] { zepbmp::draw_rect(yuy2, {}, Rgbq{}); });
    refused<WrongFormat>("draw_rect: bitmap is A8, must be PWRW", [&] { zepbmp::draw_rect(a8, {}, Weight(1)); });
    refused<WrongFormat>("draw_rect: bitmap is RGBQ, must be RGB8",
                         [&] { zepbmp::draw_rect(rgbq, {}, PaletteIndex(1), zepbmp::RectMode::bit_or); });
    refused<WrongChoice>("draw_rect: mode is 48, must be one of the enumeration's values",
                         [&] { zepbmp::draw_rect(rgb8, {}, PaletteIndex(1), static_cast<zepbmp::RectMode>(48)); });
    refused<NullArgument>("draw_rect: bitmap is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::draw_rect(gone, {}, Rgbq{}); });
    zepbmp::draw_rect(rgbq, {kLeast, kLeast, kMost, kMost}, Rgbq{});
}

TEST_F(CppRules, DrawLine) {
    const PaletteIndex white(255);
    refused<WrongFormat>("draw_line: bitmap is A8, must be RGB8", [&] { zepbmp::draw_line(a8, {}, {}, white); });
    refused<WrongChoice>("draw_line: mode is 64, must be one of the enumeration's values",
                         [&] { zepbmp::draw_line(rgb8, {}, {}, white, static_cast<zepbmp::LineMode>(0x40)); });
    const auto rule = [](const char* end, const char* range) {
        return std::string("draw_line: ") + end + ", must lie inside the bitmap (" + range + ")";
    };
    refused<OutOfRange>(rule("x0 is -1", "0..15"), [&] { zepbmp::draw_line(rgb8, {-1, 0}, {}, white); });
    refused<OutOfRange>(rule("y0 is 12", "0..11"), [&] { zepbmp::draw_line(rgb8, {0, 12}, {}, white); });
    refused<OutOfRange>(rule("x1 is 16", "0..15"), [&] { zepbmp::draw_line(rgb8, {}, {16, 0}, white); });
    refused<OutOfRange>(rule("y1 is -1", "0..11"), [&] { zepbmp::draw_line(rgb8, {}, {0, -1}, white); });
    zepbmp::draw_line(rgb8, {15, 11}, {0, 0}, white);
}

TEST_F(CppRules, PaletteAndDisplay) {
    refused<WrongFormat>("set_palette: bitmap is A8, must be RGB8",
                         [&] { zepbmp::set_palette(a8, PaletteIndex(1), Rgbq{}); });
    int any_context = 0;  // no call comes to use it
    void* const context = &any_context;
    refused<NullArgument>("display: bitmap is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::display(context, {}, {}, gone); });
    refused<OutOfRange>("display: width is -1, must lie within 0..2147483647", [&] {
        zepbmp::display(context, {}, {-1, 1}, rgbq);
    });
    refused<OutOfRange>("display: height is -1, must lie within 0..2147483647", [&] {
        zepbmp::display(context, {}, {1, -1}, rgbq);
    });
    refused<OutOfRange>("display: src_x is 17, must lie inside the bitmap (0..16)", [&] {
        zepbmp::display(context, {}, {1, 1}, rgbq, 17);
    });
    refused<OutOfRange>("display: start_line is -1, must lie within 0..2147483647", [&] {
        zepbmp::display(context, {}, {1, 1}, rgbq, 0, -1);
    });
#if defined(_WIN32)
    refused<NullArgument>("display: device_context is null, must point to something", [&] {
        zepbmp::display(nullptr, {}, {1, 1}, rgbq);
    });
#else
    EXPECT_EQ(zepbmp::display(nullptr, {}, {1, 1}, rgbq), 0);
#endif
}

TEST_F(CppRules, Compose) {
    refused<NullArgument>("compose: dest is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::compose(gone, yuy2, yuy2, pwrw); });
    refused<NullArgument>("compose: src1 is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::compose(yuy2, gone, yuy2, pwrw); });
    refused<NullArgument>("compose: mask is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::compose(yuy2, yuy2, yuy2, gone); });
    refused<WrongFormat>("compose: dest is PWRW, must be YUY2 or RGBQ",
                         [&] { zepbmp::compose(pwrw, pwrw, pwrw, pwrw); });
    refused<WrongFormat>("compose: src1 is RGBQ, must be YUY2", [&] { zepbmp::compose(yuy2, rgbq, yuy2, pwrw); });
    refused<WrongFormat>("compose: src2 is YUY2, must be RGBQ", [&] { zepbmp::compose(rgbq, rgbq, yuy2, pwrw); });
    refused<WrongFormat>("compose: mask is YUY2, must be PWRW or A8", [&] { zepbmp::compose(yuy2, yuy2, yuy2, yuy2); });
    refused<WrongSize>("compose: src1 is 15x12, must be at least as large as dest (16x12)",
                       [&] { zepbmp::compose(yuy2, narrow_yuy2, yuy2, pwrw); });
    refused<WrongSize>("compose: src2 is 16x11, must be at least as large as dest (16x12)",
                       [&] { zepbmp::compose(yuy2, yuy2, low_yuy2, pwrw); });
    refused<WrongSize>("compose: mask is 16x11, must be at least as large as dest (16x12)",
                       [&] { zepbmp::compose(yuy2, yuy2, yuy2, low_a8); });
    refused<WrongChoice>("compose: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::compose(yuy2, yuy2, yuy2, a8, kNoField); });
    zepbmp::compose(low_yuy2, yuy2, yuy2, pwrw);  // larger ones are as good
}

TEST_F(CppRules, ComposeAtALevel) {
    refused<NullArgument>("compose: dest is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::compose(gone, yuy2, yuy2, Level(1)); });
    refused<WrongFormat>("compose: src2 is PWRW, must be QUAD3", [&] { zepbmp::compose(quad, quad, pwrw, Level(1)); });
    refused<WrongSize>("compose: src1 is 15x12, must be at least as large as dest (16x12)",
                       [&] { zepbmp::compose(yuy2, narrow_yuy2, yuy2, Level(1)); });
    refused<WrongChoice>("compose: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::compose(yuy2, yuy2, yuy2, Level(1), kNoField); });
}

TEST_F(CppRules, ComposeColor) {
    refused<WrongFormat>("compose_color: dest is RGBQ, must be YUY2",
                         [&] { zepbmp::compose_color(rgbq, rgbq, rgbq, pwrw, pwrw, Yuv{}); });
    refused<WrongFormat>("compose_color: dest is YUY2, must be RGBQ",
                         [&] { zepbmp::compose_color(yuy2, yuy2, pwrw, Rgbq{}); });
    refused<WrongFormat>("compose_color: src1 is RGBQ, must be YUY2",
                         [&] { zepbmp::compose_color(yuy2, rgbq, yuy2, pwrw, pwrw, Yuv{}); });
    refused<WrongFormat>("compose_color: src2 is RGBQ, must be YUY2",
                         [&] { zepbmp::compose_color(yuy2, yuy2, rgbq, pwrw, pwrw, Yuv{}); });
    refused<WrongFormat>("compose_color: mask1 is A8, must be PWRW",
                         [&] { zepbmp::compose_color(yuy2, yuy2, yuy2, a8, pwrw, Yuv{}); });
    refused<WrongFormat>("compose_color: mask2 is A8, must be PWRW",
                         [&] { zepbmp::compose_color(yuy2, yuy2, yuy2, pwrw, a8, Yuv{}); });
    refused<WrongFormat>("compose_color: mask is A8, must be PWRW",
                         [&] { zepbmp::compose_color(yuy2, yuy2, a8, Yuv{}); });
    refused<WrongSize>("compose_color: src1 is 16x11, must be at least as large as dest (16x12)",
                       [&] { zepbmp::compose_color(yuy2, low_yuy2, yuy2, pwrw, pwrw, Yuv{}); });
    refused<WrongSize>("compose_color: src2 is 15x12, must be at least as large as dest (16x12)",
                       [&] { zepbmp::compose_color(yuy2, yuy2, narrow_yuy2, pwrw, pwrw, Yuv{}); });
    refused<WrongSize>("compose_color: src is 16x11, must be at least as large as dest (16x12)",
                       [&] { zepbmp::compose_color(yuy2, low_yuy2, pwrw, Yuv{}); });
    refused<WrongSize>("compose_color: mask1 is 16x11, must be at least as large as dest (16x12)",
                       [&] { zepbmp::compose_color(yuy2, yuy2, yuy2, low_pwrw, pwrw, Yuv{}); });
    refused<WrongSize>("compose_color: mask2 is 16x11, must be at least as large as dest (16x12)",
                       [&] { zepbmp::compose_color(yuy2, yuy2, yuy2, pwrw, low_pwrw, Yuv{}); });
    refused<WrongChoice>("compose_color: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::compose_color(yuy2, yuy2, yuy2, pwrw, pwrw, Yuv{}, kNoField); });
    refused<WrongChoice>("compose_color: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::compose_color(yuy2, yuy2, pwrw, Yuv{}, kNoField); });
    refused<NullArgument>("compose_color: mask2 is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::compose_color(yuy2, yuy2, yuy2, pwrw, gone, Yuv{}); });
}

TEST_F(CppRules, AlphaRect) {
    using zepbmp::CornerRadii;
    using zepbmp::FloatRect;
    using zepbmp::ShapeMode;
    refused<WrongFormat>("alpha_rect: bitmap is YUY2, must be PWRW",
                         [&] { zepbmp::alpha_rect(yuy2, {}, ShapeMode::add); });
    refused<WrongChoice>("alpha_rect: mode is 32, must be one of the enumeration's values",
                         [&] { zepbmp::alpha_rect(pwrw, {}, static_cast<ShapeMode>(0x20)); });
    refused<WrongChoice>("alpha_rect: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::alpha_rect(pwrw, {}, ShapeMode::add, kNoField); });
    const auto rect = [&](const FloatRect& r) { return [&, r] { zepbmp::alpha_rect(pwrw, r, ShapeMode::add); }; };
    const std::string anywhere = ", must lie within -33554432..33554432", extent = ", must lie within 0..33554432";
    refused<OutOfRange>("alpha_rect: x is nan" + anywhere, rect({.x = kNan}));
    refused<OutOfRange>("alpha_rect: y is -inf" + anywhere, rect({.y = -kInfinity}));
    refused<OutOfRange>("alpha_rect: x is 33554436" + anywhere, rect({.x = 33554436}));
    refused<OutOfRange>("alpha_rect: width is -0.5" + extent, rect({.width = -0.5f}));
    refused<OutOfRange>("alpha_rect: height is inf" + extent, rect({.height = kInfinity}));
    refused<OutOfRange>("alpha_rect: radius_x is -1" + extent, [&] {
        zepbmp::alpha_rect(pwrw, {}, CornerRadii{-1, 0});
    });
    refused<OutOfRange>("alpha_rect: radius_y is nan" + extent, [&] {
        zepbmp::alpha_rect(pwrw, {}, CornerRadii{0, kNan});
    });
}

TEST_F(CppRules, AlphaCircle) {
    using zepbmp::Circle;
    refused<WrongFormat>("alpha_circle: bitmap is A8, must be PWRW", [&] { zepbmp::alpha_circle(a8, {}); });
    refused<WrongChoice>("alpha_circle: ramp is 1, must be one of the enumeration's values",
                         [&] { zepbmp::alpha_circle(pwrw, {}, static_cast<zepbmp::Ramp>(1)); });
    refused<WrongChoice>("alpha_circle: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::alpha_circle(pwrw, {}, zepbmp::Ramp::linear, kNoField); });
    const auto circle = [&](const Circle& c) { return [&, c] { zepbmp::alpha_circle(pwrw, c); }; };
    const std::string rule = ", must lie within -1073741824..1073741824";
    refused<OutOfRange>("alpha_circle: cx is nan" + rule, circle({.cx = kNan}));
    refused<OutOfRange>("alpha_circle: cy is 2e+09" + rule, circle({.cy = 2e9f}));
    refused<OutOfRange>("alpha_circle: radius is inf" + rule, circle({.radius = kInfinity}));
    refused<OutOfRange>("alpha_circle: feather is nan, must be finite", circle({.feather = kNan}));
    refused<OutOfRange>("alpha_circle: aspect is 0, must be a finite number above 0", circle({.aspect = 0}));
    refused<OutOfRange>("alpha_circle: aspect is inf, must be a finite number above 0", circle({.aspect = kInfinity}));
    zepbmp::alpha_circle(pwrw, {.radius = -1});
}

TEST_F(CppRules, MapPolygonsBitmaps) {
    const auto map = [&](zepbmp::Bitmap& dst, const zepbmp::Bitmap& source, zepbmp::PolygonOptions options = {}) {
        return [&dst, &source, options, this] { zepbmp::map_polygon(dst, source, corners, options); };
    };
    refused<NullArgument>("map_polygon: dst is empty, must hold a bitmap, not one that was moved away",
                          map(gone, yuy2));
    refused<NullArgument>("map_polygon: source is empty, must hold a bitmap, not one that was moved away",
                          map(yuy2, gone));
    refused<WrongFormat>("map_polygon: dst is RGB8, must be YUY2 or RGBQ or PWRW", map(rgb8, rgb8_2));
    refused<WrongFormat>("map_polygon: source is YUY2, must be RGBQ", map(rgbq, yuy2));
    refused<NotDistinct>("map_polygon: source is the same bitmap as dst, must be another one", map(yuy2, yuy2));

    refused<NullArgument>("map_polygon: coverage is empty, must hold a bitmap, not one that was moved away",
                          map(yuy2, yuy2_2, {.coverage = &gone}));
    refused<WrongFormat>("map_polygon: coverage is RGBQ, must be PWRW or A8", map(yuy2, yuy2_2, {.coverage = &rgbq}));
    refused<WrongSize>("map_polygon: coverage is 16x11, must be at least as large as dst (16x12)",
                       map(yuy2, yuy2_2, {.coverage = &low_a8}));
    refused<NotDistinct>("map_polygon: coverage is the same bitmap as dst, must be another one",
                         map(pwrw, pwrw_2, {.coverage = &pwrw}));
    refused<NotDistinct>("map_polygon: coverage is the same bitmap as source, must be another one",
                         map(pwrw, pwrw_2, {.coverage = &pwrw_2}));

    refused<NullArgument>("map_polygon: depth is empty, must hold a bitmap, not one that was moved away",
                          map(yuy2, yuy2_2, {.depth = &gone}));
    refused<WrongFormat>("map_polygon: depth is RGBQ, must be QUAD3 or QUAD4 or QUAD5",
                         map(yuy2, yuy2_2, {.depth = &rgbq}));
    refused<WrongSize>("map_polygon: depth is 16x11, must be at least as large as dst (16x12)",
                       map(yuy2, yuy2_2, {.depth = &low_quad}));
    refused<WrongFormat>("map_polygon: dst is PWRW, must be YUY2 or RGBQ", map(pwrw, pwrw_2, {.depth = &quad}));
    refused<WrongChoice>(
        "map_polygon: sampling is filtered_antialiased, must be filtered or nearest with a depth buffer",
        map(yuy2, yuy2_2, {.sampling = Sampling::filtered_antialiased, .depth = &quad}));

    refused<WrongChoice>("map_polygon: field is 1, must be one of the enumeration's values",
                         map(yuy2, yuy2_2, {.field = kNoField}));
    refused<WrongChoice>("map_polygon: sampled is 2, must be one of the enumeration's values",
                         map(yuy2, yuy2_2, {.sampled = static_cast<Parity>(2)}));
    refused<WrongChoice>("map_polygon: sampling is 16, must be one of the enumeration's values",
                         map(yuy2, yuy2_2, {.sampling = static_cast<Sampling>(BMP_MAP_EXTRA)}));
}

TEST_F(CppRules, MapPolygonsCorners) {
    const auto with = [&](float Vertex::*part, float value, Sampling sampling = Sampling::filtered) {
        return [=, this] {
            std::vector<Vertex> vertices = corners;
            vertices[1].*part = value;
            zepbmp::map_polygon(yuy2, yuy2_2, vertices, {.sampling = sampling});
        };
    };
    const std::string rule = ", must lie within -524288..524288";
    refused<OutOfRange>("map_polygon: x is nan" + rule, with(&Vertex::x, kNan));
    refused<OutOfRange>("map_polygon: x is 524288.06" + rule, with(&Vertex::x, 524288.0625f));
    refused<OutOfRange>("map_polygon: y is -inf" + rule, with(&Vertex::y, -kInfinity));
    refused<OutOfRange>("map_polygon: y is 174763, must lie within -174762..174762",
                        with(&Vertex::y, 174763, Sampling::filtered_antialiased));
    refused<OutOfRange>("map_polygon: u is nan, must be finite", with(&Vertex::u, kNan));
    refused<OutOfRange>("map_polygon: v is inf, must be finite", with(&Vertex::v, kInfinity));
    refused<OutOfRange>("map_polygon: w is 0, must be a finite number above 0", with(&Vertex::w, 0));
    refused<OutOfRange>("map_polygon: w is -1, must be a finite number above 0", with(&Vertex::w, -1));
    refused<OutOfRange>("map_polygon: w is inf, must be a finite number above 0", with(&Vertex::w, kInfinity));
    refused<OutOfRange>("map_polygon: w is nan, must be a finite number above 0", with(&Vertex::w, kNan));
    with(&Vertex::y, 174763)();
    zepbmp::map_polygon(yuy2, yuy2_2, {});  // encloses nothing
    if constexpr (sizeof(size_t) > 4) {
        const std::span<const Vertex> endless(corners.data(), size_t{1} << 31);  // is not read
        refused<OutOfRange>("map_polygon: count is 2147483648, must lie within 0..2147483647",
                            [&] { zepbmp::map_polygon(yuy2, yuy2_2, endless); });
    }
}

TEST_F(CppRules, TintPolygon) {
    const auto tint = [&](zepbmp::Bitmap& dst, const zepbmp::Bitmap& strength, zepbmp::PolygonOptions options = {}) {
        return [&dst, &strength, options, this] { zepbmp::tint_polygon(dst, strength, Yuv{}, corners, options); };
    };
    refused<WrongFormat>("tint_polygon: dst is RGBQ, must be YUY2", tint(rgbq, a8));
    refused<WrongFormat>("tint_polygon: dst is YUY2, must be RGBQ",
                         [&] { zepbmp::tint_polygon(yuy2, a8, Rgbq{}, corners); });
    refused<WrongFormat>("tint_polygon: strength is PWRW, must be A8", tint(yuy2, pwrw));
    refused<NotDistinct>("tint_polygon: coverage is the same bitmap as source, must be another one",
                         tint(yuy2, a8, {.coverage = &a8}));
    refused<WrongSize>("tint_polygon: coverage is 16x11, must be at least as large as dst (16x12)",
                       tint(yuy2, a8, {.coverage = &low_pwrw}));
    refused<WrongChoice>("tint_polygon: depth is a bitmap, must be null: tints have no depth",
                         tint(yuy2, a8, {.depth = &quad}));
    refused<WrongChoice>("tint_polygon: sampling is filtered_antialiased, must be filtered or nearest",
                         tint(yuy2, a8, {.sampling = Sampling::filtered_antialiased}));
    refused<WrongChoice>("tint_polygon: field is 1, must be one of the enumeration's values",
                         tint(yuy2, a8, {.field = kNoField}));
    const std::vector<Vertex> flat = {{0, 0, 0, 1, 1}};
    refused<OutOfRange>("tint_polygon: w is 0, must be a finite number above 0",
                        [&] { zepbmp::tint_polygon(yuy2, a8, Yuv{}, flat); });
}

TEST_F(CppRules, FillPolygon) {
    const auto fill = [&](zepbmp::Bitmap& dst, zepbmp::FillOptions options = {}) {
        return [&dst, options, this] { zepbmp::fill_polygon(dst, Rgbq{}, Level(4096), corners, options); };
    };
    refused<WrongFormat>("fill_polygon: dst is PWRW, must be RGBQ", fill(pwrw));
    refused<WrongFormat>("fill_polygon: coverage is YUY2, must be PWRW or A8", fill(rgbq, {.coverage = &yuy2}));
    refused<WrongSize>("fill_polygon: coverage is 16x11, must be at least as large as dst (16x12)",
                       fill(rgbq, {.coverage = &low_pwrw}));
    refused<WrongChoice>("fill_polygon: field is 1, must be one of the enumeration's values",
                         fill(rgbq, {.field = kNoField}));
    const std::vector<Vertex> far_down = {{0, 0, 1, 1, 200000}};
    refused<OutOfRange>("fill_polygon: y is 200000, must lie within -174762..174762",
                        [&] { zepbmp::fill_polygon(rgbq, Rgbq{}, Level(1), far_down); });
}

TEST_F(CppRules, MapRectsBitmaps) {
    const zepbmp::FloatBox box = {0, 0, 4, 4};
    refused<NullArgument>("map_rect: dest is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::map_rect(gone, pwrw, box, yuy2, box); });
    refused<NullArgument>("map_rect: weight_map is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::map_rect(yuy2, gone, box, yuy2_2, box); });
    refused<NullArgument>("map_rect: src is empty, must hold a bitmap, not one that was moved away",
                          [&] { zepbmp::map_rect(yuy2, pwrw, box, gone, box); });
    refused<WrongFormat>("map_rect: dest is RGB8, must be YUY2 or RGBQ",
                         [&] { zepbmp::map_rect(rgb8, pwrw, box, rgb8_2, box); });
    refused<WrongFormat>("map_rect: dest is YUY2, must be RGB8", [&] { zepbmp::map_rect(yuy2, box, yuy2_2, box); });
    refused<WrongFormat>("map_rect: weight_map is A8, must be PWRW",
                         [&] { zepbmp::map_rect(yuy2, a8, box, yuy2_2, box); });
    refused<WrongFormat>("map_rect: src is RGBQ, must be YUY2", [&] { zepbmp::map_rect(yuy2, pwrw, box, rgbq, box); });
    refused<WrongSize>("map_rect: weight_map is 16x11, must be as large as dest (16x12)",
                       [&] { zepbmp::map_rect(yuy2, low_pwrw, box, yuy2_2, box); });
    refused<NotDistinct>("map_rect: src is the same bitmap as dest, must be another one",
                         [&] { zepbmp::map_rect(rgb8, box, rgb8, box); });
    refused<WrongChoice>("map_rect: field is 1, must be one of the enumeration's values",
                         [&] { zepbmp::map_rect(rgb8, box, rgb8_2, box, kNoField); });
}

TEST_F(CppRules, MapRectsSides) {
    using zepbmp::FloatBox;
    const FloatBox box = {0, 0, 4, 4};
    const auto to = [&](const FloatBox& sides) { return [=, this] { zepbmp::map_rect(rgb8, sides, rgb8_2, box); }; };
    const auto from = [&](const FloatBox& sides) { return [=, this] { zepbmp::map_rect(rgb8, box, rgb8_2, sides); }; };
    refused<OutOfRange>("map_rect: dx0 is nan, must lie within -262144..262144", to({.x0 = kNan}));
    refused<OutOfRange>("map_rect: dy0 is -524289, must lie within -524288..524288", to({.y0 = -524289}));
    refused<OutOfRange>("map_rect: dx1 is 16.5, must lie inside the destination (0..16)", to({.x1 = 16.5f}));
    refused<OutOfRange>("map_rect: dx1 is -1, must lie inside the destination (0..16)", to({.x1 = -1}));
    refused<OutOfRange>("map_rect: dy1 is inf, must lie inside the destination (0..12)", to({.y1 = kInfinity}));
    refused<OutOfRange>("map_rect: sx0 is 262145, must lie within -262144..262144", from({.x0 = 262145}));
    refused<OutOfRange>("map_rect: sy0 is nan, must lie within -524288..524288", from({.y0 = kNan, .x1 = 4}));
    refused<OutOfRange>("map_rect: sx1 is nan, must lie inside the source (0..16)", from({.x1 = kNan}));
    refused<OutOfRange>("map_rect: sy1 is 13, must lie inside the source (0..12)", from({.x1 = 4, .y1 = 13}));
    refused<OutOfRange>("map_rect: sx1 is 2, must be a finite number above 2", from({2, 0, 2, 4}));
    refused<OutOfRange>("map_rect: sy1 is 1, must be a finite number above 3", from({0, 3, 4, 1}));
    to({3, 3, 1, 1})();  // encloses nothing
}

/// What throws has touched nothing.
TEST_F(CppRules, NothingIsTouched) {
    yuy2.row<Format::yuy2>(3)[2] = {1, 2, 3, 4};
    EXPECT_THROW(zepbmp::compose(yuy2, yuy2_2, rgbq, pwrw), WrongFormat);
    EXPECT_THROW(zepbmp::clear(yuy2, kNoField), WrongChoice);
    EXPECT_EQ(yuy2.row<Format::yuy2>(3)[2], (zepbmp::Yuy2Pair{1, 2, 3, 4}));
}

}  // namespace
