// main() of every test executable.
//
// `--no-slabs` switches the slab allocator off for the whole run, so that sanitizers see each
// object by itself. Every test must leave as many counted objects alive as it found: entities and
// machines hold each other by handles, and a cycle or a missing clean-up shows here first.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <sstream>
#include <string>
#include <string_view>

#include "Platform/Kobble/Kobble.h"

#ifdef ZORB_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace {

/// Counts what a process did that ends by abort(), as that of a death test should. Only builds that
/// count have anything to write.
void countAborted() {
#ifdef ZORB_COVERAGE
  std::signal(SIGABRT, [](int) { __gcov_dump(); });
#endif
}

std::map<std::string, std::size_t> liveCounts() {
  std::map<std::string, std::size_t> counts;
  for (const auto& type : Kobble::liveTypes()) counts[type.name] += type.live;
  return counts;
}

class NothingLeftListener : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo& /*test*/) override {
    liveAtStart_ = Kobble::liveObjects();
    countsAtStart_ = liveCounts();
  }

  void OnTestEnd(const testing::TestInfo& /*test*/) override {
    const std::size_t live = Kobble::liveObjects();
    if (live == liveAtStart_) return;
    auto counts = liveCounts();
    for (const auto& [name, count] : countsAtStart_) counts.try_emplace(name, 0);
    std::ostringstream text;
    for (const auto& [name, count] : counts) {
      const auto before = countsAtStart_.find(name);
      const std::size_t start = before == countsAtStart_.end() ? 0 : before->second;
      if (count != start) text << "\n  " << name << ": " << start << " -> " << count;
    }
    ADD_FAILURE() << "live objects at the start and at the end of the test: " << liveAtStart_
                  << " and " << live << text.str();
  }

 private:
  std::map<std::string, std::size_t> countsAtStart_;
  std::size_t liveAtStart_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  countAborted();
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]) == "--no-slabs") Kobble::slabsEnabledIs(false);
  }
  testing::InitGoogleMock(&argc, argv);
  // Added last, so first to be told of a test's end: its failure still counts as the test's.
  testing::UnitTest::GetInstance()->listeners().Append(new NothingLeftListener);
  return RUN_ALL_TESTS();
}
