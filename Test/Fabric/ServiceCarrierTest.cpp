#include "Fabric/ServiceCarrier.h"
#include "Test/Fabric/CarrierFixture.h"

namespace Fabric {
namespace {

using Controller::ServiceConfigV1;
using FabricTest::Lines;
using Orm::Ptr;
using testing::ElementsAre;
using testing::IsEmpty;

class ServiceCarrierTest : public FabricTest::CarrierFixture {
 protected:
  void watchDirs() {
    recorder().watch("services", world().serviceConfigDir(), {"service"});
    watchDir("mount", world().mountConfigDir());
    watchDir("mountStatus", world().mountStatusDir());
    watchDir("proxyMount", world().proxyMountConfigDir());
    watchDir("proxyMountStatus", world().proxyMountStatusDir());
    watchDir("publish", world().publishConfigDir());
    watchDir("publishStatus", world().publishStatusDir());
  }
  bool hasMountStatus(const char* service) const {
    return static_cast<bool>(world().mountStatusDir()->entity(service));
  }
};

TEST_F(ServiceCarrierTest, ServiceAtStart_HasItsEntities) {
  start(R"(services: {T: {mount: {generation: gen-1, groups: {g: {preserve: true,
             systems: {"02:00:00:00:00:01": true, "02:00:00:00:00:02": false}, versions: [3],
             paths: {a/b: {type: X, flags: r, target: /t}}}}}}})");
  EXPECT_TRUE(world().serviceConfigDir()->service("T")->enabled());
  EXPECT_EQ(mountConfig("T")->serviceName(), "T");
  EXPECT_EQ(mountConfig("T")->genId(), "gen-1");
  EXPECT_TRUE(hasMountStatus("T"));
  EXPECT_FALSE(publishConfig("T"));
  const auto group = mountGroup("T", "g");
  EXPECT_TRUE(group->preserve());
  EXPECT_TRUE(group->systemFilter()->includes(kLeaf1));
  EXPECT_TRUE(group->systemFilter()->includedSystem().has(kLeaf2));
  EXPECT_FALSE(group->systemFilter()->includes(kLeaf2));
  EXPECT_TRUE(group->versionFilter()->includes(3));
  EXPECT_EQ(group->mountConfig("a/b")->ormcType(), "X");
  EXPECT_EQ(group->mountConfig("a/b")->mountFlags(), "r");
  EXPECT_EQ(group->mountConfig("a/b")->targetPath(), "/t");
}

TEST_F(ServiceCarrierTest, ServiceAtStart_HasItsDefaults) {
  start("services: {T: {mount: {groups: {g: {paths: {a: {}}}}}}, U: {enabled: absent}, V: {}}");
  EXPECT_EQ(mountConfig("T")->genId(), "");
  EXPECT_FALSE(mountGroup("T", "g")->systemFilter());
  EXPECT_FALSE(mountGroup("T", "g")->versionFilter());
  EXPECT_FALSE(mountGroup("T", "g")->preserve());
  EXPECT_EQ(mountGroup("T", "g")->mountConfig("a")->ormcType(), "");
  EXPECT_FALSE(world().serviceConfigDir()->service("U"));
  EXPECT_FALSE(mountConfig("U"));
  EXPECT_TRUE(world().serviceConfigDir()->service("V")->enabled());
}

TEST_F(ServiceCarrierTest, ProxyService_LivesInTheProxyDirectories) {
  start("services: {}");
  watchDirs();
  EXPECT_THAT(changes("services: {T-Proxy: {proxy: true, mount: {}}}"),
              ElementsAre("services.service[T-Proxy]", "proxyMount.entity[T-Proxy]",
                          "proxyMountStatus.entity[T-Proxy]"));
  EXPECT_THAT(changes("services: {T-Proxy: null}"),
              ElementsAre("proxyMount.entity[T-Proxy]", "proxyMountStatus.entity[T-Proxy]",
                          "services.service[T-Proxy]"));
}

TEST_F(ServiceCarrierTest, NewService_IsCarriedInThePatchsOrder) {
  start("services: {}");
  watchDirs();
  EXPECT_THAT(changes("services: {T: {publish: {}, mount: {}, enabled: false}}"),
              ElementsAre("publish.entity[T]", "publishStatus.entity[T]", "mount.entity[T]",
                          "mountStatus.entity[T]", "services.service[T]"));
}

