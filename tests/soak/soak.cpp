#include "soak.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <sstream>
#include <unordered_map>
#include <vector>

#include "controlpoint/position_cache.h"
#include "marrow/marrow.h"
#include "splinecore/splinecore.h"
#include "tangents/hook_partners.h"
#include "test_figure.h"

namespace splinecore::soak {
namespace {

using test::MakeMatrix;
using test::TestFigure;

// Flags that record derived state: a fresh figure starts with all of them clear.
constexpr std::uint32_t kDerivedFlags = cpflag::modelCaches | cpflag::screenCaches | cpflag::mpCached |
                                        cpflag::mitCached | cpflag::motCached | cpflag::converted |
                                        cpflag::mconverted | cpflag::muscleMoved;

// A host effect with fixed parameters: moves a position by `shift` and
// turns or scales deltas; `turn` applies to both sides.
class SoakEffect : public MuscleEffect {
 public:
  Vector shift{0, 0, 0};
  Delta turn{0, 0, 1};
  std::int16_t deltaFlags = 0;  // 0: deltas untouched; 1: turned; 5: turned and scaled

  std::int32_t ApplyToPosition(std::int32_t, SegmentCP*, Vector* position) override {
    if (shift == Vector(0, 0, 0)) return 0;
    *position += shift;
    return 1;
  }
  std::int16_t ApplyToInDelta(std::int32_t, SegmentCP*, Delta* delta) override { return Turn(delta); }
  std::int16_t ApplyToOutDelta(std::int32_t, SegmentCP*, Delta* delta) override { return Turn(delta); }

 private:
  std::int16_t Turn(Delta* delta) const {
    if (deltaFlags == 0) return 0;
    delta->pitch += turn.pitch;
    delta->yaw += turn.yaw;
    delta->magnitude *= turn.magnitude;
    return deltaFlags;
  }
};

class Rng {
 public:
  explicit Rng(std::uint64_t seed) : engine_(seed) {}
  std::uint32_t Below(std::uint32_t n) { return static_cast<std::uint32_t>(engine_() % n); }
  bool OneIn(std::uint32_t n) { return Below(n) == 0; }
  // A coordinate on a quarter grid in [-16, 16].
  float Coordinate() { return static_cast<float>(static_cast<int>(Below(129)) - 64) * 0.25f; }
  Vector Point() { return Vector(Coordinate(), Coordinate(), Coordinate()); }
  float Angle() { return static_cast<float>(static_cast<int>(Below(13)) - 6) * 7.5f; }
  float Magnitude() { return 0.5f * static_cast<float>(1 + Below(4)); }
  float HookS() {
    const float values[] = {0.25f, 0.5f, 0.75f, 0.3f, 0.6f, 0.9f, -0.0f, 0.625f};
    return values[Below(8)];
  }

