#pragma once

#include <cstdint>

#include "Platform/Entities/ServiceStatus/NegotiationPart.h"

namespace Controller {

/// What a switch and the controller have negotiated about one service's version.
class ServiceVersionStatusV1 : public NegotiationPart,
                               private Kobble::Counted<ServiceVersionStatusV1> {
 public:
  struct Attr {
    enum : Orm::AttributeId { reported, negotiated, version };
  };

  ServiceVersionStatusV1() = default;
  ServiceVersionStatusV1(bool reported, bool negotiated, std::uint32_t version)
      : reported_(reported), negotiated_(negotiated), version_(version) {}

  /// The switch has published this status.
  bool reported() const { return reported_; }
  void reportedIs(bool reported) { assign(reported_, reported, Attr::reported); }

  /// A version has been negotiated.
  bool negotiated() const { return negotiated_; }
  void negotiatedIs(bool negotiated) { assign(negotiated_, negotiated, Attr::negotiated); }

  std::uint32_t version() const { return version_; }
  void versionIs(std::uint32_t version) { assign(version_, version, Attr::version); }

 private:
  bool reported_ = false;
  bool negotiated_ = false;
  std::uint32_t version_ = 0;
};

}  // namespace Controller
