// Group edits: moves, smoothing and peaking, and which control points each
// invalidation touches, how often and with which mode.
//
// Touch moves both stamps one down, so with every stamp preset to 100 the
// number of touches a control point received is 100 - stamp; `touched`
// shows whether one of them carried mode bit 0.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "figure_invariants.h"
#include "groups/group_edit.h"
#include "marrow/marrow.h"
#include "splinecore/splinecore.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using test::TestFigure;

constexpr std::uint32_t kStale = cpflag::converted | cpflag::mconverted | cpflag::mpCached |
                                 cpflag::mitCached | cpflag::motCached;

class GroupEditTest : public ::testing::Test {
 protected:
  void TearDown() override {
    fig_.reset();
    EXPECT_EQ(MarrowLiveBlocks(), liveAtStart_);
  }

  SegmentCP* P(float x = 0) { return f.NewCP(Vector(x, 0, 0)); }
  HookSegmentCP* H(float s = 0.5f) { return f.NewHook(s); }

  // Every stamp at 100, the caches that Touch clears set, `touched` clear.
  static void Fresh(std::initializer_list<SegmentCP*> cps) {
    for (SegmentCP* c : cps) {
      c->stamp = 100;
      c->screenStamp = 100;
      c->flags = (c->flags | kStale) & ~cpflag::touched;
    }
  }

  struct Expect {
    const char* name;
    SegmentCP* cp;
    int touches;
    bool touched;
  };
  // Checks the touch count and the `touched` flag of each control point.
  static void ExpectTouches(std::initializer_list<Expect> expected) {
    for (const Expect& e : expected) {
      SCOPED_TRACE(e.name);
      EXPECT_EQ(100 - e.cp->stamp, e.touches);
      EXPECT_EQ(e.cp->screenStamp, e.cp->stamp);
      EXPECT_EQ(e.cp->IsTouched() != 0, e.touched);
      if (e.touches > 0) {
        EXPECT_EQ(e.cp->flags & kStale, 0u);
      }
    }
  }

  long liveAtStart_ = MarrowLiveBlocks();
  std::unique_ptr<TestFigure> fig_ = std::make_unique<TestFigure>();
  TestFigure& f = *fig_;
  GroupNode*& group = f.cache.groupList;
};

// --- Smoothing and peaking ----------------------------------------------------

TEST_F(GroupEditTest, SmoothGroupCopiesOutdeltaAndTouchesNothing) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  f.Open({a, b});
  a->indelta = {1, 2, 3};
  a->outdelta = {-4, 5.5f, 0.25f};
  Fresh({a, b});
  a->AddToGroup(&group, 1);

  SmoothGroup(group);

  EXPECT_TRUE(a->IsSmooth());
  EXPECT_FALSE(b->IsSmooth());
  EXPECT_EQ(a->indelta.pitch, -4.0f);
  EXPECT_EQ(a->indelta.yaw, 5.5f);
  EXPECT_EQ(a->indelta.magnitude, 0.25f);
  EXPECT_EQ(a->outdelta.pitch, -4.0f);
  ExpectTouches({{"a", a, 0, false}, {"b", b, 0, false}});
  EXPECT_EQ(a->flags & kStale, kStale);
}

TEST_F(GroupEditTest, PeakGroupClearsSmoothOnlyAndKeepsDeltas) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  f.Open({a, b});
  a->flags |= cpflag::smooth;
  b->flags |= cpflag::smooth;
  a->indelta = {1, 2, 3};
  a->outdelta = {4, 5, 6};
  Fresh({a, b});
  a->AddToGroup(&group, 1);

  PeakGroup(group);

  EXPECT_FALSE(a->IsSmooth());
  EXPECT_TRUE(b->IsSmooth());
  EXPECT_EQ(a->indelta.pitch, 1.0f);
  EXPECT_EQ(a->outdelta.pitch, 4.0f);
  ExpectTouches({{"a", a, 0, false}, {"b", b, 0, false}});
}

TEST_F(GroupEditTest, EmptyListsDoNothing) {
  SegmentCP* a = P(1);
  f.Open({a});
  Fresh({a});
  MoveGroup(nullptr, Vector(1, 1, 1));
  PeakGroup(nullptr);
  SmoothGroup(nullptr);
  ConvertGroup(nullptr, 1);
  EXPECT_EQ(a->p.x, 1.0f);
  ExpectTouches({{"a", a, 0, false}});
}

