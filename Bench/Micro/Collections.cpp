// Keyed collections beside absl::flat_hash_map: text keys of 40 characters, and system ids beside
// the same six bytes as an integer. Members exist beforehand; the peer copies its keys.

#include <absl/container/flat_hash_map.h>

#include <array>
#include <cstdio>
#include <string>

#include "Bench/Micro/Support.h"
#include "Platform/Entities/SystemId/SystemId.h"
#include "Platform/Kobble/Kobble.h"
#include "Platform/Orm/Collection.h"

namespace {

using Bench::perItem;
using Controller::SystemId;

std::string pathOf(std::uint32_t number) {
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "/fabric/service-%02u/group-%u/item/%08u", number % 10,
                number % 2, number);
  return text.data();
}

std::uint64_t addressOf(std::uint32_t number) { return 0x0a5e00000000U | number * 2654435761U; }

// ---- the library's side: one interface over both kinds of key

struct TextKey {
  using Key = Orm::String;
  static Key key(std::uint32_t number) { return Orm::String(pathOf(number)); }
};
struct IdKey {
  using Key = SystemId;
  static Key key(std::uint32_t number) {
    return SystemId(Pomix::EthAddr::fromValue(addressOf(number)));
  }
};

template <class Kind>
class Zorb {
 public:
  using Key = typename Kind::Key;
  class Member : public Orm::PtrInterface {
   public:
    explicit Member(Key key) : key_(std::move(key)) {}
    const Key& key() const { return key_; }

   private:
    Key key_;
  };
  using Made = Orm::Ptr<Member>;

  static Key key(std::uint32_t number) { return Kind::key(number); }
  static Made made(std::uint32_t number) { return Made(new Member(key(number))); }

  void insert(const Made& member) { table_.insert(member); }
  bool has(const Key& key) const { return table_.find(key) != nullptr; }
  void erase(const Key& key) { table_.take(key); }
  std::size_t walk() const {
    std::size_t sum = 0;
    for (const auto& member : table_) sum += reinterpret_cast<std::uintptr_t>(member.get());
    return sum;
  }
  /// Removes every other member while it is visited.
  void thin() {
    bool keep = false;
    table_.walk([&](Member& member) {
      if ((keep = !keep)) return;
      table_.take(member.key());
    });
  }

 private:
  Orm::Collection<Made, &Member::key> table_;
};

// ---- the peer

struct AbslText {
  using Key = std::string;
  static Key key(std::uint32_t number) { return pathOf(number); }
};
struct AbslInteger {
  using Key = std::uint64_t;
  static Key key(std::uint32_t number) { return addressOf(number); }
};

template <class Kind>
class Absl {
 public:
  using Key = typename Kind::Key;
  using Made = Key;

  static Key key(std::uint32_t number) { return Kind::key(number); }
  static Made made(std::uint32_t number) { return Kind::key(number); }

  void insert(const Made& key) { table_.emplace(key, nullptr); }
  bool has(const Key& key) const { return table_.find(key) != table_.end(); }
  void erase(const Key& key) { table_.erase(key); }
  std::size_t walk() const {
    std::size_t sum = 0;
    for (const auto& member : table_) sum += reinterpret_cast<std::uintptr_t>(member.second);
    return sum;
  }
  void thin() {
    bool keep = false;
    absl::erase_if(table_, [&keep](const auto&) {
      keep = !keep;
      return !keep;
    });
  }

 private:
  absl::flat_hash_map<Key, void*> table_;
};

// ---- what is measured

template <class Table>
std::vector<typename Table::Made> members(std::uint32_t count) {
  std::vector<typename Table::Made> made;
  for (const std::uint32_t number : Bench::shuffled(count, 1)) made.push_back(Table::made(number));
  return made;
}

template <class Table>
std::vector<typename Table::Key> probes(std::uint32_t first, std::uint32_t count) {
  std::vector<typename Table::Key> keys;
  for (const std::uint32_t number : Bench::shuffled(count, 2)) {
    keys.push_back(Table::key(first + number));
  }
  return keys;
}

template <class Table>
void fill(Table& table, const std::vector<typename Table::Made>& made) {
  for (const auto& member : made) table.insert(member);
}

template <class Table, bool hit>
void find(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  Table table;
  fill(table, members<Table>(count));
  const auto keys = probes<Table>(hit ? 0 : count, count);
  for (auto _ : state) {
    std::size_t found = 0;
    for (const auto& key : keys) found += table.has(key) ? 1 : 0;
    if (found != (hit ? count : 0)) state.SkipWithError("wrong answer");
  }
  perItem(state, count);
}

template <class Table>
void walk(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  Table table;
  fill(table, members<Table>(count));
  for (auto _ : state) benchmark::DoNotOptimize(table.walk());
  perItem(state, count);
}

/// Several tables at a time, so that the clock is read rarely.
std::size_t batchOf(std::uint32_t count) { return std::max<std::size_t>(1, 4000 / count); }

template <class Table>
void insert(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  const auto made = members<Table>(count);
  double bytes = 0;
  for (auto _ : state) {
    std::vector<Table> tables(batchOf(count));
    const std::size_t before = Kobble::bytesInUse();
    Bench::Stopwatch watch(state);
    watch.time([&] {
      for (Table& table : tables) fill(table, made);
    });
    bytes = static_cast<double>(Kobble::bytesInUse() - before) /
            static_cast<double>(count * tables.size());
  }
  state.counters["bytes"] = bytes;  // of the library's tables; the peer allocates elsewhere
  perItem(state, count * batchOf(count));
}

template <class Table>
void erase(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  const auto made = members<Table>(count);
  const auto keys = probes<Table>(0, count);
  for (auto _ : state) {
    std::vector<Table> tables(batchOf(count));
    for (Table& table : tables) fill(table, made);
    Bench::Stopwatch watch(state);
    watch.time([&] {
      for (Table& table : tables) {
        for (const auto& key : keys) table.erase(key);
      }
    });
  }
  perItem(state, count * batchOf(count));
}

template <class Table>
void thin(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  const auto made = members<Table>(count);
  for (auto _ : state) {
    std::vector<Table> tables(batchOf(count));
    for (Table& table : tables) fill(table, made);
    Bench::Stopwatch watch(state);
    watch.time([&] {
      for (Table& table : tables) table.thin();
    });
  }
  perItem(state, count * batchOf(count));
}

template <class Table>
void add(const std::string& who) {
  const auto each = [&who](const char* what, auto&& function) {
    return benchmark::RegisterBenchmark((what + ("/" + who)).c_str(), function)
        ->Arg(10)
        ->Arg(1000)
        ->Arg(100000);
  };
  each("findHit", find<Table, true>);
  each("findMiss", find<Table, false>);
  each("walk", walk<Table>);
  each("insert", insert<Table>)->UseManualTime();
  each("erase", erase<Table>)->UseManualTime();
  each("walkRemoving", thin<Table>)->UseManualTime();
}

const bool added = [] {
  add<Zorb<TextKey>>("zorbText");
  add<Absl<AbslText>>("abslText");
  add<Zorb<IdKey>>("zorbSystemId");
  add<Absl<AbslInteger>>("abslInteger");
  return true;
}();

}  // namespace
