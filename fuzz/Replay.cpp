// Stands in for the fuzzer: runs a target over all files of the directories named, in the order of their names. With
// any compiler and in every build, so that what fuzzing once found stays found.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/Fuzz.h"

// Custom mutators refer to it; nothing mutates here.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t*, std::size_t size, std::size_t) { return size; }

namespace {

void Run(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const std::filesystem::path& file : files) {
    std::printf("%s\n", file.filename().c_str());  // the last name printed is the one that failed
    std::fflush(stdout);
    Run(file);
  }
  if (files.empty()) std::fputs("Nothing to replay\n", stderr);
  return files.empty() ? 1 : 0;
}
