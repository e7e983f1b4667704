#include "Zorb/OutputFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <utility>

#include "Zorb/UsageError.h"

namespace Zorb {

OutputFile::OutputFile(std::string option, std::string path, const Console& console)
    : option_(std::move(option)), path_(std::move(path)), standardOutput_(console.out) {
  if (isStandardOutput()) return;
  std::error_code error;
  const auto type = std::filesystem::status(path_, error).type();
  errno = 0;
  file_.open(path_, std::ios::binary | std::ios::app);
  if (!file_) fail();
  // A pipe's reader would take a second opening for a second text.
  if (type != std::filesystem::file_type::regular &&
      type != std::filesystem::file_type::not_found) {
    return;
  }
  file_.close();
  if (type == std::filesystem::file_type::not_found) std::filesystem::remove(path_, error);
}

void OutputFile::fail() const {
  throw UsageError(option_ + ": cannot write " +
                   (isStandardOutput() ? std::string("standard output") : path_) +
                   (errno == 0 ? std::string() : std::string(": ") + std::strerror(errno)));
}

std::ostream& OutputFile::stream() {
  if (isStandardOutput()) return standardOutput_;
  errno = 0;
  if (!file_.is_open()) file_.open(path_, std::ios::binary | std::ios::trunc);
  if (!file_) fail();
  return file_;
}

void OutputFile::close() {
  std::ostream& written = isStandardOutput() ? standardOutput_ : file_;
  written.flush();
  if (!written) fail();
  if (!isStandardOutput()) file_.close();
  if (!written) fail();
}

}  // namespace Zorb
