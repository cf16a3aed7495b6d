// A host whose memory services do not zero their blocks: this executable
// exports AllocSeg and AllocExt filling each block with 0xA5 bytes, which
// the libraries bind to in place of marrow's. Whatever a record's creator
// must initialise, it does: the answers do not change.
#include <cstddef>
#include <cstdlib>
#include <cstring>

extern "C" {

__attribute__((visibility("default"))) void* AllocSeg(std::size_t size) {
  void* block = std::malloc(size != 0 ? size : 1);
  if (block != nullptr) std::memset(block, 0xA5, size);
  return block;
}
__attribute__((visibility("default"))) void FreeSeg(void* block) { std::free(block); }
__attribute__((visibility("default"))) void* AllocExt(std::size_t size) { return AllocSeg(size); }
__attribute__((visibility("default"))) void FreeExt(void* block) { std::free(block); }

}  // extern "C"
