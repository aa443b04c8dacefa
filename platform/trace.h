/// \file
/// Messages for whoever develops this library. Nothing in it calls them; a call is put where it is wanted, and taken out
/// again.
#pragma once

#include <stdarg.h>
#include <stdint.h>

namespace zepbmp {

constexpr int kTraceBytes = 260;  ///< of a message with its ending 0; what is longer is cut off

/// Where messages go: 0 to the standard output, every other word (1 at first) to the debugger, which on Linux is the
/// standard error output.
void set_trace_mode(int32_t mode);

/// As printf. On the way to the standard output the message is a format once more: a per-cent sign takes four.
__attribute__((format(printf, 1, 2))) void trace_printf(const char* format, ...);
__attribute__((format(printf, 1, 0))) void trace_vprintf(const char* format, va_list arguments);

/// What the debugger gets, or the standard error output.
void send_to_debugger(const char* message);

#if defined(_WIN32)
/// trace_vprintf on another stack, for code whose own is nearly full. `stack_end` is the address behind it.
__attribute__((format(printf, 2, 0))) void trace_vprintf_on_stack(void* stack_end, const char* format,
                                                                  va_list arguments);

/// As wsprintf, onto the screen: line below line at the left edge, again from the top where the screen ends. A blue bar
/// marks where the next message goes.
void trace_on_screen(const char* format, ...);
#endif

}  // namespace zepbmp
