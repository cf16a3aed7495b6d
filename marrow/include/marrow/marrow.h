// SPDX-License-Identifier: MIT
/* marrow: the host's memory services as the splinecore library sees them.
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

#if defined(__GNUC__) || defined(__clang__)
#define MARROW_API __attribute__((visibility("default")))
#else
#define MARROW_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

MARROW_API void* AllocSeg(size_t size);
MARROW_API void FreeSeg(void* block);
MARROW_API void* AllocExt(size_t size);
MARROW_API void FreeExt(void* block);

/* Blocks handed out and not yet released, both pools together. */
MARROW_API long MarrowLiveBlocks(void);
/* Successful calls of each entry since load (null frees are not counted). */
MARROW_API long MarrowAllocSegCount(void);
MARROW_API long MarrowAllocExtCount(void);
MARROW_API long MarrowFreeSegCount(void);
MARROW_API long MarrowFreeExtCount(void);
/* Failure injection for the calling thread: the next n allocations succeed,
 * every one after them returns null. A negative n turns it off (the default). */
MARROW_API void MarrowFailAfter(long n);

#ifdef __cplusplus
}
#endif

#endif
