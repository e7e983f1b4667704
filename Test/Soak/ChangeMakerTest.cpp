#include <gtest/gtest.h>

#include <string>

#include "Fabric/Document.h"
#include "Soak/ChangeMaker.h"

namespace Soak {
namespace {

constexpr const char* kFabric = R"({"controller": {"leader": "gen-1"},
  "services": {
    "Topology": {"mount": {"generation": "gen-1", "groups": {"default": {"paths": {"bgp": {}}}}}},
    "Acl": {"mount": {"generation": "gen-1", "groups": {"default": {"paths": {"bgp": {}}}}},
            "publish": {"generation": "gen-1", "groups": {"default": {"paths": {"/pub/bgp": {}}}}}},
    "Bgp": {"publish": {"generation": "gen-1", "groups": {"default": {}}}}}})";

class ChangeMakerTest : public testing::Test {
 protected:
  const Names names_ = Names::ofRandomFabrics();
  const Fabric::Model model_ = Fabric::Document::parse("fabric.json", kFabric).start();
  Random random_{1};
  ChangeMaker maker_{names_, model_, random_};
};

TEST_F(ChangeMakerTest, AChangeAboutAServiceIsAboutNoOther) {
  std::size_t made = 0;
  for (const Change change :
       {Change::group, Change::path, Change::systemFilter, Change::publication, Change::directory,
        Change::generation, Change::ready}) {
    for (int times = 0; times != 50; ++times) {
      for (const Fabric::Value& patch : maker_.patches(change, "Acl")) {
        const Fabric::Object& services = patch.find("services")->object();
        ASSERT_EQ(services.size(), 1U);
        EXPECT_EQ(*(*services.begin()).key, "Acl");
        ++made;
      }
    }
  }
  EXPECT_GT(made, 200U);
}

TEST_F(ChangeMakerTest, AfterwardsAChangeIsAboutAnyService) {
  maker_.patches(Change::path, "Acl");
  bool others = false;
  for (int times = 0; times != 50; ++times) {
    for (const Fabric::Value& patch : maker_.patches(Change::path)) {
      others |= patch.find("services")->find("Topology") != nullptr;
    }
  }
  EXPECT_TRUE(others);
}

/// One path goes, or all of the group do.
TEST_F(ChangeMakerTest, PathsGo) {
  bool one = false;
  bool all = false;
  for (int times = 0; times != 50; ++times) {
    for (const Fabric::Value& patch : maker_.patches(Change::path, "Topology")) {
      const Fabric::Value* paths = patch.find("services")->find("Topology")->find("mount");
      paths = paths->find("groups")->find("default")->find("paths");
      all |= paths->isNull();
      one |= paths->isObject() && paths->find("bgp") && paths->find("bgp")->isNull();
    }
  }
  EXPECT_TRUE(one);
  EXPECT_TRUE(all);
}

}  // namespace
}  // namespace Soak
