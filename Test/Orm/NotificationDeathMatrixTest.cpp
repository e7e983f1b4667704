// Either side of a notification may go first: reactors and entities that end before, during and
// after notifications, nested up to three deep, in all combinations of who ends whom and how.

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>

#include "Platform/Orm/ActivityScope.h"
#include "Test/Orm/Samples.h"

namespace {

using Orm::Ptr;
using OrmTest::Machine;
using OrmTest::Thing;
using OrmTest::Watcher;

/// What happens to the victim.
enum class End {
  destroyed,      // there and then
  retired,        // marked for deletion: handlers are on the stack
  unwatched,      // pointed at nothing
  repointedAway,  // pointed at another entity
  repointedBack,  // pointed at another entity and back
  switchedOff,
  machineLetGo,  // the machine that it is a member of is marked for deletion
};

constexpr std::array kEnds{End::destroyed,     End::retired,       End::unwatched,
                           End::repointedAway, End::repointedBack, End::switchedOff,
                           End::machineLetGo};

const char* nameOf(End end) {
  switch (end) {
    case End::destroyed:
      return "destroyed";
    case End::retired:
      return "retired";
    case End::unwatched:
      return "unwatched";
    case End::repointedAway:
      return "repointedAway";
    case End::repointedBack:
      return "repointedBack";
    case End::switchedOff:
      return "switchedOff";
    case End::machineLetGo:
      return "machineLetGo";
  }
  return "";
}

struct Case {
  int reactors;
  int victim;
  int remover;  // the reactor in whose handler the victim ends; -1: before any notification
  int depth;    // of the notification in which it ends, 1: the outermost
  End end;
  bool entityLetGo;  // the last outside handle of the entity goes together with the victim

  std::string name() const {
    return std::string(nameOf(end)) + ", reactor " + std::to_string(victim) + " of " +
           std::to_string(reactors) + " by " + std::to_string(remover) + " at depth " +
           std::to_string(depth) + (entityLetGo ? ", entity let go" : "");
  }
};

/// A row of reactors on one thing, some of which a machine or an Owned may hold.
class Row {
 public:
  explicit Row(const Case& test) : test_(test) {
    for (int at = 0; at != test.reactors; ++at) {
      const auto place = static_cast<std::size_t>(at);
      if (at == test.victim && test.end == End::machineLetGo) {
        machine_ = Orm::make<Machine>("victim", thing_, [this, at](Machine&) { told(at); });
      } else if (at == test.victim && test.end == End::retired) {
        owned_ = Orm::Owned<Watcher>(new Watcher(handler(at)));
        owned_->notifierIs(thing_);
      } else {
        plain_[place] = std::make_unique<Watcher>(thing_, handler(at));
      }
    }
  }

  void change() { raw_->valueIs(raw_->value() + 1); }
  void endVictim() {
    ended_ = true;
    if (test_.entityLetGo) thing_ = nullptr;
    Watcher* const watcher = plain_[static_cast<std::size_t>(test_.victim)].get();
    switch (test_.end) {
      case End::destroyed:
        plain_[static_cast<std::size_t>(test_.victim)] = nullptr;
        break;
      case End::retired:
        owned_ = nullptr;
        break;
      case End::unwatched:
        watcher->notifierIs(nullptr);
        break;
      case End::repointedAway:
        watcher->notifierIs(elsewhere_);
        break;
      case End::repointedBack: {
        const Ptr<Thing const> held(raw_);
        watcher->notifierIs(elsewhere_);
        watcher->notifierIs(held);
        break;
      }
      case End::switchedOff:
        watcher->hasNotificationActiveIs(false);
        break;
      case End::machineLetGo:
        machine_ = nullptr;
        break;
    }
  }
  void removeRest() {
    for (auto& watcher : plain_) watcher = nullptr;
    owned_ = nullptr;
    machine_ = nullptr;
  }

  const std::string& log() const { return log_; }
  std::uint32_t notifiees() const { return raw_->notifieeCount(); }
  void thingDel() { thing_ = nullptr; }

 private:
  Watcher::Handler handler(int at) {
    return [this, at](Orm::AttributeId, const Orm::Key&) { told(at); };
  }

  void told(int at) {
    log_ += static_cast<char>('0' + at);
    if (at != test_.remover || ended_) return;
    if (++depth_ == test_.depth) {
      endVictim();
    } else {
      log_ += '(';
      change();
      log_ += ')';
    }
  }