// --- ConvertCP ----------------------------------------------------------------

TEST_F(GroupEditTest, ConvertCPTouchesTwoStepsBackButOnlyAnOpenEndForward) {
  SegmentCP* a[6];
  for (auto& c : a) c = P();
  f.Open({a[0], a[1], a[2], a[3], a[4], a[5]});
  Fresh({a[0], a[1], a[2], a[3], a[4], a[5]});
  a[0]->OnTouched();  // mode 0 keeps it

  ConvertCP(a[2]);

  ExpectTouches({{"a0", a[0], 1, true},
                 {"a1", a[1], 1, false},
                 {"a2", a[2], 1, false},
                 {"a3", a[3], 1, false},
                 {"a4 (not an end)", a[4], 0, false},
                 {"a5", a[5], 0, false}});
}

TEST_F(GroupEditTest, ConvertCPTouchesTheOpenEndTwoStepsForward) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  SegmentCP* d = P();
  f.Open({a, b, c, d});
  Fresh({a, b, c, d});

  ConvertCP(b);

  ExpectTouches({{"a", a, 1, false}, {"b", b, 1, false}, {"c", c, 1, false}, {"d", d, 1, false}});
}

TEST_F(GroupEditTest, ConvertCPWalksTheWholeStackFromTheTop) {
  // Spline a0-a1-a2-a3-a4 and spline s0-s1-s2; stack [s1, hook, a2].
  SegmentCP* a[5];
  for (auto& c : a) c = P();
  SegmentCP* s0 = P();
  SegmentCP* s1 = P();
  SegmentCP* s2 = P();
  HookSegmentCP* h = H();
  SegmentCP* hn = P();
  f.Open({a[0], a[1], a[2], a[3], a[4]});
  f.Open({s0, s1, s2});
  f.Open({h, hn});
  TestFigure::Stack({s1, h, a[2]});
  a[3]->OnExempt();  // exempt plays no part
  Fresh({a[0], a[1], a[2], a[3], a[4], s0, s1, s2, h, hn});

  ConvertCP(a[2]);

  // s1: its next s2 and prev s0. h: its next hn. a2: a3, a3's next a4 (the
  // open end), a1 and a1's prev a0.
  ExpectTouches({{"s0", s0, 1, false},
                 {"s1", s1, 1, false},
                 {"s2", s2, 1, false},
                 {"h", h, 1, false},
                 {"hn", hn, 1, false},
                 {"a0", a[0], 1, false},
                 {"a1", a[1], 1, false},
                 {"a2", a[2], 1, false},
                 {"a3", a[3], 1, false},
                 {"a4", a[4], 1, false}});
}

TEST_F(GroupEditTest, ConvertCPOnAClosedTripleTouchesTheFarPointTwice) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  f.Closed({a, b, c});
  Fresh({a, b, c});

  ConvertCP(a);

  // a; next b (b's next c has a next: no end); prev c, c's prev b.
  ExpectTouches({{"a", a, 1, false}, {"b", b, 2, false}, {"c", c, 1, false}});
}

// --- ConvertGroup -------------------------------------------------------------

TEST_F(GroupEditTest, ConvertGroupTouchesNeighboursWithModeAndTheOpenEndWithZero) {
  SegmentCP* a[5];
  for (auto& c : a) c = P();
  f.Open({a[0], a[1], a[2], a[3], a[4]});
  Fresh({a[0], a[1], a[2], a[3], a[4]});
  a[2]->AddToGroup(&group, 1);

  ConvertGroup(group, 1);

  ExpectTouches({{"a0", a[0], 1, true},
                 {"a1", a[1], 1, true},
                 {"a2", a[2], 1, true},
                 {"a3", a[3], 1, true},
                 {"a4 (end, mode 0)", a[4], 1, false}});
}

TEST_F(GroupEditTest, ConvertGroupModeTwoClearsAndModeZeroLeavesTouched) {
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  f.Open({a, b, c});
  Fresh({a, b, c});
  a->AddToGroup(&group, 1);
  for (SegmentCP* x : {a, b, c}) x->OnTouched();

  ConvertGroup(group, 2);
  // a, b with mode 2; c ends the spline two steps on: mode 0.
  ExpectTouches({{"a", a, 1, false}, {"b", b, 1, false}, {"c", c, 1, true}});

  ConvertGroup(group, 0);
  ExpectTouches({{"a", a, 2, false}, {"b", b, 2, false}, {"c", c, 2, true}});
}

