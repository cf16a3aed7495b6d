// SPDX-License-Identifier: MIT
/// @file
/// Figure: a whole figure owned by the library, kept coherent for you; the
/// descriptions that build one and the answers it gives.
#ifndef SPLINECORE_FIGURE_H
#define SPLINECORE_FIGURE_H

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "splinecore/export.h"
#include "splinecore/geometry.h"

namespace splinecore {

namespace detail {
struct FigureAccess;  // what the library's own tests inspect
}

class SegmentCP;

/// The library's argument error: the message names the point and the rule.
class SPLINECORE_API FigureError : public std::invalid_argument {
 public:
  explicit FigureError(const std::string& what);  ///< what(): the point and the rule
};

/// A point of a Figure: spline index, and index along the spline in walk order.
struct PointId {
  int spline = 0;  ///< index of the spline in the figure
  int index = 0;   ///< index along the spline in walk order
  /// Same spline and same index.
  bool operator==(const PointId& o) const { return spline == o.spline && index == o.index; }
};

/// A Delta that neither turns nor scales: the default of every point.
inline constexpr Delta kNoTurn{0.0f, 0.0f, 1.0f};

/// One control point of a spline as the host describes it. A hook's `at` is
/// ignored: its placement on the carrier's segment gives its position.
struct PointDesc {
  Vector at{0, 0, 0};  ///< model-space position; a hook's is ignored (Describe gives 0, 0, 0)
  bool smooth = true;  ///< false: a peak
  Delta in = kNoTurn;   ///< turn and scale of the in-tangent
  Delta out = kNoTurn;  ///< turn and scale of the out-tangent
  bool hook = false;    ///< the point is a hook (hung with AddHook or HookDesc)
  float s = 0.5f;  ///< hooks: 0 at the carrier, 1 at its next; kept snapped to 0.25, 0.5 or 0.75
};

/// One spline as the host describes it: its points in walk order.
struct SplineDesc {
  std::vector<PointDesc> points;  ///< in walk order
  bool closed = false;            ///< the last point links back to the first
  std::string name;  ///< optional; when given, unique in the figure
};

/// A hook hanging on the segment from `carrier` to the carrier's next.
struct HookDesc {
  PointId hook;     ///< the hook point
  PointId carrier;  ///< the segment's owner
};

/// A muscle effect of the host's own. Figure calls it while it computes a
/// point's muscle position and deltas; it must answer from its arguments
/// alone (the coherence contract relies on it), and it is shared, not copied,
/// by the figures built from a description that lists it.
class SPLINECORE_API CustomMuscleEffect {
 public:
  virtual ~CustomMuscleEffect();  ///< effects are destroyed through this base
  /// Moves *position (the stack head's, in model space); true when it moved.
  virtual bool MovePosition(PointId point, Vector* position) const;
  /// Adjust *delta; return 0 when nothing changed, else nonzero, with bit
  /// value 4 meaning that delta->magnitude is a factor.
  virtual int AdjustInDelta(PointId point, Delta* delta) const;
  /// The same for the out-delta.
  virtual int AdjustOutDelta(PointId point, Delta* delta) const;
};

/// One muscle effect on a point: the offset effect (custom null) or the
/// host's own.
struct MuscleEffectDesc {
  PointId point;           ///< the point the effect acts on
  Vector offset{0, 0, 0};  ///< the offset effect's move (model space)
  std::shared_ptr<const CustomMuscleEffect> custom;  ///< the host's effect, or null
};

/// Everything the host decides about a figure, nothing derived: positions,
/// links, stack order, flags, deltas, hook parameters, transforms, mode and
/// muscle effects. Hooks of one carrier are listed in run order.
struct FigureDescription {
  std::vector<SplineDesc> splines;           ///< every spline, by index
  std::vector<std::vector<PointId>> stacks;  ///< non-hook members, top to bottom
  std::vector<HookDesc> hooks;               ///< every hung hook
  std::vector<MuscleEffectDesc> muscleEffects;  ///< per point in effect order
  Matrix view{},       ///< model to view space, where lengths are measured
      inverseView{},   ///< view to model space
      screen{},        ///< model to screen space, where tangents are found
      inverseScreen{};  ///< screen to model space
  bool muscleMode = false;  ///< the figure is in muscle mode
};

/// The four Bezier points of a segment or hook piece, from parameter 0 to 1.
struct Bezier {
  Vector p0,  ///< start (parameter 0)
      h0,     ///< first handle point
      h1,     ///< second handle point
      p1;     ///< end (parameter 1)
};

/// A point on a spline and the curve's direction there.
struct PointOnSpline {
  Vector position;   ///< view space
  Vector direction;  ///< view space
};

/// The space a Figure query answers in.
enum class Space {
  kModel,   ///< model space (muscle-moved positions in muscle mode)
  kScreen,  ///< screen space
  kMuscle,  ///< muscle placement: Getmp, Getmit/Getmot, a hook's m pieces
};

/// A whole figure owned by the library, kept coherent for you.
///
/// A Figure owns its FigureCache, ViewRecord, FigureRecord, muscle table and
/// every control point; destroying it frees them all. Points are addressed
/// by PointId (spline index, index along the spline in walk order), never by
/// a pointer the host could keep past a deletion; ControlPoint() gives the
/// raw SegmentCP* for the low-level API, valid until the next edit.
///
/// Errors: every call checks its arguments and throws FigureError (a
/// std::invalid_argument whose message names the point and the rule) before
/// changing anything, so a failed call leaves the figure as it was.
///
/// Coherence contract: after any sequence of edits, every query returns, bit
/// for bit, what the same query returns on a Figure built from Describe() of
/// the edited figure, whatever queries were asked before. The first query
/// after an edit brings the figure into a canonical state: derived values
/// (cached tangents, handles, hook placements, muscle positions and deltas,
/// stamps) are cleared as in a freshly built figure, then recomputed in one
/// fixed order (muscle family first in muscle mode, then positions, tangents
/// and screen handles spline by spline, which places every hook). Queries
/// then only read caches.
///
/// Cost: Move, SetDeltas, SetSmooth, SetHookS, and Delete in model mode,
/// recompute only their reach (the points within two steps along each
/// spline, the hook runs on the segments that end there and the hooks taking
/// them as partners, transitively), so a local edit costs the same on a
/// figure of any size. Every other edit recomputes the whole figure once, at
/// the next query.
///
/// Segment direction: a point c whose next n exists owns the segment from n
/// (parameter 0) to c (parameter 1).
class SPLINECORE_API Figure {
 public:
  Figure();  ///< empty, identity transforms, model mode
  /// Builds the figure `description` describes through the building calls
  /// and setters, which check it as they always do.
  explicit Figure(const FigureDescription& description);
  ~Figure();  ///< frees every record and control point
  Figure(const Figure&) = delete;             ///< not copyable (Describe, then build)
  Figure& operator=(const Figure&) = delete;  ///< not copyable
  Figure(Figure&&) noexcept;  ///< the moved-from figure may only be destroyed or assigned to
  Figure& operator=(Figure&&) noexcept;  ///< as the move constructor

