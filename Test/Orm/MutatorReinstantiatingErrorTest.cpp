#include <gtest/gtest.h>

#include "Platform/Orm/MutatorReinstantiatingError.h"
#include "Platform/Orm/String.h"

namespace {

TEST(MutatorReinstantiatingErrorTest, Error_NamesTheAttribute) {
  const Orm::MutatorReinstantiatingError error("mountFlags");
  EXPECT_EQ(error.attribute(), "mountFlags");
  EXPECT_STREQ(error.what(),
               "mutator reinstantiates a member with another value of its attribute mountFlags");
}

TEST(MutatorReinstantiatingErrorTest, RequireSame_RaisesOnlyWhenTheValuesDiffer) {
  EXPECT_NO_THROW(Orm::requireSame("flags", 3, 3));
  EXPECT_NO_THROW(Orm::requireSame("path", Orm::String("/a"), Orm::String("/a")));
  EXPECT_THROW(Orm::requireSame("flags", 3, 4), Orm::MutatorReinstantiatingError);
}

TEST(MutatorReinstantiatingErrorTest, RequireSame_TheFirstThatDiffersIsNamed) {
  const auto compare = [](int first, int second, int third) {
    Orm::requireSame("first", 1, first);
    Orm::requireSame("second", 2, second);
    Orm::requireSame("third", 3, third);
  };
  try {
    compare(1, 0, 0);
    FAIL() << "nothing was raised";
  } catch (const Orm::MutatorReinstantiatingError& error) {
    EXPECT_EQ(error.attribute(), "second");
  }
}

}  // namespace
