#include "Fabric/FilterCarrier.h"

#include <charconv>

namespace Fabric {

using Controller::MountFilterServiceVersion;
using Controller::MountFilterSystem;
using Orm::String;

namespace {

/// What the two kinds of filters have in common, under names of one kind.
struct Systems {
  MountFilterSystem& filter;

  static String keyOf(std::string_view key) { return String(key); }
  static bool has(const Object& members, const String& system) {
    return members.find(system.view()) != nullptr;
  }
  void is(const String& system, bool included) { filter.includedSystemIs(system, included); }
  void del(const String& system) { filter.includedSystemDel(system); }
  const auto& members() const { return filter.includedSystem(); }
};

struct Versions {
  MountFilterServiceVersion& filter;

  static std::uint32_t keyOf(std::string_view key) { return GroupView::versionOf(key); }
  static bool has(const Object& members, std::uint32_t version) {
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, version).ptr;
    return members.find(std::string_view(digits, static_cast<std::size_t>(end - digits))) !=
           nullptr;
  }
  void is(std::uint32_t version, bool included) {
    filter.includedServiceVersionIs(version, included);
  }
  void del(std::uint32_t version) { filter.includedServiceVersionDel(version); }
  const auto& members() const { return filter.includedServiceVersion(); }
};

template <class Filter>
void editMembers(Filter filter, const Object& patch) {
  if (patch.replaces()) {
    filter.members().walk([&](const auto& key, bool) {
      if (!Filter::has(patch, key)) filter.del(key);
    });
  }
  for (const Object::Member& member : patch) {
    const auto key = Filter::keyOf(*member.key);
    if (member.value.isNull()) {
      filter.del(key);
    } else {
      filter.is(key, member.value.boolean());
    }
  }
}

}  // namespace

void edit(MountFilterSystem& filter, const Object& patch) { editMembers(Systems{filter}, patch); }

void edit(MountFilterServiceVersion& filter, const Object& patch) {
  editMembers(Versions{filter}, patch);
}

Orm::Ptr<MountFilterSystem> newSystemFilter(const String& name, const Object& members) {
  auto filter = Orm::make<MountFilterSystem>(name);
  edit(*filter, members);
  return filter;
}

Orm::Ptr<MountFilterServiceVersion> newVersionFilter(const String& name, const Object& members) {
  auto filter = Orm::make<MountFilterServiceVersion>(name);
  edit(*filter, members);
  return filter;
}

}  // namespace Fabric
