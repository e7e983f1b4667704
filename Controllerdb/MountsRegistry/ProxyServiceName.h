#pragma once

#include <string_view>

#include "Platform/Orm/String.h"

namespace Controller {

/// A proxy service is named by the service that it stands for and this suffix.
inline constexpr std::string_view kProxySuffix = "-Proxy";

/// True when the name's last "-Proxy" ends where the name ends; so is "-Proxy" itself.
inline bool isProxyServiceName(const Orm::String& name) {
  const std::string_view text = name.view();
  return text.size() >= kProxySuffix.size() && text.back() == kProxySuffix.back() &&
         text.ends_with(kProxySuffix);
}

/// The name without the suffix; only for names of which isProxyServiceName is true. Allocates.
Orm::String realServiceNameOfProxy(const Orm::String& name);

/// The name of the service that versions are negotiated for: the name itself, or the real service
/// of a proxy. Allocates for a proxy only.
Orm::String realServiceName(const Orm::String& name);

/// Whether `name`, or the real service of a proxy, is `realName`. Allocates nothing.
bool isRealServiceName(const Orm::String& name, const Orm::String& realName);

}  // namespace Controller
