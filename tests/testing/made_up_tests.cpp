// Tests that end in every way that tests can, for those who count them.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace {

int testsBegun = 0;

TEST(Plain, passes) { ++testsBegun; }
TEST(Plain, passes_too) { ++testsBegun; }

TEST(Plain, is_skipped) { GTEST_SKIP(); }

TEST(Plain, DISABLED_is_disabled) { FAIL(); }

TEST(Failing, fails) { EXPECT_EQ(1, 2); }

TEST(Failing, throws) { throw 1; }

TEST(Crashing, crashes) { std::abort(); }

TEST(Crashing, ends_the_program) { std::_Exit(0); }

TEST(Hanging, hangs) { std::this_thread::sleep_for(std::chrono::hours(1)); }

TEST(Lonely, is_the_first_of_its_process) { EXPECT_EQ(testsBegun++, 0); }
TEST(Lonely, is_the_first_of_its_process_as_well) { EXPECT_EQ(testsBegun++, 0); }

class BadEnd : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    std::atexit([] { std::_Exit(23); });
  }
};
TEST_F(BadEnd, passes_and_the_program_fails_at_its_end) {}

class BadBegin : public testing::Test {
 protected:
  static void SetUpTestSuite() { std::abort(); }
};
TEST_F(BadBegin, is_never_begun) {}
TEST_F(BadBegin, is_never_begun_either) {}

class Numbers : public testing::TestWithParam<int> {};
TEST_P(Numbers, are_small) { EXPECT_LT(GetParam(), 10); }
INSTANTIATE_TEST_SUITE_P(All, Numbers, testing::Range(1, 6));

}  // namespace
