// SPDX-License-Identifier: MIT
// Figure: ownership, building, edits and the canonical state behind every
// query.
#include "splinecore/figure.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <new>
#include <sstream>
#include <unordered_map>
#include <unordered_set>

#include "controlpoint/position_cache.h"
#include "convert/whole_refresh.h"
#include "figure/invert.h"
#include "figure/reach.h"
#include "figure/refresh_all.h"
#include "figure/shares.h"
#include "hooks/snap.h"
#include "measure/batch_length.h"
#include "measure/forward_difference.h"
#include "measure/position_in_segment.h"
#include "measure/view_cubic.h"
#include "marrow/marrow.h"
#include "splinecore/groups.h"
#include "splinecore/hooks.h"
#include "splinecore/host.h"
#include "splinecore/measure.h"
#include "splinecore/segment_cp.h"
#include "splinecore/slices.h"
#include "splinecore/validate.h"

namespace splinecore {

FigureError::FigureError(const std::string& what) : std::invalid_argument(what) {}

CustomMuscleEffect::~CustomMuscleEffect() = default;
bool CustomMuscleEffect::MovePosition(PointId, Vector*) const { return false; }
int CustomMuscleEffect::AdjustInDelta(PointId, Delta*) const { return 0; }
int CustomMuscleEffect::AdjustOutDelta(PointId, Delta*) const { return 0; }

namespace {

constexpr Matrix kIdentity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
constexpr float kInThird = -0.3333333432674408f;
constexpr float kOutThird = 0.3333333432674408f;
constexpr PointId kNoPoint{-1, -1};

class OffsetEffect final : public MuscleEffect {
 public:
  explicit OffsetEffect(Vector offset) : offset(offset) {}
  std::int32_t ApplyToPosition(std::int32_t, SegmentCP*, Vector* position) override {
    *position += offset;
    return 1;
  }
  std::int16_t ApplyToInDelta(std::int32_t, SegmentCP*, Delta*) override { return 0; }
  std::int16_t ApplyToOutDelta(std::int32_t, SegmentCP*, Delta*) override { return 0; }
  Vector offset;
};

// The host's effect behind the raw interface; the figure keeps the effect
// alive and maps the control point to its PointId.
class CustomEffect final : public MuscleEffect {
 public:
  using IdOf = PointId (*)(const void* figure, const SegmentCP* cp);
  CustomEffect(const CustomMuscleEffect* effect, const void* figure, IdOf idOf)
      : effect(effect), figure(figure), idOf(idOf) {}
  std::int32_t ApplyToPosition(std::int32_t, SegmentCP* cp, Vector* position) override {
    return effect->MovePosition(idOf(figure, cp), position);  // 1 when moved
  }
  std::int16_t ApplyToInDelta(std::int32_t, SegmentCP* cp, Delta* delta) override {
    return static_cast<std::int16_t>(effect->AdjustInDelta(idOf(figure, cp), delta));
  }
  std::int16_t ApplyToOutDelta(std::int32_t, SegmentCP* cp, Delta* delta) override {
    return static_cast<std::int16_t>(effect->AdjustOutDelta(idOf(figure, cp), delta));
  }
  const CustomMuscleEffect* effect;
  const void* figure;
  IdOf idOf;
};

std::string Name(PointId id) {
  std::ostringstream out;
  out << "point " << id.spline << ":" << id.index;
  return out.str();
}

[[noreturn]] void Fail(PointId id, const std::string& rule) { throw FigureError(Name(id) + ": " + rule); }

bool Finite(const Vector& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }
bool Finite(const Delta& d) { return std::isfinite(d.pitch) && std::isfinite(d.yaw) && std::isfinite(d.magnitude); }
using detail::Finite;

}  // namespace

using detail::FindCarrier;
using detail::HookRun;
using detail::RunBottom;
using detail::SplinePoints;
using detail::StackFrom;
using detail::StackMembers;
using detail::ZeroDerived;

struct Figure::Impl {
  FigureCache cache{};  // generations stay 0: the passes reset derived values instead
  ViewRecord view{};
  FigureRecord record{};
  MuscleOwner owner{};
  MuscleTable table{};
  MuscleTableLink link{};
  std::vector<MuscleCPData*> cpData;
  // c's muscle data, or null.
  MuscleCPData* DataOf(const SegmentCP* c) const { return c->id < cpData.size() ? cpData[c->id] : nullptr; }
  struct Spline {
    std::vector<SegmentCP*> points;  // walk order
    bool closed = false;
    std::string name;
  };
  // The host effects behind the figure's CustomEffect records.
  std::unordered_map<const MuscleEffect*, std::shared_ptr<const CustomMuscleEffect>> customs;
  std::vector<Spline> splines;
  bool muscle = false;
  // What the next query must recompute: everything (`whole`), or the reach
  // of the local edits since the last query.
  bool whole = true;
  bool local = false;
  detail::Reach reach;
  std::vector<std::vector<Vector>> musclePositions;  // per spline, per point, from the canonical pass
  // The points spline by spline with their ids, kept until the structure
  // changes; whether the figure passed validation since it last changed.
  std::vector<SegmentCP*> flat;
  std::vector<PointId> flatIds;
  detail::WholeRefresh plan;  // RefreshWhole's plan

  Impl() {
    cache.view = &view;
    cache.figure = &record;
    view.viewMatrix = view.inverseViewMatrix = view.screenMatrix = view.inverseScreenMatrix = kIdentity;
    link.table = &table;
    record.muscleTables = &link;
    cache.muscleTable = &table;
  }

  ~Impl() {
    for (Spline& s : splines) {
      if (!s.points.empty()) DeleteAllCP(s.points.front());
    }
  }

