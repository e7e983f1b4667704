#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Platform/Orm/CollectionOwner.h"
#include "Platform/Orm/MutatorReinstantiatingError.h"
#include "Test/Orm/Samples.h"

namespace {

using Orm::Ptr;
using Orm::String;
using OrmTest::Thing;
using OrmTest::Watcher;
using testing::ElementsAre;
using testing::IsEmpty;

/// A member with two attributes that only its construction sets.
class Child : public Orm::Entity, private Kobble::Counted<Child> {
 public:
  Child(String name, String type, int flags)
      : name_(std::move(name)), type_(std::move(type)), flags_(flags) {}
  const String& name() const { return name_; }
  const String& type() const { return type_; }
  int flags() const { return flags_; }

 private:
  String name_;
  String type_;
  int flags_;
};

/// An entity as those of the controller are: each collection by Is, Del and DelAll.
class Owner : public Orm::CollectionOwner, private Kobble::Counted<Owner> {
 public:
  struct Attr {
    enum : Orm::AttributeId { child, number, handle };
  };
  using Children = Orm::Collection<Ptr<Child>, &Child::name>;
  using Numbers = Orm::ValueCollection<String, int>;
  using Handles = Orm::ValueCollection<String, Ptr<Orm::Entity>>;

  const Children& child() const { return child_; }
  Ptr<Child> childIs(const String& name, const String& type, int flags) {
    if (Child* present = child_.find(name)) {
      Orm::requireSame("type", present->type(), type);
      Orm::requireSame("flags", present->flags(), flags);
      return present;
    }
    return memberIs(child_, Attr::child, Ptr<Child>(new Child(name, type, flags)));
  }
  bool childDel(const String& name) { return memberDel(child_, Attr::child, name); }
  void childDelAll() { memberDelAll(child_, Attr::child); }

  const Numbers& number() const { return number_; }
  bool numberIs(const String& key, int value) { return valueIs(number_, Attr::number, key, value); }
  bool numberDel(const String& key) { return valueDel(number_, Attr::number, key); }
  void numberDelAll() { valueDelAll(number_, Attr::number); }

  const Handles& handle() const { return handle_; }
  bool handleIs(const String& key, Ptr<Orm::Entity> entity) {
    return valueIs(handle_, Attr::handle, key, std::move(entity));
  }
  bool handleDel(const String& key) { return valueDel(handle_, Attr::handle, key); }
  void handleDelAll() { valueDelAll(handle_, Attr::handle); }

 private:
  Children child_;
  Numbers number_;
  Handles handle_;
};

class CollectionOwnerTest : public testing::Test {
 protected:
  /// From here on each change is logged, as "attribute:key", with what `more` says.
  void watch(std::function<std::string(const String& key)> more = {}) {
    watcher_.handlerIs([this, more](Orm::AttributeId attribute, const Orm::Key& key) {
      const String& name = key.as<String>();
      log_.push_back(std::to_string(attribute) + ":" + name.str() + (more ? more(name) : ""));
    });
    watcher_.notifierIs(owner_);
  }

