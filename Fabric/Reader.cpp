#include "Fabric/Reader.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#include "Fabric/InputError.h"
#include "Fabric/JsonReader.h"
#include "Fabric/Limits.h"
#include "Fabric/TextLocator.h"
#include "Fabric/YamlReader.h"

namespace Fabric {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

[[noreturn]] void failTooLarge(std::string_view name) {
  throw InputError(name, {1, 1},
                   "too large, expected at most " + std::to_string(kMaxBytes) + " bytes");
}

[[noreturn]] void failUnreadableFile(const std::string& path, std::string_view reason) {
  throw InputError(path, {1, 1}, "cannot be read: " + std::string(reason) + ", expected a file");
}

/// Everything that is left, of which the size need not be known before.
std::string readStream(std::FILE* stream, const std::string& path) {
  std::string text;
  std::array<char, 65536> buffer;
  std::size_t count = 0;
  while ((count = std::fread(buffer.data(), 1, buffer.size(), stream)) > 0) {
    text.append(buffer.data(), count);
    if (text.size() > kMaxBytes) {
      failTooLarge(path);
    }
  }
  if (std::ferror(stream) != 0) {
    failUnreadableFile(path, std::strerror(errno));
  }
  return text;
}

bool isJsonObject(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && text[first] == '{';
}

Value readChecked(std::string_view name, std::string_view text) {
  if (name.ends_with(".json")) {
    return JsonReader(name, text).read();
  }
  if (isJsonObject(text)) {
    try {
      return JsonReader(name, text).read();
    } catch (const InputError&) {
      // YAML's flow style begins so too; if it is not that either, its reader says what is wrong.
    }
  }
  return readYaml(name, text);
}

}  // namespace

std::string readFile(const std::string& path) {
  if (path == "-") {
    return readStream(stdin, path);
  }
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::is_directory(status)) {
    failUnreadableFile(path, "it is a directory");
  }
  if (std::filesystem::is_regular_file(status) &&
      std::filesystem::file_size(path, error) > kMaxBytes) {
    failTooLarge(path);
  }
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  if (file == nullptr) {
    failUnreadableFile(path, std::strerror(errno));
  }
  return readStream(file.get(), path);
}

Value read(std::string_view name, std::string_view text) {
  if (text.size() > kMaxBytes) {
    failTooLarge(name);
  }
  const std::size_t unreadable = findUnreadable(text);
  if (unreadable != std::string_view::npos) {
    throw InputError(
        name, TextLocator(text).at(unreadable),
        "a byte that is not part of a text, expected UTF-8 without control characters");
  }
  if (text.starts_with(kByteOrderMark)) {
    text.remove_prefix(kByteOrderMark.size());
  }
  return readChecked(name, text);
}

}  // namespace Fabric
