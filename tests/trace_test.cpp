/// \file
/// The developer's trace messages.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "platform/trace.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace zepbmp::test {
namespace {

/// What went to the debugger, and to the standard output, while `trace` ran.
struct Messages {
    std::string debugger, output;
};

#if defined(_WIN32)

std::string debugger_text;

/// The debugger's messages come as exceptions; this one is handled.
LONG CALLBACK note_debugger_text(EXCEPTION_POINTERS* pointers) {
    constexpr DWORD kDebugPrint = 0x40010006;
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode != kDebugPrint)
        return EXCEPTION_CONTINUE_SEARCH;
    debugger_text.append(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
    return EXCEPTION_CONTINUE_EXECUTION;
}

template <class Trace>
Messages messages(int32_t mode, Trace trace) {
    debugger_text.clear();
    void* const handler = AddVectoredExceptionHandler(1, note_debugger_text);
    testing::internal::CaptureStdout();
    set_trace_mode(mode);
    trace();
    set_trace_mode(1);
    std::fflush(stdout);
    RemoveVectoredExceptionHandler(handler);
    return {debugger_text, testing::internal::GetCapturedStdout()};
}

#else

template <class Trace>
Messages messages(int32_t mode, Trace trace) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    set_trace_mode(mode);
    trace();
    set_trace_mode(1);
    std::fflush(stdout);
    return {testing::internal::GetCapturedStderr(), testing::internal::GetCapturedStdout()};
}

#endif

TEST(Trace, GoesToTheDebugger) {
    for (const int32_t mode : {1, 2, -1}) {
        const Messages got = messages(mode, [] { trace_printf("line %d of %s, 50 %%\n", 7, "field"); });
        EXPECT_EQ(got.debugger, "line 7 of field, 50 %\n");
        EXPECT_EQ(got.output, "");
    }
}

TEST(Trace, GoesToTheStandardOutputInMode0) {
    const Messages got = messages(0, [] { trace_printf("line %d of %s, 50 %%%%\n", 7, "field"); });
    EXPECT_EQ(got.debugger, "");
    EXPECT_EQ(got.output, "line 7 of field, 50 %\n") << "the message is a format once more";
}

TEST(Trace, CutsOffWhatIsTooLong) {
    const std::string text(1000, 'x');
    const Messages got = messages(1, [&] { trace_printf("%s", text.c_str()); });
    EXPECT_EQ(got.debugger, text.substr(0, kTraceBytes - 1));
}

#if defined(_WIN32)

void trace_on_stack(void* stack_end, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    trace_vprintf_on_stack(stack_end, format, arguments);
    va_end(arguments);
}

TEST(Trace, WorksOnAnotherStack) {
    alignas(16) static uint8_t stack[65536];
    std::memset(stack, 0xa5, sizeof stack);
    const Messages got = messages(0, [] { trace_on_stack(stack + sizeof stack - 3, "%d and %s\n", 12, "more"); });
    EXPECT_EQ(got.output, "12 and more\n");
    bool used = false;
    for (const uint8_t byte : stack)
        used = used || byte != 0xa5;
    EXPECT_TRUE(used);
    EXPECT_EQ(stack[0], 0xa5) << "the stack was too small to tell";
}

constexpr int kLineHeight = 20;
constexpr COLORREF kBlue = 0xff0000, kWhite = 0xffffff;

// A message is black on white, the bar below it is blue.
TEST(Trace, OnScreenGoesDownAndStartsAgain) {
    const HDC screen = GetDC(nullptr);
    const int width = GetDeviceCaps(screen, HORZRES), height = GetDeviceCaps(screen, VERTRES);
    if (GetPixel(screen, 0, 0) == CLR_INVALID) {
        ReleaseDC(nullptr, screen);
        GTEST_SKIP() << "there is no screen; the test display.trace has one";
    }
    int y = 0;
    for (int i = 0; i < 2 * height / kLineHeight + 3; ++i) {
        PatBlt(screen, 0, 0, width, height, BLACKNESS);
        trace_on_screen("%d: %s", i, "message");
        ASSERT_EQ(GetPixel(screen, 0, y), kWhite) << "message " << i << " at " << y;
        y += kLineHeight;
        if (y < height) {
            ASSERT_EQ(GetPixel(screen, 50, y), kBlue) << "bar " << i << " at " << y;
        }
        if (height - kLineHeight < y)
            y = 0;
    }
    ReleaseDC(nullptr, screen);
}

#endif

}  // namespace
}  // namespace zepbmp::test
