#pragma once

#include "Platform/Entities/ServiceMount/SystemStatus.h"
#include "Platform/Orm/CollectionOwner.h"
#include "Platform/Orm/LastAsked.h"

namespace Controller {

/// What of a service's mount configuration is in force: where, and on which switch how far.
class ServiceMountStatus : public Orm::CollectionOwner,
                           private Kobble::Counted<ServiceMountStatus> {
 public:
  struct Attr {
    enum : Orm::AttributeId { serviceName, mountedPathPrefix, systemStatus, initialMountsComplete };
  };
  using PathPrefixes = Orm::ValueCollection<Orm::String, Orm::String>;
  using SystemStatuses = Orm::Collection<Orm::Ptr<SystemStatus>, &SystemStatus::name>;
  using GroupFlags = Orm::ValueCollection<Orm::String, bool>;

  const Orm::String& serviceName() const { return serviceName_; }
  void serviceNameIs(Orm::String name) { assign(serviceName_, std::move(name), Attr::serviceName); }

  /// Per remote path: the local path below which the switches' copies stand.
  const PathPrefixes& mountedPathPrefix() const { return mountedPathPrefix_; }
  void mountedPathPrefixIs(const Orm::String& path, const Orm::String& targetPath) {
    valueIs(mountedPathPrefix_, Attr::mountedPathPrefix, path, targetPath);
  }
  void mountedPathPrefixDel(const Orm::String& path) {
    valueDel(mountedPathPrefix_, Attr::mountedPathPrefix, path);
  }
  void mountedPathPrefixDelAll() { valueDelAll(mountedPathPrefix_, Attr::mountedPathPrefix); }

  /// Per switch, by the text form of its id. Cheapest for the switch that was asked for last, also
  /// when it has none.
  const SystemStatuses& systemStatus() const { return systemStatus_; }
  SystemStatus* systemStatus(const Orm::String& systemName) const {
    return lastAsked_.find(systemStatus_, systemName);
  }
  Orm::Ptr<SystemStatus> systemStatusIs(const Orm::String& systemName) {
    if (SystemStatus* present = systemStatus(systemName)) return present;
    lastAsked_.memberComes();
    return memberIs(systemStatus_, Attr::systemStatus, Orm::make<SystemStatus>(systemName));
  }
  void systemStatusDel(const Orm::String& systemName) {
    if (!systemStatus(systemName)) return;
    memberDel(systemStatus_, Attr::systemStatus, systemName, lastAsked_.hint());
  }
  void systemStatusDelAll() { memberDelAll(systemStatus_, Attr::systemStatus); }

  /// Per mount group: the mounts that were owed after the start, or after the last change of
  /// leadership, are done.
  const GroupFlags& initialMountsComplete() const { return initialMountsComplete_; }
  void initialMountsCompleteIs(const Orm::String& groupName, bool complete) {
    valueIs(initialMountsComplete_, Attr::initialMountsComplete, groupName, complete);
  }
  void initialMountsCompleteDel(const Orm::String& groupName) {
    valueDel(initialMountsComplete_, Attr::initialMountsComplete, groupName);
  }
  void initialMountsCompleteDelAll() {
    valueDelAll(initialMountsComplete_, Attr::initialMountsComplete);
  }

 private:
  Orm::String serviceName_;
  PathPrefixes mountedPathPrefix_;
  SystemStatuses systemStatus_;
  Orm::LastAsked<SystemStatuses> lastAsked_;
  GroupFlags initialMountsComplete_;
};

}  // namespace Controller
