// temp_dir - a directory of the test's own, gone with the object.
#ifndef JTPDF_TESTS_SUPPORT_TEMP_DIR_H
#define JTPDF_TESTS_SUPPORT_TEMP_DIR_H

#include <filesystem>
#include <string>

class TempDir {
 public:
  TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir();

  // The file of that name, which is UTF-8.
  std::filesystem::path File(const std::string& name) const {
    return path / std::u8string(name.begin(), name.end());
  }

 private:
  std::filesystem::path path;
};

std::string ReadFile(const std::filesystem::path& path);

#endif  // JTPDF_TESTS_SUPPORT_TEMP_DIR_H
