#include "core/float_scope.h"

namespace zepbmp {
namespace {

constexpr uint32_t kMxcsrDefault = 0x1f80;  // nearest, no flush to zero, every exception masked
#if defined(__i386__)
constexpr uint16_t kX87Double = 0x027f;  // 53 bits, nearest, every exception masked
#endif

}  // namespace

#if defined(__x86_64__)
constinit bool kernels_use_sse_floats = true;
#else
constinit bool kernels_use_sse_floats = false;
#endif

FloatScope::FloatScope() : mxcsr_(0) {
#if defined(__i386__)
    // fnstenv also masks every exception, so what the host left pending does not strike at the next instruction.
    asm volatile("fnstenv %0\n\tfnclex\n\tfldcw %1" : "=m"(x87_environment_) : "m"(kX87Double) : "memory");
#endif
    if (kernels_use_sse_floats)
        mxcsr_ = exchange_mxcsr(kMxcsrDefault);
}

FloatScope::~FloatScope() {
    if (kernels_use_sse_floats)
        exchange_mxcsr(mxcsr_);
#if defined(__i386__)
    asm volatile("fldenv %0" : : "m"(x87_environment_) : "memory");
#endif
}

}  // namespace zepbmp
