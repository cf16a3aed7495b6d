// A large figure for benchmarks: a grid of crossing smooth splines stacked
// at every crossing (some closed), with a two-point hook spline riding on
// one row segment in ten, non-zero deltas on some points, and a screen
// transform that rotates, scales and translates.
#ifndef SPLINECORE_BENCH_GRID_FIGURE_H
#define SPLINECORE_BENCH_GRID_FIGURE_H

#include <cmath>
#include <vector>

#include "splinecore/splinecore.h"

namespace splinecore::bench {

class GridFigure {
 public:
  explicit GridFigure(int n) : n_(n) {
    cache_.view = &view_;
    cache_.figure = &record_;
    SetTransforms();
    std::vector<SegmentCP*> rows(static_cast<std::size_t>(n) * n), cols(rows.size());
    for (int r = 0; r < n; ++r)
      for (int c = 0; c < n; ++c) {
        const Vector at(static_cast<float>(c) + 0.1f * std::sin(0.7f * r), static_cast<float>(r), 0.05f * c);
        rows[Index(r, c)] = Point(at, (r * n + c) % 7 == 0);
        cols[Index(r, c)] = Point(at, false);
      }
    for (int r = 0; r < n; ++r) Link([&](int i) { return rows[Index(r, i)]; }, r % 10 == 9);
    for (int c = 0; c < n; ++c) Link([&](int i) { return cols[Index(i, c)]; }, c % 10 == 9);
    for (int r = 0; r < n; ++r)
      for (int c = 0; c < n; ++c) {
        SegmentCP* top = rows[Index(r, c)];
        SegmentCP* below = cols[Index(r, c)];
        SegmentCP* hook = c % 10 == 5 && top->next != nullptr ? Hook(top) : nullptr;
        Chain({top, hook, below});
      }
    table_.count = static_cast<std::uint16_t>(cache_.nextId < 65535 ? cache_.nextId : 65535);
    cpData_.assign(table_.count, nullptr);
    table_.cpData = cpData_.data();
    cache_.muscleTable = &table_;
  }

  ~GridFigure() {
    for (SegmentCP* first : firsts_) DeleteAllCP(first);
  }
  GridFigure(const GridFigure&) = delete;
  GridFigure& operator=(const GridFigure&) = delete;

  FigureCache& cache() { return cache_; }
  const std::vector<SegmentCP*>& points() const { return all_; }
  const ViewRecord& view() const { return view_; }

 private:
  std::size_t Index(int r, int c) const { return static_cast<std::size_t>(r) * n_ + c; }

  void SetTransforms() {
    const float angle = 0.3f, scale = 40.0f, cs = scale * std::cos(angle), sn = scale * std::sin(angle);
    const float ic = std::cos(angle) / scale, is = std::sin(angle) / scale;
    view_.screenMatrix = Matrix{{{cs, -sn, 0, 300}, {sn, cs, 0, -200}, {0, 0, scale, 10}}};
    view_.inverseScreenMatrix = Matrix{{{ic, is, 0, -(ic * 300 + is * -200)},
                                        {-is, ic, 0, -(-is * 300 + ic * -200)},
                                        {0, 0, 1 / scale, -10 / scale}}};
    view_.viewMatrix = view_.screenMatrix;
    view_.inverseViewMatrix = view_.inverseScreenMatrix;
  }

  SegmentCP* Point(Vector at, bool turned) {
    SegmentCP* cp = new SegmentCP(&cache_);
    cp->cache = &cache_;
    cp->p = at;
    cp->head = cp;
    cp->flags = cpflag::smooth;
    cp->indelta = Delta{turned ? 5.0f : 0.0f, turned ? 3.0f : 0.0f, 1.0f};
    cp->outdelta = Delta{0.0f, turned ? -4.0f : 0.0f, turned ? 1.25f : 1.0f};
    all_.push_back(cp);
    return cp;
  }

  // A hook at s = 0.5 on top's segment, on a two-point spline of its own.
  SegmentCP* Hook(SegmentCP* top) {
    HookSegmentCP* hook = new HookSegmentCP(&cache_);
    hook->cache = &cache_;
    hook->head = hook;
    hook->flags = cpflag::hook | cpflag::smooth;
    hook->indelta = hook->outdelta = Delta{0, 0, 1};
    hook->s = 0.5f;
    SegmentCP* free = Point(top->p + Vector(0.5f, 0.3f, 0.0f), false);
    free->next = hook;
    hook->prev = free;
    firsts_.push_back(free);
    all_.push_back(hook);
    return hook;
  }

  template <class At>
  void Link(At at, bool closed) {
    for (int i = 0; i + 1 < n_; ++i) {
      at(i)->next = at(i + 1);
      at(i + 1)->prev = at(i);
    }
    if (closed) {
      at(n_ - 1)->next = at(0);
      at(0)->prev = at(n_ - 1);
      at(n_ - 1)->OnLoopEnd();
    }
    firsts_.push_back(at(0));
  }

  static void Chain(std::initializer_list<SegmentCP*> members) {
    SegmentCP* above = nullptr;
    for (SegmentCP* m : members) {
      if (m == nullptr) continue;
      m->stackPrev = above;
      if (above != nullptr) above->stackNext = m;
      above = m;
    }
    (*members.begin())->SetHead();
  }

  int n_;
  FigureCache cache_{};
  ViewRecord view_{};
  FigureRecord record_{};
  MuscleTable table_{};
  std::vector<MuscleCPData*> cpData_;
  std::vector<SegmentCP*> all_;
  std::vector<SegmentCP*> firsts_;
};

}  // namespace splinecore::bench

#endif
