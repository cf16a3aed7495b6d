// A host's editing session end to end: warm every cache, move a group,
// reverse a slice, then ask again. Every answer must be, to the bit, what a
// figure built afresh in the edited shape answers to the same queries in
// the same order.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "figure_invariants.h"
#include "marrow/marrow.h"
#include "splinecore/splinecore.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using test::MakeMatrix;
using test::TestFigure;

// Control points of one figure, by role, so that two figures can be queried
// in the same order. s0 - s1 - s2 - s3 is the edited spline; t1, u1, v1 are
// hooks riding on its segments, each at an end of its own spline (t1 - t2,
// u1 - u2 - u3, v0 - v1); w1 (on w0 - w1) sits under s0.
struct Shape {
  SegmentCP *s0, *s1, *s2, *s3, *t2, *u2, *u3, *v0, *w0, *w1;
  HookSegmentCP *t1, *u1, *v1;
  using Named = std::vector<std::pair<const char*, SegmentCP*>>;
  Named All() const {
    return {{"s0", s0}, {"s1", s1}, {"s2", s2}, {"s3", s3}, {"t1", t1}, {"t2", t2}, {"u1", u1},
            {"u2", u2}, {"u3", u3}, {"v0", v0}, {"v1", v1}, {"w0", w0}, {"w1", w1}};
  }
  // The edited spline and the stack member under it: no hook involved.
  Named Spine() const { return {{"s0", s0}, {"s1", s1}, {"s2", s2}, {"s3", s3}, {"w0", w0}, {"w1", w1}}; }
  Named Hooks() const { return {{"t1", t1}, {"u1", u1}, {"v1", v1}}; }
};

void SetupView(TestFigure& f) {
  // Power-of-two scales: the inverses are exact.
  f.SetScreen(MakeMatrix({2, 0, 0, 10, 0, -2, 0, 20, 0, 0, 1, 0}),
              MakeMatrix({0.5f, 0, 0, -5, 0, -0.5f, 0, 10, 0, 0, 1, 0}));
  f.SetView(test::IdentityMatrix(), MakeMatrix({0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0}));
}

// Every answer, labelled, in query order.
using Answers = std::vector<std::pair<std::string, Vector>>;

// Screen and model answers of every control point (or of the spine only),
// then the hooks' piece points; then the same in muscle mode.
Answers Query(TestFigure& f, const Shape& shape, bool withHooks = true) {
  Answers out;
  auto add = [&out](const char* name, const char* what, const Vector& v) {
    out.emplace_back(std::string(name) + " " + what, v);
  };
  for (bool muscle : {false, true}) {
    f.SetMuscleMode(muscle);
    for (auto [name, c] : withHooks ? shape.All() : shape.Spine()) {
      if (muscle) {
        add(name, "mp", c->Getmp());
        add(name, "mit", c->Getmit());
        add(name, "mot", c->Getmot());
      } else {
        add(name, "screenp", c->Getscreenp());
        add(name, "screenit", c->Getscreenit());
        add(name, "screenot", c->Getscreenot());
        add(name, "it", c->Getit());
        add(name, "ot", c->Getot());
      }
    }
    for (auto [name, c] : withHooks ? shape.Hooks() : Shape::Named{}) {
      auto* h = static_cast<HookSegmentCP*>(c);
      if (!muscle) add(name, "p", h->p);
      add(name, "hit", *(muscle ? h->Getmhit() : h->Gethit()));
      add(name, "hot", *(muscle ? h->Getmhot() : h->Gethot()));
      if (h->IsLastHook() || h->stackNext == nullptr) {
        add(name, "pit", *(muscle ? h->Getmpit() : h->Getpit()));
        add(name, "pot", *(muscle ? h->Getmpot() : h->Getpot()));
      }
    }
  }
  f.SetMuscleMode(false);
  return out;
}

void ExpectSameBits(const char* when, const Answers& edited, const Answers& fresh) {
  SCOPED_TRACE(when);
  ASSERT_EQ(edited.size(), fresh.size());
  for (std::size_t i = 0; i < edited.size(); ++i) {
    const auto& [label, a] = edited[i];
    const Vector& b = fresh[i].second;
    ASSERT_EQ(label, fresh[i].first);
    EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0) << label << ": edited (" << a.x << ", " << a.y << ", " << a.z
                                                << ") fresh (" << b.x << ", " << b.y << ", " << b.z << ")";
  }
}

constexpr Vector kS0(0, 0, 0), kS1(4, 1, 0.5f), kS2(7, 5, -1), kS3(9, 2, 2);
constexpr Vector kMove(2, -4, 6);    // view space
constexpr Vector kS2Moved(8, 3, 2);  // kS2 + kMove * 0.5 (the inverse view scale)
constexpr Delta kPlain{0, 0, 1};

