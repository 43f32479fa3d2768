#include "support/temp_dir.h"

#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

TempDir::TempDir() {
  std::random_device random;
  for (int attempt = 0; attempt < 100; ++attempt) {
    path = std::filesystem::temp_directory_path() / ("jtpdf-test-" + std::to_string(random()));
    if (std::filesystem::create_directory(path)) return;
  }
  throw std::runtime_error("cannot make " + path.string());
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios_base::binary);
  if (!in) throw std::runtime_error("cannot read " + path.string());
  in.imbue(std::locale::classic());
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
