// MConvert: muscle-mode tangents from the stored model positions, with no
// view transform, and the muscle-mode hook path.
#include "convert_figure.h"

namespace splinecore {
namespace {

using test::ExpectVector;
using MConvertTest = test::ConvertFigure;

TEST_F(MConvertTest, ModelSpaceTangentsWhateverTheView) {
  TurnedView();
  SegmentCP* cp = CP(0, 0);
  f.Open({CP(0, 2), cp, CP(-2, 0)});
  cp->MConvert();
  ExpectVector(cp->mit, 1, 0, 0);
  ExpectVector(cp->mot, 0, 1, 0);
  EXPECT_FALSE(cp->IsMconverted());  // the getters set it, not MConvert
}

TEST_F(MConvertTest, AgreesWithConvertWhenScreenEqualsModel) {
  SegmentCP* cp = CP(0.25f, 0.5f, 0.125f);
  f.Open({CP(1, 3, -1), cp, CP(-2, 0.5f, 0.75f)});
  cp->indelta = Delta{30, -20, 1.5f};
  cp->outdelta = Delta{-200, 45, 0.75f};
  cp->OnSmooth();
  cp->Convert();
  cp->MConvert();
  ExpectVector(cp->mit, cp->it);
  ExpectVector(cp->mot, cp->ot);
}

// The hook figure's partners have muscle handle offsets (3,0,0) and (0,3,0).
TEST_F(MConvertTest, HookInterpolatesTheMuscleOffsetsAfterPlacingItself) {
  Build(0.5f);
  hook->MConvert();
  ExpectVector(hook->mit, 1.5f, 1.5f, 0);
  ExpectVector(hook->mot, 1.5f, 1.5f, 0);
  EXPECT_TRUE(hook->IsMpCached());
  ExpectVector(hook->p, 1.5f, 0, 0);
}

TEST_F(MConvertTest, HookWithoutPrevIsReversed) {
  Build(0.5f, false);
  hook->MConvert();
  ExpectVector(hook->mit, -1.5f, -1.5f, 0);
  ExpectVector(hook->mot, -1.5f, -1.5f, 0);
}

TEST_F(MConvertTest, HookSnapsSToThreeQuarters) {
  Build(0.7f);
  hook->MConvert();
  EXPECT_EQ(hook->s, 0.75f);
  ExpectVector(hook->mit, 0.75f, 2.25f, 0);
}

TEST_F(MConvertTest, HookWithoutPartnersIsNotWritten) {
  BuildPartnerless(Vector(10, 10, 0));
  hook->mit = hook->mot = test::kSentinel;
  hook->MConvert();
  ExpectVector(hook->mit, test::kSentinel);
  ExpectVector(hook->mot, test::kSentinel);
}

TEST_F(MConvertTest, HookInterpolationRoundsEachOfItsThreeSteps) {
  BuildRoundingFigure();
  hook->MConvert();
  ExpectVector(hook->mit, 0, kThreeRoundings, 0);
}

}  // namespace
}  // namespace splinecore
