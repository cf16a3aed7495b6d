// A small host for tests: one figure's records laid out as the library
// expects, with builders for splines, stacks, hooks and muscle data.
#ifndef SPLINECORE_TESTS_TEST_FIGURE_H
#define SPLINECORE_TESTS_TEST_FIGURE_H

#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "marrow/marrow.h"
#include "splinecore/splinecore.h"

namespace splinecore::test {

inline Matrix IdentityMatrix() { return Matrix{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}}; }

// Links cps into one spline (closed: loopEnd on the last); returns the first.
SegmentCP* Link(const std::vector<SegmentCP*>& cps, bool closed);

class TestFigure {
 public:
  TestFigure();
  ~TestFigure();  // deletes every spline still registered, frees muscle records
  TestFigure(const TestFigure&) = delete;
  TestFigure& operator=(const TestFigure&) = delete;

  FigureCache cache{};
  ViewRecord view{};
  FigureRecord record{};

  // A control point of this figure at p, heading itself, with `flags`.
  SegmentCP* NewCP(Vector p, std::uint32_t flags = 0);
  // A hook of this figure (hook flag set) with parameter s.
  HookSegmentCP* NewHook(float s, std::uint32_t flags = 0);

  // Links cps into a spline registered for deletion at teardown.
  SegmentCP* Open(const std::vector<SegmentCP*>& cps) { return Register(Link(cps, false)); }
  SegmentCP* Closed(const std::vector<SegmentCP*>& cps) { return Register(Link(cps, true)); }
  // Links cps top to bottom into one stack and calls SetHead.
  static void Stack(const std::vector<SegmentCP*>& cps);
  // Forget a registered spline (after the test deleted or relinked it), or
  // register one.
  void Unregister(SegmentCP* first);
  SegmentCP* Register(SegmentCP* first) { return splines_.emplace_back(first); }

  // Muscle tables: the first call creates the current table with `count`
  // slots and links it into the figure's list.
  MuscleTable* AddMuscleTable(std::uint16_t count);
  // Muscle data for cp in the current table (AllocSeg'd, zero-filled).
  MuscleCPData* AddMuscleData(SegmentCP* cp);
  void SetMuscleMode(bool on) { cache.mode = on ? kMuscleMode : 0; }
  // Appends an effect (built in an AllocSeg block, as a host does) to data's
  // list, owned by this figure's `owner` record. Effects must be trivially
  // destructible: the library frees them without running a destructor.
  template <class Effect, class... Args>
  Effect* AddEffect(MuscleCPData* data, Args&&... args) {
    Effect* effect = new (AllocSeg(sizeof(Effect))) Effect(std::forward<Args>(args)...);
    effect->owner = &owner;
    MuscleEffect** link = &data->effects;
    while (*link != nullptr) link = &(*link)->next;
    *link = effect;
    return effect;
  }
  MuscleOwner owner{};

  void SetScreen(const Matrix& m, const Matrix& inverse);
  void SetView(const Matrix& m, const Matrix& inverse);

 private:
  struct OwnedTable;
  std::vector<SegmentCP*> splines_;
  std::vector<std::unique_ptr<OwnedTable>> tables_;
};

}  // namespace splinecore::test

#endif
