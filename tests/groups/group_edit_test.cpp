// Group edits. What a move or a turn of a listed point invalidates is seen
// through answers: on the shared figures without hooks, every raw getter
// then answers as a figure built with the edit does. Hook runs are seen
// through `touched`, the flag a host reads after ConvertGroup.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "figure_corpus.h"
#include "named_figure.h"
#include "splinecore/splinecore.h"
#include "test_figure.h"

namespace splinecore {
namespace {

// The screen family of every point, spline by spline, as bits.
std::vector<std::uint32_t> RawAnswers(Figure& f) {
  std::vector<float> out;
  for (int s = 0; s < f.SplineCount(); ++s) {
    for (int i = 0; i < f.PointCount(s); ++i) {
      SegmentCP* c = f.ControlPoint(PointId{s, i});
      for (const Vector* v : {&c->Getscreenp(), &c->Getit(), &c->Getot(), &c->Getscreenit(), &c->Getscreenot()})
        out.insert(out.end(), {v->x, v->y, v->z});
    }
  }
  std::vector<std::uint32_t> bits(out.size());
  std::memcpy(bits.data(), out.data(), out.size() * sizeof(float));
  return bits;
}

PointDesc& Point(FigureDescription& d, PointId p) {
  return d.splines[static_cast<std::size_t>(p.spline)].points[static_cast<std::size_t>(p.index)];
}

// p's stack (p alone when it is in none).
std::vector<PointId> StackOf(const FigureDescription& d, PointId p) {
  for (const std::vector<PointId>& stack : d.stacks)
    for (const PointId& m : stack)
      if (m == p) return stack;
  return {p};
}

// For every point p of every hook-free shared figure: `edit` changes the
// figure's records raw with p alone in the group list; `expected` makes the
// same change in the description. The raw answers must be the new figure's.
using RawEdit = std::function<void(SegmentCP*, GroupNode*)>;
using DescEdit = std::function<void(FigureDescription&, PointId)>;
void ForEveryPoint(const RawEdit& edit, const DescEdit& expected) {
  int figures = 0;
  for (FigureDescription d : test::SharedFigures()) {
    if (!d.hooks.empty()) continue;  // hooks' prev sides are left to the host
    d.view = d.inverseView = test::IdentityMatrix();  // displacements reach model space as given
    d.muscleMode = false;
    ++figures;
    for (int s = 0; s < static_cast<int>(d.splines.size()); ++s) {
      for (int i = 0; i < static_cast<int>(d.splines[static_cast<std::size_t>(s)].points.size()); ++i) {
        SCOPED_TRACE(::testing::Message() << "point " << s << ":" << i);
        FigureDescription want = d;
        expected(want, PointId{s, i});
        Figure fresh(want), f(d);
        fresh.RefreshAll(Space::kScreen);
        f.RefreshAll(Space::kScreen);
        GroupNode* list = nullptr;
        SegmentCP* c = f.ControlPoint(PointId{s, i});
        c->AddToGroup(&list, 1);
        edit(c, list);
        EXPECT_EQ(RawAnswers(f), RawAnswers(fresh));
        FreeGroup(&list);
      }
    }
  }
  EXPECT_GE(figures, 4);
}

const Vector kBy(0.5f, -0.25f, 0.125f);
void MoveStack(FigureDescription& d, PointId p) {
  for (const PointId& m : StackOf(d, p)) Point(d, m).at += kBy;
}

TEST(GroupEdit, MovesAndTurnsOfListedPointsLeaveNothingStale) {
  // MoveGroup moves the whole stack of a listed point, whichever member.
  // It touches with mode 0: `touched` stays clear on the stack and its neighbours.
  ForEveryPoint(
      [](SegmentCP* c, GroupNode* list) {
        MoveGroup(list, kBy);
        for (SegmentCP* x = c->head; x != nullptr; x = x->stackNext)
          for (SegmentCP* y : {x, x->next, x->next != nullptr ? x->next->next : nullptr, x->prev})
            EXPECT_TRUE(y == nullptr || !y->IsTouched());
      },
      MoveStack);
  // A host's own move, then ConvertGroup; and a turn.
  ForEveryPoint(
      [](SegmentCP* c, GroupNode* list) {
        c->head->p += kBy;
        ConvertGroup(list, 1);
      },
      MoveStack);
  const Delta in{15, -30, 1.5f}, out{-45, 10, 0.5f};
  ForEveryPoint(
      [&](SegmentCP* c, GroupNode* list) {
        c->indelta = in;
        c->outdelta = out;
        ConvertGroup(list, 0);
      },
      [&](FigureDescription& d, PointId p) {
        Point(d, p).in = in;
        Point(d, p).out = out;
      });
}

using Named = test::NamedFigure;

// The points whose `touched` is set.
std::set<std::string> Touched(Named& n) {
  std::set<std::string> out;
  for (const std::string& name : n.Names())
    if (n[name]->IsTouched()) out.insert(name);
  return out;
}

struct RunCase {
  const char* figure;  // in tests/figures
  const char* listed;
  const char* exempt;  // or null
  std::set<std::string> touched;
};

// Expected sets derived from the rule: the listed point, its next n (with
// n's next when that ends an open spline, mode 0), the runs of n's stack
// below n, of the next member's prev, and around a hook above n (the run
// from the first non-hook above, the run of that hook's prev); the same on
// the prev side, plus prev's prev and its run. Each hook of a run: itself,
// next and next's next, else prev and prev's prev, never an exempt one.
const RunCase kRunCases[] = {
    {"runs_at_both_neighbours", "a:2", "j:2",  // a:4 ends the spline two steps on: touched with mode 0
     {"a:0", "a:1", "a:2", "a:3", "g:0", "g:1", "g:2", "h:0", "h:1", "h:2", "j:1", "j:3"}},
    {"runs_around_the_next_stack", "a:1", nullptr,  // a:2 below y's run [r:0, q:1], above x carrying k
     {"a:0", "a:1", "a:2", "k:0", "k:1", "l:0", "l:1", "r:0", "r:1", "q:1", "q:0", "m:0", "m:1"}},
    {"runs_around_the_prev_stack", "a:2", nullptr,  // a:1 below z's run [t:1], above w carrying v
     {"a:0", "a:1", "a:2", "v:0", "v:1", "u:0", "u:1", "t:1", "t:2", "t:3", "q:0", "q:1", "o:0", "o:1"}},
};

TEST(GroupEdit, ConvertGroupTouchesTheHookRunsOnNeighbouringSegmentsWithItsMode) {
  for (const RunCase& k : kRunCases) {
    for (long mode : {1L, 2L}) {
      SCOPED_TRACE(::testing::Message() << k.figure << ", mode " << mode);
      Named n(test::SharedFigure(k.figure));
      if (k.exempt != nullptr) n[k.exempt]->OnExempt();
      const std::vector<std::string> all = n.Names();
      for (const std::string& p : all)
        if (mode == 2) n[p]->OnTouched();
      GroupNode* list = nullptr;
      n[k.listed]->AddToGroup(&list, 1);
      ConvertGroup(list, mode);
      FreeGroup(&list);
      std::set<std::string> want = k.touched;  // mode 2 clears what mode 1 sets
      if (mode == 2) {
        want.clear();
        for (const std::string& p : all)
          if (k.touched.count(p) == 0) want.insert(p);
      }
      EXPECT_EQ(Touched(n), want);
    }
  }
}

TEST(GroupEdit, AStackIsSkippedBelowAGroupedMemberOtherThanTheTop) {
  const char* text = R"({"splines": [{"name": "s", "points": [{"at": [1, 1]}]}, {"name": "t", "points": [{"at": [1, 1]}]},
                        {"name": "u", "points": [{"at": [1, 1]}]}], "stacks": [["s:0", "t:0", "u:0"]]})";
  // Grouped: nothing, the top, a middle member. MoveGroup skips below any.
  for (const std::string grouped : {"", "s:0", "t:0"}) {
    Named n(text);
    GroupNode* list = nullptr;
    n["u:0"]->AddToGroupNoCheck(&list);
    if (!grouped.empty()) n[grouped]->OnGrouped();
    ConvertGroup(list, 1);
    MoveGroup(list, Vector(1, 0, 0));
    FreeGroup(&list);
    const std::set<std::string> all{"s:0", "t:0", "u:0"};
    EXPECT_EQ(Touched(n), grouped == "t:0" ? std::set<std::string>{} : all) << grouped;
    EXPECT_EQ(n["s:0"]->p.x, grouped.empty() ? 2.0f : 1.0f) << grouped;
  }
}

