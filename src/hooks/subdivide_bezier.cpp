// SPDX-License-Identifier: MIT
#include "hooks/subdivide_bezier.h"

namespace splinecore::detail {

namespace {

// The four Bernstein-style weights of one blossom value, each formed in
// double and rounded to float once.
struct Weights {
  float w0, w1, w2, w3;
};

Weights Round(double w0, double w1, double w2, double w3) {
  return {static_cast<float>(w0), static_cast<float>(w1), static_cast<float>(w2), static_cast<float>(w3)};
}

// ((c0*w0 + c1*w1) + c2*w2) + c3*w3, every scaling and sum rounded to float.
Vector Combine(const Vector& c0, const Vector& c1, const Vector& c2, const Vector& c3, const Weights& w) {
  Vector sum = c0 * w.w0;
  sum += c1 * w.w1;
  sum += c2 * w.w2;
  sum += c3 * w.w3;
  return sum;
}

}  // namespace

void SubdivideBezier(const Vector* c0, Vector c1, Vector c2, const Vector* c3, float a, float b,
                     Vector* out0, Vector* out1, Vector* out2, Vector* out3) {
  const double da = a;
  const double db = b;
  const double ra = 1.0 - da;  // 1 - a
  const double rb = 1.0 - db;  // 1 - b

  // B(a,a,a), B(a,a,b), B(a,b,b), B(b,b,b): products taken left to right.
  const Weights aaa = Round((ra * ra) * ra, ((3.0 * da) * ra) * ra, ((3.0 * da) * da) * ra, (da * da) * da);
  const Weights aab = Round((ra * ra) * rb, ra * ((2.0 * da) + (1.0 - 3.0 * da) * db),
                            da * (da + (2.0 - 3.0 * da) * db), (da * da) * db);
  const Weights abb = Round((ra * rb) * rb, rb * (da + (2.0 - 3.0 * da) * db),
                            db * ((2.0 * da) + (1.0 - 3.0 * da) * db), (da * db) * db);
  const Weights bbb = Round((rb * rb) * rb, ((3.0 * db) * rb) * rb, ((3.0 * db) * db) * rb, (db * db) * db);

  *out0 = Combine(*c0, c1, c2, *c3, aaa);
  *out1 = Combine(*c0, c1, c2, *c3, aab);
  *out2 = Combine(*c0, c1, c2, *c3, abb);
  *out3 = Combine(*c0, c1, c2, *c3, bbb);
}

}  // namespace splinecore::detail
