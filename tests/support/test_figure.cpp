#include "test_figure.h"

#include <algorithm>

#include "marrow/marrow.h"

namespace splinecore::test {

struct TestFigure::OwnedTable {
  MuscleTable table{};
  MuscleTableLink link{};
  std::vector<MuscleCPData*> cpData;
  std::vector<Vector> prevp;
};

TestFigure::TestFigure() {
  cache.view = &view;
  cache.figure = &record;
  SetScreen(IdentityMatrix(), IdentityMatrix());
  SetView(IdentityMatrix(), IdentityMatrix());
}

TestFigure::~TestFigure() {
  for (SegmentCP* first : splines_) DeleteAllCP(first);
  FreeGroup(&cache.groupList);
  FreeGroup(&cache.skinGroupList);
}

SegmentCP* TestFigure::NewCP(Vector p, std::uint32_t flags) {
  SegmentCP* cp = new SegmentCP(&cache);
  cp->cache = &cache;
  cp->p = p;
  cp->head = cp;
  cp->flags = flags;
  return cp;
}

HookSegmentCP* TestFigure::NewHook(float s, std::uint32_t flags) {
  HookSegmentCP* h = new HookSegmentCP(&cache);
  h->cache = &cache;
  h->head = h;
  h->flags = flags | cpflag::hook;
  h->s = s;
  return h;
}

SegmentCP* Link(const std::vector<SegmentCP*>& cps, bool closed) {
  const std::size_t n = cps.size();
  for (std::size_t i = 0; i < n; ++i) {
    cps[i]->prev = i > 0 ? cps[i - 1] : closed ? cps[n - 1] : nullptr;
    cps[i]->next = i + 1 < n ? cps[i + 1] : closed ? cps[0] : nullptr;
  }
  if (closed) cps[n - 1]->OnLoopEnd();
  return cps[0];
}

void TestFigure::Stack(const std::vector<SegmentCP*>& cps) {
  for (std::size_t k = 0; k < cps.size(); ++k) {
    cps[k]->stackPrev = k > 0 ? cps[k - 1] : nullptr;
    cps[k]->stackNext = k + 1 < cps.size() ? cps[k + 1] : nullptr;
  }
  cps.front()->SetHead();
}

void TestFigure::Unregister(SegmentCP* first) {
  splines_.erase(std::remove(splines_.begin(), splines_.end(), first), splines_.end());
}

MuscleTable* TestFigure::AddMuscleTable(std::uint16_t count) {
  auto owned = std::make_unique<OwnedTable>();
  owned->cpData.assign(count, nullptr);
  owned->prevp.assign(count, Vector(0, 0, 0));
  owned->table.cpData = owned->cpData.data();
  owned->table.prevp = owned->prevp.data();
  owned->table.count = count;
  owned->link.table = &owned->table;
  owned->link.next = record.muscleTables;
  record.muscleTables = &owned->link;
  cache.muscleTable = &owned->table;
  tables_.push_back(std::move(owned));
  return cache.muscleTable;
}

MuscleCPData* TestFigure::AddMuscleData(SegmentCP* cp) {
  auto* data = static_cast<MuscleCPData*>(AllocSeg(sizeof(MuscleCPData)));
  cache.muscleTable->cpData[cp->id] = data;
  return data;
}

void TestFigure::SetScreen(const Matrix& m, const Matrix& inverse) {
  view.screenMatrix = m;
  view.inverseScreenMatrix = inverse;
}

void TestFigure::SetView(const Matrix& m, const Matrix& inverse) {
  view.viewMatrix = m;
  view.inverseViewMatrix = inverse;
}

}  // namespace splinecore::test
