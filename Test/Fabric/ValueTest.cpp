#include <gtest/gtest.h>

#include "Fabric/Object.h"
#include "Fabric/Reader.h"
#include "Fabric/Value.h"

namespace Fabric {
namespace {

Value parsed(std::string_view text) { return read("test", text); }

TEST(ValueTest, Copy_SharesUntilOneSideChanges) {
  Value original = parsed("a: {b: [1]}\nc: 2");
  Value copy = original;
  EXPECT_EQ(&copy.object(), &original.object());

  copy.mutableObject().find("a")->mutableObject().find("b")->mutableArray().push_back(Value(2.0));

  EXPECT_EQ(toJson(original), R"({"a":{"b":[1]},"c":2})");
  EXPECT_EQ(toJson(copy), R"({"a":{"b":[1,2]},"c":2})");
}

TEST(ValueTest, UnsharedValue_ChangesInPlace) {
  Value value = parsed("a: 1");
  const Object* before = &value.object();
  value.mutableObject().set("b", Value(true));
  EXPECT_EQ(&value.object(), before);
}

TEST(ValueTest, Equality_DisregardsOrderAndPlaces) {
  EXPECT_EQ(parsed("{a: 1, b: [x, {c: null}]}"), parsed("b:\n- x\n- {c: ~}\na: 1.0"));
  EXPECT_FALSE(parsed("{a: 1}") == parsed("{a: '1'}"));
  EXPECT_FALSE(parsed("{a: 1}") == parsed("{a: 1, b: 2}"));
  EXPECT_FALSE(parsed("{a: 1}") == parsed("{b: 1}"));
  EXPECT_FALSE(parsed("[1, 2]") == parsed("[2, 1]"));
  EXPECT_FALSE(parsed("[true]") == parsed("[false]"));
}

TEST(ValueTest, Find_OfWhatIsNoObject_FindsNothing) {
  EXPECT_EQ(parsed("[a]").find("a"), nullptr);
  EXPECT_EQ(parsed("{a: 1}").find("b"), nullptr);
}

TEST(ValueTest, Json_WritesNumbersShortAndTextsEscaped) {
  EXPECT_EQ(toJson(parsed("[0.1, 300.1, 4294967295, -3, 1e300, 9007199254740992]")),
            "[0.1,300.1,4294967295,-3,1e+300,9007199254740992]");
  EXPECT_EQ(toJson(Value("a\"\\\n\t\x01é")), "\"a\\\"\\\\\\n\\t\\u0001é\"");
}

TEST(ObjectTest, Members_StayInTheOrderOfInsertion) {
  Object object;
  for (const char* key : {"b", "a", "c"}) {
    object.set(key, Value(1.0));
  }
  object.set("a", Value(2.0));
  EXPECT_EQ(toJson(Value(object)), R"({"b":1,"a":2,"c":1})");
}

TEST(ObjectTest, ManyMembers_AreFoundSetAndErased) {
  Object object;
  for (int at = 0; at < 1000; ++at) {
    object.set(std::to_string(at), Value(static_cast<double>(at)));
  }
  for (int at = 0; at < 1000; at += 3) {
    EXPECT_TRUE(object.erase(std::to_string(at)));
    EXPECT_FALSE(object.erase(std::to_string(at)));
  }
  object.set("3", Value(-3.0));

  EXPECT_EQ(object.size(), 667U);
  EXPECT_EQ(object.find("6"), nullptr);
  EXPECT_EQ(object.find("7")->number(), 7);
  std::vector<double> numbers;
  for (const Object::Member& member : object) {
    numbers.push_back(member.value.number());
  }
  EXPECT_EQ(numbers.size(), 667U);
  EXPECT_EQ(numbers.front(), 1);
  EXPECT_EQ(numbers.back(), -3);
}

TEST(ObjectTest, EmptiedObject_CanBeFilledAgain) {
  Object object;
  for (int round = 0; round < 3; ++round) {
    for (int at = 0; at < 50; ++at) {
      object.set(std::to_string(at), Value(true));
    }
    EXPECT_EQ(object.size(), 50U);
    for (int at = 0; at < 50; ++at) {
      EXPECT_TRUE(object.erase(std::to_string(at)));
    }
    EXPECT_TRUE(object.empty());
    EXPECT_EQ(object.begin(), object.end());
  }
}

TEST(ObjectTest, CopyOfManyMembers_StandsAlone) {
  Object object;
  for (int at = 0; at < 20; ++at) {
    object.set(std::to_string(at), Value(true));
  }
  const Object copy = object;
  for (int at = 0; at < 20; ++at) {
    object.erase(std::to_string(at));
  }
  EXPECT_EQ(copy.size(), 20U);
  EXPECT_NE(copy.find("13"), nullptr);
}

}  // namespace
}  // namespace Fabric
