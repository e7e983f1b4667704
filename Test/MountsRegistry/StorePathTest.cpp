#include <gtest/gtest.h>

#include "Controllerdb/MountsRegistry/StorePath.h"
#include "Platform/Fennix/Node.h"

namespace {

using Controller::StorePath;
using Orm::Ptr;

class StorePathTest : public testing::Test {
 protected:
  StorePathTest()
      : root_(Orm::make<Fennix::Dir>()),
        inner_(root_->createDir("controller")->createDir("inner")),
        leaf_(inner_->createEntity("Type", "leaf")) {}

  Ptr<Orm::Entity> lookup(std::string_view path) const {
    const Ptr<Orm::Entity> found = StorePath(path).lookup(*root_);
    EXPECT_EQ(found, root_->lookup(path));
    return found;
  }

  Ptr<Fennix::Dir> root_;
  Ptr<Fennix::Dir> inner_;
  Ptr<Orm::Entity> leaf_;
};

TEST_F(StorePathTest, FindsWhatStandsAtThePath) {
  EXPECT_EQ(lookup("/controller/inner"), inner_);
  EXPECT_EQ(lookup("/controller/inner/leaf"), leaf_);
}

TEST_F(StorePathTest, FindsNothingWhereNothingStands) {
  EXPECT_FALSE(lookup("/controller/other"));
  EXPECT_FALSE(lookup("/nowhere/inner/leaf"));
  EXPECT_FALSE(lookup("/controller/inner/leaf/below"));
}

TEST_F(StorePathTest, ALeadingSlashAndEmptyComponentsMeanNothing) {
  EXPECT_EQ(lookup("controller//inner/leaf/"), leaf_);
  EXPECT_EQ(lookup(""), root_);
  EXPECT_EQ(lookup("/"), root_);
}

TEST_F(StorePathTest, FollowsTheStore) {
  const StorePath path("/controller/inner/leaf");
  inner_->entityDel("leaf");
  EXPECT_FALSE(path.lookup(*root_));
  const Ptr<Orm::Entity> other = inner_->createEntity("Other", "leaf");
  EXPECT_EQ(path.lookup(*root_), other);
}

}  // namespace
