// SPDX-License-Identifier: MIT
// The version and layout fingerprint the library was built with.
#include "splinecore/version.h"

namespace splinecore {

const char* Version() { return SPLINECORE_VERSION_STRING; }

std::uint64_t LayoutFingerprint() { return kLayoutFingerprint; }

}  // namespace splinecore
