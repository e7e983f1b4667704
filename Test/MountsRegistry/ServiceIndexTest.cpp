#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "Controllerdb/MountsRegistry/ServiceIndex.h"

namespace Controller {
namespace {

struct Machine {
  explicit Machine(std::uint64_t order) : order_(order) {}
  std::uint64_t order() const { return order_; }
  std::uint64_t order_;
};

class ServiceIndexTest : public testing::Test {
 protected:
  std::vector<std::uint64_t> walked(const Orm::String& service,
                                    const std::function<void(Machine&)>& act = {}) const {
    std::vector<std::uint64_t> orders;
    index_.walk(service, [&](Machine& machine) {
      orders.push_back(machine.order());
      if (act) act(machine);
    });
    return orders;
  }

  ServiceIndex<Machine> index_;
  Machine machines_[6] = {Machine(0), Machine(1), Machine(2), Machine(3), Machine(4), Machine(5)};
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ServiceIndexTest, UnknownService_VisitsNobody) { EXPECT_THAT(walked("S"), IsEmpty()); }

TEST_F(ServiceIndexTest, WalkGoesInTheOrderInWhichMachinesWereMade) {
  for (const std::size_t at : {4U, 1U, 3U}) index_.add("S", machines_[at]);
  index_.add("T", machines_[2]);
  EXPECT_THAT(walked("S"), ElementsAre(1, 3, 4));
  EXPECT_THAT(walked("T"), ElementsAre(2));
}

TEST_F(ServiceIndexTest, LastMachineLeaves_ServiceIsForgotten) {
  index_.add("S", machines_[0]);
  index_.add("S", machines_[1]);
  EXPECT_EQ(1U, index_.services());
  index_.remove("S", machines_[0]);
  EXPECT_THAT(walked("S"), ElementsAre(1));
  index_.remove("S", machines_[1]);
  EXPECT_EQ(0U, index_.services());
}

TEST_F(ServiceIndexTest, MachineThatNeverStoodThere_IsRemovedHarmlessly) {
  index_.remove("S", machines_[0]);
  index_.add("S", machines_[1]);
  index_.remove("S", machines_[0]);
  index_.remove("S", machines_[2]);
  EXPECT_THAT(walked("S"), ElementsAre(1));
}

TEST_F(ServiceIndexTest, MachineThatLeavesDuringAWalk_IsNotVisited) {
  for (Machine& machine : machines_) index_.add("S", machine);
  EXPECT_THAT(walked("S",
                     [this](Machine& machine) {
                       if (machine.order() == 1) index_.remove("S", machines_[3]);
                     }),
              ElementsAre(0, 1, 2, 4, 5));
  EXPECT_THAT(walked("S"), ElementsAre(0, 1, 2, 4, 5));
}

TEST_F(ServiceIndexTest, VisitedMachineLeaves_WalkGoesOn) {
  for (Machine& machine : machines_) index_.add("S", machine);
  EXPECT_THAT(walked("S", [this](Machine& machine) { index_.remove("S", machine); }),
              ElementsAre(0, 1, 2, 3, 4, 5));
  EXPECT_EQ(0U, index_.services());
}

TEST_F(ServiceIndexTest, MachineThatComesDuringAWalk_IsNotVisitedByIt) {
  index_.add("S", machines_[0]);
  index_.add("S", machines_[2]);
  EXPECT_THAT(walked("S",
                     [this](Machine& machine) {
                       if (machine.order() != 0) return;
                       index_.add("S", machines_[1]);
                       index_.add("S", machines_[3]);
                     }),
              ElementsAre(0, 2));
  EXPECT_THAT(walked("S"), ElementsAre(0, 1, 2, 3));
}

TEST_F(ServiceIndexTest, AllLeaveAndOneComesDuringAWalk_NextWalkVisitsIt) {
  index_.add("S", machines_[1]);
  walked("S", [this](Machine& machine) {
    index_.remove("S", machine);
    index_.add("S", machines_[0]);
  });
  EXPECT_THAT(walked("S"), ElementsAre(0));
}

TEST_F(ServiceIndexTest, WalkWithinAWalk_VisitsAllThatAreThere) {
  for (const std::size_t at : {0U, 1U, 2U}) index_.add("S", machines_[at]);
  std::vector<std::uint64_t> inner;
  walked("S", [&](Machine& machine) {
    if (machine.order() != 1) return;
    index_.remove("S", machines_[0]);
    inner = walked("S");
  });
  EXPECT_THAT(inner, ElementsAre(1, 2));
}

TEST_F(ServiceIndexTest, RandomChanges_WalkEqualsAWalkOverAllMachines) {
  constexpr const char* kServices[] = {"A", "B", "C", "D"};
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937 random(seed);
    ServiceIndex<Machine> index;
    std::vector<std::unique_ptr<Machine>> machines;
    std::map<std::string, std::set<Machine*>> truth;
    std::uint64_t order = 0;
    for (int step = 0; step != 2000; ++step) {
      const std::string service = kServices[random() % 4];
      const auto what = random() % 10;
      if (what == 0 || machines.empty()) {
        machines.push_back(std::make_unique<Machine>(order++));
      } else if (what == 1) {
        const std::size_t at = random() % machines.size();
        for (auto& [name, members] : truth) {
          if (members.erase(machines[at].get()) != 0) index.remove(name, *machines[at]);
        }
        machines.erase(machines.begin() + static_cast<std::ptrdiff_t>(at));
      } else {
        Machine& machine = *machines[random() % machines.size()];
        if (truth[service].insert(&machine).second) {
          index.add(service, machine);
        } else {
          truth[service].erase(&machine);
          index.remove(service, machine);
        }
      }
      std::vector<Machine*> plain;
      for (const auto& machine : machines) {
        if (truth[service].count(machine.get()) != 0) plain.push_back(machine.get());
      }
      std::vector<Machine*> indexed;
      index.walk(service, [&](Machine& machine) { indexed.push_back(&machine); });
      ASSERT_EQ(plain, indexed) << "seed " << seed << " step " << step;
    }
  }
}

}  // namespace
}  // namespace Controller
