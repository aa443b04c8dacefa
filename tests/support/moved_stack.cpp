#include "moved_stack.h"

#include <cstdint>
#include <utility>

namespace zepbmp::test {

#if defined(__x86_64__)

namespace {

/// For the code below, which knows the places of its members.
struct MovedStack {
    void (*function)();  // 0
    uint64_t off;        // 8
    uint64_t frame;      // 16: the caller's side of the call
    uint64_t stack;      // 24: where the function is called
    uint64_t lost;       // 32: bits of registers that came back otherwise
};

}  // namespace

extern "C" {
extern MovedStack moved_stack asm("zepbmp_test_moved_stack");
MovedStack moved_stack = {};
}

// The registers that belong to the caller. All of them hold one pattern while the function runs.
#if defined(_WIN32)
#define ZEPBMP_KEPT "rbx,r12,r13,r14,r15,rdi,rsi"
#define ZEPBMP_KEPT_BACKWARD "rsi,rdi,r15,r14,r13,r12,rbx"
#define ZEPBMP_KEPT_BYTES "56"
#define ZEPBMP_KEPT_VECTORS "6,7,8,9,10,11,12,13,14,15"
#else
#define ZEPBMP_KEPT "rbx,r12,r13,r14,r15"
#define ZEPBMP_KEPT_BACKWARD "r15,r14,r13,r12,rbx"
#define ZEPBMP_KEPT_BYTES "40"
#endif

asm(R"(
    .text
    .globl zepbmp_test_call_on_moved_stack
    .p2align 4
zepbmp_test_call_on_moved_stack:
    pushq %rbp
    movq %rsp, %rbp
    .irp name, )" ZEPBMP_KEPT R"(
    pushq %\name
    .endr
    movq %rbp, 16+zepbmp_test_moved_stack(%rip)
    movabsq $0x5eed600df00d5eed, %r11
)"
#if defined(_WIN32)
    R"(
    subq $160, %rsp
    .irp n, )" ZEPBMP_KEPT_VECTORS R"(
    movups %xmm\n, 16*(\n-6)(%rsp)
    movq %r11, %xmm\n
    punpcklqdq %xmm\n, %xmm\n
    .endr
)"
#endif
    R"(
    .irp name, )" ZEPBMP_KEPT R"(
    movq %r11, %\name
    .endr
    andq $-64, %rsp
    subq 8+zepbmp_test_moved_stack(%rip), %rsp
    subq $256, %rsp
    .set i, 0
    .rept 32
    movq 16+8*i(%rbp), %rax
    movq %rax, 8*i(%rsp)
    .set i, i+1
    .endr
    movq %rsp, 24+zepbmp_test_moved_stack(%rip)
    call *zepbmp_test_moved_stack(%rip)

    movq %rsp, %r10
    xorq 24+zepbmp_test_moved_stack(%rip), %r10
    xorq 16+zepbmp_test_moved_stack(%rip), %rbp
    orq %rbp, %r10
    movabsq $0x5eed600df00d5eed, %r11
    .irp name, )" ZEPBMP_KEPT R"(
    xorq %r11, %\name
    orq %\name, %r10
    .endr
    movq 16+zepbmp_test_moved_stack(%rip), %rbp
)"
#if defined(_WIN32)
    R"(
    movq %r11, %xmm5
    punpcklqdq %xmm5, %xmm5
    pxor %xmm4, %xmm4
    .irp n, )" ZEPBMP_KEPT_VECTORS R"(
    pxor %xmm5, %xmm\n
    por %xmm\n, %xmm4
    movups 16*(\n-6)-160-)" ZEPBMP_KEPT_BYTES R"((%rbp), %xmm\n
    .endr
    movq %xmm4, %r11
    orq %r11, %r10
    psrldq $8, %xmm4
    movq %xmm4, %r11
    orq %r11, %r10
)"
#endif
    R"(
    orq %r10, 32+zepbmp_test_moved_stack(%rip)
    leaq -)" ZEPBMP_KEPT_BYTES R"((%rbp), %rsp
    .irp name, )" ZEPBMP_KEPT_BACKWARD R"(
    popq %\name
    .endr
    popq %rbp
    ret
)");

void prepare_moved_stack(void (*function)(), int off) {
    moved_stack.function = function;
    moved_stack.off = static_cast<uint64_t>(off);
}

bool moved_stack_was_kept() { return std::exchange(moved_stack.lost, 0) == 0; }

#else

void prepare_moved_stack(void (*)(), int) {}
bool moved_stack_was_kept() { return true; }

#endif

}  // namespace zepbmp::test
