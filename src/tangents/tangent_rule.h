// SPDX-License-Identifier: MIT
// The tangent rule on positions (internal): chord-weighted tangents of smooth
// points, limited mirrored tangents at smooth open ends, half chords
// elsewhere. Inline: GetTangents and the benchmarks' bare loops run this
// same arithmetic.
#ifndef SPLINECORE_SRC_TANGENTS_TANGENT_RULE_H
#define SPLINECORE_SRC_TANGENTS_TANGENT_RULE_H

#include "splinecore/geometry.h"
#include "splinecore/segment_cp.h"

namespace splinecore::detail {

inline constexpr Vector kZeroVector(0.0f, 0.0f, 0.0f);

// Normalize as a value.
inline Vector Unit(Vector v) { return v.Normalize(); }

inline void WriteNormals(Vector* inNormal, Vector* outNormal, const Vector& n) {
  if (inNormal == nullptr) return;
  *inNormal = n;
  *outNormal = n;
}

// Chord-weighted Catmull-Rom tangents of a smooth point with both
// neighbours; the chord A - B is shared in proportion to the two segments.
inline int SmoothInterior(const Vector& P, const Vector& A, const Vector& B, Vector* it, Vector* ot, Vector* inNormal,
                   Vector* outNormal) {
  const Vector chord = A - B;
  const float L = Length(chord);
  if (L == 0.0f) {
    *it = kZeroVector;
    *ot = kZeroVector;
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
    const Vector towardPrev = LA == 0.0f ? kZeroVector : ScaledByReciprocal(toPrev, LA);
    WriteNormals(inNormal, outNormal, towardPrev.Cross(D));
  }
  return 1;
}

// Limits the mirrored end tangent of a smooth open end: when its direction
// leans farther from the unit chord D than K does, it is turned onto K with
// its length kept. The reciprocal of its length is rounded to float. Writes
// the tangent and, unless it has length zero (then returns false), its
// direction before limiting into *before.
inline bool LimitEndTangent(Vector mirrored, const Vector& D, const Vector& K, Vector* tangent, Vector* before) {
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
inline int SmoothNoPrev(const Vector& P, const Vector& B, const Vector& C, Vector* it, Vector* ot, Vector* inNormal,
                 Vector* outNormal) {
  const Vector D = Unit(P - B);
  const Vector V = Unit(P - C) * Length(B - P);
  const Vector W = Scaled(D, V.Dot(D));
  const Vector K = Unit((P + C) * 0.5f - B);
  Vector Q;
  const bool hasDirection = LimitEndTangent(W - (V - W), D, K, it, &Q);
  *ot = *it;
  WriteNormals(inNormal, outNormal, hasDirection ? Q.Cross(D) : kZeroVector);
  return 1;
}

// Smooth point without next, where travel starts: P, its prev at A, and
// prev's prev at C.
inline int SmoothNoNext(const Vector& P, const Vector& A, const Vector& C, Vector* it, Vector* ot, Vector* inNormal,
                 Vector* outNormal) {
  const Vector D = Unit(A - P);
  const Vector V = Unit(C - P) * Length(A - P);
  const Vector W = Scaled(D, V.Dot(D));
  const Vector K = Unit(A - (C + P) * 0.5f);
  Vector Q;
  const bool hasDirection = LimitEndTangent(W * 2.0 - V, D, K, ot, &Q);
  WriteNormals(inNormal, outNormal, hasDirection ? Q.Cross(D) : kZeroVector);
  *it = *ot;
  return 1;
}

// Half-chord tangents of peaked points and short open ends.
inline int HalfChords(const Vector& P, const Vector* A, const Vector* B, Vector* it, Vector* ot, Vector* inNormal,
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

// The rule for non-hook c, its case chosen from c's smoothness and
// neighbours: `position(x, role)` gives the position of x, asked for c
// (role 0), prev (1) and next (2) when present, then for the second
// neighbour (3) only when an open end's case reads it. GetTangents and the whole-figure refresh run this.
template <class Position>
inline int TangentRule(SegmentCP* c, Position position, Vector* it, Vector* ot, Vector* inNormal, Vector* outNormal) {
  SegmentCP* prev = c->prev;
  SegmentCP* next = c->next;
  const Vector P = position(c, 0);
  Vector A = kZeroVector;
  Vector B = kZeroVector;
  if (prev != nullptr) A = position(prev, 1);
  if (next != nullptr) B = position(next, 2);
  if (c->IsSmooth()) {
    if (prev != nullptr && next != nullptr) return SmoothInterior(P, A, B, it, ot, inNormal, outNormal);
    if (prev == nullptr && next != nullptr && next->next != nullptr)
      return SmoothNoPrev(P, B, position(next->next, 3), it, ot, inNormal, outNormal);
    if (next == nullptr && prev != nullptr && prev->prev != nullptr)
      return SmoothNoNext(P, A, position(prev->prev, 3), it, ot, inNormal, outNormal);
  }
  return HalfChords(P, prev != nullptr ? &A : nullptr, next != nullptr ? &B : nullptr, it, ot, inNormal, outNormal);
}

}  // namespace splinecore::detail

#endif
