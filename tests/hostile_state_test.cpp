/// \file
/// Every export under floating-point states that hosts set, and with stacks that hosts leave.
#include <gtest/gtest.h>

#include "support/cpu_state.h"
#include "support/export_calls.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

class HostileState : public WithTables {
protected:
    static std::vector<uint8_t> ordinary_result(const ExportCall& call) {
        Scene scene(1);
        Caller caller;
        call.run(caller, scene);
        return scene.contents();
    }
    const UseTables use_{GetParam()};
};

// Precision 24, 53, 64 bits; rounding to nearest, down, up, toward zero; all exceptions masked, then none.
constexpr uint16_t kX87Controls[] = {0x037f, 0x027f, 0x007f, 0x0f7f, 0x0c7f, 0x047f,
                                     0x0b7f, 0x087f, 0x0260, 0x0c40, 0x0340};
// Rounding, flush to zero, denormals are zero, every exception noted; none masked.
constexpr uint32_t kMxcsrs[] = {0x1f80, 0x3f80, 0x5f80, 0x7f80, 0x9fc0, 0xffc0, 0x1fbf, 0x0000, 0x6000};

TEST_P(HostileState, ChangesNoByteAndIsGivenBack) {
    for (const ExportCall& call : export_calls()) {
        const std::vector<uint8_t> want = ordinary_result(call);
        for (const uint16_t control : kX87Controls) {
            for (const uint32_t mxcsr : kMxcsrs) {
                Scene scene(1);
                scene.results.reserve(300);
                Caller caller;
                FloatState before, after;
                {
                    const KeepFloatState keep;
                    constexpr uint16_t kAllMasked = 0x3f,
                                       kNoted = 0x21;  // invalid and inexact, of which a host may take note later
                    set_x87_control(control);
                    set_x87_status((control & kAllMasked) == kAllMasked ? kNoted : 0);
                    set_mxcsr(mxcsr);
                    before = float_state();
                    call.run(caller, scene);
                    after = float_state();
                }
                ASSERT_EQ(before.x87_control, control) << "the test's own state did not take";
                constexpr uint16_t kExceptions = 0xff;
                ASSERT_EQ(after.x87_control, before.x87_control) << call.name;
                ASSERT_EQ(after.x87_status & kExceptions, before.x87_status & kExceptions)
                    << call.name << std::hex << " under " << control;
                ASSERT_EQ(after.x87_tags, kX87Empty) << call.name;
                ASSERT_EQ(after.mxcsr, before.mxcsr) << call.name << std::hex << " under " << mxcsr;
                ASSERT_EQ(first_difference(scene.contents(), want), "")
                    << call.name << std::hex << " under x87 control " << control << " mxcsr " << mxcsr;
            }
        }
    }
}

TEST_P(HostileState, AnyStackWillDo) {
#if defined(__i386__)
    constexpr int kOffsets[] = {0, 4, 8, 12};
#else
    constexpr auto& kOffsets = kStackOffsets;
#endif
    for (const ExportCall& call : export_calls()) {
        const std::vector<uint8_t> want = ordinary_result(call);
        for (const int off : kOffsets) {
            Scene scene(1);
            Caller caller(off);
            call.run(caller, scene);
            EXPECT_TRUE(caller.kept_the_convention()) << call.name << " off by " << off;
            EXPECT_EQ(first_difference(scene.contents(), want), "") << call.name << " off by " << off;
        }
    }
}

// A test of the test: without a call in between, these states do change arithmetic.
TEST_P(HostileState, WouldChangeArithmetic) {
    volatile double one = 1, three = 3;
    volatile double ordinary = 0, hostile = 0;
    const auto divide = [&](volatile double& quotient) {
#if defined(__i386__)
        asm volatile("fldl %1\n\tfdivl %2\n\tfstpl %0" : "=m"(quotient) : "m"(one), "m"(three) : "st", "memory");
#else
        quotient = one / three;
#endif
    };
    divide(ordinary);
    {
        const KeepFloatState keep;
        set_x87_control(0x0c7f);
        set_mxcsr(0x5f80);
        divide(hostile);
    }
    EXPECT_NE(ordinary, hostile);
}

ZEPBMP_FOR_ALL_TABLES(HostileState);

}  // namespace
}  // namespace zepbmp::test
