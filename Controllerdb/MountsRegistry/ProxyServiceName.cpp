#include "Controllerdb/MountsRegistry/ProxyServiceName.h"

namespace Controller {

using Orm::String;

String realServiceNameOfProxy(const String& name) {
  return name.substr(0, name.size() - kProxySuffix.size());
}

String realServiceName(const String& name) {
  return isProxyServiceName(name) ? realServiceNameOfProxy(name) : name;
}

bool isRealServiceName(const String& name, const String& realName) {
  if (!isProxyServiceName(name)) return name == realName;
  return name.view().substr(0, name.size() - kProxySuffix.size()) == realName.view();
}

}  // namespace Controller
