// Prints, for the figure file given, each spline's length and the screen
// Bezier points of its segments as the bits of each float, one spline per
// line: the C++ side of the Python module's agreement test.
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "splinecore/figure_file.h"

namespace {

void Put(float v) {
  std::uint32_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  std::printf(" %08" PRIx32, bits);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::ifstream in(argv[1]);
  std::ostringstream text;
  text << in.rdbuf();
  splinecore::Figure f(splinecore::ReadFigureFile(text.str()));
  for (int s = 0; s < f.SplineCount(); ++s) {
    Put(f.SplineLength(s));
    for (int i = 0; i < f.PointCount(s); ++i) {
      if (!f.OwnsSegment(splinecore::PointId{s, i})) continue;
      const splinecore::Bezier b = f.Segment(splinecore::PointId{s, i}, splinecore::Space::kScreen);
      for (const splinecore::Vector& v : {b.p0, b.h0, b.h1, b.p1}) {
        Put(v.x);
        Put(v.y);
        Put(v.z);
      }
    }
    std::printf("\n");
  }
}
