#include <gtest/gtest.h>

#include "Controllerdb/MountsRegistry/MounterConfigSm.h"
#include "Controllerdb/ServiceConfigDirSm/PublishDirSm.h"
#include "Controllerdb/ServiceConfigDirSm/ServicePublishConfigSm.h"
#include "Test/Support/PublishFixture.h"
#include "Test/Support/Recorder.h"

namespace {

using namespace Controller;
using Orm::AttributeId;
using Orm::Key;
using Orm::Ptr;
using Support::Recorder;

constexpr const char* kMounted = "topology/status";

/// Whoever was registered before a machine is told before it, and may put something else in the
/// place of what has just gone: the machine's child is then made anew.
class ReplacedTest : public Support::PublishFixture {};

TEST_F(ReplacedTest, AMountEntry) {
  registry()->mountEntryIs(kMounted, "/before", "T", "r");
  const Recorder first(registry(), [this](AttributeId attribute, const Key&) {
    if (attribute == MountsRegistry::Attr::mountEntry && !registry()->mountEntry(kMounted)) {
      registry()->mountEntryIs(kMounted, "/after", "T", "r");
    }
  });
  startRegistry();
  EXPECT_EQ(entrySm(kMounted).registryEntry()->targetPath(), "/before");
  registry()->mountEntryDel(kMounted);
  EXPECT_EQ(entrySm(kMounted).registryEntry()->targetPath(), "/after");
  EXPECT_EQ(registrySm().mountsRegistryEntrySm().size(), 1U);
}

TEST_F(ReplacedTest, AMounter) {
  startConfig();
  service(kService).group("default").path(kMounted);
  const Ptr<MountsRegistryEntry> entry(registry()->mountEntry(kMounted));
  const Ptr<Mounter> before(entry->mounter(kService));
  const Recorder first(entry, [&](AttributeId, const Key&) {
    if (entry->mounter(kService)) return;
    entry->mounterIs(before->mounterName(), before->mountConfig(), before->mountGroupConfig(),
                     before->serviceMountStatus());
  });
  startRegistry();
  EXPECT_EQ(entrySm(kMounted).mounterConfigSm().find(kService)->mounter(), before);
  entry->mounterDel(kService);
  ASSERT_NE(entry->mounter(kService), before.get());
  EXPECT_EQ(entrySm(kMounted).mounterConfigSm().find(kService)->mounter().get(),
            entry->mounter(kService));
  stopRegistry();
}

TEST_F(ReplacedTest, AMountGroup) {
  const Support::MountService mounts = service(kService);
  mounts.group("default").path(kMounted);
  const Recorder first(mounts.configPtr(), [&](AttributeId attribute, const Key&) {
    if (attribute == ServiceMountConfig::Attr::mountGroupConfig &&
        !mounts.config().mountGroupConfig("default")) {
      mounts.group("default").path("other");
    }
  });
  startConfig();
  mounts.withoutGroup("default");
  const ServiceMountConfigSm* const machine = configSm().serviceMountConfigSm().find(kService);
  EXPECT_EQ(machine->mountGroupSm().find("default")->mountGroupConfig().get(),
            mounts.config().mountGroupConfig("default"));
  EXPECT_EQ(registry()->mountEntry(kMounted)->mounter(kService), nullptr);
  EXPECT_NE(registry()->mountEntry("other")->mounter(kService), nullptr);
}

TEST_F(ReplacedTest, APublishGroup) {
  const Support::PublishService publications = publisher(kService);
  publications.group("default").publishConfigIs(kPath, "remote", "Topology::Config");
  const Recorder first(publications.config, [&](AttributeId attribute, const Key&) {
    if (attribute == ServicePublishConfig::Attr::publishGroupConfig &&
        !publications.config->publishGroupConfig("default")) {
      publications.group("default").publishConfigIs("/other", "remote", "Topology::Config");
    }
  });
  startConfig();
  publications.config->publishGroupConfigDel("default");
  EXPECT_EQ(publishConfigSm(kService)->publishGroupSm().find("default")->publishGroupConfig().get(),
            publications.config->publishGroupConfig("default"));
  EXPECT_EQ(registry()->publishEntry(kPath), nullptr);
  EXPECT_NE(registry()->publishEntry("/other"), nullptr);
}

TEST_F(ReplacedTest, APublishedDirectory) {
  ServicePublishGroupConfig& group = publisher(kService).group("default");
  group.publishDirIs("/each", "Topology::Mine", "before");
  const Recorder first(Ptr<ServicePublishGroupConfig>(&group), [&](AttributeId attribute,
                                                                   const Key&) {
    if (attribute == ServicePublishGroupConfig::Attr::publishDir && !group.publishDir("/each")) {
      group.publishDirIs("/each", "Topology::Mine", "after");
    }
  });
  startConfig();
  EXPECT_EQ(registry()->publishEntry("/each")->remotePath(), "before");
  group.publishDirDel("/each");
  EXPECT_EQ(registry()->publishEntry("/each")->remotePath(), "after");
}

class RepeatedTest : public Support::PublishFixture {
 protected:
  RepeatedTest() { start(); }
};

TEST_F(RepeatedTest, WhatIsThereIsNotMadeAgain) {
  const Support::MountService mounts = service(kService);
  mounts.group("default").path(kMounted);
  connect(kOne, {{kService, 3}});
  ServiceStatusDir& statuses = serviceStatusDir(kOne);
  EXPECT_EQ(statuses.serviceIs(kService).get(), statuses.service(kService));

  MountsRegistryEntrySm& entry = entrySm(kMounted);
  MounterConfigSm* const mounter = entry.mounterConfigSm().find(kService);
  EXPECT_EQ(entry.mounterConfigSmIs(mounter->mounter()).get(), mounter);
  EXPECT_EQ(entry.mountSmDataIs(systemId(kOne), ""), entry.mountSmData(systemId(kOne)));

  EXPECT_EQ(configSm()
                .serviceMountConfigSmIs(kService, false, controllerdbStatus(), mounts.configPtr(),
                                        mounts.statusPtr(), registry())
                .get(),
            configSm().serviceMountConfigSm().find(kService));
  const Support::PublishService publications = publisher(kService);
  EXPECT_EQ(configSm()
                .servicePublishConfigSmIs(kService, controllerdbStatus(), publications.config,
                                          publications.status, publishStatus(), registry())
                .get(),
            configSm().servicePublishConfigSm().find(kService));
}

/// A machine that its parent has cleaned up may still be told of something.
TEST_F(RepeatedTest, AMachineThatIsCleanedUpDoesNothing) {
  const Support::MountService mounts = service(kService);
  mounts.group("default").path(kMounted);
  const Ptr<ServiceMountConfigSm> service(configSm().serviceMountConfigSm().find(kService));
  const Ptr<MounterConfigSm> mounter(entrySm(kMounted).mounterConfigSm().find(kService));

  configSm().serviceMountConfigSmDel(kService);
  ASSERT_EQ(registry()->mountEntry(kMounted)->mounter(kService), nullptr);
  service->handleMountGroupConfig();
  EXPECT_EQ(registry()->mountEntry(kMounted)->mounter(kService), nullptr);

  mounter->addSystemToConnectionFilter(kOne);
  mounter->addVersionToVersionFilter(3);
  mounter->removeSystemFromConnectionFilter(kOne);
  EXPECT_TRUE(entrySm(kMounted).connectionFilter().empty());
  EXPECT_TRUE(entrySm(kMounted).versionFilter().empty());
}

TEST_F(RepeatedTest, APublishedDirectoryThatIsCleanedUpDoesNothing) {
  publisher(kService).group("default").publishDirIs("/each", "Topology::Mine", "remote");
  const auto& groups = publishConfigSm(kService)->publishGroupSm();
  const Ptr<PublishDirSm> dir(groups.find("default")->publishDirSm().find("/each"));
  dir->doCleanup();
  ASSERT_EQ(registry()->publishEntry("/each"), nullptr);
  dir->handlePublishDir();
  dir->handleReadyToPublish();
  EXPECT_EQ(registry()->publishEntry("/each"), nullptr);
}

}  // namespace
