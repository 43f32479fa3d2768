#include "support/temp_dir.h"

#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

TempDir::TempDir() {
  std::string name = (std::filesystem::temp_directory_path() / "jtpdf-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
  path = name;
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
