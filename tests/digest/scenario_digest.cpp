// Prints a digest of every answer the shared figures give (tests/figures,
// examples/figures and the loading figure-file fuzz inputs): positions,
// segments and hook pieces in every space, lengths, points at lengths,
// samples and SVG paths. Builds that compute bit for bit the same print the
// same line; the i386 build compares its line with the x86-64 build's.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "figure_corpus.h"
#include "marrow/marrow.h"

int main() {
  using namespace splinecore;
  std::uint64_t hash = 0xcbf29ce484222325ull;  // FNV-1a over bytes
  auto add = [&hash](std::uint32_t word, int bytes) {
    for (int i = 0; i < bytes; ++i) {
      hash ^= (word >> (8 * i)) & 0xffu;
      hash *= 0x100000001b3ull;
    }
  };
  long values = 0;
  {  // the figures are gone before the blocks are counted
    for (const FigureDescription& d : test::SharedFigures()) {
      Figure f(d);
      std::string svg;
      const std::vector<std::uint32_t> answers = test::Answers(f, &svg);
      for (std::uint32_t bits : answers) add(bits, 4);
      for (char c : svg) add(static_cast<unsigned char>(c), 1);
      values += static_cast<long>(answers.size());
    }
  }
  std::printf("digest %016llx values %ld\n", static_cast<unsigned long long>(hash), values);
  return MarrowLiveBlocks() == 0 ? 0 : 1;
}
