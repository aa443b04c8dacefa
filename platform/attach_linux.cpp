/// \file
/// Load on Linux: the tables are filled before the constructors of a host that have no priority of their own.
#include "core/kernel_tables.h"
#include "platform/sse_probe.h"

namespace zepbmp {
namespace {

// 101 is the first priority that is not the compiler's own. The x86 start-up code aligns the stack.
__attribute__((constructor(101))) void attach() { attach_process(); }

}  // namespace

// Linux keeps the SSE registers wherever the processor reports them. It shares a file with the constructor so that
// whoever links detection from the static library gets the constructor too.
bool sse_registers_usable() { return true; }

}  // namespace zepbmp
