// picture_api.cpp - opening pictures, and what can be asked of them.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "api/guarded.h"
#include "api/picture.h"

namespace pictures::api {
namespace {

constexpr uint64_t kMostBytes = uint64_t{4} << 30;

// What a file is read by. Unlike a map it harms nobody when the file is cut short meanwhile.
class File {
 public:
  explicit File(const char* path) : descriptor_(open(path, O_RDONLY | O_CLOEXEC)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  static int32_t Read(void* context, char* buffer, size_t size, size_t* count) {
    const int descriptor = static_cast<File*>(context)->descriptor_;
    for (;;) {
      const ssize_t got = descriptor < 0 ? -1 : read(descriptor, buffer, size);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) return errno;
      *count = static_cast<size_t>(got);
      return 0;
    }
  }

 private:
  int descriptor_;
};

[[noreturn]] void ThrowUnreadable(int32_t code) {
  const char* advice = code == ENOENT   ? "; check the name"
                       : code == EACCES ? "; check its permissions"
                       : code == EISDIR ? "; name a file in it"
                                        : "";
  throw Failure{kJTPDFPictureUnusable, code,
                "cannot be read: " + std::generic_category().message(code) + advice};
}

// All that there is; what begins like no picture is not read to its end.
Buffer ReadAll(JTPDFPictureReadFunction read, void* context, uint64_t most) {
  Buffer bytes(size_t{64} << 10);
  size_t size = 0;
  bool judged = false;
  for (;;) {
    if (size == bytes.Size()) bytes.Double();
    size_t count = 0;
    const size_t room = bytes.Size() - size;
    const int32_t code = read(context, reinterpret_cast<char*>(bytes.Data()) + size, room, &count);
    if (code != 0) ThrowUnreadable(code);
    if (count > room) RefuseArgument("the callback says that it read more than there is room for");
    size += count;
    if (!judged && size > 0 && (count == 0 || size >= kRecognisedBytes)) {
      RecogniseOrThrow({bytes.Data(), std::min(size, kRecognisedBytes)});
      judged = true;
    }
    if (count == 0) break;
    if (size > most) {
      throw ImageError("holds more than " + std::to_string(most) +
                       " bytes; if that is right, allow it with maxBytes");
    }
  }
  bytes.Shrink(size);
  return bytes;
}

uint64_t MostBytes(const JTPDFPictureLimits* limits) {
  return limits != nullptr && limits->maxBytes != 0 ? limits->maxBytes : kMostBytes;
}

void ReadHeaders(const JTPDFPictureLimits* limits, JTPDFPicture* picture) {
  if (picture->bytes.empty()) {
    throw ImageError("is empty; it holds no picture, copy or save it again");
  }
  if (limits != nullptr && limits->maxPixels != 0) picture->limits.maxPixels = limits->maxPixels;
  if (limits != nullptr) picture->limits.allFrames = limits->allFrames;
  const Bytes head = picture->bytes.first(std::min(picture->bytes.size(), kRecognisedBytes));
  picture->frames = RecogniseOrThrow(head).plan(picture->bytes, picture->limits);
  if (picture->frames.size() == 1 && !picture->frames[0].error.empty()) {
    throw ImageError(picture->frames[0].error);
  }
}

JTPDFPicture* OpenRead(JTPDFPictureReadFunction read, void* context,
                       const JTPDFPictureLimits* limits, JTPDFPictureError* error) {
  std::unique_ptr<JTPDFPicture> picture;
  const int32_t result = Guarded(error, [&] {
    Require(reinterpret_cast<const void*>(read), "read");
    picture = std::make_unique<JTPDFPicture>();
    picture->owned = ReadAll(read, context, MostBytes(limits));
    picture->bytes = picture->owned.View();
    ReadHeaders(limits, picture.get());
  });
  return result == 0 ? picture.release() : nullptr;
}

const char* NameOf(Colour colour) {
  return colour == Colour::kGrey ? "grey" : colour == Colour::kRgb ? "RGB" : "CMYK";
}

const char* NameOf(ProfileUse use) {
  return use == ProfileUse::kNone ? "none" : use == ProfileUse::kUsed ? "used" : "left out";
}

}  // namespace
}  // namespace pictures::api

