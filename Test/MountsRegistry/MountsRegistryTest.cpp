#include <gtest/gtest.h>

#include "Controllerdb/MountsRegistry/MountsRegistry.h"
#include "Platform/Orm/MutatorReinstantiatingError.h"
#include "Test/Support/Recorder.h"

namespace Controller {
namespace {

using Orm::MutatorReinstantiatingError;
using Orm::Ptr;
using Orm::String;
using Support::Recorder;

class MountsRegistryTest : public testing::Test {
 protected:
  Ptr<PublishRegistryEntry> publish(const String& remotePath = "remote", const String& type = "T",
                                    bool prefix = false, const String& service = "S",
                                    const Ptr<MountFilterServiceVersion const>& versions = nullptr,
                                    const Ptr<MountFilterSystem const>& systems = nullptr) {
    return registry_->publishEntryIs("local", remotePath, type, prefix, service, versions, systems);
  }

  Ptr<Fennix::Dir> root_ = Orm::make<Fennix::Dir>();
  Ptr<Fennix::Dir> mounts_ = root_->createDir("mounts");
  Ptr<MountsRegistry> registry_ =
      Orm::make<MountsRegistry>(mounts_, "/mounts", root_, "/switch", 7U, 2.5);
};

/// What `call` raises: the attribute that the error names.
template <class Call>
std::string raised(Call&& call) {
  try {
    call();
  } catch (const MutatorReinstantiatingError& error) {
    return error.attribute();
  }
  return "nothing";
}

TEST_F(MountsRegistryTest, StartsEmptyWithItsSettings) {
  EXPECT_EQ(mounts_, registry_->registryDir());
  EXPECT_EQ("/mounts", registry_->registryDirPath());
  EXPECT_EQ(root_, registry_->rootDir());
  EXPECT_EQ("/switch", registry_->remoteRootPath());
  EXPECT_EQ(7U, registry_->reconnectRetries());
  EXPECT_EQ(2.5, registry_->mountTimeout());
  EXPECT_TRUE(registry_->mountEntry().empty());
  EXPECT_TRUE(registry_->publishEntry().empty());
  EXPECT_TRUE(registry_->servicePublishReady().empty());
}

TEST_F(MountsRegistryTest, MountEntryCreatedTwiceAlike_IsOneEntryAndOneNotification) {
  Recorder recorder(registry_);
  const Ptr<MountsRegistryEntry> entry = registry_->mountEntryIs("a/b", "/mounts/a/b", "T", "r");
  EXPECT_EQ(entry, registry_->mountEntryIs("a/b", "/mounts/a/b", "T", "r"));
  EXPECT_EQ(1U, recorder.told(MountsRegistry::Attr::mountEntry));
  EXPECT_EQ(1U, recorder.told());
}

TEST_F(MountsRegistryTest, NewMountEntry_HoldsItsArgumentsAndItsRegistry) {
  const Ptr<MountsRegistryEntry> entry = registry_->mountEntryIs("a/b", "/mounts/a/b", "T", "r");
  EXPECT_EQ("a/b", entry->name());
  EXPECT_EQ("/mounts/a/b", entry->targetPath());
  EXPECT_EQ("T", entry->ormType());
  EXPECT_EQ("r", entry->mountFlags());
  EXPECT_EQ(registry_.get(), entry->mountsRegistry());
  EXPECT_TRUE(entry->hasNotificationActive());
  EXPECT_TRUE(entry->mounter().empty());
}

TEST_F(MountsRegistryTest, MountEntryWithOtherArguments_RaisesForTheFirstThatDiffers) {
  const Ptr<MountsRegistryEntry> entry = registry_->mountEntryIs("p", "/t", "T", "r");
  Recorder recorder(registry_);
  EXPECT_EQ("targetPath", raised([&] { registry_->mountEntryIs("p", "/u", "U", "w"); }));
  EXPECT_EQ("ormType", raised([&] { registry_->mountEntryIs("p", "/t", "U", "w"); }));
  EXPECT_EQ("mountFlags", raised([&] { registry_->mountEntryIs("p", "/t", "T", "w"); }));
  EXPECT_EQ(entry.get(), registry_->mountEntry("p"));
  EXPECT_EQ("/t", entry->targetPath());
  EXPECT_EQ("T", entry->ormType());
  EXPECT_EQ("r", entry->mountFlags());
  EXPECT_EQ(0U, recorder.told());
}

TEST_F(MountsRegistryTest, MountEntryDeleted_IsToldOnce) {
  registry_->mountEntryIs("p", "/t", "T", "r");
  Recorder recorder(registry_);
  registry_->mountEntryDel("p");
  registry_->mountEntryDel("p");
  registry_->mountEntryDel("never there");
  EXPECT_EQ(1U, recorder.told());
  EXPECT_EQ(nullptr, registry_->mountEntry("p"));
}

TEST_F(MountsRegistryTest, AllMountEntriesDeleted_EachIsTold) {
  for (const char* path : {"a", "b", "c"}) registry_->mountEntryIs(path, "/t", "T", "r");
  std::vector<String> keys;
  Recorder recorder(registry_, [&keys](Orm::AttributeId, const Orm::Key& key) {
    keys.push_back(key.as<String>());
  });
  registry_->mountEntryDelAll();
  EXPECT_EQ((std::vector<String>{"a", "b", "c"}), keys);
  EXPECT_TRUE(registry_->mountEntry().empty());
}

TEST_F(MountsRegistryTest, PublishEntryCreatedTwiceAlike_IsOneEntryAndOneNotification) {
  Recorder recorder(registry_);
  const Ptr<PublishRegistryEntry> entry = publish();
  EXPECT_EQ(entry, publish());
  EXPECT_EQ(1U, recorder.told(MountsRegistry::Attr::publishEntry));
  EXPECT_FALSE(entry->readyToPublish());
  EXPECT_EQ(registry_.get(), entry->mountsRegistry());
}

TEST_F(MountsRegistryTest, PublishEntryWithOtherArguments_RaisesForTheFirstThatDiffers) {
  publish();
  const auto versions = Orm::make<MountFilterServiceVersion>("v");
  const auto systems = Orm::make<MountFilterSystem>("s");
  EXPECT_EQ("remotePath", raised([&] { publish("x", "U", true, "Z", versions, systems); }));
  EXPECT_EQ("type", raised([&] { publish("remote", "U", true, "Z", versions, systems); }));
  EXPECT_EQ("isPrefixPath", raised([&] { publish("remote", "T", true, "Z", versions, systems); }));
  EXPECT_EQ("serviceName", raised([&] { publish("remote", "T", false, "Z", versions, systems); }));
  EXPECT_EQ("versionFilter",
            raised([&] { publish("remote", "T", false, "S", versions, systems); }));
  EXPECT_EQ("systemFilter", raised([&] { publish("remote", "T", false, "S", nullptr, systems); }));
}

TEST_F(MountsRegistryTest, AbsentPublishEntryDeleted_NotifiesNobody) {
  Recorder recorder(registry_);
  registry_->publishEntryDel("local");
  EXPECT_EQ(0U, recorder.told());
}

TEST_F(MountsRegistryTest, ReadyToPublishSetToWhatItIs_NotifiesNobody) {
  const Ptr<PublishRegistryEntry> entry = publish();
  Recorder recorder(entry);
  entry->readyToPublishIs(false);
  EXPECT_EQ(0U, recorder.told());
  entry->readyToPublishIs(true);
  entry->readyToPublishIs(true);
  EXPECT_EQ(1U, recorder.told(PublishRegistryEntry::Attr::readyToPublish));
}

TEST_F(MountsRegistryTest, PublishEntrysMutableAttributes_TellOfEachChangeOnce) {
  const Ptr<PublishRegistryEntry> entry = publish();
  Recorder recorder(entry);
  const auto systems = Orm::make<MountFilterSystem>("s");
  const auto versions = Orm::make<MountFilterServiceVersion>("v");
  for (int time = 0; time != 2; ++time) {
    entry->remotePathIs("elsewhere");
    entry->systemFilterIs(systems);
    entry->versionFilterIs(versions);
  }
  EXPECT_EQ((std::vector<Orm::AttributeId>{PublishRegistryEntry::Attr::remotePath,
                                           PublishRegistryEntry::Attr::systemFilter,
                                           PublishRegistryEntry::Attr::versionFilter}),
            recorder.attributes());
}

TEST_F(MountsRegistryTest, ServicePublishReady_FollowsTheRulesOfValues) {
  Recorder recorder(registry_);
  registry_->servicePublishReadyIs("S", false);  // absent before: a change
  registry_->servicePublishReadyIs("S", false);
  registry_->servicePublishReadyIs("S", true);
  registry_->servicePublishReadyDel("S");
  registry_->servicePublishReadyDel("S");
  EXPECT_EQ(3U, recorder.told(MountsRegistry::Attr::servicePublishReady));
}

// ---- mounters

class MountsRegistryEntryTest : public MountsRegistryTest {
 protected:
  Ptr<Mounter> mounter(const MounterName& name) {
    return entry_->mounterIs(name, config_, group_, status_);
  }

