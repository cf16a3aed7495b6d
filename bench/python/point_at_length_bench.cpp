// Points at 10^5 lengths on one spline: the Python module's point_at_length
// beside the same call in C++, on the same figure. The module runs in an
// interpreter embedded in this benchmark (never finalized).
#include <benchmark/benchmark.h>
#include <pybind11/embed.h>
#include <pybind11/numpy.h>

#include <vector>

#include "splinecore/figure.h"

namespace py = pybind11;

namespace splinecore {
namespace {

constexpr int kPoints = 10;
constexpr int kLengths = 100000;

// A wavy open spline and lengths evenly spread over it.
std::vector<Vector> Points() {
  std::vector<Vector> points;
  for (int i = 0; i < kPoints; ++i)
    points.emplace_back(static_cast<float>(i), 0.5f * static_cast<float>(i % 2), 0.0f);
  return points;
}

std::vector<float> Lengths(float total) {
  std::vector<float> lengths;
  for (int i = 0; i < kLengths; ++i) lengths.push_back(total * static_cast<float>(i) / kLengths);
  return lengths;
}

void BM_Cpp(benchmark::State& state) {
  Figure f;
  SplineDesc d;
  for (const Vector& v : Points()) d.points.push_back(PointDesc{v});
  f.AddSpline(d);
  const std::vector<float> lengths = Lengths(f.SplineLength(0));
  for (auto _ : state) benchmark::DoNotOptimize(f.PointsAtLengths(0, lengths));
}

void BM_Python(benchmark::State& state) {
  static py::scoped_interpreter* interpreter = new py::scoped_interpreter{};
  (void)interpreter;
  py::module_::import("sys").attr("path").attr("insert")(0, SPLINECORE_PYTHON_PATH);
  py::object figure = py::module_::import("splinecore").attr("Figure")();
  py::array_t<float> points({kPoints, 3});
  float* out = points.mutable_data();
  for (const Vector& v : Points()) {
    *out++ = v.x;
    *out++ = v.y;
    *out++ = v.z;
  }
  figure.attr("add_spline")(points);
  const std::vector<float> lengths = Lengths(figure.attr("length")(0).cast<float>());
  const py::array_t<float> array(static_cast<py::ssize_t>(lengths.size()), lengths.data());
  py::object call = figure.attr("point_at_length");
  for (auto _ : state) {
    py::object result = call(0, array);
    benchmark::DoNotOptimize(result.ptr());
  }
}

BENCHMARK(BM_Cpp)->Name("10^5 points at lengths/C++ Figure")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Python)->Name("10^5 points at lengths/Python module")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace splinecore
