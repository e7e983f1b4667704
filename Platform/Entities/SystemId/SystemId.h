#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Orm/Inline.h"
#include "Platform/Orm/String.h"
#include "Platform/Pomix/EthAddr.h"

namespace Controller {

/// Identifies a connected switch: its Ethernet address, compared and hashed as a value. The text
/// form is the name of the switch's connection and the key of what is kept per connection.
class SystemId {
 public:
  static constexpr bool kPlainValue = true;

  constexpr SystemId() = default;
  explicit constexpr SystemId(Pomix::EthAddr address) : address_(address) {}

  /// Nothing unless the whole text is an address.
  static std::optional<SystemId> parse(std::string_view text);
  /// The system of a connection's name, which is known to be one; stops the process otherwise.
  static SystemId ofName(std::string_view connectionName);

  const Pomix::EthAddr& address() const { return address_; }
  std::uint32_t hash() const { return address_.hash(); }

  /// The text form. Formats and allocates: what is decided often keeps the text beside the id.
  Orm::String stringValue() const;
  void appendTo(std::string& out) const { address_.appendTo(out); }

  ORM_ALWAYS_INLINE friend constexpr bool operator==(const SystemId& a, const SystemId& b) {
    return a.address_ == b.address_;
  }
  friend constexpr auto operator<=>(const SystemId&, const SystemId&) = default;

 private:
  Pomix::EthAddr address_;
};

static_assert(sizeof(SystemId) == 6);

}  // namespace Controller
