#include <gtest/gtest.h>

#include "Fabric/Document.h"
#include "Fabric/Simulation.h"
#include "Soak/TraceForm.h"

namespace Soak {
namespace {

/// One service with one mounted path, and a switch that is called leaf1.
constexpr const char* kFabric = R"({"controller": {"leader": "g"},
  "services": {
    "T": {"mount": {"generation": "g", "groups": {"d": {"paths": {"a b": {}, "a": {}}}}}}},
  "switches": {"02:00:00:00:00:01": {"name": "leaf1", "connected": true, "services": {"T": 1}}}})";

class TraceFormTest : public testing::Test {
 protected:
  bool holds(const char* form, std::string_view text) const {
    return TraceForm(form).holds(text, census_);
  }

  Fabric::Document document_ = Fabric::Document::parse("form.json", kFabric);
  Fabric::Simulation simulation_{document_};
  Census census_{simulation_};
};

TEST_F(TraceFormTest, FixedTextHasToBeTheSame) {
  EXPECT_TRUE(holds("sm::handle", "sm::handle"));
  EXPECT_FALSE(holds("sm::handle", "sm::handle "));
  EXPECT_FALSE(holds("sm::handle", "sm::handl"));
}

TEST_F(TraceFormTest, NamesHaveToBeThoseOfWhatThereIs) {
  EXPECT_TRUE(holds("path:{path} from:{system}", "path:a from:02:00:00:00:00:01"));
  EXPECT_FALSE(holds("path:{path} from:{system}", "path:b from:02:00:00:00:00:01"));
  EXPECT_FALSE(holds("path:{path} from:{system}", "path:a from:02:00:00:00:00:02"));
  EXPECT_FALSE(holds("path:{path} from:{system}", "path:a from:02:00:00:00:00:01 "));
}

TEST_F(TraceFormTest, AThingIsNotAThingOfAnotherKind) {
  EXPECT_TRUE(holds("{service}:{group}", "T:d"));
  EXPECT_FALSE(holds("{service}:{group}", "d:T"));
}

TEST_F(TraceFormTest, ANameMayContainWhatSeparatesNames) {
  EXPECT_TRUE(holds("{path} {group}", "a b d"));
  EXPECT_TRUE(holds("{path} {group}", "a d"));
  EXPECT_FALSE(holds("{path} {group}", "a b"));
}

TEST_F(TraceFormTest, ValuesHaveTheFormOfTheirKind) {
  EXPECT_TRUE(holds("{flag} {number} {state}", "true 2.5 mounted"));
  EXPECT_TRUE(holds("{number}", "inf"));
  EXPECT_FALSE(holds("{number}", ""));
  EXPECT_FALSE(holds("{flag} {number} {state}", "yes 2.5 mounted"));
  EXPECT_FALSE(holds("{flag} {number} {state}", "true two mounted"));
  EXPECT_FALSE(holds("{flag} {number} {state}", "true 2.5 gone"));
}

TEST_F(TraceFormTest, ABraceThatIsNoPlaceIsMeant) {
  EXPECT_TRUE(holds("{'group': {group}}", "{'group': d}"));
}

TEST(TraceFormShortenedTest, ASignatureIsShortenedToItsName) {
  std::string buffer;
  EXPECT_EQ(
      TraceForm::shortened("void Controller::Sm::handle(const String&, int):  x:(1): y", buffer),
      "Sm::handle()  x:(1): y");
  EXPECT_EQ(TraceForm::shortened("Sm::handle (a): b", buffer), "Sm::handle (a): b");
  EXPECT_EQ(TraceForm::shortened("void Controller::Sm::handle()", buffer),
            "void Controller::Sm::handle()");
  EXPECT_EQ(TraceForm::shortened("Sm::handle", buffer), "Sm::handle");
}

}  // namespace
}  // namespace Soak
