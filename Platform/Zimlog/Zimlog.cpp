#include "Platform/Zimlog/Zimlog.h"

#include <algorithm>
#include <deque>
#include <memory>

namespace Zimlog {

namespace {

using detail::RecordHead;
using detail::ring;

std::unique_ptr<char[]>& ringBytes() {
  static std::unique_ptr<char[]> bytes;
  return bytes;
}

/// A string form may record a message of its own: then more than one buffer is taken.
struct Buffers {
  std::deque<std::string> all;
  std::size_t taken = 0;
};

Buffers& buffers() {
  static Buffers theBuffers;
  return theBuffers;
}

const RecordHead& headAt(std::size_t place) {
  return *std::launder(reinterpret_cast<const RecordHead*>(ring.bytes + place));
}

void readBetween(std::size_t from, std::size_t to, const Visit& visit) {
  std::string text;
  while (from != to) {
    const RecordHead& head = headAt(from);
    text = head.descriptor->signature;
    if (!text.empty()) text += ": ";
    const char* argument = ring.bytes + from + sizeof head;
    const detail::Append* append = head.appends;
    fill(text, head.descriptor->format,
         [&](std::string& out) { argument = (*append++)(out, argument); });
    visit(*head.descriptor, head.stamp, text);
    from += head.size;
  }
}

}  // namespace

void enabledIs(bool on, std::size_t capacity) {
  ring.enabled = on;
  if (!on) return;
  ring.capacity = ring.limit = detail::padded(capacity);
  ringBytes() = std::make_unique<char[]>(ring.capacity);
  ring.bytes = ringBytes().get();
  ring.oldest = ring.end = ring.next = 0;
  ring.lost = 0;
}

void stampSourceIs(StampSource source) { ring.stamp = source; }

std::uint64_t lost() { return ring.lost; }

void read(const Visit& visit) {
  if (ring.end != 0) {
    readBetween(ring.oldest, ring.end, visit);
    readBetween(0, ring.next, visit);
  } else {
    readBetween(ring.oldest, ring.next, visit);
  }
}

namespace detail {

std::string& Form::takeBuffer() {
  Buffers& pool = buffers();
  if (pool.taken == pool.all.size()) pool.all.emplace_back();
  std::string& buffer = pool.all[pool.taken++];
  buffer.clear();
  return buffer;
}

void Form::giveBuffer() noexcept { --buffers().taken; }

bool makeRoom(std::size_t size) {
  if (size > ring.capacity) {
    ++ring.lost;
    return false;
  }
  while (ring.limit - ring.next < size) {
    if (ring.end == 0) {
      // What is left at the end is too short: the ring goes on at its beginning.
      ring.end = ring.next;
      ring.next = 0;
      ring.limit = ring.oldest;
    } else if (ring.oldest == ring.end) {
      ring.oldest = ring.end = 0;
      ring.limit = ring.capacity;
    } else {
      // Some more than are in the way, so that few records have to wait for it.
      const std::size_t enough = std::min(ring.end, ring.next + size + ring.capacity / 1024);
      std::size_t oldest = ring.oldest;
      do {
        ++ring.lost;
        oldest += headAt(oldest).size;
      } while (oldest < enough);
      ring.limit = ring.oldest = oldest;
    }
  }
  return true;
}

}  // namespace detail

}  // namespace Zimlog
