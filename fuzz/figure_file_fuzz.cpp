// Fuzz target for figure files: any bytes must give either a description
// whose figure is valid, answers every query, writes a file that reads back
// to the same text, and survives a reversal and muscle mode; or a
// FigureFileError with a reason and a line inside the text. Never a crash,
// and every block taken from the memory services is back afterwards.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "marrow/marrow.h"
#include "splinecore/figure_file.h"

namespace {

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "figure_file: %s\n", what.c_str());
  std::abort();
}

// Every answer a host's first redraw asks for.
void AskEverything(splinecore::Figure& f) {
  using namespace splinecore;
  volatile float sink = 0;
  const Space space = f.MuscleMode() ? Space::kMuscle : Space::kScreen;
  for (int s = 0; s < f.SplineCount(); ++s) {
    sink = sink + f.SplineLength(s) + f.PointAtLength(s, 1.0f).position.x;
    for (int i = 0; i < f.PointCount(s); ++i) {
      const PointId id{s, i};
      sink = sink + f.Position(id, Space::kModel).y + f.Position(id, space).x;
      if (f.OwnsSegment(id)) sink = sink + f.Segment(id, space).h0.x + f.SegmentLength(id);
      for (const Bezier& b : f.HookPieces(id, space)) sink = sink + b.h1.y;
    }
  }
}

void CheckValid(splinecore::Figure& f, const char* when) {
  const std::vector<std::string> problems = f.Validate();
  if (!problems.empty()) Fail(std::string(when) + ": " + problems.front());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace splinecore;
  const long liveBefore = MarrowLiveBlocks();
  {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    FigureDescription d;
    bool read = false;
    try {
      d = ReadFigureFile(text);
      read = true;
    } catch (const FigureFileError& e) {
      const long lines = 1 + std::count(text.begin(), text.end(), '\n');
      if (e.reason().empty()) Fail("an error without a reason");
      if (e.line() < 0 || e.line() > lines) Fail("an error line outside the text");
    }
    if (read) {
      const std::string written = WriteFigureFile(d);
      if (WriteFigureFile(ReadFigureFile(written)) != written) Fail("a written file reads back differently");
      Figure f(d);
      CheckValid(f, "as read");
      AskEverything(f);
      try {
        f.Reverse(f.SplineCount() / 2);
      } catch (const FigureError&) {
        // Refused: an open spline whose last point carries hooks.
      }
      CheckValid(f, "after the reversal");
      f.SetMuscleMode(true);
      AskEverything(f);
    }
  }
  if (MarrowLiveBlocks() != liveBefore) Fail("memory-service blocks leaked");
  return 0;
}
