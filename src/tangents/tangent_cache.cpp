// Lazily computed tangents and handle points: model (Getit/Getot), screen
// (Getscreenit/Getscreenot) and muscle mode (Getmit/Getmot).
#include "controlpoint/position_cache.h"
#include "tangents/hook_partners.h"

namespace splinecore {

namespace {

// The floats nearest to -1/3 and 1/3: a handle point lies a third of the
// tangent before (in side) or after (out side) the position.
constexpr float kInThird = -0.3333333432674408f;
constexpr float kOutThird = 0.3333333432674408f;

// A partner of a hook: refresh the positions around it, then convert it
// when its conversion is stale.
void RefreshPartner(SegmentCP* x) {
  if (x->next != nullptr) x->next->Getp();
  if (x->prev != nullptr) x->prev->Getp();
  if (!x->IsConverted()) {
    x->OnConverted();
    x->Convert();
  }
}

// Brings c's model tangents up to date once its member flag was found clear:
// the neighbours' positions, a hook's partners, then the conversion. Returns
// false for a hook without both partners (or without a carrier with a next);
// c is not converted then.
bool ValidateTangents(SegmentCP* c) {
  if (c->next != nullptr) c->next->Getp();
  if (c->prev != nullptr) c->prev->Getp();
  if (c->IsHook()) {
    SegmentCP* carrier = FindCarrier(c);
    if (carrier == nullptr || carrier->next == nullptr) return false;
    SegmentCP* first = FirstHookPartner(c, carrier);
    if (first == nullptr) return false;
    RefreshPartner(first);
    SegmentCP* second = SecondHookPartnerForGetters(carrier);
    if (second == nullptr) return false;
    RefreshPartner(second);
  }
  if (!c->IsConverted()) {
    c->OnConverted();
    c->Convert();
  }
  return true;
}

// Getit/Getot after the generation check: validate the member or zero it.
Vector& ModelTangent(SegmentCP* c, Vector& member, std::uint32_t cachedFlag) {
  if ((c->flags & cachedFlag) != 0) return member;
  c->flags |= cachedFlag;
  if (!ValidateTangents(c)) member = Vector(0.0f, 0.0f, 0.0f);
  return member;
}

// The screen image of the head position plus tangent * third.
Vector& ScreenHandle(SegmentCP* c, Vector& handle, std::uint32_t handleFlag, Vector& tangent,
                     std::uint32_t tangentFlag, float third) {
  CheckScreenGeneration(c);
  if ((c->flags & handleFlag) != 0) return handle;
  c->flags |= handleFlag;
  CheckModelGeneration(c);
  ModelTangent(c, tangent, tangentFlag);
  handle = tangent * third;
  handle += c->head->Getp();
  handle = TransformPoint(c->cache->view->screenMatrix, handle);
  return handle;
}

void RefreshMusclePartner(SegmentCP* x) {
  if (x->next != nullptr) RefreshMuscleHookRun(x->next);
  if (x->prev != nullptr) RefreshMuscleHookRun(x->prev);
  if (!x->IsMconverted()) {
    x->OnMconverted();
    x->MConvert();
  }
}

// The muscle twin of ValidateTangents up to the conversion: false for a hook
// without both partners (or without a carrier with a next).
bool PrepareMuscleTangents(SegmentCP* c) {
  if (c->next != nullptr) RefreshMuscleHookRun(c->next);
  if (c->prev != nullptr) RefreshMuscleHookRun(c->prev);
  if (!c->IsHook()) return true;
  SegmentCP* carrier = FindCarrier(c);
  if (carrier == nullptr || carrier->next == nullptr) return false;
  SegmentCP* first = FirstHookPartner(c, carrier);
  if (first == nullptr) return false;
  RefreshMusclePartner(first);
  SegmentCP* second = SecondHookPartnerForGetters(carrier);
  if (second == nullptr) return false;
  RefreshMusclePartner(second);
  return true;
}

// Converts c and turns both fresh tangents into handle points. Both handle
// flags are set before MConvert (so re-entry gets the members in place) and
// again afterwards: re-placing c's own hook run while MConvert asks for c's
// position clears them, yet the members now hold handle points for the
// tangents just written.
void MuscleHandles(SegmentCP* c) {
  const std::uint32_t handleFlags = cpflag::mitCached | cpflag::motCached;
  c->OnMconverted();
  c->flags |= handleFlags;
  c->MConvert();
  Vector in = c->mit * kInThird;
  Vector out = c->mot * kOutThird;
  in += c->head->Getmp();
  out += c->head->Getmp();
  c->mit = in;
  c->mot = out;
  c->flags |= handleFlags;
}

Vector& MuscleHandle(SegmentCP* c, Vector& member, std::uint32_t cachedFlag) {
  if ((c->flags & cachedFlag) != 0) return member;
  c->flags |= cachedFlag;
  if (!PrepareMuscleTangents(c)) {
    member = Vector(0.0f, 0.0f, 0.0f);
    return member;
  }
  MuscleHandles(c);
  return member;
}

}  // namespace

Vector& SegmentCP::Getit() {
  CheckModelGeneration(this);
  return ModelTangent(this, it, cpflag::itCached);
}

Vector& SegmentCP::Getot() {
  CheckModelGeneration(this);
  return ModelTangent(this, ot, cpflag::otCached);
}

Vector& SegmentCP::Getscreenit() {
  return ScreenHandle(this, screenit, cpflag::screenitCached, it, cpflag::itCached, kInThird);
}

Vector& SegmentCP::Getscreenot() {
  return ScreenHandle(this, screenot, cpflag::screenotCached, ot, cpflag::otCached, kOutThird);
}

Vector& SegmentCP::Getmit() { return MuscleHandle(this, mit, cpflag::mitCached); }

Vector& SegmentCP::Getmot() { return MuscleHandle(this, mot, cpflag::motCached); }

}  // namespace splinecore
