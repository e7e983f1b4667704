#include <gmock/gmock.h>

#include "Test/Zorb/CommandFixture.h"
#include "Zorb/Command.h"
#include "Zorb/Version.h"

namespace Zorb {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class CommandTest : public CommandFixture {
 protected:
  void expectUsageError(const std::vector<std::string>& arguments, const std::string& text) {
    EXPECT_EQ(zorb(arguments), kBadUsageOrInput);
    EXPECT_EQ(out(), "");
    EXPECT_THAT(errors(), StartsWith("zorb: "));
    EXPECT_THAT(errors(), HasSubstr(text));
    EXPECT_EQ(errors().find('\n'), errors().size() - 1) << errors();
  }
};

TEST_F(CommandTest, Version) {
  EXPECT_EQ(zorb({"--version"}), kSuccess);
  EXPECT_EQ(out(), std::string("zorb ") + kVersion + "\n");
  EXPECT_EQ(errors(), "");
}

TEST_F(CommandTest, Help_NamesTheSubcommandsAndTheExitStatuses) {
  EXPECT_EQ(zorb({"--help"}), kSuccess);
  EXPECT_THAT(out(), HasSubstr("sim"));
  EXPECT_THAT(out(), HasSubstr("Exit status"));
  EXPECT_EQ(errors(), "");
}

TEST_F(CommandTest, HelpOfSim_NamesEachOption) {
  EXPECT_EQ(zorb({"sim", "--help"}), kSuccess);
  for (const char* const option : {"FILE", "--until", "--state", "--events", "--trace", "--format",
                                   "--quiet", "--help", "Exit status", "Examples"}) {
    EXPECT_THAT(out(), HasSubstr(option));
  }
}

TEST_F(CommandTest, Help_FitsTheLine) {
  for (const auto& arguments : {std::vector<std::string>{"--help"}, {"sim", "--help"}}) {
    zorb(arguments);
    std::istringstream lines(out());
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 100U) << line;
  }
}

TEST_F(CommandTest, UsageErrors_OneLineAndStatus2) {
  const std::string fabric = file("fabric.yaml", kFabric);
  expectUsageError({}, "expected a subcommand: sim");
  expectUsageError({"simulate", fabric}, "there is no subcommand \"simulate\", expected sim");
  expectUsageError({"--what"}, "--what");
  expectUsageError({"sim"}, "FILE");
  expectUsageError({"sim", fabric, fabric}, fabric);
  expectUsageError({"sim", fabric, "--what"}, "--what");
  expectUsageError({"sim", fabric, "--format", "xml"}, "--format");
  expectUsageError({"sim", fabric, "--state"}, "--state");
  expectUsageError({"sim", fabric, "--state", "-", "--events", "-"},
                   "--state and --events both write standard output");
  expectUsageError({"sim", fabric, "--state", path("x"), "--events", path("x")},
                   "--state and --events both write " + path("x"));
}

TEST_F(CommandTest, Until_SecondsThatARunCanHave) {
  const std::string fabric = file("fabric.yaml", kFabric);
  for (const char* const text : {"-1", "nan", "inf", "1e10", "abc", "1s", ""}) {
    expectUsageError({"sim", fabric, "--until", text},
                     "--until: expected seconds from 0 to 1000000000");
  }
  EXPECT_EQ(zorb({"sim", fabric, "--quiet", "--until", "0"}), kSuccess);
  EXPECT_EQ(zorb({"sim", fabric, "--quiet", "--until", "2.5e0"}), kSuccess);
}

TEST_F(CommandTest, Trace_UnknownHandle_NamesTheHandles) {
  const std::string fabric = file("fabric.yaml", kFabric);
  expectUsageError({"sim", fabric, "--trace", "Nobody=5"},
                   "there is no trace handle \"Nobody\"; the handles are ");
  EXPECT_THAT(errors(), HasSubstr("ControllerMountsRegistrySm"));
  EXPECT_THAT(errors(), HasSubstr("ControllerServiceConfigDirSm"));
  expectUsageError({"sim", fabric, "--trace", "ControllerMountsRegistrySm"},
                   "expected HANDLE=LEVEL; the handles are ");
  for (const char* const level : {"", "10", "-1", "x", "5x"}) {
    expectUsageError({"sim", fabric, "--trace", std::string("ControllerMountsRegistrySm=") + level},
                     "is no level, expected 0 to 9");
  }
}

}  // namespace
}  // namespace Zorb
