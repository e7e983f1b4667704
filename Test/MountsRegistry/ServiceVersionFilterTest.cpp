#include <gtest/gtest.h>

#include "Controllerdb/MountsRegistry/ServiceVersionFilter.h"
#include "Test/Support/Recorder.h"

namespace Controller {
namespace {

TEST(ServiceVersionFilterTest, Versions_FollowTheRulesOfValues) {
  const auto filter = Orm::make<ServiceVersionFilter>("S");
  Support::Recorder recorder(filter);
  EXPECT_EQ("S", filter->serviceName());
  filter->versionIs(3, true);
  filter->versionIs(3, true);
  filter->versionIs(3, false);
  filter->versionDel(4);
  filter->versionDel(3);
  filter->versionIs(5, true);
  filter->versionIs(6, true);
  filter->versionDelAll();
  EXPECT_EQ(7U, recorder.told(ServiceVersionFilter::Attr::version));
  EXPECT_TRUE(filter->version().empty());
}

}  // namespace
}  // namespace Controller
