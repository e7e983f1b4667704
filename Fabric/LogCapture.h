#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Orm/Clock.h"
#include "Platform/StructuredLog/StructuredLog.h"

namespace Fabric {

/// Keeps the structured log's messages, with their times, for the state document and the report.
///
/// Takes the place of the log's sink as long as it exists. Loop thread only.
class LogCapture final : public StructuredLog::Sink {
 public:
  struct Message {
    Orm::Seconds time;  // of the documents
    const StructuredLog::LogHandle* handle;
    std::string text;
  };

  /// Is told each message when it comes.
  class Observer {
   public:
    virtual void logMessage(const Message& message) = 0;

   protected:
    ~Observer() = default;
  };

  explicit LogCapture(Orm::Ptr<Orm::Clock> clock);
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  /// Null: nobody. The observer must stay as long as it is set.
  void observerIs(Observer* observer) { observer_ = observer; }

  /// In the order in which they came.
  const std::vector<Message>& messages() const { return messages_; }

  void message(const StructuredLog::LogHandle& handle, std::string_view text) override;

 private:
  Orm::Ptr<Orm::Clock> clock_;
  StructuredLog::Sink* sinkBefore_;
  Observer* observer_ = nullptr;
  std::vector<Message> messages_;
};

}  // namespace Fabric
