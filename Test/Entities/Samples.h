#pragma once

#include "Platform/Entities/SystemId/SystemId.h"
#include "Platform/Pomix/IpAddrPort.h"

/// Two systems, and where two clients of theirs come from.
namespace Controller::Samples {

inline const SystemId kA(Pomix::EthAddr::fromValue(1));
inline const SystemId kB(Pomix::EthAddr::fromValue(2));
inline const Pomix::IpAddrPort kFirst(Pomix::IpAddr::fromV4(0x0a000001), 1);
inline const Pomix::IpAddrPort kSecond(Pomix::IpAddr::fromV4(0x0a000001), 2);

}  // namespace Controller::Samples
