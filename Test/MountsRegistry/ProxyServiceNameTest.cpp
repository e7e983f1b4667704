#include <gtest/gtest.h>

#include "Controllerdb/MountsRegistry/ProxyServiceName.h"

namespace Controller {
namespace {

TEST(ProxyServiceNameTest, NameWithSuffix_IsAProxyOfTheNameWithoutIt) {
  EXPECT_TRUE(isProxyServiceName("Topology-Proxy"));
  EXPECT_EQ("Topology", realServiceNameOfProxy("Topology-Proxy"));
}

TEST(ProxyServiceNameTest, SuffixFollowedByMore_IsNoProxy) {
  EXPECT_FALSE(isProxyServiceName("Topology-Proxy2"));
  EXPECT_FALSE(isProxyServiceName("Topology-Proxy-"));
}

TEST(ProxyServiceNameTest, SuffixInAnotherCase_IsNoProxy) {
  EXPECT_FALSE(isProxyServiceName("Topology-proxy"));
  EXPECT_FALSE(isProxyServiceName("Topology-PROXY"));
}

TEST(ProxyServiceNameTest, SuffixAlone_IsAProxyOfTheEmptyName) {
  EXPECT_TRUE(isProxyServiceName("-Proxy"));
  EXPECT_EQ("", realServiceNameOfProxy("-Proxy"));
}

TEST(ProxyServiceNameTest, LastOfSeveralSuffixesCounts) {
  EXPECT_TRUE(isProxyServiceName("A-Proxy-Proxy"));
  EXPECT_EQ("A-Proxy", realServiceNameOfProxy("A-Proxy-Proxy"));
  EXPECT_TRUE(isProxyServiceName("A-Proxy-B-Proxy"));
  EXPECT_FALSE(isProxyServiceName("A-Proxy-B"));
}

TEST(ProxyServiceNameTest, PlainOrEmptyOrShortName_IsNoProxy) {
  EXPECT_FALSE(isProxyServiceName("Topology"));
  EXPECT_FALSE(isProxyServiceName(""));
  EXPECT_FALSE(isProxyServiceName("Proxy"));
}

TEST(ProxyServiceNameTest, NameOfProxyIsNotChecked_LastSixCharactersGo) {
  EXPECT_EQ("Top", realServiceNameOfProxy("Topology2"));
}

TEST(ProxyServiceNameTest, RealName_IsTheNameItselfOrTheProxys) {
  EXPECT_EQ("Topology", realServiceName("Topology"));
  EXPECT_EQ("Topology", realServiceName("Topology-Proxy"));
  EXPECT_EQ("", realServiceName("-Proxy"));
}

TEST(ProxyServiceNameTest, IsRealServiceName_AgreesWithTheRealName) {
  for (const char* name : {"A", "A-Proxy", "-Proxy", "", "A-Proxy-Proxy", "A-ProxyB"}) {
    for (const char* real : {"A", "A-Proxy", "-Proxy", "", "A-ProxyB", "B"}) {
      EXPECT_EQ(realServiceName(name) == Orm::String(real), isRealServiceName(name, real))
          << name << " " << real;
    }
  }
}

}  // namespace
}  // namespace Controller
