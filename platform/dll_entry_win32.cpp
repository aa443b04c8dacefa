/// \file
/// The DLL's entry point, in the place of the C runtime's. That one allocates, locks, and may load a library; this one
/// needs nothing of it: the library has no initialisers but `attach_process`, no thread-local data, no exceptions and
/// nothing to do at exit.
#include <windows.h>

#include "core/export.h"
#include "core/kernel_tables.h"

/// Runs under the loader's lock.
extern "C" BMP_REALIGN BOOL WINAPI zepbmp_entry(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH)
        zepbmp::attach_process();
    return TRUE;
}