// The figure in one of its three states. Before the edit: s1 carries [t1
// 0.25, u1 0.75], s2 carries [v1 0.3]. Moved: s2 at kS2Moved. Reversed
// (by hand): s3 - s2 - s1 - s0, each delta pair exchanged with its angles
// negated, [u1 0.25, t1 0.75] under s2 and [v1 0.75] under s3.
Shape Build(TestFigure& f, bool moved, bool reversed) {
  Shape x{};
  x.s0 = f.NewCP(kS0);
  x.s1 = f.NewCP(kS1, cpflag::smooth);
  x.s2 = f.NewCP(moved ? kS2Moved : kS2);
  x.s3 = f.NewCP(kS3, cpflag::smooth);
  x.t1 = f.NewHook(reversed ? 0.75f : 0.25f, cpflag::smooth);
  x.t2 = f.NewCP(Vector(8, 9, -2));
  x.u1 = f.NewHook(reversed ? 0.25f : 0.75f);
  x.u2 = f.NewCP(Vector(6, -3, 0), cpflag::smooth);
  x.u3 = f.NewCP(Vector(3, -6, 1));
  x.v0 = f.NewCP(Vector(12, 6, 1));
  x.v1 = f.NewHook(reversed ? 0.75f : 0.3f, cpflag::smooth);
  x.w0 = f.NewCP(Vector(-3, -1, 0));
  x.w1 = f.NewCP(Vector(99, 99, 99));  // stacked under s0: takes s0's position
  for (const auto& named : x.All()) named.second->indelta = named.second->outdelta = kPlain;
  if (reversed) {
    for (SegmentCP* c : {x.s0, x.s3}) c->indelta = c->outdelta = Delta{-0.0f, -0.0f, 1};
    x.s1->indelta = {20, -3, 0.75f};
    x.s1->outdelta = {-10, 5, 1.5f};
    x.s2->indelta = {-15, -0.0f, 2};
    x.s2->outdelta = {-0.0f, -30, 1};
    f.Open({x.s3, x.s2, x.s1, x.s0});
    TestFigure::Stack({x.s2, x.u1, x.t1});
    TestFigure::Stack({x.s3, x.v1});
  } else {
    x.s1->indelta = {10, -5, 1.5f};
    x.s1->outdelta = {-20, 3, 0.75f};
    x.s2->indelta = {0, 30, 1};
    x.s2->outdelta = {15, 0, 2};
    f.Open({x.s0, x.s1, x.s2, x.s3});
    TestFigure::Stack({x.s1, x.t1, x.u1});
    TestFigure::Stack({x.s2, x.v1});
  }
  f.Open({x.t1, x.t2});
  f.Open({x.u1, x.u2, x.u3});
  f.Open({x.v0, x.v1});
  f.Open({x.w0, x.w1});
  TestFigure::Stack({x.s0, x.w1});
  return x;
}

// The fresh figure's answers, built in the given state.
Answers FreshAnswers(bool moved, bool reversed, bool withHooks = true) {
  TestFigure fresh;
  SetupView(fresh);
  Shape n = Build(fresh, moved, reversed);
  test::ExpectFigureInvariants({reversed ? n.s3 : n.s0, n.t1, n.u1, n.v0, n.w0});
  return Query(fresh, n, withHooks);
}

TEST(EditEndToEndTest, MovedThenReversedFigureAnswersLikeFreshOnes) {
  const long live = MarrowLiveBlocks();
  {
    TestFigure edited;
    SetupView(edited);
    Shape e = Build(edited, false, false);
    Query(edited, e);  // every cache warm

    // The host moves s2 and invalidates what the move affects.
    GroupNode* group = nullptr;
    e.s2->AddToGroup(&group, 1);
    MoveGroup(group, kMove);
    ConvertGroup(group, 0);
    group->cp->OffGrouped();
    FreeGroup(&group);
    ASSERT_EQ(e.s2->p, kS2Moved);
    ExpectSameBits("after the move", Query(edited, e), FreshAnswers(true, false));

    // The host reverses the spline: the reversal alone makes the spine's
    // answers current. The hooks handed over are not touched by it, so the
    // host then touches the whole slice and ungroups it again.
    Slice* slices = nullptr;
    Slice* slice = AddSlice(&slices);
    slice->first = e.s0;
    ReverseSlice(slice);
    edited.Unregister(e.s0);
    edited.Register(slice->first);
    ExpectSameBits("after the reversal, before the host touches the hooks", Query(edited, e, false),
                   FreshAnswers(true, true, false));
    GroupSlice(slices, e.s1, &group);
    ConvertGroup(group, 0);
    GroupSlice(slices, e.s1, &group);
    ASSERT_EQ(group, nullptr);
    DeleteSlice(&slices, slice);
    test::ExpectFigureInvariants({e.s3, e.t1, e.u1, e.v0, e.w0});
    ExpectSameBits("after the reversal", Query(edited, e), FreshAnswers(true, true));
  }
  EXPECT_EQ(MarrowLiveBlocks(), live);
}

}  // namespace
}  // namespace splinecore
