// The program itself, as a shell sees it.

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>

#include "Test/Zorb/CommandFixture.h"

namespace Zorb {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class ProgramTest : public CommandFixture {
 protected:
  /// Runs a shell command in which $zorb is the program; gives what waitpid() gives. Standard
  /// output and error go to files of these names.
  int shell(const std::string& command) {
    const std::string program =
        (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "zorb").string();
    return std::system(("zorb='" + program + "'; exec >'" + path("stdout") + "' 2>'" +
                        path("stderr") + "'; " + command)
                           .c_str());
  }

  std::string fabric_ = file("fabric.yaml", kFabric);
};

TEST_F(ProgramTest, ExitStatusAndStreams) {
  EXPECT_EQ(shell("\"$zorb\" sim " + fabric_), 0);
  EXPECT_THAT(contentOf("stdout"), HasSubstr("Mount groups"));
  EXPECT_EQ(contentOf("stderr"), "");
  EXPECT_EQ(WEXITSTATUS(shell("\"$zorb\" sim /no/such/file")), 2);
  EXPECT_EQ(contentOf("stdout"), "");
  EXPECT_THAT(contentOf("stderr"), HasSubstr("/no/such/file:1:1: cannot be read"));
}

TEST_F(ProgramTest, DocumentOnStandardInput) {
  EXPECT_EQ(shell("\"$zorb\" sim - <" + fabric_), 0);
  EXPECT_THAT(contentOf("stdout"), testing::StartsWith("- at 601 s"));
}

TEST_F(ProgramTest, Assertion_Aborts_EventsAreComplete_AndThereIsNoStateDocument) {
  const std::string failing = file("failing.yaml", std::string(kFabric) + R"(
  - at: 2
    apply: {services: {Topology: {mount: {groups: {default: {paths: {status: {flags: rw}}}}}}}}
)");
  const int status = shell("exec \"$zorb\" sim " + failing + " --events " + path("events") +
                           " --state " + path("state"));
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGABRT);
  EXPECT_THAT(contentOf("stderr"),
              HasSubstr("assertion failed: mre->mountFlags() == mountConfig->mountFlags() (at 2 s, "
                        "Controllerdb/ServiceConfigDirSm/"));
  EXPECT_THAT(contentOf("events"),
              EndsWith("\"event\":\"assertion\",\"text\":"
                       "\"mre->mountFlags() == mountConfig->mountFlags()\"}\n"));
  EXPECT_EQ(contentOf("stdout"), "");
  EXPECT_FALSE(exists("state"));
}

TEST_F(ProgramTest, ReaderThatGoesAway_NoMessage) {
  EXPECT_EQ(shell("\"$zorb\" sim " + fabric_ + " --events - | true"), 0);
  EXPECT_EQ(contentOf("stderr"), "");
}

TEST_F(ProgramTest, PipeAsOutputFile) {
  EXPECT_EQ(shell("mkfifo " + path("pipe") + "; cat " + path("pipe") + " >" + path("copy") +
                  " & \"$zorb\" sim " + fabric_ + " --quiet --state " + path("pipe") + "; wait"),
            0);
  EXPECT_EQ(shell("\"$zorb\" sim " + fabric_ + " --state -"), 0);
  EXPECT_NE(contentOf("copy"), "");
  EXPECT_EQ(contentOf("copy"), contentOf("stdout"));
}

TEST_F(ProgramTest, NoColour) {
  EXPECT_EQ(shell("NO_COLOR=1 \"$zorb\" sim " + fabric_), 0);
  EXPECT_THAT(contentOf("stdout"), testing::Not(HasSubstr("\x1b")));
}

}  // namespace
}  // namespace Zorb
