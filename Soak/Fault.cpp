#include "Soak/Fault.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>

namespace Soak {

namespace {

using Controller::MountState;

constexpr std::string_view kWord = "fault";
constexpr std::array<std::string_view, 4> kKinds = {"state", "lose", "vanish", "within"};
constexpr std::array<std::string_view, Fault::kNotices> kNoticeNames = {
    "peer",      "mountEntry",   "publishEntry",          "groupState",
    "published", "publishReady", "initialMountsComplete", "pathPrefix",
    "any"};

template <std::size_t N>
std::optional<std::size_t> indexOf(const std::array<std::string_view, N>& names,
                                   std::string_view name) {
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) return std::nullopt;
  return static_cast<std::size_t>(found - names.begin());
}

std::optional<MountState> stateOf(std::string_view name) {
  for (std::size_t state = 0; state != Controller::kMountStates; ++state) {
    const auto known = static_cast<MountState>(state);
    if (name == Controller::name(known)) return known;
  }
  return std::nullopt;
}

bool parseWithin(std::istringstream& words, Fault& fault) {
  std::string notice;
  words >> notice >> fault.count;
  const auto index = indexOf(kNoticeNames, notice);
  if (!words || !index || fault.count == 0) return false;
  fault.notice = static_cast<Fault::Notice>(*index);
  return true;
}

bool parseMount(std::istringstream& words, Fault& fault) {
  std::string system;
  words >> system >> fault.path;
  const auto systemId = Controller::SystemId::parse(system);
  if (!words || !systemId) return false;
  fault.systemId = *systemId;
  if (fault.kind != Fault::Kind::state) return true;
  std::string state;
  words >> state;
  const auto known = stateOf(state);
  fault.state = known.value_or(MountState::unmounted);
  return known.has_value();
}

}  // namespace

std::optional<Fault> Fault::parse(std::string_view note) {
  std::istringstream words{std::string(note)};
  std::string word;
  std::string kindName;
  words >> word >> kindName;
  const auto kind = indexOf(kKinds, kindName);
  if (word != kWord || !kind) return std::nullopt;
  Fault fault;
  fault.kind = static_cast<Kind>(*kind);
  const bool good =
      fault.kind == Kind::within ? parseWithin(words, fault) : parseMount(words, fault);
  return good ? std::optional(fault) : std::nullopt;
}

std::string Fault::note() const {
  std::string text(kWord);
  text += ' ';
  text += kKinds[static_cast<std::size_t>(kind)];
  if (kind == Kind::within) {
    text += ' ';
    text += kNoticeNames[static_cast<std::size_t>(notice)];
    return text + ' ' + std::to_string(count);
  }
  text += ' ' + std::string(systemId.stringValue().view()) + ' ' + path;
  if (kind == Kind::state) text += std::string(" ") + Controller::name(state);
  return text;
}

}  // namespace Soak