TEST_F(ServiceCarrierTest, ServiceThatGoes_LosesMountThenPublishThenItsConfig) {
  start("services: {T: {mount: {}, publish: {}}}");
  watchDirs();
  EXPECT_THAT(changes("services: {T: null}"),
              ElementsAre("mount.entity[T]", "mountStatus.entity[T]", "publish.entity[T]",
                          "publishStatus.entity[T]", "services.service[T]"));
}

TEST_F(ServiceCarrierTest, Enabled_IsChangedAndTakenAway) {
  start("services: {T: {}}");
  watchDirs();
  recorder().watch("T", world().serviceConfigDir()->service("T"), {"enabled"});
  EXPECT_THAT(changes("services: {T: {enabled: false}}"), ElementsAre("T.enabled"));
  EXPECT_THAT(changes("services: {T: {enabled: null}}"), ElementsAre("T.enabled"));
  EXPECT_THAT(changes("services: {T: {enabled: absent}}"), ElementsAre("services.service[T]"));
  EXPECT_FALSE(world().serviceConfigDir()->service("T"));
  EXPECT_THAT(changes("services: {T: {enabled: false}}"), ElementsAre("services.service[T]"));
  EXPECT_FALSE(world().serviceConfigDir()->service("T")->enabled());
}

TEST_F(ServiceCarrierTest, EnabledServiceThatComesBack_IsSeenEnabled) {
  start("services: {T: {enabled: absent}}");
  recorder().watch("services", world().serviceConfigDir(), {"service"}, [this] {
    return world().serviceConfigDir()->service("T")->enabled() ? "enabled" : "disabled";
  });
  EXPECT_THAT(changes("services: {T: {enabled: null}}"),
              ElementsAre("services.service[T] enabled"));
}

TEST_F(ServiceCarrierTest, NewMountBlock_IsSeenWholeAndItsStatusComesLast) {
  start("services: {T: {}}");
  watchDirs();
  recorder().watch("whole", world().mountConfigDir(), {"entity"}, [this] {
    return mountConfig("T")->serviceName().str() + " " + mountConfig("T")->genId().str() + " " +
           mountGroup("T", "g")->mountConfig("a")->path().str() +
           (hasMountStatus("T") ? " with status" : " without status");
  });
  EXPECT_THAT(changes("services: {T: {mount: {status: true, groups: {g: {paths: {a: {}}}},"
                      " generation: gen-2, serviceName: S}}}"),
              ElementsAre("mount.entity[T]", "whole.entity[T] S gen-2 a without status",
                          "mountStatus.entity[T]"));
}

TEST_F(ServiceCarrierTest, MountBlockThatGoes_LosesTheConfigurationFirst) {
  start("services: {T: {mount: {}}}");
  watchDirs();
  EXPECT_THAT(changes("services: {T: {mount: null}}"),
              ElementsAre("mount.entity[T]", "mountStatus.entity[T]"));
}

TEST_F(ServiceCarrierTest, StatusOfAMountBlock_ComesAndGoesAlone) {
  start("services: {T: {mount: {status: false}}}");
  EXPECT_FALSE(hasMountStatus("T"));
  watchDirs();
  EXPECT_THAT(changes("services: {T: {mount: {status: true}}}"),
              ElementsAre("mountStatus.entity[T]"));
  EXPECT_THAT(changes("services: {T: {mount: {status: null}}}"), IsEmpty());
  EXPECT_THAT(changes("services: {T: {mount: {status: false}}}"),
              ElementsAre("mountStatus.entity[T]"));
  EXPECT_FALSE(hasMountStatus("T"));
}