TEST_F(GroupEditTest, ConvertGroupTouchesTheRunsOnTheSegmentsAtBothNeighbours) {
  // Spline a0..a4; a1 carries [g1, g2], a3 carries [j]. Each hook lies on a
  // spline of its own: g1 - g1n - g1nn, g2p2 - g2p - g2 (no next), jp - j - jn - jnn
  // with jn exempt.
  SegmentCP* a[5];
  for (auto& c : a) c = P();
  HookSegmentCP* g1 = H();
  HookSegmentCP* g2 = H();
  HookSegmentCP* j = H();
  SegmentCP* g1n = P();
  SegmentCP* g1nn = P();
  SegmentCP* g2p = P();
  SegmentCP* g2p2 = P();
  SegmentCP* jp = P();
  SegmentCP* jn = P();
  jn->OnExempt();
  SegmentCP* jnn = P();
  f.Open({a[0], a[1], a[2], a[3], a[4]});
  f.Open({g1, g1n, g1nn});
  f.Open({g2p2, g2p, g2});
  f.Open({jp, j, jn, jnn});
  TestFigure::Stack({a[1], g1, g2});
  TestFigure::Stack({a[3], j});
  Fresh({a[0], a[1], a[2], a[3], a[4], g1, g2, j, g1n, g1nn, g2p, g2p2, jp, jn, jnn});
  a[2]->AddToGroup(&group, 1);

  ConvertGroup(group, 1);

  ExpectTouches({{"a0", a[0], 1, true},
                 {"a1", a[1], 1, true},
                 {"a2", a[2], 1, true},
                 {"a3", a[3], 1, true},
                 {"a4", a[4], 1, false},
                 {"g1", g1, 1, true},
                 {"g1n", g1n, 1, true},
                 {"g1nn", g1nn, 1, true},
                 {"g2", g2, 1, true},
                 {"g2p", g2p, 1, true},
                 {"g2p2", g2p2, 1, true},
                 {"j", j, 1, true},
                 {"jp (other side)", jp, 0, false},
                 {"jn (exempt)", jn, 0, false},
                 {"jnn", jnn, 1, true}});
}

TEST_F(GroupEditTest, ConvertGroupTouchesTheRunsAroundTheNextNeighboursStack) {
  // Spline a1 - a2 - a3, a2 listed. a3 sits in the stack [y, r1, r2, a3, x, k]:
  // y carries r1, r2; x carries k. r1 - r1n, r2p - r2, xp - x are splines;
  // xp carries l, r2p carries m. y and x are on splines y - yn and xp - x.
  SegmentCP* a1 = P();
  SegmentCP* a2 = P();
  SegmentCP* a3 = P();
  SegmentCP* y = P();
  SegmentCP* yn = P();
  SegmentCP* x = P();
  SegmentCP* xp = P();
  SegmentCP* r1n = P();
  SegmentCP* r2p = P();
  HookSegmentCP* r1 = H();
  HookSegmentCP* r2 = H();
  HookSegmentCP* k = H();
  HookSegmentCP* l = H();
  HookSegmentCP* m = H();
  f.Open({a1, a2, a3});
  f.Open({y, yn});
  f.Open({xp, x});
  f.Open({r1, r1n});
  f.Open({r2p, r2});
  f.Open({k});
  f.Open({l});
  f.Open({m});
  TestFigure::Stack({y, r1, r2, a3, x, k});
  TestFigure::Stack({xp, l});
  TestFigure::Stack({r2p, m});
  Fresh({a1, a2, a3, y, yn, x, xp, r1n, r2p, r1, r2, k, l, m});
  a2->AddToGroup(&group, 1);

  ConvertGroup(group, 1);

  // a3: the run of x (k) and of x's prev (l); a3's stackPrev is the hook r2:
  // the run from y's stackNext (r1 with r1n, r2 with r2p); the run of r2's
  // prev (m). a1: no stacks.
  ExpectTouches({{"a1", a1, 1, true},
                 {"a2", a2, 1, true},
                 {"a3", a3, 1, true},
                 {"k", k, 1, true},
                 {"l", l, 1, true},
                 {"r1", r1, 1, true},
                 {"r1n", r1n, 1, true},
                 {"r2", r2, 1, true},
                 {"r2p", r2p, 1, true},
                 {"m", m, 1, true},
                 {"y", y, 0, false},
                 {"yn", yn, 0, false},
                 {"x", x, 0, false},
                 {"xp", xp, 0, false}});
}

