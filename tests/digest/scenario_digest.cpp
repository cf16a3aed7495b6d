// Prints a digest of every value a fixed scenario produces: screen, model
// and muscle handles, hook pieces, lengths, points at a length, evaluation
// and forward differencing. Builds that compute bit for bit the same print
// the same line; the i386 build compares its line with the x86-64 build's.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "test_figure.h"

namespace {

using namespace splinecore;
using test::MakeMatrix;
using test::TestFigure;

class Digest {
 public:
  void Add(float f) {
    std::uint32_t bits;
    std::memcpy(&bits, &f, sizeof bits);
    for (int i = 0; i < 4; ++i) {
      hash_ ^= (bits >> (8 * i)) & 0xffu;
      hash_ *= 0x100000001b3ull;  // FNV-1a
    }
    ++count_;
  }
  void Add(const Vector& v) {
    Add(v.x);
    Add(v.y);
    Add(v.z);
  }
  void Print() const {
    std::printf("digest %016llx values %ld\n", static_cast<unsigned long long>(hash_), count_);
  }

 private:
  std::uint64_t hash_ = 0xcbf29ce484222325ull;
  long count_ = 0;
};

// Moves its control point by a fixed offset and turns its deltas.
struct Push : MuscleEffect {
  std::int32_t ApplyToPosition(std::int32_t, SegmentCP*, Vector* position) override {
    *position += Vector(0.3f, -0.2f, 0.1f);
    return 1;
  }
  std::int16_t ApplyToInDelta(std::int32_t, SegmentCP*, Delta* d) override {
    d->pitch = 7.5f;
    d->magnitude = 1.1f;
    return 4;
  }
  std::int16_t ApplyToOutDelta(std::int32_t, SegmentCP*, Delta* d) override {
    d->yaw = -12.25f;
    return 1;
  }
};

}  // namespace

int main() {
  Digest digest;
  {
    TestFigure figure;
    // Rotation by atan(3/4) scaled by 5/2, translated; the inverse undoes it.
    figure.SetScreen(MakeMatrix({2.0f, -1.5f, 0, 100, 1.5f, 2.0f, 0, -50, 0, 0, 2.5f, 3}),
                     MakeMatrix({0.32f, 0.24f, 0, -20, -0.24f, 0.32f, 0, -8, 0, 0, 0.4f, -1.2f}));
    figure.SetView(MakeMatrix({0.8f, -0.6f, 0, 1, 0.6f, 0.8f, 0, 2, 0, 0, 1, -3}),
                   MakeMatrix({0.8f, 0.6f, 0, -2, -0.6f, 0.8f, 0, -1, 0, 0, 1, 3}));
    const std::uint32_t smooth = cpflag::smooth;
    SegmentCP* a[5] = {figure.NewCP({0, 0, 0}, smooth), figure.NewCP({1.3f, 0.7f, 0.2f}, smooth),
                       figure.NewCP({2.9f, 0.4f, -0.3f}), figure.NewCP({4.1f, 1.9f, 0.5f}, smooth),
                       figure.NewCP({5.2f, 1.1f, 0}, smooth)};
    SegmentCP* b[4] = {figure.NewCP({1.3f, -1.5f, 0}, smooth), figure.NewCP({1.3f, 0.7f, 0.2f}, smooth),
                       figure.NewCP({2.4f, 2.6f, 0.4f}, smooth), figure.NewCP({0.2f, 2.2f, -0.1f}, smooth)};
    a[1]->indelta = Delta{20, -35, 1.5f};
    a[3]->outdelta = Delta{-400.5f, 95, 0.75f};
    b[2]->indelta = Delta{0, 0, 2};
    figure.Open({a[0], a[1], a[2], a[3], a[4]});
    figure.Closed({b[0], b[1], b[2], b[3]});
    // A run of three hooks rides on a[2]'s segment, each the first point of a
    // short spline of its own; the partners are `top` and b[2].
    HookSegmentCP* hooks[3];
    SegmentCP* ends[3];
    const float params[3] = {0.25f, 0.5f, 0.75f};
    for (int i = 0; i < 3; ++i) {
      hooks[i] = figure.NewHook(params[i], smooth);
      ends[i] = figure.NewCP({3.0f + i, -1.0f - 0.5f * i, 0.3f}, smooth);
      figure.Open({hooks[i], ends[i]});
    }
    SegmentCP* top = figure.NewCP({2.9f, 0.4f, -0.3f});
    figure.Open({top});
    TestFigure::Stack({a[1], b[1]});
    TestFigure::Stack({a[3], b[2]});
    TestFigure::Stack({top, a[2], hooks[0], hooks[1], hooks[2]});
    figure.AddMuscleTable(64);
    figure.AddEffect<Push>(figure.AddMuscleData(a[3]));

    SegmentCP* all[] = {a[0], a[1], a[2], a[3], a[4], b[0], b[1], b[2], b[3],
                        hooks[0], hooks[1], hooks[2], ends[0], ends[1], ends[2], top};
    for (SegmentCP* cp : all) {
      digest.Add(cp->Getscreenp());
      digest.Add(cp->Getscreenit());
      digest.Add(cp->Getscreenot());
      digest.Add(cp->Getit());
      digest.Add(cp->Getot());
    }
    for (HookSegmentCP* h : hooks) {
      digest.Add(*h->Gethit());
      digest.Add(*h->Gethot());
      digest.Add(*h->Getpit());
      digest.Add(*h->Getpot());
      digest.Add(h->p);
    }
    for (SegmentCP* first : {a[0], b[0]}) {
      digest.Add(GetTotalLength(first));
      for (float length : {-0.5f, 0.0f, 1.0f, 2.75f, 6.5f, 100.0f}) {
        Vector position(0, 0, 0), direction(0, 0, 0);
        digest.Add(PositionDirectionFromSubLength(first, length, &position, &direction));
        digest.Add(position);
        digest.Add(direction);
      }
    }
    figure.SetMuscleMode(true);
    for (SegmentCP* cp : all) {
      cp->Touch(0);
      digest.Add(cp->Getmp());
      digest.Add(cp->Getmit());
      digest.Add(cp->Getmot());
    }
    for (HookSegmentCP* h : hooks) {
      digest.Add(*h->Getmhit());
      digest.Add(*h->Getmhot());
    }
    digest.Add(*hooks[2]->Getmpit());
    digest.Add(*hooks[2]->Getmpot());
    figure.SetMuscleMode(false);

    Vector p0 = a[0]->Getscreenp(), p1 = a[1]->Getscreenot(), p2 = a[2]->Getscreenit(), p3 = a[2]->Getscreenp();
    for (float t : {0.0f, 0.1f, 0.3333f, 0.5f, 0.9f, 1.0f, 1.25f}) {
      Vector out(0, 0, 0), flat(0, 0, 7);
      CalcPoint(p0, p1, p2, p3, t, out);
      CalcPoint2(p0, p1, p2, p3, t, flat);
      digest.Add(out);
      digest.Add(flat);
    }
    Cubic cubic{p0, p3, a[0]->Getot(), a[1]->Getit()};
    Column column{};
    InitFD2D(&column, &cubic, 17);
    for (int i = 0; i < 17; ++i) {
      BumpFD2D(&column);
      digest.Add(column.p);
    }
  }
  digest.Print();
  return MarrowLiveBlocks() == 0 ? 0 : 1;
}
