#include <xmmintrin.h>

#include "core/float_scope.h"

namespace zepbmp {

uint32_t exchange_mxcsr(uint32_t value) {
    const uint32_t before = _mm_getcsr();
    _mm_setcsr(value);
    return before;
}

}  // namespace zepbmp