 private:
  std::mt19937_64 engine_;
};

// A matrix of power-of-two scales (one axis pair maybe exchanged, signs
// maybe flipped) and a translation on the quarter grid, with its exact inverse.
void RandomTransform(Rng& rng, Matrix* m, Matrix* inverse) {
  *m = Matrix{};
  *inverse = Matrix{};
  const bool swap = rng.OneIn(3);
  for (int row = 0; row < 3; ++row) {
    const int col = swap && row < 2 ? 1 - row : row;
    const float scale = static_cast<float>(1 << rng.Below(4)) * (rng.OneIn(3) ? -0.5f : 0.5f);
    const float shift = rng.Coordinate();
    m->m[row][col] = scale;
    m->m[row][3] = shift;
    inverse->m[col][row] = 1.0f / scale;
    inverse->m[col][3] = -shift / scale;
  }
}

// A host's figure: the records of TestFigure plus the splines it holds.
struct Figure {
  TestFigure f;
  std::vector<SegmentCP*> firsts;
  ~Figure() {
    for (SegmentCP* first : firsts) DeleteAllCP(first);
  }
  // Every control point, spline by spline in walk order: the index space
  // in which query plans name control points.
  std::vector<SegmentCP*> Points() const {
    std::vector<SegmentCP*> all;
    for (SegmentCP* first : firsts) {
      for (SegmentCP* c = first; c != nullptr; c = c->IsLoopEnd() ? nullptr : c->next) all.push_back(c);
    }
    return all;
  }
  int SplineOf(const SegmentCP* cp) const {
    for (std::size_t i = 0; i < firsts.size(); ++i) {
      for (SegmentCP* c = firsts[i]; c != nullptr; c = c->IsLoopEnd() ? nullptr : c->next) {
        if (c == cp) return static_cast<int>(i);
      }
    }
    return -1;
  }
};

SegmentCP* Bottom(SegmentCP* c) {
  while (c->stackNext != nullptr) c = c->stackNext;
  return c;
}

// Hangs `below` (alone) at the bottom of c's stack.
void HangBelow(SegmentCP* c, SegmentCP* below) {
  SegmentCP* bottom = Bottom(c);
  below->p = c->head->p;
  bottom->stackNext = below;
  below->stackPrev = bottom;
  below->SetHead();
}

// Inserts `hook` directly below `above` (the carrier or the last hook of its run).
void InsertBelow(SegmentCP* above, SegmentCP* hook) {
  hook->stackNext = above->stackNext;
  if (hook->stackNext != nullptr) hook->stackNext->stackPrev = hook;
  hook->stackPrev = above;
  above->stackNext = hook;
  hook->SetHead();
}

SegmentCP* Link(Figure& x, const std::vector<SegmentCP*>& cps, bool closed) {
  for (std::size_t i = 0; i < cps.size(); ++i) {
    cps[i]->prev = i > 0 ? cps[i - 1] : nullptr;
    cps[i]->next = i + 1 < cps.size() ? cps[i + 1] : nullptr;
  }
  if (closed) {
    cps.back()->next = cps.front();
    cps.front()->prev = cps.back();
    cps.back()->OnLoopEnd();
  }
  x.firsts.push_back(cps.front());
  return cps.front();
}

void RandomDeltas(Rng& rng, SegmentCP* c) {
  c->indelta = c->outdelta = Delta{0, 0, 1};
  if (rng.OneIn(2)) c->indelta = Delta{rng.Angle(), rng.Angle(), rng.Magnitude()};
  if (rng.OneIn(2)) c->outdelta = Delta{rng.Angle(), rng.Angle(), rng.Magnitude()};
}

SegmentCP* NewPoint(Rng& rng, Figure& x) {
  SegmentCP* c = x.f.NewCP(rng.Point(), rng.OneIn(2) ? cpflag::smooth : 0u);
  RandomDeltas(rng, c);
  return c;
}

// Splines (some closed), stacks where they cross, hook runs of one to three
// hooks on their own small splines, a muscle table with effects, a view.
void Generate(Rng& rng, Figure& x) {
  RandomTransform(rng, &x.f.view.screenMatrix, &x.f.view.inverseScreenMatrix);
  RandomTransform(rng, &x.f.view.viewMatrix, &x.f.view.inverseViewMatrix);
  const int splines = 2 + static_cast<int>(rng.Below(3));
  std::vector<SegmentCP*> plain;  // non-hook points of the main splines
  for (int s = 0; s < splines; ++s) {
    const bool closed = rng.OneIn(3);
    std::vector<SegmentCP*> cps;
    for (int n = 3 + static_cast<int>(rng.Below(4)); n > 0; --n) cps.push_back(NewPoint(rng, x));
    Link(x, cps, closed);
    plain.insert(plain.end(), cps.begin(), cps.end());
  }
  auto lone = [](SegmentCP* c) { return c->stackPrev == nullptr && c->stackNext == nullptr; };
  for (int k = static_cast<int>(rng.Below(4)); k > 0; --k) {  // crossings
    SegmentCP* a = plain[rng.Below(static_cast<std::uint32_t>(plain.size()))];
    SegmentCP* b = plain[rng.Below(static_cast<std::uint32_t>(plain.size()))];
    if (x.SplineOf(a) != x.SplineOf(b) && lone(b) && Bottom(a)->stackNext == nullptr) HangBelow(a, b);
  }
  for (int k = static_cast<int>(rng.Below(3)); k > 0; --k) {  // hook runs
    SegmentCP* carrier = plain[rng.Below(static_cast<std::uint32_t>(plain.size()))];
    if (carrier->next == nullptr || carrier->IsHasHooks()) continue;
    if (rng.Below(4) != 0) {  // a spline crossing both ends of the segment gives the hooks partners
      SegmentCP* u = NewPoint(rng, x);
      SegmentCP* v = NewPoint(rng, x);
      Link(x, {u, v}, false);
      HangBelow(carrier, u);
      HangBelow(carrier->next, v);
    }
    SegmentCP* above = carrier;
    for (int n = 1 + static_cast<int>(rng.Below(3)); n > 0; --n) {
      HookSegmentCP* h = x.f.NewHook(rng.HookS(), rng.OneIn(2) ? cpflag::smooth : 0u);
      RandomDeltas(rng, h);
      std::vector<SegmentCP*> own;
      const int shape = static_cast<int>(rng.Below(3));  // hook first, last or in the middle
      if (shape != 0) own.push_back(NewPoint(rng, x));
      own.push_back(h);
      if (shape != 1) own.push_back(NewPoint(rng, x));
      Link(x, own, false);
      InsertBelow(above, h);
      above = h;
    }
  }
  x.f.AddMuscleTable(static_cast<std::uint16_t>(x.f.cache.nextId + 8));
  for (SegmentCP* c : x.Points()) {
    // Hole (e): a hook's muscle position caches its p, which MHookRange rewrites.
    if (!rng.OneIn(3) || c->IsHook()) continue;
    MuscleCPData* data = x.f.AddMuscleData(c);
    for (int n = static_cast<int>(rng.Below(3)); n > 0; --n) {
      SoakEffect* e = x.f.AddEffect<SoakEffect>(data);
      if (rng.OneIn(2)) e->shift = Vector(rng.Coordinate(), rng.Coordinate(), 0);
      const std::int16_t flags[] = {0, 1, 5};
      e->deltaFlags = flags[rng.Below(3)];
      e->turn = Delta{rng.Angle(), rng.Angle(), rng.Magnitude()};
    }
  }
  x.f.cache.generation = static_cast<std::uint8_t>(rng.Below(256));
  x.f.cache.screenGeneration = static_cast<std::uint8_t>(rng.Below(256));
  x.f.SetMuscleMode(rng.OneIn(3));
}

// A copy built afresh from what the host owns: positions, links, flags
// without the derived ones, deltas, hooks (parameter and piece points, as
// stored), muscle data (records and effects); no cache is warm.
std::unique_ptr<Figure> FreshCopy(Figure& live) {
  auto x = std::make_unique<Figure>();
  FigureCache& cache = x->f.cache;
  x->f.view = live.f.view;
  x->f.record.figureFlags = live.f.record.figureFlags;
  cache.generation = live.f.cache.generation;
  cache.screenGeneration = live.f.cache.screenGeneration;
  cache.mode = live.f.cache.mode;
  MuscleTable* from = live.f.cache.muscleTable;
  MuscleTable* to = x->f.AddMuscleTable(from->count);
  for (std::uint16_t id = 0; id < from->count; ++id) {
    const MuscleCPData* d = from->cpData[id];
    if (d == nullptr) continue;
    auto* copy = static_cast<MuscleCPData*>(AllocSeg(sizeof(MuscleCPData)));
    copy->indelta = d->indelta;
    copy->outdelta = d->outdelta;
    copy->position = d->position;
    to->cpData[id] = copy;
    for (const MuscleEffect* e = d->effects; e != nullptr; e = e->next) {
      const auto* from = static_cast<const SoakEffect*>(e);
      SoakEffect* effect = x->f.AddEffect<SoakEffect>(copy);
      effect->shift = from->shift;
      effect->turn = from->turn;
      effect->deltaFlags = from->deltaFlags;
    }
  }
  std::unordered_map<const SegmentCP*, SegmentCP*> map{{nullptr, nullptr}};
  const std::vector<SegmentCP*> points = live.Points();
  for (SegmentCP* c : points) {
    SegmentCP* n;
    if (c->IsHook()) {
      auto* hook = static_cast<HookSegmentCP*>(c);
      HookSegmentCP* h = x->f.NewHook(hook->s);
      for (Vector HookSegmentCP::*v : {&HookSegmentCP::hit, &HookSegmentCP::hot, &HookSegmentCP::pit,
                                       &HookSegmentCP::pot, &HookSegmentCP::mhit, &HookSegmentCP::mhot,
                                       &HookSegmentCP::mpit, &HookSegmentCP::mpot, &HookSegmentCP::tempv}) {
        h->*v = hook->*v;
      }
      n = h;
    } else {
      n = x->f.NewCP(c->p);
    }
    n->p = c->p;
    n->tag = c->tag;
    n->flags = c->flags & ~kDerivedFlags;
    n->indelta = c->indelta;
    n->outdelta = c->outdelta;
    n->id = c->id;
    map[c] = n;
  }
  for (SegmentCP* c : points) {
    SegmentCP* n = map.at(c);
    n->prev = map.at(c->prev);
    n->next = map.at(c->next);
    n->stackPrev = map.at(c->stackPrev);
    n->stackNext = map.at(c->stackNext);
    n->head = map.at(c->head);
  }
  for (SegmentCP* first : live.firsts) x->firsts.push_back(map.at(first));
  return x;
}

// --- Queries ------------------------------------------------------------------

enum QueryKind {
  kP, kScreenp, kIt, kOt, kScreenit, kScreenot, kMp, kMit, kMot, kMusclep, kNonmusclep,
  kHookPieces, kMuscleHookPieces, kCurveLength, kTotalLength, kAtLength, kQueryKinds
};
const char* const kQueryNames[] = {"Getp", "Getscreenp", "Getit", "Getot", "Getscreenit", "Getscreenot",
                                   "Getmp", "Getmit", "Getmot", "Getmusclep", "Getnonmusclep",
                                   "hook pieces", "muscle hook pieces", "CurveLength", "GetTotalLength",
                                   "PositionDirectionFromSubLength"};

constexpr std::uint32_t kMuscleQueries =
    1u << kP | 1u << kMp | 1u << kMit | 1u << kMot | 1u << kMusclep | 1u << kMuscleHookPieces;

struct Query {
  QueryKind kind;
  int index;     // into Figure::Points()
  float length;  // for kAtLength
};

struct Answers {
  std::vector<std::uint32_t> bits;
  std::vector<int> owner;  // the query each word belongs to
  void Add(float v, int query) {
    std::uint32_t b;
    std::memcpy(&b, &v, sizeof b);
    bits.push_back(b);
    owner.push_back(query);
  }
  void Add(const Vector& v, int query) {
    Add(v.x, query);
    Add(v.y, query);
    Add(v.z, query);
  }
};

std::vector<Query> PlanQueries(Rng& rng, const Figure& x, std::uint32_t queryMask) {
  const std::vector<SegmentCP*> points = x.Points();
  // Muscle mode asks the muscle family only, the other mode everything else:
  // the screen and the muscle placement both write a hook's p (see the host guide).
  queryMask &= (x.f.cache.mode & kMuscleMode) != 0 ? kMuscleQueries : ~kMuscleQueries;
  std::vector<Query> plan;
  for (int n = queryMask != 0 ? 4 + static_cast<int>(rng.Below(12)) : 0; n > 0; --n) {
    Query q{kP, static_cast<int>(rng.Below(static_cast<std::uint32_t>(points.size()))),
            static_cast<float>(rng.Below(40))};
    do {
      q.kind = static_cast<QueryKind>(rng.Below(kQueryKinds));
    } while ((queryMask >> q.kind & 1u) == 0);
    SegmentCP* c = points[static_cast<std::size_t>(q.index)];
    if (q.kind == kHookPieces && !c->IsHook()) q.kind = kScreenit;
    if (q.kind == kMuscleHookPieces && !c->IsHook()) q.kind = kMit;
    if (q.kind == kMusclep && (x.f.cache.mode & kMuscleMode) == 0) q.kind = kMp;
    plan.push_back(q);
  }
  return plan;
}

void Ask(Figure& x, const std::vector<Query>& plan, Answers& out) {
  const std::vector<SegmentCP*> points = x.Points();
  for (std::size_t i = 0; i < plan.size(); ++i) {
    const int qi = static_cast<int>(i);
    SegmentCP* c = points[static_cast<std::size_t>(plan[i].index)];
    auto* h = static_cast<HookSegmentCP*>(c);
    const bool lastOfRun = c->IsLastHook() || c->stackNext == nullptr;
    switch (plan[i].kind) {
      case kP: out.Add(c->Getp(), qi); break;
      case kScreenp: out.Add(c->Getscreenp(), qi); break;
      case kIt: out.Add(c->Getit(), qi); break;
      case kOt: out.Add(c->Getot(), qi); break;
      case kScreenit: out.Add(c->Getscreenit(), qi); break;
      case kScreenot: out.Add(c->Getscreenot(), qi); break;
      case kMp: out.Add(c->Getmp(), qi); break;
      case kMit: out.Add(c->Getmit(), qi); break;
      case kMot: out.Add(c->Getmot(), qi); break;
      case kMusclep: out.Add(c->Getmusclep(), qi); break;
      case kNonmusclep: out.Add(c->Getnonmusclep(), qi); break;
      case kHookPieces:
        out.Add(*h->Gethit(), qi);
        out.Add(*h->Gethot(), qi);
        if (lastOfRun) out.Add(*h->Getpit(), qi), out.Add(*h->Getpot(), qi);
        break;
      case kMuscleHookPieces:
        out.Add(c->Getmp(), qi);
        out.Add(*h->Getmhit(), qi);
        out.Add(*h->Getmhot(), qi);
        if (lastOfRun) out.Add(*h->Getmpit(), qi), out.Add(*h->Getmpot(), qi);
        break;
      case kCurveLength: out.Add(c->next != nullptr ? CurveLength(c) : 0.0f, qi); break;
      case kTotalLength: out.Add(GetTotalLength(c), qi); break;
      case kAtLength: {
        Vector position(0, 0, 0);
        Vector direction(0, 0, 0);
        out.Add(PositionDirectionFromSubLength(c, plan[i].length, &position, &direction), qi);
        out.Add(position, qi);
        out.Add(direction, qi);
        break;
      }
      case kQueryKinds: break;
    }
  }
}

// --- Edits and the invalidation protocol ------------------------------------------

GroupNode* MakeGroup(const std::vector<SegmentCP*>& cps) {
  GroupNode* group = nullptr;
  for (SegmentCP* c : cps) c->AddToGroup(&group, 1);
  return group;
}

void ReleaseGroup(GroupNode** group) {
  for (GroupNode* n = *group; n != nullptr; n = n->next) n->cp->OffGrouped();
  FreeGroup(group);
}

// Hole (c): a member's own p is what Getmusclep answers on its first call
// when the head's effects move nothing, so the host keeps it equal to the head's.
void ShareHeadPosition(SegmentCP* c) {
  if (c->IsHook()) return;
  for (SegmentCP* m = c->head; m != nullptr; m = m->stackNext) {
    if (!m->IsHook()) m->p = c->head->p;
  }
}

// The host's step after changing what the listed points' tangents depend
// on (position, deltas, smooth, a hook's parameter, a neighbour).
void Invalidate(const std::vector<SegmentCP*>& cps) {
  for (SegmentCP* c : cps) ShareHeadPosition(c);
  GroupNode* group = MakeGroup(cps);
  ConvertGroup(group, 0);
  ReleaseGroup(&group);
}

// Hole (d): a muscle conversion reads the muscle deltas as they stand, and
// refreshing them later clears `converted` but not `mconverted`. In muscle
// mode the host refreshes every point's muscle state (Getp) before it asks
// for muscle handles.
// Hole (h): Getmusclep refreshes c's muscle deltas only when the head's
// muscle position is stale, so once one member of a stack was asked, the
// others keep theirs. Clearing c's and its head's muscle caches before each
// Getp refreshes every point's deltas.
void RefreshMuscleState(Figure& x) {
  if ((x.f.cache.mode & kMuscleMode) == 0) return;
  for (SegmentCP* c : x.Points()) {
    c->OffCacheditot();
    c->head->OffCacheditot();
    c->Getp();
  }
}

// Hole (a): TouchHookRun touches one side of each hook only, so a hook
// touched through its carrier leaves its other spline neighbours stale.
// Hole (g): a hook's tangent comes from its partners' handles, which depend
// on points up to two steps along the partners' splines; an edit there
// touches the partner but not the hook. The host touches, until nothing new
// comes up, every hook that is unconverted or has an unconverted partner.
bool PartnerUnconverted(SegmentCP* hook) {
  SegmentCP* carrier = FindCarrier(hook);
  if (carrier == nullptr || carrier->next == nullptr) return false;
  for (SegmentCP* partner : {FirstHookPartner(hook, carrier), SecondHookPartnerForGetters(carrier),
                             SecondHookPartnerForConvert(carrier)}) {
    if (partner != nullptr && !partner->IsConverted()) return true;
  }
  return false;
}

void TouchAroundTouchedHooks(Figure& x) {
  std::vector<SegmentCP*> done;
  for (;;) {
    std::vector<SegmentCP*> hooks;
    for (SegmentCP* c : x.Points()) {
      if (!c->IsHook() || std::find(done.begin(), done.end(), c) != done.end()) continue;
      if (!c->IsConverted() || PartnerUnconverted(c)) hooks.push_back(c);
    }
    if (hooks.empty()) return;
    GroupNode* group = MakeGroup(hooks);
    ConvertGroup(group, 0);
    ReleaseGroup(&group);
    done.insert(done.end(), hooks.begin(), hooks.end());
  }
}

// Hole (j): a hook whose partner for the getters is a hook can be that
// hook's partner in turn (a carrier whose stackPrev is a hook of another
// run, stacked above that run's carrier's next). A getter on one hook
// converts the other, whose conversion re-enters the first hook's getter and
// receives its tangent and screen handle members as they stand: the answer
// depends on what earlier queries left there and on which hook was asked
// first. Before each batch of queries the host touches the hooks of every
// such cycle and zeroes those members, as a fresh figure has them.
std::vector<SegmentCP*> PartnersThatAreHooks(SegmentCP* hook) {
  std::vector<SegmentCP*> hooks;
  SegmentCP* carrier = FindCarrier(hook);
  if (carrier == nullptr || carrier->next == nullptr) return hooks;
  for (SegmentCP* partner : {FirstHookPartner(hook, carrier), SecondHookPartnerForGetters(carrier)}) {
    if (partner != nullptr && partner->IsHook()) hooks.push_back(partner);
  }
  return hooks;
}

bool OnPartnerCycle(SegmentCP* hook) {
  std::vector<SegmentCP*> seen;
  std::vector<SegmentCP*> todo = PartnersThatAreHooks(hook);
  while (!todo.empty()) {
    SegmentCP* h = todo.back();
    todo.pop_back();
    if (h == hook) return true;
    if (std::find(seen.begin(), seen.end(), h) != seen.end()) continue;
    seen.push_back(h);
    for (SegmentCP* next : PartnersThatAreHooks(h)) todo.push_back(next);
  }
  return false;
}

// True when it reset a cycle (and so touched the hooks' neighbours).
bool ResetPartnerCycles(Figure& x) {
  std::vector<SegmentCP*> hooks;
  for (SegmentCP* c : x.Points()) {
    if (c->IsHook() && OnPartnerCycle(c)) hooks.push_back(c);
  }
  if (hooks.empty()) return false;
  GroupNode* group = MakeGroup(hooks);
  ConvertGroup(group, 0);
  ReleaseGroup(&group);
  for (SegmentCP* h : hooks) {
    h->it = h->ot = h->screenit = h->screenot = h->mit = h->mot = Vector(0, 0, 0);
  }
  return true;
}

// Hole (i): Touch moves a stamp one down, which undoes nothing when the
// stamp already differs from its counter: touches and counter advances
// between two queries of a point can bring its stamp back onto the counter,
// and the cache flags it kept (a hook's screenpCached set by a run-mate's
// placement, for one) count as current again. After each edit the host does
// what the generation checks would do at the next query: every point whose
// stamp differs from its counter drops its caches of that kind and takes the
// counter, so the next edit's touches start from a matching stamp.
void SyncStamps(Figure& x) {
  const FigureCache& cache = x.f.cache;
  for (SegmentCP* c : x.Points()) {
    if (c->stamp != cache.generation) {
      c->OffCachedpitot();
      c->stamp = cache.generation;
    }
    if (c->screenStamp != cache.screenGeneration) {
      c->OffCachedscreenpitot();
      c->screenStamp = cache.screenGeneration;
    }
  }
}

void TouchAll(Figure& x) {
  for (SegmentCP* c : x.Points()) c->Touch(0);
}

class Soaker {
 public:
  Soaker(const SoakOptions& options, SoakResult& result)
      : options_(options), seed_(options.seed), rng_(options.seed), result_(result) {}

