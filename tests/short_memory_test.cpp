/// \file
/// Calls while memory is short. This program's allocations go through here (--wrap of the linker).
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/library.h"
#include "support/owned_bitmap.h"

namespace {

bool memory_is_short = false;

/// While it lives, nothing can be allocated.
struct ShortMemory {
    ShortMemory() { memory_is_short = true; }
    ~ShortMemory() { memory_is_short = false; }
};

}  // namespace

extern "C" {
void* __real_malloc(size_t bytes);
void* __real_calloc(size_t count, size_t bytes);
void* __wrap_malloc(size_t bytes);
void* __wrap_calloc(size_t count, size_t bytes);

void* __wrap_malloc(size_t bytes) { return memory_is_short ? nullptr : __real_malloc(bytes); }
void* __wrap_calloc(size_t count, size_t bytes) { return memory_is_short ? nullptr : __real_calloc(count, bytes); }
}

namespace zepbmp::test {
namespace {

TEST(ShortMemoryTest, ThereIsNoBitmap) {
    Bitmap *plain, *zero;
    {
        const ShortMemory now;
        plain = library().create(10, 10, BMP_FMT_RGBQ, 0);
        zero = library().create(10, 10, BMP_FMT_RGBQ, BMP_CREATE_ZERO);
    }
    EXPECT_EQ(plain, nullptr);
    EXPECT_EQ(zero, nullptr);
}

TEST(ShortMemoryTest, AnEntryOfThePaletteIsNotStored) {
    const OwnedBitmap bitmap = make_bitmap(10, 10, BMP_FMT_RGB8);
    {
        const ShortMemory now;
        library().set_palette(bitmap.get(), 5, 0x123456);
    }
    EXPECT_EQ(bitmap->dib_info, nullptr);
    library().set_palette(bitmap.get(), 6, 0x123456);
    ASSERT_NE(bitmap->dib_info, nullptr) << "the next call tries again";
    const auto* const words = static_cast<const uint32_t*>(bitmap->dib_info);
    EXPECT_EQ(words[10 + 5], 0x050505u);
    EXPECT_EQ(words[10 + 6], 0x123456u);
}

TEST(ShortMemoryTest, NothingIsShown) {
    const OwnedBitmap bitmap = make_bitmap(10, 10, BMP_FMT_RGBQ);
    int32_t lines;
    {
        const ShortMemory now;
        lines = library().display(nullptr, 0, 0, 10, 10, bitmap.get(), 0, 0);
    }
    EXPECT_EQ(lines, 0);
    EXPECT_EQ(bitmap->dib_info, nullptr);
}

// So many corners that they take memory of their own.
TEST(ShortMemoryTest, NoPolygonOfVeryManyCorners) {
    std::vector<BmpVertex> corners;
    for (int i = 0; i < 20000; ++i)
        corners.push_back({0, 0, 1, i % 2 ? 30.0f : 0.0f, static_cast<float>(i) / 1000});
    const OwnedBitmap destination = make_bitmap(40, 40, BMP_FMT_RGBQ), texture = make_noise(40, 40, BMP_FMT_RGBQ, 1);
    const auto before = snapshot(destination);
    const auto map = [&] {
        library().map_polygon(destination.get(), nullptr, nullptr, texture.get(), nullptr, corners.data(),
                              static_cast<int32_t>(corners.size()), 0);
    };
    {
        const ShortMemory now;
        map();
    }
    EXPECT_EQ(snapshot(destination), before);
    map();
    EXPECT_NE(snapshot(destination), before);
}

}  // namespace
}  // namespace zepbmp::test
