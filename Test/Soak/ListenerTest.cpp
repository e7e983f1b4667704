#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Fabric/Document.h"
#include "Fabric/Simulation.h"
#include "Soak/Broken.h"
#include "Soak/Listener.h"

namespace Soak {
namespace {

constexpr const char* kFabric = R"({"controller": {"leader": "g"},
  "services": {"T": {"mount": {"generation": "g", "groups": {"d": {"paths": {"a": {}}}}}}},
  "switches": {"02:00:00:00:00:01": {"connected": true, "services": {"T": 1}}}})";

class ListenerTest : public testing::Test {
 protected:
  void SetUp() override { simulation_.start(); }

  void patch(std::string_view text) {
    simulation_.applyPatch(simulation_.model().parsePatch("patch.json", text));
  }
  void hears(Listener& listener, std::string_view text) const {
    static const Dualog::Handle handle("ListenerTest", "Test/Soak");
    listener.line({0, handle, 8, __LINE__, "hears", text});
  }
  /// What is wrong, empty when nothing is.
  static std::string found(const Listener& listener) {
    try {
      listener.check();
    } catch (const Broken& broken) {
      return broken.what();
    }
    return "";
  }
  std::string foundIn(std::string_view text) const {
    Listener listener(simulation_, true);
    hears(listener, text);
    return found(listener);
  }

  Fabric::Document document_ = Fabric::Document::parse("listener.json", kFabric);
  Fabric::Simulation simulation_{document_};
};

TEST_F(ListenerTest, WhatNamesWhatThereIsHolds) {
  EXPECT_EQ(foundIn("MountsRegistryEntrySm::doConnectSwitch a 02:00:00:00:00:01"), "");
  EXPECT_EQ(foundIn("void Controller::MountsRegistryEntrySm::handleMounter(const String&): "
                    " mounter gone:a service:T"),
            "");
}

TEST_F(ListenerTest, ASwappedNameIsFound) {
  const std::string text =
      "void Controller::MountsRegistryEntrySm::handleMounter(const String&): "
      " mounter gone:T service:a";
  EXPECT_EQ(foundIn(text), "a trace or message names what is there: " + text);
}

TEST_F(ListenerTest, ATextOfNoFormIsFound) {
  EXPECT_EQ(foundIn("something else"),
            "a trace or message has a form that is known: something else");
}

TEST_F(ListenerTest, TheFirstThatIsWrongIsTold) {
  Listener listener(simulation_, true);
  hears(listener, "something else");
  hears(listener, "something more");
  EXPECT_EQ(found(listener), "a trace or message has a form that is known: something else");
}

TEST_F(ListenerTest, WhatWentMayBeNamedUntilThePieceOfWorkIsOver) {
  constexpr std::string_view kText = "ServiceMountConfigSm::handleMountGroupConfig: d";
  Listener listener(simulation_, true);
  patch(R"({"services": {"T": null}})");
  hears(listener, kText);
  EXPECT_EQ(found(listener), "");
  listener.begin();
  hears(listener, kText);
  EXPECT_EQ(found(listener), "a trace or message names what is there: " + std::string(kText));
}

/// A mount of a switch that has gone is on its way out, and has its name until then.
TEST_F(ListenerTest, AMountKeepsTheNameOfItsSwitch) {
  constexpr std::string_view kText =
      "MountsRegistryEntrySm::handleMountState: Deleting mountSm for 02:00:00:00:00:01";
  Listener listener(simulation_, true);
  patch(R"({"switches": {"02:00:00:00:00:01": null}})");
  listener.begin();
  hears(listener, kText);
  EXPECT_EQ(found(listener), "");
}

/// A mounter of a service that lost its name stays, with the filter of a group that has gone.
TEST_F(ListenerTest, AMounterKeepsTheFilterOfItsGroup) {
  constexpr std::string_view kText =
      "MounterConfigSm::removeSystemFromConnectionFilter: 02:00:00:00:00:07";
  Listener listener(simulation_, true);
  patch(R"({"services": {"T": {"mount": {"generation": "g", "groups": {
            "d": {"systems": ["02:00:00:00:00:07"]}}}}}})");
  patch(R"({"services": {"T": {"mount": {"serviceName": ""}}}})");
  patch(R"({"services": {"T": {"mount": null}}})");
  listener.begin();
  hears(listener, kText);
  EXPECT_EQ(found(listener), "");
}

TEST_F(ListenerTest, WhatCameWithinThePieceOfWorkMayBeNamed) {
  Listener listener(simulation_, true);
  patch(R"({"services": {"U": {"mount": {"groups": {"e": {"paths": {"b": {}}}}}}}})");
  hears(listener, "ServiceMountGroupSm::handleMountConfig: b");
  EXPECT_EQ(found(listener), "");
}

/// A message for operators is heard in each run, and reaches who heard it before.
TEST_F(ListenerTest, AMessageNamesASwitch) {
  class Sink final : public StructuredLog::Sink {
   public:
    void message(const StructuredLog::LogHandle&, std::string_view text) override {
      texts.emplace_back(text);
    }
    std::vector<std::string> texts;
  } sink;
  StructuredLog::Sink* const before = StructuredLog::sinkIs(&sink);
  const StructuredLog::LogHandle* timeout = nullptr;
  for (const auto* handle : StructuredLog::logHandles()) {
    if (std::string_view(handle->id()) == "ZORB_MOUNT_TIMEOUT") timeout = handle;
  }
  ASSERT_NE(timeout, nullptr);
  for (const bool traced : {false, true}) {
    Listener listener(simulation_, traced);
    timeout->log("ZORB", "switch", "02:00:00:00:00:01");
    EXPECT_EQ(found(listener), "");
    timeout->log("ZORB", "switch", "");
    EXPECT_EQ(found(listener),
              "a trace or message names what is there: ZORB_MOUNT_TIMEOUT: ZORB is unable to mount "
              "from switch .");
  }
  EXPECT_EQ(sink.texts.size(), 4U);
  EXPECT_EQ(StructuredLog::sinkIs(before), &sink);
}

}  // namespace
}  // namespace Soak
