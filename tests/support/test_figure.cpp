#include "test_figure.h"

#include <algorithm>

#include "marrow/marrow.h"

namespace splinecore::test {

Matrix IdentityMatrix() {
  return MakeMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0});
}

Matrix MakeMatrix(std::initializer_list<float> rows) {
  Matrix m{};
  int i = 0;
  for (float v : rows) {
    if (i < 12) m.m[i / 4][i % 4] = v;
    ++i;
  }
  return m;
}

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
  for (auto& owned : tables_) {
    for (MuscleCPData*& data : owned->cpData) {
      if (data == nullptr) continue;
      for (MuscleEffect* e = data->effects; e != nullptr;) {
        MuscleEffect* next = e->next;
        FreeSeg(e);
        e = next;
      }
      FreeSeg(data);
      data = nullptr;
    }
  }
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

SegmentCP* TestFigure::Open(std::initializer_list<SegmentCP*> cps) {
  SegmentCP* before = nullptr;
  for (SegmentCP* cp : cps) {
    cp->prev = before;
    cp->next = nullptr;
    if (before != nullptr) before->next = cp;
    before = cp;
  }
  SegmentCP* first = *cps.begin();
  splines_.push_back(first);
  return first;
}

SegmentCP* TestFigure::Closed(std::initializer_list<SegmentCP*> cps) {
  SegmentCP* first = Open(cps);
  SegmentCP* last = *(cps.end() - 1);
  last->next = first;
  first->prev = last;
  last->OnLoopEnd();
  return first;
}

void TestFigure::Stack(std::initializer_list<SegmentCP*> cps) {
  SegmentCP* above = nullptr;
  for (SegmentCP* cp : cps) {
    cp->stackPrev = above;
    cp->stackNext = nullptr;
    if (above != nullptr) above->stackNext = cp;
    above = cp;
  }
  (*cps.begin())->SetHead();
}

void TestFigure::Unregister(SegmentCP* first) {
  splines_.erase(std::remove(splines_.begin(), splines_.end(), first), splines_.end());
}

void TestFigure::Register(SegmentCP* first) { splines_.push_back(first); }

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
