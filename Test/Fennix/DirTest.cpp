#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/Fennix/Dir.h"
#include "Platform/Fennix/Node.h"
#include "Platform/Fennix/TypeRegistry.h"
#include "Platform/Orm/Reactor.h"

namespace {

using Fennix::Dir;
using Fennix::Node;
using Orm::Ptr;
using Orm::String;
using testing::ElementsAre;
using testing::IsEmpty;

/// A type of its own that a directory can create by name.
class Gauge : public Orm::Entity, private Kobble::Counted<Gauge> {
 public:
  explicit Gauge(String path) : path_(std::move(path)) {}
  const String& path() const { return path_; }

  static Ptr<Orm::Entity> create(const Dir& parent, const String& name) {
    return Orm::make<Gauge>(parent.childPath(name));
  }

 private:
  String path_;
};

// Types are registered at load time and stay.
const bool registered = [] {
  Fennix::TypeRegistry::typeIs("Test::Gauge", Gauge::create);
  return true;
}();

class Watcher : public Orm::Reactor {
 public:
  explicit Watcher(const Ptr<Dir>& dir) { watchedIs(dir); }
  void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override {
    EXPECT_EQ(attribute, Dir::Attr::entity);
    told.push_back(key.as<String>().str());
  }
  std::vector<std::string> told;
};

class DirTest : public testing::Test {
 protected:
  const Ptr<Dir> root_ = Orm::make<Dir>();
};

TEST_F(DirTest, Path_OfTheRootIsASlash) { EXPECT_EQ(root_->path(), "/"); }

TEST_F(DirTest, Path_OfAChildIsItsParentsAndItsName) {
  const auto a = root_->createDir("a");
  const auto b = a->createDir("b");
  EXPECT_EQ(a->path(), "/a");
  EXPECT_EQ(b->path(), "/a/b");
  EXPECT_EQ(b->childPath("c"), "/a/b/c");
  EXPECT_EQ(root_->childPath("c"), "/c");
  EXPECT_FALSE(root_->entity("c")) << "naming a child makes none";
}

TEST_F(DirTest, Path_DoesNotChangeWhenTheDirectoryGoesElsewhere) {
  const auto a = root_->createDir("a");
  root_->entityDel("a");
  root_->createDir("b")->entityIs("c", a);
  EXPECT_EQ(a->path(), "/a");
  EXPECT_EQ(root_->lookup("b/c"), a);
}

TEST_F(DirTest, CreateDir_GivesTheOneThatIsThere) {
  const auto a = root_->createDir("a");
  const Watcher watcher(root_);
  EXPECT_EQ(root_->createDir("a"), a);
  EXPECT_THAT(watcher.told, IsEmpty());
  EXPECT_TRUE(a->hasNotificationActive());
}

TEST_F(DirTest, CreateDir_WhereSomethingElseStandsGivesNull) {
  const auto node = root_->createEntity("Any::Type", "a");
  EXPECT_FALSE(root_->createDir("a"));
  EXPECT_EQ(root_->entity("a"), node);
}

TEST_F(DirTest, CreateEntity_MakesDirectoriesRegisteredTypesAndNodes) {
  const auto dir = root_->createEntity(Dir::kTypeName, "dir");
  const auto gauge = root_->createDir("sub")->createEntity("Test::Gauge", "gauge");
  const auto node = root_->createEntity("Any::Type", "node");
  ASSERT_TRUE(Orm::dynamicCast<Dir>(dir));
  EXPECT_EQ(Orm::dynamicCast<Dir>(dir)->path(), "/dir");
  ASSERT_TRUE(Orm::dynamicCast<Gauge>(gauge));
  EXPECT_EQ(Orm::dynamicCast<Gauge>(gauge)->path(), "/sub/gauge");
  ASSERT_TRUE(Orm::dynamicCast<Node>(node));
  EXPECT_EQ(Orm::dynamicCast<Node>(node)->typeName(), "Any::Type");
  for (const auto& entity : {dir, gauge, node}) EXPECT_TRUE(entity->hasNotificationActive());
}

TEST_F(DirTest, CreateEntity_GivesTheOneThatIsThereWhateverItsType) {
  const auto node = root_->createEntity("Any::Type", "a");
  const Watcher watcher(root_);
  EXPECT_EQ(root_->createEntity("Other::Type", "a"), node);
  EXPECT_THAT(watcher.told, IsEmpty());
}

TEST_F(DirTest, EntityAs_OfAnotherTypeCountsAsAbsent) {
  root_->createDir("dir");
  root_->createEntity("Any::Type", "node");
  EXPECT_TRUE(root_->entityAs<Dir>("dir"));
  EXPECT_FALSE(root_->entityAs<Node>("dir"));
  EXPECT_TRUE(root_->entityAs<Node>("node"));
  EXPECT_FALSE(root_->entityAs<Node>("none"));
}

TEST_F(DirTest, Changes_AreToldWithTheName) {
  const Watcher watcher(root_);
  root_->createDir("a");
  root_->createEntity("Any::Type", "b");
  const auto node = Orm::make<Node>("Any::Type");
  root_->entityIs("b", node);
  root_->entityIs("b", node);
  root_->entityDel("a");
  root_->entityDel("a");
  EXPECT_THAT(watcher.told, ElementsAre("a", "b", "b", "a"));
}

TEST_F(DirTest, Changes_BelowASubdirectoryAreToldThereAlone) {
  const auto sub = root_->createDir("sub");
  const Watcher above(root_);
  const Watcher below(sub);
  sub->createDir("a");
  EXPECT_THAT(above.told, IsEmpty());
  EXPECT_THAT(below.told, ElementsAre("a"));
}

TEST_F(DirTest, EntityDelAll_TellsEachInOrder) {
  for (const char* name : {"c", "a", "b"}) root_->createDir(name);
  const Watcher watcher(root_);
  root_->entityDelAll();
  EXPECT_THAT(watcher.told, ElementsAre("c", "a", "b"));
  EXPECT_TRUE(root_->entity().empty());
}

TEST_F(DirTest, EntityIs_ReplacesWhatIsThereWhichGoes) {
  root_->createDir("a")->createDir("b");
  EXPECT_EQ(Kobble::liveObjects(), 3U);
  root_->entityIs("a", Orm::make<Node>("Any::Type"));
  EXPECT_EQ(Kobble::liveObjects(), 2U);
  EXPECT_FALSE(root_->lookup("a/b"));
}

TEST_F(DirTest, Lookup_FollowsThePath) {
  const auto b = root_->createDir("a")->createDir("b");
  const auto node = b->createEntity("Any::Type", "c");
  EXPECT_EQ(root_->lookup("a/b/c"), node);
  EXPECT_EQ(root_->lookup("a/b"), b);
  EXPECT_EQ(b->lookup("c"), node);
}

TEST_F(DirTest, Lookup_LeadingSlashesAndEmptyComponentsMeanNothing) {
  const auto b = root_->createDir("a")->createDir("b");
  for (const char* path : {"/a/b", "//a/b", "a//b", "a/b/", "///a////b///"}) {
    EXPECT_EQ(root_->lookup(path), b) << path;
  }
  EXPECT_EQ(b->lookup("/"), b);
  EXPECT_EQ(b->lookup(""), b);
  EXPECT_EQ(root_->lookup("//"), root_);
}

TEST_F(DirTest, Lookup_OfWhatIsNotThereGivesNull) {
  root_->createDir("a")->createEntity("Any::Type", "node");
  for (const char* path : {"b", "a/b", "a/b/c", "a/node/x", "A", "a /node", "..", "a/."}) {
    EXPECT_FALSE(root_->lookup(path)) << path;
  }
  EXPECT_TRUE(root_->lookup("a/node"));
}

TEST_F(DirTest, Lookup_OfADeepPath) {
  Ptr<Dir> dir = root_;
  std::string path;
  for (int depth = 0; depth != 200; ++depth) {
    const std::string name = "level-" + std::to_string(depth);
    dir = dir->createDir(String(name));
    path += "/" + name;
  }
  EXPECT_EQ(dir->path(), path);
  EXPECT_EQ(root_->lookup(path), dir);
  EXPECT_FALSE(root_->lookup(path + "/more"));
}

TEST_F(DirTest, Departures_CountDirectoriesThatLeave) {
  const auto a = root_->createDir("a");
  const Ptr<Dir> b = a->createDir("b");
  a->createEntity("Test::Gauge", "gauge");
  const std::uint64_t before = Dir::departures();
  a->entityDel("gauge");
  a->entityDel("nothing");
  a->createDir("c");
  EXPECT_EQ(before, Dir::departures()) << "no directory has left";
  a->entityDel("b");
  EXPECT_EQ(before + 1, Dir::departures());
  a->entityIs("c", b);
  EXPECT_EQ(before + 2, Dir::departures()) << "one that is replaced has left";
  root_->entityDelAll();
  EXPECT_EQ(before + 3, Dir::departures()) << "what goes with it is found nowhere from there on";
}

/// Looks a directory up while another one goes, and finds it where it still stands.
class Seeker : public Orm::Reactor {
 public:
  explicit Seeker(const Ptr<Dir>& dir) : dir_(dir.get()) { watchedIs(dir); }
  void onAttribute(Orm::AttributeId, const Orm::Key&) override {
    if (!dir_->lookup("later")) return;
    found = true;
    departures = Dir::departures();
  }
  bool found = false;
  std::uint64_t departures = 0;

 private:
  const Dir* dir_;
};

TEST_F(DirTest, Departures_AreCountedOneByOneWhenAllGo) {
  root_->createDir("first");
  root_->createDir("later");
  const Seeker seeker(root_);
  root_->entityDelAll();
  EXPECT_TRUE(seeker.found);
  EXPECT_LT(seeker.departures, Dir::departures()) << "what it found has left since";
}

TEST_F(DirTest, EachComponent_VisitsUntilItIsToldToStop) {
  std::vector<std::string> visited;
  const auto visit = [&](std::string_view component) {
    visited.emplace_back(component);
    return component != "c";
  };
  Fennix::eachComponent("/a//b/c/d", visit);
  EXPECT_THAT(visited, ElementsAre("a", "b", "c"));
  visited.clear();
  Fennix::eachComponent("", visit);
  Fennix::eachComponent("///", visit);
  EXPECT_THAT(visited, IsEmpty());
}

TEST(DirDeathTest, EntityIs_NullStopsTheProcess) {
  const auto root = Orm::make<Dir>();
  EXPECT_DEATH(root->entityIs("a", nullptr), "assertion failed: entity");
}

}  // namespace