const pictures::ImagePlan& JTPDFPicture::Frame(unsigned index) const {
  if (index < frames.size()) return frames[index];
  pictures::api::RefuseArgument("has no frame " + std::to_string(index) + "; there are " +
                                std::to_string(frames.size()));
}

const pictures::ImagePlan& JTPDFPicture::UsableFrame(unsigned index) const {
  const pictures::ImagePlan& frame = Frame(index);
  if (!frame.error.empty()) throw pictures::ImageError(frame.error);
  return frame;
}

extern "C" {

JTPDFPicture* JTPDFOpenPictureFile(const char* path, const JTPDFPictureLimits* limits,
                                   JTPDFPictureError* error) {
  using pictures::api::File;
  if (pictures::api::Guarded(error, [&] { pictures::api::Require(path, "path"); }) != 0) {
    return nullptr;
  }
  errno = 0;
  File file(path);  // one that was not opened fails when it is read, with this errno
  return pictures::api::OpenRead(File::Read, &file, limits, error);
}

JTPDFPicture* JTPDFOpenPictureMemory(const void* data, size_t size,
                                     const JTPDFPictureLimits* limits, JTPDFPictureError* error) {
  std::unique_ptr<JTPDFPicture> picture;
  const int32_t result = pictures::api::Guarded(error, [&] {
    picture = std::make_unique<JTPDFPicture>();
    picture->bytes = {static_cast<const uint8_t*>(data), size};
    pictures::api::ReadHeaders(limits, picture.get());
  });
  return result == 0 ? picture.release() : nullptr;
}

JTPDFPicture* JTPDFOpenPictureStream(JTPDFPictureReadFunction read, void* context,
                                     const JTPDFPictureLimits* limits, JTPDFPictureError* error) {
  return pictures::api::OpenRead(read, context, limits, error);
}

void JTPDFClosePicture(JTPDFPicture* picture) {
  delete picture;
}

unsigned JTPDFCountPictureFrames(const JTPDFPicture* picture) {
  return picture == nullptr ? 0 : static_cast<unsigned>(picture->frames.size());
}

int32_t JTPDFGetPictureInfo(const JTPDFPicture* picture, unsigned frame, JTPDFPictureInfo* info,
                            JTPDFPictureError* error) {
  return pictures::api::Guarded(error, [&] {
    pictures::api::Require(picture, "picture");
    pictures::api::Require(info, "info");
    const pictures::ImagePlan& plan = picture->Frame(frame);
    *info = {};
    info->format = pictures::DecoderOf(plan.format).name;
    info->colors = pictures::api::NameOf(plan.colour);
    info->width = static_cast<int32_t>(plan.width);
    info->height = static_cast<int32_t>(plan.height);
    info->bitsPerComponent = plan.depth;
    info->orientation = plan.orientation;
    info->resolutionX = plan.resolution.x;
    info->resolutionY = plan.resolution.y;
    info->memory = plan.memory;
    info->size = plan.PassesThrough() ? plan.size : 0;
    info->reason = plan.decodeReason.c_str();
    info->profile = pictures::api::NameOf(plan.profile);
    info->problem = plan.error.c_str();
    info->hasPalette = plan.palette;
    info->hasAlpha = plan.alpha;
  });
}

const char* JTPDFGetPictureNote(const JTPDFPicture* picture, unsigned frame, unsigned index) {
  if (picture == nullptr || frame >= picture->frames.size()) return nullptr;
  const std::vector<pictures::Note>& notes = picture->frames[frame].notes;
  return index < notes.size() ? notes[index].text.c_str() : nullptr;
}

}  // extern "C"
