#pragma once

#include "Fabric/Object.h"
#include "Fabric/ServiceBlockView.h"
#include "Fabric/Text.h"
#include "Fabric/Value.h"
#include "Platform/Fennix/Dir.h"

namespace Fabric {

/// What carrying the `mount` and the `publish` of a service have in common: a configuration in one
/// directory and its status in another, both under the service's name.
///
/// A Policy has the types Config and Status and carries what is particular:
///     static Ptr<Config> build(const String& service, const ServiceBlockView& after)
///     static void change(Config&, const String& service, const ServiceBlockView& after,
///                        const Text& member, const Value& patch)
template <class Policy>
class ServiceBlockCarrier {
 public:
  ServiceBlockCarrier(const Orm::Ptr<Fennix::Dir>& configDir,
                      const Orm::Ptr<Fennix::Dir>& statusDir)
      : configDir_(configDir), statusDir_(statusDir) {}

  /// What is new is built whole and its status comes last; a change goes member by member in the
  /// patch's order; null removes the configuration, and then its status.
  void carry(const Orm::String& service, const Value* after, const Value& patch) {
    const ServiceBlockView view(after);
    if (patch.isNull()) {
      remove(service);
    } else if (const auto config = configDir_->entityAs<typename Policy::Config>(service)) {
      for (const Object::Member& member : patch.object()) {
        if (*member.key == "status") {
          status(service, view.status());
        } else {
          Policy::change(*config, service, view, member.key, member.value);
        }
      }
    } else {
      configDir_->entityIs(service, Policy::build(service, view));
      status(service, view.status());
    }
  }

  void remove(const Orm::String& service) {
    configDir_->entityDel(service);
    statusDir_->entityDel(service);
  }

 private:
  void status(const Orm::String& service, bool exists) {
    if (!exists) {
      statusDir_->entityDel(service);
    } else if (!statusDir_->entity(service)) {
      statusDir_->entityIs(service, Orm::make<typename Policy::Status>());
    }
  }

  const Orm::Ptr<Fennix::Dir>& configDir_;
  const Orm::Ptr<Fennix::Dir>& statusDir_;
};

}  // namespace Fabric
