// SPDX-License-Identifier: MIT
/// @file
/// splinecore: lazy, bit-exact spline geometry for a modelling host.
///
/// Umbrella header: includes the whole public interface.
#ifndef SPLINECORE_SPLINECORE_H
#define SPLINECORE_SPLINECORE_H

#include "splinecore/export.h"
#include "splinecore/figure.h"
#include "splinecore/figure_file.h"
#include "splinecore/geometry.h"
#include "splinecore/groups.h"
#include "splinecore/hooks.h"
#include "splinecore/host.h"
#include "splinecore/measure.h"
#include "splinecore/segment_cp.h"
#include "splinecore/slices.h"
#include "splinecore/validate.h"
#include "splinecore/version.h"

/// @namespace splinecore
/// The library's public interface; internals live in splinecore::detail.

#endif
