#pragma once

#include <iosfwd>
#include <string_view>

#include "Controllerdb/InitialMountSm/ConnectionPeriod.h"
#include "Fabric/JsonText.h"
#include "Fabric/LogCapture.h"
#include "Fabric/MountObserver.h"
#include "Fabric/StatusObserver.h"
#include "Platform/Orm/Clock.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/String.h"

namespace Fabric {

/// The event stream: what happens in a run, one JSON object a line, in the order in which it
/// happens. Each begins with `t`, the seconds of the documents, and `event`, its kind.
///
/// Lines are buffered; flush() hands them on. Loop thread only. A line costs no allocation.
class EventStream final : public MountObserver, public StatusObserver, public LogCapture::Observer {
 public:
  /// `out` must stay.
  EventStream(std::ostream& out, Orm::Ptr<Orm::Clock> clock);

  void flush() { json_.flush(); }

  /// Follows the connection period from now on: its end is told when it comes, and before the first
  /// group that completes with it.
  void connectionPeriodIs(const Orm::Ptr<Controller::ConnectionPeriod const>& period) {
    connectionPeriod_.notifierIs(period);
  }

  void note(std::string_view text);
  /// The last line of a run that an assertion stops.
  void assertion(std::string_view text);

  void mountRequest(const Controller::SystemId& systemId, const Orm::String& remotePath,
                    MountRequestKind kind) override;
  void mountState(const Controller::SystemId& systemId, const Orm::String& remotePath,
                  Controller::MountState state) override;
  void groupState(std::string_view service, std::string_view group, std::string_view system,
                  Controller::MountState state) override;
  void published(std::string_view system, const Controllerdb::MountDesc& mount) override;
  void unpublished(std::string_view system, std::string_view path) override;
  void publishReady(std::string_view service, bool ready) override;
  void connectionPeriodComplete();
  void initialMountsComplete(std::string_view service, std::string_view group,
                             bool complete) override;
  void logMessage(const LogCapture::Message& message) override;

 private:
  /// Reacts to the end of the connection period.
  class OrmConnectionPeriod final
      : public Orm::ReactorOn<Controller::ConnectionPeriod, EventStream> {
   public:
    explicit OrmConnectionPeriod(EventStream* owner) : ReactorOn(owner) {}
    void onAttribute(Orm::AttributeId, const Orm::Key&) override { owner()->handlePeriod(); }
  };

  void handlePeriod();
  void begin(std::string_view event);
  void end() { json_.endObject(); }
  void systemMember(const Controller::SystemId& systemId);

  Orm::Ptr<Orm::Clock> clock_;
  JsonText json_;
  OrmConnectionPeriod connectionPeriod_;
  bool periodTold_ = false;
  std::string scratch_;
};

}  // namespace Fabric
