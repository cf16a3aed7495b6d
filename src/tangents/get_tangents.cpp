// SPDX-License-Identifier: MIT
#include "splinecore/segment_cp.h"

namespace splinecore {

namespace {

const Vector kZero(0.0f, 0.0f, 0.0f);

// The position the tangent rule reads: screen space or muscle-placement
// model space. Copied, so later fetches cannot change it.
Vector PositionOf(SegmentCP* c, int screen) { return screen != 0 ? c->Getscreenp() : c->Getmp(); }


// Normalize as a value.
Vector Unit(Vector v) { return v.Normalize(); }

void WriteNormals(Vector* inNormal, Vector* outNormal, const Vector& n) {
  if (inNormal == nullptr) return;
  *inNormal = n;
  *outNormal = n;
}

// Chord-weighted Catmull-Rom tangents of a smooth point with both
// neighbours; the chord A - B is shared in proportion to the two segments.
int SmoothInterior(const Vector& P, const Vector& A, const Vector& B, Vector* it, Vector* ot, Vector* inNormal,
                   Vector* outNormal) {
  const Vector chord = A - B;
  const float L = Length(chord);
  if (L == 0.0f) {
    *it = kZero;
    *ot = kZero;
    return 0;
  }
  const Vector D = ScaledByReciprocal(chord, L);
  const float LB = Length(P - B);
  const Vector toPrev = A - P;
  const float LA = Length(toPrev);
  const double S = (static_cast<double>(LA) + LB) / L;
  *it = Scaled(D, LB / S);
  *ot = Scaled(D, LA / S);
  if (inNormal != nullptr) {
    // A point on top of its prev has no direction toward it: zero normal.
    const Vector towardPrev = LA == 0.0f ? kZero : ScaledByReciprocal(toPrev, LA);
    WriteNormals(inNormal, outNormal, towardPrev.Cross(D));
  }
  return 1;
}

// Limits the mirrored end tangent of a smooth open end: when its direction
// leans farther from the unit chord D than K does, it is turned onto K with
// its length kept. The reciprocal of its length is rounded to float. Writes
// the tangent and, unless it has length zero (then returns false), its
// direction before limiting into *before.
bool LimitEndTangent(Vector mirrored, const Vector& D, const Vector& K, Vector* tangent, Vector* before) {
  const double k = K.Dot(D);
  const float m = Length(mirrored);
  if (m == 0.0f) {
    *tangent = mirrored;
    return false;
  }
  *before = mirrored * static_cast<float>(1.0 / static_cast<double>(m));
  if (before->Dot(D) < k) mirrored = K * m;
  *tangent = mirrored;
  return true;
}

// Smooth point without prev, where travel finishes: P, its next at B, and
// next's next at C.
int SmoothNoPrev(const Vector& P, const Vector& B, const Vector& C, Vector* it, Vector* ot, Vector* inNormal,
                 Vector* outNormal) {
  const Vector D = Unit(P - B);
  const Vector V = Unit(P - C) * Length(B - P);
  const Vector W = Scaled(D, V.Dot(D));
  const Vector K = Unit((P + C) * 0.5f - B);
  Vector Q;
  const bool hasDirection = LimitEndTangent(W - (V - W), D, K, it, &Q);
  *ot = *it;
  WriteNormals(inNormal, outNormal, hasDirection ? Q.Cross(D) : kZero);
  return 1;
}

// Smooth point without next, where travel starts: P, its prev at A, and
// prev's prev at C.
int SmoothNoNext(const Vector& P, const Vector& A, const Vector& C, Vector* it, Vector* ot, Vector* inNormal,
                 Vector* outNormal) {
  const Vector D = Unit(A - P);
  const Vector V = Unit(C - P) * Length(A - P);
  const Vector W = Scaled(D, V.Dot(D));
  const Vector K = Unit(A - (C + P) * 0.5f);
  Vector Q;
  const bool hasDirection = LimitEndTangent(W * 2.0 - V, D, K, ot, &Q);
  WriteNormals(inNormal, outNormal, hasDirection ? Q.Cross(D) : kZero);
  *it = *ot;
  return 1;
}

// Half-chord tangents of peaked points and short open ends.
int HalfChords(const Vector& P, const Vector* A, const Vector* B, Vector* it, Vector* ot, Vector* inNormal,
               Vector* outNormal) {
  if (B != nullptr) *it = (P - *B) * 0.5f;
  if (A == nullptr) {
    *ot = *it;
    return 0;
  }
  *ot = (*A - P) * 0.5f;
  if (B == nullptr) {
    *it = *ot;
    return 0;
  }
  WriteNormals(inNormal, outNormal, it->Cross(*ot));
  return 1;
}

}  // namespace

int SegmentCP::GetTangents(Vector* inTangent, Vector* outTangent, Vector* inNormal, Vector* outNormal, int screen) {
  if (IsHook()) return 0;
  const Vector P = PositionOf(this, screen);
  Vector A = kZero;
  Vector B = kZero;
  if (prev != nullptr) A = PositionOf(prev, screen);
  if (next != nullptr) B = PositionOf(next, screen);

  if (IsSmooth()) {
    if (prev != nullptr && next != nullptr) {
      return SmoothInterior(P, A, B, inTangent, outTangent, inNormal, outNormal);
    }
    if (prev == nullptr && next != nullptr && next->next != nullptr) {
      return SmoothNoPrev(P, B, PositionOf(next->next, screen), inTangent, outTangent, inNormal, outNormal);
    }
    if (next == nullptr && prev != nullptr && prev->prev != nullptr) {
      return SmoothNoNext(P, A, PositionOf(prev->prev, screen), inTangent, outTangent, inNormal, outNormal);
    }
  }
  return HalfChords(P, prev != nullptr ? &A : nullptr, next != nullptr ? &B : nullptr, inTangent, outTangent,
                    inNormal, outNormal);
}

}  // namespace splinecore
