#include "Platform/Mount/MountSmData.h"

#include <unordered_map>

namespace Controller {

namespace {

std::unordered_map<const MountSmData*, Orm::String>& texts() {
  static std::unordered_map<const MountSmData*, Orm::String> theTexts;
  return theTexts;
}

}  // namespace

const Orm::String& MountSmData::text() const {
  static const Orm::String kNone;
  return hasText_ ? texts().at(this) : kNone;
}

void MountSmData::keep(Orm::String text) const { texts()[this] = std::move(text); }

void MountSmData::forget() const { texts().erase(this); }

}  // namespace Controller