  // The spline of `id`, or a FigureError naming id.
  const Spline& SplineOf(PointId id) const {
    if (id.spline < 0 || id.spline >= static_cast<int>(splines.size())) Fail(id, "no such spline");
    return splines[static_cast<std::size_t>(id.spline)];
  }
  Spline& SplineAt(int spline) { return const_cast<Spline&>(SplineOf(PointId{spline, 0})); }
  const Spline& SplineAt(int spline) const { return SplineOf(PointId{spline, 0}); }

  SegmentCP* At(PointId id) const {
    const Spline& s = SplineOf(id);
    if (id.index < 0 || id.index >= static_cast<int>(s.points.size())) Fail(id, "no such point on the spline");
    return s.points[static_cast<std::size_t>(id.index)];
  }

  // The PointId of a control point of this figure (kNoPoint for another),
  // by its id (each point of a figure takes its own from the figure's
  // cache); the index is rebuilt after each change of structure.
  PointId IdOf(const SegmentCP* cp) const {
    if (ids.empty()) {
      ids.assign(cache.nextId, kNoPoint);
      for (std::size_t i = 0; i < splines.size(); ++i)
        for (std::size_t j = 0; j < splines[i].points.size(); ++j)
          ids[splines[i].points[j]->id] = PointId{static_cast<int>(i), static_cast<int>(j)};
    }
    const PointId at = cp != nullptr && cp->id < ids.size() ? ids[cp->id] : kNoPoint;
    if (at.spline < 0 || splines[static_cast<std::size_t>(at.spline)].points[static_cast<std::size_t>(at.index)] != cp)
      return kNoPoint;
    return at;
  }
  mutable std::vector<PointId> ids;  // by point id; empty: to be rebuilt

  // Walks from a segment's end through the hooks that end their carriers'
  // segments in turn (a hook is placed from its segment's ends): whether it
  // meets a hook `placed` marks, which, hung on that first segment, would be
  // placed from its own position. At most a step a point.
  template <class Placed>
  bool PlacedFrom(SegmentCP* end, Placed placed) const {
    for (std::uint32_t step = 0; step < cache.nextId && end != nullptr && end->IsHook(); ++step) {
      if (placed(end)) return true;
      SegmentCP* carrier = FindCarrier(end);
      end = carrier != nullptr ? carrier->next : nullptr;
    }
    return false;
  }

  // Room in the muscle table for the point's id.
  void EnsureSlot(std::uint32_t id) {
    if (id < cpData.size()) return;
    if (id >= 65535u) throw FigureError("muscle table full: ids beyond 65534 carry no muscle data");
    cpData.resize(id + 1, nullptr);
    table.cpData = cpData.data();
    table.count = static_cast<std::uint16_t>(cpData.size());
  }

  // Appends the effect made by `make` in an AllocSeg block to the point's
  // list, making the point's muscle data on first use.
  template <class Make>
  MuscleEffect* Attach(PointId point, Make make, std::size_t size) {
    SegmentCP* c = At(point);
    if (c->IsHook()) Fail(point, "hooks carry no muscle effects (their place comes from the carrier)");
    EnsureSlot(c->id);
    MuscleCPData*& data = cpData[c->id];
    const bool fresh = data == nullptr;
    if (fresh) {  // a host's AllocSeg need not zero its blocks
      data = static_cast<MuscleCPData*>(AllocSeg(sizeof(MuscleCPData)));
      if (data == nullptr) throw std::bad_alloc();
      std::memset(static_cast<void*>(data), 0, sizeof(MuscleCPData));
    }
    void* block = AllocSeg(size);
    if (block == nullptr) {
      if (fresh) {
        FreeSeg(data);
        data = nullptr;
      }
      throw std::bad_alloc();
    }
    MuscleEffect* effect = make(block);
    effect->owner = &owner;
    MuscleEffect** link = &data->effects;
    while (*link != nullptr) link = &(*link)->next;
    *link = effect;
    Touched();
    return effect;
  }

  // Drops the host effects of the point's muscle data before it is freed.
  void ForgetCustoms(const SegmentCP* c) {
    if (c->id >= cpData.size() || cpData[c->id] == nullptr) return;
    for (MuscleEffect* e = cpData[c->id]->effects; e != nullptr; e = e->next) customs.erase(e);
  }

  // An edit that may change anything (structure, transforms, mode, muscle
  // effects): the next query recomputes the whole figure.
  void Touched() {
    Restaled();
    ids.clear();
    flat.clear();
  }

  // An edit that changes no structure but may change every derived value
  // (the screen transform, the mode).
  void Restaled() { whole = true; }

  // After the point at `removed` left its spline: the ids of the points
  // after it move down by one.
  void Renumbered(PointId removed) {
    flat.clear();
    const std::size_t spline = static_cast<std::size_t>(removed.spline);
    if (musclePositions.size() == splines.size())
      musclePositions[spline].erase(musclePositions[spline].begin() + removed.index);
    ids.clear();
  }

  // Local edits: c's position, or only its tangents, changed.
  void Moved(SegmentCP* c) {
    if (whole) return;
    reach.PositionChanged(c);
    local = true;
  }
  void Turned(SegmentCP* c) {
    if (whole) return;
    reach.TangentChanged(c);
    local = true;
  }

  // A new point, unlinked, nothing cached (a host's AllocSeg need not zero
  // its blocks: every member the library reads is set here).
  SegmentCP* NewPoint(const PointDesc& d) {
    SegmentCP* cp;
    if (d.hook) {
      auto* h = new HookSegmentCP(&cache);
      h->SetS(detail::SnapS(d.s));
      cp = h;
    } else {
      cp = new SegmentCP(&cache);
    }
    cp->prev = cp->next = cp->stackNext = cp->stackPrev = nullptr;
    cp->tag = 0;
    cp->flags = (d.hook ? cpflag::hook : 0u) | (d.smooth ? cpflag::smooth : 0u);
    cp->cache = &cache;
    cp->head = cp;
    cp->p = d.at;  // a hook's is zeroed below, then placed
    cp->indelta = d.in;
    cp->outdelta = d.out;
    ZeroDerived(cp);
    return cp;
  }

