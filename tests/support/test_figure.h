// A small host for tests: one figure's records laid out as the library
// expects, with builders for splines, stacks, hooks and muscle data.
#ifndef SPLINECORE_TESTS_TEST_FIGURE_H
#define SPLINECORE_TESTS_TEST_FIGURE_H

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "marrow/marrow.h"
#include "splinecore/splinecore.h"

namespace splinecore::test {

Matrix IdentityMatrix();
// Rows given as 12 floats, row-major (m00 m01 m02 m03 m10 ...).
Matrix MakeMatrix(std::initializer_list<float> rows);

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

  // Links cps into an open spline (or closed, setting loopEnd on the last)
  // and registers it for deletion at teardown. Returns the first point.
  SegmentCP* Open(std::initializer_list<SegmentCP*> cps);
  SegmentCP* Closed(std::initializer_list<SegmentCP*> cps);
  // Links cps top to bottom into one stack and calls SetHead.
  static void Stack(std::initializer_list<SegmentCP*> cps);
  // Forget a registered spline (after the test deleted or relinked it);
  // `first` becomes the registered first point instead when not null.
  void Unregister(SegmentCP* first);
  void Register(SegmentCP* first);

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
