#include "core/cpu.h"

#include "platform/sse_probe.h"

namespace zepbmp {
namespace {

// CPUID leaf 1, EDX and ECX.
constexpr uint32_t kEdxMmx = 1u << 23;
constexpr uint32_t kEdxSse = 1u << 25;
constexpr uint32_t kEdxSse2 = 1u << 26;
constexpr uint32_t kEcxOsxsave = 1u << 27;
constexpr uint32_t kEcxAvx = 1u << 28;
// CPUID leaf 7, EBX.
constexpr uint32_t kEbxAvx2 = 1u << 5;
constexpr uint32_t kEbxAvx512F = 1u << 16;
constexpr uint32_t kEbxAvx512Dq = 1u << 17;
constexpr uint32_t kEbxAvx512Bw = 1u << 30;
constexpr uint32_t kEbxAvx512Vl = 1u << 31;
constexpr uint32_t kEbxAvx512 = kEbxAvx512F | kEbxAvx512Dq | kEbxAvx512Bw | kEbxAvx512Vl;
// XCR0: the register states that the system saves.
constexpr uint64_t kStateSseAvx = 0x06;
constexpr uint64_t kStateAvx512 = 0xe0;

bool system_has_cpuid() {
#if defined(__i386__)
    // The ID bit of the flags register can be changed only where there is a CPUID instruction.
    constexpr uint32_t kIdFlag = 0x200000;
    uint32_t before, after;
    asm volatile(
        "pushfl\n\t"
        "pushfl\n\t"
        "popl %0\n\t"
        "movl %0, %1\n\t"
        "xorl %2, %1\n\t"
        "pushl %1\n\t"
        "popfl\n\t"
        "pushfl\n\t"
        "popl %1\n\t"
        "popfl\n\t"
        : "=&r"(before), "=&r"(after)
        : "i"(kIdFlag)
        : "cc");
    return ((before ^ after) & kIdFlag) != 0;
#else
    return true;
#endif
}

CpuidRegisters system_cpuid(uint32_t leaf, uint32_t subleaf) {
    CpuidRegisters r;
    asm volatile("cpuid" : "=a"(r.eax), "=b"(r.ebx), "=c"(r.ecx), "=d"(r.edx) : "a"(leaf), "c"(subleaf));
    return r;
}

uint64_t system_enabled_states() {
    uint32_t low, high;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return uint64_t{high} << 32 | low;
}

/// Deterministic cache parameters: leaf 4 (Intel) and 0x8000001D (AMD) have one layout, a cache per subleaf.
size_t l2_bytes_from_leaf(const CpuProbe& probe, uint32_t leaf) {
    constexpr uint32_t kMostCaches = 16;
    for (uint32_t i = 0; i < kMostCaches; ++i) {
        const CpuidRegisters r = probe.cpuid(leaf, i);
        const uint32_t type = r.eax & 31;
        if (type == 0)
            return 0;
        const uint32_t level = r.eax >> 5 & 7;
        constexpr uint32_t kInstructionCache = 2;
        if (level != 2 || type == kInstructionCache)
            continue;
        const size_t ways = (r.ebx >> 22) + 1, partitions = (r.ebx >> 12 & 0x3ff) + 1, line = (r.ebx & 0xfff) + 1;
        return ways * partitions * line * (static_cast<size_t>(r.ecx) + 1);
    }
    return 0;
}

}  // namespace

const CpuProbe kSystemProbe = {system_has_cpuid, system_cpuid, system_enabled_states, sse_registers_usable};

int detect_cpu_level(const CpuProbe& probe) {
    if (!probe.has_cpuid() || probe.cpuid(0, 0).eax < 1)
        return kLevelPlain;
    const uint32_t features = probe.cpuid(1, 0).edx;
    if (!(features & kEdxMmx))
        return kLevelPlain;
    if (!(features & kEdxSse))
        return kLevelMmx;
    if (!probe.sse_usable())
        return kLevelMmxExt;
    return (features & kEdxSse2) ? kLevelSse2 : kLevelSse;
}

int detect_register_bytes(const CpuProbe& probe) {
    if (detect_cpu_level(probe) < kLevelSse2)
        return 8;
    constexpr uint32_t kNeeded = kEcxOsxsave | kEcxAvx;
    if ((probe.cpuid(1, 0).ecx & kNeeded) != kNeeded || probe.cpuid(0, 0).eax < 7)
        return 16;
    const uint64_t states = probe.enabled_states();
    const uint32_t features = probe.cpuid(7, 0).ebx;
    if ((states & kStateSseAvx) != kStateSseAvx || !(features & kEbxAvx2))
        return 16;
    if ((states & kStateAvx512) != kStateAvx512 || (features & kEbxAvx512) != kEbxAvx512)
        return 32;
    return 64;
}

size_t detect_l2_cache_bytes(const CpuProbe& probe) {
    if (!probe.has_cpuid())
        return 0;
    const uint32_t highest = probe.cpuid(0, 0).eax;
    if (highest >= 4) {
        if (const size_t bytes = l2_bytes_from_leaf(probe, 4))
            return bytes;
    }
    // Processors without extended leaves answer with anything.
    constexpr uint32_t kAmdCaches = 0x8000001d, kEndOfExtended = 0x80010000;
    const uint32_t highest_extended = probe.cpuid(0x80000000, 0).eax;
    return highest_extended >= kAmdCaches && highest_extended < kEndOfExtended ? l2_bytes_from_leaf(probe, kAmdCaches)
                                                                               : 0;
}

}  // namespace zepbmp
