#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "Platform/Orm/Assert.h"

namespace {

/// Leaves the default handler behind.
class AssertTest : public testing::Test {
 protected:
  void TearDown() override { Orm::assertionHandlerIs(nullptr); }
};
using AssertDeathTest = AssertTest;

void loud(const char* text, const char* file, int line) {
  std::fprintf(stderr, "loud: <%s> in %s, line %d\n", text, std::strrchr(file, '/') + 1, line);
}

void silent(const char*, const char*, int) {}

TEST_F(AssertTest, Holds_DoesNothing) {
  Orm::assertionHandlerIs(loud);
  Orm::assertThat(true, "never told");
  Orm::assertThat(std::make_unique<int>(1), "a handle is tested as in a condition");
}

TEST_F(AssertTest, AssertionHandlerIs_GivesTheOneThatWasInForce) {
  const Orm::AssertionHandler byDefault = Orm::assertionHandlerIs(loud);
  EXPECT_NE(byDefault, nullptr);
  EXPECT_EQ(Orm::assertionHandlerIs(silent), loud);
  EXPECT_EQ(Orm::assertionHandlerIs(nullptr), silent);
  EXPECT_EQ(Orm::assertionHandlerIs(byDefault), byDefault);
}

TEST_F(AssertDeathTest, Fails_WritesTheTextAndThePlaceAndAborts) {
  EXPECT_EXIT(Orm::assertThat(1 == 2, "one == two"), testing::KilledBySignal(SIGABRT),
              "^assertion failed: one == two \\(.*Test/Orm/AssertTest.cpp:[0-9]+\\)\n$");
}

TEST_F(AssertDeathTest, Fails_TellsTheCallersLine) {
  Orm::assertionHandlerIs(loud);
  const int line = __LINE__ + 2;
  const std::string expected = "loud: <text> in AssertTest.cpp, line " + std::to_string(line);
  EXPECT_DEATH(Orm::assertThat(false, "text"), expected);
}

TEST_F(AssertDeathTest, Fails_AbortsThoughTheReplacedHandlerReturns) {
  Orm::assertionHandlerIs(silent);
  EXPECT_EXIT(Orm::assertThat(nullptr, "pointer"), testing::KilledBySignal(SIGABRT), "^$");
}

TEST_F(AssertDeathTest, Fails_AfterNullTheDefaultHandlerWrites) {
  Orm::assertionHandlerIs(loud);
  Orm::assertionHandlerIs(nullptr);
  EXPECT_DEATH(Orm::assertThat(false, "text"), "^assertion failed: text");
}

}  // namespace
