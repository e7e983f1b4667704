#include "Platform/Orm/CharRange.h"

namespace Orm {

bool CharRange::needString(std::string_view literal) {
  if (failed_ || !rest_.starts_with(literal)) {
    failed_ = true;
    return false;
  }
  rest_.remove_prefix(literal.size());
  return true;
}

std::string_view CharRange::readUntil(std::string_view delimiter) {
  return readTo(rest_.find(delimiter));
}

std::string_view CharRange::readUntilLast(std::string_view delimiter) {
  return readTo(rest_.rfind(delimiter));
}

std::string_view CharRange::readTo(std::size_t at) {
  if (failed_ || at == std::string_view::npos) {
    failed_ = true;
    return {};
  }
  const std::string_view read = rest_.substr(0, at);
  rest_.remove_prefix(at);
  return read;
}

}  // namespace Orm