  // Brings the figure into its canonical state: after a local edit the
  // edit's reach is recomputed, after any other edit the whole figure.
  void Canonicalize() {
    detail::Reach edited = std::exchange(reach, detail::Reach{});
    if (whole) {
      Recompute();
    } else if (local) {
      RecomputeReach(edited);
    }
    whole = local = false;
  }

  // The screen family of one point, in the fixed order of the pass:
  // position (placing a hook's run), screen handles (converting the
  // tangents).
  static void ComputeScreenFamily(SegmentCP* c) {
    c->Getscreenp();
    c->Getscreenit();
    c->Getscreenot();
    if (c->IsHook()) static_cast<HookSegmentCP*>(c)->Gethit();
  }

  using Ordered = detail::OrderedPoints;

  // Figure order: spline by spline, along each spline.
  static bool Before(PointId a, PointId b) { return std::make_pair(a.spline, a.index) < std::make_pair(b.spline, b.index); }

  // Puts the points' derived values back to their freshly built state, then
  // computes them in one fixed order: in muscle mode every point's muscle
  // deltas (each read while its head's muscle position is stale), then
  // spline by spline the muscle handles and, after them, the muscle
  // positions; then the screen family point by point. `order` lists points
  // spline by spline, along each spline.
  // `readHooks`: hooks outside `order` that the muscle phase may read; they
  // hold their muscle placement during that phase, as in the whole pass,
  // and their screen placement again afterwards.
  void Pass(const Ordered& order, const std::vector<SegmentCP*>& readHooks = {}) {
    for (const auto& [id, c] : order) ZeroDerived(c);
    Derive(order, readHooks, nullptr);
  }

  // Pass after the reset. With `lazyHeads` (marks by id), the heads it does
  // not mark hold their values already and keep their caches.
  void Derive(const Ordered& order, const std::vector<SegmentCP*>& readHooks,
              const std::vector<unsigned char>* lazyHeads) {
    if (muscle) {
      std::vector<Vector> screenPlaced;
      for (SegmentCP* h : readHooks) {
        screenPlaced.push_back(h->p);
        const PointId id = IdOf(h);
        h->p = musclePositions[static_cast<std::size_t>(id.spline)][static_cast<std::size_t>(id.index)];
      }
      for (const auto& [id, c] : order) {
        c->OffCacheditot();
        if (lazyHeads == nullptr || (*lazyHeads)[c->head->id] != 0) c->head->OffCacheditot();
        c->Getp();
      }
      for (std::size_t first = 0; first < order.size();) {
        std::size_t end = first;
        while (end < order.size() && order[end].first.spline == order[first].first.spline) ++end;
        for (std::size_t i = first; i < end; ++i) {
          SegmentCP* c = order[i].second;
          // A run whose carrier comes first in figure order is placed
          // before its hooks' handles, as in the whole pass, also when a
          // local pass leaves the carrier out.
          SegmentCP* carrier = c->IsHook() ? FindCarrier(c) : nullptr;
          if (carrier != nullptr && Before(IdOf(carrier), order[i].first)) RefreshRun(carrier);
          c->Getmit();
          c->Getmot();
          if (c->IsHasHooks()) RefreshRun(c);
        }
        for (std::size_t i = first; i < end; ++i) {
          const PointId id = order[i].first;
          musclePositions[static_cast<std::size_t>(id.spline)][static_cast<std::size_t>(id.index)] =
              order[i].second->Getmp();
        }
        first = end;
      }
      for (std::size_t i = 0; i < readHooks.size(); ++i) readHooks[i]->p = screenPlaced[i];
    }
    for (const auto& [id, c] : order) ComputeScreenFamily(c);
    // A point's own conversion leaves its muscle deltas stale and a later
    // neighbour's tangents refresh them: ask each point with muscle data
    // once more, so that no flag depends on which neighbours a pass ran.
    if (muscle)
      for (const auto& [id, c] : order)
        if (DataOf(c) != nullptr) c->Getp();
  }

  // The pass over the reach of the local edits, in figure order. Outside
  // the reach nothing reads a value that changed, so this gives the bits of
  // the pass over the whole figure. In muscle mode the reach takes the heads
  // of its stacks too (the muscle phase clears their muscle caches), and the
  // hooks it may read outside it hold their muscle placement for the muscle
  // phase (both placements write a hook's p).
  void RecomputeReach(detail::Reach& edited) {
    std::vector<SegmentCP*> points = edited.Close();
    std::vector<SegmentCP*> readHooks;
    if (muscle) {
      std::unordered_set<SegmentCP*> in(points.begin(), points.end());
      for (std::size_t i = 0, n = points.size(); i < n; ++i)
        if (in.insert(points[i]->head).second) points.push_back(points[i]->head);
      // The stacks of the points within two steps of the reach, and of
      // those stacks' spline neighbours (a hook's partners sit in its
      // carrier's stack and in the stack of the carrier's next).
      std::unordered_set<SegmentCP*> near;
      auto addStack = [&](SegmentCP* y) {
        for (SegmentCP* z : StackMembers(y)) near.insert(z);
      };
      for (SegmentCP* x : points)
        for (SegmentCP* y : {x, x->prev, x->next, x->prev != nullptr ? x->prev->prev : nullptr,
                             x->next != nullptr ? x->next->next : nullptr})
          if (y != nullptr) addStack(y);
      for (SegmentCP* z : std::vector<SegmentCP*>(near.begin(), near.end()))
        for (SegmentCP* y : {z->prev, z->next})
          if (y != nullptr) addStack(y);
      for (SegmentCP* w : near)
        if (w->IsHook() && in.count(w) == 0) readHooks.push_back(w);
    }
    Ordered order;
    for (SegmentCP* c : points) order.emplace_back(IdOf(c), c);
    std::sort(order.begin(), order.end(), [](const auto& x, const auto& y) { return Before(x.first, y.first); });
    Pass(order, readHooks);
  }

