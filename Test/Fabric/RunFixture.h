#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Fabric/Document.h"
#include "Fabric/JsonText.h"
#include "Fabric/SimulationRun.h"

namespace Fabric {

/// One run of a document in a text, and what came of it.
struct Outcome {
  std::string stateText;
  nlohmann::json state;
  std::vector<nlohmann::json> events;
  std::vector<Report::Expectation> expectations;
  Report report;
};

inline Outcome outcomeOf(std::string_view text) {
  const Document document = Document::parse("fabric.yaml", text);
  std::ostringstream events;
  std::ostringstream errors;
  std::ostringstream state;
  Outcome outcome;
  {
    SimulationRun run(document, errors);
    run.eventsIs(events);
    run.run();
    JsonText json(state, JsonText::Layout::indented);
    run.writeState(json);
    outcome.expectations = run.expectations();
    outcome.report = run.report();
  }
  EXPECT_EQ(errors.str(), "");
  outcome.stateText = state.str();
  outcome.state = nlohmann::json::parse(outcome.stateText);
  std::istringstream lines(events.str());
  for (std::string line; std::getline(lines, line);) {
    outcome.events.push_back(nlohmann::json::parse(line));
  }
  return outcome;
}

/// A fabric in which one service mounts one path from one switch.
inline constexpr const char* kOneMount = R"(
controller: {leader: gen-1}
switches:
  "02:00:00:00:00:01": {name: leaf1, connected: true, services: {Topology: 3}}
services:
  Topology:
    mount:
      generation: gen-1
      groups:
        default: {paths: {topology/status: {type: "Topology::Status", flags: r}}}
)";

}  // namespace Fabric
