// SPDX-License-Identifier: MIT
// Lazily computed tangents and handle points: model (Getit/Getot), screen
// (Getscreenit/Getscreenot) and muscle mode (Getmit/Getmot).
#include "controlpoint/checked.h"
#include "controlpoint/spaces.h"
#include "tangents/hook_partners.h"

namespace splinecore {

namespace {

// The floats nearest to -1/3 and 1/3: a handle point lies a third of the
// tangent before (in side) or after (out side) the position.
constexpr float kInThird = -0.3333333432674408f;
constexpr float kOutThird = 0.3333333432674408f;

// A partner of a hook: refresh the positions around it, then convert it
// when its conversion in this space is stale.
template <class Space>
void RefreshPartner(SegmentCP* x) {
  if (x->next != nullptr) Space::Refresh(x->next);
  if (x->prev != nullptr) Space::Refresh(x->prev);
  if (!Space::IsConverted(x)) {
    Space::OnConverted(x);
    Space::Convert(x);
  }
}

// What c's tangents read, brought up to date once a member flag was found
// clear: the positions of its neighbours and, for a hook, its partners.
// False for a hook without both partners (or without a carrier with a
// next): it gets no tangent.
template <class Space>
bool PrepareTangents(SegmentCP* c) {
  if (c->next != nullptr) Space::Refresh(c->next);
  if (c->prev != nullptr) Space::Refresh(c->prev);
  if (!c->IsHook()) return true;
  SegmentCP* carrier = detail::FindCarrier(c);
  if (carrier == nullptr || carrier->next == nullptr) return false;
  SegmentCP* first = detail::FirstHookPartner(c, carrier);
  if (first == nullptr) return false;
  RefreshPartner<Space>(first);
  SegmentCP* second = detail::SecondHookPartnerForGetters(carrier);
  if (second == nullptr) return false;
  RefreshPartner<Space>(second);
  return true;
}

// Brings c's model tangents up to date: PrepareTangents, then the
// conversion when it is stale.
bool ValidateTangents(SegmentCP* c) {
  if (!PrepareTangents<detail::ScreenSpace>(c)) return false;
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
  detail::CheckScreenGeneration(c);
  if ((c->flags & handleFlag) != 0) return handle;
  c->flags |= handleFlag;
  detail::CheckModelGeneration(c);
  ModelTangent(c, tangent, tangentFlag);
  handle = tangent * third;
  handle += c->head->Getp();
  handle = TransformPoint(c->cache->view->screenMatrix, handle);
  return handle;
}

// Turns a member holding a muscle tangent into its handle point, in place:
// Getmp(head) plus tangent * third.
void ToHandle(SegmentCP* c, Vector& member, float third) {
  Vector handle = member * third;
  handle += c->head->Getmp();
  member = handle;
}

// Getmit/Getmot: `member` with its flag and factor, `other` the opposite
// side's member and flag.
Vector& MuscleHandle(SegmentCP* c, Vector& member, std::uint32_t flag, float third, Vector& other,
                     std::uint32_t otherFlag, float otherThird) {
  if ((c->flags & flag) != 0) return member;
  c->flags |= flag;
  if (!PrepareTangents<detail::MuscleSpace>(c)) {
    member = Vector(0.0f, 0.0f, 0.0f);
    return member;
  }
  // With mconverted set, `member` holds a tangent only when the other side's
  // getter ran MConvert and left it (that getter's flag is then set). With
  // both flags clear (OffCachedmitot, or a re-placed hook) the members may
  // hold handle points already, so MConvert runs again instead.
  if (!c->IsMconverted() || (c->flags & otherFlag) == 0) {
    c->OnMconverted();
    c->MConvert();
    // A getter of the other side re-entered during MConvert claims a handle
    // point where MConvert has just written a tangent.
    if ((c->flags & otherFlag) != 0) ToHandle(c, other, otherThird);
  }
  ToHandle(c, member, third);
  // Re-placing c's own run while its position was asked cleared the flag;
  // the member now holds the handle point for the tangent just converted.
  c->flags |= flag;
  return member;
}

}  // namespace

Vector& SegmentCP::Getit() {
  detail::CheckGetter(this, detail::Needs::kModelTangent);
  detail::CheckModelGeneration(this);
  return ModelTangent(this, it, cpflag::itCached);
}

Vector& SegmentCP::Getot() {
  detail::CheckGetter(this, detail::Needs::kModelTangent);
  detail::CheckModelGeneration(this);
  return ModelTangent(this, ot, cpflag::otCached);
}

Vector& SegmentCP::Getscreenit() {
  detail::CheckGetter(this, detail::Needs::kScreenTangent);
  return ScreenHandle(this, screenit, cpflag::screenitCached, it, cpflag::itCached, kInThird);
}

Vector& SegmentCP::Getscreenot() {
  detail::CheckGetter(this, detail::Needs::kScreenTangent);
  return ScreenHandle(this, screenot, cpflag::screenotCached, ot, cpflag::otCached, kOutThird);
}

Vector& SegmentCP::Getmit() {
  detail::CheckGetter(this, detail::Needs::kModelTangent);
  return MuscleHandle(this, mit, cpflag::mitCached, kInThird, mot, cpflag::motCached, kOutThird);
}

Vector& SegmentCP::Getmot() {
  detail::CheckGetter(this, detail::Needs::kModelTangent);
  return MuscleHandle(this, mot, cpflag::motCached, kOutThird, mit, cpflag::mitCached, kInThird);
}

}  // namespace splinecore