  // Validation and the points in figure order (once after each change of
  // structure: `flat` is empty then) and room for the muscle positions:
  // what a whole pass starts from.
  void StartWhole() {
    if (flat.empty()) {
      std::vector<std::string> problems = ValidateAll();
      if (!problems.empty()) throw FigureError("the figure is not valid: " + problems.front());
      plan.Forget();
      flatIds.clear();
      for (std::size_t i = 0; i < splines.size(); ++i)
        for (std::size_t j = 0; j < splines[i].points.size(); ++j) {
          flat.push_back(splines[i].points[j]);
          flatIds.push_back(PointId{static_cast<int>(i), static_cast<int>(j)});
        }
    }
    // Every point's entry is written by the pass in muscle mode and read only there.
    musclePositions.resize(splines.size());
    for (std::size_t i = 0; i < splines.size(); ++i) musclePositions[i].resize(splines[i].points.size());
  }

  // The pass over the whole figure.
  void Recompute() {
    StartWhole();
    Ordered order;
    for (std::size_t k = 0; k < flat.size(); ++k) order.emplace_back(flatIds[k], flat[k]);
    Pass(order);
  }

  // After the canonical pass the getters only read, except Getp outside
  // muscle mode around a point with muscle data (it clears `converted`
  // there): such a figure is measured on one thread.
  bool GettersOnlyRead() const {
    return muscle || std::all_of(cpData.begin(), cpData.end(), [](const MuscleCPData* d) { return d == nullptr; });
  }

  // Every derived value of the whole figure, with the bits of Recompute.
  void RefreshWhole(int threads) {
    StartWhole();
    detail::WholeFrame frame{flat,
                             flatIds,
                             cpData,
                             cache.nextId,
                             muscle,
                             !customs.empty(),
                             view,
                             musclePositions,
                             [this](const Ordered& order, const std::vector<unsigned char>& marks) {
                               for (const auto& [id, c] : order) ZeroDerived(c);
                               Derive(order, {}, &marks);
                             }};
    plan.Run(frame, threads);
  }

  // The muscle placement of a carrier's run, through its first hook.
  static void RefreshRun(SegmentCP* carrier) { carrier->stackNext->Getmp(); }

  std::vector<std::string> ValidateAll() const {
    std::vector<SegmentCP*> firsts;
    for (const Spline& s : splines) firsts.push_back(s.points.front());
    struct Context {
      const Impl* self;
      std::vector<std::string> lines;
    } context{this, {}};
    ValidateFigure(
        firsts.data(), static_cast<int>(firsts.size()),
        [](const FigureViolation& v, void* out) {
          auto* ctx = static_cast<Context*>(out);
          const PointId id = ctx->self->IdOf(v.cp);
          ctx->lines.push_back(Name(id) + ": " + FigureRuleName(v.rule) + ": " + v.message);
        },
        &context);
    return context.lines;
  }