TEST(GroupEdit, MoveGroupCarriesTheDisplacementByTheInverseViewsLinearPart) {
  // Rows (0.5 1 0 | 7), (0 0 -3 | 8), (1 0 0.25 | 9); d = (0.1f, 0.2f, 0.3f):
  // w = (0.05 + 0.2, -0.9, 0.1 + 0.075) in double from the float inputs,
  // rounded to float, added to p = (1, -2, 1e-3f) and rounded (python3 struct).
  Named n(R"({"splines": [{"name": "a", "points": [{"at": [1, -2, 0.001]}, {"at": [0, 0]}]}]})");
  n.f.SetView(test::IdentityMatrix(), Matrix{{{0.5f, 1, 0, 7}, {0, 0, -3, 8}, {1, 0, 0.25f, 9}}});
  GroupNode* list = nullptr;
  n["a:0"]->AddToGroup(&list, 1);
  MoveGroup(list, Vector(0.1f, 0.2f, 0.3f));
  FreeGroup(&list);
  EXPECT_EQ(n["a:0"]->p, Vector(0x1.4p+0f, -0x1.733334p+1f, 0x1.6872b2p-3f));
  EXPECT_EQ(n["a:1"]->p, Vector(0, 0, 0));
}

TEST(GroupEdit, SmoothGroupCopiesOutdeltaAndPeakGroupKeepsDeltas) {
  Named n(R"({"splines": [{"name": "a", "points": [{"at": [0, 0], "smooth": false, "in": [1, 2, 3], "out": [-4, 5.5, 0.25]},
                          {"at": [1, 0], "smooth": false}, {"at": [2, 0]}]}]})");
  SegmentCP* a = n["a:0"];
  GroupNode* list = nullptr;
  a->AddToGroup(&list, 1);
  SmoothGroup(list);
  EXPECT_TRUE(a->IsSmooth() && !n["a:1"]->IsSmooth());
  EXPECT_TRUE(a->indelta.pitch == -4.0f && a->indelta.yaw == 5.5f && a->indelta.magnitude == 0.25f);
  a->indelta = Delta{1, 2, 3};
  PeakGroup(list);
  FreeGroup(&list);
  EXPECT_TRUE(!a->IsSmooth() && n["a:2"]->IsSmooth());
  EXPECT_TRUE(a->indelta.pitch == 1.0f && a->outdelta.pitch == -4.0f);
  EXPECT_TRUE(Touched(n).empty());
}

}  // namespace
}  // namespace splinecore
