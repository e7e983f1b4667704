#include <gtest/gtest.h>

#include <sstream>

#include "Controllerdb/MountsRegistry/MounterName.h"
#include "Platform/Orm/StringForm.h"

namespace Controller {
namespace {

constexpr const char* kText =
    "Value('Controller::MounterName', ** {'serviceName': Topology, 'groupName': default})";

TEST(MounterNameTest, ServiceNameOrdersBeforeGroupName) {
  EXPECT_LT((MounterName{"a", "z"}), (MounterName{"b", "a"}));
  EXPECT_LT((MounterName{"a", "b"}), (MounterName{"a", "c"}));
  EXPECT_GT((MounterName{"b", ""}), (MounterName{"a", "z"}));
}

TEST(MounterNameTest, EqualWhenBothFieldsAre) {
  EXPECT_EQ((MounterName{"a", "b"}), (MounterName{"a", "b"}));
  EXPECT_NE((MounterName{"a", "b"}), (MounterName{"a", "c"}));
  EXPECT_NE((MounterName{"a", "b"}), (MounterName{"c", "b"}));
}

TEST(MounterNameTest, HashIsTheFieldsHashesXored) {
  const MounterName name{"Topology", "default"};
  EXPECT_EQ(Orm::String("Topology").hash() ^ Orm::String("default").hash(), name.hash());
  EXPECT_EQ(name.hash(), (MounterName{"default", "Topology"}.hash()));
}

TEST(MounterNameTest, TrueUnlessItIsTheDefault) {
  EXPECT_FALSE(MounterName());
  EXPECT_TRUE((MounterName{"a", ""}));
  EXPECT_TRUE((MounterName{"", "b"}));
}

TEST(MounterNameTest, StringForm_NamesTypeAndFields) {
  const MounterName name{"Topology", "default"};
  EXPECT_EQ(kText, name.stringValue());
  EXPECT_EQ(kText, Orm::stringForm(name));
  std::ostringstream out;
  out << name;
  EXPECT_EQ(kText, out.str());
}

TEST(MounterNameTest, StringFormOfEmptyNames_IsParsed) {
  const MounterName empty;
  EXPECT_EQ("Value('Controller::MounterName', ** {'serviceName': , 'groupName': })",
            empty.stringValue());
  EXPECT_EQ(empty, MounterName::parse(empty.stringValue()));
}

TEST(MounterNameTest, ParsingReadsWhatTheStringFormSays) {
  for (const MounterName& name : {MounterName{"Topology", "default"}, MounterName{"a b", "c, 'd'"},
                                  MounterName{"Topology-Proxy", "}) ** {"}}) {
    EXPECT_EQ(name, MounterName::parse(name.stringValue())) << name;
  }
}

TEST(MounterNameTest, ParsingFailsUnlessAllTextIsConsumed) {
  const std::string text = kText;
  EXPECT_TRUE(MounterName::parse(text));
  EXPECT_FALSE(MounterName::parse(text + " "));
  EXPECT_FALSE(MounterName::parse(" " + text));
  for (std::size_t size = 0; size != text.size(); ++size) {
    EXPECT_FALSE(MounterName::parse(text.substr(0, size))) << size;
  }
}

TEST(MounterNameTest, ParsingFailsOnAnotherLiteral) {
  EXPECT_FALSE(MounterName::parse(
      "Value('Controller::MounterNames', ** {'serviceName': a, 'groupName': b})"));
  EXPECT_FALSE(MounterName::parse(
      "Value('Controller::MounterName', ** {'servicename': a, 'groupName': b})"));
  EXPECT_FALSE(
      MounterName::parse("Value('Controller::MounterName', ** {'serviceName': a,'groupName': b})"));
  EXPECT_FALSE(MounterName::parse(
      "value('Controller::MounterName', ** {'serviceName': a, 'groupName': b})"));
}

}  // namespace
}  // namespace Controller