  /// @name Building
  /// @{

  /// A spline of at least one point (two when closed). Returns its index.
  /// Hooks listed here must then be hung with AddHook before any query.
  int AddSpline(const SplineDesc& spline);
  /// Hangs hook point `hook` on carrier's segment, after the carrier's run.
  /// The carrier must be a non-hook with a next; the hook must not hang yet,
  /// nor place the segment's end (be it, or place the hook that is, in turn).
  void AddHook(PointId hook, PointId carrier);
  /// Links non-hook points of different stacks-to-be into one stack, top to
  /// bottom. Each must be alone in its stack and at the same position.
  void Stack(const std::vector<PointId>& topToBottom);
  /// Attaches an effect moving the point's muscle position by `offset`, after
  /// the point's other effects. Not on a hook.
  void AddMuscleOffset(PointId point, Vector offset);
  /// Attaches the host's own effect (not null), after the point's others.
  void AddMuscleEffect(PointId point, std::shared_ptr<const CustomMuscleEffect> effect);
  /// @}

  /// @name Edits
  /// @{
  void Move(PointId point, Vector at);  ///< the whole stack moves; not a hook
  void SetDeltas(PointId point, Delta in, Delta out);  ///< sets the point's in- and out-deltas
  void SetSmooth(PointId point, bool smooth);  ///< makes the point smooth, or a peak
  void SetHookS(PointId hook, float s);  ///< snapped to 0.25, 0.5 or 0.75 (see PointDesc)
  /// Reverses the spline's direction; each hook run moves to its carrier's
  /// new segment (see ReverseSlice). Refused for an open spline whose last
  /// point carries hooks.
  void Reverse(int spline);
  /// Removes a point. Refused for a carrier with hooks, the last point of a
  /// closed spline of two, the only point of a spline, and a point whose
  /// removal would leave a carrier without a next or end its segment at a
  /// hook its hooks place (see AddHook).
  void Delete(PointId point);
  /// Transforms with their inverses (the library carries screen tangents
  /// back to model space with the screen inverse), or with the inverse
  /// computed in double and rounded to float; a matrix whose linear part is
  /// singular (or whose inverse is not finite) is refused then.
  void SetView(const Matrix& view, const Matrix& inverse);
  void SetView(const Matrix& view);  ///< the view transform, its inverse computed (see above)
  void SetScreen(const Matrix& screen, const Matrix& inverse);  ///< the screen transform with its inverse
  void SetScreen(const Matrix& screen);  ///< the screen transform, its inverse computed
  void SetMuscleMode(bool on);  ///< enters or leaves muscle mode
  void ClearMuscleEffects(PointId point);  ///< removes every effect of the point
  /// @}

