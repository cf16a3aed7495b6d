// Properties every figure of the shared corpus (tests/figures/*.json) must
// have: segments end at the positions, lengths stay under the control
// polygon, walks start and end where they should, reversal and description
// round trips keep the bits, screen handles are the model handles moved by
// the screen transform.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "figure_corpus.h"
#include "splinecore/figure.h"
#include "splinecore/figure_file.h"
#include "splinecore/segment_cp.h"

namespace splinecore {
namespace {

bool Same(const Vector& a, const Vector& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
double Distance(const Vector& a, const Vector& b) { return std::sqrt((a - b).Dot(a - b)); }
double Size(const Vector& a) { return std::sqrt(a.Dot(a)); }

PointId Next(Figure& f, PointId p) {
  return PointId{p.spline, p.index + 1 < f.PointCount(p.spline) ? p.index + 1 : 0};
}

class CorpusFigure : public ::testing::TestWithParam<std::filesystem::path> {};

TEST_P(CorpusFigure, SegmentsLengthsAndWalks) {
  const FigureDescription d = test::LoadFigure(GetParam());
  Figure f(d);
  EXPECT_TRUE(f.Validate().empty());
  for (int s = 0; s < f.SplineCount(); ++s) {
    float sum = 0.0f;
    int segments = 0;
    for (int i = 0; i < f.PointCount(s); ++i) {
      const PointId p{s, i};
      SCOPED_TRACE(std::to_string(s) + ":" + std::to_string(i));
      if (!f.OwnsSegment(p)) continue;
      ++segments;
      for (Space space : test::Spaces(f)) {
        const Bezier b = f.Segment(p, space);
        EXPECT_TRUE(Same(b.p0, f.Position(Next(f, p), space)) && Same(b.p1, f.Position(p, space)));
        // Hook pieces cut the segment in run order, joined at the hooks.
        const std::vector<Bezier> pieces = f.HookPieces(p, space);
        for (std::size_t k = 0; k + 1 < pieces.size(); ++k) EXPECT_TRUE(Same(pieces[k].p1, pieces[k + 1].p0));
        if (!pieces.empty() && space != Space::kMuscle) {
          EXPECT_TRUE(Same(pieces.back().p1, b.p0));
          EXPECT_LT(Distance(pieces.front().p0, b.p1), 1e-4 * (1 + Size(b.p1)));
        }
      }
      // The model handles through the screen transform are the screen handles, up to rounding.
      const Bezier model = f.Segment(p, Space::kModel), screen = f.Segment(p, Space::kScreen);
      const Vector m[] = {model.p0, model.h0, model.h1, model.p1}, sc[] = {screen.p0, screen.h0, screen.h1, screen.p1};
      for (int k = 0; k < 4; ++k) EXPECT_LT(Distance(TransformPoint(d.screen, m[k]), sc[k]), 1e-4 * (1 + Size(sc[k])));
      // 30 chords of the view-space curve never exceed its control polygon.
      const Vector v[] = {TransformPoint(d.view, m[0]), TransformPoint(d.view, m[1]), TransformPoint(d.view, m[2]),
                          TransformPoint(d.view, m[3])};
      const double polygon = Distance(v[0], v[1]) + Distance(v[1], v[2]) + Distance(v[2], v[3]);
      const float length = f.SegmentLength(p);
      EXPECT_GE(length, 0.0f);
      EXPECT_LE(length, polygon * (1 + 1e-5) + 1e-6);
      EXPECT_GE(length, Distance(v[0], v[3]) * (1 - 1e-5) - 1e-6);
      sum += length;
    }
    EXPECT_EQ(f.SplineLength(s), segments == 0 ? 1.0f : sum);
    // Travel runs from the far end to the first point: a walk starts at the
    // first point and ends at the far end, a sample the other way round.
    const Vector first = TransformPoint(d.view, f.Position(PointId{s, 0}, Space::kModel));
    const PointId farEnd{s, f.IsClosed(s) ? 0 : f.PointCount(s) - 1};
    const Vector last = TransformPoint(d.view, f.Position(farEnd, Space::kModel));
    const std::vector<PointOnSpline> at = f.PointsAtLengths(s, {0.0f, sum, 2 * sum + 1});
    EXPECT_LT(Distance(at[0].position, first), 1e-4 * (1 + Size(first)));
    if (segments > 0) {
      EXPECT_TRUE(Same(at[2].position, last));
      EXPECT_LT(Distance(at[1].position, last), 1e-3 * (1 + Size(last)));
      // Beyond the end the direction is the last segment's derivative at
      // the far end, 3 (h0 - p0), in view space.
      if (!f.MuscleMode()) {
        const int n = f.PointCount(s);
        const Bezier lastSegment = f.Segment(PointId{s, (farEnd.index + n - 1) % n}, Space::kModel);
        Vector derivative = (lastSegment.h0 - lastSegment.p0) * 3.0f;
        TransformDirection(d.view, derivative);
        EXPECT_LT(Distance(at[2].direction, derivative), 1e-3 * (1 + Size(derivative)));
      }
    }
    const std::vector<Vector> sample = f.Sample(s, 4);
    EXPECT_EQ(sample.size(), static_cast<std::size_t>(segments * 4 + 1));
    EXPECT_TRUE(Same(sample.front(), segments > 0 ? last : first));
    EXPECT_LT(Distance(sample.back(), first), 1e-4 * (1 + Size(first)));
  }
}

// Whether reversing spline s would hand a run to a hook: a carrier's next,
// the run's new carrier, is one.
bool HandsRunToHook(const FigureDescription& d, int s) {
  const std::vector<PointDesc>& points = d.splines[static_cast<std::size_t>(s)].points;
  for (const HookDesc& h : d.hooks) {
    const std::size_t next = static_cast<std::size_t>(h.carrier.index) + 1;
    if (h.carrier.spline == s && points[next % points.size()].hook) return true;
  }
  return false;
}

TEST_P(CorpusFigure, DescriptionsAndReversalsKeepTheBits) {
  const FigureDescription d = test::LoadFigure(GetParam());
  Figure f(d);
  const std::string text = WriteFigureFile(f.Describe());  // hook parameters snapped
  std::string svg;
  const std::vector<std::uint32_t> answers = test::Answers(f, &svg);
  // Written and read back, and rebuilt from its own description after queries.
  EXPECT_EQ(WriteFigureFile(ReadFigureFile(text)), text);
  for (const SplineDesc& s : f.Describe().splines)  // placed hooks are described at the origin
    for (const PointDesc& p : s.points) EXPECT_TRUE(!p.hook || Same(p.at, Vector(0, 0, 0)));
  Figure again(f.Describe());
  std::string svgAgain;
  EXPECT_EQ(test::Answers(again, &svgAgain), answers);
  EXPECT_EQ(svgAgain, svg);
  EXPECT_EQ(WriteFigureFile(f.Describe()), text);
  // Each spline reversed: its points in the other order; reversed again, the
  // figure it was.
  for (int s = 0; s < f.SplineCount(); ++s) {
    Figure r(d);
    const int n = r.PointCount(s);
    std::vector<Vector> before;
    for (int i = 0; i < n; ++i) before.push_back(r.Position(PointId{s, i}, Space::kModel));
    r.Reverse(s);
    EXPECT_TRUE(r.Validate().empty());
    // Its records are those of the figure built from its description.
    Figure fresh(r.Describe());
    fresh.SplineLengths();
    r.SplineLengths();
    EXPECT_EQ(test::Members(r), test::Members(fresh)) << "spline " << s;
    if (HandsRunToHook(d, s)) continue;  // that run stays, and a second reversal moves it on
    if (!r.IsClosed(s)) {
      for (int i = 0; i < n; ++i) EXPECT_TRUE(Same(r.Position(PointId{s, n - 1 - i}, Space::kModel), before[i]));
    }
    r.Reverse(s);
    std::string svgBack;
    EXPECT_EQ(test::Answers(r, &svgBack), answers) << "spline " << s;
    EXPECT_EQ(svgBack, svg);
    EXPECT_EQ(WriteFigureFile(r.Describe()), text);
  }
}

// A delta's magnitude scales the tangent it turns, exactly: halving every
// point's magnitudes halves the tangents of the points between two others
// to the bit (a product by 0.5 and a linear map of it round exactly as the
// half of their rounding). Open ends mirror and limit their neighbour's
// tangent, and hooks follow their partners: neither is linear in it.
TEST_P(CorpusFigure, HalvedMagnitudesHalveTheTangents) {
  FigureDescription d = test::LoadFigure(GetParam());
  d.muscleMode = false;
  Figure whole(d);
  for (SplineDesc& spline : d.splines)
    for (PointDesc& p : spline.points) {
      p.in.magnitude *= 0.5f;
      p.out.magnitude *= 0.5f;
    }
  Figure half(d);
  whole.RefreshAll(Space::kModel);
  half.RefreshAll(Space::kModel);
  for (int s = 0; s < whole.SplineCount(); ++s)
    for (int i = 0; i < whole.PointCount(s); ++i) {
      SegmentCP* w = whole.ControlPoint(PointId{s, i});
      SegmentCP* h = half.ControlPoint(PointId{s, i});
      // A hook neighbour's place depends on its carrier's tangents.
      if (w->IsHook() || w->prev == nullptr || w->next == nullptr || w->prev->IsHook() || w->next->IsHook()) continue;
      EXPECT_TRUE(Same(h->Getit(), w->Getit() * 0.5f) && Same(h->Getot(), w->Getot() * 0.5f)) << s << ":" << i;
    }
}

// Every edit a point takes, on the point; false where it does not apply.
using PointEdit = bool (*)(Figure&, PointId, const PointDesc&);
const PointEdit kEdits[] = {
    [](Figure& f, PointId p, const PointDesc& d) { return !d.hook && (f.Move(p, d.at + Vector(0.5f, 0.25f, 0)), true); },
    [](Figure& f, PointId p, const PointDesc& d) { return f.SetDeltas(p, Delta{20, -10, 1.25f}, d.out), true; },
    [](Figure& f, PointId p, const PointDesc& d) { return f.SetSmooth(p, !d.smooth), true; },
    [](Figure& f, PointId p, const PointDesc& d) { return d.hook && (f.SetHookS(p, d.s == 0.5f ? 0.75f : 0.5f), true); },
    [](Figure& f, PointId p, const PointDesc& d) { return !d.hook && (f.AddMuscleOffset(p, Vector(0.25f, 0, -0.5f)), true); },
    [](Figure& f, PointId p, const PointDesc& d) { return !d.hook && (f.ClearMuscleEffects(p), true); },
    [](Figure& f, PointId p, const PointDesc&) { return p.index == 0 && (f.Reverse(p.spline), true); },
    [](Figure& f, PointId p, const PointDesc&) {
      try {
        f.Delete(p);
      } catch (const FigureError&) {
        return false;  // a carrier's last points stay
      }
      return true;
    },
};

// A figure keeps no trace of what was asked before an edit: after any edit
// of any point, in either mode, the answers and every member of every
// control point are those of a figure built from the description, once the
// first query (of any kind) has been asked of both; the raw getters then
// only read.
TEST_P(CorpusFigure, AfterAnyEditTheRecordsReadAsAFreshFigures) {
  FigureDescription d = test::LoadFigure(GetParam());
  int query = 0;
  for (bool muscle : {false, true}) {
    d.muscleMode = muscle;
    for (int s = 0; s < static_cast<int>(d.splines.size()); ++s)
      for (int i = 0; i < static_cast<int>(d.splines[static_cast<std::size_t>(s)].points.size()); ++i)
        for (std::size_t e = 0; e < std::size(kEdits); ++e) {
          Figure f(d);
          test::Answers(f);  // everything cached before the edit
          if (!kEdits[e](f, PointId{s, i}, d.splines[static_cast<std::size_t>(s)].points[static_cast<std::size_t>(i)]))
            continue;
          Figure fresh(f.Describe());
          for (Figure* g : {&f, &fresh}) {
            switch (query % 6) {
              case 0: g->SplineLengths(); break;
              case 1: g->PointsAtLengths(0, {1.0f}); break;
              case 2: g->Position(PointId{0, 0}, muscle ? Space::kMuscle : Space::kModel); break;
              case 3: g->SvgPath(0, muscle ? Space::kMuscle : Space::kScreen); break;
              case 4: g->HookPieces(PointId{0, 0}, muscle ? Space::kMuscle : Space::kScreen); break;
              case 5: g->Sample(0, 2); break;
            }
          }
          ++query;
          const std::vector<std::uint32_t> members = test::Members(fresh);
          EXPECT_EQ(test::FirstDifference(test::Members(f), members), members.size())
              << "edit " << e << " of " << s << ":" << i << (muscle ? ", muscle mode" : "");
          EXPECT_EQ(test::Answers(f), test::Answers(fresh)) << "edit " << e << " of " << s << ":" << i;
          test::AskRawGetters(f);  // the caches answer: nothing is written
          EXPECT_EQ(test::FirstDifference(test::Members(f), members), members.size()) << "raw getters wrote";
        }
  }
}

// Counts its calls; says it moved and turned, and changes nothing.
struct CountingEffect final : CustomMuscleEffect {
  mutable int calls = 0;
  bool MovePosition(PointId, Vector*) const override { return ++calls, true; }
  int AdjustInDelta(PointId, Delta*) const override { return ++calls, 1; }
  int AdjustOutDelta(PointId, Delta*) const override { return ++calls, 1; }
};

// Host effects run in the pass after an edit; the queries and the raw
// getters after it answer from the caches and call none. The effects sit on
// every point but the stacks' tops: below heads without effects too.
TEST_P(CorpusFigure, QueriesCallNoHostEffect) {
  FigureDescription d = test::LoadFigure(GetParam());
  d.muscleMode = true;
  const auto count = std::make_shared<CountingEffect>();
  for (int s = 0; s < static_cast<int>(d.splines.size()); ++s)
    for (int i = 0; i < static_cast<int>(d.splines[static_cast<std::size_t>(s)].points.size()); ++i) {
      const bool top = std::any_of(d.stacks.begin(), d.stacks.end(), [&](const auto& k) { return k[0] == PointId{s, i}; });
      if (!top && !d.splines[static_cast<std::size_t>(s)].points[static_cast<std::size_t>(i)].hook)
        d.muscleEffects.push_back(MuscleEffectDesc{PointId{s, i}, Vector(0, 0, 0), count});
    }
  Figure f(d);
  for (int edit = 0; edit < 2; ++edit) {
    if (edit == 1) f.Move(PointId{0, 0}, d.splines[0].points[0].at + Vector(1, 0, 0));
    f.SplineLengths();
    const int pass = count->calls;
    EXPECT_GT(pass, 0);
    test::Answers(f);
    test::AskRawGetters(f);
    EXPECT_EQ(count->calls, pass) << "edit " << edit;
  }
}

INSTANTIATE_TEST_SUITE_P(Figures, CorpusFigure, ::testing::ValuesIn(test::FigureFiles("tests/figures")), [](const auto& info) {
  return info.param.stem().string();
});

}  // namespace
}  // namespace splinecore
