// replay.cpp - runs a fuzz target over the files of the folders that are named: the corpus as a
// test, with any compiler.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int count, char** arguments) {
  size_t files = 0;
  for (int i = 1; i < count; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
      // Every prefix of a small one too: the end of the bytes is where decoders go wrong.
      const size_t step = bytes.size() / 64 + 1;
      for (size_t size = bytes.size() % step; size <= bytes.size(); size += step) {
        const std::vector<char> prefix(bytes.begin(),
                                       bytes.begin() + static_cast<std::ptrdiff_t>(size));
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(prefix.data()), prefix.size());
      }
      ++files;
    }
  }
  std::printf("replayed %zu files\n", files);
  return files > 0 ? 0 : 1;
}
