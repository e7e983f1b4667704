#include "Soak/Listener.h"

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

#include "Soak/Broken.h"

namespace Soak {

namespace {

using Forms = std::vector<const TraceForm*>;

void addForms(Forms& forms, std::string_view text) {
  for (const TraceForm& form : traceForms()) {
    if (form.resembles(text)) forms.push_back(&form);
  }
}

bool anyResembles(const Forms& forms, std::string_view text) {
  return std::any_of(forms.begin(), forms.end(),
                     [text](const TraceForm* form) { return form->resembles(text); });
}

/// A statement says the same each time but for names and values, so that the forms that its first
/// line resembles are kept for the life of the process. Several statements may share a place: a
/// line of the same number in functions of one name.
const Forms& formsOf(const Dualog::Line& line, std::string_view text) {
  static std::map<std::pair<const char*, unsigned>, Forms> known;
  Forms& forms = known[{line.function, line.line}];
  if (!anyResembles(forms, text)) addForms(forms, text);
  return forms;
}

}  // namespace

Listener::Listener(const Fabric::Simulation& simulation, bool traced)
    : sinkBefore_(StructuredLog::sinkIs(this)), traced_(traced), census_(simulation) {}

Listener::~Listener() { StructuredLog::sinkIs(sinkBefore_); }

void Listener::line(const Dualog::Line& line) {
  if (!broken_.empty()) return;
  const std::string_view text = TraceForm::shortened(line.text, buffer_);
  hold(formsOf(line, text), text, line.text);
}

void Listener::message(const StructuredLog::LogHandle& handle, std::string_view text) {
  if (sinkBefore_) sinkBefore_->message(handle, text);
  if (!broken_.empty()) return;
  if (!traced_) census_.begin();
  const std::string whole = std::string(handle.id()) + ": " + std::string(text);
  Forms forms;
  addForms(forms, whole);
  hold(forms, whole, whole);
}

void Listener::hold(const Forms& forms, std::string_view text, std::string_view whole) {
  if (!anyResembles(forms, text)) {
    broken_ = "a trace or message has a form that is known:";
    of_ = whole;
    return;
  }
  const auto holds = [&] {
    return std::any_of(forms.begin(), forms.end(),
                       [&](const TraceForm* form) { return form->holds(text, census_); });
  };
  if (holds()) return;
  census_.look();  // it may have come since
  if (holds()) return;
  broken_ = "a trace or message names what is there:";
  of_ = whole;
}

void Listener::patchCame() {
  if (traced_) census_.look();
}

void Listener::check() const {
  if (!broken_.empty()) throw Broken(broken_, ' ' + of_);
}

void Listener::begin() {
  if (traced_) census_.begin();
}

}  // namespace Soak