  Ptr<MountsRegistryEntry> entry_ = registry_->mountEntryIs("p", "/t", "T", "r");
  Ptr<MountConfig> config_ = Orm::make<MountConfig>("p", "T", "r", "");
  Ptr<ServiceMountGroupConfig> group_ = Orm::make<ServiceMountGroupConfig>("g");
  Ptr<ServiceMountStatus> status_ = Orm::make<ServiceMountStatus>();
};

TEST_F(MountsRegistryEntryTest, NewMounter_HoldsItsArgumentsAndANoteOfZero) {
  Recorder recorder(entry_);
  const Ptr<Mounter> made = mounter({"S", "g"});
  EXPECT_EQ((MounterName{"S", "g"}), made->mounterName());
  EXPECT_EQ(config_, made->mountConfig());
  EXPECT_EQ(group_, made->mountGroupConfig());
  EXPECT_EQ(status_, made->serviceMountStatus());
  EXPECT_EQ(0U, made->mountSideNote());
  made->mountSideNoteIs(1ULL << 40);
  EXPECT_EQ(1ULL << 40, made->mountSideNote());
  EXPECT_EQ(1U, recorder.told(MountsRegistryEntry::Attr::mounter));
}

TEST_F(MountsRegistryEntryTest, MounterOfTheSameServiceAndGroup_IsThePresentOne) {
  const Ptr<Mounter> made = mounter({"S", "g"});
  Recorder recorder(entry_);
  EXPECT_EQ(made, mounter({"S", "g"}));
  EXPECT_EQ(0U, recorder.told());
}

TEST_F(MountsRegistryEntryTest, MounterOfAnotherGroupOfTheService_RaisesForItsName) {
  mounter({"S", "g"});
  EXPECT_EQ("mounterName", raised([&] { mounter({"S", "h"}); }));
  EXPECT_EQ(1U, entry_->mounter().size());
}

TEST_F(MountsRegistryEntryTest, MounterWithOtherConfiguration_RaisesForTheFirstThatDiffers) {
  mounter({"S", "g"});
  const auto config = Orm::make<MountConfig>("p", "T", "r", "");
  const auto group = Orm::make<ServiceMountGroupConfig>("g");
  const auto status = Orm::make<ServiceMountStatus>();
  const MounterName name{"S", "g"};
  EXPECT_EQ("mountConfig", raised([&] { entry_->mounterIs(name, config, group, status); }));
  EXPECT_EQ("mountGroupConfig", raised([&] { entry_->mounterIs(name, config_, group, status); }));
  EXPECT_EQ("serviceMountStatus",
            raised([&] { entry_->mounterIs(name, config_, group_, status); }));
}

TEST_F(MountsRegistryEntryTest, MounterDeleted_IsToldOnce) {
  mounter({"S", "g"});
  Recorder recorder(entry_);
  entry_->mounterDel("S");
  entry_->mounterDel("S");
  EXPECT_EQ(1U, recorder.told());
}

}  // namespace
}  // namespace Controller
