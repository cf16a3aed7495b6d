#include "host_figure.h"

#include <cmath>
#include <new>
#include <utility>

#include "marrow/marrow.h"

namespace splinecore::demo {

namespace {

// Slots in the muscle table: ids beyond it simply have no muscle data.
constexpr std::uint16_t kMuscleSlots = 4096;

}  // namespace

std::int32_t OffsetEffect::ApplyToPosition(std::int32_t, SegmentCP*, Vector* position) {
  *position += offset_;
  return 1;
}

std::int16_t OffsetEffect::ApplyToInDelta(std::int32_t, SegmentCP*, Delta*) { return 0; }

std::int16_t OffsetEffect::ApplyToOutDelta(std::int32_t, SegmentCP*, Delta*) { return 0; }

HostFigure::HostFigure() {
  cache.view = &view;
  cache.figure = &record;
  const Matrix identity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
  view.viewMatrix = view.inverseViewMatrix = identity;
  view.screenMatrix = view.inverseScreenMatrix = identity;
}

HostFigure::~HostFigure() {
  while (slices != nullptr) DeleteSlice(&slices, slices);
  FreeGroup(&cache.groupList);
  FreeGroup(&cache.skinGroupList);
  // Deleting a control point releases its muscle data and effects.
  for (Spline& spline : splines) DeleteAllCP(spline.points.front());
}

SegmentCP* HostFigure::NewPoint(Vector p, bool smooth, Delta in, Delta out) {
  SegmentCP* cp = new SegmentCP(&cache);
  cp->cache = &cache;
  cp->p = p;
  cp->head = cp;
  cp->SetSmooth(smooth ? 1 : 0);
  cp->indelta = in;
  cp->outdelta = out;
  return cp;
}

HookSegmentCP* HostFigure::NewHook(float s, Delta in, Delta out) {
  HookSegmentCP* hook = new HookSegmentCP(&cache);
  hook->cache = &cache;
  hook->head = hook;
  hook->OnHook();
  hook->SetS(s);
  hook->indelta = in;
  hook->outdelta = out;
  return hook;
}

HostFigure::Spline& HostFigure::AddSpline(std::string name, std::vector<SegmentCP*> points, bool closed) {
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    points[i]->SetNext(points[i + 1]);
    points[i + 1]->SetPrev(points[i]);
  }
  if (closed) {
    points.back()->SetNext(points.front());
    points.front()->SetPrev(points.back());
    points.back()->OnLoopEnd();
  }
  Slice* slice = AddSlice(&slices);
  if (slice != nullptr) slice->first = points.front();
  splines.push_back(Spline{std::move(name), std::move(points), closed});
  return splines.back();
}

void HostFigure::Stack(const std::vector<SegmentCP*>& topToBottom) {
  SegmentCP* above = nullptr;
  for (SegmentCP* cp : topToBottom) {
    cp->stackPrev = above;
    cp->stackNext = nullptr;
    if (above != nullptr) above->stackNext = cp;
    above = cp;
  }
  topToBottom.front()->SetHead();
}

void HostFigure::SetScreen(float rotateDegrees, float scale, float tx, float ty) {
  const double a = rotateDegrees * (3.14159265358979323846 / 180.0);
  const double c = std::cos(a), s = std::sin(a), k = scale;
  auto f = [](double v) { return static_cast<float>(v); };
  // Rotation after a y-flipping scale: [c -s; s c] * diag(k, -k).
  view.screenMatrix = Matrix{{{f(c * k), f(s * k), 0, tx}, {f(s * k), f(-c * k), 0, ty}, {0, 0, f(k), 0}}};
  // Its inverse: diag(1/k, -1/k) * [c s; -s c], applied after removing the translation.
  const double i00 = c / k, i01 = s / k, i10 = s / k, i11 = -c / k;
  view.inverseScreenMatrix = Matrix{{{f(i00), f(i01), 0, f(-(i00 * tx + i01 * ty))},
                                     {f(i10), f(i11), 0, f(-(i10 * tx + i11 * ty))},
                                     {0, 0, f(1.0 / k), 0}}};
  Invalidate();
}

void HostFigure::AddMuscleOffset(SegmentCP* cp, Vector offset) {
  if (cache.muscleTable == nullptr) {
    cpData_.assign(kMuscleSlots, nullptr);
    prevp_.assign(kMuscleSlots, Vector(0, 0, 0));
    table_.cpData = cpData_.data();
    table_.prevp = prevp_.data();
    table_.count = kMuscleSlots;
    link_.table = &table_;
    link_.next = record.muscleTables;
    record.muscleTables = &link_;
    cache.muscleTable = &table_;
  }
  if (cp->id >= kMuscleSlots) return;
  MuscleCPData*& data = cpData_[cp->id];
  if (data == nullptr) data = static_cast<MuscleCPData*>(AllocSeg(sizeof(MuscleCPData)));
  if (data == nullptr) return;
  void* block = AllocSeg(sizeof(OffsetEffect));
  if (block == nullptr) return;
  auto* effect = new (block) OffsetEffect(offset);
  effect->owner = &owner;
  MuscleEffect** link = &data->effects;
  while (*link != nullptr) link = &(*link)->next;
  *link = effect;
}

void HostFigure::ReverseSpline(std::size_t index) {
  Spline& spline = splines[index];
  Slice* slice = MatchSliceCP(slices, spline.points.front());
  ReverseSlice(slice);
  GroupNode* group = nullptr;
  GroupSlice(slices, slice->first, &group);
  ConvertGroup(group, 0);
  for (GroupNode* node = group; node != nullptr; node = node->next) node->cp->OffGrouped();
  FreeGroup(&group);
  // Re-read the spline order from its new first point.
  std::vector<SegmentCP*> order;
  for (SegmentCP* c = slice->first; c != nullptr && order.size() < spline.points.size(); c = c->next)
    order.push_back(c);
  spline.points = order;
}

void HostFigure::SetMuscleMode(bool on) {
  cache.mode = static_cast<std::uint8_t>(on ? (cache.mode | kMuscleMode) : (cache.mode & ~kMuscleMode));
  // Positions, deltas and handles in force all change with the mode.
  for (Spline& spline : splines)
    for (SegmentCP* cp : spline.points) cp->Touch(0);
  Invalidate();
}

void HostFigure::Invalidate() {
  ++cache.generation;
  ++cache.screenGeneration;
}

}  // namespace splinecore::demo
