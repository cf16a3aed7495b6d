// SPDX-License-Identifier: MIT
/// @file
/// Symbol visibility for the splinecore shared library.
///
/// The library is built with -fvisibility=hidden; only declarations marked
/// SPLINECORE_API are exported. Internal operations carry no mark and stay
/// private to the shared object.
#ifndef SPLINECORE_EXPORT_H
#define SPLINECORE_EXPORT_H

/// @def SPLINECORE_API
/// Exports a declaration from the shared library; empty in a static build
/// (SPLINECORE_STATIC defined) and on compilers without visibility attributes.
#if defined(SPLINECORE_STATIC)
#define SPLINECORE_API
#elif defined(__GNUC__) || defined(__clang__)
#define SPLINECORE_API __attribute__((visibility("default")))
#else
#define SPLINECORE_API
#endif

#endif
