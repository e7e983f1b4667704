#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/Orm/String.h"
#include "Platform/StructuredLog/StructuredLog.h"

namespace {

using testing::ElementsAre;

// Log handles live as long as the process.
const StructuredLog::LogHandle timeout("TEST_TIMEOUT", 3, "%s is unable to mount from %s %s.",
                                       "A request has timed out.", StructuredLog::kContactSupport);
const StructuredLog::LogHandle plain("TEST_PLAIN", 6, "Nothing to add.", "None.", "None.");

class Capture : public StructuredLog::Sink {
 public:
  void message(const StructuredLog::LogHandle& handle, std::string_view text) override {
    messages.push_back(std::string(handle.id()) + " " + std::to_string(handle.severity()) + " " +
                       std::string(text));
  }
  std::vector<std::string> messages;
};

class StructuredLogTest : public testing::Test {
 protected:
  void SetUp() override { EXPECT_EQ(StructuredLog::sinkIs(&capture_), nullptr); }
  void TearDown() override { EXPECT_EQ(StructuredLog::sinkIs(nullptr), &capture_); }

  Capture capture_;
};

TEST_F(StructuredLogTest, Log_FillsTheArgumentsIn) {
  timeout.log(Orm::String("service"), "00:01:02:03:04:05", 7);
  plain.log();
  EXPECT_THAT(capture_.messages,
              ElementsAre("TEST_TIMEOUT 3 service is unable to mount from 00:01:02:03:04:05 7.",
                          "TEST_PLAIN 6 Nothing to add."));
}

TEST_F(StructuredLogTest, Log_ArgumentsThatLookLikePlaceholdersAreText) {
  timeout.log("%s", "%s%s", "");
  EXPECT_THAT(capture_.messages, ElementsAre("TEST_TIMEOUT 3 %s is unable to mount from %s%s ."));
}

TEST_F(StructuredLogTest, Log_OfMoreOrFewerArgumentsThanPlacesFillsWhatThereIs) {
  timeout.log("one");
  plain.log("too many");
  EXPECT_THAT(capture_.messages, ElementsAre("TEST_TIMEOUT 3 one is unable to mount from %s %s.",
                                             "TEST_PLAIN 6 Nothing to add."));
}

TEST_F(StructuredLogTest, LogHandles_AllAreKnownWithTheirTexts) {
  EXPECT_THAT(StructuredLog::logHandles(), ElementsAre(&timeout, &plain));
  EXPECT_STREQ(timeout.explanation(), "A request has timed out.");
  EXPECT_STREQ(timeout.recommendedAction(),
               "If the problem persists, contact your support representative.");
  EXPECT_STREQ(timeout.format(), "%s is unable to mount from %s %s.");
}

TEST_F(StructuredLogTest, SinkIs_NullPutsTheDefaultBackWhichWritesToStandardError) {
  EXPECT_EQ(StructuredLog::sinkIs(nullptr), &capture_);
  testing::internal::CaptureStderr();
  timeout.log("a", "b", "c");
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_EQ(StructuredLog::sinkIs(&capture_), nullptr);
  EXPECT_EQ(written, "%TEST_TIMEOUT-3: a is unable to mount from b c.\n");
}

}  // namespace
