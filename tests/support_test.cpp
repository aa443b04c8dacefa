/// \file
/// That the tests' own tools bite.
#include <gtest/gtest.h>

#include <cstring>

#include "support/cpu_state.h"
#include "support/fence.h"
#include "support/frame.h"
#include "support/moved_stack.h"
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

#if defined(__x86_64__)

// Functions as a caller sees them, without a frame.
extern "C" uintptr_t stack_where_called() asm("zepbmp_test_stack_where_called");
extern "C" void change_a_register() asm("zepbmp_test_change_a_register");
extern "C" void change_a_vector() asm("zepbmp_test_change_a_vector");
asm(R"(
    .text
zepbmp_test_stack_where_called:
    leaq 8(%rsp), %rax
    ret
zepbmp_test_change_a_register:
    incq %r14
    ret
zepbmp_test_change_a_vector:
    paddb %xmm11, %xmm11
    ret
)");

double weighted_sum(int32_t a, float b, const int32_t* c, double d, float e, int64_t f, float g, int32_t h, float i,
                    float j, float k, float l, float m, float n, int32_t o, int32_t p, int64_t q) {
    return a + 2 * b + 3 * *c + 4 * d + 5 * e + 6 * static_cast<double>(f) + 7 * g + 8 * h + 9 * i + 10 * j + 11 * k +
           12 * l + 13 * m + 14 * n + 15 * o + 16 * p + 17 * static_cast<double>(q);
}

TEST(MovedStack, IsWhereItSaysAndBringsTheArguments) {
    const int32_t three = 3;
    for (const int off : kStackOffsets) {
        EXPECT_EQ((64 - on_moved_stack(stack_where_called, off)() % 64) % 64, static_cast<uintptr_t>(off));
        EXPECT_EQ(on_moved_stack(weighted_sum, off)(1, 2, &three, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17),
                  17 * 18 * 35 / 6);
        EXPECT_TRUE(moved_stack_was_kept());
    }
}

TEST(MovedStack, SeesWhatIsNotGivenBack) {
    on_moved_stack(change_a_register, 16)();
    EXPECT_FALSE(moved_stack_was_kept());
    EXPECT_TRUE(moved_stack_was_kept()) << "once it was told";
    on_moved_stack(change_a_vector, 16)();
#if defined(_WIN32)
    EXPECT_FALSE(moved_stack_was_kept());
#else
    EXPECT_TRUE(moved_stack_was_kept()) << "vector registers belong to nobody";
#endif
}

#endif

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
