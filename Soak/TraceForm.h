#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Soak/Census.h"

namespace Soak {

/// What one statement of the text trace says, with places for what changes:
///
///     "MountsRegistryEntrySm::doConnectSwitch()  mounting:{path} from:{system}"
///
/// The words in braces are kinds of names and values. A function's signature, with which messages
/// begin, is shortened to its name and "()". A value; matching costs the text, and as many looks at
/// names as there are ways to read it, mostly one.
class TraceForm {
 public:
  /// `form` has to stay.
  TraceForm(const char* form);

  /// Whether the fixed parts are those of the text.
  bool resembles(std::string_view text) const { return fits(0, text, nullptr); }
  /// Whether all names in the text are those of what there is.
  bool holds(std::string_view text, const Census& census) const { return fits(0, text, &census); }

  /// A line of the trace as forms say it.
  static std::string_view shortened(std::string_view text, std::string& buffer);

 private:
  struct Place {
    Kind kind;
    std::string_view after;  // the fixed text that follows it; empty at the end
  };
  bool fits(std::size_t place, std::string_view text, const Census* census) const;

  std::string_view before_;
  std::vector<Place> places_;
};

/// Those of all traces and messages of the library.
const std::vector<TraceForm>& traceForms();

}  // namespace Soak
