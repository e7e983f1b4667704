#include "Fuzz/Property.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iostream>

#include "Fabric/TextLocator.h"

namespace Fuzz {

namespace {

/// Takes "NUMBER" and the end of it, which is returned; 0 when there is none.
std::size_t takeNumber(std::string_view& text, std::string_view end) {
  std::size_t number = 0;
  const auto [last, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return 0;
  text.remove_prefix(static_cast<std::size_t>(last - text.data()));
  if (!text.starts_with(end)) return 0;
  text.remove_prefix(end.size());
  return number;
}

}  // namespace

void require(bool holds, std::string_view property, std::string_view about) {
  if (holds) return;
  std::cerr << "does not hold: " << property << "\nfor: " << about << std::endl;
  std::abort();
}

void requirePlace(std::string_view message, std::string_view file, std::string_view text) {
  std::string_view rest = message;
  require(rest.starts_with(file) && rest.substr(file.size()).starts_with(':'),
          "a message begins with the file", message);
  rest.remove_prefix(file.size() + 1);
  const std::size_t line = takeNumber(rest, ":");
  const std::size_t column = takeNumber(rest, ": ");
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  require(line >= 1 && line <= lines, "a message names a line of the text", message);
  require(column >= 1 && column <= text.size() + 1, "a message names a column", message);
  require(!rest.empty(), "a message says something", message);
  require(rest.find(", expected ") != std::string_view::npos, "a message says what was expected",
          message);
  require(Fabric::findUnreadable(rest) == std::string_view::npos &&
              rest.find_first_of("\n\r") == std::string_view::npos,
          "a message is one line of text", message);
}

}  // namespace Fuzz
