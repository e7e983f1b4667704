#include "Controllerdb/ServiceConfigDirSm/PublishDirSm.h"

#include "Controllerdb/ServiceConfigDirSm/ServiceConfigTrace.h"
#include "Controllerdb/ServiceConfigDirSm/ServicePublishGroupSm.h"

namespace Controller {

using Orm::Ptr;

Ptr<PublishDirSm> publishDirSmFactory(const Ptr<PublishDir const>& publishDir,
                                      ServicePublishGroupSm* parent) {
  return Orm::make<PublishDirSm>(publishDir, parent);
}

// ---- construct

PublishDirSm::PublishDirSm(Ptr<PublishDir const> publishDir, ServicePublishGroupSm* parent)
    : publishDir_(std::move(publishDir)), parent_(parent), ormPublishDir_(this) {}

void PublishDirSm::start() {
  ormPublishDir_.notifierIs(publishDir_);
  handleInitialized();
}

void PublishDirSm::handleInitialized() {
  CONFIG_TRACE(8, "PublishDirSm::", "handleInitialized", " ", path());
  if (initialized_) return;
  initialized_ = true;
  handlePublishDir();
  handleReadyToPublish();
}

void PublishDirSm::hasNotificationActiveIs(bool active) {
  ormPublishDir_.hasNotificationActiveIs(active);
}

// ---- react

void PublishDirSm::OrmPublishDir::onAttribute(Orm::AttributeId attribute, const Orm::Key&) {
  if (attribute == PublishDir::Attr::readyToPublish) owner()->handleReadyToPublish();
}

void PublishDirSm::handlePublishDir() {
  if (!initialized_) return;
  CONFIG_TRACE(8, "PublishDirSm::", "handlePublishDir", " ", path());
  const Ptr<ServicePublishGroupConfig const>& group = parent_->publishGroupConfig();
  if (group->publishDir(path())) parent_->addPublishDir(publishDir_, group);
}

void PublishDirSm::handleReadyToPublish() {
  if (!initialized_) return;
  CONFIG_TRACE(8, "PublishDirSm::", "handleReadyToPublish", " ", path());
  const Ptr<PublishDir const> dir(parent_->publishGroupConfig()->publishDir(path()));
  const Ptr<PublishRegistryEntry> entry(parent_->mountsRegistry()->publishEntry(path()));
  if (!dir || !entry) return;
  entry->remotePathIs(dir->remotePath());
  entry->readyToPublishIs(dir->readyToPublish());
}

// ---- clean up

void PublishDirSm::doCleanup() {
  if (cleanedUp_) return;
  CONFIG_TRACE(8, "PublishDirSm::", "doCleanup", " ", path());
  cleanedUp_ = true;
  initialized_ = false;
  hasNotificationActiveIs(false);
  parent_->removePublishDir(path());
}

}  // namespace Controller
