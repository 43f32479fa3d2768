// image_source.h - the bytes of an input: a file, mapped or read, or what a pipe held.
#ifndef JTPDF_PICTURES_IMAGE_SOURCE_H
#define JTPDF_PICTURES_IMAGE_SOURCE_H

#include <cstdint>
#include <memory>
#include <string>

#include "bytes.h"
#include "image.h"
#include "mapped_file.h"

namespace pictures {

// Which file it is, and in which state: equal for the same unchanged file.
struct FileIdentity {
  uint64_t device = 0;
  uint64_t inode = 0;
  uint64_t size = 0;
  int64_t changed = 0;  // nanoseconds
  bool operator==(const FileIdentity&) const = default;
};

// Thrown where a folder is opened like a file.
struct IsFolder : ImageError {
  IsFolder() : ImageError("is a folder, and was a file a moment ago") {}
};

struct IsEmpty : ImageError {
  IsEmpty() : ImageError("is empty; it holds no picture, copy or save it again") {}
};

// Thrown where a file is no longer what it was when its reading began.
struct InputChanged : ImageError {
  InputChanged() : ImageError("changed while it was read; run again when it is complete") {}
};

// What is read into memory, since it cannot be mapped, has bounds.
struct PipeRules {
  uint64_t most = uint64_t{4} << 30;  // bytes
  const char* option = "maxBytes";    // what messages call that
  // Called once, with the first kRecognisedBytes or all there are: throws where the rest is not
  // worth reading.
  void (*judgeHead)(Bytes head) = [](Bytes) {};
};

// Copies share the bytes.
class ImageSource {
 public:
  // Opens the file: a large one is mapped, a small one read, which for its size is faster, and
  // what is no file (a pipe) is read to its end. With `touch` the pages of a map are fetched at
  // once, for bytes that will be read from begin to end. Throws an ImageError.
  static ImageSource Open(const std::string& path, bool touch, const PipeRules& rules = {});
  // Reads the descriptor to its end.
  static ImageSource Read(int descriptor, const PipeRules& rules = {});
  // Whether Open would give the same bytes again; they are gone with a pipe.
  bool CanReopen() const { return reopens_; }
  bool IsMapped() const { return map_ != nullptr; }

  Bytes View() const { return held_ ? held_->View() : map_ ? map_->View() : Bytes(); }
  const FileIdentity& Identity() const { return identity_; }
  // For when the bytes have been used: throws an ImageError where the file changed meanwhile, so
  // that they were none of one state of it.
  void CheckUnchanged() const;

 private:
  std::string path_;
  bool reopens_ = false;
  std::shared_ptr<const MappedFile> map_;  // or
  std::shared_ptr<const Buffer> held_;
  FileIdentity identity_;
};

}  // namespace pictures

#endif  // JTPDF_PICTURES_IMAGE_SOURCE_H
