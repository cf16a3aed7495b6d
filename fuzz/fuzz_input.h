// Reads a fuzzer's bytes as a stream of small choices and float values.
// Past the end every read gives 0, so any input decodes to something.
#ifndef SPLINECORE_FUZZ_FUZZ_INPUT_H
#define SPLINECORE_FUZZ_FUZZ_INPUT_H

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "splinecore/geometry.h"

namespace splinecore::fuzz {

class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool Empty() const { return pos_ >= size_; }
  std::uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  // A choice in [0, n); n must be at least 1.
  unsigned Below(unsigned n) { return Byte() % n; }
  bool Bit() { return (Byte() & 1) != 0; }

  // One selector byte: below 24 a value from the table of hostile floats,
  // below 160 a moderate value (a multiple of 0.25 in [-17, 17)), else the
  // next four bytes as raw bits (any NaN payload, denormal or extreme).
  float Float() {
    static constexpr float kSpecial[] = {
        0.0f, -0.0f, 1.0f, -1.0f, 0.5f, 2.0f, 3.0f, 90.0f, 360.0f, -450.75f, 0.375f, 0.625f,
        std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::quiet_NaN(),
        std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(), FLT_MAX, -FLT_MAX,
        std::numeric_limits<float>::denorm_min(), -FLT_MIN, 1e30f, -1e-30f, 2147483520.0f, 3e9f};
    static_assert(sizeof kSpecial / sizeof kSpecial[0] == 24, "selector ranges");
    const std::uint8_t sel = Byte();
    if (sel < 24) return kSpecial[sel];
    if (sel < 160) return (static_cast<int>(sel) - 92) * 0.25f;
    std::uint32_t bits = 0;
    for (int i = 0; i < 4; ++i) bits = (bits << 8) | Byte();
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
  }

  Vector Vec() {
    const float x = Float();
    const float y = Float();
    return Vector(x, y, Float());
  }

  Delta Turn() {
    const float pitch = Float();
    const float yaw = Float();
    return Delta{pitch, yaw, Float()};
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t pos_ = 0;
};

// The fuzzed effects' delta rule: with `flags` nonzero, turn d by `turn`'s
// angles and take its magnitude; returns the flags (the effect's answer).
inline int TurnDelta(Delta* d, const Delta& turn, int flags) {
  if (flags == 0) return 0;
  d->pitch += turn.pitch;
  d->yaw += turn.yaw;
  d->magnitude = turn.magnitude;
  return flags;
}

}  // namespace splinecore::fuzz

#endif
