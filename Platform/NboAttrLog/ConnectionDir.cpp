#include "Platform/NboAttrLog/ConnectionDir.h"

namespace Orm::NboAttrLog {

namespace {

Ptr<ConnectionDir>& theInstance() {
  static Ptr<ConnectionDir> instance;
  return instance;
}

}  // namespace

const Ptr<ConnectionDir>& ConnectionDir::instance() {
  if (!theInstance()) theInstance() = make<ConnectionDir>();
  return theInstance();
}

void ConnectionDir::instanceDel() { theInstance() = nullptr; }

}  // namespace Orm::NboAttrLog
