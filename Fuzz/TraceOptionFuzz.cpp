// The argument of `zorb sim --trace`.

#include <string>

#include "Fuzz/Property.h"
#include "Zorb/TraceOption.h"
#include "Zorb/UsageError.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Dualog::Handle handle("Source", "Source.cpp");
  const std::string_view text = Fuzz::textOf(data, size);
  if (text.find('\0') != std::string_view::npos) return 0;  // no argument of a command has one
  try {
    const Zorb::TraceOption option = Zorb::TraceOption::parse(text);
    Fuzz::require(text.starts_with(std::string(option.handle->name()) + "="),
                  "the handle is the one that is named", text);
    Fuzz::require(option.level >= 0 && option.level <= Dualog::kHighestLevel,
                  "a level is one that there is", text);
    const std::string written =
        std::string(option.handle->name()) + "=" + std::to_string(option.level);
    const Zorb::TraceOption again = Zorb::TraceOption::parse(written);
    Fuzz::require(again.handle == option.handle && again.level == option.level,
                  "an option is what was written of it", written);
  } catch (const Zorb::UsageError& error) {
    const std::string_view message = error.what();
    Fuzz::require(message.starts_with("--trace ") &&
                      (message.find("expected ") != std::string_view::npos ||
                       message.find("the handles are ") != std::string_view::npos),
                  "a message says what was expected", message);
  }
  return 0;
}
