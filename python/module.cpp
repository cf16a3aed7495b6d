// SPDX-License-Identifier: MIT
// The Python module: splinecore.Figure over the C++ Figure. Arrays are
// float32 and carry the library's bits unchanged; points are addressed as
// (spline, index), the spline by index or name, negative indices counting
// from the end.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstring>
#include <string>
#include <vector>

#include "splinecore/figure.h"
#include "splinecore/figure_file.h"

namespace py = pybind11;

namespace splinecore::python {
namespace {

using FloatArray = py::array_t<float, py::array::c_style | py::array::forcecast>;

int SplineIndex(const Figure& f, const py::handle& spline) {
  if (py::isinstance<py::str>(spline)) {
    const std::string name = spline.cast<std::string>();
    const int index = f.FindSpline(name);
    if (index < 0) throw py::value_error("no spline is named '" + name + "'");
    return index;
  }
  if (!py::isinstance<py::int_>(spline)) throw py::type_error("a spline is an index or a name");
  long index = spline.cast<long>();
  const long count = f.SplineCount();
  if (index < 0) index += count;
  if (index < 0 || index >= count) throw py::index_error("spline " + py::str(spline).cast<std::string>() + " out of range");
  return static_cast<int>(index);
}

PointId Point(const Figure& f, const py::handle& point) {
  if (!py::isinstance<py::sequence>(point) || py::isinstance<py::str>(point) || py::len(point) != 2)
    throw py::type_error("a point is (spline, index)");
  const py::sequence pair = py::reinterpret_borrow<py::sequence>(point);
  const int spline = SplineIndex(f, pair[0]);
  if (!py::isinstance<py::int_>(pair[1])) throw py::type_error("a point's index is an int");
  long index = pair[1].cast<long>();
  const long count = f.PointCount(spline);
  if (index < 0) index += count;
  if (index < 0 || index >= count)
    throw py::index_error("point " + py::str(point).cast<std::string>() + " out of range");
  return PointId{spline, static_cast<int>(index)};
}

Space SpaceNamed(const std::string& name) {
  if (name == "model") return Space::kModel;
  if (name == "screen") return Space::kScreen;
  if (name == "muscle") return Space::kMuscle;
  throw py::value_error("space is \"model\", \"screen\" or \"muscle\", not \"" + name + "\"");
}

// Two or three numbers; z defaults to 0.
Vector ToVector(const py::handle& xyz) {
  const auto a = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(xyz);
  if (!a || a.ndim() != 1 || (a.size() != 2 && a.size() != 3)) throw py::value_error("expected 2 or 3 numbers");
  const double* v = a.data();
  return Vector(static_cast<float>(v[0]), static_cast<float>(v[1]), a.size() == 3 ? static_cast<float>(v[2]) : 0.0f);
}

Delta ToDelta(const py::handle& d) {
  const auto a = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(d);
  if (!a || a.ndim() != 1 || a.size() != 3) throw py::value_error("a delta is (pitch, yaw, magnitude)");
  return Delta{static_cast<float>(a.data()[0]), static_cast<float>(a.data()[1]), static_cast<float>(a.data()[2])};
}

Matrix ToMatrix(const py::handle& m) {
  const auto a = FloatArray::ensure(m);
  if (!a || a.ndim() != 2 || a.shape(0) != 3 || a.shape(1) != 4) throw py::value_error("a transform is a 3x4 matrix");
  Matrix out;
  std::memcpy(out.m, a.data(), sizeof out.m);
  return out;
}

py::array_t<float> MatrixArray(const Matrix& m) {
  py::array_t<float> a({3, 4});
  std::memcpy(a.mutable_data(), m.m, sizeof m.m);
  return a;
}

// Rows of three floats.
py::array_t<float> Rows(const std::vector<Vector>& v) {
  py::array_t<float> a({static_cast<py::ssize_t>(v.size()), py::ssize_t{3}});
  float* out = a.mutable_data();
  for (const Vector& x : v) {
    *out++ = x.x;
    *out++ = x.y;
    *out++ = x.z;
  }
  return a;
}

py::array_t<float> Beziers(const std::vector<Bezier>& b) {
  py::array_t<float> a({static_cast<py::ssize_t>(b.size()), py::ssize_t{4}, py::ssize_t{3}});
  float* out = a.mutable_data();
  for (const Bezier& s : b)
    for (const Vector& x : {s.p0, s.h0, s.h1, s.p1}) {
      *out++ = x.x;
      *out++ = x.y;
      *out++ = x.z;
    }
  return a;
}

// The segments of a spline in walk order of their owners.
std::vector<PointId> Owners(const Figure& f, int spline) {
  std::vector<PointId> owners;
  for (int i = 0; i < f.PointCount(spline); ++i)
    if (f.OwnsSegment(PointId{spline, i})) owners.push_back(PointId{spline, i});
  return owners;
}

int AddSpline(Figure& f, const py::handle& points, bool closed, const py::handle& smooth, const py::object& name) {
  const auto a = FloatArray::ensure(points);
  if (!a || a.ndim() != 2 || (a.shape(1) != 2 && a.shape(1) != 3)) throw py::value_error("points must be (n, 2) or (n, 3)");
  const py::ssize_t n = a.shape(0);
  std::vector<bool> flags;
  if (py::isinstance<py::bool_>(smooth)) {
    flags.assign(static_cast<std::size_t>(n), smooth.cast<bool>());
  } else {
    flags = smooth.cast<std::vector<bool>>();
    if (static_cast<py::ssize_t>(flags.size()) != n) throw py::value_error("smooth needs one flag per point");
  }
  SplineDesc d;
  d.closed = closed;
  if (!name.is_none()) d.name = name.cast<std::string>();
  const auto r = a.unchecked<2>();
  for (py::ssize_t i = 0; i < n; ++i) {
    PointDesc p;
    p.at = Vector(r(i, 0), r(i, 1), a.shape(1) == 3 ? r(i, 2) : 0.0f);
    p.smooth = flags[static_cast<std::size_t>(i)];
    d.points.push_back(p);
  }
  return f.AddSpline(d);
}

// A hook point appended to `spline`, hanging on carrier's segment at s: the
// figure is rebuilt from its description with the hook added, and kept
// only when that succeeds.
int AddHook(Figure& f, const py::handle& carrier, float s, const py::handle& spline) {
  const PointId on = Point(f, carrier);
  const int target = SplineIndex(f, spline);
  FigureDescription d = f.Describe();
  SplineDesc& points = d.splines[static_cast<std::size_t>(target)];
  PointDesc hook;
  hook.hook = true;
  hook.s = s;
  points.points.push_back(hook);
  const PointId id{target, static_cast<int>(points.points.size()) - 1};
  // Hooks of one carrier are listed in run order: the new one goes last.
  d.hooks.push_back(HookDesc{id, on});
  Figure rebuilt(d);
  f = std::move(rebuilt);
  return id.index;
}

}  // namespace
}  // namespace splinecore::python

