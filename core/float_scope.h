/// \file
/// Floating point as the library needs it, whatever the host has set.
#pragma once

#include <cstdint>

namespace zepbmp {

/// While one lives: x87 with 53-bit precision, SSE without flush-to-zero, both rounding to nearest with every exception
/// masked. Its end puts back what the host had, sticky flags included.
///
/// The compiler does not know that floating-point code depends on it. So it stands in an export around one call of a
/// function that is not inlined, and nothing but that call stands beside it.
class FloatScope {
public:
    FloatScope();
    ~FloatScope();
    FloatScope(const FloatScope&) = delete;
    FloatScope& operator=(const FloatScope&) = delete;

private:
#if defined(__i386__)
    uint32_t x87_environment_[7];  ///< as fnstenv lays it out
#endif
    uint32_t mxcsr_;
};

/// Exchanges the SSE control and status register. Needs SSE; below level 4 no kernel computes with SSE floats.
uint32_t exchange_mxcsr(uint32_t value);

/// Whether kernels in force use SSE floating point; on a 64-bit target all code does. Set with the tables.
extern bool kernels_use_sse_floats;

}  // namespace zepbmp