TEST_F(GroupEditTest, ConvertGroupTouchesTheRunsAroundThePrevNeighboursStack) {
  // Spline a0 - a1 - a2, a2 listed. a1 sits in the stack [z, t, a1, w, v]: z
  // carries t, w carries v. Splines: z alone, tp - t - tn - tnn, wp - w; a0
  // carries o, tp carries q, wp carries u.
  SegmentCP* a0 = P();
  SegmentCP* a1 = P();
  SegmentCP* a2 = P();
  SegmentCP* z = P();
  SegmentCP* tp = P();
  SegmentCP* tn = P();
  SegmentCP* tnn = P();
  SegmentCP* w = P();
  SegmentCP* wp = P();
  HookSegmentCP* t = H();
  HookSegmentCP* v = H();
  HookSegmentCP* o = H();
  HookSegmentCP* q = H();
  HookSegmentCP* u = H();
  f.Open({a0, a1, a2});
  f.Open({z});
  f.Open({tp, t, tn, tnn});
  f.Open({wp, w});
  for (SegmentCP* alone : {v, o, q, u}) f.Open({alone});
  TestFigure::Stack({z, t, a1, w, v});
  TestFigure::Stack({a0, o});
  TestFigure::Stack({tp, q});
  TestFigure::Stack({wp, u});
  Fresh({a0, a1, a2, z, tp, tn, tnn, w, wp, t, v, o, q, u});
  a2->AddToGroup(&group, 1);

  ConvertGroup(group, 1);

  // a1: runs of w (v) and of w's prev (u); above a1 the hook t, whose first
  // non-hook is z: the run from z's stackNext (t, tn, tnn); the run of t's
  // prev (q). a0: its run (o).
  ExpectTouches({{"a0", a0, 1, true},
                 {"a1", a1, 1, true},
                 {"a2", a2, 1, true},
                 {"v", v, 1, true},
                 {"u", u, 1, true},
                 {"t", t, 1, true},
                 {"tn", tn, 1, true},
                 {"tnn", tnn, 1, true},
                 {"q", q, 1, true},
                 {"o", o, 1, true},
                 {"z", z, 0, false},
                 {"tp", tp, 0, false},
                 {"w", w, 0, false},
                 {"wp", wp, 0, false}});
}

TEST_F(GroupEditTest, ConvertGroupSkipsBelowAGroupedMiddleMemberButNotBelowAGroupedTop) {
  // Three single-point splines stacked [s0, s1, s2]; only s2 is listed.
  SegmentCP* s0 = P();
  SegmentCP* s1 = P();
  SegmentCP* s2 = P();
  for (SegmentCP* c : {s0, s1, s2}) f.Open({c});
  TestFigure::Stack({s0, s1, s2});
  s2->AddToGroupNoCheck(&group);

  Fresh({s0, s1, s2});
  s0->OnGrouped();
  ConvertGroup(group, 1);
  ExpectTouches({{"s0", s0, 1, true}, {"s1", s1, 1, true}, {"s2", s2, 1, true}});

  Fresh({s0, s1, s2});
  s1->OnGrouped();
  ConvertGroup(group, 1);
  ExpectTouches({{"s0", s0, 0, false}, {"s1", s1, 0, false}, {"s2", s2, 0, false}});
}

TEST_F(GroupEditTest, ConvertGroupTouchesAStackOncePerListing) {
  SegmentCP* s0 = P();
  SegmentCP* s1 = P();
  for (SegmentCP* c : {s0, s1}) f.Open({c});
  TestFigure::Stack({s0, s1});
  s0->AddToGroup(&group, 1);
  s1->AddToGroup(&group, 1);  // below the grouped top: not skipped
  Fresh({s0, s1});

  ConvertGroup(group, 1);

  ExpectTouches({{"s0", s0, 2, true}, {"s1", s1, 2, true}});
}

// --- TouchHookRun ---------------------------------------------------------------

