#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

/// Feature toggles: named booleans, grouped by the file that sets them ("ControllerCommon.json").
///
/// A toggle that nothing has set has the default of whoever asks. Loop thread only.
namespace Flipset {

/// What is wrong with a toggle file: "FILE:LINE:COLUMN: what, and what was expected".
class ToggleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

bool toggle(std::string_view file, std::string_view name, bool byDefault);

/// A host sets a toggle, or puts its default back in force.
void toggleIs(std::string_view file, std::string_view name, bool on);
void toggleDel(std::string_view file, std::string_view name);
void toggleDelAll();

/// Sets the toggles of a file from its text: one JSON object of names and true or false. Throws
/// ToggleError, and then changes nothing.
void textIs(std::string_view file, std::string_view text);

}  // namespace Flipset
