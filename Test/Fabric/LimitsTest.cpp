#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Fabric/Document.h"
#include "Fabric/InputError.h"
#include "Fabric/Limits.h"

namespace Fabric {
namespace {

/// What is said about a document; nothing when it is accepted. Depth, values and aliases are the
/// reader's to refuse: see ReaderTest.
std::string complaint(const std::string& text) {
  try {
    Document::parse("f", text);
  } catch (const InputError& error) {
    return error.what();
  }
  return {};
}

std::string repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (std::size_t at = 0; at < times; ++at) all += text;
  return all;
}

/// The message's end, behind the text that it quotes.
bool endsWith(const std::string& message, std::string_view end) { return message.ends_with(end); }

TEST(LimitsTest, Bytes) {
  EXPECT_EQ(complaint("{}" + std::string(kMaxBytes - 2, ' ')), "");
  EXPECT_EQ(complaint("{}" + std::string(kMaxBytes - 1, ' ')),
            "f:1:1: too large, expected at most 67108864 bytes");
}

TEST(LimitsTest, TextLength_OfEveryKindOfText) {
  const struct {
    std::string before;
    std::string after;
    const char* place;
  } texts[] = {
      {"controller: {leader: ", "}", "f:1:22: "},
      {"controller: {remoteRoot: ", "}", "f:1:26: "},
      {"switches: {'02:00:00:00:00:01': {name: ", "}}", "f:1:40: "},
      {"switches: {'02:00:00:00:00:01': {services: {", ": 1}}}", "f:1:45: "},
      {"switches: {'02:00:00:00:00:01': {mount: {paths: {", ": failed}}}}", "f:1:50: "},
      {"services: {", ": {}}", "f:1:12: "},
      {"services: {T: {mount: {generation: ", "}}}", "f:1:36: "},
      {"services: {T: {mount: {groups: {", ": {}}}}}", "f:1:33: "},
      {"services: {T: {mount: {groups: {g: {paths: {", ": {}}}}}}}", "f:1:45: "},
      {"services: {T: {publish: {groups: {g: {dirs: {d: {type: ", "}}}}}}}", "f:1:56: "},
      {"attrlog: {", ": {}}", "f:1:11: "},
  };
  // A key of more than 1024 characters is a complex one in YAML.
  for (const auto& [before, after, place] : texts) {
    const bool isKey = after.starts_with(": ");
    const std::string key = isKey ? "? " : "";
    const std::string end = isKey ? " " + after : after;
    EXPECT_EQ(complaint(before + key + std::string(kMaxTextLength, 'x') + end), "") << before;
    const std::string message =
        complaint(before + key + std::string(kMaxTextLength + 1, 'x') + end);
    EXPECT_TRUE(endsWith(message, " is too long, expected at most 4096 bytes")) << message;
    EXPECT_TRUE(isKey || message.starts_with(place)) << message;
  }
}

TEST(LimitsTest, TextLength_OfAPattern) {
  const std::string start =
      "switches: {'02:00:00:00:00:01': {name: leaf1}}\n"
      "events: [{at: 1, apply: {switches: {? ";
  EXPECT_EQ(complaint(start + "leaf" + std::string(kMaxTextLength - 4, '*') + " : {}}}}]"), "");
  const std::string message =
      complaint(start + "leaf" + std::string(kMaxTextLength - 3, '*') + " : {}}}}]");
  EXPECT_NE(message.find("matches no switch"), std::string::npos) << message;
}

TEST(LimitsTest, NumberedNameLength) {
  const auto document = [](std::size_t length, int count) {
    return "switches: {'02:00:00:00:00:01': {count: " + std::to_string(count) + ", name: '" +
           std::string(length, 'x') + "{n}'}}";
  };
  EXPECT_EQ(complaint(document(kMaxNumberedNameLength - 1, 9)), "");
  const std::string message = complaint(document(kMaxNumberedNameLength - 1, 10));
  EXPECT_TRUE(message.starts_with("f:1:51: \"xxx")) << message;
  EXPECT_TRUE(endsWith(message, " is too long for a name with {n}, expected at most 256 bytes"))
      << message;
  EXPECT_EQ(complaint("switches: {'02:00:00:00:00:01': {name: '" +
                      std::string(kMaxNumberedNameLength + 1, 'x') + "'}}"),
            "");
}

TEST(LimitsTest, PathComponents) {
  for (const char* before : {"entities: {? ", "services: {T: {mount: {groups: {g: {paths: {? "}) {
    const std::string end = std::string(before).starts_with("e") ? " : X}" : " : {}}}}}}}";
    EXPECT_EQ(complaint(before + repeated("/a", kMaxPathComponents) + end), "");
    const std::string message = complaint(before + repeated("/a", kMaxPathComponents + 1) + end);
    EXPECT_TRUE(endsWith(message, " is too deep, expected at most 64 components")) << message;
  }
}

TEST(LimitsTest, Switches_OfADocumentAndWithWhatAPatchBrings) {
  const std::string full = "switches: {'02:00:00:00:00:00': {count: 100000}}\n";
  EXPECT_EQ(complaint(full), "");
  EXPECT_EQ(complaint(full + "events: [{at: 1, apply: {switches: {'03:00:00:00:00:00': {}}}}]"),
            "f:2:37: too many switches, expected at most 100000");
}

TEST(LimitsTest, Changes) {
  std::string text = "switches: {'02:00:00:00:00:00': {count: 100000}}\nevents:\n";
  for (std::size_t at = 0; at < kMaxChanges / kMaxSwitches / 2; ++at) {
    text += "- {at: 1, apply: {switches: {'*': null}}}\n";
    text += "- {at: 1, apply: {switches: {'02:00:00:00:00:00': {count: 100000}}}}\n";
  }
  // Ten events of a hundred thousand changes each are no reason to complain, the eleventh is.
  EXPECT_EQ(complaint(text + "- {at: 1, apply: {switches: {'02:00:00:00:00:00': null}}}\n"),
            "f:13:18: too many changes, expected events that bring, remove or rename at most "
            "1000000 members altogether");
}

TEST(LimitsTest, Numbers) {
  const struct {
    const char* before;
    const char* most;
    const char* over;
    const char* after;
  } numbers[] = {
      {"until: ", "1000000000", "1000000000.001", ""},
      {"controller: {heartbeat: ", "1e9", "1000000001", "}"},
      {"events: [{at: ", "1e9", "1000000000.5", "}]"},
      {"controller: {mountTimeout: ", "2147483647", "2147483648", "}"},
      {"controller: {reconnectRetries: ", "4294967295", "4294967296", "}"},
      {"switches: {'02:00:00:00:00:01': {services: {T: ", "4294967295", "4294967296", "}}}"},
      {"services: {T: {mount: {groups: {g: {versions: [", "4294967295", "4294967296", "]}}}}}"},
      {"switches: {'02:00:00:00:00:00': {count: ", "100000", "100001", "}}"},
  };
  for (const auto& [before, most, over, after] : numbers) {
    EXPECT_EQ(complaint(std::string(before) + most + after), "") << before;
    const std::string message = complaint(std::string(before) + over + after);
    EXPECT_NE(message.find(", expected "), std::string::npos) << before << message;
    EXPECT_TRUE(message.starts_with("f:1:" + std::to_string(std::string(before).size() + 1) + ":"))
        << message;
  }
}

}  // namespace
}  // namespace Fabric
