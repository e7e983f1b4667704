#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Dualog/Dualog.h"
#include "Platform/StructuredLog/StructuredLog.h"

namespace Support {

/// Takes the lines of the text trace while it exists; puts sink and levels back when it goes.
class CapturedTraces final : public Dualog::Sink {
 public:
  struct Line {
    Orm::Seconds time;
    std::string handle;
    int level;
    std::string source;
    std::string function;
    std::string text;
  };

  CapturedTraces() : previous_(Dualog::sinkIs(this)) {
    for (const Dualog::Handle* handle : Dualog::handles())
      levels_[handle->name()] = handle->level();
  }
  ~CapturedTraces() {
    for (Dualog::Handle* handle : Dualog::handles()) {
      const auto level = levels_.find(handle->name());
      handle->levelIs(level == levels_.end() ? Dualog::kAllOff : level->second);
    }
    Dualog::sinkIs(previous_);
  }
  CapturedTraces(const CapturedTraces&) = delete;
  CapturedTraces& operator=(const CapturedTraces&) = delete;

  /// Switches levels up to `level` on, of all handles or of one.
  static void levelIs(int level) {
    for (Dualog::Handle* handle : Dualog::handles()) handle->levelIs(level);
  }
  static void levelIs(std::string_view handle, int level) {
    Dualog::handle(handle)->levelIs(level);
  }

  void line(const Dualog::Line& line) override {
    lines_.push_back({line.time, line.handle.name(), line.level, line.handle.source(),
                      line.function, std::string(line.text)});
  }

  const std::vector<Line>& lines() const { return lines_; }
  void clear() { lines_.clear(); }

  /// The texts of one level, of one handle when it is named, in the order in which they came.
  std::vector<std::string> texts(int level, std::string_view handle = {}) const {
    std::vector<std::string> texts;
    for (const Line& line : lines_) {
      if (line.level == level && (handle.empty() || line.handle == handle)) {
        texts.push_back(line.text);
      }
    }
    return texts;
  }

 private:
  Dualog::Sink* previous_;
  std::map<std::string, int> levels_;
  std::vector<Line> lines_;
};

/// Takes the structured log's messages while it exists.
class CapturedLog final : public StructuredLog::Sink {
 public:
  struct Message {
    const StructuredLog::LogHandle* handle;
    std::string text;
  };

  CapturedLog() : previous_(StructuredLog::sinkIs(this)) {}
  ~CapturedLog() { StructuredLog::sinkIs(previous_); }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  void message(const StructuredLog::LogHandle& handle, std::string_view text) override {
    messages_.push_back({&handle, std::string(text)});
  }

  const std::vector<Message>& messages() const { return messages_; }
  std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    for (const Message& message : messages_) texts.push_back(message.text);
    return texts;
  }
  void clear() { messages_.clear(); }

 private:
  StructuredLog::Sink* previous_;
  std::vector<Message> messages_;
};

}  // namespace Support
