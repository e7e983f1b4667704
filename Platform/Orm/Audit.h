#pragma once

#include <string>

/// The books of all counted objects, handles and reactors, to be compared with what the objects say
/// of themselves. Builds with ZORB_AUDIT keep them, at several times the cost of everything; in all
/// others nothing is kept and nothing costs anything. Handles may come and go on several threads;
/// findings() wants that none does meanwhile.
namespace Orm {

class PtrInterface;
class Reactor;

namespace Audit {

#if ZORB_AUDIT
inline constexpr bool kOn = true;
#else
inline constexpr bool kOn = false;
#endif

/// What does not agree, empty when all does: each object's count with the handles to it; each
/// entity's notifiees, none of them gone, null or twice, with the entities that the reactors watch.
/// Without books, empty. O(everything).
std::string findings();

void noteObject(const PtrInterface* object);
void noteObjectGone(const PtrInterface* object);
/// `object`: what the handle at that place holds from now on, null for nothing.
void noteHandle(const void* handle, const void* object);
void noteReactor(const Reactor* reactor);
void noteReactorGone(const Reactor* reactor);

// ---- called where it happens

inline void objectCame(const PtrInterface* object) {
  if constexpr (kOn) noteObject(object);
}
inline void objectGoes(const PtrInterface* object) {
  if constexpr (kOn) noteObjectGone(object);
}
inline void handleIs(const void* handle, const void* object) {
  if constexpr (kOn) noteHandle(handle, object);
}
inline void reactorCame(const Reactor* reactor) {
  if constexpr (kOn) noteReactor(reactor);
}
inline void reactorGoes(const Reactor* reactor) {
  if constexpr (kOn) noteReactorGone(reactor);
}

}  // namespace Audit

}  // namespace Orm
