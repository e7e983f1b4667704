#pragma once

#include "Platform/Orm/Collection.h"

namespace Controller {

/// The child machines that their parent is making just now, by key.
///
/// A child that is made may report at once that initial mounts are complete, and whoever hears it
/// may take away what the child stands for before the parent holds it. The parent notes that here,
/// and lets such a child go as soon as it has it.
class ChildrenInMaking {
 public:
  bool has(const Orm::String& key) const { return wanted_.has(key); }
  void begin(const Orm::String& key) { wanted_.set(key, true); }
  /// What the child stands for has gone, if the child is being made; it may have come again since.
  void gone(const Orm::String& key) {
    if (wanted_.has(key)) wanted_.set(key, false);
  }
  void allGone() {
    wanted_.walk([this](const Orm::String& key, bool) { gone(key); });
  }
  /// Whether the child that has been made is to be kept.
  bool end(const Orm::String& key) {
    const bool wanted = wanted_.value(key);
    wanted_.erase(key);
    return wanted;
  }

 private:
  Orm::ValueCollection<Orm::String, bool> wanted_;
};

}  // namespace Controller
