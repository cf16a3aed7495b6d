// SPDX-License-Identifier: MIT
// The control-point record: construction, copying, destruction, memory, and
// the small queries on muscle data, the figure's In flag and the skin flags.
#include "splinecore/segment_cp.h"

#include "marrow/marrow.h"
#include "splinecore/groups.h"

namespace splinecore {

SegmentCP::SegmentCP() {
  cache = nullptr;
  stamp = 255;  // the first validation normally finds a generation mismatch
}

SegmentCP::SegmentCP(FigureCache* figureCache) : SegmentCP() {
  id = figureCache->nextId;
  figureCache->nextId = id + 1;
}

SegmentCP::SegmentCP(const SegmentCP& other) = default;
SegmentCP& SegmentCP::operator=(const SegmentCP& other) = default;

namespace {

// Releases the muscle record at `id` of `table` with its effect list.
void ReleaseMuscleData(MuscleTable* table, std::uint32_t id) {
  if (table == nullptr || table->cpData == nullptr || id >= table->count) return;
  MuscleCPData* data = table->cpData[id];
  if (data == nullptr) return;
  for (MuscleEffect* effect = data->effects; effect != nullptr;) {
    MuscleEffect* next = effect->next;
    FreeSeg(effect);
    effect = next;
  }
  FreeSeg(data);
  table->cpData[id] = nullptr;
}

}  // namespace

SegmentCP::~SegmentCP() {
  if (cache == nullptr) return;
  DeleteFromGroup(IsSkin() ? &cache->skinGroupList : &cache->groupList);
  if (cache->figure == nullptr) return;
  for (MuscleTableLink* link = cache->figure->muscleTables; link != nullptr; link = link->next)
    ReleaseMuscleData(link->table, id);
}

void* SegmentCP::operator new(std::size_t size) { return AllocSeg(size); }
void SegmentCP::operator delete(void* block) { FreeSeg(block); }

MuscleCPData* SegmentCP::GetMuscleCPData() {
  const MuscleTable* table = cache->muscleTable;
  if (table == nullptr || table->cpData == nullptr || id >= table->count) return nullptr;
  return table->cpData[id];
}

int SegmentCP::IsMuscle() { return GetMuscleCPData() != nullptr; }

Delta& SegmentCP::Getindelta() {
  if (cache->mode & kMuscleMode)
    if (MuscleCPData* data = GetMuscleCPData()) return data->indelta;
  return indelta;
}

Delta& SegmentCP::Getoutdelta() {
  if (cache->mode & kMuscleMode)
    if (MuscleCPData* data = GetMuscleCPData()) return data->outdelta;
  return outdelta;
}

int SegmentCP::IsIn() { return (cache->figure->figureFlags & 1u) != 0; }
void SegmentCP::OnIn() { cache->figure->figureFlags |= 1u; }
void SegmentCP::OffIn() { cache->figure->figureFlags &= ~1u; }
void SegmentCP::SetIn(int on) {
  if (on & 1)
    OnIn();
  else
    OffIn();
}

int SegmentCP::IsSkin() { return IsSkinA() || IsSkinB(); }
void SegmentCP::OffSkin() { flags &= ~(cpflag::skinA | cpflag::skinB); }

}  // namespace splinecore
