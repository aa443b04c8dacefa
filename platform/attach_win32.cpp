/// \file
/// Load on Windows. The constructor serves hosts of the static library; the DLL has an entry point of its own,
/// dll_entry_win32.cpp.
#include <windows.h>

#include "core/export.h"
#include "core/kernel_tables.h"
#include "platform/sse_probe.h"

namespace zepbmp {
namespace {

__attribute__((constructor(101))) BMP_REALIGN void attach() { attach_process(); }

}  // namespace

// It shares a file with the constructor so that whoever links detection from the static library gets the constructor too.
#if defined(__x86_64__)

bool sse_registers_usable() { return true; }

#else

namespace {

/// What fs:[0] points to, with one word behind it for the handler.
struct ProbeFrame {
    EXCEPTION_REGISTRATION_RECORD record;
    DWORD resume_at;
    volatile bool faulted;
};

/// Accepts every exception: notes it and goes on behind the instruction.
EXCEPTION_DISPOSITION __cdecl accept_every_exception(EXCEPTION_RECORD* exception, void* frame, CONTEXT* context,
                                                     void*) {
    constexpr DWORD kUnwinding = 0x66;
    if (exception->ExceptionFlags & kUnwinding)
        return ExceptionContinueSearch;
    auto* const probe = static_cast<ProbeFrame*>(frame);
    probe->faulted = true;
    context->Eip = probe->resume_at;
    return ExceptionContinueExecution;
}

}  // namespace

// One instruction under an exception handler of its own, which is only a record on the stack.
__attribute__((noinline)) bool sse_registers_usable() {
    ProbeFrame frame;
    frame.record.Handler = reinterpret_cast<PEXCEPTION_ROUTINE>(accept_every_exception);
    frame.resume_at = 0;
    frame.faulted = false;
    asm volatile(
        "movl %%fs:0, %%eax\n\t"
        "movl %%eax, (%0)\n\t"
        "movl $1f, 8(%0)\n\t"
        "movl %0, %%fs:0\n\t"
        "xorps %%xmm0, %%xmm0\n"
        "1:\n\t"
        "movl (%0), %%eax\n\t"
        "movl %%eax, %%fs:0\n\t"
        :
        : "r"(&frame)
        : "eax", "memory");
    return !frame.faulted;
}

#endif

}  // namespace zepbmp
