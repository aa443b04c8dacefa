// On Windows the C runtime's own formatting: MinGW's would be linked in with all its floating point.
#define __USE_MINGW_ANSI_STDIO 0
#include "platform/trace.h"

#include <stdio.h>

namespace zepbmp {
namespace {

int32_t trace_mode = 1;

}  // namespace

void set_trace_mode(int32_t mode) { trace_mode = mode; }

void trace_vprintf(const char* format, va_list arguments) {
    char message[kTraceBytes];
    vsnprintf(message, sizeof message, format, arguments);
    if (trace_mode != 0) {
        send_to_debugger(message);
        return;
    }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
    printf(message);
#pragma GCC diagnostic pop
}

void trace_printf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    trace_vprintf(format, arguments);
    va_end(arguments);
}

}  // namespace zepbmp
