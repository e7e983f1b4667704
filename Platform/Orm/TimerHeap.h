#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace Orm {

/// The timers of a clock that stand in a queue: a pairing heap through the timers themselves.
///
/// A Timer has a place_, which says what comes before it, and three pointers of the heap's: child_,
/// next_ and previous_. Loop thread only. Pushing, and moving to an earlier place, cost O(1) and
/// touch the first timer and the neighbours; taking out costs O(log n), amortised.
template <class Timer>
class TimerHeap {
 public:
  bool empty() const { return first_ == nullptr; }
  /// The timer with the earliest place, null when there is none.
  Timer* first() const { return first_; }

  /// A timer that stands nowhere; its place is set.
  void push(Timer& timer) {
    timer.child_ = timer.next_ = timer.previous_ = nullptr;
    first_ = first_ ? joined(first_, &timer) : &timer;
  }

  /// A timer whose place was made earlier.
  void movedUp(Timer& timer) {
    if (&timer == first_) return;
    cut(timer);
    first_ = joined(first_, &timer);
  }

  void remove(Timer& timer) {
    Timer* const children = merged(timer.child_);
    if (&timer == first_) {
      first_ = children;
      return;
    }
    cut(timer);
    if (children) first_ = joined(first_, children);
  }

  /// Calls visit(timer) for each, in no order, before it looks at it. O(n); for tests and checks.
  template <class Visit>
  void walk(Visit&& visit) const {
    std::vector<const Timer*> left{first_};
    while (!left.empty()) {
      const Timer* const timer = left.back();
      left.pop_back();
      if (!timer) continue;
      visit(*timer);
      left.push_back(timer->next_);
      left.push_back(timer->child_);
    }
  }

 private:
  // Each timer comes before its children, which are a list: a child's previous_ is the child before
  // it, or the parent. The first timer of the heap has neither next_ nor previous_.

  /// The earlier of two that have no parent, with the other one as its first child. Its next_ is
  /// left as it was.
  static Timer* joined(Timer* a, Timer* b) {
    if (b->place_.before(a->place_)) std::swap(a, b);
    b->previous_ = a;
    b->next_ = a->child_;
    if (a->child_) a->child_->previous_ = b;
    a->child_ = b;
    return a;
  }

  /// One of a list of children that have lost their parent: joined in pairs, and the pairs from the
  /// last to the first, which keeps the heap flat in the long run.
  static Timer* merged(Timer* first) {
    if (!first) return nullptr;
    Timer* pairs = nullptr;
    while (first) {
      Timer* pair = first;
      Timer* const other = first->next_;
      first = other ? other->next_ : nullptr;
      if (other) pair = joined(pair, other);
      pair->next_ = pairs;
      pairs = pair;
    }
    Timer* all = pairs;
    pairs = pairs->next_;
    while (pairs) {
      Timer* const next = pairs->next_;
      all = joined(all, pairs);
      pairs = next;
    }
    all->next_ = all->previous_ = nullptr;
    return all;
  }

  /// Takes a timer that is not the first, with its children, out of its parent's list.
  static void cut(Timer& timer) {
    Timer* const before = timer.previous_;
    if (before->child_ == &timer) {
      before->child_ = timer.next_;
    } else {
      before->next_ = timer.next_;
    }
    if (timer.next_) timer.next_->previous_ = before;
    timer.next_ = timer.previous_ = nullptr;
  }

  Timer* first_ = nullptr;
};

}  // namespace Orm
