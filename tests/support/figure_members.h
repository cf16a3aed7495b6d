// A figure's derived state as bits, point by point: what the whole-figure
// refresh must leave as the lazy queries do.
#ifndef SPLINECORE_TESTS_FIGURE_MEMBERS_H
#define SPLINECORE_TESTS_FIGURE_MEMBERS_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "splinecore/figure.h"
#include "splinecore/hooks.h"
#include "splinecore/segment_cp.h"

namespace splinecore::test {

// Every member the library derives or keeps, as bits, point by point.
inline std::vector<std::uint32_t> Members(Figure& f) {
  std::vector<std::uint32_t> out;
  // Around points with muscle data two flags tell which getter came first,
  // not what is current: Getp clears `converted` whenever it is asked (the
  // stack converts again before any tangent is read), and a head's
  // `muscleDeltaCached` stays as its first muscle getter left it (its
  // position getter answers from its cache before the deltas).
  const std::uint32_t unread =
      f.Describe().muscleEffects.empty() ? 0 : cpflag::converted | cpflag::muscleDeltaCached;
  auto put = [&](const void* data, std::size_t bytes) {
    const std::size_t at = out.size();
    out.resize(at + bytes / 4);
    std::memcpy(&out[at], data, bytes);
  };
  for (int s = 0; s < f.SplineCount(); ++s) {
    for (int i = 0; i < f.PointCount(s); ++i) {
      SegmentCP* c = f.ControlPoint(PointId{s, i});
      for (const Vector* v : {&c->p, &c->it, &c->ot, &c->screenp, &c->screenit, &c->screenot, &c->mit, &c->mot})
        put(v, sizeof *v);
      out.push_back(c->flags & ~unread);
      out.push_back(c->stamp * 256u + c->screenStamp);
      if (c->IsHook()) {
        auto* h = static_cast<HookSegmentCP*>(c);
        for (const Vector* v : {&h->hit, &h->hot, &h->pit, &h->pot, &h->mhit, &h->mhot, &h->mpit, &h->mpot})
          put(v, sizeof *v);
      }
      if (f.MuscleMode()) {
        const Vector m = f.Position(PointId{s, i}, Space::kMuscle);
        put(&m, sizeof m);
      }
    }
  }
  return out;
}

// The first word where two dumps differ (their size when none does).
inline std::size_t FirstDifference(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
  return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
}

// Every raw getter of every point.
inline void AskRawGetters(Figure& f) {
  for (int s = 0; s < f.SplineCount(); ++s)
    for (int i = 0; i < f.PointCount(s); ++i) {
      SegmentCP* c = f.ControlPoint(PointId{s, i});
      for (auto get : {&SegmentCP::Getp, &SegmentCP::Getscreenp, &SegmentCP::Getit, &SegmentCP::Getot,
                       &SegmentCP::Getscreenit, &SegmentCP::Getscreenot})
        (c->*get)();
      if (f.MuscleMode())
        for (auto get : {&SegmentCP::Getmit, &SegmentCP::Getmot}) (c->*get)();
    }
}

}  // namespace splinecore::test

#endif
