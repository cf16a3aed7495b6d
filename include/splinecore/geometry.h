// SPDX-License-Identifier: MIT
/// @file
/// Value types shared by every part of the library: Vector, Matrix, Delta.
///
/// Arithmetic contract: sums and products are formed in double precision from
/// the float operands; a component stored into a Vector is rounded to float
/// once, at the store. Multi-term sums run left to right: ((x*x' + y*y') + z*z').
/// All operations are inline and allocate nothing.
#ifndef SPLINECORE_GEOMETRY_H
#define SPLINECORE_GEOMETRY_H

#include <cmath>
#include <cstdint>

namespace splinecore {

struct Vector;
inline Vector Scaled(const Vector& v, double s);
inline Vector ScaledByReciprocal(const Vector& v, float length);

/// A point or direction: three consecutive floats with nothing between or
/// after them; host records index arrays of Vector with this 12-byte element
/// size.
struct Vector {
  float x,  ///< x component
      y,    ///< y component
      z;    ///< z component

  /// Leaves the components as they are (no zeroing), so arrays cost nothing.
  Vector() = default;
  /// The vector (x_, y_, z_).
  constexpr Vector(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}

  /// Adds o, each component rounded once.
  Vector& operator+=(const Vector& o) {
    x = static_cast<float>(static_cast<double>(x) + o.x);
    y = static_cast<float>(static_cast<double>(y) + o.y);
    z = static_cast<float>(static_cast<double>(z) + o.z);
    return *this;
  }
  /// Subtracts o, each component rounded once.
  Vector& operator-=(const Vector& o) {
    x = static_cast<float>(static_cast<double>(x) - o.x);
    y = static_cast<float>(static_cast<double>(y) - o.y);
    z = static_cast<float>(static_cast<double>(z) - o.z);
    return *this;
  }
  /// Scaling by a float factor: each product formed in double, rounded once.
  /// (A double argument is rounded to float first; see Scaled for a factor
  /// kept in double.)
  Vector& operator*=(float s) {
    x = static_cast<float>(static_cast<double>(x) * s);
    y = static_cast<float>(static_cast<double>(y) * s);
    z = static_cast<float>(static_cast<double>(z) * s);
    return *this;
  }
  Vector operator*(float s) const { return Vector(*this) *= s; }  ///< a copy scaled as by *=
  /// Negates every component in place (exact).
  Vector& Negate() {
    x = -x;
    y = -y;
    z = -z;
    return *this;
  }
  Vector operator-() const { return Vector(-x, -y, -z); }  ///< the negated vector (exact)

  /// Exact double-precision dot product, not rounded.
  double Dot(const Vector& o) const {
    return static_cast<double>(x) * o.x + static_cast<double>(y) * o.y +
           static_cast<double>(z) * o.z;
  }

  /// 1 when every component is exactly equal (so 0 == -0), else 0.
  int operator==(const Vector& o) const { return x == o.x && y == o.y && z == o.z; }
  int operator!=(const Vector& o) const { return !(*this == o); }  ///< the negation of ==

  /// Scales to unit length: r = 1.0 / (length rounded to float), kept in
  /// double; each component becomes float(x * r). A zero vector is unchanged.
  Vector& Normalize() {
    const double length = std::sqrt(Dot(*this));
    if (length == 0.0) return *this;
    return *this = ScaledByReciprocal(*this, static_cast<float>(length));
  }

  /// Right-handed cross product this x o, each component one rounding.
  Vector Cross(const Vector& o) const {
    return Vector(static_cast<float>(static_cast<double>(y) * o.z - static_cast<double>(z) * o.y),
                  static_cast<float>(static_cast<double>(z) * o.x - static_cast<double>(x) * o.z),
                  static_cast<float>(static_cast<double>(x) * o.y - static_cast<double>(y) * o.x));
  }
};

/// a + b, each component rounded once.
inline Vector operator+(Vector a, const Vector& b) { return a += b; }
/// v scaled by a factor kept in double (not rounded to float first); each
/// component rounded once.
inline Vector Scaled(const Vector& v, double s) {
  return Vector(static_cast<float>(v.x * s), static_cast<float>(v.y * s), static_cast<float>(v.z * s));
}
/// v divided by a length through its reciprocal: Scaled(v, 1.0 / length),
/// the reciprocal kept in double.
inline Vector ScaledByReciprocal(const Vector& v, float length) { return Scaled(v, 1.0 / static_cast<double>(length)); }
/// a - b, each component rounded once.
inline Vector operator-(Vector a, const Vector& b) { return a -= b; }

/// Length of v as the library measures it: the double square root of the
/// double dot product, rounded to float.
inline float Length(const Vector& v) { return static_cast<float>(std::sqrt(v.Dot(v))); }

/// Affine transform: three rows of four floats; columns 0-2 are the linear
/// part, column 3 the translation. The library only reads matrices.
struct Matrix {
  float m[3][4];  ///< m[row][column]
};

/// Turn and scale of one tangent: angles in degrees and a length factor.
struct Delta {
  float pitch;      ///< degrees turned toward the normal of the local plane
  float yaw;        ///< degrees turned then toward the side (tangent x normal)
  float magnitude;  ///< factor on the tangent's length
};

/// One row of a matrix applied to a point: ((r0*x + r1*y) + r2*z) + r3, in
/// double, not rounded.
inline double RowDot(const float* row, const Vector& v) {
  return static_cast<double>(row[0]) * v.x + static_cast<double>(row[1]) * v.y +
         static_cast<double>(row[2]) * v.z + row[3];
}

/// m applied to the point v; each coordinate rounded once.
inline Vector TransformPoint(const Matrix& m, const Vector& v) {
  return Vector(static_cast<float>(RowDot(m.m[0], v)), static_cast<float>(RowDot(m.m[1], v)),
                static_cast<float>(RowDot(m.m[2], v)));
}

/// The first three entries of a row applied to a direction: (r0*x + r1*y) +
/// r2*z, in double, not rounded.
inline double LinearRowDot(const float* row, const Vector& v) {
  return static_cast<double>(row[0]) * v.x + static_cast<double>(row[1]) * v.y +
         static_cast<double>(row[2]) * v.z;
}

/// The linear part of m applied to v in place (no translation). All inputs
/// are read before any output is written.
inline void TransformDirection(const Matrix& m, Vector& v) {
  const Vector in = v;
  v.x = static_cast<float>(LinearRowDot(m.m[0], in));
  v.y = static_cast<float>(LinearRowDot(m.m[1], in));
  v.z = static_cast<float>(LinearRowDot(m.m[2], in));
}

static_assert(sizeof(Vector) == 12, "Vector is three packed floats");
static_assert(sizeof(Matrix) == 48, "Matrix is twelve floats");
static_assert(sizeof(Delta) == 12, "Delta is three floats");

}  // namespace splinecore

#endif
