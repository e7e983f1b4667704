#pragma once

/// Broken invariants stop the process, in every build type.
namespace Orm {

/// What is called before the process is aborted; it may write, but the process ends all the same.
/// `text` is the invariant's fixed text, `file` and `line` are where it is stated.
using AssertionHandler = void (*)(const char* text, const char* file, int line);

/// Replaces the handler; null puts the default back, which writes "assertion failed: TEXT" and the
/// source place to standard error. Returns the one that was in force.
AssertionHandler assertionHandlerIs(AssertionHandler handler);

[[noreturn]] void assertionFailed(const char* text, const char* file, int line);

/// Stops the process with `text` unless `holds`. One predicted branch when it holds. The place is
/// the caller's (the builtins stand for std::source_location, which clang 14 does not have).
template <class Condition>
inline void assertThat(const Condition& holds, const char* text,
                       const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (!static_cast<bool>(holds)) [[unlikely]]
    assertionFailed(text, file, line);
}

}  // namespace Orm