  void Relink(Spline& s) {
    const std::size_t n = s.points.size();
    std::vector<SegmentCP*> order;
    for (SegmentCP* c : SplinePoints(s.points.front())) {
      if (order.size() == n) break;
      order.push_back(c);
    }
    s.points = order;
  }
};

Figure::Figure() : impl_(std::make_unique<Impl>()) {}

Figure::Figure(const FigureDescription& d) : Figure() {
  for (const SplineDesc& s : d.splines) AddSpline(s);
  for (const auto& stack : d.stacks) Stack(stack);
  for (const HookDesc& h : d.hooks) AddHook(h.hook, h.carrier);
  for (const MuscleEffectDesc& m : d.muscleEffects) {
    if (m.custom != nullptr) AddMuscleEffect(m.point, m.custom);
    else AddMuscleOffset(m.point, m.offset);
  }
  SetView(d.view, d.inverseView);
  SetScreen(d.screen, d.inverseScreen);
  SetMuscleMode(d.muscleMode);
}

Figure::~Figure() = default;
Figure::Figure(Figure&&) noexcept = default;
Figure& Figure::operator=(Figure&&) noexcept = default;

int Figure::AddSpline(const SplineDesc& spline) {
  const PointId next{static_cast<int>(impl_->splines.size()), 0};
  if (spline.points.empty()) Fail(next, "a spline needs at least one point");
  if (spline.closed && spline.points.size() < 2) Fail(next, "a closed spline needs at least two points");
  if (spline.points.size() == 1 && spline.points.front().hook) Fail(next, "a hook needs a neighbour on its spline");
  for (std::size_t i = 0; i < spline.points.size(); ++i) {
    const PointDesc& p = spline.points[i];
    const PointId id{next.spline, static_cast<int>(i)};
    if (!Finite(p.at) || !Finite(p.in) || !Finite(p.out) || !std::isfinite(p.s)) Fail(id, "values must be finite");
  }
  if (!spline.name.empty() && FindSpline(spline.name) >= 0)
    Fail(next, "the spline name '" + spline.name + "' is taken");
  Impl::Spline s;
  s.closed = spline.closed;
  s.name = spline.name;
  try {
    for (const PointDesc& p : spline.points) s.points.push_back(impl_->NewPoint(p));
  } catch (...) {
    for (SegmentCP* c : s.points) delete c;
    throw;
  }
  for (std::size_t i = 0; i + 1 < s.points.size(); ++i) {
    s.points[i]->next = s.points[i + 1];
    s.points[i + 1]->prev = s.points[i];
  }
  if (s.closed) {
    s.points.back()->next = s.points.front();
    s.points.front()->prev = s.points.back();
    s.points.back()->OnLoopEnd();
  }
  impl_->splines.push_back(std::move(s));
  impl_->Touched();
  return next.spline;
}

void Figure::AddHook(PointId hook, PointId carrier) {
  SegmentCP* h = impl_->At(hook);
  SegmentCP* c = impl_->At(carrier);
  if (!h->IsHook()) Fail(hook, "not a hook");
  if (h->stackPrev != nullptr || h->stackNext != nullptr) Fail(hook, "the hook already hangs on a carrier");
  if (c->IsHook()) Fail(carrier, "a hook carries no hooks");
  if (c->next == nullptr) Fail(carrier, "a carrier needs a next point (its segment)");
  if (impl_->PlacedFrom(c->next, [h](const SegmentCP* x) { return x == h; }))
    Fail(hook, "a hook cannot ride on a segment whose end it places");
  SegmentCP* above = RunBottom(c);
  h->stackNext = above->stackNext;
  if (h->stackNext != nullptr) h->stackNext->stackPrev = h;
  h->stackPrev = above;
  above->stackNext = h;
  h->SetHead();
  impl_->Touched();
}

void Figure::Stack(const std::vector<PointId>& topToBottom) {
  if (topToBottom.size() < 2) throw FigureError("a stack needs at least two points");
  std::vector<SegmentCP*> cps;
  for (PointId id : topToBottom) {
    SegmentCP* c = impl_->At(id);
    if (c->IsHook()) Fail(id, "hooks hang on carriers (AddHook), they are not stacked");
    if (c->stackPrev != nullptr || c->stackNext != nullptr) Fail(id, "already in a stack");
    for (SegmentCP* o : cps)
      if (o == c) Fail(id, "listed twice");
    if (!cps.empty() && !(c->p == cps.front()->p)) Fail(id, "stacked points must share their position");
    cps.push_back(c);
  }
  for (std::size_t i = 0; i + 1 < cps.size(); ++i) {
    cps[i]->stackNext = cps[i + 1];
    cps[i + 1]->stackPrev = cps[i];
  }
  cps.front()->SetHead();
  impl_->Touched();
}

void Figure::AddMuscleOffset(PointId point, Vector offset) {
  impl_->At(point);
  if (!Finite(offset)) Fail(point, "offset must be finite");
  impl_->Attach(point, [&](void* block) { return new (block) OffsetEffect(offset); }, sizeof(OffsetEffect));
}

void Figure::AddMuscleEffect(PointId point, std::shared_ptr<const CustomMuscleEffect> effect) {
  impl_->At(point);
  if (effect == nullptr) Fail(point, "a muscle effect must not be null");
  const auto idOf = [](const void* figure, const SegmentCP* cp) { return static_cast<const Impl*>(figure)->IdOf(cp); };
  MuscleEffect* added = impl_->Attach(
      point, [&](void* block) { return new (block) CustomEffect(effect.get(), impl_.get(), idOf); },
      sizeof(CustomEffect));
  impl_->customs[added] = std::move(effect);
}

void Figure::ClearMuscleEffects(PointId point) {
  SegmentCP* c = impl_->At(point);
  MuscleCPData* data = impl_->DataOf(c);
  if (data == nullptr) return;
  impl_->ForgetCustoms(c);
  for (MuscleEffect* e = data->effects; e != nullptr;) {
    MuscleEffect* next = e->next;
    FreeSeg(e);
    e = next;
  }
  FreeSeg(data);
  impl_->cpData[c->id] = nullptr;
  impl_->Touched();
}

void Figure::Move(PointId point, Vector at) {
  SegmentCP* c = impl_->At(point);
  if (c->IsHook()) Fail(point, "a hook's position comes from its carrier's segment");
  if (!Finite(at)) Fail(point, "position must be finite");
  for (SegmentCP* m : StackMembers(c)) {
    if (m->IsHook()) continue;
    m->p = at;
    impl_->Moved(m);
  }
}

void Figure::SetDeltas(PointId point, Delta in, Delta out) {
  SegmentCP* c = impl_->At(point);
  if (!Finite(in) || !Finite(out)) Fail(point, "deltas must be finite");
  c->indelta = in;
  c->outdelta = out;
  impl_->Turned(c);
}

void Figure::SetSmooth(PointId point, bool smooth) {
  SegmentCP* c = impl_->At(point);
  c->SetSmooth(smooth ? 1 : 0);
  impl_->Turned(c);
}

void Figure::SetHookS(PointId hook, float s) {
  SegmentCP* h = impl_->At(hook);
  if (!h->IsHook()) Fail(hook, "not a hook");
  if (!std::isfinite(s)) Fail(hook, "s must be finite");
  static_cast<HookSegmentCP*>(h)->SetS(detail::SnapS(s));
  // The run is placed together: every hook of it may move. An unhung hook
  // has nothing derived (queries refuse the figure until AddHook).
  if (SegmentCP* carrier = FindCarrier(h))
    for (SegmentCP* k : HookRun(carrier)) impl_->Moved(k);
}

void Figure::Reverse(int spline) {
  Impl::Spline& s = impl_->SplineAt(spline);
  if (!s.closed && s.points.back()->IsHasHooks())
    Fail(PointId{spline, static_cast<int>(s.points.size()) - 1}, "the last point of an open spline carries hooks");
  Slice slice{s.points.front(), nullptr};
  ReverseSlice(&slice);
  s.points.front() = slice.first;
  impl_->Relink(s);
  impl_->Touched();
}

void Figure::Delete(PointId point) {
  SegmentCP* c = impl_->At(point);
  Impl::Spline& s = impl_->splines[static_cast<std::size_t>(point.spline)];
  if (s.points.size() == 1) Fail(point, "the only point of a spline");
  if (s.closed && s.points.size() == 2) Fail(point, "a closed spline keeps at least two points");
  if (c->IsHasHooks()) Fail(point, "carries hooks");
  if (s.points.size() == 2 && s.points[point.index == 0 ? 1 : 0]->IsHook())
    Fail(point, "a hook needs a neighbour on its spline");
  if (c->prev != nullptr && c->prev->IsHasHooks()) {
    if (c->next == nullptr) Fail(point, "its prev carries hooks and would be left without a next");
    if (impl_->PlacedFrom(c->next, [c](SegmentCP* x) { return FindCarrier(x) == c->prev; }))
      Fail(point, "its prev's hooks would ride on a segment whose end they place");
  }
  // What the deletion changes: the stack it leaves (heads, partners, the
  // run it may belong to) and its spline neighbours, which become each
  // other's.
  std::vector<SegmentCP*> changed;
  for (SegmentCP* m : StackMembers(c))
    if (m != c) changed.push_back(m);
  for (SegmentCP* n : {c->prev, c->next})
    if (n != nullptr && n != c) changed.push_back(n);
  SegmentCP* first = s.points.front();
  impl_->ForgetCustoms(c);
  impl_->reach.Drop(c);
  // The destructor frees the point's muscle data and clears its slot.
  DeleteCP(&first, c);
  s.points.erase(s.points.begin() + point.index);
  impl_->Renumbered(point);
  // In muscle mode the whole figure: host effects answer by PointId, which
  // the deletion renumbers, and the muscle family's reach after a change of
  // structure is not worked out.
  if (impl_->muscle) impl_->Touched();
  for (SegmentCP* m : changed) impl_->Moved(m);
}

void Figure::SetView(const Matrix& view, const Matrix& inverse) {
  if (!Finite(view) || !Finite(inverse)) throw FigureError("view: matrices must be finite");
  // No cached value depends on the view: nothing to recompute.
  impl_->view.viewMatrix = view;
  impl_->view.inverseViewMatrix = inverse;
}

void Figure::SetScreen(const Matrix& screen, const Matrix& inverse) {
  if (!Finite(screen) || !Finite(inverse)) throw FigureError("screen: matrices must be finite");
  impl_->view.screenMatrix = screen;
  impl_->view.inverseScreenMatrix = inverse;
  impl_->Restaled();
}

void Figure::SetView(const Matrix& view) {
  Matrix inverse;
  if (!detail::InvertAffine(view, &inverse)) throw FigureError("view: the matrix is not invertible; give its inverse");
  SetView(view, inverse);
}

void Figure::SetScreen(const Matrix& screen) {
  Matrix inverse;
  if (!detail::InvertAffine(screen, &inverse))
    throw FigureError("screen: the matrix is not invertible; give its inverse");
  SetScreen(screen, inverse);
}

void Figure::SetMuscleMode(bool on) {
  impl_->muscle = on;
  impl_->cache.mode = on ? kMuscleMode : 0;
  impl_->Restaled();
}

int Figure::SplineCount() const { return static_cast<int>(impl_->splines.size()); }

const std::string& Figure::SplineName(int spline) const {
  return impl_->SplineAt(spline).name;
}

int Figure::FindSpline(const std::string& name) const {
  if (name.empty()) return -1;
  for (std::size_t i = 0; i < impl_->splines.size(); ++i)
    if (impl_->splines[i].name == name) return static_cast<int>(i);
  return -1;
}

int Figure::PointCount(int spline) const {
  return static_cast<int>(impl_->SplineAt(spline).points.size());
}

bool Figure::IsClosed(int spline) const {
  return impl_->SplineAt(spline).closed;
}

bool Figure::MuscleMode() const { return impl_->muscle; }

bool Figure::OwnsSegment(PointId point) const { return impl_->At(point)->next != nullptr; }

Vector Figure::Position(PointId point, Space space) {
  SegmentCP* c = impl_->At(point);
  if (space == Space::kMuscle && !impl_->muscle) Fail(point, "muscle space needs muscle mode");
  impl_->Canonicalize();
  switch (space) {
    case Space::kModel:
      return c->Getp();
    case Space::kScreen:
      return c->Getscreenp();
    case Space::kMuscle:
      return impl_->musclePositions[static_cast<std::size_t>(point.spline)][static_cast<std::size_t>(point.index)];
  }
  return c->p;
}

Bezier Figure::Segment(PointId point, Space space) {
  SegmentCP* c = impl_->At(point);
  if (c->next == nullptr) Fail(point, "owns no segment (no next point)");
  if (space == Space::kMuscle && !impl_->muscle) Fail(point, "muscle space needs muscle mode");
  impl_->Canonicalize();
  SegmentCP* n = c->next;
  switch (space) {
    case Space::kModel: {
      const Vector np = n->head->Getp();
      const Vector cp = c->head->Getp();
      return Bezier{np, n->Getot() * kOutThird + np, c->Getit() * kInThird + cp, cp};
    }
    case Space::kScreen:
      return Bezier{n->Getscreenp(), n->Getscreenot(), c->Getscreenit(), c->Getscreenp()};
    case Space::kMuscle:
      return Bezier{Position(impl_->IdOf(n), Space::kMuscle), n->Getmot(), c->Getmit(),
                    Position(point, Space::kMuscle)};
  }
  return Bezier{};
}

std::vector<Bezier> Figure::HookPieces(PointId carrier, Space space) {
  SegmentCP* c = impl_->At(carrier);
  if (space == Space::kMuscle && !impl_->muscle) Fail(carrier, "muscle space needs muscle mode");
  impl_->Canonicalize();
  std::vector<Bezier> pieces;
  if (!c->IsHasHooks()) return pieces;
  const bool muscle = space == Space::kMuscle;
  const Matrix& screen = impl_->view.screenMatrix;
  auto out = [&](const Vector& v) { return space == Space::kScreen ? TransformPoint(screen, v) : v; };
  Vector start = muscle ? Position(carrier, Space::kMuscle) : c->Getp();
  HookSegmentCP* last = nullptr;
  for (SegmentCP* m : HookRun(c)) {
    auto* h = static_cast<HookSegmentCP*>(m);
    const Vector end = muscle ? impl_->musclePositions[static_cast<std::size_t>(impl_->IdOf(h).spline)]
                                                      [static_cast<std::size_t>(impl_->IdOf(h).index)]
                              : h->p;
    pieces.push_back(Bezier{out(start), out(muscle ? h->mhit : h->hit), out(muscle ? h->mhot : h->hot), out(end)});
    start = end;
    last = h;
  }
  const Vector next = muscle ? Position(impl_->IdOf(c->next), Space::kMuscle) : c->next->Getp();
  pieces.push_back(
      Bezier{out(start), out(muscle ? last->mpit : last->pit), out(muscle ? last->mpot : last->pot), out(next)});
  return pieces;
}

void Figure::RefreshAll(Space space, int threads) {
  if (space == Space::kMuscle && !impl_->muscle) throw FigureError("muscle space needs muscle mode");
  if (threads < 1) throw FigureError("threads must be at least 1");
  if (impl_->whole) {
    impl_->RefreshWhole(threads);
    impl_->whole = impl_->local = false;
  }
  impl_->Canonicalize();  // what is left: nothing after a whole pass, else the reach of local edits
}

float Figure::SegmentLength(PointId point) {
  SegmentCP* c = impl_->At(point);
  if (c->next == nullptr) Fail(point, "owns no segment (no next point)");
  impl_->Canonicalize();
  return CurveLength(c);
}

float Figure::SplineLength(int spline) {
  SegmentCP* first = impl_->At(PointId{spline, 0});
  impl_->Canonicalize();
  return detail::TotalLength(first);
}

std::vector<float> Figure::SplineLengths(int threads) {
  if (threads < 1) throw FigureError("threads must be at least 1");
  impl_->Canonicalize();
  const bool onlyReads = impl_->GettersOnlyRead();
  const std::vector<Impl::Spline>& splines = impl_->splines;
  std::vector<float> out(splines.size());
  // Spline s: a thread reads only its segments and writes only its length.
  auto measure = [&splines, &out](std::size_t s) {
    const std::vector<SegmentCP*> walk = detail::LengthWalk(splines[s].points.front());
    std::vector<float> lengths(walk.size());
    detail::CurveLengths(walk.data(), walk.size(), lengths.data());
    float total = walk.empty() ? 1.0f : 0.0f;
    for (float l : lengths) total = static_cast<float>(static_cast<double>(total) + l);
    out[s] = total;
  };
  // Each spline goes to the share of the figure's points its first point is in.
  std::size_t points = 0;
  for (const Impl::Spline& s : splines) points += s.points.size();
  const std::size_t parts = onlyReads ? detail::Shares(threads, points, 256) : 1;
  detail::OnThreads(parts, [&](std::size_t part) {
    for (std::size_t s = 0, counted = 0; s < splines.size(); counted += splines[s++].points.size())
      if (detail::ShareOf(counted, points, parts) == part) measure(s);
  });
  return out;
}

PointOnSpline Figure::PointAtLength(int spline, float length) {
  return PointsAtLengths(spline, {length}).front();
}

std::vector<PointOnSpline> Figure::PointsAtLengths(int spline, const std::vector<float>& lengths, int threads) {
  SegmentCP* first = impl_->At(PointId{spline, 0});
  if (threads < 1) throw FigureError("threads must be at least 1");
  for (float l : lengths)
    if (!std::isfinite(l) || l < 0.0f) Fail(PointId{spline, 0}, "lengths must be finite and not negative");
  impl_->Canonicalize();
  // One walk measures every segment once, summing as the walk of
  // PositionDirectionFromSubLength does; each length then finds the first
  // segment whose running sum passes it. The sums need not rise (a rounded
  // sum plus a zero length can fall back), so the search runs on their
  // running maximum, which first passes a length where they first do.
  struct Step {
    SegmentCP* c;
    float before;
    double passed;  // the running maximum of the sums through c
  };
  std::vector<Step> steps;
  SegmentCP* end = first;
  const std::vector<SegmentCP*> walk = detail::LengthWalk(first);
  if (!walk.empty()) {
    std::vector<float> measured(walk.size());
    detail::CurveLengths(walk.data(), walk.size(), measured.data());
    float walked = 0.0f;
    double passed = 0.0;  // every sum is at least 0
    for (std::size_t i = 0; i < walk.size(); ++i) {
      const float before = walked;
      const double reached = static_cast<double>(walked) + measured[i];
      walked = static_cast<float>(reached);
      passed = std::max(passed, reached);
      steps.push_back(Step{walk[i], before, passed});
    }
    end = walk.back()->GetNext();
  }
  const Matrix& view = impl_->view.viewMatrix;
  std::vector<PointOnSpline> out(lengths.size());
  // Each share's answers read the steps and the control points only.
  auto answer = [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) {
      const float l = lengths[i];
      PointOnSpline& p = out[i];
      const auto at = std::upper_bound(steps.begin(), steps.end(), static_cast<double>(l),
                                       [](double length, const Step& s) { return length < s.passed; });
      if (at != steps.end()) {
        const float rest = static_cast<float>(static_cast<double>(l) - at->before);
        detail::PositionDirectionInSegment(at->c, rest, &p.position, &p.direction);
      } else {
        // Beyond the end, or no segment: the far end at parameter 0.
        p.position = TransformPoint(view, end->Getp());
        if (!steps.empty()) {
          p.direction = end->Getot();
          TransformDirection(view, p.direction);
        }
      }
    }
  };
  const std::size_t n = lengths.size();
  const std::size_t parts = impl_->GettersOnlyRead() ? detail::Shares(threads, n, 64) : 1;
  detail::OnThreads(parts, [&](std::size_t part) {
    answer(detail::ShareBegin(n, part, parts), detail::ShareBegin(n, part + 1, parts));
  });
  return out;
}

