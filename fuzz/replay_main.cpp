// Plain driver for the fuzz targets when they are built without libFuzzer:
// feeds every file named on the command line (directories: every regular
// file in them, in name order) to LLVMFuzzerTestOneInput once. A failed
// check inside the target aborts, so a clean exit means every input passed.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> Inputs(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    const std::filesystem::path arg(argv[i]);
    if (!std::filesystem::is_directory(arg)) {
      files.push_back(arg);
      continue;
    }
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator(arg))
      if (entry.is_regular_file()) found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
  }
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::filesystem::path> files = Inputs(argc, argv);
  if (files.empty()) {
    std::fprintf(stderr, "usage: %s <file or directory>...\n", argv[0]);
    return 2;
  }
  for (const auto& file : files) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
      std::fprintf(stderr, "cannot read %s\n", file.c_str());
      return 2;
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    std::printf("replay %s (%zu bytes)\n", file.c_str(), bytes.size());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  }
  std::printf("replayed %zu inputs\n", files.size());
  return 0;
}
