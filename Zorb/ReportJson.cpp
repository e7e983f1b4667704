#include "Zorb/ReportJson.h"

#include "Fabric/JsonText.h"

namespace Zorb {

using Fabric::JsonText;
using Fabric::Report;
using WhenEmpty = Fabric::JsonSink::WhenEmpty;

namespace {

void wholeMember(JsonText& json, std::string_view name, std::size_t value) {
  json.wholeMember(name, static_cast<std::int64_t>(value));
}

void writeSwitches(JsonText& json, const Report& report) {
  json.object("switches", WhenEmpty::keep, [&] {
    wholeMember(json, "known", report.switches.size());
    wholeMember(json, "connected", report.connectedSwitches());
    wholeMember(json, "inactive", report.inactiveSwitches());
    json.array("notConnected", WhenEmpty::leaveOut, [&] {
      for (const Report::Switch& one : report.switches) {
        if (!one.connected) json.text(one.id);
      }
    });
    json.object("names", WhenEmpty::leaveOut, [&] {
      for (const Report::Switch& one : report.switches) {
        json.textMemberUnlessEmpty(one.id, one.name);
      }
    });
  });
}

void writeMissing(JsonText& json, const Report& report, const Report::Missing& missing) {
  json.beginObject(WhenEmpty::keep);
  json.textMember("reason", reasonOf(missing));
  if (missing.timeFirst) {
    const bool asked = missing.cause != Report::Cause::refused;
    json.secondsMember(asked ? "askedFirst" : "nextLookFirst", *missing.timeFirst);
    json.secondsMember(asked ? "askedLast" : "nextLookLast", *missing.timeLast);
  }
  json.array("paths", WhenEmpty::keep, [&] {
    for (const std::string& path : missing.paths) json.text(path);
  });
  json.array("switches", WhenEmpty::keep, [&] {
    for (const std::uint32_t at : missing.switches) json.text(report.switches[at].id);
  });
  json.endObject();
}

void writeInitialMounts(JsonText& json, const Fabric::InitialMounts& mounts) {
  using Phase = Fabric::InitialMounts::Phase;
  json.object("initialMounts", WhenEmpty::keep, [&] {
    json.textMember("phase", name(mounts.phase));
    if (mounts.time) {
      json.secondsMember(mounts.phase == Phase::complete ? "since" : "until", *mounts.time);
    }
    if (mounts.phase != Phase::connectionPeriod) wholeMember(json, "snapshot", mounts.snapshot);
    json.object("waitsFor", WhenEmpty::leaveOut, [&] {
      for (const auto& one : mounts.switches) {
        json.array(one.id, WhenEmpty::keep, [&] {
          for (const std::string& path : one.paths) json.text(path);
        });
      }
    });
    json.array("connections", WhenEmpty::leaveOut, [&] {
      for (const std::string& connection : mounts.connections) json.text(connection);
    });
  });
}

void writeGroup(JsonText& json, const Report& report, const Report::Group& group) {
  json.beginObject(WhenEmpty::keep);
  json.textMember("service", group.service);
  json.textMember("group", group.group);
  json.booleanMember("proxy", group.proxy);
  wholeMember(json, "paths", group.paths);
  json.textMemberUnlessEmpty("notInForce", group.notInForce);
  if (group.notInForce.empty()) {
    json.object("switches", WhenEmpty::keep, [&] {
      wholeMember(json, "mounted", group.counts.mounted);
      wholeMember(json, "inProgress", group.counts.inProgress);
      wholeMember(json, "failed", group.counts.failed);
      wholeMember(json, "notAdmitted", group.counts.notAdmitted);
      wholeMember(json, "notConnected", group.counts.notConnected);
    });
    json.array("notMounted", WhenEmpty::leaveOut, [&] {
      for (const Report::Missing& missing : group.missing) writeMissing(json, report, missing);
    });
  }
  if (group.initialMounts) writeInitialMounts(json, *group.initialMounts);
  json.endObject();
}

void writePublishGroup(JsonText& json, const Report& report, const Report::PublishGroup& group) {
  json.beginObject(WhenEmpty::keep);
  json.textMember("service", group.service);
  json.textMember("group", group.group);
  json.textMember("readiness", text(group.readiness));
  wholeMember(json, "paths", group.paths);
  json.textMemberUnlessEmpty("notInForce", group.notInForce);
  if (group.notInForce.empty()) {
    json.object("switches", WhenEmpty::keep, [&] {
      wholeMember(json, "published", group.counts.published);
      wholeMember(json, "waiting", group.counts.waiting);
      wholeMember(json, "notAdmitted", group.counts.notAdmitted);
      wholeMember(json, "notConnected", group.counts.notConnected);
    });
    json.array("notPublished", WhenEmpty::leaveOut, [&] {
      for (const Report::Missing& missing : group.missing) writeMissing(json, report, missing);
    });
  }
  json.endObject();
}

void writeLog(JsonText& json, const Report& report) {
  json.array("log", WhenEmpty::leaveOut, [&] {
    for (const auto& message : report.log) {
      json.beginObject(WhenEmpty::keep);
      json.secondsMember("time", message.time);
      json.textMember("id", message.handle->id());
      json.wholeMember("severity", message.handle->severity());
      json.textMember("text", message.text);
      json.endObject();
    }
  });
}

void writeFailure(JsonText& json, const Report::Expectation& expectation,
                  const Fabric::ExpectFailure& failure) {
  json.beginObject(WhenEmpty::keep);
  json.secondsMember("time", expectation.time);
  json.wholeMember("line", expectation.mark.line);
  json.wholeMember("column", expectation.mark.column);
  json.textMember("path", failure.path);
  json.textMember("expected", failure.expected);
  json.textMember("actual", failure.actual);
  json.endObject();
}

void writeExpectations(JsonText& json, const Report& report) {
  json.object("expectations", WhenEmpty::keep, [&] {
    wholeMember(json, "checked", report.expectations.size());
    wholeMember(json, "failed", report.failedExpectations());
    wholeMember(json, "notReached", report.expectationsNotReached);
    json.array("failures", WhenEmpty::leaveOut, [&] {
      for (const Report::Expectation& expectation : report.expectations) {
        for (const auto& failure : expectation.failures) writeFailure(json, expectation, failure);
      }
    });
  });
}

}  // namespace

void writeReportJson(const Report& report, std::ostream& out) {
  JsonText json(out, JsonText::Layout::indented);
  json.beginObject(WhenEmpty::keep);
  json.textMember("document", report.document);
  json.secondsMember("time", report.time);
  if (report.interrupted) json.booleanMember("interrupted", true);
  json.textMemberUnlessEmpty("leader", report.leader);
  writeSwitches(json, report);
  json.array("groups", WhenEmpty::keep, [&] {
    for (const Report::Group& group : report.groups) writeGroup(json, report, group);
  });
  json.array("publishGroups", WhenEmpty::keep, [&] {
    for (const Report::PublishGroup& group : report.publishGroups) {
      writePublishGroup(json, report, group);
    }
  });
  writeLog(json, report);
  writeExpectations(json, report);
  json.endObject();
}

}  // namespace Zorb
