/* What zepbmp.dll imports of msvcrt.dll and gdi32.dll, in baseline code. Wine's own DLLs use the instructions of the
 * processor that Wine was started on, which is not the one that a test runs on. Both DLLs are made of this file. */
#include <stddef.h>
#include <windows.h>

__declspec(dllexport) volatile LONG allocations_made, allocations_kept;

static void* allocate(DWORD flags, size_t bytes) {
    void* const block = HeapAlloc(GetProcessHeap(), flags, bytes);
    if (block) {
        InterlockedIncrement(&allocations_made);
        InterlockedIncrement(&allocations_kept);
    }
    return block;
}

__declspec(dllexport) void* malloc(size_t bytes) { return allocate(0, bytes); }
__declspec(dllexport) void* calloc(size_t count, size_t bytes) { return allocate(HEAP_ZERO_MEMORY, count * bytes); }

__declspec(dllexport) void free(void* block) {
    if (!block)
        return;
    HeapFree(GetProcessHeap(), 0, block);
    InterlockedDecrement(&allocations_kept);
}

__declspec(dllexport) void* memcpy(void* to, const void* from, size_t bytes) {
    void* start = to;
    __asm__ volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(bytes) : : "memory");
    return start;
}

__declspec(dllexport) void* memset(void* to, int value, size_t bytes) {
    void* start = to;
    __asm__ volatile("rep stosb" : "+D"(to), "+c"(bytes) : "a"(value) : "memory");
    return start;
}

__declspec(dllexport) void* memmove(void* to, const void* from, size_t bytes) {
    if ((char*)to <= (const char*)from)
        return memcpy(to, from, bytes);
    char* to_byte = (char*)to + bytes - 1;
    const char* from_byte = (const char*)from + bytes - 1;
    __asm__ volatile("std\n\trep movsb\n\tcld" : "+D"(to_byte), "+S"(from_byte), "+c"(bytes) : : "memory", "cc");
    return to;
}

/* Shows nothing. */
__declspec(dllexport) int WINAPI
    SetDIBitsToDevice(HDC context, int x, int y, DWORD width, DWORD height, int src_x, int src_y, UINT start,
                      UINT lines, const void* bits, const BITMAPINFO* header, UINT use) {
    (void)context, (void)x, (void)y, (void)width, (void)height, (void)src_x, (void)src_y, (void)start, (void)lines;
    (void)bits, (void)header, (void)use;
    return 0;
}

BOOL WINAPI start(HINSTANCE instance, DWORD reason, void* reserved) {
    (void)instance, (void)reason, (void)reserved;
    return TRUE;
}
