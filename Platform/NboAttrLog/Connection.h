#pragma once

#include <cstdint>

#include "Platform/NboAttrLog/ConnectionStatus.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/String.h"

namespace Orm::NboAttrLog {

/// How a connection of the attribute-log output came about. The library acts on the passive mode
/// alone.
enum class Mode : std::uint8_t { none = 0, active = 1, passive = 2 };

/// One connection of the attribute-log output. A member of the ConnectionDir.
class Connection : public Entity, private Kobble::Counted<Connection> {
 public:
  struct Attr {
    enum : AttributeId { mode, status };
  };

  explicit Connection(String name) : name_(std::move(name)) {}

  const String& name() const { return name_; }

  Mode mode() const { return mode_; }
  void modeIs(Mode mode) { assign(mode_, mode, Attr::mode); }

  /// Null while none is linked.
  const Ptr<ConnectionStatus>& status() const { return status_; }
  void statusIs(Ptr<ConnectionStatus> status) { assign(status_, std::move(status), Attr::status); }

 private:
  String name_;
  Ptr<ConnectionStatus> status_;
  Mode mode_ = Mode::none;
};

}  // namespace Orm::NboAttrLog
