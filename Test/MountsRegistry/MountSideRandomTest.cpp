#include <map>
#include <random>
#include <set>

#include "Controllerdb/MountsRegistry/ProxyServiceName.h"
#include "Test/Support/ControllerFixture.h"

// Random runs of the whole mount side: after each event, what the machines keep is what a scan of
// the configuration says. A seed is a test case of its own, so that its name repeats it.
namespace Controller {
namespace {

using Orm::Ptr;
using Orm::String;

constexpr int kEvents = 1500;
const std::vector<const char*> kSystems = {"02:00:00:00:00:01", "02:00:00:00:00:02",
                                           "02:00:00:00:00:03", "02:00:00:00:00:04",
                                           "02:00:00:00:00:05"};
const std::vector<const char*> kServices = {"Topology", "Routing", "Acl"};
constexpr const char* kProxy = "Topology-Proxy";
constexpr const char* kStranger = "02:ff:ff:ff:ff:ff";

class MountSideRandomTest : public Support::ControllerFixture,
                            public testing::WithParamInterface<unsigned> {
 protected:
  MountSideRandomTest() : random_(GetParam()) {}

  std::size_t below(std::size_t count) { return random_() % count; }
  bool chance(std::size_t of) { return below(of) == 0; }
  /// In half of the runs a path may stand in two groups of a service, and the registry machine
  /// alone may be restarted; which group or prefix is in force then depends on what came first.
  bool wild() const { return GetParam() % 2 == 1; }

  // ---- events

  const char* anySystem() { return kSystems[below(kSystems.size())]; }
  const char* anyService() { return kServices[below(kServices.size())]; }
  std::uint32_t anyVersion() { return static_cast<std::uint32_t>(below(4)); }
  bool connected(const char* system) const { return peerTable().peer(systemId(system)); }

  Support::MountService someService() {
    return chance(4) ? proxyService(kProxy) : service(anyService());
  }
  struct Chosen {
    Support::MountGroup group;
    bool second;
  };
  Chosen someGroup() {
    const bool second = chance(3);
    return {someService().group(second ? "second" : "default"), second};
  }
  String somePath(bool second) {
    if (wild()) return String("path/" + std::to_string(below(6)));
    return String((second ? "second/" : "default/") + std::to_string(below(3)));
  }

  void changeConnection() {
    const char* const system = anySystem();
    if (!connected(system)) {
      Support::Versions versions;
      for (const char* name : kServices) {
        if (!chance(4)) versions.emplace_back(name, anyVersion());
      }
      if (chance(6)) {
        connectWithoutConfig(system, versions);
      } else {
        connect(system, versions);
      }
      forget(system);
    } else if (chance(2)) {
      if (chance(2)) inactive(system);
      disconnect(system);
    }
    if (!connected(system) && chance(3)) forget(system);
  }

  void changeVersion() {
    const char* const system = anySystem();
    if (!connected(system)) return;
    const char* const name = anyService();
    switch (below(4)) {
      case 0:
        serviceStatus(system, name).enabledIs(chance(2));
        break;
      case 1:
        serviceStatusDir(system).serviceDel(name);
        break;
      default:
        versionIs(system, name, anyVersion());
        break;
    }
  }

  void changePath() {
    auto [group, second] = someGroup();
    const String path = somePath(second);
    if (chance(3)) {
      group.withoutPath(path);
    } else if (!group.config().mountConfig(path)) {
      group.path(path, "T", "r", chance(4) ? String({"/elsewhere/", path.view()}) : String());
    }
  }

  void changeFilter() {
    Support::MountGroup group = someGroup().group;
    const bool hasSystems = static_cast<bool>(group.config().systemFilter());
    const bool hasVersions = static_cast<bool>(group.config().versionFilter());
    switch (below(8)) {
      case 0:
        group.systems({anySystem(), anySystem()});
        break;
      case 1:
        group.anySystem();
        break;
      case 2:
        group.versions({anyVersion() + 1});
        break;
      case 3:
        group.anyVersion();
        break;
      case 4:
        if (hasSystems) group.system(anySystem(), chance(2));
        break;
      case 5:
        if (hasSystems) group.withoutSystem(anySystem());
        break;
      case 6:
        if (hasVersions) group.version(anyVersion() + 1, chance(2));
        break;
      default:
        if (hasVersions) group.withoutVersion(anyVersion() + 1);
        break;
    }
  }

  void changeService() {
    switch (below(7)) {
      case 0:
        someService().withoutGroup(chance(2) ? "second" : "default");
        break;
      case 1:
        (chance(2) ? mountConfigDir() : mountStatusDir())->entityDel(anyService());
        break;
      case 2:
        leaderIs(chance(3) ? String() : String("gen-" + std::to_string(below(2))));
        break;
      case 3:
      case 4:
        service(anyService()).generation(controllerdbStatus()->leaderGenId());
        break;
      case 5:
        enabledIs(anyService(), chance(2));
        break;
      default:
        someGroup().group.preserve(chance(2));
        break;
    }
  }

  void changeMachines() {
    if (wild() && chance(2)) {
      stopRegistry();
      startRegistry();
    } else if (chance(2)) {
      stopConfig();
      startConfig();
    }
    for (const Ptr<MountsRegistryEntry>& entry : registry()->mountEntry()) {
      if (!entry->mounter().empty() || !chance(4)) continue;
      const String name = entry->name();
      registry()->mountEntryDel(name);
      return;
    }
  }

  /// A live mount goes a step: an unmount ends it, anything else gives it any other state.
  void report() {
    if (mounts().live().empty()) return;
    Support::FakeMountSm& made = *mounts().live()[below(mounts().live().size())];
    const bool leaving = made.lastAsked().find("unmount") != std::string::npos;
    const auto state = leaving ? MountState::unmounted : static_cast<MountState>(1 + below(4));
    const String path = made.request().remotePath;
    const SystemId system = made.request().systemId;
    if (made.record().mountState() == MountState::unmounted) {
      made.reports(MountState::requested);
    }
    if (made.record().mountState() == state) return;
    made.reports(state);
    checkGroups(path, system, state);
  }

  // ---- what a scan says

  std::uint32_t negotiated(const String& service, const Peer& peer) const {
    const auto* const client = oobStatus()->clientStatus(peer.clientAddress());
    const ServiceStatusV1* const status =
        client ? client->serviceStatusDir()->service(realServiceName(service)) : nullptr;
    if (!status || !status->enabled() || !status->versionStatus()) return 0;
    return status->versionStatus()->negotiated() ? status->versionStatus()->version() : 0;
  }

  struct Filters {
    bool wildcard = false;
    std::map<String, std::uint32_t> systems;
    std::map<String, std::set<std::uint32_t>> versions;
  };
  static Filters filtersOf(const MountsRegistryEntry& entry) {
    Filters filters;
    for (const Ptr<Mounter>& mounter : entry.mounter()) {
      const ServiceMountGroupConfig& group = *mounter->mountGroupConfig();
      if (!group.systemFilter() && !group.versionFilter()) filters.wildcard = true;
      if (group.systemFilter()) {
        for (const auto& member : group.systemFilter()->includedSystem()) {
          if (member.value) ++filters.systems[member.key];
        }
      }
      if (group.versionFilter()) {
        for (const auto& member : group.versionFilter()->includedServiceVersion()) {
          if (member.value) filters.versions[mounter->serviceName()].insert(member.key);
        }
      }
    }
    return filters;
  }

  bool admitted(const MountsRegistryEntry& entry, const Filters& filters,
                const SystemId& system) const {
    const Peer* const peer = peerTable().peer(system);
    if (!peer || !peer->connectionConfig()) return false;
    bool hasVersion = false;
    for (const Ptr<Mounter>& mounter : entry.mounter()) {
      hasVersion = hasVersion || negotiated(mounter->serviceName(), *peer) != 0;
    }
    if (!hasVersion) return false;
    if (filters.wildcard) return true;
    bool matches = filters.versions.empty();
    for (const auto& [service, versions] : filters.versions) {
      matches = matches || versions.count(negotiated(service, *peer)) != 0;
    }
    return matches && (filters.systems.empty() || filters.systems.count(peer->name()) != 0);
  }

  // ---- checks

  void checkEntry(const MountsRegistryEntry& entry) const {
    const MountsRegistryEntrySm& machine = entrySm(entry.name());
    const Filters filters = filtersOf(entry);
    EXPECT_EQ(filters.wildcard, machine.wildcard());
    EXPECT_EQ(filters.systems.size(), machine.connectionFilter().size());
    for (const auto& [system, count] : filters.systems) {
      EXPECT_EQ(count, machine.connectionFilter().value(system)) << system;
    }
    EXPECT_EQ(filters.versions.size(), machine.versionFilter().size());
    for (const auto& [service, versions] : filters.versions) {
      const ServiceVersionFilter* const filter = machine.versionFilter().find(service);
      ASSERT_NE(nullptr, filter) << service;
      EXPECT_EQ(versions.size(), filter->version().size());
      for (const std::uint32_t version : versions) EXPECT_TRUE(filter->version().value(version));
    }
    EXPECT_EQ(entry.mounter().size(), machine.mounterConfigSm().size());
    for (const Ptr<Mounter>& mounter : entry.mounter()) {
      EXPECT_NE(nullptr, machine.mounterConfigSm().find(mounter->serviceName()));
    }
    for (const char* system : kSystems) checkMount(entry, machine, filters, system);
  }

  void checkMount(const MountsRegistryEntry& entry, const MountsRegistryEntrySm& machine,
                  const Filters& filters, const char* system) const {
    const SystemId id = systemId(system);
    const bool allowed = admitted(entry, filters, id);
    const Support::FakeMountSm* const made = mount(system, entry.name());
    EXPECT_EQ(made, machine.mountSm(id));
    EXPECT_EQ(made != nullptr, machine.mountSmData(id) != nullptr);
    if (allowed) {
      EXPECT_TRUE(made) << "no mount from " << system;
    }
    if (!made) return;
    const bool leaving = made->lastAsked().find("unmount") != std::string::npos;
    EXPECT_EQ(allowed, !leaving) << system << " was asked last: " << made->lastAsked();
  }
  const Support::FakeMountSm* mount(const char* system, const String& path) const {
    return constMounts().find(systemId(system), path.view());
  }
  const Support::FakeMounts& constMounts() const {
    return const_cast<MountSideRandomTest*>(this)->mounts();
  }

  /// A mount status stands for a mount that is there, by a mounter that is there, in its state.
  void checkStatus(const Fennix::Dir& statuses) const {
    for (const auto& slot : statuses.entity()) {
      const auto status = Orm::dynamicCast<ServiceMountStatus>(slot.value);
      for (const Ptr<SystemStatus>& system : status->systemStatus()) {
        for (const Ptr<ServiceMountGroupStatus>& group : system->serviceMountGroupStatus()) {
          std::uint32_t counts[kMountStates] = {};
          for (const Ptr<MountStatus>& path : group->mountStatus()) {
            const MountsRegistryEntry* const entry = registry()->mountEntry(path->path());
            const Mounter* const mounter = entry ? entry->mounter(slot.key) : nullptr;
            ASSERT_NE(nullptr, mounter) << slot.key << " " << path->path();
            EXPECT_EQ(group->groupName(), mounter->groupName());
            EXPECT_EQ(status, mounter->serviceMountStatus());
            const auto record = entrySm(path->path()).mountSmData(systemId(system->name().view()));
            ASSERT_TRUE(record);
            EXPECT_EQ(record->mountState(), path->mountState());
            EXPECT_NE(nullptr, mounter->mountGroupConfig()->mountConfig(path->path()));
            ++counts[static_cast<std::size_t>(path->mountState())];
          }
          for (std::size_t state = 0; state != kMountStates; ++state) {
            EXPECT_EQ(counts[state], group->mountStatusCount(static_cast<MountState>(state)));
          }
        }
      }
    }
  }

  /// After a report, each mounter's group has the state that a walk over its paths gives.
  void checkGroups(const String& path, const SystemId& system, MountState state) const {
    const MountsRegistryEntry* const entry = registry()->mountEntry(path);
    if (!entry) return;
    for (const Ptr<Mounter>& mounter : entry->mounter()) {
      const SystemStatus* const ofSystem =
          mounter->serviceMountStatus()->systemStatus(system.stringValue());
      const ServiceMountGroupStatus* const group =
          ofSystem ? ofSystem->serviceMountGroupStatus(mounter->groupName()) : nullptr;
      if (!group) continue;
      EXPECT_TRUE(group->processed());
      MountState expected = state;
      for (const Ptr<MountConfig>& config : mounter->mountGroupConfig()->mountConfig()) {
        const MountStatus* const one = group->mountStatus(config->path());
        if (one && one->mountState() == MountState::failed) {
          expected = MountState::failed;
          break;
        }
        if (!one || one->mountState() != state) expected = MountState::unmounted;
      }
      EXPECT_EQ(expected, group->mountState())
          << mounter->mounterName() << " " << system.stringValue();
    }
  }

  /// The entries of a service that its index knows, in order, are those of a walk over all.
  void checkIndex() {
    traces().clear();
    for (const char* service : kServices) {
      std::vector<std::string> plain;
      for (const Ptr<MountsRegistryEntrySm>& machine : registrySm().mountsRegistryEntrySm()) {
        for (const Ptr<Mounter>& mounter : machine->registryEntry()->mounter()) {
          if (!isRealServiceName(mounter->serviceName(), service)) continue;
          plain.push_back("MountsRegistryEntrySm::handleSwitchConnection " +
                          machine->entryName().str() + " Peer:" + kStranger);
          break;
        }
      }
      traceIs(8);
      registrySm().handleServiceSwitchConnection(systemId(kStranger), service);
      traceIs(Dualog::kAllOff);
      std::vector<std::string> indexed;
      for (const std::string& text : traced(8)) {
        if (text.find("MountsRegistryEntrySm::handleSwitchConnection") == 0) {
          indexed.push_back(text);
        }
      }
      traces().clear();
      EXPECT_EQ(plain, indexed) << service;
    }
  }

  void check() {
    EXPECT_EQ(registry()->mountEntry().size(), registrySm().mountsRegistryEntrySm().size());
    EXPECT_EQ(peerTable().peer().size(), registrySm().connectionServiceStatusDirSm().size());
    for (const Ptr<MountsRegistryEntry>& entry : registry()->mountEntry()) {
      SCOPED_TRACE(entry->name().str());
      checkEntry(*entry);
    }
    checkStatus(*mountStatusDir());
    checkStatus(*proxyMountStatusDir());
    EXPECT_LE(clock()->armedTimers(), registry()->mountEntry().size());
    EXPECT_EQ(0U, Orm::ActivityScope::zombies());
  }

  // ---- the rebuild

  /// Lets every mount come to its end, and decides all once more: the status of a group that went
  /// with its last mount status, while another mount was under way, comes back then.
  void settle() {
    for (Support::FakeMountSm* made : std::vector(mounts().live())) {
      const bool leaving = made->lastAsked().find("unmount") != std::string::npos;
      if (made->pendingRequest()) made->reports(MountState::requested);
      made->reports(leaving ? MountState::unmounted : MountState::mounted);
    }
    registrySm().handleSwitchConnection();
  }

  /// All mount statuses and path prefixes, a line each.
  std::set<std::string> document() const {
    std::set<std::string> lines;
    for (const auto& dir : {mountStatusDir(), proxyMountStatusDir()}) {
      for (const auto& slot : dir->entity()) {
        const auto status = Orm::dynamicCast<ServiceMountStatus>(slot.value);
        const std::string service = slot.key.str() + " ";
        for (const auto& prefix : status->mountedPathPrefix()) {
          lines.insert(service + prefix.key.str() + " " + prefix.value.str());
        }
        for (const Ptr<SystemStatus>& system : status->systemStatus()) {
          for (const Ptr<ServiceMountGroupStatus>& group : system->serviceMountGroupStatus()) {
            for (const Ptr<MountStatus>& path : group->mountStatus()) {
              lines.insert(service + system->name().str() + " " + group->groupName().str() + " " +
                           path->path().str() + " " + name(path->mountState()) + " " +
                           path->mountedPath().text().str());
            }
          }
        }
      }
    }
    return lines;
  }

  std::mt19937 random_;
};

TEST_P(MountSideRandomTest, WhatTheMachinesKeep_IsWhatAScanSays) {
  start();
  for (int event = 0; event != kEvents && !HasFailure(); ++event) {
    SCOPED_TRACE("event " + std::to_string(event));
    switch (below(16)) {
      case 0:
      case 1:
      case 2:
        changeConnection();
        break;
      case 3:
      case 4:
        changeVersion();
        break;
      case 5:
      case 6:
        changePath();
        break;
      case 7:
      case 8:
        changeFilter();
        break;
      case 9:
        changeService();
        break;
      case 10:
        if (chance(8)) changeMachines();
        break;
      case 11:
        run(static_cast<double>(below(200)));
        break;
      default:
        report();
        break;
    }
    check();
    if (event % 10 == 0) checkIndex();
  }
}

class MountSideRebuildTest : public MountSideRandomTest {};

TEST_P(MountSideRebuildTest, MachinesBuiltAgain_GiveTheSameStatus) {
  ASSERT_FALSE(wild());
  // As every mount machine does, so that a mount that was asked for has a status from then on.
  mounts().onMadeIs([](Support::FakeMountSm& made) { made.reports(MountState::requested); });
  start();
  for (int event = 0; event != kEvents / 3; ++event) {
    changePath();
    changeConnection();
    if (chance(2)) changeVersion();
    if (chance(3)) changeFilter();
    if (chance(6)) changeService();
    report();
    report();
    if (event % 50 != 49) continue;
    settle();
    const std::set<std::string> before = document();
    stopRegistry();
    stopConfig();
    EXPECT_TRUE(mounts().live().empty());
    EXPECT_THAT(document(), testing::IsEmpty());
    if (chance(2)) {
      start();
    } else {
      startRegistry();
      startConfig();
    }
    settle();
    const std::set<std::string> after = document();
    std::vector<std::string> changes;
    for (const std::string& line : before) {
      if (after.count(line) == 0) changes.push_back("- " + line);
    }
    for (const std::string& line : after) {
      if (before.count(line) == 0) changes.push_back("+ " + line);
    }
    ASSERT_THAT(changes, testing::IsEmpty()) << "event " << event;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, MountSideRandomTest, testing::Range(1U, 25U));
INSTANTIATE_TEST_SUITE_P(EvenSeeds, MountSideRebuildTest, testing::Range(2U, 42U, 2U));

}  // namespace
}  // namespace Controller
