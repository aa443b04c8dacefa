/// \file
/// bmp_clear, bmp_copy, bmp_blt, bmp_interporate: cases worked out by hand.
#include <gtest/gtest.h>

#include <set>

#include "support/library.h"
#include "support/owned_bitmap.h"

namespace zepbmp::test {
namespace {

/// Lines of which every byte, padding too, is `byte`.
std::set<int> lines_of_bytes(const OwnedBitmap& bitmap, int byte) {
    std::set<int> found;
    for (int y = 0; y < bitmap->height; ++y) {
        bool all = true;
        for (int i = 0; i < bitmap->pitch; ++i)
            all = all && line(bitmap, y)[i] == byte;
        if (all)
            found.insert(y);
    }
    return found;
}

/// A bitmap whose line y holds y + 10 in every byte.
OwnedBitmap make_numbered(int width, int height, int format, int first = 10) {
    OwnedBitmap bitmap = make_bitmap(width, height, format);
    for (int y = 0; y < height; ++y)
        std::memset(line(bitmap, y), first + y, static_cast<size_t>(bitmap->pitch));
    return bitmap;
}

/// The byte that fills each line, or -1 where they differ.
std::vector<int> line_bytes(const OwnedBitmap& bitmap) {
    std::vector<int> bytes;
    for (int y = 0; y < bitmap->height; ++y) {
        const uint8_t* const p = line(bitmap, y);
        const bool all = std::all_of(p, p + bitmap->pitch, [&](uint8_t byte) { return byte == *p; });
        bytes.push_back(all ? *p : -1);
    }
    return bytes;
}

using Lines = std::vector<int>;

// ---------------------------------------------------------------- clear

TEST(Clear, TakesTheLinesThatTheFlagsSelect) {
    const auto cleared = [](uint32_t flags) {
        const OwnedBitmap bitmap = make_filled(13, 7, BMP_FMT_RGBQ, 0x77);
        library().clear(bitmap.get(), flags);
        const std::set<int> zero = lines_of_bytes(bitmap, 0), old = lines_of_bytes(bitmap, 0x77);
        EXPECT_EQ(zero.size() + old.size(), 7u) << "a line is half cleared";
        return zero;
    };
    EXPECT_EQ(cleared(0), (std::set{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(cleared(1), (std::set{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(cleared(2), (std::set{0, 2, 4, 6}));
    EXPECT_EQ(cleared(3), (std::set{1, 3, 5}));
    EXPECT_EQ(cleared(0xfffffffc), (std::set{0, 1, 2, 3, 4, 5, 6}));
}

TEST(Clear, LeavesABitmapWithoutSuchALineAlone) {
    const OwnedBitmap one_line = make_filled(13, 1, BMP_FMT_A8, 0x77);
    library().clear(one_line.get(), 1);
    library().clear(one_line.get(), 3);
    EXPECT_EQ(line_bytes(one_line), (Lines{0x77}));
    library().clear(make_bitmap(13, 0, BMP_FMT_A8).get(), 0);
}

// ---------------------------------------------------------------- copy

TEST(Copy, TakesTheLinesThatTheFlagsSelect) {
    const auto copied = [](uint32_t flags) {
        const OwnedBitmap destination = make_filled(9, 5, BMP_FMT_YUY2, 0), source = make_numbered(9, 5, BMP_FMT_YUY2);
        library().copy(destination.get(), source.get(), flags);
        return line_bytes(destination);
    };
    EXPECT_EQ(copied(0), (Lines{10, 11, 12, 13, 14}));
    EXPECT_EQ(copied(1), (Lines{10, 11, 12, 13, 14})) << "BMP_FIELD_ODD counts only with BMP_FIELD";
    EXPECT_EQ(copied(2), (Lines{10, 0, 12, 0, 14}));
    EXPECT_EQ(copied(3), (Lines{0, 11, 0, 13, 0}));
}

TEST(Copy, TheWholeIsSizedByTheSourceAFieldByTheDestination) {
    const OwnedBitmap source = make_numbered(9, 3, BMP_FMT_YUY2), destination = make_filled(9, 6, BMP_FMT_YUY2, 0);
    library().copy(destination.get(), source.get(), 0);
    EXPECT_EQ(line_bytes(destination), (Lines{10, 11, 12, 0, 0, 0}));

    const OwnedBitmap tall = make_numbered(9, 9, BMP_FMT_YUY2), small = make_filled(9, 4, BMP_FMT_YUY2, 0);
    library().copy(small.get(), tall.get(), 3);
    EXPECT_EQ(line_bytes(small), (Lines{0, 11, 0, 13}));
}

TEST(Copy, AFieldOfOneLineHasNoOddOne) {
    const OwnedBitmap source = make_numbered(9, 1, BMP_FMT_YUY2), destination = make_filled(9, 1, BMP_FMT_YUY2, 0);
    library().copy(destination.get(), source.get(), 3);
    EXPECT_EQ(line_bytes(destination), (Lines{0}));
    library().copy(destination.get(), source.get(), 2);
    EXPECT_EQ(line_bytes(destination), (Lines{10}));
}

TEST(Copy, OntoItselfChangesNothing) {
    const OwnedBitmap bitmap = make_noise(33, 5, BMP_FMT_RGBQ, 1);
    const auto before = snapshot(bitmap);
    for (const uint32_t flags : {0u, 2u, 3u})
        library().copy(bitmap.get(), bitmap.get(), flags);
    EXPECT_EQ(snapshot(bitmap), before);
}

// ---------------------------------------------------------------- blt

/// A8 bitmaps: pixel (x, y) of the source is 1 + x + 16 * y, of the destination 0.
class Blt : public testing::Test {
protected:
    Blt() {
        for (int y = 0; y < source_->height; ++y)
            for (int x = 0; x < source_->width; ++x)
                line(source_, y)[x] = pixel(x, y);
    }
    static uint8_t pixel(int x, int y) { return static_cast<uint8_t>(1 + x + 16 * y); }

    void blt(int dest_x, int dest_y, int width, int height, int src_x, int src_y, uint32_t flags = 0) {
        library().blt(destination_.get(), dest_x, dest_y, width, height, source_.get(), src_x, src_y, flags);
    }
    std::vector<int> row(int y) const { return bytes_at(line(destination_, y), 12); }
    bool untouched() const {
        const std::span<uint8_t> lines = lines_of(destination_.get());
        return std::all_of(lines.begin(), lines.end(), [](uint8_t byte) { return byte == 0; });
    }

    OwnedBitmap source_ = make_bitmap(12, 12, BMP_FMT_A8), destination_ = make_bitmap(12, 12, BMP_FMT_A8);
};

TEST_F(Blt, LeftOfTheDestinationDropsTheRightPixels) {
    blt(-3, 0, 10, 10, 0, 0);
    for (int y = 0; y < 10; ++y)
        EXPECT_EQ(row(y), (std::vector<int>{pixel(0, y), pixel(1, y), pixel(2, y), pixel(3, y), pixel(4, y),
                                            pixel(5, y), pixel(6, y), 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(10), std::vector<int>(12, 0));
}

TEST_F(Blt, LeftOfTheSourceMovesTheDestination) {
    blt(0, 0, 10, 10, -3, 0);
    for (int y = 0; y < 10; ++y)
        EXPECT_EQ(row(y), (std::vector<int>{0, 0, 0, pixel(0, y), pixel(1, y), pixel(2, y), pixel(3, y), pixel(4, y),
                                            pixel(5, y), pixel(6, y), 0, 0}));
    EXPECT_EQ(row(10), std::vector<int>(12, 0));
}

TEST_F(Blt, AboveTheDestinationDropsTheLowerLines) {
    blt(2, -4, 1, 6, 5, 3);
    EXPECT_EQ(row(0)[2], pixel(5, 3));
    EXPECT_EQ(row(1)[2], pixel(5, 4));
    EXPECT_EQ(row(2)[2], 0);
}

TEST_F(Blt, AboveTheSourceMovesTheDestination) {
    blt(2, 1, 1, 6, 5, -4);
    EXPECT_EQ(row(4)[2], 0);
    EXPECT_EQ(row(5)[2], pixel(5, 0));
    EXPECT_EQ(row(6)[2], pixel(5, 1));
    EXPECT_EQ(row(7)[2], 0);
}

TEST_F(Blt, EndsAtBothRightAndBottomEdges) {
    blt(10, 11, 5, 5, 0, 0);
    EXPECT_EQ(row(11), (std::vector<int>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, pixel(0, 0), pixel(1, 0)}));
    EXPECT_EQ(row(10), std::vector<int>(12, 0));
    blt(0, 0, 5, 5, 10, 11);
    EXPECT_EQ(row(0), (std::vector<int>{pixel(10, 11), pixel(11, 11), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(1), std::vector<int>(12, 0));
    EXPECT_EQ(line(destination_, 11)[12], 0) << "the padding is not part of the rectangle";
}

TEST_F(Blt, OddFieldSkipsALineInBoth) {
    blt(0, 4, 12, 5, 0, 2, BMP_FIELD | BMP_FIELD_ODD);
    for (int y = 0; y < 12; ++y)
        EXPECT_EQ(row(y)[0], y == 5 ? pixel(0, 3) : y == 7 ? pixel(0, 5) : 0) << y;
}

TEST_F(Blt, EvenFieldTakesEverySecondLine) {
    blt(0, 4, 12, 5, 0, 2, BMP_FIELD);
    for (int y = 0; y < 12; ++y)
        EXPECT_EQ(row(y)[0], y == 4 ? pixel(0, 2) : y == 6 ? pixel(0, 4) : y == 8 ? pixel(0, 6) : 0) << y;
}

TEST_F(Blt, OddFlagAloneIsNothing) {
    blt(0, 4, 12, 2, 0, 2, BMP_FIELD_ODD);
    for (int y = 0; y < 12; ++y)
        EXPECT_EQ(row(y)[0], y == 4 ? pixel(0, 2) : y == 5 ? pixel(0, 3) : 0) << y;
}

TEST_F(Blt, OneLineOfTheWrongParityIsNothing) {
    blt(0, 4, 12, 1, 0, 2, BMP_FIELD | BMP_FIELD_ODD);
    EXPECT_TRUE(untouched());
}

TEST_F(Blt, OutsideOrEmptyDrawsNothing) {
    blt(0, 0, 5, 5, 12, 0);
    blt(0, 0, 5, 5, 0, 12);
    blt(0, 0, 5, 5, -5, 0);
    blt(0, 0, 5, 5, 0, -5);
    blt(12, 0, 5, 5, 0, 0);
    blt(0, 12, 5, 5, 0, 0);
    blt(-5, 0, 5, 5, 0, 0);
    blt(0, -5, 5, 5, 0, 0);
    blt(0, 0, 0, 5, 0, 0);
    blt(0, 0, 5, 0, 0, 0);
    blt(0, 0, -1, 5, 0, 0);
    blt(0, 0, 5, -1, 0, 0);
    blt(INT32_MAX, 0, 5, 5, 0, 0);
    blt(0, 0, INT32_MAX, 5, 5, 0);  // the edge's sum wraps to a negative one
    EXPECT_TRUE(untouched());
    blt(0, 0, 1, 1, 11, 11);
    EXPECT_EQ(row(0)[0], pixel(11, 11));
}

TEST_F(Blt, CountsPixelsOfTheFormat) {
    const OwnedBitmap from = make_noise(6, 2, BMP_FMT_RGBQ, 5), to = make_filled(6, 2, BMP_FMT_RGBQ, 0);
    library().blt(to.get(), 1, 1, 3, 1, from.get(), 2, 0, 0);
    EXPECT_EQ(lines_of_bytes(to, 0), std::set{0});
    EXPECT_EQ(std::memcmp(line(to, 1) + 4, line(from, 0) + 8, 12), 0);
    EXPECT_EQ(bytes_at(line(to, 1), 4), std::vector<int>(4, 0));
    EXPECT_EQ(bytes_at(line(to, 1) + 16, 16), std::vector<int>(16, 0));
}

// Words from left to right: 1 2 3 4 of the source are repeated when the line moves right by a word.
TEST_F(Blt, WithinALineWordsMoveForward) {
    library().blt(source_.get(), 4, 0, 8, 1, source_.get(), 0, 0, 0);
    EXPECT_EQ(bytes_at(line(source_, 0), 12), (std::vector<int>{1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 4}));
    // By one: each word is read before it is stored, so a byte is carried from word to word.
    library().blt(source_.get(), 1, 1, 10, 1, source_.get(), 0, 1, 0);
    EXPECT_EQ(bytes_at(line(source_, 1), 12), (std::vector<int>{17, 17, 18, 19, 20, 20, 22, 23, 24, 24, 24, 28}));
    // To the left nothing is lost.
    library().blt(source_.get(), 0, 2, 9, 1, source_.get(), 3, 2, 0);
    EXPECT_EQ(bytes_at(line(source_, 2), 12), (std::vector<int>{36, 37, 38, 39, 40, 41, 42, 43, 44, 42, 43, 44}));
}

// ---------------------------------------------------------------- interporate

Lines rebuilt(int height, uint32_t flags, bool in_place = false) {
    // Lines 10, 20, 40, 80, ...: every average is one of its own.
    const OwnedBitmap source = make_bitmap(9, height, BMP_FMT_YUY2);
    constexpr int kBytes[] = {10, 21, 40, 81, 160, 250};
    for (int y = 0; y < height; ++y)
        std::memset(line(source, y), kBytes[y], static_cast<size_t>(source->pitch));
    const OwnedBitmap destination = make_filled(9, height, BMP_FMT_YUY2, 1);
    Bitmap* const target = in_place ? source.get() : destination.get();
    library().interporate(target, source.get(), flags);
    return line_bytes(in_place ? source : destination);
}

TEST(Interporate, EvenField) {
    for (const bool in_place : {false, true}) {
        EXPECT_EQ(rebuilt(6, 0, in_place), (Lines{10, 25, 40, 100, 160, 160}));
        EXPECT_EQ(rebuilt(5, 0, in_place), (Lines{10, 25, 40, 100, 160}));
        EXPECT_EQ(rebuilt(4, 0, in_place), (Lines{10, 25, 40, 40}));
        EXPECT_EQ(rebuilt(3, 0, in_place), (Lines{10, 25, 40}));
        EXPECT_EQ(rebuilt(2, 0, in_place), (Lines{10, 10}));
        EXPECT_EQ(rebuilt(1, 0, in_place), (Lines{10}));
    }
}

TEST(Interporate, OddField) {
    for (const bool in_place : {false, true}) {
        EXPECT_EQ(rebuilt(2, 1, in_place), (Lines{21, 21}));
        EXPECT_EQ(rebuilt(3, 1, in_place), (Lines{21, 21, 21}));
        EXPECT_EQ(rebuilt(4, 1, in_place), (Lines{21, 21, 51, 81}));
        EXPECT_EQ(rebuilt(5, 1, in_place), (Lines{21, 21, 51, 81, 81}));
        EXPECT_EQ(rebuilt(6, 1, in_place), (Lines{21, 21, 51, 81, 166, 250})) << "(81 + 250 + 1) / 2";
    }
}

TEST(Interporate, HonoursOneFlagOnly) {
    EXPECT_EQ(rebuilt(6, 2), rebuilt(6, 0));
    EXPECT_EQ(rebuilt(6, 0xfffffffe), rebuilt(6, 0));
    EXPECT_EQ(rebuilt(6, 3), rebuilt(6, 1));
}

TEST(Interporate, WithoutALineOfTheFieldDoesNothing) {
    EXPECT_EQ(rebuilt(1, 1), (Lines{1}));
    EXPECT_EQ(rebuilt(0, 0), (Lines{}));
}

}  // namespace
}  // namespace zepbmp::test