TEST_F(GroupEditTest, TouchHookRunTouchesHooksButNeverExemptNeighbours) {
  // Carrier c with run [h1, h2] and the non-hook b below. h1 on e1 - h1 - n1
  // - n2 with n1 exempt; h2 on p2 - p1 - h2 with both prev points exempt.
  SegmentCP* c = P();
  SegmentCP* b = P();
  HookSegmentCP* h1 = H();
  HookSegmentCP* h2 = H();
  SegmentCP* e1 = P();
  SegmentCP* n1 = P();
  SegmentCP* n2 = P();
  SegmentCP* p1 = P();
  SegmentCP* p2 = P();
  n1->OnExempt();
  p1->OnExempt();
  p2->OnExempt();
  f.Open({c});
  f.Open({b});
  f.Open({e1, h1, n1, n2});
  f.Open({p2, p1, h2});
  TestFigure::Stack({c, h1, h2, b});
  Fresh({c, b, h1, h2, e1, n1, n2, p1, p2});

  TouchHookRun(h1, 1);

  ExpectTouches({{"h1", h1, 1, true},
                 {"n1 (exempt)", n1, 0, false},
                 {"n2", n2, 1, true},
                 {"e1 (prev side)", e1, 0, false},
                 {"h2", h2, 1, true},
                 {"p1 (exempt)", p1, 0, false},
                 {"p2 (exempt)", p2, 0, false},
                 {"b (run ends)", b, 0, false},
                 {"c", c, 0, false}});

  TouchHookRun(c, 1);  // not a hook: no run
  TouchHookRun(nullptr, 1);
  ExpectTouches({{"c", c, 0, false}, {"h1", h1, 1, true}});
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
  SegmentCP* a = P();
  SegmentCP* b = P();
  SegmentCP* c = P();
  SegmentCP* d = P();
  SegmentCP* e = P();
  f.Open({a, b, c, d, e});
  Fresh({a, b, c, d, e});
  b->OnTouched();
  b->AddToGroup(&group, 1);

  MoveGroup(group, Vector(1, 0, 0));

  EXPECT_EQ(b->p.x, 1.0f);
  ExpectTouches({{"a", a, 1, false},
                 {"b", b, 1, true},
                 {"c", c, 1, false},
                 {"d (no end)", d, 0, false},
                 {"e", e, 0, false}});
}

TEST_F(GroupEditTest, MoveGroupMovesAStackOnceWhenItsListedMembersAreGrouped) {
  SegmentCP* s0 = f.NewCP(Vector(1, 2, 3));
  SegmentCP* s1 = f.NewCP(Vector(40, 50, 60));
  for (SegmentCP* c : {s0, s1}) f.Open({c});
  TestFigure::Stack({s0, s1});
  s1->AddToGroup(&group, 1);
  s0->AddToGroup(&group, 1);

  MoveGroup(group, Vector(1, 1, 1));

  EXPECT_EQ(s0->p.x, 2.0f);
  EXPECT_EQ(s0->p.y, 3.0f);
  EXPECT_EQ(s0->p.z, 4.0f);
  EXPECT_EQ(s1->p.x, 40.0f);  // members below the top keep their own p
}

TEST_F(GroupEditTest, MoveGroupMovesTheTopForAListedLowerMember) {
  SegmentCP* s0 = f.NewCP(Vector(1, 2, 3));
  SegmentCP* s1 = f.NewCP(Vector(40, 50, 60));
  for (SegmentCP* c : {s0, s1}) f.Open({c});
  TestFigure::Stack({s0, s1});
  s1->AddToGroup(&group, 1);

  MoveGroup(group, Vector(0, 0, 0.5f));

  EXPECT_EQ(s0->p.z, 3.5f);
  EXPECT_EQ(s1->p.z, 60.0f);
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
  SegmentCP* c = f.NewCP(Vector(0, 0, 0));
  SegmentCP* n = f.NewCP(Vector(0, 0, 0));
  HookSegmentCP* h = H();
  h->p = Vector(5, 5, 5);
  f.Open({c, n});
  f.Open({h});
  TestFigure::Stack({c, h});
  Fresh({c, n, h});
  h->AddToGroup(&group, 1);

  MoveGroup(group, Vector(1, 1, 1));

  EXPECT_EQ(c->p.x, 0.0f);
  EXPECT_EQ(h->p.x, 5.0f);
  ExpectTouches({{"c", c, 0, false}, {"n", n, 0, false}, {"h", h, 0, false}});
  test::ExpectFigureInvariants({c, h});
}

}  // namespace
}  // namespace splinecore
