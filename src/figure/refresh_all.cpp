// SPDX-License-Identifier: MIT
#include "figure/refresh_all.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>

#include "controlpoint/walks.h"
#include "figure/shares.h"

namespace splinecore::detail {

namespace {

// Calls f(m) for every member of the stacks within two spline steps of s.
template <class F>
void NearStacks(SegmentCP* s, F f) {
  for (SegmentCP* x : {s, s->prev, s->next, s->prev != nullptr ? s->prev->prev : nullptr,
                       s->next != nullptr ? s->next->next : nullptr}) {
    if (x == nullptr) continue;
    for (SegmentCP* m : StackMembers(x)) f(m);
  }
}

// The points whose stacks within two steps c's getters may write: c and,
// for a hook, every member of its carrier's stack and of the stack at the
// carrier's next (its run and its partners, whose conversions read their
// own neighbours).
std::vector<SegmentCP*> Seeds(SegmentCP* c) {
  std::vector<SegmentCP*> seeds{c};
  if (SegmentCP* carrier = c->IsHook() ? FindCarrier(c) : nullptr) {
    for (SegmentCP* m : StackMembers(carrier)) seeds.push_back(m);
    if (carrier->next != nullptr)
      for (SegmentCP* m : StackMembers(carrier->next)) seeds.push_back(m);
  }
  return seeds;
}

}  // namespace

// Which points the getters must do: hooks, the points in stacks with
// muscle data, the points whose tangents read one of those (up to two
// steps along the spline), and in muscle mode the carriers (their turn
// places their runs). Outside muscle mode the points only hooks reach are
// computed directly once the getters have placed the hooks. The others'
// values depend only on model positions, their own deltas and the
// transforms, and asking for them changes no other point; they are split
// into `parts` consecutive shares.
void WholeRefresh::Make(const WholeFrame& frame, std::size_t parts) {
  const std::vector<SegmentCP*>& flat = frame.flat;
  const std::size_t ids = frame.idCount;
  std::vector<unsigned char> muscleStack(ids, 0);
  bool anyMuscleData = false;
  for (SegmentCP* c : flat)
    if (c->id < frame.cpData.size() && frame.cpData[c->id] != nullptr) {
      anyMuscleData = true;
      for (SegmentCP* m : StackMembers(c)) muscleStack[m->id] = true;
    }
  auto hook = [](const SegmentCP* x) { return x != nullptr && x->IsHook(); };
  auto muscleData = [&muscleStack](const SegmentCP* x) { return x != nullptr && muscleStack[x->id] != 0; };
  auto near = [](const SegmentCP* c, auto is) {
    return is(c) || is(c->prev) || is(c->next) || (c->prev != nullptr && is(c->prev->prev)) ||
           (c->next != nullptr && is(c->next->next));
  };
  *this = WholeRefresh{};
  lazyById_.assign(ids, 0);
  nearHookById_.resize(ids);  // read for the lazy points only
  for (std::size_t k = 0; k < flat.size(); ++k) {
    SegmentCP* c = flat[k];
    const bool muscleNear = near(c, muscleData) || (frame.muscle && c->IsHasHooks());
    if (muscleNear || near(c, hook)) {
      lazyById_[c->id] = true;
      nearHookById_[c->id] = !frame.muscle && !muscleNear && !c->IsHook();
      lazy_.emplace_back(frame.ids[k], c);
    } else {
      plain_.push_back(k);
    }
  }
  // The heads each plain point reads, by role (null: no such neighbour,
  // its slot is never read); the part of the first reader of each head,
  // and whether a later part reads it too.
  const std::size_t n = plain_.size();
  std::vector<std::array<SegmentCP*, 4>> reads(n);
  const std::size_t kUnread = parts;  // no part has this index
  std::vector<std::size_t> firstPart(ids, kUnread);
  std::vector<unsigned char> sharedById(ids, 0);
  for (std::size_t k = 0; k < n; ++k) {
    const std::size_t part = ShareOf(k, n, parts);
    SegmentCP* c = flat[plain_[k]];
    reads[k] = {c->head, c->prev, c->next, OpenEndSecond(c)};
    for (SegmentCP*& x : reads[k]) {
      if (x == nullptr) continue;
      x = x->head;
      if (firstPart[x->id] == kUnread) firstPart[x->id] = part;
      if (firstPart[x->id] != part) sharedById[x->id] = true;
    }
  }
  std::vector<std::uint32_t> slotById(ids);  // a head no point reads keeps 0
  auto take = [&](SegmentCP* h) {
    slotById[h->id] = static_cast<std::uint32_t>(heads_.size());
    heads_.push_back(h);
    firstPart[h->id] = kUnread;  // taken
  };
  for (const auto& r : reads)
    for (SegmentCP* h : r)
      if (h != nullptr && sharedById[h->id] != 0 && firstPart[h->id] != kUnread) take(h);
  shared_ = heads_.size();
  for (std::size_t k = 0; k < n; ++k) {
    for (SegmentCP* h : reads[k])
      if (h != nullptr && firstPart[h->id] != kUnread) take(h);
    headsUntil_.push_back(static_cast<std::uint32_t>(heads_.size()));
    auto slot = [&slotById](const SegmentCP* h) { return h != nullptr ? slotById[h->id] : 0u; };
    const auto& r = reads[k];
    slots_.push_back(PlainSlots{{slot(r[0]), slot(r[1]), slot(r[2]), slot(r[3])}});
  }
  screenAt_.resize(heads_.size());
  modelAt_.resize(heads_.size());
  MakeGroups(frame.hostEffects);
  runs_.assign(groups_.size(), {});
  if (!frame.muscle && !anyMuscleData)
    for (std::size_t g = 0; g < groups_.size(); ++g) runs_[g] = DirectRuns(groups_[g]);
  SplitRuns();
  Schedule(frame, parts);
  ListLines();
  muscle_ = frame.muscle;
  parts_ = parts;
}

void WholeRefresh::MakeGroups(bool hostEffects) {
  // Union-find over point ids (only the lazy points' are joined).
  const std::size_t ids = lazyById_.size();
  std::vector<std::size_t> root(ids);
  std::iota(root.begin(), root.end(), std::size_t{0});
  auto find = [&root](std::size_t k) {
    while (root[k] != k) k = root[k] = root[root[k]];
    return k;
  };
  for (const auto& member : lazy_) {
    SegmentCP* c = member.second;
    if (hostEffects) {
      root[find(c->id)] = find(lazy_.front().second->id);
      continue;
    }
    for (SegmentCP* s : Seeds(c))
      NearStacks(s, [&](SegmentCP* m) {
        if (lazyById_[m->id] != 0) root[find(m->id)] = find(c->id);
      });
  }
  std::vector<std::size_t> number(ids, ids);  // by root: its group
  for (const auto& member : lazy_) {
    SegmentCP* c = member.second;
    const std::size_t r = find(c->id);
    if (number[r] == ids) {
      number[r] = groups_.size();
      groups_.emplace_back();
      nearHooks_.emplace_back();
    }
    if (nearHookById_[c->id] != 0) {
      nearHooks_[number[r]].push_back(c);
    } else {
      groups_[number[r]].push_back(member);
    }
  }
}

// The carriers of the runs a group is made of, in figure order, when
// RefreshPlacedRun may compute each: every member is a hook whose spline
// neighbour is no hook (nor, then, its head), and what each run reads
// outside it are plain points (none: the group goes to the getters).
std::vector<SegmentCP*> WholeRefresh::DirectRuns(const OrderedPoints& group) const {
  auto plain = [this](const SegmentCP* x) { return lazyById_[x->id] == 0 && lazyById_[x->head->id] == 0; };
  std::vector<SegmentCP*> carriers;
  std::size_t hooks = 0;
  for (const auto& member : group) {
    SegmentCP* h = member.second;
    SegmentCP* neighbour = h->prev != nullptr ? h->prev : h->next;
    SegmentCP* carrier = h->IsHook() ? FindCarrier(h) : nullptr;
    if (carrier == nullptr || (neighbour != nullptr && neighbour->IsHook())) return {};
    if (std::find(carriers.begin(), carriers.end(), carrier) != carriers.end()) continue;
    if (!PlacedRunReady(carrier, plain)) return {};
    carriers.push_back(carrier);
    for (SegmentCP* k : HookRun(carrier)) {
      (void)k;
      ++hooks;
    }
  }
  if (hooks != group.size()) return {};
  return carriers;
}

// A group of runs computed directly splits into a group per run when each
// of its points near hooks reads hooks of one run at most (the runs then
// share no written state: a run writes its hooks and the screen positions
// of their spline neighbours), so that each runs once what it reads is
// computed instead of after the whole group's reads.
void WholeRefresh::SplitRuns() {
  std::vector<OrderedPoints> groups;
  std::vector<std::vector<SegmentCP*>> nearHooks, runs;
  std::vector<std::size_t> runById(lazyById_.size());
  for (std::size_t g = 0; g < groups_.size(); ++g) {
    const std::vector<SegmentCP*>& carriers = runs_[g];
    const std::size_t none = carriers.size();
    for (std::size_t r = 0; r < carriers.size(); ++r)
      for (SegmentCP* k : HookRun(carriers[r])) runById[k->id] = r;
    std::vector<std::size_t> runOf(nearHooks_[g].size());  // reading no hook: the first run's
    bool split = !carriers.empty();
    for (std::size_t i = 0; split && i < nearHooks_[g].size(); ++i) {
      SegmentCP* c = nearHooks_[g][i];
      std::size_t found = none;
      for (SegmentCP* x : {c->prev, c->next, OpenEndSecond(c)}) {
        if (x == nullptr || !x->IsHook()) continue;
        if (found != none && found != runById[x->id]) split = false;
        found = runById[x->id];
      }
      if (found != none) runOf[i] = found;
    }
    if (!split) {
      groups.push_back(std::move(groups_[g]));
      nearHooks.push_back(std::move(nearHooks_[g]));
      runs.push_back(carriers);
      continue;
    }
    const std::size_t first = groups.size();
    groups.resize(first + carriers.size());
    nearHooks.resize(first + carriers.size());
    for (SegmentCP* carrier : carriers) runs.push_back({carrier});
    for (const auto& member : groups_[g]) groups[first + runById[member.second->id]].push_back(member);
    for (std::size_t i = 0; i < runOf.size(); ++i) nearHooks[first + runOf[i]].push_back(nearHooks_[g][i]);
  }
  groups_ = std::move(groups);
  nearHooks_ = std::move(nearHooks);
  runs_ = std::move(runs);
}

// What a group's getters read beyond what they write: the stacks within two
// spline steps of those they may write (a conversion reads its neighbours'
// positions, an open end its second neighbour's).
void WholeRefresh::Schedule(const WholeFrame& frame, std::size_t parts) {
  constexpr std::size_t kNone = ~std::size_t{0};
  const std::size_t n = plain_.size();
  std::vector<std::size_t> plainById(frame.idCount, kNone);
  std::vector<std::size_t> partOf(n);
  for (std::size_t k = 0; k < n; ++k) {
    plainById[frame.flat[plain_[k]]->id] = k;
    partOf[k] = ShareOf(k, n, parts);
  }
  after_.assign(parts, {});
  std::vector<std::size_t> late;
  for (std::size_t g = 0; g < groups_.size(); ++g) {
    std::size_t last = kNone;
    std::size_t part = kNone;
    bool split = false;
    auto reads = [&](SegmentCP* member) {
      for (SegmentCP* s : Seeds(member))
        NearStacks(s, [&](SegmentCP* m) {
          NearStacks(m, [&](SegmentCP* read) {
            const std::size_t k = plainById[read->id];
            if (k == kNone) return;
            split = split || (part != kNone && partOf[k] != part);
            part = partOf[k];
            last = last == kNone ? k : std::max(last, k);
          });
        });
    };
    for (const auto& member : groups_[g]) reads(member.second);
    for (SegmentCP* member : nearHooks_[g]) reads(member);
    if (last != kNone && !split) {
      after_[part].emplace_back(last, g);
    } else {
      late.push_back(g);
    }
  }
  for (auto& a : after_)
    std::sort(a.begin(), a.end());  // by plain point; groups in their order
  // The late groups whole to each part, by their running point count.
  std::size_t total = 0;
  for (std::size_t g : late) total += groups_[g].size();
  late_.assign(parts, {});
  std::size_t counted = 0;
  for (std::size_t g : late) {
    late_[ShareOf(counted, total, parts)].push_back(g);
    counted += groups_[g].size();
  }
}

// The cache lines a group's getters read first: whole, its members, their
// seeds and those heads; of their spline neighbours, the lines holding the
// flags and the head (what a position getter checks).
void WholeRefresh::ListLines() {
  constexpr std::uintptr_t kLine = 64;
  linesFrom_.assign(1, 0);
  std::vector<const SegmentCP*> points;
  for (std::size_t g = 0; g < groups_.size(); ++g) {
    points.assign(nearHooks_[g].begin(), nearHooks_[g].end());
    for (const auto& member : groups_[g])
      for (SegmentCP* s : Seeds(member.second)) {
        points.push_back(s);
        points.push_back(s->head);
      }
    std::vector<std::uintptr_t> lines;
    for (const SegmentCP* c : points) {
      const auto from = reinterpret_cast<std::uintptr_t>(c);
      const std::size_t size = c->IsHook() ? sizeof(HookSegmentCP) : sizeof(SegmentCP);
      for (std::uintptr_t at = from / kLine * kLine; at < from + size; at += kLine) lines.push_back(at);
      for (const SegmentCP* x : {c->prev, c->next})
        if (x != nullptr)
          for (const void* at : {static_cast<const void*>(&x->flags), static_cast<const void*>(&x->head)})
            lines.push_back(reinterpret_cast<std::uintptr_t>(at) / kLine * kLine);
    }
    std::sort(lines.begin(), lines.end());
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    for (std::uintptr_t at : lines) lines_.push_back(reinterpret_cast<const void*>(at));
    linesFrom_.push_back(lines_.size());
  }
}

RefreshPlanCounts WholeRefresh::Counts() const {
  RefreshPlanCounts counts{plain_.size(), 0, 0, 0, 0, shared_};
  for (const auto& points : nearHooks_) counts.nearHooks += points.size();
  for (std::size_t g = 0; g < groups_.size(); ++g)
    if (!runs_[g].empty()) counts.runHooks += groups_[g].size();
  counts.lazy = lazy_.size() - counts.nearHooks - counts.runHooks;
  for (const auto& groups : late_)
    for (std::size_t g : groups) counts.late += groups_[g].size() + nearHooks_[g].size();
  return counts;
}

// The getters' bits in phases; within a phase each thread writes only the
// points of its own share. (1) The shared heads' positions are computed;
// (2) the plain points get their values (RefreshPlainPoint), each share in
// figure order computing its other heads' positions as it first needs them,
// and each group of points left to the getters goes through them right
// after the last plain point it reads; (3) the other groups go through the
// getters, whole groups to a thread, each in figure order, finding the
// others' values cached. A group's points near hooks are reset with it and
// computed directly after it, from the hooks' placed positions.
void WholeRefresh::Run(WholeFrame& frame, int threads) {
  const std::vector<SegmentCP*>& flat = frame.flat;
  const std::size_t parts = Shares(threads, flat.size(), 4096);
  if (parts_ != parts || muscle_ != frame.muscle) Make(frame, parts);
  const bool muscle = frame.muscle;
  const Matrix& screen = frame.view.screenMatrix;
  const Matrix& inverse = frame.view.inverseScreenMatrix;
  auto position = [&](std::size_t h) {
    modelAt_[h] = heads_[h]->p;
    screenAt_[h] = TransformPoint(screen, modelAt_[h]);
  };
  // A group's lines are fetched while the plain points or the groups before
  // it run, so that its getters find them in cache.
  constexpr std::size_t kAheadPlain = 16, kAheadGroups = 2;
  auto fetch = [this](std::size_t g) {
    for (std::size_t l = linesFrom_[g]; l < linesFrom_[g + 1]; ++l) __builtin_prefetch(lines_[l]);
  };
  auto group = [&](std::size_t g) {
    const std::vector<SegmentCP*>& nearHooks = nearHooks_[g];
    for (SegmentCP* c : nearHooks) ZeroDerived(c);
    if (!runs_[g].empty()) {
      for (SegmentCP* carrier : runs_[g]) RefreshPlacedRun(carrier);
    } else {
      frame.pass(groups_[g], lazyById_);
    }
    for (SegmentCP* c : nearHooks) {
      const SegmentCP* reads[4] = {c, c->prev, c->next, OpenEndSecond(c)};
      Vector screenAt[4], modelAt[4];
      for (int role = 0; role < 4; ++role) {
        if (reads[role] == nullptr) continue;  // a slot the rule never reads
        modelAt[role] = reads[role]->head->p;
        screenAt[role] = TransformPoint(screen, modelAt[role]);
      }
      RefreshPlainPoint(c, PlainSlots{{0, 1, 2, 3}}, screenAt, modelAt, screen, inverse, false);
    }
  };
  OnThreads(parts, [&](std::size_t part) {
    for (std::size_t h = ShareBegin(shared_, part, parts); h < ShareBegin(shared_, part + 1, parts); ++h) position(h);
  });
  OnThreads(parts, [&](std::size_t part) {
    const std::size_t start = ShareBegin(plain_.size(), part, parts);
    std::size_t h = start == 0 ? shared_ : headsUntil_[start - 1];
    auto after = after_[part].begin();
    auto ahead = after;
    for (std::size_t k = start; k < ShareBegin(plain_.size(), part + 1, parts); ++k) {
      for (; ahead != after_[part].end() && ahead->first <= k + kAheadPlain; ++ahead) fetch(ahead->second);
      for (; h < headsUntil_[k]; ++h) position(h);
      const std::size_t at = plain_[k];
      RefreshPlainPoint(flat[at], slots_[k], screenAt_.data(), modelAt_.data(), screen, inverse, muscle);
      if (muscle) {
        const PointId id = frame.ids[at];
        frame.musclePositions[static_cast<std::size_t>(id.spline)][static_cast<std::size_t>(id.index)] =
            modelAt_[slots_[k].head[0]];
      }
      for (; after != after_[part].end() && after->first == k; ++after)
        group(after->second);
    }
  });
  OnThreads(parts, [&](std::size_t part) {
    const std::vector<std::size_t>& groups = late_[part];
    for (std::size_t i = 0; i < groups.size() + kAheadGroups; ++i) {  // fetching kAheadGroups ahead
      if (i < groups.size()) fetch(groups[i]);
      if (i >= kAheadGroups) group(groups[i - kAheadGroups]);
    }
  });
}

}  // namespace splinecore::detail
