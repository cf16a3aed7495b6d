// The control-point record: ids, copying, destruction and its releases,
// the memory it comes from, and the muscle, delta, In and skin queries.
#include <gtest/gtest.h>

#include "figure_test.h"

namespace splinecore {
namespace {

using test::TestFigure;

using SegmentCPTest = test::FigureTest;

TEST_F(SegmentCPTest, FigureConstructorTakesConsecutiveIds) {
  FigureCache cache{};
  cache.nextId = 7;
  SegmentCP* a = new SegmentCP(&cache);
  SegmentCP* b = new SegmentCP(&cache);
  SegmentCP* plain = new SegmentCP();
  EXPECT_EQ(a->id, 7u);
  EXPECT_EQ(b->id, 8u);
  EXPECT_EQ(cache.nextId, 9u);  // the default constructor took none
  EXPECT_EQ(plain->id, 0u);     // zero-filled block, untouched
  for (SegmentCP* cp : {a, b, plain}) {
    EXPECT_EQ(cp->cache, nullptr);  // the pointer is never stored
    EXPECT_EQ(cp->stamp, 255);
    EXPECT_EQ(cp->flags, 0u);  // a fresh control point caches nothing
  }
  delete a;
  delete b;
  delete plain;
}

TEST_F(SegmentCPTest, NewAndDeleteGoThroughTheMemoryServices) {
  const long allocs = MarrowAllocSegCount();
  const long frees = MarrowFreeSegCount();
  SegmentCP* cp = new SegmentCP();
  EXPECT_EQ(MarrowAllocSegCount(), allocs + 1);
  delete cp;
  EXPECT_EQ(MarrowFreeSegCount(), frees + 1);
}

TEST_F(SegmentCPTest, ArraysComeFromTheGeneralHeap) {
  const long allocs = MarrowAllocSegCount();
  SegmentCP* array = new SegmentCP[3];
  EXPECT_EQ(MarrowAllocSegCount(), allocs);
  EXPECT_EQ(array[2].stamp, 255);
  delete[] array;
}

TEST_F(SegmentCPTest, CopyAndAssignmentCopyEveryMember) {
  SegmentCP* a = f.NewCP(Vector(1, 2, 3), cpflag::smooth | cpflag::touched);
  SegmentCP *b = f.NewCP(Vector(4, 5, 6)), *c = f.NewCP(Vector(7, 8, 9)), *below = f.NewCP(Vector(0, 0, 0));
  f.Open({a, b, c});
  f.Open({below});
  TestFigure::Stack({a, below});
  a->tag = 0xdeadbeef;
  a->indelta = Delta{1, 2, 3};
  a->screenStamp = 17;
  a->stamp = 42;

  SegmentCP copy(*a);
  EXPECT_EQ(copy.prev, a->prev);
  EXPECT_EQ(copy.next, b);
  EXPECT_EQ(copy.tag, 0xdeadbeefu);
  EXPECT_EQ(copy.flags, a->flags);
  EXPECT_EQ(copy.p == a->p, 1);
  EXPECT_EQ(copy.indelta.magnitude, 3.0f);
  EXPECT_EQ(copy.stackNext, a->stackNext);
  EXPECT_EQ(copy.head, a);  // the original's head, not the copy itself
  EXPECT_EQ(copy.cache, &f.cache);
  EXPECT_EQ(copy.id, a->id);
  EXPECT_EQ(copy.stamp, 42);
  EXPECT_EQ(copy.screenStamp, 17);

  SegmentCP assigned;
  assigned = *c;
  EXPECT_EQ(assigned.prev, b);
  EXPECT_EQ(assigned.id, c->id);
  EXPECT_EQ(assigned.p == Vector(7, 8, 9), 1);
  copy.cache = nullptr;  // these stack copies must not leave a's group list
  assigned.cache = nullptr;
}

TEST_F(SegmentCPTest, DestroyingACopyReleasesTheMuscleDataOfItsIdInEveryTable) {
  SegmentCP* cp = f.NewCP(Vector(0, 0, 0));
  f.Open({cp});
  MuscleTable* first = f.AddMuscleTable(4);
  MuscleCPData* data1 = f.AddMuscleData(cp);
  f.AddEffect<test::FixedEffect>(data1);
  f.AddEffect<test::FixedEffect>(data1);
  MuscleTable* second = f.AddMuscleTable(4);
  f.AddMuscleData(cp);
  const long live = MarrowLiveBlocks();

  SegmentCP* copy = new SegmentCP(*cp);
  delete copy;
  EXPECT_EQ(first->cpData[cp->id], nullptr);
  EXPECT_EQ(second->cpData[cp->id], nullptr);
  EXPECT_EQ(MarrowLiveBlocks(), live - 4);  // two records, two effects
}

TEST_F(SegmentCPTest, IdAtCountIsOutsideTheTable) {
  MuscleTable* table = f.AddMuscleTable(2);
  f.cache.nextId = 2;
  SegmentCP* cp = f.NewCP(Vector(0, 0, 0));
  f.Open({cp});
  ASSERT_EQ(cp->id, 2u);
  EXPECT_EQ(cp->IsMuscle(), 0);
  EXPECT_EQ(cp->GetMuscleCPData(), nullptr);
  cp->indelta = Delta{5, 6, 7};
  f.SetMuscleMode(true);
  EXPECT_EQ(&cp->Getindelta(), &cp->indelta);
  EXPECT_EQ(table->count, 2);
}

TEST_F(SegmentCPTest, DeltaInForceFollowsMuscleModeAndData) {
  f.AddMuscleTable(4);
  SegmentCP* cp = f.NewCP(Vector(0, 0, 0));
  f.Open({cp});
  MuscleCPData* data = f.AddMuscleData(cp);
  EXPECT_EQ(cp->IsMuscle(), 1);
  EXPECT_EQ(&cp->Getindelta(), &cp->indelta);  // not in muscle mode
  EXPECT_EQ(&cp->Getoutdelta(), &cp->outdelta);
  f.SetMuscleMode(true);
  EXPECT_EQ(&cp->Getindelta(), &data->indelta);
  EXPECT_EQ(&cp->Getoutdelta(), &data->outdelta);
  f.cache.mode = 0xff & ~kMuscleMode;  // only bit value 8 counts
  EXPECT_EQ(&cp->Getindelta(), &cp->indelta);
}

TEST_F(SegmentCPTest, NoTableOrArrayMeansNoMuscleData) {
  SegmentCP* cp = f.NewCP(Vector(0, 0, 0));
  f.Open({cp});
  EXPECT_EQ(cp->IsMuscle(), 0);
  MuscleTable* table = f.AddMuscleTable(4);
  MuscleCPData** array = table->cpData;
  table->cpData = nullptr;
  EXPECT_EQ(cp->GetMuscleCPData(), nullptr);
  table->cpData = array;
}

TEST_F(SegmentCPTest, InFlagBelongsToTheFigure) {
  SegmentCP *a = f.NewCP(Vector(0, 0, 0)), *b = f.NewCP(Vector(1, 0, 0));
  f.Open({a, b});
  f.record.figureFlags = 0xf0;
  a->SetIn(3);
  EXPECT_EQ(b->IsIn(), 1);
  EXPECT_EQ(f.record.figureFlags, 0xf1u);
  b->SetIn(2);
  EXPECT_EQ(a->IsIn(), 0);
  EXPECT_EQ(f.record.figureFlags, 0xf0u);
  a->OnIn();
  EXPECT_EQ(b->IsIn(), 1);
  b->OffIn();
  EXPECT_EQ(f.record.figureFlags, 0xf0u);
}

TEST_F(SegmentCPTest, SkinIsEitherSkinFlag) {
  SegmentCP cp;
  cp.flags = cpflag::skinB;
  EXPECT_EQ(cp.IsSkin(), 1);
  cp.flags |= cpflag::skinA | cpflag::smooth;
  cp.OffSkin();
  EXPECT_EQ(cp.IsSkin(), 0);
  EXPECT_EQ(cp.flags, cpflag::smooth);
}

TEST_F(SegmentCPTest, DestructorLeavesTheMatchingGroupList) {
  SegmentCP* plain = f.NewCP(Vector(0, 0, 0));
  SegmentCP* skin = f.NewCP(Vector(1, 0, 0), cpflag::skinB);
  plain->AddToGroup(&f.cache.groupList, 1);
  plain->AddToGroup(&f.cache.skinGroupList, 1);
  skin->AddToGroup(&f.cache.groupList, 1);
  skin->AddToGroup(&f.cache.skinGroupList, 1);
  delete plain;
  delete skin;
  // Each left only the list that matches its skin flags.
  ASSERT_NE(f.cache.groupList, nullptr);
  EXPECT_EQ(f.cache.groupList->cp, skin);
  EXPECT_EQ(f.cache.groupList->next, nullptr);
  ASSERT_NE(f.cache.skinGroupList, nullptr);
  EXPECT_EQ(f.cache.skinGroupList->cp, plain);
  EXPECT_EQ(f.cache.skinGroupList->next, nullptr);
}

TEST_F(SegmentCPTest, DestructorWithoutCacheTouchesNoHostRecord) {
  f.AddMuscleTable(4);
  SegmentCP* cp = f.NewCP(Vector(0, 0, 0));
  cp->AddToGroup(&f.cache.groupList, 1);
  MuscleCPData* data = f.AddMuscleData(cp);
  cp->cache = nullptr;
  delete cp;
  ASSERT_NE(f.cache.groupList, nullptr);  // the node stays
  EXPECT_EQ(f.cache.muscleTable->cpData[0], data);
}

}  // namespace
}  // namespace splinecore
