#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/Orm/Reactor.h"

namespace Support {

/// A notifiee of any entity that notes what it is told, and may do something about it.
class Recorder final : public Orm::Reactor {
 public:
  using Act = std::function<void(Orm::AttributeId, const Orm::Key&)>;

  explicit Recorder(const Orm::Ptr<Orm::Entity const>& entity, Act act = {})
      : act_(std::move(act)) {
    watchedIs(entity);
  }

  std::size_t told() const { return attributes_.size(); }
  const std::vector<Orm::AttributeId>& attributes() const { return attributes_; }
  /// How often it was told of one attribute.
  std::size_t told(Orm::AttributeId attribute) const {
    std::size_t count = 0;
    for (const Orm::AttributeId one : attributes_) count += one == attribute ? 1U : 0U;
    return count;
  }

  void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override {
    attributes_.push_back(attribute);
    if (act_) act_(attribute, key);
  }

 private:
  Act act_;
  std::vector<Orm::AttributeId> attributes_;
};

}  // namespace Support