  Ptr<Owner> owner_ = Orm::make<Owner>();
  Watcher watcher_;
  std::vector<std::string> log_;
};

TEST_F(CollectionOwnerTest, MemberIs_AnAbsentKeyConstructsInsertsSwitchesOnAndTells) {
  watch([this](const String& name) {
    const Child* const child = owner_->child().find(name);
    return child && child->hasNotificationActive() ? " is in, and on" : "";
  });
  const Ptr<Child> made = owner_->childIs("a", "t", 1);
  EXPECT_EQ(owner_->child().find("a"), made.get());
  EXPECT_EQ(made->refCount(), 2U);
  EXPECT_THAT(log_, ElementsAre("0:a is in, and on"));
}

TEST_F(CollectionOwnerTest, MemberIs_APresentKeyWithTheSameArgumentsGivesTheMemberAndTellsNobody) {
  const Ptr<Child> made = owner_->childIs("a", "t", 1);
  watch();
  EXPECT_EQ(owner_->childIs("a", "t", 1), made);
  EXPECT_THAT(log_, IsEmpty());
  EXPECT_EQ(owner_->child().size(), 1U);
}

TEST_F(CollectionOwnerTest, MemberIs_APresentKeyWithOtherArgumentsRaisesAndNamesTheFirst) {
  const Ptr<Child> made = owner_->childIs("a", "t", 1);
  watch();
  const auto attributeOf = [this](const char* type, int flags) -> std::string {
    try {
      owner_->childIs("a", type, flags);
    } catch (const Orm::MutatorReinstantiatingError& error) {
      return error.attribute();
    }
    return "";
  };
  EXPECT_EQ(attributeOf("u", 1), "type");
  EXPECT_EQ(attributeOf("t", 2), "flags");
  EXPECT_EQ(attributeOf("u", 2), "type");
  EXPECT_EQ(attributeOf("t", 1), "");
  EXPECT_EQ(made->type(), "t");
  EXPECT_THAT(log_, IsEmpty());
}

TEST_F(CollectionOwnerTest, MemberDel_RemovesThenTellsAndAbsentKeysTellNobody) {
  owner_->childIs("a", "t", 1);
  watch([this](const String& name) { return owner_->child().has(name) ? " is in" : " is out"; });
  EXPECT_TRUE(owner_->childDel("a"));
  EXPECT_FALSE(owner_->childDel("a"));
  EXPECT_FALSE(owner_->childDel("never"));
  EXPECT_THAT(log_, ElementsAre("0:a is out"));
  EXPECT_EQ(Kobble::liveObjects(), 2U);  // the owner and the watcher
}

TEST_F(CollectionOwnerTest, MemberDel_ByTheMembersOwnKeyTheKeyIsTold) {
  owner_->childIs("a", "t", 1);
  watch();
  owner_->childDel(owner_->child().find("a")->name());
  EXPECT_THAT(log_, ElementsAre("0:a"));
}

TEST_F(CollectionOwnerTest, MemberDelAll_WithoutNotifieesClearsAtOnce) {
  for (const char* name : {"a", "b", "c"}) owner_->childIs(name, "t", 1);
  owner_->childDelAll();
  EXPECT_TRUE(owner_->child().empty());
  owner_->childDelAll();
  EXPECT_EQ(Kobble::liveObjects(), 2U);
}

TEST_F(CollectionOwnerTest, MemberDelAll_WithNotifieesTellsEachRemovalSinglyInOrder) {
  for (const char* name : {"b", "a", "c"}) owner_->childIs(name, "t", 1);
  watch([this](const String& name) {
    return std::to_string(owner_->child().size()) + (owner_->child().has(name) ? "!" : "");
  });
  owner_->childDelAll();
  EXPECT_THAT(log_, ElementsAre("0:b2", "0:a1", "0:c0"));
}

TEST_F(CollectionOwnerTest, MemberDelAll_WhatComesMeanwhileStays) {
  for (const char* name : {"a", "b"}) owner_->childIs(name, "t", 1);
  watch([this](const String& name) {
    if (name == "a") owner_->childIs("c", "t", 1);
    if (name == "b") owner_->childIs("a", "t", 1);
    return "";
  });
  owner_->childDelAll();
  EXPECT_THAT(log_, ElementsAre("0:c", "0:a", "0:a", "0:b"));
  EXPECT_EQ(owner_->child().size(), 2U);
}

TEST_F(CollectionOwnerTest, MemberDelAll_ANotifieeRemovesTheNextItself_EachIsToldOnce) {
  for (const char* name : {"a", "b", "c"}) owner_->childIs(name, "t", 1);
  watch([this](const String& name) {
    if (name == "a") owner_->childDel("b");
    return "";
  });
  owner_->childDelAll();
  EXPECT_THAT(log_, ElementsAre("0:b", "0:a", "0:c"));
}

TEST_F(CollectionOwnerTest, MemberDelAll_TheOwnersLastHandleGoesMeanwhile) {
  for (const char* name : {"a", "b", "c"}) owner_->childIs(name, "t", 1);
  Owner* const raw = owner_.get();
  watch([this](const String& name) {
    if (name == "a") {
      owner_ = nullptr;
      watcher_.notifierIs(nullptr);
    }
    return "";
  });
  raw->childDelAll();
  EXPECT_THAT(log_, ElementsAre("0:a"));
  EXPECT_EQ(Kobble::liveObjects(), 1U);  // the watcher
}

TEST_F(CollectionOwnerTest, MemberDelAll_OfASwitchedOffOwnerTellsNobody) {
  owner_->childIs("a", "t", 1);
  watch();
  owner_->hasNotificationActiveIs(false);
  owner_->childDelAll();
  EXPECT_TRUE(owner_->child().empty());
  EXPECT_THAT(log_, IsEmpty());
}

TEST_F(CollectionOwnerTest, ValueIs_TellsInsertionsAndOtherValuesAlone) {
  watch([this](const String& key) { return "=" + std::to_string(owner_->number().value(key)); });
  EXPECT_TRUE(owner_->numberIs("a", 1));
  EXPECT_FALSE(owner_->numberIs("a", 1));
  EXPECT_TRUE(owner_->numberIs("a", 2));
  EXPECT_TRUE(owner_->numberIs("b", 0));
  EXPECT_THAT(log_, ElementsAre("1:a=1", "1:a=2", "1:b=0"));
}

TEST_F(CollectionOwnerTest, ValueIs_OfHandlesIsAboutTheEntityAndCountsItBeforeTheOldOneGoes) {
  const auto thing = Orm::make<Thing>();
  thing->nextIs(Orm::make<Thing>("successor"));
  owner_->handleIs("a", thing);
  watch();
  EXPECT_FALSE(owner_->handleIs("a", thing));
  const Ptr<Thing>& successor = thing->next();
  EXPECT_TRUE(owner_->handleIs("a", successor));
  EXPECT_THAT(log_, ElementsAre("2:a"));
  EXPECT_EQ(Orm::dynamicCast<Thing>(owner_->handle().value("a"))->name(), "successor");
}

TEST_F(CollectionOwnerTest, ValueDel_TellsOnlyWhatWasThere) {
  owner_->numberIs("a", 1);
  watch([this](const String& key) { return owner_->number().has(key) ? " is in" : " is out"; });
  EXPECT_TRUE(owner_->numberDel("a"));
  EXPECT_FALSE(owner_->numberDel("a"));
  EXPECT_THAT(log_, ElementsAre("1:a is out"));
}

TEST_F(CollectionOwnerTest, ValueDel_ByTheCollectionsOwnKeyTheKeyIsTold) {
  owner_->numberIs("a", 1);
  watch();
  owner_->numberDel((*owner_->number().begin()).key);
  EXPECT_THAT(log_, ElementsAre("1:a"));
}

TEST_F(CollectionOwnerTest, ValueIs_ByTheCollectionsOwnKeyWhichAReactorRemoves_AllAreToldTheKey) {
  for (const char* key : {"a", "b"}) owner_->numberIs(key, 1);
  const Watcher first(Ptr<Thing>(), {});
  Watcher remover([this](Orm::AttributeId, const Orm::Key&) {
    if (owner_->number().value("a") == 2) owner_->numberDelAll();
  });
  remover.notifierIs(owner_);
  watch();
  owner_->numberIs((*owner_->number().begin()).key, 2);
  EXPECT_THAT(log_, ElementsAre("1:a", "1:b", "1:a"));
}

TEST_F(CollectionOwnerTest, ValueDelAll_WithoutNotifieesClearsAtOnceWithThemTellsEach) {
  for (const char* key : {"c", "a", "b"}) owner_->numberIs(key, 1);
  owner_->numberDelAll();
  EXPECT_TRUE(owner_->number().empty());
  for (const char* key : {"c", "a", "b"}) owner_->numberIs(key, 1);
  watch();
  owner_->numberDelAll();
  EXPECT_THAT(log_, ElementsAre("1:c", "1:a", "1:b"));
  owner_->numberDelAll();
  EXPECT_EQ(log_.size(), 3U);
}

TEST_F(CollectionOwnerTest, Values_TheLastHandleOfTheOwnerIsAmongThem) {
  // The owner holds a thing that holds the owner: what is overwritten, deleted or cleared may be
  // all that kept the owner, whether anyone watches it or the thing's end ends the watch.
  class Holder : public Orm::Entity, private Kobble::Counted<Holder> {
   public:
    Ptr<Owner> owner;
    std::unique_ptr<Watcher> watcher;
  };
  const auto overwrite = [](Owner& owner) { owner.handleIs("a", Orm::make<Thing>()); };
  const auto del = [](Owner& owner) { owner.handleDel("a"); };
  const auto delAll = [](Owner& owner) { owner.handleDelAll(); };
  for (const auto& change :
       {std::function<void(Owner&)>(overwrite), std::function<void(Owner&)>(del),
        std::function<void(Owner&)>(delAll)}) {
    for (const bool watched : {false, true}) {
      auto owner = Orm::make<Owner>();
      auto holder = Orm::make<Holder>();
      holder->owner = owner;
      owner->handleIs("a", holder);
      if (watched) {
        holder->watcher = std::make_unique<Watcher>();
        holder->watcher->notifierIs(owner);
      }
      holder = nullptr;
      Owner* const raw = owner.get();
      owner = nullptr;
      change(*raw);
      EXPECT_EQ(Kobble::liveObjects(), 2U);  // the fixture's
    }
  }
}

}  // namespace
