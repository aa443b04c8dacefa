#include "calls.h"

#include <gtest/gtest.h>

namespace {

void expect_same(const Results& got, const Results& wanted) {
    ASSERT_EQ(got.size(), wanted.size());
    for (size_t i = 0; i < got.size(); ++i) {
        EXPECT_EQ(got[i].name, wanted[i].name);
        EXPECT_TRUE(got[i].changed) << got[i].name << " has done nothing";
        EXPECT_TRUE(got[i].bytes == wanted[i].bytes) << got[i].name;
    }
}

TEST(CppCalls, GiveTheSameBytesAsTheCFunctions) { expect_same(calls_checked(), calls_c()); }

TEST(CppCalls, GiveTheSameBytesWithoutChecks) {
    Results unchecked = calls_unchecked();
    EXPECT_TRUE(unchecked.back().changed) << "a level of 5000 has been checked";
    unchecked.pop_back();
    expect_same(unchecked, calls_c());
}

}  // namespace
