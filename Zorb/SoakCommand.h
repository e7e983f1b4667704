#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "Soak/Note.h"
#include "Soak/Script.h"
#include "Zorb/Console.h"

namespace CLI {
class App;
}

namespace Zorb {

/// `zorb soak`: random runs, each made from a seed, with all invariants checked after each piece of
/// work; or, with --fabric, random events around a given document.
class SoakCommand {
 public:
  /// Adds the subcommand to `app`. Both must stay.
  SoakCommand(CLI::App& app, const Console& console);

  /// Carries the parsed subcommand out and returns the exit status. Throws UsageError, InputError.
  int run();

 private:
  void checkUsage() const;
  Soak::Script script(std::uint64_t seed) const;
  void live(std::uint64_t seed, Soak::Note& note) const;
  Soak::Note soak() const;
  void report(const Soak::Note& sum, double seconds) const;
  void reportFailure(const Soak::Note& sum) const;
  void shrink(const Soak::Note& failed) const;
  std::string command(std::uint64_t seed) const;

  const Console& console_;

  // ---- as they were written

  std::uint64_t seed_ = 1;
  std::uint64_t runs_ = 100;
  std::size_t events_ = 40;
  std::string profile_;
  std::string fabric_;
  std::string shrunkPath_;
  std::string savedPath_;
  std::size_t jobs_ = 0;
  std::uint32_t hashSeed_ = 0;
  bool noSlabs_ = false;
  bool traces_ = false;

  std::optional<std::string> text_;  // of the fabric
};

}  // namespace Zorb
