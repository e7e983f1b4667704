#include <gtest/gtest.h>

#include "Soak/ScriptWriter.h"
#include "Soak/Shrinker.h"

namespace Soak {
namespace {

TEST(ShrinkerTest, WhatDoesNotMatterGoes) {
  Shrinker shrinker([](const std::string& text) {
    return text.find("\"connected\":false") != std::string::npos &&
           text.find("Topology") != std::string::npos;
  });
  Script script = randomScript({1, &profiles()[0], 60});
  for (std::uint64_t number = 2; script.text().find("\"connected\":false") == std::string::npos;
       ++number) {
    script = randomScript({number, &profiles()[0], 60});
  }
  const Script small = shrinker.shrunk(script);
  EXPECT_LE(small.events.size(), 2U);
  EXPECT_LT(small.text().size(), 400U) << small.text();
  EXPECT_NE(small.text().find("\"connected\":false"), std::string::npos);
  EXPECT_GT(shrinker.tries(), 10U);
}

TEST(ShrinkerTest, WhatAllMattersStays) {
  const Script script = randomScript({3, &profiles()[0], 5});
  const std::string text = script.text();
  Shrinker shrinker([&text](const std::string& candidate) { return candidate == text; });
  EXPECT_EQ(shrinker.shrunk(script).text(), text);
}

}  // namespace
}  // namespace Soak
