#include <gtest/gtest.h>

#include "Soak/Fault.h"

namespace Soak {
namespace {

TEST(FaultTest, ANoteSaysWhatTheFaultIs) {
  for (const char* note : {"fault state 02:00:00:00:00:01 a/b failed",
                           "fault lose 02:00:00:00:00:01 a/b", "fault vanish 02:00:00:00:00:01 a/b",
                           "fault within groupState 3", "fault within initialMountsComplete 1",
                           "fault within pathPrefix 2", "fault within any 1"}) {
    const auto fault = Fault::parse(note);
    ASSERT_TRUE(fault) << note;
    EXPECT_EQ(fault->note(), note);
  }
}

TEST(FaultTest, OtherNotesAreNone) {
  for (const char* note :
       {"", "leaf1 is lost", "fault", "fault melt 02:00:00:00:00:01 a", "fault lose leaf1 a",
        "fault lose 02:00:00:00:00:01", "fault state 02:00:00:00:00:01 a gone",
        "fault within groupState", "fault within groupState 0", "fault within dinner 1"}) {
    EXPECT_FALSE(Fault::parse(note)) << note;
  }
}

}  // namespace
}  // namespace Soak
