// temp_dir - a directory of the test's own, gone with the object.
#ifndef JTPDF_TESTS_SUPPORT_TEMP_DIR_H
#define JTPDF_TESTS_SUPPORT_TEMP_DIR_H

#include <filesystem>
#include <string>

class TempDir {
 public:
  TempDir();
  TempDir(TempDir const&) = delete;
  TempDir& operator=(TempDir const&) = delete;
  ~TempDir();

  std::filesystem::path File(std::string const& name) const { return path / name; }

 private:
  std::filesystem::path path;
};

std::string ReadFile(std::filesystem::path const& path);

#endif  // JTPDF_TESTS_SUPPORT_TEMP_DIR_H
