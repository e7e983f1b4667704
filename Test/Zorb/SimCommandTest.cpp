#include <gmock/gmock.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "Platform/Dualog/Dualog.h"
#include "Test/Zorb/CommandFixture.h"
#include "Zorb/SimCommand.h"

namespace Zorb {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class SimCommandTest : public CommandFixture {
 protected:
  std::string fabric_ = file("fabric.yaml", kFabric);
};

TEST_F(SimCommandTest, Report_OnStandardOutput) {
  EXPECT_EQ(zorb({"sim", fabric_}), kSuccess);
  EXPECT_THAT(out(), StartsWith(fabric_ + " at 601 s: leader gen-1, 1 of 1 switch connected\n"));
  EXPECT_THAT(out(), HasSubstr("failed, asked for at 0 s  1 switch  leaf1  status\n"));
  EXPECT_THAT(out(), HasSubstr("ZORB is unable to mount from switch leaf1."));
  EXPECT_EQ(errors(), "");
}

TEST_F(SimCommandTest, Quiet_NothingButTheStatus) {
  EXPECT_EQ(zorb({"sim", fabric_, "--quiet"}), kSuccess);
  EXPECT_EQ(out() + errors(), "");
}

TEST_F(SimCommandTest, Json_Report) {
  EXPECT_EQ(zorb({"sim", fabric_, "--format", "json"}), kSuccess);
  const auto report = nlohmann::json::parse(out());
  EXPECT_EQ(report.at("document"), fabric_);
  EXPECT_EQ(report.at("groups").at(0).at("switches").at("failed"), 1);
  EXPECT_EQ(errors(), "");
}

TEST_F(SimCommandTest, Until_EndsTheRunThere) {
  EXPECT_EQ(zorb({"sim", fabric_, "--until", "0.05", "--format", "json"}), kSuccess);
  const auto report = nlohmann::json::parse(out());
  EXPECT_EQ(report.at("time"), 0.05);
  EXPECT_EQ(report.at("groups").at(0).at("switches").at("inProgress"), 1);
  EXPECT_EQ(report.at("expectations").at("notReached"), 1);
}

TEST_F(SimCommandTest, Until_IsInclusive) {
  EXPECT_EQ(zorb({"sim", fabric_, "--until", "0.1", "--format", "json"}), kSuccess);
  EXPECT_EQ(nlohmann::json::parse(out()).at("groups").at(0).at("switches").at("failed"), 1);
}

TEST_F(SimCommandTest, StateOnStandardOutput_NothingElseIsThere) {
  EXPECT_EQ(zorb({"sim", fabric_, "--state", "-"}), kSuccess);
  const auto state = nlohmann::json::parse(out());
  EXPECT_EQ(state.at("mounts").at("02:00:00:00:00:01").at("status").at("state"), "failed");
  EXPECT_EQ(errors(), "");
}

TEST_F(SimCommandTest, EventsOnStandardOutput_NothingElseIsThere) {
  EXPECT_EQ(zorb({"sim", fabric_, "--events", "-"}), kSuccess);
  std::istringstream lines(out());
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_TRUE(nlohmann::json::parse(line).contains("event"));
  }
  EXPECT_EQ(count, 12);
  EXPECT_EQ(errors(), "");
}

TEST_F(SimCommandTest, DocumentsInFiles_AreThoseOfStandardOutput_AndTheReportIsThereToo) {
  EXPECT_EQ(zorb({"sim", fabric_, "--state", path("s"), "--events", path("e")}), kSuccess);
  EXPECT_THAT(out(), StartsWith(fabric_));
  zorb({"sim", fabric_, "--state", "-"});
  EXPECT_EQ(contentOf("s"), out());
  zorb({"sim", fabric_, "--events", "-"});
  EXPECT_EQ(contentOf("e"), out());
}

