#include "Fabric/EventStream.h"

#include <utility>

#include "Fabric/DocumentTime.h"

namespace Fabric {

EventStream::EventStream(std::ostream& out, Orm::Ptr<Orm::Clock> clock)
    : clock_(std::move(clock)), json_(out, JsonText::Layout::oneLine), connectionPeriod_(this) {}

void EventStream::begin(std::string_view event) {
  json_.beginObject(JsonSink::WhenEmpty::keep);
  json_.secondsMember("t", documentTime(clock_->now()));
  json_.textMember("event", event);
}

void EventStream::systemMember(const Controller::SystemId& systemId) {
  scratch_.clear();
  systemId.appendTo(scratch_);
  json_.textMember("switch", scratch_);
}

void EventStream::note(std::string_view text) {
  begin("note");
  json_.textMember("text", text);
  end();
}

void EventStream::assertion(std::string_view text) {
  begin("assertion");
  json_.textMember("text", text);
  end();
}

void EventStream::mountRequest(const Controller::SystemId& systemId, const Orm::String& remotePath,
                               MountRequestKind kind) {
  begin("request");
  systemMember(systemId);
  json_.textMember("path", remotePath);
  json_.textMember("request", name(kind));
  end();
}

void EventStream::mountState(const Controller::SystemId& systemId, const Orm::String& remotePath,
                             Controller::MountState state) {
  begin("mountState");
  systemMember(systemId);
  json_.textMember("path", remotePath);
  json_.textMember("state", name(state));
  end();
}

void EventStream::groupState(std::string_view service, std::string_view group,
                             std::string_view system, Controller::MountState state) {
  begin("groupState");
  json_.textMember("service", service);
  json_.textMember("group", group);
  json_.textMember("switch", system);
  json_.textMember("state", name(state));
  end();
}

void EventStream::published(std::string_view system, const Controllerdb::MountDesc& mount) {
  begin("published");
  json_.textMember("switch", system);
  json_.textMember("path", mount.localPath);
  json_.textMember("remotePath", mount.remotePath);
  json_.textMember("type", mount.type);
  json_.textMember("service", mount.serviceName);
  end();
}

void EventStream::unpublished(std::string_view system, std::string_view path) {
  begin("unpublished");
  json_.textMember("switch", system);
  json_.textMember("path", path);
  end();
}

void EventStream::publishReady(std::string_view service, bool ready) {
  begin("publishReady");
  json_.textMember("service", service);
  json_.booleanMember("ready", ready);
  end();
}

void EventStream::handlePeriod() {
  const Controller::ConnectionPeriod* const period = connectionPeriod_.notifier();
  if (periodTold_ || !period || !period->complete()) return;
  periodTold_ = true;
  connectionPeriodComplete();
}

void EventStream::connectionPeriodComplete() {
  begin("connectionPeriodComplete");
  end();
}

void EventStream::initialMountsComplete(std::string_view service, std::string_view group,
                                        bool complete) {
  handlePeriod();  // a group hears of it before this does
  begin("initialMountsComplete");
  json_.textMember("service", service);
  json_.textMember("group", group);
  json_.booleanMember("complete", complete);
  end();
}

void EventStream::logMessage(const LogCapture::Message& message) {
  begin("log");
  json_.textMember("id", message.handle->id());
  json_.wholeMember("severity", message.handle->severity());
  json_.textMember("text", message.text);
  end();
}

}  // namespace Fabric
