#include "fence.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#if defined(_WIN32)
#include <windows.h>
#else
#include <csetjmp>
#include <csignal>

#include <sys/mman.h>
#include <unistd.h>
#endif

namespace zepbmp::test {
namespace {

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "no fenced memory: %s failed\n", what);
    std::abort();
}

size_t round_up(size_t bytes, size_t page) { return (bytes + page - 1) / page * page; }

}  // namespace

#if defined(_WIN32)

FencedPages::FencedPages(size_t bytes) {
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    const size_t page = system.dwPageSize, usable = std::max(round_up(bytes, page), page);
    reserved_ = VirtualAlloc(nullptr, usable + 2 * page, MEM_RESERVE, PAGE_NOACCESS);
    if (!reserved_)
        fail("VirtualAlloc");
    begin_ = static_cast<uint8_t*>(reserved_) + page;
    end_ = begin_ + usable;
    if (!VirtualAlloc(begin_, usable, MEM_COMMIT, PAGE_READWRITE))
        fail("VirtualAlloc");
}

FencedPages::~FencedPages() { VirtualFree(reserved_, 0, MEM_RELEASE); }

namespace {

// Where to go on behind the one instruction that may fault; 0 while there is none.
volatile uintptr_t resume_at = 0;
volatile bool faulted = false;

LONG CALLBACK skip_the_access(EXCEPTION_POINTERS* exception) {
    if (exception->ExceptionRecord->ExceptionCode != EXCEPTION_ACCESS_VIOLATION || !resume_at)
        return EXCEPTION_CONTINUE_SEARCH;
    faulted = true;
#if defined(__x86_64__)
    exception->ContextRecord->Rip = resume_at;
#else
    exception->ContextRecord->Eip = resume_at;
#endif
    return EXCEPTION_CONTINUE_EXECUTION;
}

template <class Access>
bool faults(Access access) {
    void* const handler = AddVectoredExceptionHandler(1, skip_the_access);
    if (!handler)
        fail("AddVectoredExceptionHandler");
    faulted = false;
    access();
    resume_at = 0;
    RemoveVectoredExceptionHandler(handler);
    return faulted;
}

}  // namespace

#if defined(__x86_64__)
#define ZEPBMP_RESUME_BEHIND "leaq 1f(%%rip), %%rax\n\tmovq %%rax, %0\n\t"
#else
#define ZEPBMP_RESUME_BEHIND "movl $1f, %0\n\t"
#endif

bool read_faults(const void* address) {
    return faults([&] {
        asm volatile(ZEPBMP_RESUME_BEHIND "movb (%1), %%al\n1:" : "=m"(resume_at) : "r"(address) : "eax", "memory");
    });
}

bool write_faults(void* address) {
    return faults([&] {
        asm volatile(ZEPBMP_RESUME_BEHIND "orb $0, (%1)\n1:" : "=m"(resume_at) : "r"(address) : "eax", "cc", "memory");
    });
}

#else

FencedPages::FencedPages(size_t bytes) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE)), usable = std::max(round_up(bytes, page), page);
    reserved_ = mmap(nullptr, usable + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (reserved_ == MAP_FAILED)
        fail("mmap");
    begin_ = static_cast<uint8_t*>(reserved_) + page;
    end_ = begin_ + usable;
    if (mprotect(begin_, usable, PROT_READ | PROT_WRITE) != 0)
        fail("mprotect");
}

FencedPages::~FencedPages() {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    munmap(reserved_, static_cast<size_t>(end_ - begin_) + 2 * page);
}

namespace {

sigjmp_buf before_access;

void leave_the_access(int) { siglongjmp(before_access, 1); }

template <class Access>
bool faults(Access access) {
    struct sigaction action = {}, segv_before, bus_before;
    action.sa_handler = leave_the_access;
    sigemptyset(&action.sa_mask);
    if (sigaction(SIGSEGV, &action, &segv_before) != 0 || sigaction(SIGBUS, &action, &bus_before) != 0)
        fail("sigaction");
    volatile bool faulted = true;
    if (sigsetjmp(before_access, 1) == 0) {
        access();
        faulted = false;
    }
    sigaction(SIGSEGV, &segv_before, nullptr);
    sigaction(SIGBUS, &bus_before, nullptr);
    return faulted;
}

}  // namespace

// Written as instructions, so that no instrumentation judges the access before the memory does.
bool read_faults(const void* address) {
    return faults([&] { asm volatile("movb (%0), %%al" : : "r"(address) : "eax", "memory"); });
}

bool write_faults(void* address) {
    return faults([&] { asm volatile("orb $0, (%0)" : : "r"(address) : "cc", "memory"); });
}

#endif

uint8_t* place(const FencedPages& pages, size_t extent, bool at_end, int skew) {
    if (extent > static_cast<size_t>(pages.end() - pages.begin()))
        fail("placing more than there are pages");
    uint8_t* const edge = at_end ? pages.end() - extent : pages.begin();
    if (skew == kFlush)
        return edge;
    const size_t off = (reinterpret_cast<uintptr_t>(edge) - static_cast<uintptr_t>(skew)) % 16;
    uint8_t* const placed = at_end ? edge - off : edge + (16 - off) % 16;
    if (placed < pages.begin() || placed + extent > pages.end())
        fail("placing with a skew");
    return placed;
}

std::span<uint8_t> around(const FencedPages& pages, const uint8_t* first, size_t extent, size_t margin) {
    const size_t before = std::min(margin, static_cast<size_t>(first - pages.begin()));
    const size_t behind = std::min(margin, static_cast<size_t>(pages.end() - first) - extent);
    return {pages.begin() + (first - pages.begin()) - before, before + extent + behind};
}

}  // namespace zepbmp::test
