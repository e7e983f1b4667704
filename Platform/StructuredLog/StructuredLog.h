#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Orm/StringForm.h"

/// Messages for operators, with an identifier, a severity and an explanation each.
namespace StructuredLog {

/// The framework's standard recommended action.
inline constexpr const char* kContactSupport =
    "If the problem persists, contact your support representative.";

/// One kind of message; a static object in the source that logs it.
class LogHandle {
 public:
  LogHandle(const char* id, int severity, const char* format, const char* explanation,
            const char* recommendedAction);
  LogHandle(const LogHandle&) = delete;
  LogHandle& operator=(const LogHandle&) = delete;

  const char* id() const { return id_; }
  int severity() const { return severity_; }
  const char* format() const { return format_; }
  const char* explanation() const { return explanation_; }
  const char* recommendedAction() const { return recommendedAction_; }

  /// Emits the message; "%s" in the format stands for each argument in turn.
  template <class... Arguments>
  void log(const Arguments&... arguments) const {
    emit({Orm::stringForm(arguments)...});
  }

 private:
  void emit(const std::vector<std::string>& arguments) const;

  const char* id_;
  int severity_;
  const char* format_;
  const char* explanation_;
  const char* recommendedAction_;
};

/// All kinds of messages that the process can log, in the order in which they were defined.
const std::vector<const LogHandle*>& logHandles();

/// Takes the messages; a host sets one, null puts the default back, which writes lines to standard
/// error. Returns the one that was in force (null: the default).
class Sink {
 public:
  virtual void message(const LogHandle& handle, std::string_view text) = 0;

 protected:
  ~Sink() = default;
};
Sink* sinkIs(Sink* sink);

}  // namespace StructuredLog
