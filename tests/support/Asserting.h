// Counts the assertions of a running test, so that a test which checks nothing can be told from one that passes.
#pragma once
#include <gtest/gtest.h>

namespace support {
/// Notes that an EXPECT_ or ASSERT_ ran; always 0, so that it can stand in the switch of the macro below.
int countAssertion();
/// How many ran since the current test began.
unsigned long countedAssertions();
}  // namespace support

// Every EXPECT_ and ASSERT_ of GoogleTest opens with this macro.
#undef GTEST_AMBIGUOUS_ELSE_BLOCKER_
#define GTEST_AMBIGUOUS_ELSE_BLOCKER_    \
    switch (::support::countAssertion()) \
    case 0:                              \
    default:  // NOLINT
