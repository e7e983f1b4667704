#include "Controllerdb/MountsRegistry/MounterName.h"

#include <ostream>

#include "Platform/Orm/CharRange.h"

namespace Controller {

namespace {

constexpr std::string_view kHead = "Value('Controller::MounterName', ** {";
constexpr std::string_view kServiceName = "'serviceName': ";
constexpr std::string_view kGroupName = ", 'groupName': ";
constexpr std::string_view kTail = "})";

}  // namespace

std::string MounterName::stringValue() const {
  std::string text;
  appendTo(text);
  return text;
}

void MounterName::appendTo(std::string& out) const {
  out.append(kHead).append(kServiceName).append(serviceName.view());
  out.append(kGroupName).append(groupName.view()).append(kTail);
}

std::optional<MounterName> MounterName::parse(std::string_view text) {
  Orm::CharRange range(text);
  range.needString(kHead);
  range.needString(kServiceName);
  const std::string_view serviceName = range.readUntil(kGroupName);
  range.needString(kGroupName);
  const std::string_view groupName = range.readUntilLast(kTail);
  range.needString(kTail);
  if (!range.consumed()) return std::nullopt;
  return MounterName{Orm::String(serviceName), Orm::String(groupName)};
}

std::ostream& operator<<(std::ostream& out, const MounterName& name) {
  return out << name.stringValue();
}

}  // namespace Controller