PYBIND11_MODULE(_core, m) {
  using namespace splinecore;
  using namespace splinecore::python;
  m.doc() = "splinecore: bit-exact spline figures (see the Figure class)";
  py::register_exception<FigureError>(m, "FigureError", PyExc_ValueError);

  py::class_<Figure>(m, "Figure", R"doc(A figure of splines that keeps every answer coherent after edits.

Points are addressed as (spline, index); a spline by its index or its name.
Bad arguments raise ValueError (FigureError) or IndexError and change nothing.)doc")
      .def(py::init<>())
      .def_static("from_json", [](const std::string& text) { return Figure(ReadFigureFile(text)); }, py::arg("text"),
                  "A figure from figure-file text; a bad file raises ValueError with its \"line N: reason\".")
      .def("to_json", [](const Figure& f) { return WriteFigureFile(f.Describe()); },
           "The figure as figure-file text, reading back to the same bits.")
      .def_property_readonly("spline_count", &Figure::SplineCount)
      .def("point_count", [](const Figure& f, const py::handle& s) { return f.PointCount(SplineIndex(f, s)); })
      .def("is_closed", [](const Figure& f, const py::handle& s) { return f.IsClosed(SplineIndex(f, s)); })
      .def("spline_name", [](const Figure& f, const py::handle& s) { return f.SplineName(SplineIndex(f, s)); })
      .def("add_spline", &AddSpline, py::arg("points"), py::arg("closed") = false, py::arg("smooth") = true,
           py::arg("name") = py::none(), "Adds a spline from (n, 2) or (n, 3) positions; returns its index.")
      .def("stack",
           [](Figure& f, const py::sequence& points) {
             std::vector<PointId> ids;
             for (const py::handle& p : points) ids.push_back(Point(f, p));
             f.Stack(ids);
           },
           py::arg("points"), "Stacks points at one position, top to bottom.")
      .def("add_hook", &AddHook, py::arg("carrier"), py::arg("s"), py::arg("spline"),
           "Appends a hook point to `spline`, riding on carrier's segment at s; returns its index.")
      .def("move", [](Figure& f, const py::handle& p, const py::handle& xyz) { f.Move(Point(f, p), ToVector(xyz)); },
           py::arg("point"), py::arg("xyz"))
      .def("set_delta",
           [](Figure& f, const py::handle& p, const py::object& inner, const py::object& outer) {
             const PointId id = Point(f, p);
             const SplineDesc s = f.Describe().splines[static_cast<std::size_t>(id.spline)];
             const PointDesc& now = s.points[static_cast<std::size_t>(id.index)];
             f.SetDeltas(id, inner.is_none() ? now.in : ToDelta(inner), outer.is_none() ? now.out : ToDelta(outer));
           },
           py::arg("point"), py::arg("inner") = py::none(), py::arg("outer") = py::none(),
           "Sets the in (inner) and out (outer) deltas, each (pitch, yaw, magnitude); None keeps one.")
      .def("smooth", [](Figure& f, const py::handle& p, bool on) { f.SetSmooth(Point(f, p), on); }, py::arg("point"),
           py::arg("on") = true)
      .def("delete", [](Figure& f, const py::handle& p) { f.Delete(Point(f, p)); }, py::arg("point"))
      .def("reverse", [](Figure& f, const py::handle& s) { f.Reverse(SplineIndex(f, s)); }, py::arg("spline"))
      .def("set_hook_s", [](Figure& f, const py::handle& p, float s) { f.SetHookS(Point(f, p), s); },
           py::arg("hook"), py::arg("s"))
      .def("set_screen",
           [](Figure& f, const py::handle& m, const py::object& inverse) {
             if (inverse.is_none()) f.SetScreen(ToMatrix(m));
             else f.SetScreen(ToMatrix(m), ToMatrix(inverse));
           },
           py::arg("matrix"), py::arg("inverse") = py::none(), "A 3x4 model-to-screen matrix; its inverse is computed when not given.")
      .def("set_view",
           [](Figure& f, const py::handle& m, const py::object& inverse) {
             if (inverse.is_none()) f.SetView(ToMatrix(m));
             else f.SetView(ToMatrix(m), ToMatrix(inverse));
           },
           py::arg("matrix"), py::arg("inverse") = py::none())
      .def_property_readonly("screen", [](const Figure& f) { return MatrixArray(f.Describe().screen); })
      .def_property_readonly("view", [](const Figure& f) { return MatrixArray(f.Describe().view); })
      .def_property("muscle_mode", &Figure::MuscleMode, &Figure::SetMuscleMode)
      .def("add_muscle_offset",
           [](Figure& f, const py::handle& p, const py::handle& xyz) { f.AddMuscleOffset(Point(f, p), ToVector(xyz)); },
           py::arg("point"), py::arg("xyz"))
      .def("clear_muscle_effects", [](Figure& f, const py::handle& p) { f.ClearMuscleEffects(Point(f, p)); },
           py::arg("point"))
      .def("position",
           [](Figure& f, const py::handle& p, const std::string& space) {
             return Rows({f.Position(Point(f, p), SpaceNamed(space))}).reshape({3});
           },
           py::arg("point"), py::arg("space") = "model")
      .def("bezier",
           [](Figure& f, const py::handle& s, const std::string& space) {
             const Space in = SpaceNamed(space);
             std::vector<Bezier> out;
             for (PointId id : Owners(f, SplineIndex(f, s))) out.push_back(f.Segment(id, in));
             return Beziers(out);
           },
           py::arg("spline"), py::arg("space") = "model",
           "(segments, 4, 3) Bezier points, one segment per owner in walk order, each from its owner's next to it.")
      .def("hook_pieces",
           [](Figure& f, const py::handle& p, const std::string& space) {
             return Beziers(f.HookPieces(Point(f, p), SpaceNamed(space)));
           },
           py::arg("carrier"), py::arg("space") = "screen")
      .def("length", [](Figure& f, const py::handle& s) { return f.SplineLength(SplineIndex(f, s)); }, py::arg("spline"))
      .def("segment_lengths",
           [](Figure& f, const py::handle& s) {
             const std::vector<PointId> owners = Owners(f, SplineIndex(f, s));
             py::array_t<float> a(static_cast<py::ssize_t>(owners.size()));
             float* out = a.mutable_data();
             for (PointId id : owners) *out++ = f.SegmentLength(id);
             return a;
           },
           py::arg("spline"))
      .def("point_at_length",
           [](Figure& f, const py::handle& s, const py::handle& lengths) {
             const int spline = SplineIndex(f, s);
             const auto a = FloatArray::ensure(lengths);
             if (!a) throw py::value_error("lengths must be numbers");
             const std::vector<float> in(a.data(), a.data() + a.size());
             std::vector<PointOnSpline> at;
             {
               py::gil_scoped_release release;
               at = f.PointsAtLengths(spline, in);
             }
             const py::ssize_t n = static_cast<py::ssize_t>(at.size());
             py::array_t<float> positions({n, py::ssize_t{3}}), directions({n, py::ssize_t{3}});
             float* p = positions.mutable_data();
             float* d = directions.mutable_data();
             for (const PointOnSpline& x : at) {
               *p++ = x.position.x;
               *p++ = x.position.y;
               *p++ = x.position.z;
               *d++ = x.direction.x;
               *d++ = x.direction.y;
               *d++ = x.direction.z;
             }
             return py::make_tuple(positions, directions);
           },
           py::arg("spline"), py::arg("lengths"), "View-space (positions, directions), each (n, 3).")
      .def("sample",
           [](Figure& f, const py::handle& s, int steps) {
             const int spline = SplineIndex(f, s);
             std::vector<Vector> points;
             {
               py::gil_scoped_release release;
               points = f.Sample(spline, steps);
             }
             return Rows(points);
           },
           py::arg("spline"), py::arg("steps") = 30,
           "(segments * steps + 1, 3) view-space points by forward differencing, in travel order.")
      .def("svg_path",
           [](Figure& f, const py::handle& s, const std::string& space) { return f.SvgPath(SplineIndex(f, s), SpaceNamed(space)); },
           py::arg("spline"), py::arg("space") = "screen")
      .def("validate", &Figure::Validate, "Problems found in the figure; empty when it is sound.");
}
