#include <windows.h>

#include <cstring>

#include "platform/trace.h"

namespace zepbmp {
namespace {

constexpr int kLineHeight = 20;  // pixels
int next_line_y = 0;
int screen_bottom = 0;  // where lines end; 0 until it is known

void draw_text(HDC screen, const char* text) {
    TextOutA(screen, 0, next_line_y, text, static_cast<int>(std::strlen(text)));
}

}  // namespace

void send_to_debugger(const char* message) { OutputDebugStringA(message); }

void trace_vprintf_on_stack(void* stack_end, const char* format, va_list arguments) {
    void (*const print)(const char*, va_list) = trace_vprintf;
    void* stack = reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(stack_end) & ~uintptr_t{15});
    // The caller's stack pointer stays in ebx or rbx, which the callee keeps.
#if defined(__x86_64__)
    // Arguments are in registers, below them lie the 32 bytes that belong to the callee.
    asm volatile(
        "movq %%rsp, %%rbx\n\t"
        "leaq -32(%2), %%rsp\n\t"
        "call *%3\n\t"
        "movq %%rbx, %%rsp"
        : "+c"(format), "+d"(arguments)
        : "S"(stack), "D"(print)
        : "rax", "rbx", "r8", "r9", "r10", "r11", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "memory", "cc");
#else
    asm volatile(
        "movl %%esp, %%ebx\n\t"
        "movl %0, %%esp\n\t"
        "subl $8, %%esp\n\t"
        "pushl %1\n\t"
        "pushl %3\n\t"
        "call *%2\n\t"
        "movl %%ebx, %%esp"
        : "+a"(stack), "+d"(arguments)
        : "D"(print), "S"(format)
        : "ebx", "ecx", "memory", "cc");
#endif
}

void trace_on_screen(const char* format, ...) {
    char message[1024];  // as much as wvsprintf writes at most
    va_list arguments;
    va_start(arguments, format);
    wvsprintfA(message, format, arguments);
    va_end(arguments);
    message[kTraceBytes - 1] = 0;

    constexpr char kBar[] = "                                                ";
    constexpr COLORREF kBlue = 0xff0000;
    const HDC screen = GetDC(nullptr);
    if (screen_bottom == 0)
        screen_bottom = GetDeviceCaps(screen, VERTRES) - kLineHeight;
    draw_text(screen, message);
    next_line_y += kLineHeight;
    SetBkColor(screen, kBlue);
    draw_text(screen, kBar);
    ReleaseDC(nullptr, screen);
    if (screen_bottom < next_line_y)
        next_line_y = 0;
}

}  // namespace zepbmp
