#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Fabric/Model.h"
#include "Fabric/Value.h"
#include "Soak/Fault.h"
#include "Soak/Names.h"
#include "Soak/Profile.h"
#include "Soak/Random.h"

namespace Soak {

/// Thinks up changes that fit a document as it stands: patches that can be applied to it.
///
/// What a document may say and the controller answers by stopping is left out: a path whose type,
/// flags or target differ from another service's or change, and a published directory that is not
/// there while a switch is connected: it goes together with all connections, and is back before
/// the next one.
class ChangeMaker {
 public:
  /// All have to stay.
  ChangeMaker(const Names& names, const Fabric::Model& model, Random& random)
      : names_(names),
        model_(model),
        random_(random),
        aside_(Random::mixed(Random(random).next())) {}

  /// The patches of one change, mostly one; several are meant to come at one time. None when there
  /// is nothing to be changed.
  std::vector<Fabric::Value> patches(Change change);
  /// The same, about a service that is there, for changes that are about one.
  std::vector<Fabric::Value> patches(Change change, std::string_view service);
  /// Nothing unless the change is one that no patch can say.
  std::optional<Fault> fault(Change change);
  Fault::Notice notice() { return static_cast<Fault::Notice>(random_.below(Fault::kNotices)); }
  /// One that a service's gate leads to when it closes, mostly whichever comes.
  Fault::Notice noticeOfService();
  /// One that a switch leads to when it comes or goes.
  Fault::Notice noticeOfSwitch();

  // ---- for whoever builds a first document

  Fabric::Value newSwitch(std::string_view name);
  Fabric::Value newMountBlock(std::string_view service);
  Fabric::Value newPublishBlock(std::string_view service);
  Fabric::Value someHeartbeat();
  Fabric::Value someAttrlog();
  /// The published directories, as entities, or now and then none of them.
  Fabric::Value newDirectories();
  /// Otherwise no switch may be connected.
  bool directoriesStand() const { return gone_.empty(); }

 private:
  using Value = Fabric::Value;
  using Object = Fabric::Object;
  /// A group that is there: its service, its name, which of the two blocks.
  struct Group {
    std::string service;
    std::string name;
    const Value* value;
  };

  std::vector<Value> changes(Change change);
  std::vector<Value> flap();
  Value switchSet();
  Value version();
  Value service();
  Value group();
  Value path();
  Value systemFilter();
  Value versionFilter();
  Value block(std::string_view member, const Value& patch);
  Value publication();
  Value directory();
  Value readiness();
  Value entity();
  Value directoryGone();
  Value directoriesBack();
  Value attrlog();
  Value behaviour();

  /// A key of one switch, or a pattern over several; empty when there is none.
  std::string someSwitches();
  std::string someSwitch();
  std::string someId();
  std::string someService();
  std::optional<Group> someGroup(std::string_view blockName);
  std::string_view someBlockName() { return random_.coin() ? "publish" : "mount"; }
  std::string someBlockNameOf(const Value& service);

  Value someStatus();
  Value someStatuses();
  Value someBehaviour();
  Value someSystems();
  Value someVersions();
  bool mayName(std::string_view group, std::size_t path);
  Value newMountGroup(std::string_view name);
  Value newPublishGroup(std::string_view name);
  Value newPath(const Names::Path& path);
  Value newPublication(const Names::Path& path);
  Value newDirectory(const Names::Path& path);
  std::string freshId();

  Value lessOf(const Group& group, std::string_view blockName, const Object& paths);
  Value patchOfGroup(const Group& group, std::string_view blockName, Value patch);

  const Names& names_;
  const Fabric::Model& model_;
  Random& random_;
  /// For directories, which come and go beside everything else.
  Random aside_;
  /// Directories that were taken away.
  std::vector<std::string> gone_;
  /// The service that the change is to be about; empty: any.
  std::string about_;
};

}  // namespace Soak
