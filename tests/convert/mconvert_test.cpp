// MConvert: muscle-mode tangents from the stored model positions, with no
// view transform, and the muscle-mode hook path.
#include <gtest/gtest.h>

#include <memory>

#include "marrow/marrow.h"
#include "test_figure.h"

namespace splinecore {
namespace {

using test::MakeMatrix;
using test::TestFigure;

const Vector kSentinel(-77, -77, -77);

class MConvertTest : public ::testing::Test {
 protected:
  void TearDown() override {
    figure_.reset();
    EXPECT_EQ(MarrowLiveBlocks(), live_);
  }
  TestFigure& F() { return *figure_; }
  SegmentCP* CP(float x, float y, float z = 0) {
    SegmentCP* cp = F().NewCP(Vector(x, y, z));
    cp->indelta = Delta{0, 0, 1};
    cp->outdelta = Delta{0, 0, 1};
    return cp;
  }
  HookSegmentCP* Hook(float s) {
    HookSegmentCP* h = F().NewHook(s);
    h->indelta = Delta{0, 0, 1};
    h->outdelta = Delta{0, 0, 1};
    return h;
  }

  long live_ = MarrowLiveBlocks();
  std::unique_ptr<TestFigure> figure_ = std::make_unique<TestFigure>();
};

TEST_F(MConvertTest, ModelSpaceTangentsWhateverTheView) {
  F().SetScreen(MakeMatrix({0, -2, 0, 10, 2, 0, 0, 20, 0, 0, 2, 30}),
                MakeMatrix({0, 0.5f, 0, -10, -0.5f, 0, 0, 5, 0, 0, 0.5f, -15}));
  SegmentCP* cp = CP(0, 0);
  F().Open({CP(0, 2), cp, CP(-2, 0)});
  cp->MConvert();
  EXPECT_EQ(cp->mit == Vector(1, 0, 0), 1);
  EXPECT_EQ(cp->mot == Vector(0, 1, 0), 1);
  EXPECT_FALSE(cp->IsMconverted());  // the getters set it, not MConvert
}

TEST_F(MConvertTest, AgreesWithConvertWhenScreenEqualsModel) {
  SegmentCP* cp = CP(0.25f, 0.5f, 0.125f);
  F().Open({CP(1, 3, -1), cp, CP(-2, 0.5f, 0.75f)});
  cp->indelta = Delta{30, -20, 1.5f};
  cp->outdelta = Delta{-200, 45, 0.75f};
  cp->OnSmooth();
  cp->Convert();
  cp->MConvert();
  EXPECT_EQ(cp->mit == cp->it, 1);
  EXPECT_EQ(cp->mot == cp->ot, 1);
}

// Carrier C (0,0,0) -> N (3,0,0); partner X on C with muscle handle offsets
// (3,0,0) (only next, at (-18,0,0)); partner Y on N with offsets (0,3,0).
class HookMConvertTest : public MConvertTest {
 protected:
  void Build(float s, bool withPrev) {
    carrier = CP(0, 0);
    end = CP(3, 0);
    x = CP(0, 0);
    y = CP(3, 0);
    hook = Hook(s);
    F().Open({carrier, end});
    F().Open({x, CP(-18, 0)});
    F().Open({y, CP(3, -18)});
    if (withPrev) {
      F().Open({CP(10, 10), hook});
    } else {
      F().Open({hook, CP(10, 10)});
    }
    TestFigure::Stack({x, carrier, hook});
    TestFigure::Stack({y, end});
  }
  SegmentCP* carrier = nullptr;
  SegmentCP* end = nullptr;
  SegmentCP* x = nullptr;
  SegmentCP* y = nullptr;
  HookSegmentCP* hook = nullptr;
};

TEST_F(HookMConvertTest, InterpolatesTheMuscleOffsets) {
  Build(0.5f, true);
  hook->MConvert();
  EXPECT_EQ(hook->mit == Vector(1.5f, 1.5f, 0), 1);
  EXPECT_EQ(hook->mot == Vector(1.5f, 1.5f, 0), 1);
  EXPECT_TRUE(hook->IsMpCached());  // its own position was placed on the way
  EXPECT_EQ(hook->p == Vector(1.5f, 0, 0), 1);
}

TEST_F(HookMConvertTest, WithoutPrevReversed) {
  Build(0.5f, false);
  hook->MConvert();
  EXPECT_EQ(hook->mit == Vector(-1.5f, -1.5f, 0), 1);
  EXPECT_EQ(hook->mot == Vector(-1.5f, -1.5f, 0), 1);
}

TEST_F(HookMConvertTest, SnapsSToThreeQuarters) {
  Build(0.7f, true);
  hook->MConvert();
  EXPECT_EQ(hook->s, 0.75f);
  EXPECT_EQ(hook->mit == Vector(0.75f, 2.25f, 0), 1);
}

TEST_F(HookMConvertTest, WithoutPartnersNothingIsWritten) {
  carrier = CP(0, 0);
  end = CP(3, 0);
  hook = Hook(0.5f);
  F().Open({carrier, end});
  F().Open({CP(10, 10), hook});
  TestFigure::Stack({carrier, hook});
  hook->mit = kSentinel;
  hook->mot = kSentinel;
  hook->MConvert();
  EXPECT_EQ(hook->mit == kSentinel, 1);
  EXPECT_EQ(hook->mot == kSentinel, 1);
}

TEST_F(HookMConvertTest, InterpolationRoundsEachOfItsThreeSteps) {
  // As in the screen-space test: offsets u = float(69.3125 * k) and
  // v = float(1.1875 * k) along y, s = 0.75; three roundings give
  // 0x1.84aab0p+2, one rounding 0x1.84aaacp+2 (python3, struct float32).
  carrier = CP(0, 0);
  end = CP(3, 0);
  x = CP(0, 0);
  y = CP(3, 0);
  hook = Hook(0.75f);
  F().Open({carrier, end});
  F().Open({x, CP(0, -138.625f)});
  F().Open({y, CP(3, -2.375f)});
  F().Open({CP(1.5f, 100), hook});
  TestFigure::Stack({x, carrier, hook});
  TestFigure::Stack({y, end});
  hook->MConvert();
  EXPECT_EQ(hook->mit == Vector(0, 0x1.84aab0p+2f, 0), 1) << hook->mit.y;
}

}  // namespace
}  // namespace splinecore
