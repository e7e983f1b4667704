#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Fabric/Expect.h"
#include "Fabric/Expectation.h"
#include "Fabric/JsonSink.h"
#include "Fabric/Value.h"

namespace Fabric {

/// Builds the part of a state document that an expectation asks about, as the tree that failures()
/// compares it with; the rest is neither built nor asked for. Costs what that part holds.
class JsonTree final : public JsonSink {
 public:
  /// `resolve` gives the switches that the expectation names by display name.
  JsonTree(const Value& expect, const SwitchResolver& resolve);

  /// What was built.
  const nlohmann::json& root() const { return root_; }

  bool key(std::string_view key) override;
  void beginObject(WhenEmpty whenEmpty) override;
  void endObject() override { end(); }
  void beginArray(WhenEmpty whenEmpty) override;
  void endArray() override { end(); }
  void text(std::string_view value) override { add(value); }
  void boolean(bool value) override { add(value); }
  void whole(std::int64_t value) override { add(value); }
  void seconds(Orm::Seconds value) override;

 private:
  /// An object or array that is open, and what is asked about its members.
  struct Open {
    nlohmann::json value;
    std::string key;
    bool keep;
    StatePlace place;
    /// Null: all members.
    const Object* wanted;
    /// Of an object with a member for each switch: the ids of those that are wanted.
    std::unordered_set<std::string> wantedSwitches;
  };

  void begin(nlohmann::json empty, WhenEmpty whenEmpty);
  void end();
  void add(nlohmann::json value);
  void ask(Open& open, const Value* expect) const;
  const Value* expectationOf(std::string_view key) const;

  const Value& expect_;
  const SwitchResolver& resolve_;
  nlohmann::json root_;
  std::vector<Open> open_;
  std::string key_;
};

}  // namespace Fabric
