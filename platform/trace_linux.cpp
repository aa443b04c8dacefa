#include <cstdio>

#include "platform/trace.h"

namespace zepbmp {

void send_to_debugger(const char* message) { std::fputs(message, stderr); }

}  // namespace zepbmp
