// mapped_file.h - a file's bytes in memory, that stay readable when the file is cut short.
//
// The pages of a map whose bytes a file has lost end the process by SIGBUS when they are read.
// Here they read as zeros instead, and the map remembers that they were asked for.
#ifndef JTPDF_PICTURES_MAPPED_FILE_H
#define JTPDF_PICTURES_MAPPED_FILE_H

#include <cstddef>
#include <optional>

#include "bytes.h"

namespace pictures {

class MappedFile {
 public:
  // The largest file that is fetched at once.
  static constexpr size_t kMostTouched = size_t{16} << 20;

  MappedFile() = default;
  MappedFile(MappedFile&& other) noexcept;
  MappedFile& operator=(MappedFile&& other) noexcept;
  ~MappedFile();

  // Maps the file's first `size` bytes, and with `touch` fetches them at once, where
  // they are no more than kMostTouched. Nothing where that
  // cannot be done, with errno set: ENODEV where reading the file may yet do.
  static std::optional<MappedFile> Map(int file, size_t size, bool touch);

  // Gives back the memory of all maps that are larger than kMostTouched: their bytes stay readable,
  // and are fetched again. For who reads or writes a large file from begin to end, every now and
  // then.
  static void ForgetLarge();

  Bytes View() const { return view_; }
  // Whether bytes were read that the file no longer has, or that its disk no longer gives.
  bool Failed() const;

 private:
  Bytes view_;
  size_t watch_ = 0;  // the number of its watch, where there is a view
};

}  // namespace pictures

#endif  // JTPDF_PICTURES_MAPPED_FILE_H