TEST_F(ServiceCarrierTest, MembersOfAMountBlock_GoInThePatchsOrder) {
  start("services: {T: {mount: {generation: gen-1, serviceName: '', groups: {g: {}}}}}");
  watchMountConfig("T");
  watchMountGroup(mountGroup("T", "g"));
  EXPECT_EQ(mountConfig("T")->serviceName(), "");
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {preserve: true}},"
                      " serviceName: null, generation: gen-2}}}"),
              ElementsAre("group.preserve", "config.serviceName", "config.genId"));
  EXPECT_EQ(mountConfig("T")->serviceName(), "T");
  EXPECT_THAT(changes("services: {T: {mount: {generation: null, groups: {h: {}, g: null}}}}"),
              ElementsAre("config.genId", "config.group[h]", "config.group[g]"));
  EXPECT_EQ(mountConfig("T")->genId(), "");
}

TEST_F(ServiceCarrierTest, NewGroup_IsPutInWithFiltersAndPreserveBeforeItsPaths) {
  start("services: {T: {mount: {}}}");
  recorder().watch("config", mountConfig("T"), {"serviceName", "genId", "group"}, [this] {
    const auto group = mountGroup("T", "g");
    watchMountGroup(group);
    return std::string(group->preserve() ? "preserving" : "") +
           (group->systemFilter()->includes(kLeaf1) ? " systems" : "") +
           (group->versionFilter()->includes(2) ? " versions " : "") +
           std::to_string(group->mountConfig().size());
  });
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {paths: {b: {}, a: {}}, versions: [2],"
                      " systems: ['02:00:00:00:00:01'], preserve: true}}}}}"),
              ElementsAre("config.group[g] preserving systems versions 0", "group.path[b]",
                          "group.path[a]"));
}

TEST_F(ServiceCarrierTest, GroupsRemovedAltogether_GoOneByOne) {
  start("services: {T: {mount: {groups: {g: {}, h: {}}}}}");
  watchMountConfig("T");
  EXPECT_THAT(changes("services: {T: {mount: {groups: null}}}"),
              ElementsAre("config.group[g]", "config.group[h]"));
}

TEST_F(ServiceCarrierTest, Paths_ComeAndGoInThePatchsOrder) {
  start("services: {T: {mount: {groups: {g: {paths: {a: {}, b: {}}}}}}}");
  watchMountGroup(mountGroup("T", "g"));
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {paths: {c: {}, a: null, z: null,"
                      " b: {}}}}}}}"),
              ElementsAre("group.path[c]", "group.path[a]"));
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {paths: null}}}}}"),
              ElementsAre("group.path[b]", "group.path[c]"));
}

TEST_F(ServiceCarrierTest, PathThatIsMadeOfSomethingElse_IsRemovedAndAddedAgain) {
  start("services: {T: {mount: {groups: {g: {paths: {a: {type: X}, b: {type: X}}}}}}}");
  watchMountGroup(mountGroup("T", "g"));
  for (const char* member : {"type: Y", "flags: r", "target: /t", "target: null", "type: null"}) {
    EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {paths: {a: {" + std::string(member) +
                        "}}}}}}}"),
                ElementsAre("group.path[a]", "group.path[a]"))
        << member;
  }
  EXPECT_EQ(mountGroup("T", "g")->mountConfig("a")->mountFlags(), "r");
  EXPECT_EQ(mountGroup("T", "g")->mountConfig("a")->ormcType(), "");
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {paths: {b: {type: X}}}}}}}"), IsEmpty());
}

TEST_F(ServiceCarrierTest, FilterThatComes_IsSeenWhole) {
  start("services: {T: {mount: {groups: {g: {}}}}}");
  const auto group = mountGroup("T", "g");
  recorder().watch("group", group, {"path", "systemFilter", "versionFilter", "preserve"}, [group] {
    return std::to_string(group->systemFilter() ? group->systemFilter()->includedSystem().size()
                                                : 99) +
           " " +
           std::to_string(group->versionFilter()
                              ? group->versionFilter()->includedServiceVersion().size()
                              : 99);
  });
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {versions: [1, 2],"
                      " systems: ['02:00:00:00:00:01']}}}}}"),
              ElementsAre("group.versionFilter 99 2", "group.systemFilter 1 2"));
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {systems: null, versions: null}}}}}"),
              ElementsAre("group.systemFilter 99 2", "group.versionFilter 99 99"));
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {systems: {}, versions: []}}}}}"),
              ElementsAre("group.systemFilter 0 99", "group.versionFilter 0 0"));
}

