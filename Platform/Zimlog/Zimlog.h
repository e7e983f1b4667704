#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

#include "Platform/Orm/Inline.h"
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

inline bool enabled();
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

/// Stored in the ring as its bytes, and put into words when the record is read: what has no parts
/// elsewhere that could change or go until then.
template <class T>
inline constexpr bool isPlain =
    std::is_arithmetic_v<T> || Orm::EnumWithStringForm<T> || Orm::PlainValue<T>;

template <class T>
inline constexpr bool isText = !isPlain<T> && std::is_convertible_v<const T&, std::string_view>;

/// The string form of anything else, in a buffer that is used again and again.
class Form {
 public:
  template <class T>
  explicit Form(const T& value) : text_(takeBuffer()) {
    Orm::appendStringForm(text_, value);
  }
  ~Form() { giveBuffer(); }
  Form(const Form&) = delete;
  Form& operator=(const Form&) = delete;
  operator std::string_view() const { return text_; }

 private:
  // The one that was taken last is given back first.
  static std::string& takeBuffer();
  static void giveBuffer() noexcept;

  std::string& text_;
};

/// What of an argument is copied.
template <class T>
decltype(auto) storable(const T& value) {
  if constexpr (isPlain<T>) {
    return value;
  } else if constexpr (isText<T>) {
    return std::string_view(value);
  } else {
    return Form(value);
  }
}

constexpr std::size_t padded(std::size_t size) { return (size + 7) & ~std::size_t{7}; }

// Arguments stand one after the other without gaps: a plain one as it is, a text behind its size.
using TextSize = std::uint32_t;

template <class T>
std::size_t bytesOf(const T& value) {
  if constexpr (isPlain<T>) {
    return sizeof(T);
  } else {
    return sizeof(TextSize) + std::string_view(value).size();
  }
}

template <class T>
ORM_ALWAYS_INLINE inline char* copy(char* to, const T& value) {
  if constexpr (isPlain<T>) {
    std::memcpy(to, &value, sizeof value);
    return to + sizeof value;
  } else {
    const std::string_view text(value);
    const auto size = static_cast<TextSize>(text.size());
    std::memcpy(to, &size, sizeof size);
    to += sizeof size;
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
    return to + text.size();
  }
}

/// Appends the string form of a stored argument and returns where the next one begins.
using Append = const char* (*)(std::string& out, const char* from);

template <class T>
const char* appendStored(std::string& out, const char* from) {
  if constexpr (isPlain<T>) {
    T value;
    std::memcpy(&value, from, sizeof value);
    Orm::appendStringForm(out, value);
    return from + sizeof value;
  } else {
    TextSize size = 0;
    std::memcpy(&size, from, sizeof size);
    out.append(from + sizeof size, size);
    return from + sizeof size + size;
  }
}

template <class... Stored>
inline constexpr std::array<Append, sizeof...(Stored)> kAppends{&appendStored<Stored>...};

struct RecordHead {
  const Descriptor* descriptor;
  const Append* appends;  // one an argument
  std::int64_t stamp;
  std::uint64_t size;  // of the whole record
};

// Records lie one after the other from `oldest` to `next`; when the ring has come round, from
// `oldest` to `end` and then from the beginning to `next`. A record never wraps.
struct Ring {
  char* bytes = nullptr;
  std::size_t capacity = 0;
  std::size_t oldest = 0;
  std::size_t end = 0;  // 0: has not come round
  std::size_t next = 0;
  std::size_t limit = 0;  // from next to here nothing is stored
  std::uint64_t lost = 0;
  bool enabled = false;
  StampSource stamp = nullptr;
};

inline constinit Ring ring;

/// Gives up the oldest records until one of `size` bytes fits; false when none of that size can.
bool makeRoom(std::size_t size);

// Both are called from sites that the compiler takes for rare; they are short all the same.
template <class... Stored>
[[gnu::hot]] void store(const Descriptor& descriptor, const Stored&... arguments) {
  const std::size_t size = padded(sizeof(RecordHead) + (std::size_t{0} + ... + bytesOf(arguments)));
  if (ring.limit - ring.next < size && !makeRoom(size)) return;
  char* const at = ring.bytes + ring.next;
  ring.next += size;
  const std::int64_t stamp = ring.stamp ? ring.stamp() : 0;
  ::new (at) RecordHead{&descriptor, kAppends<Stored...>.data(), stamp, size};
  [[maybe_unused]] char* to = at + sizeof(RecordHead);
  ((to = copy(to, arguments)), ...);
}

}  // namespace detail

inline bool enabled() { return detail::ring.enabled; }

/// Records one message. The caller has asked whether recording is on.
template <class... Arguments>
[[gnu::hot]] void record(const Descriptor& descriptor, const Arguments&... arguments) {
  detail::store(descriptor, detail::storable(arguments)...);
}

}  // namespace Zimlog
