/// \file
/// The parts of the processor's state that a call has to leave as it found them, and the processor's level as a test
/// sees it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "moved_stack.h"

namespace zepbmp::test {

/// The level that the library has to find on this machine, asked of CPUID anew.
int expected_cpu_level();

/// Whether the MXCSR register exists.
bool has_mxcsr();

struct FloatState {
    uint16_t x87_control;
    uint16_t x87_status;
    uint16_t x87_tags;  ///< 0xffff: all registers empty, as MMX code leaves them after emms
    uint32_t mxcsr;     ///< 0 where there is none

    bool operator==(const FloatState&) const = default;
};
void PrintTo(const FloatState& state, std::ostream* out);

constexpr uint16_t kX87Empty = 0xffff;

FloatState float_state();
void set_x87_control(uint16_t control);
void set_x87_status(uint16_t status);  ///< the exceptions noted so far
void set_mxcsr(uint32_t value);        ///< nothing where there is none

/// Puts both control words back, and clears what exceptions were noted.
class KeepFloatState {
public:
    KeepFloatState();
    ~KeepFloatState();
    KeepFloatState(const KeepFloatState&) = delete;
    KeepFloatState& operator=(const KeepFloatState&) = delete;

private:
    FloatState before_;
};

/// Round to nearest with 53 bits, as the model wants it. On 64-bit targets that is what double arithmetic is anyway.
class ModelPrecision {
public:
    ModelPrecision();

private:
    KeepFloatState keep_;
};

/// Whether this processor tells that upper halves of vector registers are in use. Where it does, code that leaves them
/// so slows down every SSE instruction after it.
bool sees_upper_halves();
void use_upper_half();  ///< of a vector register; only where it can be seen
void clean_upper_halves();

/// Before and after one call: the same control words, no x87 register in use, upper halves of the vector registers
/// clean.
class CallCheck {
public:
    CallCheck();
    /// Empty, or what is wrong.
    const char* complaint() const;

private:
    FloatState before_;
};

/// Where the stack is at the next call, one place of kStackOffsets after the other.
int next_stack_offset();

/// Calls and complains. On one thread at a time.
template <class Function, class... Arguments>
void call_checked(Function* function, Arguments... arguments) {
    const int off = next_stack_offset();
    const CallCheck check;
    on_moved_stack(function, off)(arguments...);
    const char* const complaint = check.complaint();
    EXPECT_STREQ(complaint, "");
    EXPECT_TRUE(moved_stack_was_kept()) << "with the stack at " << off;
}

}  // namespace zepbmp::test
