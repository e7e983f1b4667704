#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>

#include "Platform/Orm/StringForm.h"

/// The fast trace: a ring of binary records that nothing formats until it is read.
///
/// A record is its call site's descriptor, a time stamp and the arguments, copied. When the ring
/// is full the oldest records go. Loop thread only. Off until a host switches it on (through
/// Dualog::fastTraceIs, which tells the call sites).
namespace Zimlog {

/// One message of one call site; lives as long as the process. In the format "%s" stands for each
/// argument and "%%" for a percent sign.
struct Descriptor {
  const char* source;
  std::uint32_t line;
  int level;
  const char* signature;
  const char* format;
};

inline constexpr std::size_t kDefaultCapacity = 1024 * 1024;  // bytes

bool enabled();
/// Switches recording on, into an empty ring of `capacity` bytes, or off; what was recorded can
/// be read until it is switched on again.
void enabledIs(bool on, std::size_t capacity = kDefaultCapacity);

/// Where time stamps come from, in ticks of the process clock; null: no time is stamped.
using StampSource = std::int64_t (*)();
void stampSourceIs(StampSource source);

/// Calls visit(descriptor, stamp, text) for each record, oldest first; the text is the signature,
/// ": " and the format with its arguments filled in.
using Visit = std::function<void(const Descriptor&, std::int64_t, std::string_view)>;
void read(const Visit& visit);
/// Records that were given up because the ring was full.
std::uint64_t lost();

/// Writes `format` with each "%s" replaced by what next(out) appends, and each "%%" by "%".
template <class Next>
void fill(std::string& out, std::string_view format, Next&& next) {
  for (;;) {
    const std::size_t mark = format.find('%');
    out += format.substr(0, mark);
    if (mark == std::string_view::npos) return;
    const std::string_view what = format.substr(mark, 2);
    if (what == "%s") {
      next(out);
    } else {
      out += '%';
    }
    format.remove_prefix(mark + what.size());
  }
}

/// The number of "%s" in a format, for checks at compile time.
consteval std::size_t placeholders(std::string_view format) {
  std::size_t count = 0;
  for (std::size_t at = format.find('%'); at != std::string_view::npos;
       at = format.find('%', at + 2)) {
    if (format.substr(at, 2) == "%s") ++count;
  }
  return count;
}

namespace detail {

enum class Kind : std::uint32_t { text, unsignedNumber, signedNumber };

// An argument in the ring: its head, then the text's bytes up to the next multiple of 8.
struct ArgumentHead {
  Kind kind;
  std::uint32_t size;  // of the text
};

template <class T>
inline constexpr bool isNumber =
    std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char>;

/// What of an argument is copied: numbers as they are, everything else as text.
template <class T>
decltype(auto) storable(const T& value) {
  if constexpr (isNumber<T>) {
    return value;
  } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
    return std::string_view(value);
  } else {
    return Orm::stringForm(value);
  }
}

constexpr std::size_t padded(std::size_t size) { return (size + 7) & ~std::size_t{7}; }

template <class T>
std::size_t bytesOf(const T& value) {
  if constexpr (isNumber<T>) {
    return sizeof(ArgumentHead) + 8;
  } else {
    return sizeof(ArgumentHead) + padded(value.size());
  }
}

template <class T>
char* copy(char* to, const T& value) {
  if constexpr (isNumber<T>) {
    const ArgumentHead head{std::is_signed_v<T> ? Kind::signedNumber : Kind::unsignedNumber, 8};
    const auto wide = static_cast<std::uint64_t>(value);
    std::memcpy(to, &head, sizeof head);
    std::memcpy(to + sizeof head, &wide, 8);
  } else {
    const ArgumentHead head{Kind::text, static_cast<std::uint32_t>(value.size())};
    std::memcpy(to, &head, sizeof head);
    value.copy(to + sizeof head, value.size());
  }
  return to + bytesOf(value);
}

/// Room for a record with `bytes` of arguments, its head written; null when it is too large.
char* open(const Descriptor& descriptor, std::size_t bytes);

template <class... Stored>
void store(const Descriptor& descriptor, const Stored&... arguments) {
  char* to = open(descriptor, (std::size_t{0} + ... + bytesOf(arguments)));
  if (!to) return;
  ((to = copy(to, arguments)), ...);
}

}  // namespace detail

/// Records one message. The caller has asked whether recording is on.
template <class... Arguments>
void record(const Descriptor& descriptor, const Arguments&... arguments) {
  detail::store(descriptor, detail::storable(arguments)...);
}

}  // namespace Zimlog
