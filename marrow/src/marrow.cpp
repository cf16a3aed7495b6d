// SPDX-License-Identifier: MIT
// Zero-filling allocator with exact live-block accounting.
#include "marrow/marrow.h"

#include <atomic>
#include <cstdlib>

namespace {

std::atomic<long> g_allocSeg{0};
std::atomic<long> g_allocExt{0};
std::atomic<long> g_freeSeg{0};
std::atomic<long> g_freeExt{0};
thread_local long t_budget = -1;  // allocations left before failing; -1: unlimited

void* Allocate(std::size_t size, std::atomic<long>& counter) {
  if (t_budget == 0) return nullptr;
  if (t_budget > 0) --t_budget;
  void* block = std::calloc(1, size != 0 ? size : 1);
  if (block != nullptr) counter.fetch_add(1, std::memory_order_relaxed);
  return block;
}

void Release(void* block, std::atomic<long>& counter) {
  if (block == nullptr) return;
  counter.fetch_add(1, std::memory_order_relaxed);
  std::free(block);
}

}  // namespace

extern "C" {

void* AllocSeg(size_t size) { return Allocate(size, g_allocSeg); }
void FreeSeg(void* block) { Release(block, g_freeSeg); }
void* AllocExt(size_t size) { return Allocate(size, g_allocExt); }
void FreeExt(void* block) { Release(block, g_freeExt); }

long MarrowLiveBlocks(void) {
  return g_allocSeg.load() + g_allocExt.load() - g_freeSeg.load() - g_freeExt.load();
}
long MarrowAllocSegCount(void) { return g_allocSeg.load(); }
long MarrowAllocExtCount(void) { return g_allocExt.load(); }
long MarrowFreeSegCount(void) { return g_freeSeg.load(); }
long MarrowFreeExtCount(void) { return g_freeExt.load(); }
void MarrowFailAfter(long n) { t_budget = n < 0 ? -1 : n; }

}  // extern "C"
