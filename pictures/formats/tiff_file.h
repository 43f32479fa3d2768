// tiff_file.h - libtiff's view of a file in memory, opened at any of its pages.
#ifndef JTPDF_PICTURES_TIFF_FILE_H
#define JTPDF_PICTURES_TIFF_FILE_H

#include <tiffio.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "bytes.h"

namespace pictures {

class TiffFile {
 public:
  // Opens the file at its first page, or at the one whose directory lies at `page`. libtiff takes
  // no more than `mostAtOnce` bytes of memory at a time. Throws an ImageError.
  TiffFile(Bytes file, uint64_t mostAtOnce, uint64_t page = 0);

  TIFF* Get() const { return tiff_.get(); }
  // Whether the page's directory has an entry for the tag. libtiff cannot tell: it fills in what a
  // file leaves out.
  bool Declares(uint16_t tag) const;

  bool HasError() const { return !memory_->error.empty(); }
  // What libtiff said first since it was last asked; empty for nothing.
  std::string TakeError() { return std::exchange(memory_->error, {}); }
  std::string TakeWarning() { return std::exchange(memory_->warning, {}); }
  [[noreturn]] void ThrowDamaged();

 private:
  friend struct TiffCallbacks;
  struct Memory {
    Bytes bytes;
    std::array<uint8_t, 16> head;  // in place of the first bytes: names the page to open
    uint64_t at = 0;
    std::string error;
    std::string warning;
  };
  struct Close {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };

  std::unique_ptr<Memory> memory_;  // libtiff keeps its address
  std::unique_ptr<TIFF, Close> tiff_;
};

}  // namespace pictures

#endif  // JTPDF_PICTURES_TIFF_FILE_H
