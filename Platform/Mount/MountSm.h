#pragma once

#include <cstdint>

#include "Platform/Entities/Heartbeat/Config.h"
#include "Platform/Entities/PeerTable/ConnectionConfig.h"
#include "Platform/Fennix/Dir.h"
#include "Platform/Mount/MountSmData.h"
#include "Platform/Orm/Sm.h"

namespace Controller {

/// What a mount machine is made for. Refers to the caller's values; the machine copies what it
/// keeps.
struct MountRequest {
  const SystemId& systemId;
  const Orm::Ptr<ConnectionConfig const>& connectionConfig;
  const Orm::Ptr<Heartbeat::Config const>& heartbeatConfig;
  const Orm::String& remoteRoot;
  const Orm::String& remotePath;
  /// The switch's copy goes into this directory, under this name.
  const Orm::Ptr<Fennix::Dir>& mountDir;
  const Orm::String& mountName;
  const Orm::String& ormType;
  const Orm::String& mountFlags;
  std::uint32_t retries;  // reconnect attempts
  std::int32_t timeout;   // seconds
  const Orm::Ptr<MountSmData>& mountSmData;

  Orm::String mountPath() const { return mountDir->childPath(mountName.view()); }
};

/// The machine that carries out one mount of one remote path from one switch; a closed part of the
/// platform, behind this interface. Its creation asks for the mount.
///
/// Owned by the mount entry's machine. It reports by setting the record's mountState, from the
/// event loop, never within the call of one of its operations, and may be let go while it does.
class MountSm : public Orm::Sm {
 public:
  /// Asks for the mount again.
  virtual void doRemount() = 0;
  /// Gives the mount up; what was mounted goes from the state store.
  virtual void doUnmount() = 0;
  /// Gives the mount up; what was mounted stays in the state store.
  virtual void doStatePreservingUnmount() = 0;
  /// Ends everything that is under way. Called before the machine is let go; harmless when
  /// repeated.
  virtual void doCleanup() = 0;
  /// A request has not had its outcome yet.
  virtual bool pendingRequest() const = 0;

  void hasNotificationActiveIs(bool) override {}

  /// Makes mount machines; a host sets one and keeps it as long as it is set.
  class Factory {
   public:
    virtual Orm::Ptr<MountSm> mountSm(const MountRequest& request) = 0;

   protected:
    ~Factory() = default;
  };
  /// Replaces the factory; null puts the default back, whose machines never get any further than
  /// having been asked. Returns the one that was in force (null: the default).
  static Factory* factoryIs(Factory* factory);
  static Orm::Ptr<MountSm> MountSmIs(const MountRequest& request);
};

}  // namespace Controller
