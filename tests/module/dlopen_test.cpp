// Loads the library as a host that resolves it at run time would: dlopen,
// exported operations by symbol, a small figure, dlclose. This executable
// does not link splinecore; the headers only give it the record layouts.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "marrow/marrow.h"
#include "splinecore/segment_cp.h"
#include "splinecore/version.h"

namespace {

using splinecore::FigureCache;
using splinecore::SegmentCP;
using splinecore::Vector;

using ConstructFn = void (*)(SegmentCP*, FigureCache*);
using MemberFn = void (*)(SegmentCP*);
using FreeSplineFn = void (*)(SegmentCP*);
using LengthFn = float (*)(SegmentCP*);

class Library {
 public:
  Library() : handle_(dlopen(SPLINECORE_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL)) {}
  ~Library() {
    if (handle_ != nullptr) dlclose(handle_);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  bool Loaded() const { return handle_ != nullptr; }
  template <class Fn>
  Fn Resolve(const char* symbol) const {
    return reinterpret_cast<Fn>(dlsym(handle_, symbol));
  }

 private:
  void* handle_;
};

TEST(Dlopen, TheLoadedLibraryHasTheHeadersLayoutAndVersion) {
  Library library;
  ASSERT_TRUE(library.Loaded()) << dlerror();
  auto fingerprint = library.Resolve<std::uint64_t (*)()>("_ZN10splinecore17LayoutFingerprintEv");
  auto version = library.Resolve<const char* (*)()>("_ZN10splinecore7VersionEv");
  ASSERT_NE(fingerprint, nullptr);
  ASSERT_NE(version, nullptr);
  EXPECT_EQ(fingerprint(), splinecore::kLayoutFingerprint);
  EXPECT_STREQ(version(), SPLINECORE_VERSION_STRING);
}

TEST(Dlopen, LoadsResolvesBuildsAFigureAndUnloads) {
  const long before = MarrowLiveBlocks();
  {
    Library library;
    ASSERT_TRUE(library.Loaded()) << dlerror();
    auto construct = library.Resolve<ConstructFn>("_ZN10splinecore9SegmentCPC1EPNS_11FigureCacheE");
    auto setHead = library.Resolve<MemberFn>("_ZN10splinecore9SegmentCP7SetHeadEv");
    auto deleteAll = library.Resolve<FreeSplineFn>("_ZN10splinecore11DeleteAllCPEPNS_9SegmentCPE");
    auto totalLength = library.Resolve<LengthFn>("_ZN10splinecore14GetTotalLengthEPNS_9SegmentCPE");
    ASSERT_NE(construct, nullptr);
    ASSERT_NE(setHead, nullptr);
    ASSERT_NE(deleteAll, nullptr);
    ASSERT_NE(totalLength, nullptr);

    // A host figure with identity view transforms.
    FigureCache cache{};
    splinecore::ViewRecord view{};
    splinecore::FigureRecord record{};
    for (splinecore::Matrix* m : {&view.viewMatrix, &view.screenMatrix, &view.inverseScreenMatrix})
      for (int r = 0; r < 3; ++r) m->m[r][r] = 1.0f;
    cache.view = &view;
    cache.figure = &record;

    // An open spline of three peaked control points on the x axis, built in
    // AllocSeg blocks as the class's operator new would.
    SegmentCP* cps[3];
    const float x[3] = {0, 1, 3};
    for (int i = 0; i < 3; ++i) {
      cps[i] = static_cast<SegmentCP*>(AllocSeg(sizeof(SegmentCP)));
      construct(cps[i], &cache);
      cps[i]->cache = &cache;
      setHead(cps[i]);
      cps[i]->p = Vector(x[i], 0, 0);
      if (i > 0) (cps[i]->prev = cps[i - 1])->next = cps[i];
    }
    EXPECT_EQ(cache.nextId, 3u);
    EXPECT_EQ(cps[2]->id, 2u);
    EXPECT_EQ(cps[0]->head, cps[0]);
    // Collinear points: every chord lies on the axis, so the 60 chords add
    // up to the distance 3 up to float rounding of the running sums.
    EXPECT_NEAR(totalLength(cps[0]), 3.0f, 1e-5f);

    deleteAll(cps[0]);
  }
  EXPECT_EQ(MarrowLiveBlocks(), before);
}

}  // namespace
