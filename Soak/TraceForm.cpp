#include "Soak/TraceForm.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/Orm/Assert.h"

namespace Soak {

namespace {

constexpr std::array<std::pair<std::string_view, Kind>, 15> kKinds{{
    {"system", Kind::systemId},
    {"display", Kind::display},
    {"service", Kind::service},
    {"group", Kind::group},
    {"path", Kind::path},
    {"local", Kind::local},
    {"remote", Kind::remote},
    {"type", Kind::type},
    {"target", Kind::target},
    {"component", Kind::component},
    {"generation", Kind::generation},
    {"connection", Kind::connection},
    {"number", Kind::number},
    {"flag", Kind::flag},
    {"state", Kind::state},
}};

/// The kind whose word in braces the text begins with; null when it begins with none.
const std::pair<std::string_view, Kind>* kindAt(std::string_view text) {
  const auto* const found = std::find_if(kKinds.begin(), kKinds.end(), [text](const auto& kind) {
    const std::string_view word = kind.first;
    return text.size() > word.size() + 1 && text.substr(1, word.size()) == word &&
           text[word.size() + 1] == '}';
  });
  return found == kKinds.end() ? nullptr : found;
}

}  // namespace

TraceForm::TraceForm(const char* form) {
  std::string_view rest = form;
  std::size_t fixed = 0;  // how much of the rest is fixed
  std::string_view* part = &before_;
  while ((fixed = rest.find('{', fixed)) != std::string_view::npos) {
    const auto* const kind = kindAt(rest.substr(fixed));
    if (!kind) {
      ++fixed;  // a brace that is meant
      continue;
    }
    *part = rest.substr(0, fixed);
    rest.remove_prefix(fixed + kind->first.size() + 2);
    fixed = 0;
    part = &places_.emplace_back(Place{kind->second, {}}).after;
  }
  *part = rest;
}

std::string_view TraceForm::shortened(std::string_view text, std::string& buffer) {
  constexpr std::string_view kNamespace = " Controller::";
  const std::size_t open = text.find('(');
  if (open == std::string_view::npos) return text;
  const std::size_t name = text.substr(0, open).find(kNamespace);
  const std::size_t close = text.find("): ", open);
  if (name == std::string_view::npos || close == std::string_view::npos) return text;
  buffer = text.substr(name + kNamespace.size(), open - name - kNamespace.size());
  buffer.append("() ").append(text.substr(close + 3));
  return buffer;
}

bool TraceForm::fits(std::size_t place, std::string_view text, const Census* census) const {
  if (place == 0) {
    if (!text.starts_with(before_)) return false;
    text.remove_prefix(before_.size());
  }
  if (place == places_.size()) return text.empty();
  const auto& [kind, after] = places_[place];
  if (after.empty()) return !census || census->has(kind, text);
  // Names may contain what separates them: each place where the fixed text is may be meant.
  for (std::size_t end = text.find(after); end != std::string_view::npos;
       end = text.find(after, end + 1)) {
    if (census && !census->has(kind, text.substr(0, end))) continue;
    if (fits(place + 1, text.substr(end + after.size()), census)) return true;
  }
  return false;
}

}  // namespace Soak