  /// @name Queries
  /// Each answers per the coherence contract.
  /// @{
  int SplineCount() const;  ///< the number of splines
  const std::string& SplineName(int spline) const;  ///< empty when unnamed
  int FindSpline(const std::string& name) const;     ///< -1 when no spline has it
  int PointCount(int spline) const;  ///< the number of points of the spline
  bool IsClosed(int spline) const;   ///< whether the spline is closed
  bool MuscleMode() const;           ///< whether the figure is in muscle mode
  /// Whether the point owns a segment (has a next point).
  bool OwnsSegment(PointId point) const;
  Vector Position(PointId point, Space space);  ///< the point's position in `space`
  /// Segment owned by `point`: from its next to it. The point needs a next.
  Bezier Segment(PointId point, Space space);
  /// Pieces of the carrier's segment cut at its hooks, in run order, the last
  /// piece ending at the carrier's next. Empty when it carries no hooks.
  /// Space::kModel and kScreen give the screen placement's pieces (model
  /// space and screen space), kMuscle the muscle placement's.
  std::vector<Bezier> HookPieces(PointId carrier, Space space);
  /// Brings every stale value of `space` up to date now, in one ordered pass
  /// over the figure: stack heads' positions first, then tangents and handles
  /// point by point in spline order, each carrier's hooks placed with its
  /// run (in muscle mode the muscle family comes first). The queries and the
  /// raw getters of ControlPoint() then answer from the caches, with the bits
  /// they would have computed lazily. One pass serves every space: the model
  /// tangents are found in screen space and the muscle family feeds them, so
  /// any space refreshes all three. kMuscle needs muscle mode. The view
  /// transform enters no cached value: SetView leaves nothing stale.
  /// After an edit that stales the whole figure (a new screen transform, the
  /// mode, a change of structure) the points that no hook and no muscle
  /// data reach are computed directly, split across `threads` threads (at
  /// least 1; each writes only its own points), and the others through the
  /// getters on this thread: the same bits for any number of threads.
  void RefreshAll(Space space, int threads = 1);
  float SegmentLength(PointId point);  ///< view space; the point needs a next
  /// GetTotalLength from the spline's first point: its segment lengths
  /// summed in view space; 1.0 for a spline without a segment.
  float SplineLength(int spline);
  /// Every spline's SplineLength, bit for bit, with the chord sums of the
  /// figure's segments split across `threads` threads (at least 1); the
  /// threads read only a copy of the segments, never a control point.
  std::vector<float> SplineLengths(int threads = 1);
  /// The view-space point and direction at a length from the spline's first
  /// point (PositionDirectionFromSubLength's answer; beyond the end, the far
  /// end). Lengths must be finite and not negative.
  PointOnSpline PointAtLength(int spline, float length);
  /// The same for many lengths, in any order, in one walk of the spline that
  /// measures each segment once; bit for bit the answers of PointAtLength.
  /// The lengths are answered in shares on `threads` threads (at least 1),
  /// as SplineLengths splits its work: the same bits for any number.
  std::vector<PointOnSpline> PointsAtLengths(int spline, const std::vector<float>& lengths, int threads = 1);
  /// View-space points along the spline by forward differencing, `steps`
  /// (1 to 65535) per segment, in travel order: each segment from parameter 0
  /// (its owner's next) to 1, the segments from the spline's far end back to
  /// its first point. Each segment gives its points before parameter 1, the
  /// last one also its end: segments * steps + 1 points; just the first
  /// point's view position when the spline has no segment.
  std::vector<Vector> Sample(int spline, int steps);
  /// The spline's segments as an SVG path in `space` (x and y): "M x y"
  /// at the start of travel, then "C h0x h0y h1x h1y x y" per segment in
  /// travel order (as Sample), and "Z" for a closed spline. Numbers are the
  /// shortest decimal forms that read back to the same floats.
  std::string SvgPath(int spline, Space space);
  /// ValidateFigure over every spline: one "spline:index: rule: message" line
  /// per violation; empty when the figure is valid.
  std::vector<std::string> Validate();

  /// What the host decided about the figure; Figure(Describe()) answers
  /// every query as this figure does.
  FigureDescription Describe() const;

  /// The raw control point, for the low-level API; valid until the next edit.
  SegmentCP* ControlPoint(PointId point);
  /// @}

 private:
  friend struct detail::FigureAccess;
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace splinecore

#endif
