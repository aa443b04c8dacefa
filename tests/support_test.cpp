/// \file
/// That the tests' own tools bite.
#include <gtest/gtest.h>

#include <cstring>

#include "support/cpu_state.h"
#include "support/fence.h"
#include "support/frame.h"
#include "support/random.h"

namespace zepbmp::test {
namespace {

TEST(Fence, PagesBesideTheMemoryFault) {
    const FencedPages pages(5000);
    EXPECT_GE(pages.bytes().size(), 5000u);
    EXPECT_TRUE(read_faults(pages.begin() - 1));
    EXPECT_TRUE(write_faults(pages.begin() - 1));
    EXPECT_TRUE(read_faults(pages.end()));
    EXPECT_TRUE(write_faults(pages.end()));
    EXPECT_FALSE(read_faults(pages.begin()));
    EXPECT_FALSE(write_faults(pages.begin()));
    EXPECT_FALSE(read_faults(pages.end() - 1));
    EXPECT_FALSE(write_faults(pages.end() - 1));
}

TEST(Fence, PlacesWhereItSays) {
    const FencedPages pages(8192);
    EXPECT_EQ(place(pages, 100, true, kFlush), pages.end() - 100);
    EXPECT_EQ(place(pages, 100, false, kFlush), pages.begin());
    for (int skew = 0; skew < 16; ++skew) {
        for (const bool at_end : {false, true}) {
            uint8_t* const first = place(pages, 100, at_end, skew);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % 16, static_cast<uintptr_t>(skew));
            EXPECT_LT(at_end ? pages.end() - first - 100 : first - pages.begin(), 16);
        }
    }
}

TEST(Fence, FramesShowEveryChangedByte) {
    Frame frame, copy;
    frame.lay_out({.width = 7, .height = 3, .pitch = 22, .last_line_bytes = 14, .skew = 6});
    Random random(1);
    frame.fill(random, fill_pixels);
    copy.copy(frame);
    ASSERT_EQ(frame.difference(copy), "");
    ASSERT_GE(frame.bytes().size(), frame.layout().extent() + 80);
    for (uint8_t& byte : frame.bytes()) {
        byte ^= 1;
        EXPECT_NE(frame.difference(copy), "");
        byte ^= 1;
    }
    frame.bitmap()->reserved ^= 1;
    EXPECT_NE(frame.difference(copy), "");
}

TEST(Random, ReachesTheEdges) {
    Random random(2);
    std::vector<uint8_t> bytes(1 << 16);
    fill_weights(random, bytes);
    bool seen[65536] = {};
    for (size_t i = 0; i < bytes.size(); i += 2)
        seen[bytes[i] | bytes[i + 1] << 8] = true;
    for (const int weight : {0, 1, 2047, 2048, 4095, 4096, 4097, 8192, 16383, 16384, 32767, 32768, 65535})
        EXPECT_TRUE(seen[weight]) << weight;
    int low = 0, high = 0;
    for (int i = 0; i < 1000; ++i) {
        const int value = random.between(-3, 3);
        ASSERT_GE(value, -3);
        ASSERT_LE(value, 3);
        low += value == -3, high += value == 3;
    }
    EXPECT_GT(low, 0);
    EXPECT_GT(high, 0);
}

// The two sequences that every stored digest rests on.
TEST(Random, IsTheSameEverywhere) {
    Random random(0);
    EXPECT_EQ(random.next(), 0xe220a8397b1dcdafu);
    EXPECT_EQ(random.next(), 0x6e789e6aa1b965f4u);
}

void leave_an_mmx_register_in_use() { asm volatile("fld1" : : : "st"); }
void clean_it_up() { asm volatile("fstp %%st(0)" : : : "st"); }
void set_another_precision() { set_x87_control(0x0e7f); }

TEST(CallCheck, SeesWhatACallLeavesBehind) {
    const KeepFloatState keep;
    {
        const CallCheck check;
        EXPECT_STREQ(check.complaint(), "");
    }
    {
        const CallCheck check;
        leave_an_mmx_register_in_use();
        const char* const complaint = check.complaint();
        clean_it_up();
        EXPECT_STREQ(complaint, "x87 registers are in use: an emms is missing");
    }
    {
        const CallCheck check;
        set_another_precision();
        const char* const complaint = check.complaint();
        EXPECT_STREQ(complaint, "the x87 control word has changed");
    }
    if (has_mxcsr()) {
        const CallCheck check;
        set_mxcsr(0x9fc0);
        const char* const complaint = check.complaint();
        set_mxcsr(0x1f80);
        EXPECT_STREQ(complaint, "MXCSR has changed");
    }
}

TEST(CallCheck, SeesUpperHalvesInUse) {
    if (!sees_upper_halves())
        GTEST_SKIP() << "this processor does not tell";
    const CallCheck check;
    use_upper_half();
    const char* const complaint = check.complaint();
    clean_upper_halves();
    EXPECT_STREQ(complaint, "upper halves of vector registers are in use: a vzeroupper is missing");
}

}  // namespace
}  // namespace zepbmp::test
