// SPDX-License-Identifier: MIT
// Forward differencing of a cubic Hermite piece: set-up in power form, then
// three additions per coordinate and step.
#include "measure/forward_difference.h"

namespace splinecore::detail {

namespace {

// One plane coordinate of the Hermite-to-power conversion, one rounding each.
void PolyCoordinate(float p0, float p1, float t0, float t1, float& a, float& b) {
  a = static_cast<float>(2.0 * (static_cast<double>(p0) - p1) + t0 + t1);
  b = static_cast<float>(3.0 * (static_cast<double>(p1) - p0) - 2.0 * t0 - t1);
}

// One plane coordinate of the column start values, one rounding each.
void ColumnCoordinate(float a, float b, float c, const FDSteps* s, float& d1, float& d2, float& d3) {
  d1 = static_cast<float>(static_cast<double>(a) * s->h3 + static_cast<double>(b) * s->h2 +
                          static_cast<double>(c) * s->h);
  d2 = static_cast<float>(static_cast<double>(a) * s->h3x6 + static_cast<double>(b) * s->h2x2);
  d3 = static_cast<float>(static_cast<double>(a) * s->h3x6);
}

float Sum(float x, float y) { return static_cast<float>(static_cast<double>(x) + y); }

}  // namespace

void InitFDSteps(unsigned short n, FDSteps* s) {
  s->h = static_cast<float>(1.0 / n);
  s->h2 = static_cast<float>(static_cast<double>(s->h) * s->h);
  s->h3 = static_cast<float>(static_cast<double>(s->h2) * s->h);
  s->h3x6 = static_cast<float>(6.0 * s->h3);
  s->h2x2 = static_cast<float>(2.0 * s->h2);
}

void CubicToPoly(CubicPoly* poly, const Cubic* cubic) {
  poly->a = cubic->p0 * 2.0;
  poly->a -= cubic->p1 * 2.0;
  poly->a += cubic->t0;
  poly->a += cubic->t1;
  poly->b = cubic->p0 * -3.0;
  poly->b += cubic->p1 * 3.0;
  poly->b -= cubic->t0 * 2.0;
  poly->b -= cubic->t1;
  poly->c = cubic->t0;
  poly->d = cubic->p0;
}

void CubicToPoly2D(CubicPoly* poly, const Cubic* cubic) {
  PolyCoordinate(cubic->p0.x, cubic->p1.x, cubic->t0.x, cubic->t1.x, poly->a.x, poly->b.x);
  poly->c.x = cubic->t0.x;
  poly->d.x = cubic->p0.x;
  PolyCoordinate(cubic->p0.y, cubic->p1.y, cubic->t0.y, cubic->t1.y, poly->a.y, poly->b.y);
  poly->c.y = cubic->t0.y;
  poly->d.y = cubic->p0.y;
}

void InitColumn(Column* col, const CubicPoly* poly, const FDSteps* s) {
  col->p = poly->d;
  col->d1 = poly->a * s->h3;
  col->d1 += poly->b * s->h2;
  col->d1 += poly->c * s->h;
  col->d2 = poly->a * s->h3x6;
  col->d2 += poly->b * s->h2x2;
  col->d3 = poly->a * s->h3x6;
}

void InitColumn2D(Column* col, const CubicPoly* poly, const FDSteps* s) {
  col->p.x = poly->d.x;
  ColumnCoordinate(poly->a.x, poly->b.x, poly->c.x, s, col->d1.x, col->d2.x, col->d3.x);
  col->p.y = poly->d.y;
  ColumnCoordinate(poly->a.y, poly->b.y, poly->c.y, s, col->d1.y, col->d2.y, col->d3.y);
}

// Defined here, beside the helpers it calls, so that they inline and the
// step sizes for the constant count fold.
void InitChordColumn(Column* col, const Cubic* cubic) {
  FDSteps steps;
  InitFDSteps(kChordCount, &steps);
  CubicPoly poly;
  CubicToPoly(&poly, cubic);
  InitColumn(col, &poly, &steps);
}

}  // namespace splinecore::detail

namespace splinecore {

void InitFD2D(Column* col, Cubic* cubic, unsigned short n) {
  detail::FDSteps s;
  detail::InitFDSteps(n, &s);
  detail::CubicPoly poly{};
  detail::CubicToPoly2D(&poly, cubic);
  detail::InitColumn2D(col, &poly, &s);
}

void BumpFD2D(Column* col) {
  col->p.x = detail::Sum(col->p.x, col->d1.x);
  col->d1.x = detail::Sum(col->d1.x, col->d2.x);
  col->d2.x = detail::Sum(col->d2.x, col->d3.x);
  col->p.y = detail::Sum(col->p.y, col->d1.y);
  col->d1.y = detail::Sum(col->d1.y, col->d2.y);
  col->d2.y = detail::Sum(col->d2.y, col->d3.y);
}

}  // namespace splinecore
