#include "Fabric/Shapes.h"

#include <array>

#include "Fabric/Limits.h"

namespace Fabric {

namespace {

using Type = Shape::Type;
using Key = Shape::Key;
using Words = std::array<std::string_view, 1>;

constexpr Words kAbsent = {"absent"};
constexpr Words kNever = {"never"};
constexpr std::array<std::string_view, 3> kOutcomes = {"mounted", "failed", "stalled"};

constexpr Shape kAny{};
constexpr Shape kBoolean{.type = Type::boolean};
constexpr Shape kBooleanOrAbsent{.type = Type::boolean, .words = kAbsent};
constexpr Shape kSeconds{.type = Type::seconds};
constexpr Shape kSecondsOrNever{.type = Type::seconds, .words = kNever};
constexpr Shape kUnsigned{.type = Type::whole, .most = kMaxUnsigned};
constexpr Shape kMountTimeout{.type = Type::whole, .most = kMaxMountTimeout};
constexpr Shape kCount{.type = Type::whole, .least = 1, .most = kMaxSwitches};
constexpr Shape kOutcome{.type = Type::word, .words = kOutcomes};
constexpr Shape kText{.type = Type::text};
constexpr Shape kEntityType{.type = Type::text, .mayBeEmpty = false};
constexpr Shape kProse{.type = Type::prose};
constexpr Shape kPath{.type = Type::path};
constexpr Shape kRegistryDir{.type = Type::path, .mayBeEmpty = false};

constexpr Shape objectOf(std::string_view what, std::span<const Field> fields) {
  return {.type = Type::object, .what = what, .fields = fields};
}

constexpr Shape mapOf(std::string_view what, Key key, const Shape& member) {
  return {.type = Type::map, .what = what, .member = &member, .key = key};
}

constexpr Field kControllerFields[] = {
    {"leader", &kText},
    {"heartbeat", &kSeconds},
    {"registryDir", &kRegistryDir, true},
    {"remoteRoot", &kPath, true},
    {"mountTimeout", &kMountTimeout, true},
    {"reconnectRetries", &kUnsigned, true},
    {"mountMonitor", &kBoolean, true},
};
constexpr Shape kController = objectOf("`controller`", kControllerFields);

constexpr Field kServiceStatusFields[] = {
    {"enabled", &kBoolean},
    {"reported", &kBoolean},
    {"negotiated", &kBoolean},
    {"version", &kUnsigned},
};
constexpr Shape kServiceStatus{
    .type = Type::serviceStatus, .what = "a service status", .fields = kServiceStatusFields};
constexpr Shape kServiceStatuses = mapOf("a switch's `services`", Key::name, kServiceStatus);

constexpr Shape kOutcomesByPath = mapOf("`paths`", Key::path, kOutcome);
constexpr Field kSimulatedMountFields[] = {
    {"delay", &kSeconds},
    {"outcome", &kOutcome},
    {"paths", &kOutcomesByPath},
};
constexpr Shape kSimulatedMount = objectOf("a switch's `mount`", kSimulatedMountFields);

constexpr Field kSwitchFields[] = {
    {"name", &kText},        {"connected", &kBoolean},        {"reachable", &kBoolean},
    {"inactive", &kBoolean}, {"services", &kServiceStatuses}, {"mount", &kSimulatedMount},
    {"count", &kCount},
};
constexpr Shape kSwitch = objectOf("a switch", kSwitchFields);
constexpr Shape kSwitches = mapOf("`switches`", Key::systemId, kSwitch);

constexpr Shape kSystemFilter{
    .type = Type::filter, .what = "a system filter", .key = Key::systemId};
constexpr Shape kVersionFilter{
    .type = Type::filter, .what = "a version filter", .key = Key::version};

constexpr Field kMountPathFields[] = {
    {"type", &kText},
    {"flags", &kText},
    {"target", &kPath},
};
constexpr Shape kMountPath = objectOf("a mount path", kMountPathFields);
constexpr Shape kMountPaths = mapOf("`paths`", Key::path, kMountPath);
constexpr Field kMountGroupFields[] = {
    {"preserve", &kBoolean},
    {"systems", &kSystemFilter},
    {"versions", &kVersionFilter},
    {"paths", &kMountPaths},
};
constexpr Shape kMountGroup = objectOf("a mount group", kMountGroupFields);
constexpr Shape kMountGroups = mapOf("`groups`", Key::name, kMountGroup);
constexpr Field kMountFields[] = {
    {"generation", &kText},
    {"serviceName", &kText},
    {"status", &kBoolean},
    {"groups", &kMountGroups},
};
constexpr Shape kMount = objectOf("a service's `mount`", kMountFields);

constexpr Field kPublishPathFields[] = {
    {"remote", &kPath},
    {"type", &kText},
};
constexpr Shape kPublishPath = objectOf("a published path", kPublishPathFields);
constexpr Shape kPublishPaths = mapOf("`paths`", Key::path, kPublishPath);
constexpr Field kPublishDirFields[] = {
    {"remote", &kPath},
    {"type", &kText},
    {"ready", &kBoolean},
};
constexpr Shape kPublishDir = objectOf("a published directory", kPublishDirFields);
constexpr Shape kPublishDirs = mapOf("`dirs`", Key::path, kPublishDir);
constexpr Field kPublishGroupFields[] = {
    {"systems", &kSystemFilter},
    {"versions", &kVersionFilter},
    {"paths", &kPublishPaths},
    {"dirs", &kPublishDirs},
};
constexpr Shape kPublishGroup = objectOf("a publish group", kPublishGroupFields);
constexpr Shape kPublishGroups = mapOf("`groups`", Key::name, kPublishGroup);
constexpr Field kPublishFields[] = {
    {"generation", &kText}, {"serviceName", &kText},     {"status", &kBoolean},
    {"ready", &kBoolean},   {"groups", &kPublishGroups},
};
constexpr Shape kPublish = objectOf("a service's `publish`", kPublishFields);

constexpr Field kServiceFields[] = {
    {"enabled", &kBooleanOrAbsent},
    {"proxy", &kBoolean},
    {"mount", &kMount},
    {"publish", &kPublish},
};
constexpr Shape kService = objectOf("a service", kServiceFields);
constexpr Shape kServices = mapOf("`services`", Key::name, kService);

constexpr Shape kEntities = mapOf("`entities`", Key::entityPath, kEntityType);

constexpr Field kConnectionFields[] = {
    {"passive", &kBoolean},   {"active", &kBoolean},      {"demuxer", &kBoolean},
    {"connected", &kBoolean}, {"sync", &kSecondsOrNever},
};
constexpr Shape kConnection = objectOf("an attribute-log connection", kConnectionFields);
constexpr Shape kAttrlog = mapOf("`attrlog`", Key::name, kConnection);

constexpr Field kEventFields[] = {
    {"at", &kSeconds},
    {"note", &kProse},
    {"apply", &kAny},
    {"expect", &kAny},
};
constexpr Shape kEvent = objectOf("an event", kEventFields);

constexpr Field kDocumentFields[] = {
    {"controller", &kController}, {"switches", &kSwitches}, {"services", &kServices},
    {"entities", &kEntities},     {"attrlog", &kAttrlog},   {"until", &kSeconds, true},
    {"events", &kAny, true},
};
constexpr Shape kDocument = objectOf("the document", kDocumentFields);

// The state document. Leaves are compared as they are, so any value may be expected of them.
constexpr Shape kAnything = mapOf("an expectation", Key::any, kAny);

constexpr Field kStateMountEntryFields[] = {
    {"targetPath", &kAny}, {"type", &kAny}, {"flags", &kAny}, {"mounters", &kAnything}};
constexpr Shape kStateMountEntry = objectOf("a mount entry", kStateMountEntryFields);
constexpr Shape kStateMountEntries = mapOf("`mountEntries`", Key::any, kStateMountEntry);
constexpr Field kStatePublishEntryFields[] = {
    {"remotePath", &kAny}, {"type", &kAny}, {"prefix", &kAny}, {"service", &kAny}, {"ready", &kAny},
};
constexpr Shape kStatePublishEntry = objectOf("a publish entry", kStatePublishEntryFields);
constexpr Shape kStatePublishEntries = mapOf("`publishEntries`", Key::any, kStatePublishEntry);
constexpr Field kStateRegistryFields[] = {{"mountEntries", &kStateMountEntries},
                                          {"publishEntries", &kStatePublishEntries},
                                          {"publishReady", &kAnything}};
constexpr Shape kStateRegistry = objectOf("`registry`", kStateRegistryFields);

constexpr Field kStateMountFields[] = {
    {"state", &kAny}, {"mountPath", &kAny}, {"retries", &kAny}, {"timeout", &kAny}};
constexpr Shape kStateMount = objectOf("a mount", kStateMountFields);
constexpr Shape kStateMountsOfSwitch = mapOf("a switch's mounts", Key::any, kStateMount);
constexpr Shape kStateMounts = mapOf("`mounts`", Key::any, kStateMountsOfSwitch);

constexpr Field kStatePathFields[] = {{"state", &kAny}, {"mountedPath", &kAny}};
constexpr Shape kStatePath = objectOf("a mount status", kStatePathFields);
constexpr Shape kStatePaths = mapOf("`paths`", Key::any, kStatePath);
constexpr Field kStateGroupFields[] = {
    {"state", &kAny}, {"processed", &kAny}, {"paths", &kStatePaths}};
constexpr Shape kStateGroup = objectOf("a group's status", kStateGroupFields);
constexpr Shape kStateSystem = mapOf("a system's status", Key::any, kStateGroup);
constexpr Shape kStateSystems = mapOf("`systems`", Key::any, kStateSystem);
constexpr Field kStateMountStatusFields[] = {{"mountedPathPrefix", &kAnything},
                                             {"initialMountsComplete", &kAnything},
                                             {"systems", &kStateSystems}};
constexpr Shape kStateMountStatus = objectOf("a service's mount status", kStateMountStatusFields);
constexpr Shape kStateMountStatuses = mapOf("`mountStatus`", Key::any, kStateMountStatus);

constexpr Field kStatePublishedPathFields[] = {{"state", &kAny}};
constexpr Shape kStatePublishedPath = objectOf("a path's status", kStatePublishedPathFields);
constexpr Shape kStatePublishedPaths = mapOf("`paths`", Key::any, kStatePublishedPath);
constexpr Field kStatePublishGroupFields[] = {{"state", &kAny}, {"paths", &kStatePublishedPaths}};
constexpr Shape kStatePublishGroup = objectOf("a group's status", kStatePublishGroupFields);
constexpr Shape kStatePublishStatus =
    mapOf("a service's publish status", Key::any, kStatePublishGroup);
constexpr Shape kStatePublishStatuses = mapOf("`publishStatus`", Key::any, kStatePublishStatus);

constexpr Field kStatePublicationFields[] = {
    {"remotePath", &kAny}, {"type", &kAny}, {"flags", &kAny}, {"service", &kAny}};
constexpr Shape kStatePublication = objectOf("a publication", kStatePublicationFields);
constexpr Shape kStatePublications = mapOf("`mounts`", Key::any, kStatePublication);
constexpr Field kStatePublishedSystemFields[] = {{"mounts", &kStatePublications},
                                                 {"processed", &kAnything}};
constexpr Shape kStatePublishedSystem = objectOf("a system", kStatePublishedSystemFields);
constexpr Shape kStatePublishedSystems = mapOf("`systems`", Key::any, kStatePublishedSystem);
constexpr Field kStatePublishedFields[] = {{"ready", &kAnything},
                                           {"systems", &kStatePublishedSystems}};
constexpr Shape kStatePublished = objectOf("`published`", kStatePublishedFields);

constexpr Field kStateInitialFields[] = {{"connectionPeriodComplete", &kAny},
                                         {"initialSwitches", &kAny}};
constexpr Shape kStateInitial = objectOf("`initialMounts`", kStateInitialFields);

constexpr Field kStateFields[] = {
    {"time", &kAny},
    {"registry", &kStateRegistry},
    {"mounts", &kStateMounts},
    {"mountStatus", &kStateMountStatuses},
    {"publishStatus", &kStatePublishStatuses},
    {"published", &kStatePublished},
    {"initialMounts", &kStateInitial},
    {"log", &kAny},
};
constexpr Shape kState = objectOf("an expectation", kStateFields);

}  // namespace

const Shape& documentShape() { return kDocument; }

const Shape& blockShape(Block block) {
  constexpr std::array<const Shape*, kBlockCount> kShapes = {&kController, &kEntities, &kAttrlog,
                                                             &kServices, &kSwitches};
  return *kShapes[static_cast<std::size_t>(block)];
}

const Shape& eventShape() { return kEvent; }

const Shape& stateShape() { return kState; }

}  // namespace Fabric