std::vector<Vector> Figure::Sample(int spline, int steps) {
  SegmentCP* first = impl_->At(PointId{spline, 0});
  if (steps < 1 || steps > 65535) Fail(PointId{spline, 0}, "steps must be 1 to 65535");
  impl_->Canonicalize();
  const std::vector<SegmentCP*>& points = impl_->splines[static_cast<std::size_t>(spline)].points;
  std::vector<Vector> out;
  detail::FDSteps fd;
  detail::InitFDSteps(static_cast<unsigned short>(steps), &fd);
  Column col{};
  for (auto c = points.rbegin(); c != points.rend(); ++c) {
    if ((*c)->next == nullptr) continue;
    Cubic cubic;
    detail::ViewCubic(*c, &cubic);
    detail::CubicPoly poly;
    detail::CubicToPoly(&poly, &cubic);
    detail::InitColumn(&col, &poly, &fd);
    for (int k = 0; k < steps; ++k) {
      out.push_back(col.p);
      detail::BumpFD(&col);
    }
  }
  out.push_back(out.empty() ? TransformPoint(impl_->view.viewMatrix, first->Getp()) : col.p);
  return out;
}

std::string Figure::SvgPath(int spline, Space space) {
  const std::vector<SegmentCP*>& points = impl_->SplineAt(spline).points;
  std::string path;
  auto put = [&](char command, std::initializer_list<Vector> at) {
    if (!path.empty()) path += ' ';
    path += command;
    for (const Vector& v : at) {
      for (float x : {v.x, v.y}) {
        char text[32];
        const auto end = std::to_chars(text, text + sizeof text, x).ptr;
        path += ' ';
        path.append(text, end);
      }
    }
  };
  const int n = static_cast<int>(points.size());
  for (int i = n - 1; i >= 0; --i) {
    if (points[static_cast<std::size_t>(i)]->next == nullptr) continue;
    const Bezier b = Segment(PointId{spline, i}, space);
    if (path.empty()) put('M', {b.p0});
    put('C', {b.h0, b.h1, b.p1});
  }
  if (path.empty()) put('M', {Position(PointId{spline, 0}, space)});
  if (impl_->splines[static_cast<std::size_t>(spline)].closed) path += " Z";
  return path;
}

