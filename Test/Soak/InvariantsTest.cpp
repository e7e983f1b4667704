#include <gtest/gtest.h>

#include <string>

#include "Fabric/Document.h"
#include "Fabric/Simulation.h"
#include "Soak/Broken.h"
#include "Soak/Invariants.h"

namespace Soak {
namespace {

/// A timer of nobody that the invariants know.
class Stray : public Orm::ClockReactor<int> {
 public:
  Stray() : ClockReactor(&owner_) {}

 private:
  void onClock() override {}
  int owner_ = 0;
};

/// What does not hold, empty when all does.
std::string broken(const Fabric::Simulation& simulation) {
  Excuses excuses;
  excuses.start(simulation.model());
  try {
    Invariants(simulation, excuses).check();
  } catch (const Broken& found) {
    return found.what();
  }
  return "";
}

constexpr const char* kFabric = R"({"controller": {"leader": "g", "heartbeat": 1},
  "attrlog": {"standby": {"sync": 50}},
  "services": {
    "T": {"mount": {"generation": "g", "groups": {"d": {"paths": {"a": {}}}}},
          "publish": {"generation": "g", "groups": {"d": {"paths": {"/missing": {}}}}}}},
  "switches": {"02:00:00:00:00:01": {"connected": true, "services": {"T": 1}}}})";

class InvariantsTest : public testing::Test {
 protected:
  Fabric::Document document_ = Fabric::Document::parse("invariants.json", kFabric);
  Fabric::Simulation simulation_{document_};
};

TEST_F(InvariantsTest, ATimerOfNobodyIsFound) {
  simulation_.start();
  EXPECT_EQ(broken(simulation_), "");
  Stray stray;
  stray.notifierIs(simulation_.clock());
  EXPECT_EQ(broken(simulation_), "");
  stray.timeMinIs(5);
  EXPECT_EQ(broken(simulation_), "each timer has an owner that is there");
  // The clock still has a place for it.
  stray.timeMinIs(Orm::kNever);
  EXPECT_EQ(broken(simulation_), "each timer has an owner that is there");
  stray.notifierIs(nullptr);
  EXPECT_EQ(broken(simulation_), "");
}

/// Of the machines, and the round that the flush has asked for.
TEST_F(InvariantsTest, TimersOfWhatThereIsHold) {
  simulation_.untilIs(20);
  simulation_.run();
  std::size_t rounds = 0;
  simulation_.attrlog().walkDemuxers([&rounds](const Fabric::SimulatedDemuxer& demuxer) {
    demuxer.walkRounds([&rounds](const Orm::ClockTimer&) { ++rounds; });
  });
  EXPECT_EQ(rounds, 1U);
  EXPECT_GT(simulation_.clock()->armedTimers(), rounds);
  EXPECT_EQ(broken(simulation_), "");
}

}  // namespace
}  // namespace Soak
