// Group edits: moves, smoothing and peaking, and which control points each
// invalidation touches, how often and with which mode.
//
// Touch moves both stamps one down, so with every stamp preset to 100 the
// number of touches a control point received is 100 - stamp; `touched`
// shows whether one of them carried mode bit 0.
#include <type_traits>

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

#include "figure_invariants.h"
#include "figure_test.h"
#include "groups/group_edit.h"
#include "splinecore/splinecore.h"

namespace splinecore::detail {
namespace {

using test::TestFigure;

constexpr std::uint32_t kStale = cpflag::converted | cpflag::mconverted | cpflag::mpCached |
                                 cpflag::mitCached | cpflag::motCached;

class GroupEditTest : public test::FigureTest {
 protected:
  SegmentCP* P(float x = 0) { return made_.emplace_back(f.NewCP(Vector(x, 0, 0))); }
  template <std::size_t N>
  std::array<SegmentCP*, N> Ps() {
    std::array<SegmentCP*, N> out;
    for (SegmentCP*& c : out) c = P();
    return out;
  }
  template <std::size_t N>
  std::array<HookSegmentCP*, N> Hs() {
    std::array<HookSegmentCP*, N> out;
    for (HookSegmentCP*& h : out) made_.push_back(h = f.NewHook(0.5f));
    return out;
  }

  // Every control point made so far: stamps at 100, the caches that Touch
  // clears set, `touched` clear.
  void Fresh() {
    for (SegmentCP* c : made_) {
      c->stamp = c->screenStamp = 100;
      c->flags = (c->flags | kStale) & ~cpflag::touched;
    }
  }

  struct Expect {
    SegmentCP* cp;
    int touches;
    bool touched;
  };
  // The listed control points have the given touch counts and `touched`
  // flags; every other one made by P or Hs was neither touched nor marked.
  void ExpectTouches(std::initializer_list<Expect> listed) {
    for (std::size_t i = 0; i < made_.size(); ++i) {
      SCOPED_TRACE(::testing::Message() << "control point #" << i << " in order of making");
      SegmentCP* c = made_[i];
      Expect e{c, 0, false};
      for (const Expect& l : listed) {
        if (l.cp == c) e = l;
      }
      EXPECT_EQ(100 - c->stamp, e.touches);
      EXPECT_EQ(c->screenStamp, c->stamp);
      EXPECT_EQ(c->IsTouched() != 0, e.touched);
      EXPECT_EQ(c->flags & kStale, e.touches > 0 ? 0u : kStale);
    }
  }

