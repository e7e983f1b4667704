#include "Platform/NboAttrLog/DemuxerManager.h"

namespace Orm {

namespace {

Ptr<NboAttrLog::DemuxerManager>& theManager() {
  static Ptr<NboAttrLog::DemuxerManager> manager;
  return manager;
}

}  // namespace

const Ptr<NboAttrLog::DemuxerManager>& globalNboAttrLogDemuxerManager() {
  if (!theManager()) theManager() = make<NboAttrLog::DemuxerManager>();
  return theManager();
}

void globalNboAttrLogDemuxerManagerDel() { theManager() = nullptr; }

}  // namespace Orm
