#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Orm/Seconds.h"

namespace Fabric {

/// Takes a JSON document from whoever knows what is in it, piece by piece and in order, so that a
/// large one need not stand in memory: as text (JsonText), or as the part of a tree that somebody
/// asks for (JsonTree).
class JsonSink {
 public:
  /// What becomes of an object or array that turns out to have no members.
  enum class WhenEmpty : std::uint8_t { leaveOut, keep };

  virtual ~JsonSink() = default;

  /// Begins a member of the open object; its one value comes next. False: nobody wants the member,
  /// and its value must not come.
  virtual bool key(std::string_view key) = 0;

  virtual void beginObject(WhenEmpty whenEmpty) = 0;
  virtual void endObject() = 0;
  virtual void beginArray(WhenEmpty whenEmpty) = 0;
  virtual void endArray() = 0;

  virtual void text(std::string_view value) = 0;
  virtual void boolean(bool value) = 0;
  virtual void whole(std::int64_t value) = 0;
  /// A time or a span of it, written to the microsecond.
  virtual void seconds(Orm::Seconds value) = 0;

  // ---- whole members

  template <class Write>
  void object(std::string_view name, WhenEmpty whenEmpty, Write&& write) {
    if (!key(name)) return;
    beginObject(whenEmpty);
    write();
    endObject();
  }
  template <class Write>
  void array(std::string_view name, WhenEmpty whenEmpty, Write&& write) {
    if (!key(name)) return;
    beginArray(whenEmpty);
    write();
    endArray();
  }
  void textMember(std::string_view name, std::string_view value) {
    if (key(name)) text(value);
  }
  /// An empty text is left out.
  void textMemberUnlessEmpty(std::string_view name, std::string_view value) {
    if (!value.empty()) textMember(name, value);
  }
  void booleanMember(std::string_view name, bool value) {
    if (key(name)) boolean(value);
  }
  void wholeMember(std::string_view name, std::int64_t value) {
    if (key(name)) whole(value);
  }
  void secondsMember(std::string_view name, Orm::Seconds value) {
    if (key(name)) seconds(value);
  }
};

}  // namespace Fabric
