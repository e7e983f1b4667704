#pragma once

#include <map>
#include <string>
#include <string_view>

#include "Fabric/AttrlogView.h"
#include "Fabric/SimulatedDemuxer.h"
#include "Fabric/Value.h"
#include "Platform/Orm/Clock.h"

namespace Fabric {

/// Carries the block `attrlog`: the connections of the attribute-log output, with their
/// demultiplexers, which are simulated.
///
/// They stand in singletons of the process: whatever those held goes when this is made, and what
/// this put in goes with it.
class AttrlogCarrier {
 public:
  explicit AttrlogCarrier(Orm::Ptr<Orm::Clock> clock);
  ~AttrlogCarrier();
  AttrlogCarrier(const AttrlogCarrier&) = delete;
  AttrlogCarrier& operator=(const AttrlogCarrier&) = delete;

  /// `before` or `after` is null when the connection appears or goes.
  void carry(const std::string& name, const Value& before, const Value& after, const Value& patch);

  /// Calls visit(const SimulatedDemuxer&) for each that there is.
  template <class Visit>
  void walkDemuxers(Visit&& visit) const {
    for (const auto& [connection, demuxer] : demuxers_) visit(demuxer);
  }

 private:
  void appear(const std::string& name, const AttrlogView& after);
  void change(const std::string& name, const AttrlogView& after, const Value& patch);
  void disappear(const std::string& name);
  void demuxer(const std::string& name, const AttrlogView& after);
  void connected(const std::string& name, const AttrlogView& after);
  void sync(const std::string& name, const AttrlogView& after);

  Orm::Ptr<Orm::Clock> clock_;
  /// By connection; those of which the manager has a demultiplexer.
  std::map<std::string, SimulatedDemuxer, std::less<>> demuxers_;
};

}  // namespace Fabric