  void Run() {
    while (result_.edits < options_.edits) {
      figure_ = std::make_unique<Figure>();
      Generate(rng_, *figure_);
      ++result_.figures;
      log_.str("");
      log_ << "figure " << result_.figures << " of seed " << seed_ << ":";
      Validate();
      SyncStamps(*figure_);
      RefreshMuscleState(*figure_);
      const long failuresBefore = result_.mismatches + result_.findings;
      // A figure is left at its first failure: what follows adds nothing.
      for (editsInFigure_ = 0; editsInFigure_ < options_.editsPerFigure && result_.edits < options_.edits &&
                               result_.mismatches + result_.findings == failuresBefore;) {
        ++result_.edits;
        ++editsInFigure_;
        if (Edit()) Validate();
        TouchAroundTouchedHooks(*figure_);
        if (ResetPartnerCycles(*figure_)) TouchAroundTouchedHooks(*figure_);
        SyncStamps(*figure_);
        RefreshMuscleState(*figure_);
        Compare();
      }
      figure_.reset();
    }
  }

 private:
  SoakOptions options_;
  std::uint64_t seed_;
  long editsInFigure_ = 0;
  Rng rng_;
  SoakResult& result_;
  std::unique_ptr<Figure> figure_;
  std::ostringstream log_;

