#include "input_list.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "image_source.h"
#include "readers/reader.h"
#include "text.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

// Whether the file begins like a picture. A file that cannot be opened counts as one, so that it
// is reported rather than silently missing from the PDF.
bool MayBePicture(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return true;
  std::array<uint8_t, kRecognisedBytes> head;
  const ssize_t size = read(file, head.data(), head.size());
  close(file);
  return size < 0 || Recognise(Bytes(head.data(), static_cast<size_t>(size))) != nullptr;
}

}  // namespace

std::vector<Input> ListInputs(const std::vector<std::string>& names) {
  std::vector<Input> inputs;
  inputs.reserve(names.size());
  for (const std::string& name : names) inputs.push_back({name, name == "-", {}});
  return inputs;
}

std::vector<Input> ListFolder(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    const std::string name = it->path().filename().string();
    std::error_code ignored;
    // Hidden files are not what a person means by a folder's pictures.
    if (name[0] != '.' && it->is_regular_file(ignored)) names.push_back(name);
  }
  if (error) return {{folder, false, "cannot be read: " + error.message()}};
  std::sort(names.begin(), names.end(), NaturalLess);
  std::vector<Input> inputs;
  for (const std::string& name : names) {
    const std::string path = folder + (folder.back() == '/' ? "" : "/") + name;
    if (MayBePicture(path)) inputs.push_back({path, false, {}});
  }
  if (!inputs.empty()) return inputs;
  return {{folder, false,
           "is a folder without a picture (JPEG, JPEG 2000, PNG, TIFF or WebP); folders inside it "
           "are not looked into, name them too"}};
}

std::vector<std::string> SplitNames(std::string_view list) {
  constexpr size_t kLongestName = 4096;
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  const bool lines = list.substr(0, kLongestName).find('\0') == std::string_view::npos;
  if (lines && list.find('\0') != std::string_view::npos) {
    throw ImageError(
        "separates some names by lines and some by NUL bytes; write it one way or the other");
  }
  if (lines && list.starts_with(kByteOrderMark)) list.remove_prefix(kByteOrderMark.size());
  std::vector<std::string> names;
  while (!list.empty()) {
    const size_t end = std::min(list.find(lines ? '\n' : '\0'), list.size());
    std::string_view name = list.substr(0, end);
    if (lines && name.ends_with('\r')) name.remove_suffix(1);
    if (!name.empty()) names.emplace_back(name);
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return names;
}

std::vector<std::string> ReadNameList(const std::string& path, uint64_t most) {
  try {
    const PipeRules rules{most};
    const ImageSource list = path == "-" ? ImageSource::Read(STDIN_FILENO, rules)
                                         : ImageSource::Open(path, false, rules);
    return SplitNames({reinterpret_cast<const char*>(list.View().data()), list.View().size()});
  } catch (const IsEmpty&) {
    return {};
  } catch (const IsFolder&) {
    throw ImageError(
        "is a folder, not a list of names; to take its pictures, name it without --from-file");
  }
}

}  // namespace tool
