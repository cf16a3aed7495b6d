// The demo's host: one figure's records (cache, view, figure record, muscle
// table) and its control points, owned together and released together.
#ifndef SPLINECORE_EXAMPLES_HOST_FIGURE_H
#define SPLINECORE_EXAMPLES_HOST_FIGURE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "splinecore/splinecore.h"

namespace splinecore::demo {

// The identity delta: no turn, length unchanged.
inline constexpr Delta kNoDelta{0.0f, 0.0f, 1.0f};

// A muscle effect that moves its control point by a fixed offset.
class OffsetEffect final : public MuscleEffect {
 public:
  explicit OffsetEffect(Vector offset) : offset_(offset) {}
  std::int32_t ApplyToPosition(std::int32_t word, SegmentCP* cp, Vector* position) override;
  std::int16_t ApplyToInDelta(std::int32_t word, SegmentCP* cp, Delta* delta) override;
  std::int16_t ApplyToOutDelta(std::int32_t word, SegmentCP* cp, Delta* delta) override;

 private:
  Vector offset_;
};

class HostFigure {
 public:
  struct Spline {
    std::string name;
    std::vector<SegmentCP*> points;  // in spline order; points[0] is the first
    bool closed = false;
  };

  HostFigure();   // identity transforms, no muscle table
  ~HostFigure();  // deletes every spline, slice, group list and muscle record
  HostFigure(const HostFigure&) = delete;
  HostFigure& operator=(const HostFigure&) = delete;

  // A control point of this figure heading itself. Deltas are copied as
  // given (kNoDelta leaves the tangent alone).
  SegmentCP* NewPoint(Vector p, bool smooth, Delta in = kNoDelta, Delta out = kNoDelta);
  // A hook (hook flag set) with the unsnapped parameter s; its position is
  // written by the placement.
  HookSegmentCP* NewHook(float s, Delta in = kNoDelta, Delta out = kNoDelta);
  // Links the points into a spline, closed ones with loopEnd on the last,
  // and takes ownership of them.
  Spline& AddSpline(std::string name, std::vector<SegmentCP*> points, bool closed);
  // Links the points top to bottom into one stack and derives its head.
  static void Stack(const std::vector<SegmentCP*>& topToBottom);

  // screenMatrix = translate * rotate * scale (y flipped, so +y is up on the
  // screen), and its exact-as-possible inverse.
  void SetScreen(float rotateDegrees, float scale, float tx, float ty);
  // Attaches an OffsetEffect to cp in the muscle table (made on first use).
  void AddMuscleOffset(SegmentCP* cp, Vector offset);
  // Reverses splines[index] as a host does: ReverseSlice, then touches what
  // the reversal affects across stacks (GroupSlice + ConvertGroup).
  void ReverseSpline(std::size_t index);
  // Switches muscle mode: touches every control point and advances both
  // generations.
  void SetMuscleMode(bool on);
  void Invalidate();  // advances both generation counters

  FigureCache cache{};
  ViewRecord view{};
  FigureRecord record{};
  MuscleOwner owner{};
  std::vector<Spline> splines;
  Slice* slices = nullptr;  // one slice per spline, in spline order
  std::size_t measured = 0;  // the spline the demo walks at equal length steps

 private:
  MuscleTable table_{};
  MuscleTableLink link_{};
  std::vector<MuscleCPData*> cpData_;
  std::vector<Vector> prevp_;
};

}  // namespace splinecore::demo

#endif