TEST_F(ServiceCarrierTest, ListOfSystems_FirstRemovesWhatItLacksInTheOldOrder) {
  start(
      "services: {T: {mount: {groups: {g: {systems: ['02:00:00:00:00:05', '02:00:00:00:00:01',"
      " '02:00:00:00:00:03']}}}}}");
  const auto filter = mountGroup("T", "g")->systemFilter();
  watchSystems(filter);
  watchMountGroup(mountGroup("T", "g"));
  EXPECT_THAT(
      changes("services: {T: {mount: {groups: {g: {systems: ['02:00:00:00:00:09',"
              " '02:00:00:00:00:01', '02:00:00:00:00:02']}}}}}"),
      ElementsAre("systems.included[02:00:00:00:00:05]", "systems.included[02:00:00:00:00:03]",
                  "systems.included[02:00:00:00:00:09]", "systems.included[02:00:00:00:00:02]"));
  EXPECT_EQ(filter, mountGroup("T", "g")->systemFilter());
  EXPECT_EQ(filter->includedSystem().size(), 3U);
}

TEST_F(ServiceCarrierTest, ObjectOfSystems_EditsInThePatchsOrder) {
  start(
      "services: {T: {mount: {groups: {g: {systems: ['02:00:00:00:00:05', '02:00:00:00:00:01']"
      "}}}}}");
  const auto filter = mountGroup("T", "g")->systemFilter();
  watchSystems(filter);
  EXPECT_THAT(
      changes("services: {T: {mount: {groups: {g: {systems: {'02:00:00:00:00:07': true,"
              " '02:00:00:00:00:05': null, '02:00:00:00:00:01': true}}}}}}"),
      ElementsAre("systems.included[02:00:00:00:00:07]", "systems.included[02:00:00:00:00:05]"));
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {systems: {'02:00:00:00:00:01': false}"
                      "}}}}}"),
              ElementsAre("systems.included[02:00:00:00:00:01]"));
  EXPECT_FALSE(filter->includes(kLeaf1));
}

TEST_F(ServiceCarrierTest, Versions_AreReplacedByAListAndEditedByAnObject) {
  start("services: {T: {mount: {groups: {g: {versions: [3, 10]}}}}}");
  watchVersions(mountGroup("T", "g")->versionFilter());
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {versions: [4, 10]}}}}}"),
              ElementsAre("versions.included[3]", "versions.included[4]"));
  EXPECT_THAT(changes("services: {T: {mount: {groups: {g: {versions: {5: true, 4: false,"
                      " 10: null}}}}}}"),
              ElementsAre("versions.included[5]", "versions.included[4]", "versions.included[10]"));
}

// ---- publish

TEST_F(ServiceCarrierTest, PublishBlockAtStart_HasItsEntities) {
  start(R"(services: {T: {publish: {generation: gen-1, ready: true, groups: {g: {
             systems: ["02:00:00:00:00:01"], versions: [3],
             paths: {/a/b: {remote: r/b, type: X}},
             dirs: {/a/d: {remote: r/d, type: Y, ready: true}}}}}}})");
  EXPECT_EQ(publishConfig("T")->serviceName(), "T");
  EXPECT_EQ(publishConfig("T")->genId(), "gen-1");
  EXPECT_TRUE(publishConfig("T")->publishReady());
  EXPECT_TRUE(world().publishStatusDir()->entityAs<Controller::ServicePublishStatus>("T"));
  const auto group = publishGroup("T", "g");
  EXPECT_TRUE(group->systemFilter()->includes(kLeaf1));
  EXPECT_TRUE(group->versionFilter()->includes(3));
  EXPECT_EQ(group->publishConfig("/a/b")->remotePath(), "r/b");
  EXPECT_EQ(group->publishConfig("/a/b")->type(), "X");
  EXPECT_EQ(group->publishDir("/a/d")->remotePath(), "r/d");
  EXPECT_EQ(group->publishDir("/a/d")->type(), "Y");
  EXPECT_TRUE(group->publishDir("/a/d")->readyToPublish());
}

