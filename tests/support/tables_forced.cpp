/// \file
/// For programs that have the library's inside linked in.
#include "core/cpu.h"
#include "core/kernel_tables.h"
#include "tables.h"

namespace zepbmp::test {

std::vector<Tables> all_tables() {
    return {
        {0, 8}, {1, 8}, {2, 8}, {3, 8}, {4, 8}, {4, 16}, {4, 32},
#if defined(ZEPBMP_HAVE_AVX512)
        {
            4, 64
        }
#endif
    };
}

std::string why_not(const Tables& tables) {
    if (tables.level > detect_cpu_level())
        return "this processor's level is " + std::to_string(detect_cpu_level());
    if (tables.register_bytes > usable_register_bytes())
        return "this build and machine have registers of " + std::to_string(usable_register_bytes()) + " bytes";
    return "";
}

UseTables::UseTables(const Tables& tables) { fill_kernel_tables(tables.level, tables.register_bytes); }
UseTables::~UseTables() { fill_kernel_tables(detect_cpu_level()); }

ForceStreaming::ForceStreaming(bool streams) : before_(stream_threshold_bytes) {
    stream_threshold_bytes = streams ? 0 : SIZE_MAX;
}
ForceStreaming::~ForceStreaming() { stream_threshold_bytes = before_; }

std::string tables_name(const testing::TestParamInfo<Tables>& info) {
    std::string name = "level" + std::to_string(info.param.level);
    if (info.param.level == 4)
        name += "_" + std::to_string(8 * info.param.register_bytes) + "bit";
    return name;
}

}  // namespace zepbmp::test
