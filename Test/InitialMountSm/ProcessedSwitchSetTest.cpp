#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Controllerdb/InitialMountSm/ProcessedSwitchSet.h"
#include "Test/Support/Recorder.h"

namespace Controller {
namespace {

using testing::ElementsAre;

class ProcessedSwitchSetTest : public testing::Test {
 protected:
  std::vector<std::string> keys_;
  Orm::Ptr<ProcessedSwitchSet> set_ = Orm::make<ProcessedSwitchSet>();
  Support::Recorder recorder_{set_, [this](Orm::AttributeId, const Orm::Key& key) {
                                keys_.push_back(key.as<Orm::String>().str());
                              }};
};

TEST_F(ProcessedSwitchSetTest, NewMemberAndNewValue_AreToldWithTheKey) {
  set_->processedIs("a", true);
  set_->processedIs("b", false);
  set_->processedIs("b", true);
  EXPECT_THAT(keys_, ElementsAre("a", "b", "b"));
  EXPECT_TRUE(set_->processed().value("a"));
  EXPECT_TRUE(set_->processed().value("b"));
  EXPECT_FALSE(set_->processed().value("c"));
}

TEST_F(ProcessedSwitchSetTest, SameValueAgain_IsToldToNobody) {
  set_->processedIs("a", true);
  set_->processedIs("a", true);
  EXPECT_EQ(recorder_.told(ProcessedSwitchSet::Attr::processed), 1U);
}

TEST_F(ProcessedSwitchSetTest, Removal_IsToldOncePerMemberThatWasThere) {
  set_->processedIs("a", true);
  set_->processedIs("b", true);
  set_->processedIs("c", true);
  keys_.clear();
  set_->processedDel("b");
  set_->processedDel("b");
  set_->processedDelAll();
  EXPECT_THAT(keys_, ElementsAre("b", "a", "c"));
  EXPECT_TRUE(set_->processed().empty());
}

}  // namespace
}  // namespace Controller
