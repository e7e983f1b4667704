#include "Platform/StructuredLog/StructuredLog.h"

#include <cstdio>
#include <utility>

namespace StructuredLog {

namespace {

std::vector<const LogHandle*>& theHandles() {
  static std::vector<const LogHandle*> handles;
  return handles;
}

class StandardErrorSink final : public Sink {
 public:
  void message(const LogHandle& handle, std::string_view text) override {
    std::fprintf(stderr, "%%%s-%d: %.*s\n", handle.id(), handle.severity(),
                 static_cast<int>(text.size()), text.data());
  }
};

StandardErrorSink standardErrorSink;
Sink* theSink = &standardErrorSink;

}  // namespace

LogHandle::LogHandle(const char* id, int severity, const char* format, const char* explanation,
                     const char* recommendedAction)
    : id_(id),
      severity_(severity),
      format_(format),
      explanation_(explanation),
      recommendedAction_(recommendedAction) {
  theHandles().push_back(this);
}

void LogHandle::emit(const std::vector<std::string>& arguments) const {
  std::string text;
  std::string_view rest = format_;
  for (const std::string& argument : arguments) {
    const std::size_t mark = rest.find("%s");
    if (mark == std::string_view::npos) break;
    text += rest.substr(0, mark);
    text += argument;
    rest.remove_prefix(mark + 2);
  }
  text += rest;
  theSink->message(*this, text);
}

const std::vector<const LogHandle*>& logHandles() { return theHandles(); }

Sink* sinkIs(Sink* sink) {
  Sink* const old = std::exchange(theSink, sink ? sink : &standardErrorSink);
  return old == &standardErrorSink ? nullptr : old;
}

}  // namespace StructuredLog
