#pragma once

#include "Platform/NboAttrLog/Demuxer.h"
#include "Platform/Orm/CollectionOwner.h"

namespace Orm {

namespace NboAttrLog {

/// The demultiplexers of the attribute log, by the name of their connection.
class DemuxerManager : public CollectionOwner, private Kobble::Counted<DemuxerManager> {
 public:
  struct Attr {
    enum : AttributeId { demuxer };
  };
  using Demuxers = Collection<Ptr<Demuxer>, &Demuxer::name>;

  const Demuxers& demuxer() const { return demuxer_; }
  Demuxer* demuxer(const String& name) const { return demuxer_.find(name); }
  Ptr<Demuxer> demuxerIs(const String& name) {
    if (Demuxer* present = demuxer_.find(name)) return present;
    return memberIs(demuxer_, Attr::demuxer, make<Demuxer>(name));
  }
  void demuxerDel(const String& name) { memberDel(demuxer_, Attr::demuxer, name); }
  void demuxerDelAll() { memberDelAll(demuxer_, Attr::demuxer); }

 private:
  Demuxers demuxer_;
};

}  // namespace NboAttrLog

/// The process's manager; created empty when there is none.
const Ptr<NboAttrLog::DemuxerManager>& globalNboAttrLogDemuxerManager();
/// Drops the process's manager.
void globalNboAttrLogDemuxerManagerDel();

}  // namespace Orm
