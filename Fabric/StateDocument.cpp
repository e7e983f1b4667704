#include "Fabric/StateDocument.h"

#include <string>
#include <vector>

#include "Controllerdb/MountsRegistry/MountsRegistrySm.h"
#include "Fabric/JsonTree.h"
#include "Fabric/SimulatedMountSm.h"
#include "Fabric/Sorted.h"
#include "Platform/Entities/ServiceMount/ServiceMountStatus.h"
#include "Platform/Entities/ServicePublish/ServicePublishStatus.h"

namespace Fabric {

namespace {

using WhenEmpty = JsonSink::WhenEmpty;

/// Who holds a member, seen as the member: slots of directories, handles of collections.
const auto kName = [](const auto& member) -> const auto& { return member->name(); };

void writeFlags(JsonSink& sink, std::string_view name,
                const Orm::ValueCollection<Orm::String, bool>& flags) {
  sink.object(name, WhenEmpty::leaveOut, [&] {
    for (const auto* flag : sortedByKey(flags)) sink.booleanMember(flag->key, flag->value);
  });
}

void writeMountEntry(JsonSink& sink, const Controller::MountsRegistryEntry& entry) {
  sink.textMemberUnlessEmpty("flags", entry.mountFlags());
  sink.object("mounters", WhenEmpty::leaveOut, [&] {
    const auto byService = [](const auto& mounter) -> const auto& {
      return mounter->serviceName();
    };
    for (const auto* mounter : sortedBy(entry.mounter(), byService)) {
      sink.textMemberUnlessEmpty((*mounter)->serviceName(), (*mounter)->groupName());
    }
  });
  sink.textMemberUnlessEmpty("targetPath", entry.targetPath());
  sink.textMemberUnlessEmpty("type", entry.ormType());
}

void writePublishEntry(JsonSink& sink, const Controller::PublishRegistryEntry& entry) {
  sink.booleanMember("prefix", entry.isPrefixPath());
  sink.booleanMember("ready", entry.readyToPublish());
  sink.textMemberUnlessEmpty("remotePath", entry.remotePath());
  sink.textMemberUnlessEmpty("service", entry.serviceName());
  sink.textMemberUnlessEmpty("type", entry.type());
}

/// One mount record, and by what its document is ordered.
struct Mount {
  Controller::SystemId systemId;
  const Controller::MountsRegistryEntrySm* entry;
  const Controller::MountsRegistryEntrySm::OrmMountSmDataSm* record;
};

void writeMount(JsonSink& sink, const Mount& mount) {
  const auto* const machine = dynamic_cast<const SimulatedMountSm*>(mount.record->mountSm().get());
  if (machine) {
    sink.textMemberUnlessEmpty("mountPath", machine->mountPath());
    sink.wholeMember("retries", machine->retries());
  }
  sink.textMember("state", name(mount.record->mountSmData()->mountState()));
  if (machine) sink.wholeMember("timeout", machine->timeout());
}

void writeGroupStatus(JsonSink& sink, const Controller::ServiceMountGroupStatus& group,
                      std::string& scratch) {
  sink.object("paths", WhenEmpty::leaveOut, [&] {
    const auto byPath = [](const auto& status) -> const auto& { return status->path(); };
    for (const auto* status : sortedBy(group.mountStatus(), byPath)) {
      sink.object((*status)->path(), WhenEmpty::keep, [&] {
        scratch.clear();
        (*status)->mountedPath().appendTo(scratch);
        sink.textMemberUnlessEmpty("mountedPath", scratch);
        sink.textMember("state", name((*status)->mountState()));
      });
    }
  });
  sink.booleanMember("processed", group.processed());
  sink.textMember("state", name(group.mountState()));
}

void writeServiceMountStatus(JsonSink& sink, const Controller::ServiceMountStatus& status) {
  writeFlags(sink, "initialMountsComplete", status.initialMountsComplete());
  sink.object("mountedPathPrefix", WhenEmpty::leaveOut, [&] {
    for (const auto* prefix : sortedByKey(status.mountedPathPrefix())) {
      sink.textMemberUnlessEmpty(prefix->key, prefix->value);
    }
  });
  sink.object("systems", WhenEmpty::leaveOut, [&] {
    std::string scratch;
    for (const auto* system : sortedBy(status.systemStatus(), kName)) {
      sink.object((*system)->name(), WhenEmpty::keep, [&] {
        const auto byGroup = [](const auto& group) -> const auto& { return group->groupName(); };
        for (const auto* group : sortedBy((*system)->serviceMountGroupStatus(), byGroup)) {
          sink.object((*group)->groupName(), WhenEmpty::keep,
                      [&] { writeGroupStatus(sink, **group, scratch); });
        }
      });
    }
  });
}

void writePublishGroupStatus(JsonSink& sink, const Controller::ServicePublishGroupStatus& group) {
  sink.object("paths", WhenEmpty::leaveOut, [&] {
    const auto byPath = [](const auto& status) -> const auto& { return status->path(); };
    for (const auto* status : sortedBy(group.publishStatus(), byPath)) {
      sink.object((*status)->path(), WhenEmpty::keep, [&] {
        sink.wholeMember("state", static_cast<std::int64_t>((*status)->publishState()));
      });
    }
  });
  sink.wholeMember("state", static_cast<std::int64_t>(group.publishState()));
}

void writePublications(JsonSink& sink, const Controllerdb::SystemPublishedMount& system) {
  sink.object("mounts", WhenEmpty::leaveOut, [&] {
    for (const auto* slot : sortedByKey(system.publishedMount())) {
      const Controllerdb::MountDesc& mount = slot->value;
      sink.object(slot->key, WhenEmpty::leaveOut, [&] {
        sink.textMemberUnlessEmpty("flags", mount.flags);
        sink.textMemberUnlessEmpty("remotePath", mount.remotePath);
        sink.textMemberUnlessEmpty("service", mount.serviceName);
        sink.textMemberUnlessEmpty("type", mount.type);
      });
    }
  });
  writeFlags(sink, "processed", system.registeredPublishedPathsProcessed());
}

/// The entities of a type of several directories, by the names under which they stand.
template <class T>
auto entitiesOf(std::initializer_list<const Fennix::Dir*> dirs) {
  struct Entity {
    Orm::String key;
    Orm::Ptr<T> entity;
  };
  std::vector<Entity> entities;
  for (const Fennix::Dir* dir : dirs) {
    for (const auto& slot : dir->entity()) {
      if (auto entity = Orm::dynamicCast<T>(slot.value)) {
        entities.push_back({slot.key, std::move(entity)});
      }
    }
  }
  std::sort(entities.begin(), entities.end(),
            [](const Entity& a, const Entity& b) { return a.key < b.key; });
  return entities;
}

}  // namespace

StateDocument::StateDocument(const World& world, const Machines* machines, const LogCapture& log)
    : world_(world), machines_(machines), log_(log) {}

void StateDocument::write(JsonSink& sink, Orm::Seconds time) const {
  sink.beginObject(WhenEmpty::keep);
  writeInitialMounts(sink);
  writeLog(sink);
  writeMountStatus(sink);
  writeMounts(sink);
  writePublishStatus(sink);
  writePublished(sink);
  writeRegistry(sink);
  sink.secondsMember("time", time);
  sink.endObject();
}

std::vector<ExpectFailure> StateDocument::failures(const Value& expect,
                                                   const SwitchResolver& resolve,
                                                   Orm::Seconds time) const {
  JsonTree tree(expect, resolve);
  write(tree, time);
  return Fabric::failures(expect, tree.root(), resolve);
}

void StateDocument::writeInitialMounts(JsonSink& sink) const {
  const Controller::InitialMountSm* const machine =
      machines_ ? machines_->initialMountSm().get() : nullptr;
  sink.object("initialMounts", WhenEmpty::keep, [&] {
    sink.booleanMember("connectionPeriodComplete",
                       machine && machine->connectionPeriod()->complete());
    if (!machine) return;
    sink.array("initialSwitches", WhenEmpty::leaveOut, [&] {
      for (const auto* seen : sortedByKey(machine->initialSwitchSet()->initialSwitch())) {
        if (seen->value) sink.text(seen->key.stringValue());
      }
    });
  });
}

void StateDocument::writeLog(JsonSink& sink) const {
  sink.array("log", WhenEmpty::leaveOut, [&] {
    for (const LogCapture::Message& message : log_.messages()) {
      sink.beginObject(WhenEmpty::keep);
      sink.textMember("id", message.handle->id());
      sink.wholeMember("severity", message.handle->severity());
      sink.textMemberUnlessEmpty("text", message.text);
      sink.secondsMember("time", message.time);
      sink.endObject();
    }
  });
}

void StateDocument::writeMountStatus(JsonSink& sink) const {
  sink.object("mountStatus", WhenEmpty::leaveOut, [&] {
    for (const auto& service : entitiesOf<Controller::ServiceMountStatus>(
             {world_.mountStatusDir().get(), world_.proxyMountStatusDir().get()})) {
      sink.object(service.key, WhenEmpty::keep,
                  [&] { writeServiceMountStatus(sink, *service.entity); });
    }
  });
}

void StateDocument::writeMounts(JsonSink& sink) const {
  if (!machines_) return;
  sink.object("mounts", WhenEmpty::leaveOut, [&] {
    std::vector<Mount> mounts;
    for (const auto& entry : machines_->mountsRegistrySm()->mountsRegistryEntrySm()) {
      for (const auto& record : entry->mountSmDataSm()) {
        mounts.push_back({record->systemId(), entry.get(), record.get()});
      }
    }
    std::sort(mounts.begin(), mounts.end(), [](const Mount& a, const Mount& b) {
      return a.systemId != b.systemId ? a.systemId < b.systemId
                                      : a.entry->entryName() < b.entry->entryName();
    });
    for (auto mount = mounts.begin(); mount != mounts.end();) {
      const Controller::SystemId systemId = mount->systemId;
      const auto end = std::find_if(mount, mounts.end(), [&systemId](const Mount& other) {
        return other.systemId != systemId;
      });
      sink.object(systemId.stringValue(), WhenEmpty::leaveOut, [&] {
        for (auto at = mount; at != end; ++at) {
          sink.object(at->entry->entryName(), WhenEmpty::keep, [&] { writeMount(sink, *at); });
        }
      });
      mount = end;
    }
  });
}

void StateDocument::writePublishStatus(JsonSink& sink) const {
  sink.object("publishStatus", WhenEmpty::leaveOut, [&] {
    for (const auto& service :
         entitiesOf<Controller::ServicePublishStatus>({world_.publishStatusDir().get()})) {
      sink.object(service.key, WhenEmpty::keep, [&] {
        const auto byGroup = [](const auto& group) -> const auto& { return group->groupName(); };
        for (const auto* group : sortedBy(service.entity->servicePublishGroupStatus(), byGroup)) {
          sink.object((*group)->groupName(), WhenEmpty::keep,
                      [&] { writePublishGroupStatus(sink, **group); });
        }
      });
    }
  });
}

void StateDocument::writePublished(JsonSink& sink) const {
  const Controllerdb::PublishStatus& status = *world_.publishStatus();
  sink.object("published", WhenEmpty::leaveOut, [&] {
    writeFlags(sink, "ready", status.servicePublishReady());
    sink.object("systems", WhenEmpty::leaveOut, [&] {
      const auto bySystem = [](const auto& system) -> const auto& { return system->systemId(); };
      for (const auto* system : sortedBy(status.system(), bySystem)) {
        sink.object((*system)->systemId().stringValue(), WhenEmpty::keep,
                    [&] { writePublications(sink, **system); });
      }
    });
  });
}

void StateDocument::writeRegistry(JsonSink& sink) const {
  const Controller::MountsRegistry& registry = *world_.mountsRegistry();
  sink.object("registry", WhenEmpty::leaveOut, [&] {
    sink.object("mountEntries", WhenEmpty::leaveOut, [&] {
      for (const auto* entry : sortedBy(registry.mountEntry(), kName)) {
        sink.object((*entry)->name(), WhenEmpty::leaveOut, [&] { writeMountEntry(sink, **entry); });
      }
    });
    sink.object("publishEntries", WhenEmpty::leaveOut, [&] {
      for (const auto* entry : sortedBy(registry.publishEntry(), kName)) {
        sink.object((*entry)->name(), WhenEmpty::leaveOut,
                    [&] { writePublishEntry(sink, **entry); });
      }
    });
    writeFlags(sink, "publishReady", registry.servicePublishReady());
  });
}

}  // namespace Fabric
