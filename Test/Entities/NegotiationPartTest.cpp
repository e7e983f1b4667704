#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Entities/ControllerOob/Status.h"
#include "Platform/Orm/Reactor.h"
#include "Test/Entities/Samples.h"

namespace Controller {
namespace {

using Orm::Ptr;
using Samples::kA;
using Samples::kB;
using Samples::kFirst;
using Samples::kSecond;

TEST(NegotiationPartTest, EverySetter_CountsAChange) {
  const auto status = Orm::make<ControllerOob::Status>();
  const auto table = Orm::make<PeerTable>();
  const auto dir = Orm::make<ServiceStatusDir>();
  const auto service = Orm::make<ServiceStatusV1>("Topology");
  const auto version = Orm::make<ServiceVersionStatusV1>();
  Ptr<ControllerOob::ClientStatus> client;

  const std::vector<std::pair<std::string, std::function<void()>>> changes{
      {"peerTableIs", [&] { status->peerTableIs(table); }},
      {"clientStatusIs", [&] { client = status->clientStatusIs(kFirst, kA); }},
      {"serviceStatusDirIs", [&] { client->serviceStatusDirIs(dir); }},
      {"clientStatusDel", [&] { status->clientStatusDel(kFirst); }},
      {"another clientStatusIs", [&] { status->clientStatusIs(kSecond, kB); }},
      {"clientStatusDelAll", [&] { status->clientStatusDelAll(); }},
      {"peerIs", [&] { table->peerIs(kA, kFirst); }},
      {"peerDel", [&] { table->peerDel(kA); }},
      {"another peerIs", [&] { table->peerIs(kB, kFirst); }},
      {"peerDelAll", [&] { table->peerDelAll(); }},
      {"serviceIs", [&] { dir->serviceIs(service); }},
      {"serviceDel", [&] { dir->serviceDel("Topology"); }},
      {"another serviceIs", [&] { dir->serviceIs("Topology"); }},
      {"serviceDelAll", [&] { dir->serviceDelAll(); }},
      {"enabledIs", [&] { service->enabledIs(true); }},
      {"versionStatusIs", [&] { service->versionStatusIs(version); }},
      {"negotiatedIs", [&] { version->negotiatedIs(true); }},
      {"versionIs", [&] { version->versionIs(3); }},
  };
  for (const auto& [name, change] : changes) {
    const std::uint64_t before = NegotiationPart::changes();
    change();
    EXPECT_GT(NegotiationPart::changes(), before) << name;
  }
}

/// Notes the count of changes each time that it is told.
class Counts : public Orm::Reactor {
 public:
  explicit Counts(const Ptr<Orm::Entity const>& entity) { watchedIs(entity); }
  const std::vector<std::uint64_t>& seen() const { return seen_; }
  void onAttribute(Orm::AttributeId, const Orm::Key&) override {
    seen_.push_back(NegotiationPart::changes());
  }

 private:
  std::vector<std::uint64_t> seen_;
};

// Who is told of one removal may look a version up, which the next removal changes again.
TEST(NegotiationPartTest, EachMemberThatGoes_IsAChangeOfItsOwn) {
  const auto dir = Orm::make<ServiceStatusDir>();
  dir->serviceIs("Routing");
  dir->serviceIs("Topology");
  const Counts counts(dir);
  dir->serviceDelAll();
  ASSERT_EQ(counts.seen().size(), 2U);
  EXPECT_LT(counts.seen()[0], counts.seen()[1]);
}

}  // namespace
}  // namespace Controller
