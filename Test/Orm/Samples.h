#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Orm/Entity.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/Sm.h"
#include "Platform/Orm/String.h"

/// The entities, reactors and machines that the tests of the framework play with.
namespace OrmTest {

/// An entity with two numbers and a handle to another of its kind.
class Thing : public Orm::Entity, private Kobble::Counted<Thing> {
 public:
  struct Attr {
    enum : Orm::AttributeId { value, other, next };
  };

  explicit Thing(Orm::String name = {}) : name_(std::move(name)) {}

  const Orm::String& name() const { return name_; }
  int value() const { return value_; }
  void valueIs(int value) { assign(value_, value, Attr::value); }
  int other() const { return other_; }
  void otherIs(int other) { assign(other_, other, Attr::other); }
  const Orm::Ptr<Thing>& next() const { return next_; }
  void nextIs(Orm::Ptr<Thing> next) { assign(next_, std::move(next), Attr::next); }

 private:
  Orm::String name_;
  int value_ = 0;
  int other_ = 0;
  Orm::Ptr<Thing> next_;
};

/// A reactor that does what the test says, also when that is its own end.
class Watcher : public Orm::Reactor, private Kobble::Counted<Watcher> {
 public:
  using Handler = std::function<void(Orm::AttributeId, const Orm::Key&)>;

  Watcher() = default;
  explicit Watcher(Handler handler) : handler_(std::move(handler)) {}
  Watcher(const Orm::Ptr<Thing>& thing, Handler handler) : handler_(std::move(handler)) {
    notifierIs(thing);
  }

  const Orm::Entity* notifier() const { return watched(); }
  bool notifierIs(const Orm::Ptr<Orm::Entity const>& entity) { return watchedIs(entity); }
  void handlerIs(Handler handler) { handler_ = std::move(handler); }

  int told() const { return told_; }

  void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override {
    ++told_;
    const Handler handler = handler_;  // outlives this reactor
    if (handler) handler(attribute, key);
  }

 private:
  Handler handler_;
  int told_ = 0;
};

/// A machine with one reactor as a member; it does what the test says when its thing changes.
class Machine : public Orm::Sm, private Kobble::Counted<Machine> {
 public:
  using Handler = std::function<void(Machine&)>;

  Machine(Orm::String name, const Orm::Ptr<Thing>& thing, Handler handler = {})
      : name_(std::move(name)), handler_(std::move(handler)), reactor_(this) {
    reactor_.notifierIs(thing);
  }

  const Orm::String& name() const { return name_; }
  int handled() const { return handled_; }
  void handlerIs(Handler handler) { handler_ = std::move(handler); }

  void hasNotificationActiveIs(bool active) override { reactor_.hasNotificationActiveIs(active); }

 private:
  class OrmThing : public Orm::ReactorOn<Thing, Machine> {
   public:
    explicit OrmThing(Machine* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId, const Orm::Key&) override { owner()->handleThing(); }
  };

  void handleThing() {
    ++handled_;
    const Handler handler = handler_;
    if (handler) handler(*this);
    ++handled_;  // the machine's memory is there, whatever the handler did
    --handled_;
  }

  Orm::String name_;
  Handler handler_;
  int handled_ = 0;
  OrmThing reactor_;
};

}  // namespace OrmTest
