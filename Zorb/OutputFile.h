#pragma once

#include <fstream>
#include <iosfwd>
#include <string>

#include "Zorb/Console.h"

namespace Zorb {

/// Where a document that was asked for goes: a file, or with "-" standard output.
///
/// That a file can be written is found out at once, without changing what is in it; it is emptied
/// when the document begins, so that a run that does not get so far leaves the old one.
class OutputFile {
 public:
  /// Throws UsageError, naming `option`, when the file cannot be written.
  OutputFile(std::string option, std::string path, const Console& console);

  bool isStandardOutput() const { return path_ == "-"; }

  /// Where to write; the document begins with the first call.
  std::ostream& stream();
  /// Throws UsageError unless everything that was written has arrived.
  void close();

 private:
  [[noreturn]] void fail() const;

  std::string option_;
  std::string path_;
  std::ostream& standardOutput_;
  std::ofstream file_;
};

}  // namespace Zorb
