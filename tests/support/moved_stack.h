/// \file
/// Calls with the stack where a 64-bit caller may have it: at any multiple of 16. Code that keeps wide registers on its
/// stack has to get along with each.
#pragma once

namespace zepbmp::test {

#if defined(__x86_64__)
constexpr bool kMovesStack = true;
#else
constexpr bool kMovesStack = false;
#endif

/// How far the stack pointer may be below a multiple of 64.
constexpr int kStackOffsets[] = {0, 16, 32, 48};

/// The next function to be called, and the stack pointer where it is: `off` bytes below a multiple of 64.
void prepare_moved_stack(void (*function)(), int off);

/// Calls it with the arguments that it is called with itself, up to 32 words of them on the stack.
void call_on_moved_stack() asm("zepbmp_test_call_on_moved_stack");

/// Whether every call since the last time this was asked gave back the stack pointer and the caller's registers.
bool moved_stack_was_kept();

/// What to call in the place of `function`, at once and on one thread. Elsewhere the function itself.
template <class Function>
Function* on_moved_stack(Function* function, int off) {
    if constexpr (kMovesStack) {
        prepare_moved_stack(reinterpret_cast<void (*)()>(function), off);
        return reinterpret_cast<Function*>(call_on_moved_stack);
    } else {
        return function;
    }
}

}  // namespace zepbmp::test
