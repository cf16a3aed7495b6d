// Replays the cases of float_model.py (model_cases.txt): each line gives an
// operation's inputs and the float32 model's outputs, which the library must
// match bit for bit (an expected NaN stands for an output left unwritten).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "convert/apply_delta.h"
#include "hooks/subdivide_bezier.h"
#include "measure/forward_difference.h"
#include "splinecore/figure.h"
#include "splinecore/measure.h"
#include "splinecore/segment_cp.h"

namespace splinecore::detail {
namespace {

class Reader {
 public:
  explicit Reader(const std::vector<float>& v) : v_(v) {}
  float F() { return v_.at(i_++); }
  int I() { return static_cast<int>(F()); }
  Vector V() {
    const float x = F(), y = F();
    return Vector(x, y, F());
  }

 private:
  const std::vector<float>& v_;
  std::size_t i_ = 0;
};

// Spline inputs: count, closed, then x y z smooth per point.
Figure Spline(Reader& in, int count, bool closed, const Matrix* view) {
  SplineDesc spline;
  spline.closed = closed;
  spline.points.resize(static_cast<std::size_t>(count));
  for (PointDesc& p : spline.points) {
    p.at = in.V();
    p.smooth = in.F() != 0;
  }
  Figure figure;
  figure.AddSpline(spline);
  if (view != nullptr) figure.SetView(*view);
  return figure;
}

std::vector<float> Replay(const std::string& op, const std::vector<float>& inputs) {
  Reader in(inputs);
  std::vector<float> out;
  auto put = [&out](const Vector& v) { out.insert(out.end(), {v.x, v.y, v.z}); };
  const float nan = std::nanf("");
  if (op == "turn") {
    const Vector a = in.V(), b = in.V();
    Vector result(99, 99, 99);
    TurnToward(a, b, result, in.F());
    put(result);
  } else if (op == "delta") {
    Vector t = in.V(), normal = in.V();
    const float pitch = in.F(), yaw = in.F();
    ApplyDelta(t, pitch, yaw, in.F(), normal);
    put(t);
    put(normal);
  } else if (op == "tangents") {
    const int count = in.I();
    const bool closed = in.I() != 0;
    const int at = in.I();
    Figure figure = Spline(in, count, closed, nullptr);
    Vector it(nan, nan, nan), ot(nan, nan, nan), inNormal(nan, nan, nan), outNormal(-1, -1, -1);
    const int result = figure.ControlPoint(PointId{0, at})->GetTangents(&it, &ot, &inNormal, &outNormal, 1);
    put(it);
    put(ot);
    put(inNormal);
    EXPECT_TRUE(std::isnan(inNormal.x) || inNormal == outNormal);
    out.push_back(static_cast<float>(result));
  } else if (op == "lengths" || op == "at_length") {
    const int count = in.I();
    const bool closed = in.I() != 0;
    Matrix view{};
    for (auto& row : view.m)
      for (float& v : row) v = in.F();
    Figure figure = Spline(in, count, closed, &view);
    if (op == "lengths") {
      for (int i = 0; i < count; ++i)
        if (figure.OwnsSegment(PointId{0, i})) out.push_back(figure.SegmentLength(PointId{0, i}));
      out.push_back(figure.SplineLength(0));
      out.push_back(GetTotalLength(figure.ControlPoint(PointId{0, count - 1})));
    } else {
      Vector position(nan, nan, nan), direction(nan, nan, nan);
      const float walked = PositionDirectionFromSubLength(figure.ControlPoint(PointId{0, 0}), in.F(), &position,
                                                          &direction);
      put(position);
      put(direction);
      out.push_back(walked);
    }
  } else if (op == "calc_point") {
    Vector p[4] = {in.V(), in.V(), in.V(), in.V()};
    const float t = in.F();
    Vector space, plane(0, 0, -5.5f);
    CalcPoint(p[0], p[1], p[2], p[3], t, space);
    CalcPoint2(p[0], p[1], p[2], p[3], t, plane);
    Vector aliased = p[0];
    CalcPoint(aliased, p[1], p[2], p[3], t, aliased);
    EXPECT_TRUE(aliased == space) << "out may be p0";
    put(space);
    put(plane);
  } else if (op == "poly") {
    const Cubic cubic{in.V(), in.V(), in.V(), in.V()};
    CubicPoly space, plane;
    CubicToPoly(&space, &cubic);
    plane.a.z = 21.0f;
    plane.b.z = 22.0f;
    CubicToPoly2D(&plane, &cubic);
    for (const Vector* v : {&space.a, &space.b, &plane.a, &plane.b}) put(*v);
  } else if (op == "subdivide") {
    const Vector c0 = in.V(), c1 = in.V(), c2 = in.V(), c3 = in.V();
    const float a = in.F();
    Vector out[4];
    SubdivideBezier(&c0, c1, c2, &c3, a, in.F(), &out[0], &out[1], &out[2], &out[3]);
    for (const Vector& v : out) put(v);
  } else if (op == "steps") {
    FDSteps s;
    InitFDSteps(static_cast<unsigned short>(in.I()), &s);
    out = {s.h, s.h2, s.h3, s.h3x6, s.h2x2};
  } else if (op == "column") {
    const Cubic cubic{in.V(), in.V(), in.V(), in.V()};
    const int n = in.I();
    CubicPoly poly;
    CubicToPoly(&poly, &cubic);
    FDSteps s;
    InitFDSteps(static_cast<unsigned short>(n), &s);
    Column col;
    InitColumn(&col, &poly, &s);
    for (const Vector* v : {&col.p, &col.d1, &col.d2, &col.d3}) put(*v);
    for (int k = 0; k < (n > 0 && n < 100 ? n : 2); ++k) BumpFD(&col);
    for (const Vector* v : {&col.p, &col.d1, &col.d2, &col.d3}) put(*v);
  } else if (op == "fd2d") {
    Cubic cubic{in.V(), in.V(), in.V(), in.V()};
    const int n = in.I(), bumps = in.I();
    Column col{Vector(0, 0, 11), Vector(0, 0, 12), Vector(0, 0, 13), Vector(0, 0, 14)};
    InitFD2D(&col, &cubic, static_cast<unsigned short>(n));
    for (int k = 0; k < bumps; ++k) BumpFD2D(&col);
    for (const Vector* v : {&col.p, &col.d1, &col.d2, &col.d3}) put(*v);
  } else {
    ADD_FAILURE() << "unknown operation " << op;
  }
  return out;
}

// Bitwise equality; an expected NaN accepts any NaN, as does a NaN of a
// non-finite computation (n = 0 steps) in the model.
bool Same(float got, float want) {
  if (std::isnan(want)) return std::isnan(got);
  return got == want && std::signbit(got) == std::signbit(want);
}

TEST(FloatModel, LibraryMatchesTheModelBitForBit) {
  std::ifstream file(SPLINECORE_MODEL_CASES);
  ASSERT_TRUE(file) << SPLINECORE_MODEL_CASES;
  std::string line;
  int cases = 0;
  while (std::getline(file, line)) {
    std::istringstream words(line);
    std::string op, word;
    words >> op;
    std::vector<float> inputs, expected;
    std::vector<float>* into = &inputs;
    while (words >> word) {
      if (word == "=") into = &expected;
      else into->push_back(std::strtof(word.c_str(), nullptr));
    }
    SCOPED_TRACE(line);
    const std::vector<float> got = Replay(op, inputs);
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i)
      EXPECT_TRUE(Same(got[i], expected[i])) << "output " << i << ": " << std::hexfloat << got[i] << " want "
                                             << expected[i];
    ++cases;
  }
  EXPECT_GT(cases, 100);
}

}  // namespace
}  // namespace splinecore::detail
