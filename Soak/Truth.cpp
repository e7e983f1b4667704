#include "Soak/Truth.h"

#include <algorithm>
#include <string>

namespace Soak {

using Controller::Mounter;
using Controller::MountsRegistryEntry;
using Controller::Peer;
using Controller::PublishRegistryEntry;
using Orm::Ptr;
using Orm::String;

namespace {

constexpr std::string_view kProxy = "-Proxy";

}  // namespace

String Truth::realName(const String& service) {
  const std::string_view name = service.view();
  return name.ends_with(kProxy) ? String(name.substr(0, name.size() - kProxy.size())) : service;
}

std::uint32_t Truth::version(const String& service, const Peer& peer) const {
  const ControllerOob::ClientStatus* const client =
      world_.oobStatus()->clientStatus(peer.clientAddress());
  if (!client || !client->serviceStatusDir()) return 0;
  const Controller::ServiceStatusV1* const status =
      client->serviceStatusDir()->service(realName(service));
  if (!status || !status->enabled() || !status->versionStatus()) return 0;
  return status->versionStatus()->negotiated() ? status->versionStatus()->version() : 0;
}

Truth::Filters Truth::filtersOf(const MountsRegistryEntry& entry) {
  Filters filters;
  for (const Ptr<Mounter>& mounter : entry.mounter()) {
    const Controller::ServiceMountGroupConfig& group = *mounter->mountGroupConfig();
    if (!group.systemFilter() && !group.versionFilter()) filters.wildcard = true;
    if (group.systemFilter()) {
      for (const auto& member : group.systemFilter()->includedSystem()) {
        if (!member.value) continue;
        const auto known =
            std::find_if(filters.systems.begin(), filters.systems.end(),
                         [&](const Filters::System& system) { return system.name == member.key; });
        if (known != filters.systems.end()) {
          ++known->count;
        } else {
          filters.systems.push_back({member.key, 1});
        }
      }
    }
    if (group.versionFilter()) {
      for (const auto& member : group.versionFilter()->includedServiceVersion()) {
        if (member.value) filters.versions.push_back({mounter->serviceName(), member.key});
      }
    }
  }
  return filters;
}

bool Truth::admits(const MountsRegistryEntry& entry, const Filters& filters,
                   const Peer& peer) const {
  if (!peer.connectionConfig()) return false;
  bool negotiated = false;
  for (const Ptr<Mounter>& mounter : entry.mounter()) {
    negotiated = negotiated || version(mounter->serviceName(), peer) != 0;
  }
  if (!negotiated) return false;
  if (filters.wildcard) return true;
  const bool hasVersion =
      filters.versions.empty() ||
      std::any_of(filters.versions.begin(), filters.versions.end(), [&](const auto& accepted) {
        return accepted.version != 0 && version(accepted.service, peer) == accepted.version;
      });
  return hasVersion && (filters.systems.empty() ||
                        std::any_of(filters.systems.begin(), filters.systems.end(),
                                    [&](const auto& one) { return one.name == peer.name(); }));
}

bool Truth::wants(const Mounter& mounter, const Peer& peer) const {
  const Controller::ServiceMountGroupConfig& group = *mounter.mountGroupConfig();
  if (group.systemFilter() && !group.systemFilter()->includes(peer.name())) return false;
  if (!group.versionFilter()) return true;
  const std::uint32_t negotiated = version(mounter.serviceName(), peer);
  return negotiated != 0 && group.versionFilter()->includes(negotiated);
}

bool Truth::hasLocalEntity(const PublishRegistryEntry& entry) const {
  return static_cast<bool>(world_.rootDir()->lookup(entry.name().view()));
}

bool Truth::publishes(const PublishRegistryEntry& entry, const Peer& peer) const {
  if (!peer.connectionConfig()) return false;
  const std::uint32_t negotiated = version(entry.serviceName(), peer);
  if (negotiated == 0) return false;
  if (entry.versionFilter() && !entry.versionFilter()->includes(negotiated)) return false;
  if (entry.systemFilter() && !entry.systemFilter()->includes(peer.name())) return false;
  return hasLocalEntity(entry) && entry.readyToPublish();
}

}  // namespace Soak
