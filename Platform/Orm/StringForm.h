#pragma once

#include <charconv>
#include <concepts>
#include <string>
#include <string_view>
#include <type_traits>

/// The string form of values, as traces, logs and reports show them. A class takes part with a
/// member `void appendTo(std::string&) const`, an enumeration with a function
/// `void appendTo(std::string&, E)` in its own namespace.
namespace Orm {

template <class T>
concept WithStringForm = requires(const T& value, std::string& out) {
  value.appendTo(out);
};

template <class T>
concept EnumWithStringForm = std::is_enum_v<T> && requires(T value, std::string& out) {
  appendTo(out, value);
};

/// A class whose value is its bytes and nothing else (no pointers) says so with a member
/// `static constexpr bool kPlainValue = true`: its string form can be made later from a copy.
template <class T>
concept PlainValue = std::is_trivially_copyable_v<T> && T::kPlainValue;

template <class T>
void appendStringForm(std::string& out, const T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    out += value ? "true" : "false";
  } else if constexpr (std::is_same_v<T, char>) {
    out += value;
  } else if constexpr (std::is_arithmetic_v<T>) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out.append(digits, end);
  } else if constexpr (WithStringForm<T>) {
    value.appendTo(out);
  } else if constexpr (EnumWithStringForm<T>) {
    appendTo(out, value);
  } else {
    out += std::string_view(value);
  }
}

template <class T>
std::string stringForm(const T& value) {
  std::string out;
  appendStringForm(out, value);
  return out;
}

}  // namespace Orm
