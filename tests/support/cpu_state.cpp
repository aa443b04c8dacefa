#include "cpu_state.h"

#include <cpuid.h>

#include <iomanip>
#include <iterator>
#include <ostream>

namespace zepbmp::test {
namespace {

struct X87Environment {
    uint16_t control, reserved0, status, reserved1, tags, reserved2;
    uint32_t pointers[4];
};
static_assert(sizeof(X87Environment) == 28);

// Storing the environment masks all exceptions; loading it again unmasks them.
X87Environment x87_environment() {
    X87Environment environment;
    asm volatile("fnstenv %0\n\tfldenv %0" : "=m"(environment) : : "memory");
    return environment;
}

uint32_t feature_bits() {
    unsigned a, b, c, d = 0;
    return __get_cpuid(1, &a, &b, &c, &d) ? d : 0;
}

uint32_t mxcsr() {
    uint32_t value = 0;
    if (has_mxcsr())
        asm volatile("stmxcsr %0" : "=m"(value));
    return value;
}

// XINUSE: whether the upper halves of the first 16 registers hold anything; bit 2 bytes 16..31, bit 6 bytes 32..63.
constexpr uint32_t kUpperHalves = 0x44;

uint32_t states_in_use() {
    uint32_t low, high;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(1));
    return low & kUpperHalves;
}

// Only where the processor really tells: clean after a vzeroupper, not clean after writing an upper half.
bool can_see_upper_halves() {
    unsigned a, b, c, d;
    constexpr unsigned kOsxsaveAndAvx = 3u << 27;
    if (!__get_cpuid(1, &a, &b, &c, &d) || (c & kOsxsaveAndAvx) != kOsxsaveAndAvx)
        return false;
    constexpr unsigned kXgetbv1 = 1u << 2;
    if (!__get_cpuid_count(0xd, 1, &a, &b, &c, &d) || !(a & kXgetbv1))
        return false;
    clean_upper_halves();
    const bool clean = states_in_use() == 0;
    use_upper_half();
    const bool seen = states_in_use() != 0;
    clean_upper_halves();
    return clean && seen;
}

}  // namespace

// Out of line, where vector registers are the callee's to change: a build without SSE can't name them as clobbered.
__attribute__((noinline)) void use_upper_half() {
    const uint32_t ones[8] = {1, 1, 1, 1, 1, 1, 1, 1};
    asm volatile("vmovups %0, %%ymm7" : : "m"(ones));
}

__attribute__((noinline)) void clean_upper_halves() { asm volatile("vzeroupper"); }

bool sees_upper_halves() {
    static const bool sees = can_see_upper_halves();
    return sees;
}

int expected_cpu_level() {
    const uint32_t features = feature_bits();
    if (!(features & bit_MMX))
        return 0;
    if (!(features & bit_SSE))
        return 1;
    return (features & bit_SSE2) ? 4 : 3;
}

bool has_mxcsr() {
    static const bool has = (feature_bits() & bit_SSE) != 0;
    return has;
}

void PrintTo(const FloatState& state, std::ostream* out) {
    *out << std::hex << "x87 control " << state.x87_control << " status " << state.x87_status << " tags "
         << state.x87_tags << " mxcsr " << state.mxcsr << std::dec;
}

FloatState float_state() {
    const X87Environment environment = x87_environment();
    return {environment.control, environment.status, environment.tags, mxcsr()};
}

void set_x87_control(uint16_t control) { asm volatile("fldcw %0" : : "m"(control)); }

void set_x87_status(uint16_t status) {
    X87Environment environment = x87_environment();
    environment.status = status;
    asm volatile("fldenv %0" : : "m"(environment));
}

void set_mxcsr(uint32_t value) {
    if (has_mxcsr())
        asm volatile("ldmxcsr %0" : : "m"(value));
}

KeepFloatState::KeepFloatState() : before_(float_state()) {}

KeepFloatState::~KeepFloatState() {
    asm volatile("fnclex");
    set_x87_control(before_.x87_control);
    set_mxcsr(before_.mxcsr);
}

ModelPrecision::ModelPrecision() {
    set_x87_control(0x027f);
    set_mxcsr(0x1f80);
}

CallCheck::CallCheck() {
    if (sees_upper_halves())
        clean_upper_halves();
    before_ = float_state();
}

int next_stack_offset() {
    static unsigned calls = 0;
    return kStackOffsets[calls++ % std::size(kStackOffsets)];
}

const char* CallCheck::complaint() const {
    const bool dirty = sees_upper_halves() && states_in_use() != 0;
    const FloatState after = float_state();
    constexpr uint32_t kMxcsrControl = 0xffc0;  // the low bits note exceptions: ordinary inexact results set one
    if (after.x87_tags != kX87Empty)
        return "x87 registers are in use: an emms is missing";
    if (after.x87_control != before_.x87_control)
        return "the x87 control word has changed";
    if ((after.mxcsr & kMxcsrControl) != (before_.mxcsr & kMxcsrControl))
        return "MXCSR has changed";
    if (dirty)
        return "upper halves of vector registers are in use: a vzeroupper is missing";
    return "";
}

}  // namespace zepbmp::test
