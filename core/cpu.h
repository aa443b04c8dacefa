/// \file
/// What the processor and the operating system offer, measured once at load.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zepbmp {

/// The level picks a column of the selection tables, and with it the arithmetic.
enum CpuLevel : int {
    kLevelPlain = 0,   ///< no CPUID instruction, or no MMX
    kLevelMmx = 1,     ///< MMX, no SSE
    kLevelMmxExt = 2,  ///< SSE reported, but its registers fault: only its integer extensions to MMX
    kLevelSse = 3,     ///< SSE
    kLevelSse2 = 4,    ///< SSE2
};
constexpr int kCpuLevels = 5;

struct CpuidRegisters {
    uint32_t eax, ebx, ecx, edx;
};

/// The questions that detection asks. A test replaces them to be any processor under any system.
struct CpuProbe {
    bool (*has_cpuid)();
    CpuidRegisters (*cpuid)(uint32_t leaf, uint32_t subleaf);
    uint64_t (*enabled_states)();  ///< XCR0; asked only where CPUID reports OSXSAVE
    bool (*sse_usable)();          ///< executes one SSE instruction; false if it faults
};
extern const CpuProbe kSystemProbe;

/// 0..4; see CpuLevel.
int detect_cpu_level(const CpuProbe& probe = kSystemProbe);

/// The widest registers that kernels may use, in bytes: 8 below level 4, 16, 32 with AVX2, or 64 with AVX-512 F, BW, VL
/// and DQ, each only where the system keeps that state for a thread.
int detect_register_bytes(const CpuProbe& probe = kSystemProbe);

/// The second-level cache's size in bytes, or 0 where the processor does not tell.
size_t detect_l2_cache_bytes(const CpuProbe& probe = kSystemProbe);

}  // namespace zepbmp
