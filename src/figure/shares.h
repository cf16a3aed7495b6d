// SPDX-License-Identifier: MIT
// Work split across threads (internal): n items in `parts` consecutive
// shares, share p holding items [ShareBegin(n, p, parts),
// ShareBegin(n, p + 1, parts)), sizes within one of each other; and one
// function run per share.
#ifndef SPLINECORE_SRC_FIGURE_SHARES_H
#define SPLINECORE_SRC_FIGURE_SHARES_H

#include <algorithm>
#include <cstddef>
#include <thread>
#include <vector>

namespace splinecore::detail {

// How many shares `threads` (at least 1) take of n items when a share
// should hold about `least` items or more: at least one.
constexpr std::size_t Shares(int threads, std::size_t n, std::size_t least) {
  return std::min<std::size_t>(static_cast<std::size_t>(threads), n / least + 1);
}

// The first item of share `part`; n for part == parts.
constexpr std::size_t ShareBegin(std::size_t n, std::size_t part, std::size_t parts) { return n * part / parts; }

// The share holding item k (k < n).
constexpr std::size_t ShareOf(std::size_t k, std::size_t n, std::size_t parts) { return ((k + 1) * parts - 1) / n; }

// Runs f(part) for every part below `parts`, part 0 on this thread, and
// returns when all are done.
template <class F>
void OnThreads(std::size_t parts, F f) {
  std::vector<std::thread> workers;
  for (std::size_t k = 1; k < parts; ++k) workers.emplace_back(f, k);
  f(std::size_t{0});
  for (std::thread& w : workers) w.join();
}

}  // namespace splinecore::detail

#endif
