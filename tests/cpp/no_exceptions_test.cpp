#include "no_exceptions.h"

#include <gtest/gtest.h>

namespace {

TEST(CppNoExceptions, CallsAreMade) {
    EXPECT_EQ(clear_without_exceptions(0), 0);
    EXPECT_EQ(clear_without_exceptions(3), 1);
}

#if GTEST_HAS_DEATH_TEST
TEST(CppNoExceptionsDeathTest, ABrokenRuleIsToldAndEndsTheProgram) {
    EXPECT_DEATH(clear_without_exceptions(1), "zepbmp: clear: field is 1, must be one of the enumeration's values");
}
#endif

}  // namespace
