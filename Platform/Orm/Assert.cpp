#include "Platform/Orm/Assert.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace Orm {

namespace {

void writeToStandardError(const char* text, const char* file, int line) {
  std::fprintf(stderr, "assertion failed: %s (%s:%d)\n", text, file, line);
}

AssertionHandler theHandler = writeToStandardError;

}  // namespace

AssertionHandler assertionHandlerIs(AssertionHandler handler) {
  return std::exchange(theHandler, handler ? handler : writeToStandardError);
}

void assertionFailed(const char* text, const char* file, int line) {
  theHandler(text, file, line);
  std::abort();
}

}  // namespace Orm
