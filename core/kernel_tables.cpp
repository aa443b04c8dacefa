/// \file
/// Process attach: measure, then fill every table.
#include "core/kernel_tables.h"

#include "core/float_scope.h"

namespace zepbmp {
namespace {

/// Of a processor that does not tell its second-level cache.
constexpr size_t kAssumedL2Bytes = size_t{1} << 20;

#if defined(ZEPBMP_HAVE_AVX512)
constexpr int kWidestBuilt = 64;
#else
constexpr int kWidestBuilt = 32;
#endif

constinit int measured_register_bytes = 8;

}  // namespace

int usable_register_bytes() { return measured_register_bytes; }

int kernel_column(int level, int register_bytes) {
    if (register_bytes > measured_register_bytes)
        register_bytes = measured_register_bytes;
    if (level != kLevelSse2 || register_bytes < 16)
        return level;
    return kCpuLevels + (register_bytes >= 64 ? 2 : register_bytes >= 32 ? 1 : 0);
}

void fill_kernel_tables(int level, int register_bytes) {
    fill_compose_slots(level, register_bytes);
    fill_span_groups(level, register_bytes);
    fill_cover_kernels(level, register_bytes);
    fill_area_kernels(level, register_bytes);
    fill_line_kernels(level, register_bytes);
    fill_shape_kernels(level, register_bytes);
#if defined(__i386__)
    kernels_use_sse_floats = level == kLevelSse2;
#endif
}

void attach_process() {
    const int widest = detect_register_bytes();
    measured_register_bytes = widest < kWidestBuilt ? widest : kWidestBuilt;
    fill_kernel_tables(detect_cpu_level());
    const size_t l2_bytes = detect_l2_cache_bytes();
    stream_threshold_bytes = l2_bytes ? l2_bytes : kAssumedL2Bytes;
}

}  // namespace zepbmp
