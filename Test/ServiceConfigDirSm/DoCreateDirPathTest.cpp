#include "Controllerdb/ServiceConfigDirSm/DoCreateDirPath.h"
#include "Test/Support/ControllerFixture.h"

namespace Controller {
namespace {

using Fennix::Dir;
using Orm::Ptr;
using testing::ElementsAre;
using testing::IsEmpty;

class DoCreateDirPathTest : public Support::ControllerFixture {
 protected:
  DoCreateDirPathTest() { traceIs(8); }

  Ptr<Dir> at(const char* path) const { return Orm::dynamicCast<Dir>(root_->lookup(path)); }

  const Ptr<Dir> root_ = Orm::make<Dir>();
};

TEST_F(DoCreateDirPathTest, ThreeComponents_AllAreCreated) {
  doCreateDirPath(root_, "a/b/c");
  EXPECT_TRUE(at("a"));
  EXPECT_TRUE(at("a/b"));
  EXPECT_TRUE(at("a/b/c"));
  EXPECT_EQ("/a/b/c", at("a/b/c")->path());
  EXPECT_THAT(traced(8),
              ElementsAre("doCreateDirPath a", "doCreateDirPath b", "doCreateDirPath final:c",
                          "doCreateDirPath creating final c"));
}

TEST_F(DoCreateDirPathTest, DirectoriesThatArePresent_AreTaken) {
  const Ptr<Dir> a = root_->createDir("a");
  const Ptr<Dir> c = a->createDir("b")->createDir("c");
  Support::Recorder recorder(a);
  doCreateDirPath(root_, "a/b/c");
  EXPECT_EQ(a, at("a"));
  EXPECT_EQ(c, at("a/b/c"));
  EXPECT_EQ(0U, recorder.told());
  EXPECT_THAT(traced(8),
              ElementsAre("doCreateDirPath a", "doCreateDirPath b", "doCreateDirPath final:c"));
}

TEST_F(DoCreateDirPathTest, LastComponentOfAnotherType_IsLeftAsItIs) {
  const Ptr<Orm::Entity> node = root_->createDir("a")->createEntity("Topology::Status", "b");
  doCreateDirPath(root_, "a/b");
  EXPECT_EQ(node, root_->lookup("a/b"));
  EXPECT_THAT(traced(8), ElementsAre("doCreateDirPath a", "doCreateDirPath final:b"));
}

TEST_F(DoCreateDirPathTest, ComponentOfAnotherTypeOnTheWay_NothingIsCreatedBelow) {
  const Ptr<Orm::Entity> node = root_->createEntity("Topology::Status", "a");
  doCreateDirPath(root_, "a/b/c");
  EXPECT_EQ(node, root_->lookup("a"));
  EXPECT_EQ(nullptr, root_->lookup("a/b"));
}

TEST_F(DoCreateDirPathTest, OneComponent_IsTheFinalOne) {
  doCreateDirPath(root_, "a");
  EXPECT_TRUE(at("a"));
  EXPECT_THAT(traced(8),
              ElementsAre("doCreateDirPath final:a", "doCreateDirPath creating final a"));
}

TEST_F(DoCreateDirPathTest, LeadingSlashAndEmptyComponents_MeanNothing) {
  doCreateDirPath(root_, "//a///b/");
  EXPECT_TRUE(at("a/b"));
  EXPECT_EQ(1U, root_->entity().size());
  EXPECT_EQ(1U, at("a")->entity().size());
  EXPECT_THAT(traced(8), ElementsAre("doCreateDirPath a", "doCreateDirPath final:b",
                                     "doCreateDirPath creating final b"));
}

TEST_F(DoCreateDirPathTest, PathOfNoComponents_CreatesNothing) {
  doCreateDirPath(root_, "");
  doCreateDirPath(root_, "/");
  EXPECT_TRUE(root_->entity().empty());
  EXPECT_THAT(traced(8), IsEmpty());
}

TEST_F(DoCreateDirPathTest, BelowADirectory_IsRelativeToIt) {
  const Ptr<Dir> mounts = root_->createDir("mounts");
  doCreateDirPath(mounts, "/topology/status");
  EXPECT_TRUE(at("mounts/topology/status"));
}

}  // namespace
}  // namespace Controller
