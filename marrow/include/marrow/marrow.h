// SPDX-License-Identifier: MIT
/** @file
 * marrow: the host's memory services as the splinecore library sees them.
 *
 * Four C entry points, resolved by symbol: a host executable that exports
 * its own AllocSeg/FreeSeg/AllocExt/FreeExt overrides these. New blocks are
 * zero-filled. Blocks of both pools may be released through either free
 * entry (slice records come from AllocSeg and go back with FreeExt).
 *
 * The counters below serve tests: they are exact and safe under concurrent
 * use from several threads. */
#ifndef MARROW_MARROW_H
#define MARROW_MARROW_H

#include <stddef.h>

/** @def MARROW_API
 * Exports a marrow entry point from the shared library. */
#if defined(__GNUC__) || defined(__clang__)
#define MARROW_API __attribute__((visibility("default")))
#else
#define MARROW_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A zero-filled block of `size` bytes from the segment pool (control points,
 * muscle data, slices); null when the allocation fails. */
MARROW_API void* AllocSeg(size_t size);
/** Releases a block of either pool; null does nothing. */
MARROW_API void FreeSeg(void* block);
/** A zero-filled block of `size` bytes from the extent pool (group nodes);
 * null when the allocation fails. */
MARROW_API void* AllocExt(size_t size);
/** Releases a block of either pool; null does nothing. */
MARROW_API void FreeExt(void* block);

/** Blocks handed out and not yet released, both pools together. */
MARROW_API long MarrowLiveBlocks(void);
/** Successful AllocSeg calls since load. */
MARROW_API long MarrowAllocSegCount(void);
/** Successful AllocExt calls since load. */
MARROW_API long MarrowAllocExtCount(void);
/** FreeSeg calls since load (null frees are not counted). */
MARROW_API long MarrowFreeSegCount(void);
/** FreeExt calls since load (null frees are not counted). */
MARROW_API long MarrowFreeExtCount(void);
/** Failure injection for the calling thread: the next n allocations succeed,
 * every one after them returns null. A negative n turns it off (the default). */
MARROW_API void MarrowFailAfter(long n);

#ifdef __cplusplus
}
#endif

#endif
