/// \file
/// Which kernels the library calls while a test runs.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zepbmp::test {

/// A filling of the kernel tables.
struct Tables {
    int level;
    int register_bytes;  ///< 8, 16, 32, 64; 0: as the library was loaded

    /// Levels 1 to 4 share one arithmetic; level 0 has its own.
    int arithmetic() const { return level == 0 ? 0 : 4; }
};

/// Every filling that a test should see: all of them where the library's inside is linked in, else the one that it
/// loaded with.
std::vector<Tables> all_tables();

/// Why this machine or this build can't run them; empty if it can.
std::string why_not(const Tables& tables);

/// Fills the tables while it lives, and then as loading does.
class UseTables {
public:
    explicit UseTables(const Tables& tables);
    ~UseTables();
    UseTables(const UseTables&) = delete;
    UseTables& operator=(const UseTables&) = delete;
};

/// While it lives, every call streams its stores past the caches, or none does. Nothing where the inside is not linked
/// in.
class ForceStreaming {
public:
    explicit ForceStreaming(bool streams);
    ~ForceStreaming();
    ForceStreaming(const ForceStreaming&) = delete;
    ForceStreaming& operator=(const ForceStreaming&) = delete;

private:
    [[maybe_unused]] size_t before_;
};

std::string tables_name(const testing::TestParamInfo<Tables>& info);

/// A suite that runs once for each filling. Those that can't run are skipped.
class WithTables : public testing::TestWithParam<Tables> {
protected:
    void SetUp() override {
        const std::string reason = why_not(GetParam());
        if (!reason.empty())
            GTEST_SKIP() << reason;
    }
};

#define ZEPBMP_FOR_ALL_TABLES(suite) \
    INSTANTIATE_TEST_SUITE_P(, suite, testing::ValuesIn(::zepbmp::test::all_tables()), ::zepbmp::test::tables_name)

}  // namespace zepbmp::test
