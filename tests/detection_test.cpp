/// \file
/// Detection on processors and systems made up here.
#include <gtest/gtest.h>

#include <cstdlib>

#include "core/cpu.h"
#include "core/kernel_tables.h"
#include "support/cpu_state.h"

namespace zepbmp::test {
namespace {

constexpr uint32_t kMmx = 0x800000, kSse = 0x2000000, kSse2 = 0x4000000;         // leaf 1, EDX
constexpr uint32_t kOsxsave = 0x8000000, kAvx = 0x10000000;                      // leaf 1, ECX
constexpr uint32_t kAvx2 = 0x20, kF = 0x10000, kDq = 0x20000, kBw = 0x40000000;  // leaf 7, EBX
constexpr uint32_t kVl = 0x80000000;
constexpr uint64_t kSystemSse = 2, kSystemAvx = 4, kSystemAvx512 = 0xe0;  // XCR0

/// What a made-up machine answers, and what it was asked.
struct Machine {
    bool cpuid = true;
    uint32_t highest = 7;
    uint32_t edx = 0, ecx = 0, ebx7 = 0;
    uint64_t states = 0;
    bool sse_works = true;

    int sse_probes = 0, xcr0_reads = 0, cpuid_calls = 0;
    CpuidRegisters (*other_leaf)(uint32_t leaf, uint32_t subleaf) = nullptr;
};
Machine machine;

const CpuProbe kProbe = {
    .has_cpuid = [] { return machine.cpuid; },
    .cpuid = [](uint32_t leaf, uint32_t subleaf) -> CpuidRegisters {
        ++machine.cpuid_calls;
        if (leaf == 0)
            return {machine.highest, 0x756e6547, 0x6c65746e, 0x49656e69};
        if (leaf == 1)
            return {0x000106a5, 0, machine.ecx, machine.edx};
        if (leaf == 7 && subleaf == 0)
            return {0, machine.ebx7, 0xffffffff, 0xffffffff};
        if (machine.other_leaf)
            return machine.other_leaf(leaf, subleaf);
        return {0, 0, 0, 0};
    },
    .enabled_states =
        [] {
            ++machine.xcr0_reads;
            return machine.states;
        },
    .sse_usable =
        [] {
            ++machine.sse_probes;
            return machine.sse_works;
        },
};

int level_of(const Machine& m) {
    machine = m;
    return detect_cpu_level(kProbe);
}

int width_of(const Machine& m) {
    machine = m;
    return detect_register_bytes(kProbe);
}

TEST(DetectLevel, IsZeroWithoutCpuid) {
    EXPECT_EQ(level_of({.cpuid = false, .edx = kMmx | kSse | kSse2}), 0);
    EXPECT_EQ(machine.cpuid_calls, 0) << "the instruction would fault";
    EXPECT_EQ(machine.sse_probes, 0);
}

TEST(DetectLevel, LooksAtEachFeatureOnlyWhereTheOneBelowIsThere) {
    EXPECT_EQ(level_of({.edx = 0}), 0);
    EXPECT_EQ(level_of({.edx = kSse}), 0);
    EXPECT_EQ(level_of({.edx = kSse2}), 0);
    EXPECT_EQ(level_of({.edx = kSse | kSse2}), 0);
    EXPECT_EQ(level_of({.edx = kMmx}), 1);
    EXPECT_EQ(level_of({.edx = kMmx | kSse2}), 1);
    EXPECT_EQ(level_of({.edx = kMmx | kSse}), 3);
    EXPECT_EQ(level_of({.edx = kMmx | kSse | kSse2}), 4);
}

TEST(DetectLevel, IsTwoWhereTheSystemFaultsInSse) {
    EXPECT_EQ(level_of({.edx = kMmx | kSse, .sse_works = false}), 2);
    EXPECT_EQ(level_of({.edx = kMmx | kSse | kSse2, .sse_works = false}), 2);
}

TEST(DetectLevel, ExecutesSseOnlyWhereItIsReported) {
    for (const uint32_t edx : {0u, kSse, kSse | kSse2, kMmx, kMmx | kSse2}) {
        EXPECT_LT(level_of({.edx = edx, .sse_works = false}), 2) << edx;
        EXPECT_EQ(machine.sse_probes, 0) << edx;
    }
    level_of({.edx = kMmx | kSse});
    EXPECT_EQ(machine.sse_probes, 1);
}

TEST(DetectLevel, NoOtherBitMatters) {
    constexpr uint32_t kOthers = ~(kMmx | kSse | kSse2);
    EXPECT_EQ(level_of({.edx = kOthers, .ecx = 0xffffffff, .ebx7 = 0xffffffff}), 0);
    EXPECT_EQ(level_of({.edx = kOthers | kMmx, .ecx = 0xffffffff, .ebx7 = 0xffffffff}), 1);
    EXPECT_EQ(level_of({.edx = kMmx | kSse, .ecx = 0xffffffff, .ebx7 = 0xffffffff}), 3);
    EXPECT_EQ(level_of({.highest = 1, .edx = kMmx | kSse | kSse2}), 4);
}

constexpr Machine kHasAvx2 = {
    .edx = kMmx | kSse | kSse2, .ecx = kOsxsave | kAvx, .ebx7 = kAvx2, .states = kSystemSse | kSystemAvx};
constexpr Machine with_avx512(uint32_t features, uint64_t states) {
    Machine m = kHasAvx2;
    m.ebx7 |= features;
    m.states |= states;
    return m;
}

TEST(DetectWidth, Is8BelowLevel4) {
    Machine m = with_avx512(kF | kDq | kBw | kVl, kSystemAvx512);
    m.sse_works = false;
    EXPECT_EQ(width_of(m), 8);
    m.sse_works = true;
    m.edx = kMmx | kSse;
    EXPECT_EQ(width_of(m), 8);
    m.edx = kMmx;
    EXPECT_EQ(width_of(m), 8);
    m.cpuid = false;
    EXPECT_EQ(width_of(m), 8);
    EXPECT_EQ(machine.xcr0_reads, 0);
}

TEST(DetectWidth, Is16WithoutAvx2OrASystemThatKeepsIt) {
    EXPECT_EQ(width_of({.edx = kMmx | kSse | kSse2}), 16);
    EXPECT_EQ(width_of(kHasAvx2), 32);
    Machine m = kHasAvx2;
    m.ebx7 = 0;
    EXPECT_EQ(width_of(m), 16);
    m = kHasAvx2;
    m.ecx = kOsxsave;
    EXPECT_EQ(width_of(m), 16);
    m = kHasAvx2;
    m.highest = 6;  // leaf 7 does not exist: some processors answer with another leaf's words
    EXPECT_EQ(width_of(m), 16);
    for (const uint64_t states : {uint64_t{0}, uint64_t{1}, kSystemSse, kSystemAvx, kSystemAvx512}) {
        m = kHasAvx2;
        m.states = states;
        EXPECT_EQ(width_of(m), 16) << states;
    }
}

TEST(DetectWidth, DoesNotReadXcr0WithoutOsxsave) {
    Machine m = kHasAvx2;
    m.ecx = kAvx;
    EXPECT_EQ(width_of(m), 16);
    EXPECT_EQ(machine.xcr0_reads, 0) << "the instruction would fault";
}

TEST(DetectWidth, Is64OnlyWithAllFourFeaturesAndAllThreeStates) {
    EXPECT_EQ(width_of(with_avx512(kF | kDq | kBw | kVl, kSystemAvx512)), 64);
    for (const uint32_t missing : {kF, kDq, kBw, kVl})
        EXPECT_EQ(width_of(with_avx512((kF | kDq | kBw | kVl) & ~missing, kSystemAvx512)), 32) << missing;
    for (const uint64_t missing : {0x20, 0x40, 0x80})
        EXPECT_EQ(width_of(with_avx512(kF | kDq | kBw | kVl, kSystemAvx512 & ~missing)), 32) << missing;
    Machine m = with_avx512(kF | kDq | kBw | kVl, kSystemAvx512);
    m.ebx7 &= ~kAvx2;
    EXPECT_EQ(width_of(m), 16);
}

// ---------------------------------------------------------------- second-level cache

/// Ways, partitions, bytes a line, sets as CPUID packs them.
CpuidRegisters cache(uint32_t type, uint32_t level, uint32_t ways, uint32_t partitions, uint32_t line, uint32_t sets) {
    return {type | level << 5, (ways - 1) << 22 | (partitions - 1) << 12 | (line - 1), sets - 1, 0};
}

CpuidRegisters three_caches(uint32_t subleaf) {
    switch (subleaf) {
        case 0: return cache(1, 1, 8, 1, 64, 64);
        case 1: return cache(2, 1, 8, 1, 64, 64);
        case 2: return cache(3, 2, 16, 1, 64, 2048);
        case 3: return cache(3, 3, 16, 1, 64, 32768);
        default: return {0, 0, 0, 0};
    }
}

TEST(DetectCache, FindsTheSecondLevel) {
    machine = {.other_leaf = [](uint32_t leaf, uint32_t subleaf) {
        return leaf == 4 ? three_caches(subleaf) : CpuidRegisters{};
    }};
    EXPECT_EQ(detect_l2_cache_bytes(kProbe), 2097152u);
    machine = {.other_leaf = [](uint32_t leaf, uint32_t subleaf) {
        return leaf == 0x80000000   ? CpuidRegisters{0x8000001e, 0, 0, 0}
               : leaf == 0x8000001d ? three_caches(subleaf)
                                    : CpuidRegisters{};
    }};
    EXPECT_EQ(detect_l2_cache_bytes(kProbe), 2097152u) << "the other maker's leaf";
}

TEST(DetectCache, IsZeroWhereTheProcessorDoesNotTell) {
    machine = {.cpuid = false};
    EXPECT_EQ(detect_l2_cache_bytes(kProbe), 0u);
    EXPECT_EQ(machine.cpuid_calls, 0);
    machine = {.highest = 3};
    EXPECT_EQ(detect_l2_cache_bytes(kProbe), 0u);
    machine = {.other_leaf = [](uint32_t, uint32_t) { return cache(1, 1, 8, 1, 64, 64); }};  // no end to its caches
    EXPECT_EQ(detect_l2_cache_bytes(kProbe), 0u);
    machine = {.other_leaf = [](uint32_t leaf, uint32_t subleaf) {  // its second level holds instructions
        return leaf == 4 && subleaf == 0 ? cache(2, 2, 8, 1, 64, 64) : CpuidRegisters{};
    }};
    EXPECT_EQ(detect_l2_cache_bytes(kProbe), 0u);
}

// ---------------------------------------------------------------- the machine that runs this

TEST(ThisMachine, HasTheLevelThatCpuidTells) {
    EXPECT_EQ(detect_cpu_level(), expected_cpu_level());
    if (const char* const level = std::getenv("ZEPBMP_EXPECT_CPU_LEVEL")) {
        EXPECT_EQ(detect_cpu_level(), std::atoi(level));
    }
    RecordProperty("level", detect_cpu_level());
    RecordProperty("register_bytes", usable_register_bytes());
}

TEST(ThisMachine, UsesNoWiderRegistersThanItHas) {
    EXPECT_LE(usable_register_bytes(), detect_register_bytes());
    EXPECT_GE(usable_register_bytes(), detect_cpu_level() == 4 ? 16 : 8);
}

}  // namespace
}  // namespace zepbmp::test