  GroupNode*& group = f.cache.groupList;
  std::vector<SegmentCP*> made_;
};

// --- Smoothing and peaking ----------------------------------------------------

TEST_F(GroupEditTest, SmoothGroupCopiesOutdeltaAndPeakGroupKeepsDeltasNeitherTouches) {
  auto [a, b, c] = Ps<3>();
  f.Open({a, b, c});
  c->flags |= cpflag::smooth;
  a->indelta = {1, 2, 3};
  a->outdelta = {-4, 5.5f, 0.25f};
  Fresh();
  a->AddToGroup(&group, 1);
  SmoothGroup(group);
  EXPECT_TRUE(a->IsSmooth());
  EXPECT_FALSE(b->IsSmooth());
  test::ExpectDelta(a->indelta, -4.0f, 5.5f, 0.25f);
  EXPECT_EQ(a->outdelta.pitch, -4.0f);
  a->indelta = {1, 2, 3};
  PeakGroup(group);
  EXPECT_FALSE(a->IsSmooth());
  EXPECT_TRUE(c->IsSmooth());
  EXPECT_EQ(a->indelta.pitch, 1.0f);
  EXPECT_EQ(a->outdelta.pitch, -4.0f);
  ExpectTouches({});
}

// The host passes ConvertGroup's mode as a long (its exported signature).
static_assert(std::is_same_v<decltype(&ConvertGroup), void (*)(GroupNode*, long)>);

TEST_F(GroupEditTest, EmptyListsDoNothing) {
  SegmentCP* a = P(1);
  f.Open({a});
  Fresh();
  MoveGroup(nullptr, Vector(1, 1, 1));
  PeakGroup(nullptr);
  SmoothGroup(nullptr);
  ConvertGroup(nullptr, 1);
  EXPECT_EQ(a->p.x, 1.0f);
  ExpectTouches({});
}

// --- ConvertCP ----------------------------------------------------------------

TEST_F(GroupEditTest, ConvertCPTouchesTwoStepsBackButOnlyAnOpenEndForward) {
  auto a = Ps<6>();
  f.Open({a[0], a[1], a[2], a[3], a[4], a[5]});
  Fresh();
  a[0]->OnTouched();  // mode 0 keeps it
  ConvertCP(a[2]);
  // a4 is not an end: neither it nor a5 is touched.
  ExpectTouches({{a[0], 1, true}, {a[1], 1, false}, {a[2], 1, false}, {a[3], 1, false}});
}

TEST_F(GroupEditTest, ConvertCPTouchesTheOpenEndTwoStepsForward) {
  auto [a, b, c, d] = Ps<4>();
  f.Open({a, b, c, d});
  Fresh();
  ConvertCP(b);
  ExpectTouches({{a, 1, false}, {b, 1, false}, {c, 1, false}, {d, 1, false}});
}

TEST_F(GroupEditTest, ConvertCPWalksTheWholeStackFromTheTop) {
  // Spline a0-a1-a2-a3-a4 and spline s0-s1-s2; stack [s1, hook, a2].
  auto a = Ps<5>();
  auto [s0, s1, s2, hn] = Ps<4>();
  auto [h] = Hs<1>();
  f.Open({a[0], a[1], a[2], a[3], a[4]});
  f.Open({s0, s1, s2});
  f.Open({h, hn});
  TestFigure::Stack({s1, h, a[2]});
  a[3]->OnExempt();  // exempt plays no part
  Fresh();
  ConvertCP(a[2]);
  // s1: its next s2 and prev s0. h: its next hn. a2: a3, a3's next a4 (the
  // open end), a1 and a1's prev a0.
  ExpectTouches({{s0, 1, false}, {s1, 1, false}, {s2, 1, false}, {h, 1, false}, {hn, 1, false},
                 {a[0], 1, false}, {a[1], 1, false}, {a[2], 1, false}, {a[3], 1, false}, {a[4], 1, false}});
}

TEST_F(GroupEditTest, ConvertCPOnAClosedTripleTouchesTheFarPointTwice) {
  auto [a, b, c] = Ps<3>();
  f.Closed({a, b, c});
  Fresh();
  ConvertCP(a);
  // a; next b (b's next c has a next: no end); prev c, c's prev b.
  ExpectTouches({{a, 1, false}, {b, 2, false}, {c, 1, false}});
}

// --- ConvertGroup -------------------------------------------------------------

TEST_F(GroupEditTest, ConvertGroupTouchesNeighboursWithModeAndTheOpenEndWithZero) {
  auto a = Ps<5>();
  f.Open({a[0], a[1], a[2], a[3], a[4]});
  Fresh();
  a[2]->AddToGroup(&group, 1);
  ConvertGroup(group, 1);
  ExpectTouches({{a[0], 1, true}, {a[1], 1, true}, {a[2], 1, true}, {a[3], 1, true}, {a[4], 1, false}});
}

TEST_F(GroupEditTest, ConvertGroupModeTwoClearsAndModeZeroLeavesTouched) {
  auto [a, b, c] = Ps<3>();
  f.Open({a, b, c});
  Fresh();
  a->AddToGroup(&group, 1);
  for (SegmentCP* x : {a, b, c}) x->OnTouched();
  ConvertGroup(group, 2);
  // a, b with mode 2; c ends the spline two steps on: mode 0.
  ExpectTouches({{a, 1, false}, {b, 1, false}, {c, 1, true}});
  ConvertGroup(group, 0);
  ExpectTouches({{a, 2, false}, {b, 2, false}, {c, 2, true}});
}

TEST_F(GroupEditTest, ConvertGroupTouchesTheRunsOnTheSegmentsAtBothNeighbours) {
  // Spline a0..a4; a1 carries [g1, g2], a3 carries [j]. Each hook lies on a
  // spline of its own: g1 - g1n - g1nn, g2p2 - g2p - g2 (no next), jp - j -
  // jn - jnn with jn exempt.
  auto a = Ps<5>();
  auto [g1, g2, j] = Hs<3>();
  auto [g1n, g1nn, g2p, g2p2, jp, jn, jnn] = Ps<7>();
  jn->OnExempt();
  f.Open({a[0], a[1], a[2], a[3], a[4]});
  f.Open({g1, g1n, g1nn});
  f.Open({g2p2, g2p, g2});
  f.Open({jp, j, jn, jnn});
  TestFigure::Stack({a[1], g1, g2});
  TestFigure::Stack({a[3], j});
  Fresh();
  a[2]->AddToGroup(&group, 1);
  ConvertGroup(group, 1);
  // Not touched: jp (the other side of j) and jn (exempt).
  ExpectTouches({{a[0], 1, true}, {a[1], 1, true}, {a[2], 1, true}, {a[3], 1, true}, {a[4], 1, false},
                 {g1, 1, true}, {g1n, 1, true}, {g1nn, 1, true}, {g2, 1, true}, {g2p, 1, true},
                 {g2p2, 1, true}, {j, 1, true}, {jnn, 1, true}});
}

TEST_F(GroupEditTest, ConvertGroupTouchesTheRunsAroundTheNextNeighboursStack) {
  // Spline a1 - a2 - a3, a2 listed. a3 sits in the stack [y, r1, r2, a3, x, k]:
  // y carries r1, r2; x carries k. r1 - r1n, r2p - r2, xp - x are splines;
  // xp carries l, r2p carries m. y is on the spline y - yn.
  auto [a1, a2, a3, y, yn, x, xp, r1n, r2p] = Ps<9>();
  auto [r1, r2, k, l, m] = Hs<5>();
  f.Open({a1, a2, a3});
  f.Open({y, yn});
  f.Open({xp, x});
  f.Open({r1, r1n});
  f.Open({r2p, r2});
  for (SegmentCP* alone : {k, l, m}) f.Open({alone});
  TestFigure::Stack({y, r1, r2, a3, x, k});
  TestFigure::Stack({xp, l});
  TestFigure::Stack({r2p, m});
  Fresh();
  a2->AddToGroup(&group, 1);
  ConvertGroup(group, 1);
  // a3: the run of x (k) and of x's prev (l); a3's stackPrev is the hook r2:
  // the run from y's stackNext (r1 with r1n, r2 with r2p); the run of r2's
  // prev (m). a1: no stacks. y, yn, x, xp stay untouched.
  ExpectTouches({{a1, 1, true}, {a2, 1, true}, {a3, 1, true}, {k, 1, true}, {l, 1, true}, {r1, 1, true},
                 {r1n, 1, true}, {r2, 1, true}, {r2p, 1, true}, {m, 1, true}});
}

TEST_F(GroupEditTest, ConvertGroupTouchesTheRunsAroundThePrevNeighboursStack) {
  // Spline a0 - a1 - a2, a2 listed. a1 sits in the stack [z, t, a1, w, v]: z
  // carries t, w carries v. Splines: z alone, tp - t - tn - tnn, wp - w; a0
  // carries o, tp carries q, wp carries u.
  auto [a0, a1, a2, z, tp, tn, tnn, w, wp] = Ps<9>();
  auto [t, v, o, q, u] = Hs<5>();
  f.Open({a0, a1, a2});
  f.Open({z});
  f.Open({tp, t, tn, tnn});
  f.Open({wp, w});
  for (SegmentCP* alone : {v, o, q, u}) f.Open({alone});
  TestFigure::Stack({z, t, a1, w, v});
  TestFigure::Stack({a0, o});
  TestFigure::Stack({tp, q});
  TestFigure::Stack({wp, u});
  Fresh();
  a2->AddToGroup(&group, 1);
  ConvertGroup(group, 1);
  // a1: runs of w (v) and of w's prev (u); above a1 the hook t, whose first
  // non-hook is z: the run from z's stackNext (t, tn, tnn); the run of t's
  // prev (q). a0: its run (o). z, tp, w, wp stay untouched.
  ExpectTouches({{a0, 1, true}, {a1, 1, true}, {a2, 1, true}, {v, 1, true}, {u, 1, true}, {t, 1, true},
                 {tn, 1, true}, {tnn, 1, true}, {q, 1, true}, {o, 1, true}});
}

TEST_F(GroupEditTest, ConvertGroupSkipsBelowAGroupedMiddleMemberButNotBelowAGroupedTop) {
  // Three single-point splines stacked [s0, s1, s2]; only s2 is listed.
  auto [s0, s1, s2] = Ps<3>();
  for (SegmentCP* c : {s0, s1, s2}) f.Open({c});
  TestFigure::Stack({s0, s1, s2});
  s2->AddToGroupNoCheck(&group);

  Fresh();
  s0->OnGrouped();
  ConvertGroup(group, 1);
  ExpectTouches({{s0, 1, true}, {s1, 1, true}, {s2, 1, true}});

  Fresh();
  s1->OnGrouped();
  ConvertGroup(group, 1);
  ExpectTouches({});
}

TEST_F(GroupEditTest, ConvertGroupTouchesAStackOncePerListing) {
  auto [s0, s1] = Ps<2>();
  for (SegmentCP* c : {s0, s1}) f.Open({c});
  TestFigure::Stack({s0, s1});
  s0->AddToGroup(&group, 1);
  s1->AddToGroup(&group, 1);  // below the grouped top: not skipped
  Fresh();
  ConvertGroup(group, 1);
  ExpectTouches({{s0, 2, true}, {s1, 2, true}});
}

// --- TouchHookRun ---------------------------------------------------------------

TEST_F(GroupEditTest, TouchHookRunTouchesHooksButNeverExemptNeighbours) {
  // Carrier c with run [h1, h2] and the non-hook b below. h1 on e1 - h1 - n1
  // - n2 with n1 exempt; h2 on p2 - p1 - h2 with both prev points exempt.
  auto [c, b, e1, n1, n2, p1, p2] = Ps<7>();
  auto [h1, h2] = Hs<2>();
  for (SegmentCP* x : {n1, p1, p2}) x->OnExempt();
  f.Open({c});
  f.Open({b});
  f.Open({e1, h1, n1, n2});
  f.Open({p2, p1, h2});
  TestFigure::Stack({c, h1, h2, b});
  Fresh();
  TouchHookRun(h1, 1);
  // Not touched: e1 (prev side), the exempt points, b (the run ends) and c.
  ExpectTouches({{h1, 1, true}, {n2, 1, true}, {h2, 1, true}});
  TouchHookRun(c, 1);  // not a hook: no run
  TouchHookRun(nullptr, 1);
  ExpectTouches({{h1, 1, true}, {n2, 1, true}, {h2, 1, true}});
}

// --- MoveGroup ------------------------------------------------------------------

TEST_F(GroupEditTest, MoveGroupCarriesTheDisplacementByTheInverseViewMatrix) {
  // Linear part rows (0.5 1 0), (0 0 -3), (1 0 0.25); the translation column
  // must not count. d = (0.1f, 0.2f, 0.3f): w = (0.25, -3*0.3f, 0.1f + 0.25*0.3f)
  // in double, rounded; p + w rounded. Derived with python3 struct rounding.
  f.SetView(test::IdentityMatrix(), test::MakeMatrix({0.5f, 1, 0, 7, 0, 0, -3, 8, 1, 0, 0.25f, 9}));
  SegmentCP* a = f.NewCP(Vector(1.0f, -2.0f, 1e-3f));
  SegmentCP* b = P();
  f.Open({a, b});
  a->AddToGroup(&group, 1);
  MoveGroup(group, Vector(0.1f, 0.2f, 0.3f));
  EXPECT_EQ(a->p.x, 0x1.4p+0f);
  EXPECT_EQ(a->p.y, -0x1.733334p+1f);
  EXPECT_EQ(a->p.z, 0x1.6872b2p-3f);
  EXPECT_EQ(b->p.x, 0.0f);
}

TEST_F(GroupEditTest, MoveGroupTouchesLikeConvertCPWithModeZero) {
  auto [a, b, c, d, e] = Ps<5>();
  f.Open({a, b, c, d, e});
  Fresh();
  b->OnTouched();
  b->AddToGroup(&group, 1);
  MoveGroup(group, Vector(1, 0, 0));
  EXPECT_EQ(b->p.x, 1.0f);
  ExpectTouches({{a, 1, false}, {b, 1, true}, {c, 1, false}});  // d is no end
}

TEST_F(GroupEditTest, MoveGroupMovesAStackOnceThroughItsTop) {
  SegmentCP* s0 = f.NewCP(Vector(1, 2, 3));
  SegmentCP* s1 = f.NewCP(Vector(40, 50, 60));
  for (SegmentCP* c : {s0, s1}) f.Open({c});
  TestFigure::Stack({s0, s1});
  s1->AddToGroup(&group, 1);
  // A listed lower member moves the top; members below keep their own p.
  MoveGroup(group, Vector(0, 0, 0.5f));
  EXPECT_EQ(s0->p, Vector(1, 2, 3.5f));
  EXPECT_EQ(s1->p, Vector(40, 50, 60));
  // Both listed and grouped: the stack still moves once.
  s0->AddToGroup(&group, 1);
  MoveGroup(group, Vector(1, 1, 1));
  EXPECT_EQ(s0->p, Vector(2, 3, 4.5f));
  EXPECT_EQ(s1->p, Vector(40, 50, 60));
}

TEST_F(GroupEditTest, MoveGroupMovesAgainForAnUngroupedTopAndForRepeatedListings) {
  SegmentCP* s0 = f.NewCP(Vector(0, 0, 0));
  SegmentCP* s1 = f.NewCP(Vector(0, 0, 0));
  for (SegmentCP* c : {s0, s1}) f.Open({c});
  TestFigure::Stack({s0, s1});
  s0->AddToGroup(&group, 0);  // listed without `grouped`
  s1->AddToGroup(&group, 1);
  MoveGroup(group, Vector(1, 0, 0));
  EXPECT_EQ(s0->p.x, 2.0f);

  FreeGroup(&group);
  s0->AddToGroupNoCheck(&group);
  s0->AddToGroupNoCheck(&group);  // the top twice: nothing above it is grouped
  MoveGroup(group, Vector(1, 0, 0));
  EXPECT_EQ(s0->p.x, 4.0f);
}

TEST_F(GroupEditTest, MoveGroupSkipsHooksAndTouchesNothingForThem) {
  auto [c, n] = Ps<2>();
  auto [h] = Hs<1>();
  h->p = Vector(5, 5, 5);
  f.Open({c, n});
  f.Open({h});
  TestFigure::Stack({c, h});
  Fresh();
  h->AddToGroup(&group, 1);
  MoveGroup(group, Vector(1, 1, 1));
  EXPECT_EQ(c->p.x, 0.0f);
  EXPECT_EQ(h->p.x, 5.0f);
  ExpectTouches({});
  test::ExpectFigureInvariants({c, h});
}

}  // namespace
}  // namespace splinecore::detail
