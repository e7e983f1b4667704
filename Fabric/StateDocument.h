#pragma once

#include <nlohmann/json_fwd.hpp>

#include "Fabric/Expect.h"
#include "Fabric/JsonSink.h"
#include "Fabric/LogCapture.h"
#include "Fabric/Machines.h"
#include "Fabric/World.h"
#include "Platform/Orm/Seconds.h"

namespace Fabric {

/// The state document: what the machines have made of what they were told. A view of a world and
/// its machines; reading it changes nothing.
///
/// Members are written in the order of their keys, so that equal states give equal texts. Empty
/// texts, objects and arrays are left out; not so the object of a service, system or group whose
/// entity exists, `initialMounts`, and any boolean, number or state of an object that is there.
/// Written piece by piece: a document of a million mounts costs the time of a sort, and memory for
/// one reference a mount.
class StateDocument {
 public:
  /// All have to stay. `machines` may be null: there are none yet.
  StateDocument(const World& world, const Machines* machines, const LogCapture& log);

  /// `time`: seconds of the documents.
  void write(JsonSink& sink, Orm::Seconds time) const;

  /// What is not as `expect` says. Costs what it asks about.
  std::vector<ExpectFailure> failures(const Value& expect, const SwitchResolver& resolve,
                                      Orm::Seconds time) const;

 private:
  void writeInitialMounts(JsonSink& sink) const;
  void writeLog(JsonSink& sink) const;
  void writeMounts(JsonSink& sink) const;
  void writeMountStatus(JsonSink& sink) const;
  void writePublishStatus(JsonSink& sink) const;
  void writePublished(JsonSink& sink) const;
  void writeRegistry(JsonSink& sink) const;

  const World& world_;
  const Machines* machines_;
  const LogCapture& log_;
};

}  // namespace Fabric