TEST_F(SimCommandTest, FailedExpectation_Status1_EachInTheReport) {
  const std::string failing = file("failing.yaml", std::string(kFabric) + R"(
  - {at: 2, expect: {mounts: {leaf1: {status: {state: mounted, retries: 7}}}}}
  - {at: 3, expect: {time: 3}}
)");
  EXPECT_EQ(zorb({"sim", failing}), kExpectationFailed);
  EXPECT_THAT(out(), EndsWith("\nExpectations\n  2 hold, 1 does not\n  " + failing +
                              ":10:5: not as expected at 2 s\n"
                              "    mounts.leaf1.status.state: expected \"mounted\", is \"failed\"\n"
                              "    mounts.leaf1.status.retries: expected 7, is 4294967295\n"));
  EXPECT_EQ(errors(), "");
}

TEST_F(SimCommandTest, FailedExpectation_WithoutAReport_OnStandardError) {
  const std::string failing = file("failing.yaml", "events: [{at: 2, expect: {time: 3}}]\n");
  for (const auto& options : {std::vector<std::string>{"--quiet"}, {"--state", "-"}}) {
    std::vector<std::string> arguments{"sim", failing};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(zorb(arguments), kExpectationFailed);
    EXPECT_EQ(errors(), failing + ":1:10: not as expected at 2 s\n  time: expected 3, is 2\n");
  }
}

TEST_F(SimCommandTest, BadDocument_Status2_AndNoOutputIsTouched) {
  const std::string bad = file("bad.yaml", "switches: 3\n");
  file("state.json", "before");
  EXPECT_EQ(zorb({"sim", bad, "--state", path("state.json"), "--events", path("new")}),
            kBadUsageOrInput);
  EXPECT_THAT(errors(), StartsWith(bad + ":1:11: "));
  EXPECT_EQ(out(), "");
  EXPECT_EQ(contentOf("state.json"), "before");
  EXPECT_FALSE(exists("new"));
}

TEST_F(SimCommandTest, OutputThatCannotBeWritten_Status2_BeforeTheRun) {
  for (const char* const option : {"--state", "--events"}) {
    EXPECT_EQ(zorb({"sim", fabric_, option, path("no/such/directory")}), kBadUsageOrInput);
    EXPECT_EQ(errors(), std::string("zorb: ") + option + ": cannot write " +
                            path("no/such/directory") + ": No such file or directory\n");
    EXPECT_EQ(out(), "");
  }
}

TEST_F(SimCommandTest, DiskThatIsFull_Status2) {
  EXPECT_EQ(zorb({"sim", fabric_, "--state", "/dev/full"}), kBadUsageOrInput);
  EXPECT_THAT(errors(), StartsWith("zorb: --state: cannot write /dev/full"));
}

