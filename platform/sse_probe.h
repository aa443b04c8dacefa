/// \file
/// Whether the operating system keeps the SSE registers.
#pragma once

namespace zepbmp {

/// Executes one SSE instruction, which clears an SSE register, and tells whether it completed.
bool sse_registers_usable();

}  // namespace zepbmp
