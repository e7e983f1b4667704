#include "Platform/Dualog/Dualog.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "Platform/Orm/ActivityManagerConfig.h"

namespace Dualog {

namespace {

std::vector<Handle*>& theHandles() {
  static std::vector<Handle*> handles;
  return handles;
}

class StandardErrorSink final : public Sink {
 public:
  void line(const Line& line) override {
    const std::string text = format(line);
    std::fprintf(stderr, "%s\n", text.c_str());
  }
};

StandardErrorSink standardErrorSink;
Sink* theSink = &standardErrorSink;

std::string& spareBuffer() {
  static std::string spare;
  return spare;
}

}  // namespace

Handle::Handle(const char* name, const char* source) : name_(name), source_(source) {
  theHandles().push_back(this);
  settle();
}

void Handle::levelIs(int level) {
  level_ = std::clamp(level, kAllOff, kHighestLevel);
  settle();
}

void Handle::settle() { messageLevel_ = Zimlog::enabled() ? kHighestLevel : level_; }

Handle* handle(std::string_view name) {
  for (Handle* one : theHandles()) {
    if (name == one->name()) return one;
  }
  return nullptr;
}

std::vector<Handle*> handles() {
  std::vector<Handle*> all = theHandles();
  std::sort(all.begin(), all.end(),
            [](Handle* a, Handle* b) { return std::strcmp(a->name(), b->name()) < 0; });
  return all;
}

void fastTraceIs(bool on, std::size_t capacity) {
  Zimlog::enabledIs(on, capacity);
  for (Handle* one : theHandles()) one->settle();
}

Sink* sinkIs(Sink* sink) {
  Sink* const old = std::exchange(theSink, sink ? sink : &standardErrorSink);
  return old == &standardErrorSink ? nullptr : old;
}

std::string format(const Line& line) {
  char head[64];
  std::snprintf(head, sizeof head, "%.6f", line.time);
  std::string text(head);
  text.append(" ").append(line.handle.name());
  text.append(" ").append(std::to_string(line.level));
  text.append(" ").append(line.handle.source());
  text.append(":").append(std::to_string(line.line));
  text.append(" ").append(line.function);
  text.append(" ").append(line.text);
  return text;
}

void emit(const Handle& handle, int level, unsigned line, const char* function,
          std::string_view text) {
  const Orm::Seconds now = Orm::ActivityManagerConfig::instance()->clock()->now();
  theSink->line({now, handle, level, line, function, text});
}

Buffer::Buffer() : text_(std::exchange(spareBuffer(), {})) { text_.clear(); }

Buffer::~Buffer() { spareBuffer() = std::move(text_); }

}  // namespace Dualog
