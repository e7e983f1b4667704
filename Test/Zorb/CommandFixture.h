#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Zorb/Command.h"
#include "Zorb/Console.h"

namespace Zorb {

/// Runs the command in this process, with captured streams and files of its own.
class CommandFixture : public testing::Test {
 protected:
  CommandFixture() {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    directory_ = std::filesystem::path(testing::TempDir()) /
                 (std::string("zorb.") + test->test_suite_name() + "." + test->name());
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(directory_);
  }
  ~CommandFixture() override { std::filesystem::remove_all(directory_); }

  int zorb(const std::vector<std::string>& arguments) {
    out_.str("");
    out_.clear();
    errors_.str("");
    return runCommand(arguments, {out_, errors_, terminal_, terminal_, mayColour_});
  }
  std::string out() const { return out_.str(); }
  std::string errors() const { return errors_.str(); }

  /// The path of a file of that name, and the same after it was written.
  std::string path(const std::string& name) const { return (directory_ / name).string(); }
  std::string file(const std::string& name, const std::string& content) const {
    std::ofstream(path(name)) << content;
    return path(name);
  }
  std::string contentOf(const std::string& name) const {
    std::ifstream in(path(name));
    return {std::istreambuf_iterator<char>(in), {}};
  }
  bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }

  bool terminal_ = false;
  bool mayColour_ = true;

 private:
  std::filesystem::path directory_;
  std::ostringstream out_;
  std::ostringstream errors_;
};

/// A fabric with one mount, which fails, and an expectation that holds.
inline constexpr const char* kFabric = R"(controller: {leader: gen-1}
switches:
  "02:00:00:00:00:01":
    {name: leaf1, connected: true, services: {Topology: 3}, mount: {outcome: failed}}
services:
  Topology: {mount: {generation: gen-1, groups: {default: {paths: {status: {type: T}}}}}}
events:
  - {at: 1, note: here, expect: {mounts: {leaf1: {status: {state: failed}}}}}
)";

}  // namespace Zorb