  SegmentCP* Pick() {
    const std::vector<SegmentCP*> points = figure_->Points();
    return points[rng_.Below(static_cast<std::uint32_t>(points.size()))];
  }
  SegmentCP* PickPlain() {
    for (;;) {
      SegmentCP* c = Pick();
      if (!c->IsHook()) return c;
    }
  }
  std::vector<SegmentCP*> PickSome() {
    std::vector<SegmentCP*> cps;
    for (int n = 1 + static_cast<int>(rng_.Below(3)); n > 0; --n) cps.push_back(Pick());
    return cps;
  }
  int IndexOf(const SegmentCP* c) const {
    const std::vector<SegmentCP*> points = figure_->Points();
    for (std::size_t i = 0; i < points.size(); ++i) {
      if (points[i] == c) return static_cast<int>(i);
    }
    return -1;
  }
  void Log(const std::string& what, const std::vector<SegmentCP*>& cps = {}) {
    log_ << " " << what;
    for (SegmentCP* c : cps) log_ << " #" << IndexOf(c);
    log_ << ";";
  }

  // One random edit followed by the protocol; true when it changed the structure.
  bool Edit() {
    Figure& x = *figure_;
    FigureCache& cache = x.f.cache;
    static const int kKinds[16] = {0, 0, 1, 1, 2, 2, 3, 4, 5, 6, 7, 8, 8, 9, 10, 11};
    int kind;
    do {
      kind = kKinds[rng_.Below(16)];
    } while ((options_.editMask >> kind & 1u) == 0);
    switch (kind) {
      case 0: {  // the host moves a stack by writing its head's position
        SegmentCP* c = PickPlain()->head;
        Log("move", {c});
        c->p += Vector(rng_.Coordinate(), rng_.Coordinate(), rng_.Coordinate());
        Invalidate({c});
        return false;
      }
      case 1: {
        std::vector<SegmentCP*> cps = PickSome();
        Log("MoveGroup", cps);
        GroupNode* group = MakeGroup(cps);
        MoveGroup(group, Vector(rng_.Coordinate(), rng_.Coordinate(), rng_.Coordinate()));
        for (SegmentCP* c : cps) ShareHeadPosition(c);
        ConvertGroup(group, 0);
        ReleaseGroup(&group);
        return false;
      }
      case 2: {
        std::vector<SegmentCP*> cps = PickSome();
        const bool smooth = rng_.OneIn(2);
        Log(smooth ? "SmoothGroup" : "PeakGroup", cps);
        GroupNode* group = MakeGroup(cps);
        smooth ? SmoothGroup(group) : PeakGroup(group);
        ConvertGroup(group, 0);
        ReleaseGroup(&group);
        return false;
      }
      case 3: {
        std::vector<SegmentCP*> cps = PickSome();
        const std::int32_t mode = static_cast<std::int32_t>(rng_.Below(4));
        Log("ConvertGroup mode " + std::to_string(mode), cps);
        GroupNode* group = MakeGroup(cps);
        ConvertGroup(group, mode);
        ReleaseGroup(&group);
        return false;
      }
      case 4: {
        SegmentCP* c = Pick();
        Log("Touch", {c});
        c->Touch(static_cast<std::int32_t>(rng_.Below(4)));
        return false;
      }
      case 5:
        if (rng_.OneIn(2)) {
          Log("generation++");
          ++cache.generation;
        } else {
          Log("screenGeneration++");
          ++cache.screenGeneration;
        }
        return false;
      case 6: {
        const bool screen = rng_.OneIn(2);
        Log(screen ? "new screen matrix" : "new view matrix");
        if (screen) {
          RandomTransform(rng_, &x.f.view.screenMatrix, &x.f.view.inverseScreenMatrix);
          ++cache.screenGeneration;
          TouchAll(x);
        } else {
          RandomTransform(rng_, &x.f.view.viewMatrix, &x.f.view.inverseViewMatrix);
        }
        return false;
      }
      case 7: {  // group a slice, invalidate it, ungroup it
        Slice* slices = Slices();
        GroupNode* group = nullptr;
        SegmentCP* c = Pick();
        Log("GroupSlice+ConvertGroup", {c});
        GroupSlice(slices, c, &group);
        ConvertGroup(group, 0);
        ReleaseGroup(&group);
        FreeSlices(&slices);
        return false;
      }
      case 8: {
        const std::size_t s = rng_.Below(static_cast<std::uint32_t>(x.firsts.size()));
        Log("ReverseSlice", {x.firsts[s]});
        Slice* slices = Slices();
        Slice* slice = slices;
        for (std::size_t i = 0; i < s; ++i) slice = slice->next;
        ReverseSlice(slice);
        x.firsts[s] = slice->first;
        GroupNode* group = nullptr;  // hole (b): the hooks handed over are not touched
        GroupSlice(slices, slice->first, &group);
        ConvertGroup(group, 0);
        ReleaseGroup(&group);
        FreeSlices(&slices);
        return true;
      }
      case 9: return Delete();
      case 10: {
        SegmentCP* c = Pick();
        if (!c->IsHook()) return false;
        const float s = rng_.HookS();
        Log("SetS " + std::to_string(s), {c});
        static_cast<HookSegmentCP*>(c)->SetS(s);
        Invalidate({c});
        return false;
      }
      default:
        Log("muscle mode toggled");
        cache.mode ^= kMuscleMode;
        ++cache.generation;
        ++cache.screenGeneration;
        TouchAll(x);
        return false;
    }
  }

