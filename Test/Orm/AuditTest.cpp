#include <gtest/gtest.h>

#include "Platform/Orm/Audit.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/Reactor.h"

namespace Orm {
namespace {

class Watched : public Entity {};

class Watcher : public ReactorOn<Watched, int> {
 public:
  Watcher() : ReactorOn(nullptr) {}
  void onAttribute(AttributeId, const Key&) override {}
};

/// Notes by hand what builds with ZORB_AUDIT note by themselves; for all others. The handles of
/// watchers stand inside of them, so that only the others have them noted.
class AuditTest : public testing::Test {
 protected:
  AuditTest() {
    Audit::noteObject(object_.get());
    Audit::noteHandle(&object_, object_.get());
    for (Watcher& watcher : watchers_) {
      Audit::noteReactor(&watcher);
      watcher.notifierIs(object_);
      if (!Audit::kOn) Audit::noteHandle(&watcher, object_.get());
    }
  }
  ~AuditTest() override {
    for (Watcher& watcher : watchers_) {
      Audit::noteReactorGone(&watcher);
      Audit::noteHandle(&watcher, nullptr);
    }
    Audit::noteHandle(&object_, nullptr);
    Audit::noteObjectGone(object_.get());
  }

  Ptr<Watched> object_ = make<Watched>();
  Watcher watchers_[3];
};

TEST_F(AuditTest, WhatAgreesHasNoFindings) { EXPECT_EQ(Audit::findings(), ""); }

TEST_F(AuditTest, AHandleThatNobodyCountsIsFound) {
  Audit::noteHandle(this, object_.get());
  EXPECT_NE(Audit::findings().find("an object counts 4 handles, 5 there are"), std::string::npos);
  Audit::noteHandle(this, nullptr);
}

TEST_F(AuditTest, AHandleThatWasForgottenIsFound) {
  Audit::noteHandle(&object_, nullptr);
  EXPECT_NE(Audit::findings().find("an object counts 4 handles, 3 there are"), std::string::npos);
}

TEST_F(AuditTest, AHandleToNoObjectIsFound) {
  int nothing = 0;
  Audit::noteHandle(this, &nothing);
  EXPECT_EQ(Audit::findings(), "a handle holds what is no object");
  Audit::noteHandle(this, nullptr);
}

TEST_F(AuditTest, ANotifieeThatHasGoneIsFound) {
  Audit::noteReactorGone(&watchers_[2]);
  EXPECT_NE(Audit::findings().find("a notifiee is gone"), std::string::npos);
}

TEST_F(AuditTest, NotifieesThatComeAndGoLeaveNoFault) {
  const auto isThere = [](const Reactor*) { return true; };
  EXPECT_EQ(object_->notifieesFault(isThere), nullptr);
  watchers_[1].notifierIs(nullptr);
  EXPECT_EQ(object_->notifieesFault(isThere), nullptr);
  EXPECT_TRUE(watchers_[1].isRegistered());
  watchers_[0].notifierIs(nullptr);
  watchers_[2].notifierIs(nullptr);
  EXPECT_EQ(object_->notifieesFault(isThere), nullptr);
  watchers_[2].notifierIs(object_);
  EXPECT_EQ(object_->notifieesFault(isThere), nullptr);
  EXPECT_STREQ(object_->notifieesFault([](const Reactor*) { return false; }), "a notifiee is gone");
  EXPECT_TRUE(watchers_[2].isRegistered());
}

}  // namespace
}  // namespace Orm
