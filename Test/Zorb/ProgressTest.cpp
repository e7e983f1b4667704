#include <gtest/gtest.h>

#include <sstream>

#include "Zorb/Progress.h"

namespace Zorb {
namespace {

using namespace std::chrono_literals;

TEST(ProgressTest, QuietForTheFirstSecond_ThenAFewTimesASecond_ErasedAtTheEnd) {
  std::ostringstream out;
  const auto start = Progress::Clock::now();
  {
    Progress progress(out, 900);
    progress.show(1, 10, 100, start + 500ms);
    EXPECT_EQ(out.str(), "");
    progress.show(2.5, 20, 2000, start + 2s);
    const std::string shown = out.str();
    EXPECT_EQ(shown.rfind("\r\x1b[K2.5 of 900 s, 20 mounts, ", 0), 0U) << shown;
    progress.show(3, 30, 3000, start + 2100ms);
    EXPECT_EQ(out.str(), shown);
    progress.show(4, 40, 4000, start + 2300ms);
    EXPECT_NE(out.str(), shown);
    out.str("");
  }
  EXPECT_EQ(out.str(), "\r\x1b[K");
}

TEST(ProgressTest, ShortRun_NothingIsErasedEither) {
  std::ostringstream out;
  { Progress progress(out, 900); }
  EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace Zorb
