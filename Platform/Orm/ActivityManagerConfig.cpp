#include "Platform/Orm/ActivityManagerConfig.h"

#include <memory>

namespace Orm {

namespace {

Ptr<ActivityManagerConfig>& theInstance() {
  static Ptr<ActivityManagerConfig> instance;
  return instance;
}

}  // namespace

const Ptr<ActivityManagerConfig>& ActivityManagerConfig::instance() {
  if (!theInstance()) instanceIs(make<Clock>(std::make_unique<RealTime>(0)));
  return theInstance();
}

void ActivityManagerConfig::instanceIs(const Ptr<Clock>& clock) {
  theInstance() = clock ? make<ActivityManagerConfig>(clock) : nullptr;
}

}  // namespace Orm
