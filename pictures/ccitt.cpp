#include "ccitt.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace pictures {
namespace {

// A TIFF file that is written to memory, of which only its one strip is of interest.
struct FaxFile {
  std::vector<uint8_t> bytes;
  uint64_t at = 0;

  static tmsize_t RefuseRead(thandle_t, void*, tmsize_t) { return 0; }
  static tmsize_t Write(thandle_t handle, void* from, tmsize_t size) {
    auto* file = static_cast<FaxFile*>(handle);
    const auto count = static_cast<size_t>(size);
    if (file->at + count > file->bytes.size()) {
      try {  // libtiff is C: nothing may be thrown through it
        file->bytes.resize(file->at + count);
      } catch (const std::bad_alloc&) {
        return 0;
      }
    }
    std::memcpy(file->bytes.data() + file->at, from, count);
    file->at += count;
    return size;
  }
  static toff_t Seek(thandle_t handle, toff_t offset, int whence) {
    auto* file = static_cast<FaxFile*>(handle);
    const toff_t from = whence == SEEK_CUR ? file->at : whence == SEEK_END ? file->bytes.size() : 0;
    return file->at = from + offset;
  }
  static int Close(thandle_t) { return 0; }
  static toff_t Size(thandle_t handle) { return static_cast<FaxFile*>(handle)->bytes.size(); }
};

int SayNothing(TIFF*, void*, const char*, const char*, va_list) {
  return 1;  // handled
}

struct CleanUp {
  // Unlike TIFFClose it writes no directory: nobody will read the file.
  void operator()(TIFF* tiff) const { TIFFCleanup(tiff); }
};
using Writer = std::unique_ptr<TIFF, CleanUp>;

Writer OpenWriter(FaxFile* file) {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
      TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), SayNothing, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), SayNothing, nullptr);
  // 8: with offsets of 64 bits, for strips of any size.
  Writer writer(TIFFClientOpenExt("fax", "wl8m", file, FaxFile::RefuseRead, FaxFile::Write,
                                  FaxFile::Seek, FaxFile::Close, FaxFile::Size, nullptr, nullptr,
                                  options.get()));
  if (!writer) throw std::bad_alloc();
  return writer;
}

}  // namespace

Buffer EncodeGroup4(const Raster& picture) {
  // Fax coders take black for 1. They change the bytes that they are given, so these are a copy
  // anyway.
  Buffer inverted(picture.Stride() * picture.height);
  std::transform(picture.bytes.Data(), picture.bytes.Data() + inverted.Size(), inverted.Data(),
                 [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
  FaxFile file;
  const Writer writer = OpenWriter(&file);
  TIFF* tiff = writer.get();
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, picture.height);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
  if (TIFFWriteEncodedStrip(tiff, 0, inverted.Data(), static_cast<tmsize_t>(inverted.Size())) < 0) {
    throw std::bad_alloc();  // of what else can go wrong nothing has to do with the picture
  }
  uint64_t* offsets = nullptr;
  TIFFGetField(tiff, TIFFTAG_STRIPOFFSETS, &offsets);
  return Buffer::CopyOf(Bytes(file.bytes).subspan(offsets[0]));
}

}  // namespace pictures
