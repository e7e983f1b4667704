#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Orm/String.h"

namespace Controller {

/// Who wants a path mounted: a service and one of its mount groups. The default, with both empty,
/// names nobody and tests false. Ordered by service, then by group.
struct MounterName {
  Orm::String serviceName;
  Orm::String groupName;

  std::uint32_t hash() const { return serviceName.hash() ^ groupName.hash(); }
  explicit operator bool() const { return !(*this == MounterName()); }

  /// "Value('Controller::MounterName', ** {'serviceName': S, 'groupName': G})" with the two names
  /// as they are.
  std::string stringValue() const;
  void appendTo(std::string& out) const;
  /// Reads the string form; nothing unless the whole text is one. The service name ends at the
  /// first ", 'groupName': ".
  static std::optional<MounterName> parse(std::string_view text);

  bool operator==(const MounterName&) const = default;
  friend std::strong_ordering operator<=>(const MounterName& a, const MounterName& b) {
    const std::strong_ordering byService = a.serviceName <=> b.serviceName;
    return byService != 0 ? byService : a.groupName <=> b.groupName;
  }
};

std::ostream& operator<<(std::ostream& out, const MounterName& name);

}  // namespace Controller