TEST_F(ServiceCarrierTest, NewPublishBlock_IsSeenWholeAndItsStatusComesLast) {
  start("services: {T: {}}");
  watchDir("publishStatus", world().publishStatusDir());
  recorder().watch("publish", world().publishConfigDir(), {"entity"}, [this] {
    return std::to_string(publishGroup("T", "g")->publishConfig().size()) +
           (publishConfig("T")->publishReady() ? " ready" : " not ready");
  });
  EXPECT_THAT(changes("services: {T: {publish: {groups: {g: {paths: {/a: {}}}}, ready: true}}}"),
              ElementsAre("publish.entity[T] 1 ready", "publishStatus.entity[T]"));
}

TEST_F(ServiceCarrierTest, MembersOfAPublishBlock_GoInThePatchsOrder) {
  start("services: {T: {publish: {groups: {g: {paths: {/a: {}}}}}}}");
  recorder().watch("config", publishConfig("T"), {"serviceName", "genId", "publishReady", "group"});
  watchPublishGroup(publishGroup("T", "g"));
  EXPECT_THAT(changes("services: {T: {publish: {ready: true, groups: {g: {versions: [1],"
                      " paths: {/a: null}}, h: {}}, generation: gen-2, serviceName: S}}}"),
              ElementsAre("config.publishReady", "group.versionFilter", "group.path[/a]",
                          "config.group[h]", "config.genId", "config.serviceName"));
  EXPECT_THAT(changes("services: {T: {publish: {groups: null, ready: null}}}"),
              ElementsAre("config.group[g]", "config.group[h]", "config.publishReady"));
}

TEST_F(ServiceCarrierTest, NewPublishGroup_IsPutInWithFiltersBeforePathsAndDirectories) {
  start("services: {T: {publish: {}}}");
  recorder().watch("config", publishConfig("T"), {"serviceName", "genId", "publishReady", "group"},
                   [this] {
                     watchPublishGroup(publishGroup("T", "g"));
                     return publishGroup("T", "g")->versionFilter() ? "filtered" : "unfiltered";
                   });
  EXPECT_THAT(changes("services: {T: {publish: {groups: {g: {dirs: {/d: {}}, paths: {/a: {}},"
                      " versions: [1]}}}}}"),
              ElementsAre("config.group[g] filtered", "group.dir[/d]", "group.path[/a]"));
}

TEST_F(ServiceCarrierTest, PublicationThatIsMadeOfSomethingElse_IsRemovedAndAddedAgain) {
  start(
      "services: {T: {publish: {groups: {g: {paths: {/a: {remote: r}}, dirs: {/d: {remote: r}}"
      "}}}}}");
  const auto group = publishGroup("T", "g");
  watchPublishGroup(group);
  recorder().watch("dir", group->publishDir("/d"), {"remotePath", "readyToPublish"});
  for (const char* member : {"remote: s", "type: X"}) {
    EXPECT_THAT(changes("services: {T: {publish: {groups: {g: {paths: {/a: {" +
                        std::string(member) + "}}}}}}}"),
                ElementsAre("group.path[/a]", "group.path[/a]"));
    EXPECT_THAT(changes("services: {T: {publish: {groups: {g: {dirs: {/d: {" + std::string(member) +
                        "}}}}}}}"),
                ElementsAre("group.dir[/d]", "group.dir[/d]"));
  }
  EXPECT_EQ(group->publishDir("/d")->remotePath(), "s");
}

TEST_F(ServiceCarrierTest, ReadyOfADirectory_IsChangedInPlace) {
  start("services: {T: {publish: {groups: {g: {dirs: {/d: {remote: r}}}}}}}");
  const auto group = publishGroup("T", "g");
  watchPublishGroup(group);
  recorder().watch("dir", group->publishDir("/d"), {"remotePath", "readyToPublish"});
  EXPECT_THAT(changes("services: {T: {publish: {groups: {g: {dirs: {/d: {ready: true}}}}}}}"),
              ElementsAre("dir.readyToPublish"));
  EXPECT_THAT(changes("services: {T: {publish: {groups: {g: {dirs: {/d: {type: X}}}}}}}"),
              ElementsAre("group.dir[/d]", "group.dir[/d]"));
  EXPECT_TRUE(group->publishDir("/d")->readyToPublish());
}

}  // namespace
}  // namespace Fabric