TEST_F(SimCommandTest, OutputFileIsReplaced) {
  file("state.json", std::string(100'000, 'x'));
  EXPECT_EQ(zorb({"sim", fabric_, "--state", path("state.json")}), kSuccess);
  EXPECT_TRUE(nlohmann::json::accept(contentOf("state.json")));
}

TEST_F(SimCommandTest, Trace_LinesOfThatSourceAndLevel_WithTheProcessClock) {
  EXPECT_EQ(zorb({"sim", fabric_, "--quiet", "--trace", "ControllerMountsRegistrySm=5"}), kSuccess);
  EXPECT_THAT(errors(), HasSubstr(" mounting:status from:02:00:00:00:00:01"));
  EXPECT_THAT(errors(), HasSubstr("1000.1"));
  EXPECT_THAT(errors(), Not(HasSubstr("ControllerServiceConfigDirSm")));
  EXPECT_EQ(out(), "");
  // As it was before.
  EXPECT_EQ(Dualog::handle("ControllerMountsRegistrySm")->level(), Dualog::kAllOff);
}

TEST_F(SimCommandTest, Trace_MayBeRepeated) {
  EXPECT_EQ(zorb({"sim", fabric_, "--quiet", "--trace", "ControllerMountsRegistrySm=5", "--trace",
                  "ControllerServiceConfigDirSm=8"}),
            kSuccess);
  EXPECT_THAT(errors(), HasSubstr("ControllerServiceConfigDirSm"));
  EXPECT_THAT(errors(), HasSubstr("ControllerMountsRegistrySm"));
}

TEST_F(SimCommandTest, Trace_TheReportIsNotTraced) {
  zorb({"sim", fabric_, "--quiet", "--trace", "ControllerMountsRegistrySm=8"});
  const std::string withoutReport = errors();
  zorb({"sim", fabric_, "--trace", "ControllerMountsRegistrySm=8"});
  EXPECT_EQ(errors(), withoutReport);
}

TEST_F(SimCommandTest, Colours_OnATerminalOnly_AndNotWhenUnwanted) {
  zorb({"sim", fabric_});
  EXPECT_THAT(out(), Not(HasSubstr("\x1b")));
  const std::string plain = out();
  terminal_ = true;
  zorb({"sim", fabric_});
  EXPECT_THAT(out(), HasSubstr("\x1b[31m"));
  mayColour_ = false;
  zorb({"sim", fabric_});
  EXPECT_EQ(out(), plain);
  EXPECT_EQ(errors(), "");
}

TEST_F(SimCommandTest, Interrupted_ReportsWhatIsThere) {
  // Enough work that the run asks whether it is to go on.
  const std::string large = file("large.yaml", R"(
controller: {leader: g}
switches: {"02:00:00:00:01:00": {count: 1000, name: "s{n}", connected: true, services: {A: 1}}}
services: {A: {mount: {generation: g, groups: {g: {paths: {a: {}, b: {}, c: {}, d: {}, e: {}, f: {}, g: {}, h: {}, i: {}}}}}}}
)");
  // The first trace line of the run comes while the interrupt is being waited for.
  class Interrupter final : public std::stringbuf {
   private:
    std::streamsize xsputn(const char*, std::streamsize size) override {
      if (!done_) std::raise(SIGINT);
      done_ = true;
      return size;
    }
    bool done_ = false;
  } interrupter;
  std::ostream errors(&interrupter);
  std::ostringstream out;
  EXPECT_EQ(runCommand({"sim", large, "--trace", "ControllerServiceConfigDirSm=5"}, {out, errors}),
            kInterrupted);
  EXPECT_THAT(out.str(), HasSubstr("where it was interrupted"));
}

TEST_F(SimCommandTest, ReaderOfStandardOutputGone_EndsTheRun) {
  const std::string large = file("large.yaml", R"(
controller: {leader: g}
switches: {"02:00:00:00:01:00": {count: 1000, name: "s{n}", connected: true, services: {A: 1}}}
services: {A: {mount: {generation: g, groups: {g: {paths: {a: {}, b: {}, c: {}, d: {}, e: {}, f: {}, g: {}, h: {}, i: {}}}}}}}
until: 1000000000
)");
  class Closed final : public std::streambuf {
   public:
    int written = 0;

   private:
    std::streamsize xsputn(const char*, std::streamsize) override { return ++written, 0; }
  } closed;
  std::ostream out(&closed);
  std::ostringstream errors;
  EXPECT_EQ(runCommand({"sim", large, "--events", "-"}, {out, errors}), kBadUsageOrInput);
  EXPECT_EQ(closed.written, 1);
  EXPECT_THAT(errors.str(), StartsWith("zorb: --events: cannot write standard output"));
}

TEST_F(SimCommandTest, SameDocuments_OnASecondRun) {
  zorb({"sim", fabric_, "--state", path("s1"), "--events", path("e1"), "--quiet"});
  zorb({"sim", fabric_, "--state", path("s2"), "--events", path("e2"), "--quiet"});
  EXPECT_EQ(contentOf("s1"), contentOf("s2"));
  EXPECT_EQ(contentOf("e1"), contentOf("e2"));
}

}  // namespace
}  // namespace Zorb
