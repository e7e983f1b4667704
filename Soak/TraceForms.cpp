#include "Soak/TraceForm.h"

namespace Soak {

namespace {

constexpr const char* kForms[] = {
    // ---- GroupProcessedSm
    "GroupProcessedSm::handleProcessed() systemName: {system}, groupName: {group}",
    // ---- InitialMountSm
    "InitialMountSm::handleInitialized",
    "InitialMountSm::handlePeer",
    "InitialMountSm::handlePeer {system}",
    "InitialMountSm::handlePeer() already in initial switch set",
    "InitialMountSm::handlePeer() reset timeMin to {number}",
    "InitialMountSm::handleConnectionTimeout: timeMin={number} connection period complete={flag}",
    "InitialMountSm::handleConnectionTimeout() initial switch set complete",
    "InitialMountSm::handleServiceMount",
    "InitialMountSm::handleServiceMount: {service}",
    "handleServiceMount({service}): creating serviceInitialMountSm",
    "handleServiceMount({service}): deleting serviceInitialMountSm",
    // ---- MountGroupInitialMountSm
    "MountGroupInitialMountSm::handleInitialized",
    "MountGroupInitialMountSm::handleConnectionPeriodComplete {flag}",
    "MountGroupInitialMountSm::handleSystemStatus",
    "MountGroupInitialMountSm::handleSystemStatus() {system} {group} exists={flag}",
    "MountGroupInitialMountSm::handleProcessed() {system} processed={flag}",
    "MountGroupInitialMountSm::handleProcessed() groupName: {group} complete={flag}",
    "MountGroupInitialMountSm::doPopulateRemainingSwitch",
    "MountGroupInitialMountSm::doPopulateRemainingSwitch() Adding remaining switch: {system}",
    "MountGroupInitialMountSm::handleMountState",
    "MountGroupInitialMountSm::handleMountState: initial switch set not yet complete",
    "MountGroupInitialMountSm::handleMountState{system} {group}",
    "handleMountState: {system} not in remaining.",
    ("MountGroupInitialMountSm::handleMountState() handleMountState: deleting remaining switch "
     "{system}"),
    "MountGroupInitialMountSm::handleMountTimeout() ",
    "MountGroupInitialMountSm::checkSwitchMountsPending",
    "checkSwitchMountsPending: no remaining switches",
    "MountGroupInitialMountSm::handleInitialMountsComplete() ",
    ("MountGroupInitialMountSm::handleInitialMountsComplete() flushLocalPassiveEntityLogs: "
     "Flushing "
     "Demuxer: {connection}"),
    ("MountGroupInitialMountSm::handleAttrlogFlushTimer() isLocalPassiveCurrentRoundSyncComplete: "
     "No Demuxer for:{connection}"),
    ("MountGroupInitialMountSm::handleAttrlogFlushTimer() isLocalPassiveCurrentRoundSyncComplete: "
     "Demuxer:{connection} connectStatus:{number} round:{number} nextRound:{number}"),
    "MountGroupInitialMountSm::handleAttrlogFlushTimer() ",
    ("MountGroupInitialMountSm::handleAttrlogFlushTimer Attrlog flush timed out for "
     "{service}:{group}"),
    ("MountGroupInitialMountSm::handleAttrlogFlushTimer Attrlog flush completed for "
     "{service}:{group}"),
    ("MountGroupInitialMountSm::handleAttrlogFlushTimer Attrlog flush not complete yet, remaining "
     "time until timeout: {number}"),
    "MountGroupInitialMountSm::doCleanup {service}:{group}",
    // ---- ServiceInitialMountSm
    "ServiceInitialMountSm::handleInitialized",
    ("ServiceInitialMountSm::canHandleMountGroup mountConfig genId:{generation} controller "
     "genId:{generation}"),
    "ServiceInitialMountSm::handleLeaderGenId {generation}",
    "ServiceInitialMountSm::handleMountGroupConfig {group}",
    "handleMountGroupConfig: adding mountGroupInitialMountSm",
    "ServiceInitialMountSm::doCleanup {service}",
    // ---- SystemProcessedSm
    "SystemProcessedSm::handleInitialized() ",
    // ---- ConnectionServiceStatusDirSm
    "ConnectionServiceStatusDirSm::handleEnabled{system}: {service} enabled: {flag}",
    "ConnectionServiceStatusDirSm::handleVersionStatus {service} {system}",
    "ConnectionServiceStatusDirSm::doCleanup",
    "ConnectionServiceStatusDirSm::doCleanup {system}",
    // ---- InactiveClientSm
    "MountsRegistrySm::handleInactivePeer( {system} )",
    "MountsRegistrySm::handleInactivePeer return",
    "InactiveClientSm::handleEnabled {service} : {flag}",
    "InactiveClientSm::handleEnabled() return",
    "InactiveClientSm::doCleanup",
    // ---- MounterConfigSm
    "MounterConfigSm::OrmSystemFilter::handleIncludedSystem: {system}",
    "MounterConfigSm::OrmVersionFilter::handleIncludedServiceVersion: version={number}",
    "MounterConfigSm::handleSystemFilter: {path}",
    "MounterConfigSm::handleVersionFilter: {path}",
    "MounterConfigSm::addSystemToConnectionFilter: {system}",
    "MounterConfigSm::addSystemToConnectionFilter()  path:{path} refcount:{number} filter:{system}",
    "MounterConfigSm::addSystemToConnectionFilter()  new filter:{system} path:{path}",
    "MounterConfigSm::removeSystemFromConnectionFilter: {system}",
    "MounterConfigSm::removeSystemFromConnectionFilter()  del filter:{system} path:{path}",
    ("MounterConfigSm::removeSystemFromConnectionFilter()  path:{path} refcount:{number} "
     "filter:{system}"),
    "MounterConfigSm::addVersionToVersionFilter: {number}",
    "MounterConfigSm::removeVersionFromVersionFilter: {number}",
    "MounterConfigSm::doCleanup",
    "MounterConfigSm::doCleanup: Deleting mount status for {path}",
    "MounterConfigSm::doCleanup: Deleting mount group status for {group}",
    "MounterConfigSm::doCleanup: Deleting system status for {system}",
    // ---- MountsRegistryEntrySm
    "MoutnsRegistryEntrySm::handleInitialized",
    "MountsRegistryEntrySm::handleMounter {path}",
    "MountsRegistryEntrySm::handleMounter()  mounter gone:{path} service:{service}",
    "MountsRegistryEntrySm::handleMounter()  new mounter:{path} service:{service} group:{group}",
    "MountsRegistryEntrySm::evaluateMounters {path}",
    ("MountsRegistryEntrySm::evaluateMounters()  wildcard mount:{path} service:{service} "
     "group:{group}"),
    "MountsRegistryEntrySm::handleSwitchConnection {path} Peer:{system}",
    "MountsRegistryEntrySm::handleSwitchConnection()  connection:{system} registered:{flag}",
    "MountsRegistryEntrySm::handleSwitchConnection()  Cannot mount:{path} from:{system}",
    "MountsRegistryEntrySm::canMountFromConnection {path} {system}",
    "MountsRegistryEntrySm::canMountFromConnection()  no version negotiated:{system}",
    "MountsRegistryEntrySm::canMountFromConnection()  wildcard mount:{system}",
    "MountsRegistryEntrySm::canMountFromConnection()  no versionfilter for {path}",
    "MountsRegistryEntrySm::canMountFromConnection()  matched versionFilter:{system}",
    "MountsRegistryEntrySm::canMountFromConnection()  version filter not matched for {system}",
    "MountsRegistryEntrySm::canMountFromConnection()  no connectionFilter for {path}",
    "MountsRegistryEntrySm::canMountFromConnection()  matched connectionFilter:{system}",
    "MountsRegistryEntrySm::canMountFromConnection()  not in connectionFilter:{system}",
    "MountsRegistryEntrySm::connectionMatchesVersionFilter {path} {system}",
    "MountsRegistryEntrySm::matchingServiceVersionFilter {service} {system}",
    "MountsRegistryEntrySm::matchingServiceVersionFilter no version filter for service {service}",
    ("MountsRegistryEntrySm::matchingServiceVersionFilter()  no version service:{service} "
     "connection:{system}"),
    "Supported version for {service} for {system} {number}",
    ("MountsRegistryEntrySm::matchingServiceVersionFilter()  matched version:{number} "
     "service:{service} connection:{system}"),
    ("MountsRegistryEntrySm::matchingServiceVersionFilter()  version:{number} not in filter "
     "service:{service} connection:{system}"),
    "MountsRegistryEntrySm::mounterIsInterestedInConnection {path}",
    "MountsRegistryEntrySm::doConnectSwitch {path} {system}",
    "MountsRegistryEntrySm::doConnectSwitch()  mounting:{path} from:{system}",
    "MountsRegistryEntrySm::doConnectSwitch()  updating status:{path} from:{system}",
    "MountsRegistryEntrySm::doConnectSwitch()  remounting:{path} from:{system}",
    "targetPath={target}/{system}",
    "MountsRegistryEntrySm::doDisconnectSwitch {path} {system}",
    "MountsRegistryEntrySm::doDisconnectSwitch()  already unmounted:{path} from:{system}",
    "MountsRegistryEntrySm::doDisconnectSwitch()  unmounting:{path} from:{system}",
    "doDisconnectSwitch: unmount is state-preserving",
    "doDisconnectSwitch: unmount is not state-preserving",
    "MountsRegistryEntrySm::preserveMountsOnDisconnect: {system}",
    ": mounter for group {group} and service {service} has preserve=1",
    "MountsRegistryEntrySm::doCleanup {path}",
    // ---- MountsRegistryEntrySmStatus
    ("MountsRegistryEntrySm::OrmMountSmDataSm::handleMountState() {path} connection:{system} "
     "oldMountState:{state} newMountState:{state}"),
    "MountsRegistryEntrySm::handleMountState: Deleting mountSm for {system}",
    "void Controller::MountsRegistryEntrySm::OrmMountSmDataSm::handleMountStateTimer()",
    "MountsRegistryEntrySm::updateMountersStatus() {path} mount state:{state} connection:{system}",
    ("MountsRegistryEntrySm::updateMounterStatus() mounter: Value('Controller::MounterName', ** "
     "{'serviceName': {service}, 'groupName': {group}}) connectionId: {system} mountState: "
     "{state}"),
    "MountsRegistryEntrySm::updateMounterStatus() no system status for: {system}",
    "serviceMountGroupStatus does not exist for mounter",
    "MountsRegistryEntrySm::updateMounterStatus() group: {group} mount: {path}%s config: {flag}",
    ("MountsRegistryEntrySm::handleMountState() {path} mount state:{state} connection:{system} "
     "service:{service} mountGroup:{group} remote path:{path}"),
    "MountsRegistryEntrySm::updateMountGroupMountState {path}",
    "MountsRegistryEntrySm::updateSystemStatus() Deleting systemStatus for: {system}",
    "MountsRegistryEntrySm::updateSystemStatus() Adding serviceMountGroupStatus for: {system}",
    "MountsRegistryEntrySm::startMountTimer, timeout period: {number}",
    "void Controller::MountsRegistryEntrySm::handleMountTimeout()",
    "MountsRegistryEntrySm::handleMountTimeout() mount in progress too long",
    "MountsRegistryEntrySm::handleMountTimeout() mount failed",
    // ---- MountsRegistrySm
    "MountsRegistrySm::handleMountEntry:  Remote Path:{path}",
    "MountsRegistrySm::handleMountEntry:  Deleting registry entry sm for :{path}",
    "MountsRegistrySm::handlePublishEntry:  Controller Path:{local}",
    "MountsRegistrySm::handlePublishEntry:  Deleting publish sm for: {local}",
    "MountsRegistrySm::handleServicePublishReady: {service}",
    "MountsRegistrySm::handleServicePublishReady() Publish entry {local} not yet processed",
    "MountsRegistrySm::handleServicePublishReady() Setting publishReady for {service}",
    "MountsRegistrySm::handlePeer {system}",
    "MountsRegistrySm::handlePeer peer:{system} added",
    "MountsRegistrySm::handlePeer peer:{system} removed",
    "MountsRegistrySm::handleSwitchConnection",
    "MountsRegistrySm::handleSwitchConnection {system}",
    "MountsRegistrySm::handleServiceVersion {service} {system}",
    "MountsRegistrySm::handleServiceSwitchConnection {system} {service}",
    "MountsRegistrySm::negotiatedServiceVersionForConnection {service} {system}",
    ("MountsRegistrySm::negotiatedServiceVersionForConnection negotiated service version for "
     "{system} for service {service} = {number}"),
    ("MountsRegistrySm::negotiatedServiceVersionForConnection no version negotiated for {system} "
     "for service {service}"),
    // ---- PublishRegistryEntrySm
    "PublishRegistryEntrySm::handleInitialized",
    "PublishRegistryEntrySm::OrmSystemFilter::handleIncludedSystem: {system}",
    "PublishRegistryEntrySm::OrmVersionFilter::handleIncludedServiceVersion: {number}",
    "PublishRegistryEntrySm::handleReadyToPublish {local}",
    "PublishRegistryEntrySm::handleSystemFilter {local}",
    "PublishRegistryEntrySm::handleVersionFilter {local}",
    "PublishRegistryEntrySm::handleEntityPresenceCheckClock()  {local}",
    "PublishRegistryEntrySm::handleSwitchConnection {local}",
    "PublishRegistryEntrySm::handleSwitchConnection() Entity at {local} doesn't exist.",
    "PublishRegistryEntrySm::handleSwitchConnection {local} {system}",
    "PublishRegistryEntrySm::handleSwitchConnection()  Cannot publish:{local} to:{system}",
    "PublishRegistryEntrySm::canPublishToConnection {local}",
    "PublishRegistryEntrySm::canPublishToConnection()  no version negotiated:{system}",
    "PublishRegistryEntrySm::canPublishToConnection() no versionFilter for {local}",
    "PublishRegistryEntrySm::canPublishToConnection()  no systemfilter for {local}",
    "PublishRegistryEntrySm::canPublishToConnection()  matched systemFilter connection:{system}",
    "PublishRegistryEntrySm::canPublishToConnection()  no matched system for connection: {system}",
    "PublishRegistryEntrySm::hasVersion",
    ("PublishRegistryEntrySm::hasVersion()  matched version: {number} service:{service} "
     "connection:{system}"),
    ("PublishRegistryEntrySm::hasVersion()  version not in filter:{number} service:{service} "
     "connection:{system}"),
    "PublishRegistryEntrySm::publishEntityExists {local}",
    "PublishRegistryEntrySm::addSwitchToPublishEntryDir {system}",
    "PublishRegistryEntrySm::doConnectSwitch {local} {system}",
    "PublishRegistryEntrySm::doConnectSwitch()  Cannot publish to:{system}",
    ("PublishRegistryEntrySm::doConnectSwitch()  publishing ssm:{system} to:{remote} type: {type} "
     "service: {service}"),
    ("PublishRegistryEntrySm::doConnectSwitch()  publishing:{local} to:{remote} on:{system} type: "
     "{type} service: {service}"),
    "PublishRegistryEntrySm::doDisconnectSwitch {system}",
    "PublishRegistryEntrySm::doDisconnectSwitch All published mounts gone for {system}",
    "PublishRegistryEntrySm::doDisconnectSwitch()  un-publishing:{local} from:{system}",
    "PublishRegistryEntrySm::doDisconnectSwitch()  un-publishing:{local}/{system} from:{system}",
    "PublishRegistryEntrySm::doCleanup {local}",
    // ---- DoCreateDirPath
    "doCreateDirPath {component}",
    "doCreateDirPath final:{component}",
    "doCreateDirPath creating final {component}",
    // ---- PublishDirSm
    "PublishDirSm::handleInitialized {local}",
    "PublishDirSm::handlePublishDir {local}",
    "PublishDirSm::handleReadyToPublish {local}",
    "PublishDirSm::doCleanup {local}",
    // ---- ServiceConfigDirSm
    "ServiceConfigDirSm::handleServiceMount: {service}",
    "ServiceConfigDirSm::handleProxyServiceMount: {service}",
    "ServiceConfigDirSm::handleServiceMountCommon: {service}",
    "ServiceConfigDirSm::handleServiceMountCommon serviceMountConfigSm already present!",
    "ServiceConfigDirSm::handleServiceMountCommon creating serviceMountConfigSm for {service}",
    "ServiceConfigDirSm::handleServiceMountCommon deleting {service} serviceMountConfigSm",
    "ServiceConfigDirSm::handleServiceMountCommon mounts not complete ",
    "ServiceConfigDirSm::handleServicePublish: {service}",
    "ServiceConfigDirSm::handleServicePublish creating servicePublishConfigSm for {service}",
    "ServiceConfigDirSm::handleServicePublish deleting {service} servicePublishConfigSm",
    "ServiceConfigDirSm::handleServicePublish mounts not complete ",
    // ---- ServiceMountConfigSm
    "ServiceMountConfigSm::handleInitialized",
    "ServiceMountConfigSm::handleServiceName()  serviceName:{service}",
    "ServiceMountConfigSm::handleMountGroupConfig",
    "ServiceMountConfigSm::handleMountGroupConfig: {group}",
    "ServiceMountConfigSm::doCleanup",
    // ---- ServiceMountGroupSm
    ("ServiceMountGroupSm::handleInitialized mountConfig genId:{generation} controller "
     "genId:{generation}"),
    "ServiceMountGroupSm::handleLeaderGenId {generation}",
    "ServiceMountGroupSm::handleMountConfig",
    "ServiceMountGroupSm::handleMountConfig: {path}",
    "ServiceMountGroupSm::canMount mountConfig genId:{generation} controller genId:{generation}",
    "ServiceMountGroupSm::addMountConfig: {path}",
    ("ServiceMountGroupSm::addMountConfig()  dup registry entry service:{service} group:{group} "
     "rpath:{path}"),
    "addMountConfig Service:{service} has already requested a mount for {path}",
    ("ServiceMountGroupSm::addMountConfig()  add mounter service:{service} group:{group} "
     "rpath:{path} path prefix:{target}"),
    ("ServiceMountGroupSm::addMountConfig()  add registry entry service:{service} group:{group} "
     "rpath:{path} tpath:{target}"),
    "ServiceMountGroupSm::removeMountConfig: {path}",
    ("ServiceMountGroupSm::removeMountConfig()  del registry entry: service:{service} "
     "group:{group} "
     "path:{path}"),
    "ServiceMountGroupSm::removeMountConfig()  all mounters gone path:{path}",
    "ServiceMountGroupSm::doCleanup",
    // ---- ServicePublishConfigSm
    "ServicePublishConfigSm::handleInitialized",
    "ServicePublishConfigSm::handleServiceName()  serviceName:{service}",
    "ServicePublishConfigSm::handlePublishGroupConfig: {service}, {group}",
    "ServicePublishConfigSm::handleLeaderGenId {generation}",
    ("ServicePublishConfigSm::handleLeaderGenId() Stale leaderGenId, cleanup publishReady flag for "
     "{service}"),
    "ServicePublishConfigSm::handlePublishReady: {service}",
    ("ServicePublishConfigSm::canPublish can:{number} publishConfig genId:{generation} controller "
     "genId:{generation}"),
    "ServicePublishConfigSm::doCleanup {service}",
    // ---- ServicePublishGroupSm
    "ServicePublishGroupSm::handleInitialized",
    "ServicePublishGroupSm::handleLeaderGenId {generation}",
    "ServicePublishGroupSm::handlePublishConfig: {local}",
    "ServicePublishGroupSm::handlePublishDir {local}",
    "ServicePublishGroupSm::handleSystemFilter {group}",
    "ServicePublishGroupSm::handleVersionFilter {group}",
    "addPublishConfig{local} already published. Ignoring publish from:{service}",
    "ServicePublishGroupSm::addPublishDir {local}",
    "addPublishDir{local} already published. Ignoring publishDir from: {service}",
    ("ServicePublishGroupSm::addPublishDirOrConfig()  adding: service:{service} cpath:{local} "
     "rpath:{remote} type:{type}"),
    "ServicePublishGroupSm::removePublishDir {local}",
    "ServicePublishGroupSm::removePublishDirOrConfig()  removing cpath:{local}",
    "ServicePublishGroupSm::doCleanup",
    // ---- messages for operators
    "ZORB_MOUNT_TIMEOUT: ZORB is unable to mount from switch {display}.",
};

}  // namespace

const std::vector<TraceForm>& traceForms() {
  static const std::vector<TraceForm> forms(std::begin(kForms), std::end(kForms));
  return forms;
}

}  // namespace Soak
