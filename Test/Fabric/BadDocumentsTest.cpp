#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "Fabric/Document.h"
#include "Fabric/InputError.h"
#include "Fabric/Reader.h"

namespace Fabric {
namespace {

/// The documents that have to be refused, beside the tests of this folder.
std::vector<std::string> badDocuments() {
  const auto folder = std::filesystem::path(__FILE__).parent_path().parent_path() / "fabrics/bad";
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    paths.push_back(entry.path().string());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::string complaintAbout(const std::string& path) {
  try {
    Document::load(path);
  } catch (const InputError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(BadDocumentsTest, EachIsRefusedAtThePlaceThatItsFirstLineNames) {
  const std::vector<std::string> paths = badDocuments();
  EXPECT_GE(paths.size(), 30U);
  constexpr std::string_view kMarker = "# error: ";
  for (const std::string& path : paths) {
    const std::string text = readFile(path);
    ASSERT_TRUE(text.starts_with(kMarker)) << path;
    const std::string expected = text.substr(kMarker.size(), text.find('\n') - kMarker.size());
    const std::size_t messageAt = expected.find(": ") + 2;
    const std::string place = path + ":" + expected.substr(0, messageAt);

    const std::string complaint = complaintAbout(path);

    EXPECT_EQ(complaint.substr(0, place.size()), place) << complaint;
    EXPECT_NE(complaint.find(expected.substr(messageAt)), std::string::npos)
        << complaint << "\nexpected " << expected.substr(messageAt);
  }
}

}  // namespace
}  // namespace Fabric
