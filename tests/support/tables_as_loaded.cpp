/// \file
/// For programs that have the library's exports only.
#include "cpu_state.h"
#include "tables.h"

namespace zepbmp::test {

std::vector<Tables> all_tables() { return {{expected_cpu_level(), 0}}; }

std::string why_not(const Tables&) { return ""; }

UseTables::UseTables(const Tables&) {}
UseTables::~UseTables() = default;

ForceStreaming::ForceStreaming(bool) : before_(0) {}
ForceStreaming::~ForceStreaming() = default;

std::string tables_name(const testing::TestParamInfo<Tables>&) { return "as_loaded"; }

}  // namespace zepbmp::test
