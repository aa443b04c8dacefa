/// \file
/// What does not compile. Each expression stands beside one that differs in the wrong type alone and does compile.
#include <gtest/gtest.h>

#include <span>
#include <type_traits>
#include <utility>

#include "zepbmp.hpp"

namespace {

using zepbmp::Bitmap;
using zepbmp::Box;
using zepbmp::ColorRef;
using zepbmp::Field;
using zepbmp::FloatBox;
using zepbmp::FloatRect;
using zepbmp::Format;
using zepbmp::Level;
using zepbmp::LineMode;
using zepbmp::PaletteIndex;
using zepbmp::Parity;
using zepbmp::Point;
using zepbmp::RectMode;
using zepbmp::Rgbq;
using zepbmp::Scan;
using zepbmp::ShapeMode;
using zepbmp::Size;
using zepbmp::Vertex;
using zepbmp::Weight;
using zepbmp::Yuv;

using Vertices = std::span<const Vertex>;

/// Whether an operation takes arguments of these types.
#define ZEPBMP_CAN(concept_name, operation)                       \
    template <class... Arguments>                                 \
    concept concept_name = requires(Arguments && ... arguments) { \
        operation(std::forward<Arguments>(arguments)...);         \
    }
ZEPBMP_CAN(CanClear, zepbmp::clear);
ZEPBMP_CAN(CanInterporate, zepbmp::interporate);
ZEPBMP_CAN(CanBlt, zepbmp::blt);
ZEPBMP_CAN(CanDrawRect, zepbmp::draw_rect);
ZEPBMP_CAN(CanDrawLine, zepbmp::draw_line);
ZEPBMP_CAN(CanSetPalette, zepbmp::set_palette);
ZEPBMP_CAN(CanCompose, zepbmp::compose);
ZEPBMP_CAN(CanComposeColor, zepbmp::compose_color);
ZEPBMP_CAN(CanAlphaRect, zepbmp::alpha_rect);
ZEPBMP_CAN(CanFillPolygon, zepbmp::fill_polygon);
ZEPBMP_CAN(CanMapPolygon, zepbmp::map_polygon);
ZEPBMP_CAN(CanMapRect, zepbmp::map_rect);
#undef ZEPBMP_CAN

using Source = const Bitmap&;
using Target = Bitmap&;

// A bitmap has one owner.
static_assert(!std::is_copy_constructible_v<Bitmap> && !std::is_copy_assignable_v<Bitmap>);
static_assert(std::is_nothrow_move_constructible_v<Bitmap> && std::is_nothrow_move_assignable_v<Bitmap>);
static_assert(std::is_constructible_v<Bitmap, int, int, Format> && !std::is_constructible_v<Bitmap, int, int, int>);
static_assert(!std::is_constructible_v<Bitmap, int, int, Format, Field>);
static_assert(!std::is_convertible_v<::Bitmap*, Bitmap>);

// Scales.
static_assert(!std::is_convertible_v<int, Level> && !std::is_convertible_v<int, Weight>);
static_assert(!std::is_constructible_v<Level, Weight> && !std::is_constructible_v<Weight, Level>);
static_assert(!std::is_constructible_v<PaletteIndex, Level> && !std::is_convertible_v<Level, int>);
static_assert(std::is_constructible_v<Level, int64_t> && !std::is_constructible_v<Level, double> &&
              !std::is_constructible_v<Weight, float> && !std::is_constructible_v<PaletteIndex, Format>);

// What is only read may be const; what is written may not.
static_assert(CanClear<Target, Field> && !CanClear<Source, Field>);
static_assert(CanCompose<Target, Source, Source, Source> && !CanCompose<Source, Source, Source, Source>);
static_assert(CanMapRect<Target, Target, FloatBox, Source, FloatBox> &&
              !CanMapRect<Target, Source, FloatBox, Source, FloatBox>);

// Fields, modes.
static_assert(!CanClear<Target, Parity> && !CanClear<Target, unsigned> && !CanClear<Target, Scan>);
static_assert(CanInterporate<Target, Source, Parity> && !CanInterporate<Target, Source, Field>);
static_assert(CanDrawLine<Target, Point, Point, PaletteIndex, LineMode> &&
              !CanDrawLine<Target, Point, Point, PaletteIndex, RectMode>);
static_assert(CanDrawRect<Target, Box, PaletteIndex, RectMode> && !CanDrawRect<Target, Box, PaletteIndex, LineMode> &&
              !CanDrawRect<Target, Box, PaletteIndex>);
static_assert(CanAlphaRect<Target, FloatRect, ShapeMode> && !CanAlphaRect<Target, FloatRect, unsigned>);
static_assert(!CanMapPolygon<Target, Source, Vertices, unsigned> && CanMapPolygon<Target, Source, Vertices>);

// Masks, levels, weights.
static_assert(CanCompose<Target, Source, Source, Level> && !CanCompose<Target, Source, Source, int> &&
              !CanCompose<Target, Source, Source, Weight>);
static_assert(CanFillPolygon<Target, Yuv, Level, Vertices> && !CanFillPolygon<Target, Yuv, Weight, Vertices>);

// Colours.
static_assert(CanDrawRect<Target, Box, Rgbq> && CanDrawRect<Target, Box, Weight> && !CanDrawRect<Target, Box, Yuv> &&
              !CanDrawRect<Target, Box, ColorRef> && !CanDrawRect<Target, Box, unsigned> &&
              !CanDrawRect<Target, Box, Level>);
static_assert(CanSetPalette<Target, PaletteIndex, Rgbq> && !CanSetPalette<Target, PaletteIndex, ColorRef> &&
              !CanSetPalette<Target, int, Rgbq>);
static_assert(CanComposeColor<Target, Source, Source, Yuv> && CanComposeColor<Target, Source, Source, Rgbq> &&
              !CanComposeColor<Target, Source, Source, ColorRef> && !CanComposeColor<Target, Source, Source, unsigned>);

// Kinds of rectangles.
static_assert(CanBlt<Target, Point, Size, Source, Point> && !CanBlt<Target, Size, Point, Source, Point>);
static_assert(!CanDrawRect<Target, FloatBox, Rgbq> && !CanAlphaRect<Target, FloatBox, ShapeMode> &&
              !CanMapRect<Target, Target, FloatRect, Source, FloatBox>);

// Rows.
template <Format F, class Owner>
using Row = decltype(std::declval<Owner>().template row<F>(0));
static_assert(std::is_same_v<Row<Format::yuy2, Target>, std::span<zepbmp::Yuy2Pair>>);
static_assert(std::is_same_v<Row<Format::yuy2, Source>, std::span<const zepbmp::Yuy2Pair>>);
static_assert(std::is_same_v<Row<Format::rgbq, Target>, std::span<Rgbq>>);
static_assert(std::is_same_v<Row<Format::pwrw, Source>, std::span<const uint16_t>>);
static_assert(std::is_same_v<Row<Format::quad4, Target>, std::span<uint32_t>>);
static_assert(std::is_same_v<Row<Format::rgb8, Target>, std::span<uint8_t>>);
static_assert(std::is_same_v<Row<Format::a8, Source>, std::span<const uint8_t>>);
static_assert(std::is_same_v<decltype(std::declval<Source>().depth_row(0)), std::span<const float>>);

// A constant is checked by the compiler.
constexpr Level kHalf(2048);
static_assert(kHalf.value() == 2048 && kHalf < Level(zepbmp::kWeightFull));
template <int value>
concept IsLevel = requires {
    typename std::integral_constant<int, Level(value).value()>;
};
static_assert(IsLevel<4096> && !IsLevel<4097> && !IsLevel<-1>);

TEST(CppTypes, ColoursPackAsTheLibraryReadsThem) {
    EXPECT_EQ((Rgbq{.blue = 0x11, .green = 0x22, .red = 0x33, .fourth = 0x44}).packed(), 0x44332211u);
    EXPECT_EQ((Yuv{.y = 0x11, .u = 0x22, .v = 0x33}).packed(), 0x112233u);
    EXPECT_EQ((ColorRef{.red = 0x11, .green = 0x22, .blue = 0x33}).packed(), 0x332211u);
    EXPECT_EQ(Rgbq::unpacked(0x44332211).packed(), 0x44332211u);
    EXPECT_EQ(Yuv::unpacked(0xff112233).packed(), 0x112233u);
    EXPECT_EQ(ColorRef::unpacked(0xff332211).packed(), 0x332211u);
    EXPECT_EQ(zepbmp::translate_color(ColorRef{.red = 1, .green = 2, .blue = 3}), (Rgbq{3, 2, 1, 0}));
    EXPECT_EQ(zepbmp::translate_color(Rgbq{3, 2, 1, 9}), (ColorRef{1, 2, 3}));
}

}  // namespace
