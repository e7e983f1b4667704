#include "Platform/Zimlog/Zimlog.h"

#include <memory>

namespace Zimlog {

namespace {

struct RecordHead {
  const Descriptor* descriptor;  // null: the rest of the ring is empty, go on at its beginning
  std::int64_t stamp;
  std::uint64_t size;  // of the whole record
};

// Records lie one after the other from `oldest` to `next`, both counted in bytes since the ring
// was switched on; a record never wraps.
struct Ring {
  std::unique_ptr<char[]> bytes;
  std::size_t capacity = 0;
  std::uint64_t oldest = 0;
  std::uint64_t next = 0;
  std::uint64_t lost = 0;
  bool enabled = false;
  StampSource stamp = nullptr;

  char* at(std::uint64_t place) const { return bytes.get() + place % capacity; }

  RecordHead headAt(std::uint64_t place) const {
    RecordHead head{};
    std::memcpy(&head, at(place), sizeof head);
    return head;
  }
  void put(std::uint64_t place, const RecordHead& head) const {
    std::memcpy(at(place), &head, sizeof head);
  }
  /// The place after the record at `place`.
  std::uint64_t after(std::uint64_t place) const { return place + headAt(place).size; }
  std::size_t leftUntilEnd(std::uint64_t place) const { return capacity - place % capacity; }

  void freeUpTo(std::uint64_t end) {
    while (oldest != next && oldest + capacity < end) {
      if (headAt(oldest).descriptor) ++lost;
      oldest = after(oldest);
    }
  }
};

Ring& ring() {
  static Ring theRing;
  return theRing;
}

void appendArgument(std::string& out, const char*& from) {
  detail::ArgumentHead head{};
  std::memcpy(&head, from, sizeof head);
  from += sizeof head;
  if (head.kind == detail::Kind::text) {
    out.append(from, head.size);
  } else {
    std::uint64_t wide = 0;
    std::memcpy(&wide, from, 8);
    if (head.kind == detail::Kind::signedNumber) {
      Orm::appendStringForm(out, static_cast<std::int64_t>(wide));
    } else {
      Orm::appendStringForm(out, wide);
    }
  }
  from += detail::padded(head.size);
}

}  // namespace

bool enabled() { return ring().enabled; }

void enabledIs(bool on, std::size_t capacity) {
  Ring& r = ring();
  r.enabled = on;
  if (!on) return;
  r.capacity = detail::padded(capacity);
  r.bytes = std::make_unique<char[]>(r.capacity);
  r.oldest = r.next = r.lost = 0;
}

void stampSourceIs(StampSource source) { ring().stamp = source; }

std::uint64_t lost() { return ring().lost; }

void read(const Visit& visit) {
  const Ring& r = ring();
  std::string text;
  for (std::uint64_t place = r.oldest; place != r.next; place = r.after(place)) {
    const RecordHead head = r.headAt(place);
    if (!head.descriptor) continue;
    text = head.descriptor->signature;
    if (!text.empty()) text += ": ";
    const char* from = r.at(place) + sizeof head;
    fill(text, head.descriptor->format, [&](std::string& out) { appendArgument(out, from); });
    visit(*head.descriptor, head.stamp, text);
  }
}

namespace detail {

char* open(const Descriptor& descriptor, std::size_t bytes) {
  Ring& r = ring();
  const std::size_t size = sizeof(RecordHead) + bytes;
  if (size + sizeof(RecordHead) > r.capacity) {
    ++r.lost;
    return nullptr;
  }
  // A head must always fit behind a record, to say that the ring goes on at its beginning.
  const std::size_t left = r.leftUntilEnd(r.next);
  if (left < size + sizeof(RecordHead) && left != size) {
    r.freeUpTo(r.next + left + size);
    r.put(r.next, {nullptr, 0, left});
    r.next += left;
  }
  r.freeUpTo(r.next + size);
  r.put(r.next, {&descriptor, r.stamp ? r.stamp() : 0, size});
  char* const to = r.at(r.next) + sizeof(RecordHead);
  r.next += size;
  return to;
}

}  // namespace detail

}  // namespace Zimlog