std::vector<std::string> Figure::Validate() { return impl_->ValidateAll(); }

detail::RefreshPlanCounts detail::FigureAccess::RefreshPlan(const Figure& f) { return f.impl_->plan.Counts(); }
const detail::WholeRefresh& detail::FigureAccess::Plan(const Figure& f) { return f.impl_->plan; }

FigureDescription Figure::Describe() const {
  const Impl& m = *impl_;
  FigureDescription d;
  for (const Impl::Spline& s : m.splines) {
    SplineDesc sd;
    sd.closed = s.closed;
    sd.name = s.name;
    for (SegmentCP* c : s.points) {
      PointDesc p;
      if (!c->IsHook()) p.at = c->p;  // a hook's stays (0, 0, 0)
      p.smooth = c->IsSmooth() != 0;
      p.in = c->indelta;
      p.out = c->outdelta;
      p.hook = c->IsHook() != 0;
      if (p.hook) p.s = static_cast<HookSegmentCP*>(c)->s;
      sd.points.push_back(p);
    }
    d.splines.push_back(sd);
  }
  for (const Impl::Spline& s : m.splines) {
    for (SegmentCP* c : s.points) {
      if (c->IsHook() || c->stackPrev != nullptr) continue;
      std::vector<PointId> stack;
      for (SegmentCP* x : StackFrom(c)) {
        if (x->IsHook()) continue;
        stack.push_back(m.IdOf(x));
        for (SegmentCP* h : HookRun(x))
          d.hooks.push_back(HookDesc{m.IdOf(h), m.IdOf(x)});
      }
      if (stack.size() > 1) d.stacks.push_back(stack);
    }
  }
  for (const Impl::Spline& s : m.splines) {
    for (SegmentCP* c : s.points) {
      if (c->id >= m.cpData.size() || m.cpData[c->id] == nullptr) continue;
      for (MuscleEffect* e = m.cpData[c->id]->effects; e != nullptr; e = e->next) {
        const auto custom = m.customs.find(e);
        if (custom != m.customs.end()) d.muscleEffects.push_back(MuscleEffectDesc{m.IdOf(c), {}, custom->second});
        else d.muscleEffects.push_back(MuscleEffectDesc{m.IdOf(c), static_cast<OffsetEffect*>(e)->offset, nullptr});
      }
    }
  }
  d.view = m.view.viewMatrix;
  d.inverseView = m.view.inverseViewMatrix;
  d.screen = m.view.screenMatrix;
  d.inverseScreen = m.view.inverseScreenMatrix;
  d.muscleMode = m.muscle;
  return d;
}

SegmentCP* Figure::ControlPoint(PointId point) { return impl_->At(point); }

}  // namespace splinecore
