/// \file
/// bmp_create, bmp_destroy, bmp_pointer, and the record as hosts see it.
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>

#include "support/library.h"
#include "support/owned_bitmap.h"

namespace zepbmp::test {
namespace {

// ---------------------------------------------------------------- the record

TEST(Record, WordsStandInTheirOrder) {
    constexpr size_t kPointer = sizeof(void*);
    EXPECT_EQ(offsetof(Bitmap, width), 0u);
    EXPECT_EQ(offsetof(Bitmap, height), 4u);
    EXPECT_EQ(offsetof(Bitmap, pitch), 8u);
    EXPECT_EQ(offsetof(Bitmap, bit_count), 12u);
    EXPECT_EQ(offsetof(Bitmap, pixels), 16u);
    EXPECT_EQ(offsetof(Bitmap, dib_info), 16 + kPointer);
    EXPECT_EQ(offsetof(Bitmap, fourcc), 16 + 2 * kPointer);
    EXPECT_EQ(offsetof(Bitmap, interlace), 20 + 2 * kPointer);
    EXPECT_EQ(offsetof(Bitmap, reserved), 24 + 2 * kPointer);
    EXPECT_EQ(offsetof(Bitmap, bytes_per_pixel), 28 + 2 * kPointer);
    EXPECT_EQ(offsetof(Bitmap, create_flags), 32 + 2 * kPointer);
    EXPECT_EQ(offsetof(Bitmap, format), 36 + 2 * kPointer);
    EXPECT_EQ(sizeof(Bitmap), 40 + 2 * kPointer);
    if (kPointer == 4) {
        EXPECT_EQ(sizeof(Bitmap), 48u);
        EXPECT_EQ(offsetof(Bitmap, format), 44u);
    }
}

#if defined(__i386__)
// What a host that knows only the order of the words finds.
TEST(Record, IsTwelveWords) {
    const OwnedBitmap bitmap = make_bitmap(100, 10, BMP_FMT_RGBQ, BMP_CREATE_ZERO | 3);
    uint32_t word[12];
    std::memcpy(word, bitmap.get(), sizeof word);
    EXPECT_EQ(word[0], 100u);
    EXPECT_EQ(word[1], 10u);
    EXPECT_EQ(word[2], 400u);
    EXPECT_EQ(word[3], 32u);
    EXPECT_EQ(word[4], reinterpret_cast<uintptr_t>(bitmap->pixels));
    EXPECT_EQ(word[5], 0u);
    EXPECT_EQ(word[6], 0x51424752u);
    EXPECT_EQ(word[7], 2u);
    EXPECT_EQ(word[8], 0u);
    EXPECT_EQ(word[9], 4u);
    EXPECT_EQ(word[10], 3u);
    EXPECT_EQ(word[11], 1u);
}
#endif

TEST(Record, ConstantsHaveTheirValues) {
    EXPECT_EQ(BMP_FMT_YUY2, 0);
    EXPECT_EQ(BMP_FMT_RGBQ, 1);
    EXPECT_EQ(BMP_FMT_PWRW, 2);
    EXPECT_EQ(BMP_FMT_QUAD3, 3);
    EXPECT_EQ(BMP_FMT_QUAD4, 4);
    EXPECT_EQ(BMP_FMT_QUAD5, 5);
    EXPECT_EQ(BMP_FMT_RGB8, 6);
    EXPECT_EQ(BMP_FMT_A8, 7);
    EXPECT_EQ(BMP_FIELD_ODD, 1u);
    EXPECT_EQ(BMP_FIELD, 2u);
    EXPECT_EQ(BMP_CREATE_ZERO, 4u);
    EXPECT_EQ(BMP_COMPOSE_LEVEL, 0x10000u);
    EXPECT_EQ(BMP_SHAPE_ADD, 0u);
    EXPECT_EQ(BMP_SHAPE_MAX, 0x10u);
    EXPECT_EQ(BMP_SHAPE_ELLIPTIC, 0x10000u);
    EXPECT_EQ(BMP_SHAPE_ELLIPTIC_PLAIN, 0x20000u);
    EXPECT_EQ(BMP_SHAPE_ELLIPTIC_EDGES, 0x800000u);
    EXPECT_EQ(BMP_SHAPE_COSINE, 0x40000u);
    EXPECT_EQ(sizeof(BmpVertex), 20u);
}

// ---------------------------------------------------------------- create

struct FormatFacts {
    int format, bytes, pitch_of_13;
    const char* fourcc;  ///< null: not written
};
constexpr FormatFacts kFormats[] = {{0, 2, 32, "YUY2"},  {1, 4, 64, "RGBQ"},  {2, 2, 32, "PWRW"}, {3, 4, 64, nullptr},
                                    {4, 4, 64, nullptr}, {5, 4, 64, nullptr}, {6, 1, 16, "RGB8"}, {7, 1, 16, nullptr}};

TEST(Create, FillsTheRecordForEveryFormat) {
    for (const FormatFacts& want : kFormats) {
        const OwnedBitmap bitmap = make_bitmap(13, 3, want.format);
        EXPECT_EQ(bitmap->width, 13);
        EXPECT_EQ(bitmap->height, 3);
        EXPECT_EQ(bitmap->bytes_per_pixel, want.bytes) << want.format;
        EXPECT_EQ(bitmap->bit_count, 8 * want.bytes) << want.format;
        EXPECT_EQ(bitmap->pitch, want.pitch_of_13) << want.format;
        EXPECT_EQ(bitmap->format, static_cast<uint32_t>(want.format));
        EXPECT_EQ(bitmap->dib_info, nullptr);
        EXPECT_EQ(bitmap->create_flags, 0u);
        EXPECT_EQ(bitmap->interlace, 0u);
        EXPECT_EQ(bitmap->reserved, 0u);
        if (want.fourcc) {
            EXPECT_EQ(std::memcmp(&bitmap->fourcc, want.fourcc, 4), 0) << want.format;
        } else {
            EXPECT_EQ(bitmap->fourcc, 0u) << want.format;
        }
    }
}

TEST(Create, Yuy2Of100Pixels) {
    const OwnedBitmap bitmap = make_bitmap(100, 10, BMP_FMT_YUY2, 0);
    EXPECT_EQ(bitmap->pitch, 208);
    EXPECT_EQ(bitmap->bit_count, 16);
    EXPECT_EQ(bitmap->fourcc, 0x32595559u);
}

TEST(Create, AnUnknownFormatTakesTheHeightForItsPixelSize) {
    for (const int format : {8, 9, 100, INT32_MAX, -1, INT32_MIN}) {
        const OwnedBitmap bitmap = make_bitmap(3, 5, format);
        EXPECT_EQ(bitmap->bytes_per_pixel, 5) << format;
        EXPECT_EQ(bitmap->bit_count, 40) << format;
        EXPECT_EQ(bitmap->pitch, 16) << format;
        EXPECT_EQ(bitmap->fourcc, 0u) << format;
        EXPECT_EQ(bitmap->format, static_cast<uint32_t>(format));
    }
}

TEST(Create, InterlaceFollowsTheFlags) {
    const auto interlace = [](uint32_t flags) {
        return make_bitmap(4, 4, BMP_FMT_YUY2, BMP_CREATE_ZERO | flags)->interlace;
    };
    EXPECT_EQ(interlace(0), 0u);
    EXPECT_EQ(interlace(2), 1u);
    EXPECT_EQ(interlace(3), 2u);
    EXPECT_EQ(interlace(1), 0u) << "not written: zero as allocated";
    EXPECT_EQ(make_bitmap(4, 4, BMP_FMT_YUY2, 2)->interlace, 1u);
    EXPECT_EQ(make_bitmap(4, 4, BMP_FMT_YUY2, 3)->interlace, 2u);
    EXPECT_EQ(make_bitmap(4, 4, BMP_FMT_YUY2, 0)->interlace, 0u);
}

TEST(Create, KeepsTwoFlagsAndIgnoresTheOthers) {
    for (const uint32_t flags : {0u, 1u, 2u, 3u, 4u, 7u, 0xfffffff8u, 0xffffffffu})
        EXPECT_EQ(make_bitmap(4, 4, BMP_FMT_A8, flags)->create_flags, flags & 3) << flags;
}

TEST(Create, ZeroFillsEveryLineWithItsPadding) {
    // A used block first, so that zeros are not there by chance.
    make_filled(77, 50, BMP_FMT_RGBQ, 0xa5).reset();
    const OwnedBitmap bitmap = make_bitmap(77, 50, BMP_FMT_RGBQ, BMP_CREATE_ZERO);
    EXPECT_EQ(bitmap->pitch, 320);
    for (const uint8_t byte : lines_of(bitmap.get()))
        ASSERT_EQ(byte, 0);
}

TEST(Create, LinesAreAlignedAndInsideTheBlock) {
    Random random(round_seed(0));
    for (int i = 0; i < 300; ++i) {
        const int width = random.between(0, 100), height = random.between(0, 20), format = random.between(0, 7);
        const OwnedBitmap bitmap = make_bitmap(width, height, format, 0);
        const auto block = reinterpret_cast<uintptr_t>(bitmap.get()),
                   pixels = reinterpret_cast<uintptr_t>(bitmap->pixels);
        EXPECT_EQ(pixels % 16, 0u);
        EXPECT_EQ(bitmap->pitch % 16, 0);
        EXPECT_GE(pixels, block + sizeof(Bitmap));
        EXPECT_LT(pixels, block + sizeof(Bitmap) + 16);
        std::memset(bitmap->pixels, 0x5a, lines_of(bitmap.get()).size());  // what runs over breaks the heap
    }
}

TEST(Create, AnEmptyBitmapIsABitmap) {
    for (const auto& [width, height] : {std::pair{0, 0}, {0, 5}, {5, 0}}) {
        const OwnedBitmap bitmap = make_bitmap(width, height, BMP_FMT_RGBQ);
        ASSERT_NE(bitmap, nullptr);
        EXPECT_EQ(bitmap->width, width);
        EXPECT_EQ(bitmap->height, height);
    }
}

#if !defined(__i386__)

TEST(Create, RefusesWhatItCannotHold) {
    EXPECT_EQ(library().create(-1, 5, BMP_FMT_A8, 0), nullptr);
    EXPECT_EQ(library().create(5, -1, BMP_FMT_A8, 0), nullptr);
    EXPECT_EQ(library().create(5, INT32_MIN, BMP_FMT_A8, 0), nullptr);
    EXPECT_EQ(library().create(INT32_MAX, 1, BMP_FMT_RGBQ, 0), nullptr) << "the pitch passes 31 bits";
    EXPECT_EQ(library().create(0x20000000, 1, BMP_FMT_RGBQ, 0), nullptr);
}

TEST(Create, IsNullWithoutMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers stop at such a size";
#endif
    EXPECT_EQ(library().create(0x7fffff00, 0x7fffff00, BMP_FMT_A8, 0), nullptr);
}

#else

TEST(Create, SizesWrapAt32Bits) {
    // 0x40000004 * 4 = 16 modulo 2^32
    const OwnedBitmap bitmap = make_bitmap(0x40000004, 2, BMP_FMT_RGBQ);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->pitch, 16);
    EXPECT_EQ(bitmap->width, 0x40000004);
    std::memset(bitmap->pixels, 0x5a, 32);
}

TEST(Create, IsNullWithoutMemory) { EXPECT_EQ(library().create(0x7ffffff0, 1, BMP_FMT_A8, 0), nullptr); }

#endif

// ---------------------------------------------------------------- destroy

TEST(Destroy, IgnoresNull) { library().destroy(nullptr); }

// ---------------------------------------------------------------- pointer

TEST(Pointer, CountsFromTheFirstPixel) {
    const OwnedBitmap bitmap = make_bitmap(50, 9, BMP_FMT_RGBQ);
    uint8_t* const pixels = bitmap->pixels;
    EXPECT_EQ(library().pointer(bitmap.get(), 0, 0), pixels);
    EXPECT_EQ(library().pointer(bitmap.get(), 1, 1), pixels + bitmap->pitch + 4);
    EXPECT_EQ(library().pointer(bitmap.get(), 49, 8), pixels + 8 * 208 + 49 * 4);
}

TEST(Pointer, ChecksNothing) {
    const OwnedBitmap bitmap = make_bitmap(50, 9, BMP_FMT_YUY2);
    ASSERT_EQ(bitmap->pitch, 112);
    const auto pixels = reinterpret_cast<uintptr_t>(bitmap->pixels);
    const auto at = [&](int x, int y) { return reinterpret_cast<uintptr_t>(library().pointer(bitmap.get(), x, y)); };
    EXPECT_EQ(at(-1, 0), pixels - 2);
    EXPECT_EQ(at(0, -1), pixels - 112);
    EXPECT_EQ(at(-3, -2), pixels - 2 * 112 - 6);
    EXPECT_EQ(at(1000, 100), pixels + 100 * 112 + 2000);
    // Pointer-sized arithmetic: on a 32-bit target it wraps.
    EXPECT_EQ(at(0, INT32_MAX), pixels + uintptr_t{INT32_MAX} * 112);
    EXPECT_EQ(at(INT32_MIN, 0), pixels + static_cast<uintptr_t>(intptr_t{INT32_MIN}) * 2);
}

}  // namespace
}  // namespace zepbmp::test