  // Deletes a point whose loss leaves a valid figure: the spline keeps
  // three points, the point carries no hooks, and no carrier loses its next.
  bool Delete() {
    Figure& x = *figure_;
    SegmentCP* c = Pick();
    const int s = x.SplineOf(c);
    int length = 0;
    for (SegmentCP* k = x.firsts[static_cast<std::size_t>(s)]; k != nullptr; k = k->IsLoopEnd() ? nullptr : k->next) ++length;
    if (length <= 3 || c->IsHasHooks() || c->IsHook()) return false;
    if (c->next == nullptr && c->prev != nullptr && c->prev->IsHasHooks()) return false;
    Log("DeleteCP", {c});
    SegmentCP* prev = c->prev;
    SegmentCP* next = c->next;
    Invalidate({c});
    DeleteCP(&x.firsts[static_cast<std::size_t>(s)], c);
    std::vector<SegmentCP*> neighbours;
    if (prev != nullptr) neighbours.push_back(prev);
    if (next != nullptr) neighbours.push_back(next);
    Invalidate(neighbours);
    return true;
  }

  Slice* Slices() {
    Slice* list = nullptr;
    for (SegmentCP* first : figure_->firsts) AddSlice(&list)->first = first;
    return list;
  }
  static void FreeSlices(Slice** list) {
    while (*list != nullptr) DeleteSlice(list, *list);
  }

