/* How zepbmp.dll behaves towards the loader: which names it answers to, what it keeps when it is unloaded, whether it
 * runs at another address than it was linked for. Exit status 0 when all is right. */
#include <windows.h>

#include <stdio.h>
#include <string.h>

#include "zepbmp.h"

enum { kExports = 18, kWarmUpLoads = 100, kLoads = 1000, kThreads = 20 };

/* An export's name: 32-bit ones carry an underscore and the size of the arguments. */
#if defined(__i386__)
#define NAME(function, bytes) "_" #function "@" #bytes
#else
#define NAME(function, bytes) #function
#endif

static int failures;

static void expect(int right, const char* what) {
    if (right)
        return;
    printf("wrong: %s\n", what);
    ++failures;
}

static HMODULE load(void) {
    const HMODULE dll = LoadLibraryA("zepbmp.dll");
    if (dll)
        return dll;
    printf("zepbmp.dll does not load: error %lu\n", GetLastError());
    ExitProcess(1);
}

static void check_names(HMODULE dll) {
    static const char* const others[] = {
#if defined(__i386__)
        "bmp_create",
        "bmp_display",
#else
        "_bmp_create@16",
        "_bmp_display@32",
#endif
        "bmp_create@16",
        "_bmp_create",
        "__bmp_create@16",
        "_bmp_create@12",
        "_BMP_CREATE@16",
        "BMP_CREATE",
        "zepbmp_entry@12",
        "zepbmp_entry",
        "DllMain"
    };
    expect(GetProcAddress(dll, NAME(bmp_create, 16)) != NULL, NAME(bmp_create, 16) " is not found");
    expect(GetProcAddress(dll, NAME(bmp_display, 32)) != NULL, NAME(bmp_display, 32) " is not found");
    for (size_t i = 0; i < sizeof others / sizeof *others; ++i)
        expect(GetProcAddress(dll, others[i]) == NULL, others[i]);
    expect(GetProcAddress(dll, MAKEINTRESOURCEA(1)) != NULL, "no export has ordinal 1");
    expect(GetProcAddress(dll, MAKEINTRESOURCEA(kExports)) != NULL, "an ordinal is missing");
    expect(GetProcAddress(dll, MAKEINTRESOURCEA(kExports + 1)) == NULL, "there are more ordinals than names");
}

/* Draws a weight map and takes it away again: one heap block, one kernel through a table. */
static void use(HMODULE dll) {
    Bitmap*(BMP_CALL * create)(int32_t, int32_t, int32_t, uint32_t);
    void(BMP_CALL * destroy)(Bitmap*);
    void(BMP_CALL * alpha_rect)(Bitmap*, float, float, float, float, float, float, uint32_t);
    FARPROC found[] = {GetProcAddress(dll, NAME(bmp_create, 16)), GetProcAddress(dll, NAME(bmp_destroy, 4)),
                       GetProcAddress(dll, NAME(bmp_alpha_rect, 32))};
    memcpy(&create, &found[0], sizeof create);
    memcpy(&destroy, &found[1], sizeof destroy);
    memcpy(&alpha_rect, &found[2], sizeof alpha_rect);
    Bitmap* weights = create(8, 4, BMP_FMT_PWRW, BMP_CREATE_ZERO);
    expect(weights != NULL, "no bitmap");
    if (!weights)
        return;
    alpha_rect(weights, 1, 1, 4.5f, 2, 0, 0, BMP_SHAPE_ADD);
    const uint16_t* line = (const uint16_t*)(weights->pixels + weights->pitch);
    expect(line[0] == 0 && line[1] == 4096 && line[4] == 4096 && line[5] == 2048 && line[6] == 0, "a wrong weight");
    destroy(weights);
}

/* What a leak would raise. */
typedef struct {
    size_t next_handle; /* what the system gives to a new object; numbers of closed ones come back */
    size_t committed_bytes;
    size_t heap_blocks;
} Footprint;

static Footprint footprint(void) {
    Footprint now = {0, 0, 0};
    const HANDLE event = CreateEventA(NULL, FALSE, FALSE, NULL);
    HANDLE heaps[64];
    MEMORY_BASIC_INFORMATION region;
    now.next_handle = (size_t)event;
    CloseHandle(event);
    for (char* p = NULL; VirtualQuery(p, &region, sizeof region) == sizeof region; p += region.RegionSize) {
        if (region.State == MEM_COMMIT)
            now.committed_bytes += region.RegionSize;
        if ((char*)region.BaseAddress + region.RegionSize < p)
            break;
    }
    const DWORD heap_count = GetProcessHeaps(sizeof heaps / sizeof *heaps, heaps);
    for (DWORD i = 0; i < heap_count && i < sizeof heaps / sizeof *heaps; ++i) {
        PROCESS_HEAP_ENTRY entry = {0};
        HeapLock(heaps[i]);
        while (HeapWalk(heaps[i], &entry))
            now.heap_blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
        HeapUnlock(heaps[i]);
    }
    return now;
}

static void load_and_free(int times) {
    for (int i = 0; i < times; ++i) {
        const HMODULE dll = load();
        use(dll);
        expect(FreeLibrary(dll), "FreeLibrary fails");
        expect(GetModuleHandleA("zepbmp.dll") == NULL, "zepbmp.dll stays loaded");
    }
}

static void check_leaks(void) {
    load_and_free(kWarmUpLoads);
    const Footprint before = footprint();
    load_and_free(kLoads);
    const Footprint after = footprint();
    printf("%d loads: next handle %lu, then %lu; committed bytes %lu, %lu; heap blocks %lu, %lu\n", kLoads,
           (unsigned long)before.next_handle, (unsigned long)after.next_handle, (unsigned long)before.committed_bytes,
           (unsigned long)after.committed_bytes, (unsigned long)before.heap_blocks, (unsigned long)after.heap_blocks);
    expect(before.heap_blocks > 0 && before.committed_bytes > 0, "nothing was counted");
    expect(after.next_handle < before.next_handle + kLoads, "handles leak");
    expect(after.committed_bytes == before.committed_bytes, "memory leaks");
    expect(after.heap_blocks == before.heap_blocks, "heap blocks leak");
}

static DWORD WINAPI use_on_thread(void* dll) {
    use((HMODULE)dll);
    return 0;
}

static void check_threads(HMODULE dll) {
    for (int i = 0; i < kThreads; ++i) {
        const HANDLE thread = CreateThread(NULL, 0, use_on_thread, (void*)dll, 0, NULL);
        expect(thread != NULL && WaitForSingleObject(thread, 60000) == WAIT_OBJECT_0, "a thread does not end");
        CloseHandle(thread);
    }
}

/* The address that the DLL would have is taken: its relocations have to be right. */
static void check_other_address(void) {
    HMODULE dll = load();
    char* const usual = (char*)dll;
    FreeLibrary(dll);
    void* const taken = VirtualAlloc(usual, 0x10000, MEM_RESERVE, PAGE_NOACCESS);
    expect(taken == usual, "the DLL's address could not be taken");
    dll = load();
    expect((char*)dll != usual, "the DLL has an address that is taken");
    printf("usual address %p, another address %p\n", (void*)usual, (void*)dll);
    use(dll);
    FreeLibrary(dll);
    VirtualFree(taken, 0, MEM_RELEASE);
}

int main(void) {
    const HMODULE dll = load();
    check_names(dll);
    check_threads(dll);
    FreeLibrary(dll);
    check_leaks();
    check_other_address();
    printf("%d wrong\n", failures);
    return failures != 0;
}
