#include "folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "formats/decoder.h"
#include "text.h"

namespace pictures::tool {
namespace {

namespace fs = std::filesystem;

// What pictures are called, of kinds that can be read and of kinds that cannot: either way somebody
// means a page by them.
constexpr std::string_view kPictureEndings[] = {
    "jpg", "jpeg", "jpe",  "jfif", "jp2", "j2k", "j2c", "jpc",  "jpf",  "jpx",  "jpm", "png",
    "tif", "tiff", "webp", "apng", "gif", "bmp", "dib", "heic", "heif", "avif", "jxl", "psd",
    "pbm", "pgm",  "ppm",  "pnm",  "pam", "tga", "pcx", "exr",  "hdr",  "ico",  "dng", "mpo"};

bool NamedLikePicture(std::string_view name) {
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return false;
  const std::string ending = LowerAscii(name.substr(dot + 1));
  return std::find(std::begin(kPictureEndings), std::end(kPictureEndings), ending) !=
         std::end(kPictureEndings);
}

// Pictures of kinds that no build can read, or not each: Photoshop's, GIF, those of phones.
bool BeginsLikeOtherPicture(Bytes head) {
  const auto has = [&](size_t at, std::string_view text) {
    return head.size() >= at && StartsWith(head.subspan(at), text);
  };
  return has(0, "GIF8") || has(0, "8BPS") || has(4, "ftyphei") || has(4, "ftypmif1") ||
         has(4, "ftypavif");
}

// Whether the file begins like a picture. One that cannot be opened counts as one, so that it is
// reported.
bool BeginsLikePicture(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return true;
  std::array<uint8_t, kRecognisedBytes> bytes;
  const ssize_t size = read(file, bytes.data(), bytes.size());
  close(file);
  if (size < 0) return true;
  const Bytes head(bytes.data(), static_cast<size_t>(size));
  return Recognise(head) != nullptr || BeginsLikeOtherPicture(head);
}

// Why the folder's entry is passed over; null for one that is an input.
const char* ReasonToPass(const std::string& path, std::string_view name) {
  std::error_code error;
  switch (fs::status(path, error).type()) {
    case fs::file_type::regular:
      return NamedLikePicture(name) || BeginsLikePicture(path) ? nullptr
                                                               : "passed over: no picture";
    case fs::file_type::directory:
      return "passed over: a folder; name it to take its pictures";
    case fs::file_type::none:
    case fs::file_type::unknown:
    case fs::file_type::not_found:  // a link that leads nowhere
      return NamedLikePicture(name) ? nullptr : "passed over: no picture";
    default:
      return "passed over: no file";
  }
}

}  // namespace

Folder ListFolder(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    std::string name = it->path().filename().string();
    if (name[0] != '.') names.push_back(std::move(name));
  }
  if (error) return {{{folder, false, "cannot be read: " + error.message()}}, {}};
  std::sort(names.begin(), names.end(), NaturalLess);
  Folder found;
  const std::string prefix = folder + (folder.back() == '/' ? "" : "/");
  for (const std::string& name : names) {
    const std::string path = prefix + name;
    if (const char* reason = ReasonToPass(path, name)) {
      found.passedOver.push_back({path, reason});
    } else {
      found.inputs.push_back({path, false, {}});
    }
  }
  if (found.inputs.empty()) {
    found.inputs.push_back({folder, false,
                            "is a folder without a picture; folders inside it are "
                            "not looked into, name them too"});
  }
  return found;
}

}  // namespace pictures::tool
