#include "Soak/Crew.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <system_error>
#include <vector>

#include "Fabric/InputError.h"
#include "Soak/Broken.h"

#ifdef ZORB_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace Soak {

/// What all processes see.
struct Crew::Shared {
  static constexpr std::size_t kMost = 64;

  std::atomic<std::uint64_t> next;  // seed to be taken
  std::uint64_t end;
  Note note[kMost];

  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

namespace {

constexpr int kFailed = 3;
constexpr long kWatchInterval = 100'000'000;  // nanoseconds

void add(Note& sum, const Note& one) {
  sum.runs += one.runs;
  sum.eventsOfAll += one.eventsOfAll;
  sum.stepsOfAll += one.stepsOfAll;
  sum.digest += one.digest;
}

void describeDeath(Note& note, int status) {
  if (note.failed || (WIFEXITED(status) && WEXITSTATUS(status) == 0)) return;
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) {
    note.fail("a run comes to an end", "a run comes to an end: it took too long");
  } else if (WIFSIGNALED(status)) {
    const std::string text = "the process was ended by signal " + std::to_string(WTERMSIG(status));
    note.fail(text, text);
  } else {
    const std::string text = "the process ended with status " + std::to_string(WEXITSTATUS(status));
    note.fail(text, text);
  }
}

/// Ends the process, and leaves what it shares with the one that it came from alone. Builds that
/// count what is reached write what this one did.
[[noreturn]] void endProcess(int status) {
#ifdef ZORB_COVERAGE
  __gcov_dump();
#endif
  _exit(status);
}

template <class T>
class SharedMemory {
 public:
  SharedMemory() {
    void* const place =
        mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED) {
      throw std::system_error(errno, std::generic_category(), "cannot share memory");
    }
    object_ = new (place) T();
  }
  ~SharedMemory() { munmap(object_, sizeof(T)); }
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;

  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }

 private:
  T* object_;
};

}  // namespace

void Crew::workOff(Shared& shared, Note& note) const {
  for (std::uint64_t seed = shared.next++; seed < shared.end; seed = shared.next++) {
    note.begin(seed);
    alarm(seconds_);
    try {
      work_(seed, note);
    } catch (const Broken& broken) {
      note.fail(broken.invariant(), broken.what());
    } catch (const std::exception& error) {
      note.fail(error.what(), error.what());
    }
    if (note.failed) endProcess(kFailed);
  }
  endProcess(EXIT_SUCCESS);
}

Note Crew::run(std::uint64_t first, std::uint64_t runs, const Watch& watch) const {
  const SharedMemory<Shared> shared;
  shared->next = first;
  shared->end = first + runs;
  std::cout.flush();
  std::cerr.flush();
  std::vector<pid_t> members;
  for (std::size_t at = 0; at != processes_ && at != Shared::kMost; ++at) {
    const pid_t child = fork();
    if (child == 0) workOff(*shared, shared->note[at]);
    if (child < 0) break;
    members.push_back(child);
  }
  if (members.empty()) {
    throw std::system_error(errno, std::generic_category(), "cannot start a process");
  }

  std::size_t left = members.size();
  bool ended = false;
  while (left != 0) {
    for (std::size_t at = 0; at != members.size(); ++at) {
      int status = 0;
      // With one process and nobody who watches, there is nothing else to be done.
      const int options = members.size() == 1 && !watch ? 0 : WNOHANG;
      if (members[at] == 0 || waitpid(members[at], &status, options) != members[at]) continue;
      members[at] = 0;
      --left;
      describeDeath(shared->note[at], status);
      if (shared->note[at].failed) shared->next = shared->end;
    }
    if (left == 0) break;
    Note sum;
    for (std::size_t at = 0; at != members.size(); ++at) add(sum, shared->note[at]);
    if (!ended && watch && !watch(sum)) {
      ended = true;
      shared->next = shared->end;
    }
    const timespec interval{0, kWatchInterval};
    nanosleep(&interval, nullptr);
  }

  Note sum;
  for (std::size_t at = 0; at != members.size(); ++at) {
    const Note& one = shared->note[at];
    const Note before = sum;
    if (one.failed && (!sum.failed || one.seed < sum.seed)) {
      sum = one;
      sum.runs = before.runs;
      sum.eventsOfAll = before.eventsOfAll;
      sum.stepsOfAll = before.stepsOfAll;
      sum.digest = before.digest;
    }
    add(sum, one);
  }
  return sum;
}

}  // namespace Soak
