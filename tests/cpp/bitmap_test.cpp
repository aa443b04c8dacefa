/// \file
/// The owner: making, moving, taking over, reading and writing pixels.
#include <gtest/gtest.h>

#include <array>
#include <utility>

#include "zepbmp.hpp"

namespace {

using zepbmp::Bitmap;
using zepbmp::Format;

TEST(CppBitmap, IsWhatWasAskedFor) {
    const Bitmap bitmap(5, 3, Format::rgbq, zepbmp::Scan::interlaced);
    EXPECT_EQ(bitmap.width(), 5);
    EXPECT_EQ(bitmap.height(), 3);
    EXPECT_EQ(bitmap.pitch(), 32);
    EXPECT_EQ(bitmap.bytes_per_pixel(), 4);
    EXPECT_EQ(bitmap.format(), Format::rgbq);
    EXPECT_TRUE(bitmap.is_interlaced());
    EXPECT_EQ(bitmap.record()->interlace, 1u);
    EXPECT_FALSE(Bitmap(5, 3, Format::rgbq).is_interlaced());
    EXPECT_EQ(Bitmap(1, 1, Format::a8, zepbmp::Scan::interlaced_2).record()->interlace, 2u);
}

TEST(CppBitmap, StartsWithZerosInEveryFormat) {
    for (uint32_t format = 0; format < 8; ++format) {
        const Bitmap bitmap(33, 7, static_cast<Format>(format));
        for (int y = 0; y < 7; ++y)
            for (const uint8_t byte : bitmap.line(y))
                ASSERT_EQ(byte, 0);
    }
}

TEST(CppBitmap, MovingLeavesAnEmptyOne) {
    Bitmap first(4, 4, Format::a8);
    const ::Bitmap* const record = first.record();
    Bitmap second = std::move(first);
    EXPECT_TRUE(first.empty());
    EXPECT_EQ(first.record(), nullptr);
    EXPECT_EQ(second.record(), record);
    first = Bitmap(8, 8, Format::a8);  // an empty one can be assigned to
    EXPECT_EQ(first.width(), 8);
    first = std::move(second);  // and a full one: its bitmap is freed
    EXPECT_TRUE(second.empty());
    EXPECT_EQ(first.record(), record);
    std::swap(first, second);
    EXPECT_EQ(second.record(), record);
}

TEST(CppBitmap, IsGivenUpAndTakenOver) {
    Bitmap bitmap(4, 4, Format::pwrw);
    ::Bitmap* const record = bitmap.release();
    EXPECT_TRUE(bitmap.empty());
    const Bitmap again = Bitmap::adopt(record);
    EXPECT_EQ(again.record(), record);
    EXPECT_EQ(again.format(), Format::pwrw);
}

TEST(CppBitmap, RowsAreItsPixels) {
    Bitmap yuy2(3, 2, Format::yuy2);
    ASSERT_EQ(yuy2.row<Format::yuy2>(1).size(), 2u);  // the second pair's other pixel lies in the padding
    yuy2.row<Format::yuy2>(1)[1] = {1, 2, 3, 4};
    const std::array<uint8_t, 4> pair = {1, 2, 3, 4};
    EXPECT_TRUE(std::equal(pair.begin(), pair.end(), yuy2.record()->pixels + yuy2.pitch() + 4));
    EXPECT_EQ(*yuy2.pointer(2, 1), 1);

    Bitmap rgbq(3, 2, Format::rgbq);
    ASSERT_EQ(rgbq.row<Format::rgbq>(0).size(), 3u);
    rgbq.row<Format::rgbq>(0)[2] = {.blue = 1, .green = 2, .red = 3, .fourth = 4};
    EXPECT_TRUE(std::equal(pair.begin(), pair.end(), rgbq.pointer(2, 0)));

    Bitmap weights(3, 2, Format::pwrw);
    weights.row<Format::pwrw>(1)[2] = 4096;
    EXPECT_EQ(weights.pointer(2, 1)[1], 0x10);

    Bitmap depth(3, 2, Format::quad4);
    depth.depth_row(1)[0] = 1;
    EXPECT_EQ(depth.pointer(0, 1)[3], 0x3f);
    Bitmap quads(3, 2, Format::quad5);
    quads.row<Format::quad5>(0)[0] = 0x01020304;
    EXPECT_EQ(*quads.pointer(0, 0), 4);

    Bitmap mask(3, 2, Format::a8);
    mask.row<Format::a8>(1)[2] = 128;
    EXPECT_EQ(*std::as_const(mask).pointer(2, 1), 128);
    EXPECT_EQ(std::as_const(mask).row<Format::a8>(1)[2], 128);
    EXPECT_EQ(mask.line(1).size(), 16u);
    EXPECT_EQ(mask.line(1).data(), mask.pointer(0, 1));
}

TEST(CppBitmap, MayHaveNoPixels) {
    Bitmap none(0, 0, Format::yuy2), no_columns(0, 5, Format::yuy2);
    zepbmp::clear(none);
    zepbmp::copy(none, none);
    EXPECT_EQ(no_columns.row<Format::yuy2>(4).size(), 0u);
}

}  // namespace