  const Case test_;
  Ptr<Thing> thing_ = Orm::make<Thing>("watched");
  Thing* const raw_ = thing_.get();
  const Ptr<Thing> elsewhere_ = Orm::make<Thing>("elsewhere");
  std::array<std::unique_ptr<Watcher>, 4> plain_;
  Orm::Owned<Watcher> owned_;
  Ptr<Machine> machine_;
  std::string log_;
  int depth_ = 0;
  bool ended_ = false;
};

/// What a row of reactors must log, told in the plainest way.
class Model {
 public:
  explicit Model(const Case& test) : test_(test) {
    for (int at = 0; at != test.reactors; ++at) order_ += static_cast<char>('0' + at);
  }

  void change() {
    const std::string atStart = order_;
    for (const char reactor : atStart) {
      if (order_.find(reactor) == std::string::npos || isNew_[static_cast<unsigned>(reactor)]) {
        continue;
      }
      log_ += reactor;
      if (reactor - '0' != test_.remover || ended_) continue;
      if (++depth_ == test_.depth) {
        endVictim();
      } else {
        log_ += '(';
        change();
        log_ += ')';
      }
    }
  }
  void endVictim() {
    ended_ = true;
    const char victim = static_cast<char>('0' + test_.victim);
    order_.erase(order_.find(victim), 1);
    if (test_.end != End::repointedBack) return;
    order_ += victim;
    isNew_[static_cast<unsigned>(victim)] = true;
  }
  void outermostReturned() { isNew_ = {}; }

  const std::string& log() const { return log_; }
  std::size_t notifiees() const { return order_.size() + (test_.end == End::switchedOff ? 1 : 0); }
  bool entityHeld() const { return notifiees() != 0; }

 private:
  const Case test_;
  std::string order_;
  std::string log_;
  std::array<bool, 256> isNew_{};
  int depth_ = 0;
  bool ended_ = false;
};

void run(const Case& test) {
  SCOPED_TRACE(test.name());
  {
    Row row(test);
    Model model(test);
    if (test.remover < 0) {
      row.endVictim();
      model.endVictim();
      model.outermostReturned();
    }
    // Without a reactor that holds it, the entity has gone with its last outside handle.
    if (test.remover >= 0 || !test.entityLetGo || model.entityHeld()) {
      row.change();
      model.change();
      model.outermostReturned();
    }
    EXPECT_EQ(row.log(), model.log());
    EXPECT_EQ(Orm::ActivityScope::zombies(), 0U);
    if (!test.entityLetGo || model.entityHeld()) {
      EXPECT_EQ(row.notifiees(), model.notifiees());
      row.change();
      model.change();
      EXPECT_EQ(row.log(), model.log());
    }
    row.removeRest();
    row.thingDel();
    EXPECT_EQ(Kobble::liveObjects(), 1U) << "only what the victim may be pointed at is left";
  }
  EXPECT_EQ(Kobble::liveObjects(), 0U);
}

class NotificationDeathMatrixTest : public testing::TestWithParam<End> {};

INSTANTIATE_TEST_SUITE_P(Notification, NotificationDeathMatrixTest, testing::ValuesIn(kEnds),
                         [](const auto& end) { return nameOf(end.param); });

TEST_P(NotificationDeathMatrixTest, VictimEndsBeforeANotification) {
  for (int reactors = 1; reactors <= 4; ++reactors) {
    for (int victim = 0; victim != reactors; ++victim) {
      for (const bool entityLetGo : {false, true}) {
        run({reactors, victim, -1, 0, GetParam(), entityLetGo});
      }
    }
  }
}

TEST_P(NotificationDeathMatrixTest, VictimEndsDuringANotification) {
  for (int reactors = 1; reactors <= 4; ++reactors) {
    for (int victim = 0; victim != reactors; ++victim) {
      for (int remover = 0; remover != reactors; ++remover) {
        for (int depth = 1; depth <= 3; ++depth) {
          for (const bool entityLetGo : {false, true}) {
            run({reactors, victim, remover, depth, GetParam(), entityLetGo});
          }
        }
      }
    }
  }
}

TEST_P(NotificationDeathMatrixTest, VictimEndsAfterANotification) {
  for (int reactors = 1; reactors <= 4; ++reactors) {
    for (int victim = 0; victim != reactors; ++victim) {
      const Case test{reactors, victim, -1, 0, GetParam(), false};
      SCOPED_TRACE(test.name());
      Row row(test);
      Model model(test);
      row.change();
      model.change();
      row.endVictim();
      model.endVictim();
      model.outermostReturned();
      row.change();
      model.change();
      EXPECT_EQ(row.log(), model.log());
      EXPECT_EQ(row.notifiees(), model.notifiees());
    }
  }
}

}  // namespace
