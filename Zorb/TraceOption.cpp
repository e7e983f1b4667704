#include "Zorb/TraceOption.h"

#include <charconv>

#include "Zorb/UsageError.h"

namespace Zorb {

namespace {

std::string handleNames() {
  std::string names;
  for (const Dualog::Handle* handle : Dualog::handles()) {
    if (!names.empty()) names += ", ";
    names += handle->name();
  }
  return names;
}

}  // namespace

TraceOption TraceOption::parse(std::string_view text) {
  const std::string said = "--trace " + std::string(text) + ": ";
  const std::size_t equals = text.rfind('=');
  if (equals == std::string_view::npos) {
    throw UsageError(said + "expected HANDLE=LEVEL; the handles are " + handleNames());
  }
  const std::string_view name = text.substr(0, equals);
  Dualog::Handle* const handle = Dualog::handle(name);
  if (!handle) {
    throw UsageError(said + "there is no trace handle \"" + std::string(name) +
                     "\"; the handles are " + handleNames());
  }
  const std::string_view digits = text.substr(equals + 1);
  int level = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), level);
  if (error != std::errc() || end != digits.data() + digits.size() || level < 0 ||
      level > Dualog::kHighestLevel) {
    throw UsageError(said + "\"" + std::string(digits) + "\" is no level, expected 0 to " +
                     std::to_string(Dualog::kHighestLevel));
  }
  return {handle, level};
}

}  // namespace Zorb
