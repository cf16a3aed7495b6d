#include "figure_invariants.h"

#include <gtest/gtest.h>

#include <sstream>

#include "splinecore/validate.h"

namespace splinecore::test {

std::vector<std::string> FigureViolations(const std::vector<SegmentCP*>& firsts) {
  std::vector<std::string> problems;
  auto collect = [](const FigureViolation& v, void* context) {
    std::ostringstream out;
    out << FigureRuleName(v.rule) << " at " << static_cast<const void*>(v.cp) << ": " << v.message;
    static_cast<std::vector<std::string>*>(context)->push_back(out.str());
  };
  ValidateFigure(firsts.data(), static_cast<int>(firsts.size()), collect, &problems);
  return problems;
}

std::vector<std::string> FigureViolations(std::initializer_list<SegmentCP*> firsts) {
  return FigureViolations(std::vector<SegmentCP*>(firsts));
}

void ExpectFigureInvariants(const std::vector<SegmentCP*>& firsts) {
  for (const std::string& problem : FigureViolations(firsts)) ADD_FAILURE() << problem;
}

void ExpectFigureInvariants(std::initializer_list<SegmentCP*> firsts) {
  ExpectFigureInvariants(std::vector<SegmentCP*>(firsts));
}

}  // namespace splinecore::test
