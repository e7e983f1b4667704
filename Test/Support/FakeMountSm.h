#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Mount/MountSm.h"

namespace Support {

class FakeMounts;

/// A mount machine that carries nothing out: it notes what it is asked and reports what the test
/// says, when the test says it.
class FakeMountSm final : public Controller::MountSm, private Kobble::Counted<FakeMountSm> {
 public:
  /// What it was made for, copied.
  struct Request {
    Controller::SystemId systemId;
    Orm::Ptr<Controller::ConnectionConfig const> connectionConfig;
    Orm::Ptr<Controller::Heartbeat::Config const> heartbeatConfig;
    Orm::String remoteRoot;
    Orm::String remotePath;
    Orm::Ptr<Fennix::Dir> mountDir;
    Orm::String mountPath;
    Orm::String ormType;
    Orm::String mountFlags;
    std::uint32_t retries;
    std::int32_t timeout;
  };

  FakeMountSm(FakeMounts& mounts, const Controller::MountRequest& asked);
  ~FakeMountSm() override;

  const Request& request() const { return request_; }
  Controller::MountSmData& record() const { return *record_; }

  /// The outcome of what was asked, or a step on the way to it. The machine may be gone afterwards.
  void reports(Controller::MountState state) {
    using Controller::MountState;
    pending_ = state == MountState::requested || state == MountState::mounting;
    const Orm::Ptr<Controller::MountSmData> record = record_;
    record->mountStateIs(state);
  }
  void pendingRequestIs(bool pending) { pending_ = pending; }

  void doRemount() override { asked("remount"); }
  void doUnmount() override { asked("unmount"); }
  void doStatePreservingUnmount() override { asked("preserving unmount"); }
  void doCleanup() override;
  bool pendingRequest() const override { return pending_; }
  bool cleanedUp() const { return cleanedUp_; }
  /// The last of what it was asked, as the lines of FakeMounts begin.
  const std::string& lastAsked() const { return lastAsked_; }

 private:
  void asked(const char* what);

  FakeMounts& mounts_;
  Request request_;
  Orm::Ptr<Controller::MountSmData> record_;
  std::string lastAsked_;
  bool pending_ = true;
  bool cleanedUp_ = false;
};

/// Makes fake mount machines and keeps what all of them were asked, in order, as lines
/// "WHAT PATH from SYSTEM": "mount", "remount", "unmount", "preserving unmount", "clean up".
class FakeMounts final : public Controller::MountSm::Factory {
 public:
  Orm::Ptr<Controller::MountSm> mountSm(const Controller::MountRequest& request) override {
    return Orm::make<FakeMountSm>(*this, request);
  }

  /// The mount that is there (and has not been cleaned up), null when there is none.
  FakeMountSm* find(const Controller::SystemId& systemId, std::string_view path) const {
    for (auto at = live_.rbegin(); at != live_.rend(); ++at) {
      const FakeMountSm::Request& request = (*at)->request();
      if (!(*at)->cleanedUp() && request.systemId == systemId && request.remotePath == path) {
        return *at;
      }
    }
    return nullptr;
  }
  const std::vector<FakeMountSm*>& live() const { return live_; }

  /// What was asked since the last call.
  std::vector<std::string> takeRequests() { return std::exchange(requests_, {}); }
  const std::vector<std::string>& requests() const { return requests_; }

  /// Called at the end of a machine's construction, before the mount entry's machine knows it.
  void onMadeIs(std::function<void(FakeMountSm&)> onMade) { onMade_ = std::move(onMade); }

 private:
  friend class FakeMountSm;

  std::vector<FakeMountSm*> live_;
  std::vector<std::string> requests_;
  std::function<void(FakeMountSm&)> onMade_;
};

inline FakeMountSm::FakeMountSm(FakeMounts& mounts, const Controller::MountRequest& asked)
    : mounts_(mounts),
      request_{asked.systemId,   asked.connectionConfig, asked.heartbeatConfig, asked.remoteRoot,
               asked.remotePath, asked.mountDir,         asked.mountPath(),     asked.ormType,
               asked.mountFlags, asked.retries,          asked.timeout},
      record_(asked.mountSmData) {
  mounts_.live_.push_back(this);
  this->asked("mount");
  if (mounts_.onMade_) mounts_.onMade_(*this);
}

inline FakeMountSm::~FakeMountSm() { std::erase(mounts_.live_, this); }

inline void FakeMountSm::doCleanup() {
  if (cleanedUp_) return;
  asked("clean up");
  pending_ = false;
  cleanedUp_ = true;
}

inline void FakeMountSm::asked(const char* what) {
  pending_ = true;
  lastAsked_ = what;
  std::string line(what);
  line.append(" ").append(request_.remotePath.view()).append(" from ");
  request_.systemId.appendTo(line);
  mounts_.requests_.push_back(std::move(line));
}

}  // namespace Support
