// replay [--prefixes] FILE|FOLDER...: runs a fuzz target over committed inputs, with no fuzzer in
// it, and with --prefixes over beginnings of each, too: the end of the bytes is where readers go
// wrong. An input that breaks a property aborts the run.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// A copy, whose end a sanitizer knows.
void Run(const char* data, std::size_t size) {
  const std::vector<std::uint8_t> copy(data, data + size);
  LLVMFuzzerTestOneInput(copy.data(), copy.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> inputs;
  const bool prefixes = argc > 1 && std::string_view(argv[1]) == "--prefixes";
  for (int i = prefixes ? 2 : 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      inputs.emplace_back(argv[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      inputs.push_back(entry.path());
    }
  }
  std::sort(inputs.begin(), inputs.end());
  for (const std::filesystem::path& input : inputs) {
    std::ifstream file(input, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    if (!file) {
      std::fprintf(stderr, "replay: %s cannot be read\n", input.c_str());
      return 1;
    }
    std::fprintf(stderr, "%s\n", input.c_str());
    // Of a small one each.
    const std::size_t step = prefixes ? bytes.size() / 64 + 1 : bytes.size() + 1;
    for (std::size_t size = bytes.size() % step; size <= bytes.size(); size += step) {
      Run(bytes.data(), size);
    }
  }
  std::printf("%zu inputs replayed\n", inputs.size());
  return inputs.empty() ? 1 : 0;
}