  void Validate() {
    struct Context {
      Soaker* self;
      int count;
    } context{this, 0};
    const int found = ValidateFigure(figure_->firsts.data(), static_cast<int>(figure_->firsts.size()),
                                     [](const FigureViolation& v, void* p) {
                                       auto* ctx = static_cast<Context*>(p);
                                       if (ctx->count++ == 0) {
                                         ctx->self->Fail(std::string("validator: ") + FigureRuleName(v.rule) +
                                                         " at #" + std::to_string(ctx->self->IndexOf(v.cp)) +
                                                         ": " + v.message);
                                       }
                                     },
                                     &context);
    result_.findings += found;
  }

  void Compare() {
    const std::vector<Query> plan = PlanQueries(rng_, *figure_, options_.queryMask);
    std::unique_ptr<Figure> fresh = FreshCopy(*figure_);
    Answers live;
    Answers expected;
    Ask(*figure_, plan, live);
    Ask(*fresh, plan, expected);
    for (std::size_t i = 0; i < live.bits.size(); ++i) {
      if (live.bits[i] == expected.bits[i]) continue;
      ++result_.mismatches;
      const Query& q = plan[static_cast<std::size_t>(live.owner[i])];
      std::ostringstream what;
      what << "mismatch: query " << live.owner[i] << " of " << plan.size() << " (" << kQueryNames[q.kind]
           << " on #" << q.index << "), word " << i << ": live " << std::hex << live.bits[i] << " fresh "
           << expected.bits[i];
      what << std::dec << "; queries:";
      for (const Query& p : plan) what << " " << kQueryNames[p.kind] << " #" << p.index;
      Fail(what.str());
      return;
    }
  }

  void Fail(const std::string& what) {
    const std::string text = "seed " + std::to_string(seed_) + ", edit " + std::to_string(result_.edits) + ": " +
                             what + "\n  edit log: " + log_.str() + "\n";
    if (result_.shortestEdits == 0 || editsInFigure_ < result_.shortestEdits) {
      result_.shortestEdits = editsInFigure_;
      result_.shortest = text;
    }
    if (result_.report.size() < 8000) result_.report += text;
  }
};

}  // namespace

SoakResult RunSoak(const SoakOptions& options) {
  SoakResult result;
  Soaker(options, result).Run();
  return result;
}

std::string SoakSummary(const SoakResult& result, std::uint64_t seed) {
  std::ostringstream out;
  out << "soak: " << result.edits << " edits, " << result.figures << " figures, " << result.mismatches
      << " mismatches, seed " << seed;
  return out.str();
}

}  // namespace splinecore::soak
