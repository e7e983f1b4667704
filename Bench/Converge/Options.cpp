#include "Bench/Converge/Options.h"

#include <charconv>
#include <string>
#include <string_view>

namespace Bench {

namespace {

std::uint32_t number(std::string_view option, std::string_view text, std::uint32_t least) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < least) {
    throw UsageError(std::string(option) + " " + std::string(text) + ": expected a number from " +
                     std::to_string(least));
  }
  return value;
}

bool onOrOff(std::string_view option, std::string_view text) {
  if (text == "on" || text == "off") return text == "on";
  throw UsageError(std::string(option) + " " + std::string(text) + ": expected on or off");
}

Options::Traces traces(std::string_view text) {
  if (text == "off") return Options::Traces::off;
  if (text == "fast") return Options::Traces::fast;
  if (text == "text") return Options::Traces::text;
  throw UsageError("--traces " + std::string(text) + ": expected off, fast or text");
}

void set(Options& options, std::string_view option, std::string_view value) {
  if (option == "--switches") {
    options.switches = number(option, value, 1);
  } else if (option == "--entries") {
    options.entries = number(option, value, 1);
  } else if (option == "--services") {
    options.services = number(option, value, 1);
  } else if (option == "--groups") {
    options.groups = number(option, value, 1);
  } else if (option == "--reconnects") {
    options.reconnects = number(option, value, 0);
  } else if (option == "--initial") {
    options.initial = onOrOff(option, value);
  } else if (option == "--traces") {
    options.traces = traces(value);
  } else if (option == "--events") {
    options.events = onOrOff(option, value);
  } else if (option == "--warm") {
    options.warm = onOrOff(option, value);
  } else if (option == "--objects") {
    options.objects = onOrOff(option, value);
  } else if (option == "--aggregate") {
    if (value != "count") throw UsageError("--aggregate: groups are kept by counts alone: count");
  } else if (option != "--impl") {  // there is one implementation here, whatever it is called
    throw UsageError("unknown option " + std::string(option));
  }
}

}  // namespace

Options parseOptions(std::span<char*> arguments) {
  Options options;
  for (std::size_t at = 0; at < arguments.size(); at += 2) {
    if (at + 1 == arguments.size()) {
      throw UsageError(std::string(arguments[at]) + ": expected a value after it");
    }
    set(options, arguments[at], arguments[at + 1]);
  }
  return options;
}

const char* usage() {
  return "usage: converge [--switches S] [--entries E] [--services N] [--groups G]\n"
         "                [--reconnects R] [--initial on|off] [--traces off|fast|text]\n"
         "                [--events on|off] [--warm on|off] [--objects on|off]\n"
         "                [--impl NAME] [--aggregate count]\n";
}

}  // namespace Bench
