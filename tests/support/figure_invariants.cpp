#include "figure_invariants.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <sstream>

namespace splinecore::test {
namespace {

// More members than any test builds: a longer walk has gone round a cycle.
constexpr int kWalkLimit = 100000;

std::string Name(const void* p) {
  std::ostringstream out;
  out << p;
  return out.str();
}

class Checker {
 public:
  std::vector<std::string> problems;

  void Spline(SegmentCP* first) {
    if (first == nullptr) return;
    const bool closed = first->prev != nullptr;
    std::set<SegmentCP*> seen;
    SegmentCP* c = first;
    for (;;) {
      if (!seen.insert(c).second) {
        Report("spline " + Name(first) + ": walk along next revisits " + Name(c));
        return;
      }
      Links(c);
      Stack(c);
      if (c->IsLoopEnd()) {
        if (!closed) Report("open spline " + Name(first) + " has loopEnd on " + Name(c));
        if (c->next != first) Report("loopEnd point " + Name(c) + " does not link to the first point");
        if (first->prev != c) Report("first point of " + Name(first) + " has prev other than the loopEnd point");
        return;
      }
      if (c->next == nullptr) {
        if (closed) Report("closed spline " + Name(first) + " ends without loopEnd at " + Name(c));
        return;
      }
      c = c->next;
    }
  }

 private:
  std::set<SegmentCP*> stacksDone_;

  void Report(std::string message) { problems.push_back(std::move(message)); }

  void Links(SegmentCP* c) {
    if (c->next != nullptr && c->next->prev != c) Report(Name(c) + ": next's prev is not it");
    if (c->prev != nullptr && c->prev->next != c) Report(Name(c) + ": prev's next is not it");
  }

  void Stack(SegmentCP* c) {
    SegmentCP* top = c;
    for (int steps = 0; top->stackPrev != nullptr; top = top->stackPrev) {
      if (++steps > kWalkLimit) {
        Report(Name(c) + ": walk along stackPrev does not end");
        return;
      }
    }
    if (!stacksDone_.insert(top).second) return;
    int steps = 0;
    for (SegmentCP* m = top; m != nullptr; m = m->stackNext) {
      if (++steps > kWalkLimit) {
        Report("stack " + Name(top) + ": walk along stackNext does not end");
        return;
      }
      Member(m, top);
    }
  }

  void Member(SegmentCP* m, SegmentCP* top) {
    SegmentCP* below = m->stackNext;
    if (below != nullptr && below->stackPrev != m) Report(Name(m) + ": stackNext's stackPrev is not it");
    const bool belowIsHook = below != nullptr && below->IsHook();
    if (m->IsHook()) {
      if (m->head != m) Report("hook " + Name(m) + ": head is not itself");
      if (m->IsHasHooks()) Report("hook " + Name(m) + " carries hasHooks");
      const bool wantLast = below != nullptr && !belowIsHook;
      if (m->IsLastHook() != wantLast) {
        Report("hook " + Name(m) + (wantLast ? ": lastHook missing" : ": lastHook set wrongly"));
      }
    } else {
      if (m->head != top) Report(Name(m) + ": head is not the stack top " + Name(top));
      if (m->IsLastHook()) Report("non-hook " + Name(m) + " carries lastHook");
      if (m->IsHasHooks() != belowIsHook) {
        Report(Name(m) + (belowIsHook ? ": hasHooks missing" : ": hasHooks set wrongly"));
      }
    }
  }
};

}  // namespace

std::vector<std::string> FigureViolations(const std::vector<SegmentCP*>& firsts) {
  Checker checker;
  for (SegmentCP* first : firsts) checker.Spline(first);
  return checker.problems;
}

std::vector<std::string> FigureViolations(std::initializer_list<SegmentCP*> firsts) {
  return FigureViolations(std::vector<SegmentCP*>(firsts));
}

void ExpectFigureInvariants(const std::vector<SegmentCP*>& firsts) {
  for (const std::string& problem : FigureViolations(firsts)) ADD_FAILURE() << problem;
}

void ExpectFigureInvariants(std::initializer_list<SegmentCP*> firsts) {
  ExpectFigureInvariants(std::vector<SegmentCP*>(firsts));
}

}  // namespace splinecore::test
