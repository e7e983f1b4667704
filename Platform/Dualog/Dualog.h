#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Orm/Seconds.h"
#include "Platform/Orm/StringForm.h"
#include "Platform/Zimlog/Zimlog.h"

/// The text trace, and the messages that go to both traces.
///
/// Levels are small integers; a handle on which level N is on emits the statements of levels 0 to
/// N. A statement that is off costs one load, one compare and a branch, and evaluates none of its
/// arguments. Loop thread only.
namespace Dualog {

inline constexpr int kAllOff = -1;
inline constexpr int kHighestLevel = 9;

/// The trace handle of one source; one static object a source, alive as long as the process.
class Handle {
 public:
  Handle(const char* name, const char* source);
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  const char* name() const { return name_; }
  const char* source() const { return source_; }

  bool enabled(int level) const { return level <= level_; }
  /// Whether a message is wanted by either trace.
  bool messageEnabled(int level) const { return level <= messageLevel_; }
  /// Whether anything at all is wanted by either trace.
  bool isOn() const { return messageLevel_ != kAllOff; }

  int level() const { return level_; }
  void levelIs(int level);

 private:
  friend void fastTraceIs(bool, std::size_t);
  void settle();

  const char* name_;
  const char* source_;
  int level_ = kAllOff;
  int messageLevel_ = kAllOff;
};

/// The handle of that name, null when there is none; and all of them, by name.
Handle* handle(std::string_view name);
std::vector<Handle*> handles();

/// Switches the fast trace on or off, for all handles.
void fastTraceIs(bool on, std::size_t capacity = Zimlog::kDefaultCapacity);

/// One line of the text trace.
struct Line {
  Orm::Seconds time;  // of the process clock
  const Handle& handle;
  int level;
  unsigned line;         // in the source
  const char* function;  // that traced
  std::string_view text;
};

/// Takes the lines of the text trace; a host sets one, null puts the default back, which writes
/// formatted lines to standard error. Returns the one that was in force (null: the default).
class Sink {
 public:
  virtual void line(const Line& line) = 0;

 protected:
  ~Sink() = default;
};
Sink* sinkIs(Sink* sink);

/// "TIME HANDLE LEVEL SOURCE:LINE FUNCTION TEXT", without a line end.
std::string format(const Line& line);

void emit(const Handle& handle, int level, unsigned line, const char* function,
          std::string_view text);

/// The buffer in which lines are put together, so that tracing does not allocate for each.
class Buffer {
 public:
  Buffer();
  ~Buffer();
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  std::string& text() { return text_; }

 private:
  std::string text_;
};

/// Emits one record of the pieces, one after the other. Kept out of the functions that trace: what
/// it needs of the stack and of registers would be set up and saved there with all traces off.
template <class... Pieces>
[[gnu::cold, gnu::noinline]] void record(const Handle& handle, int level, unsigned line,
                                         const char* function, const Pieces&... pieces) {
  Buffer buffer;
  (Orm::appendStringForm(buffer.text(), pieces), ...);
  emit(handle, level, line, function, buffer.text());
}

/// Emits one message to the text trace.
template <class... Arguments>
[[gnu::cold, gnu::noinline]] void messageText(const Handle& handle,
                                              const Zimlog::Descriptor& descriptor,
                                              const char* function, const Arguments&... arguments) {
  Buffer buffer;
  std::string& text = buffer.text();
  text = descriptor.signature;
  if (!text.empty()) text += ": ";
  const std::array<std::string, sizeof...(arguments)> forms{Orm::stringForm(arguments)...};
  auto form = forms.begin();
  Zimlog::fill(text, descriptor.format, [&form](std::string& out) { out += *form++; });
  emit(handle, descriptor.level, descriptor.line, function, text);
}

/// Emits one message to each trace that wants it. Compiles only when there are as many arguments
/// as the format has places for them. A function of its own for the same reason as `record`.
template <std::size_t placeholders, class... Arguments>
[[gnu::noinline]] void message(const Handle& handle, const Zimlog::Descriptor& descriptor,
                               const char* function, const Arguments&... arguments) {
  static_assert(sizeof...(Arguments) == placeholders);
  if (Zimlog::enabled()) Zimlog::record(descriptor, arguments...);
  if (handle.enabled(descriptor.level)) messageText(handle, descriptor, function, arguments...);
}

}  // namespace Dualog

/// A statement of the text trace: the pieces are evaluated and put together only when it is on.
#define DUALOG_TRACE(handle, level, ...)                                                \
  do {                                                                                  \
    if ((handle).enabled(level)) [[unlikely]]                                           \
      ::Dualog::record((handle), (level), __LINE__, static_cast<const char*>(__func__), \
                       __VA_ARGS__);                                                    \
  } while (false)

/// A message of both traces: the full signature of the function, and a format in which "%s"
/// stands for each of the arguments.
#define DUALOG_MESSAGE(handle, sourceName, level, signature, format, ...)                       \
  do {                                                                                          \
    if ((handle).messageEnabled(level)) [[unlikely]] {                                          \
      static constexpr ::Zimlog::Descriptor descriptor{sourceName, __LINE__, level, signature,  \
                                                       format};                                 \
      ::Dualog::message<::Zimlog::placeholders(format)>(                                        \
          (handle), descriptor, static_cast<const char*>(__func__) __VA_OPT__(, ) __VA_ARGS__); \
    }                                                                                           \
  } while (false)
