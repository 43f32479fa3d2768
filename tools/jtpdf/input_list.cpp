#include "input_list.h"

#include <unistd.h>

#include <algorithm>

#include "image_source.h"

namespace pictures::tool {
namespace {

bool SeparatedByLines(std::string_view list) {
  constexpr size_t kLongestName = 4096;
  return list.substr(0, kLongestName).find('\0') == std::string_view::npos;
}

void TakeTitle(Input* input) {
  const size_t tab = input->path.find('\t');
  if (tab == std::string::npos) return;
  input->title = input->path.substr(tab + 1);
  input->path.resize(tab);
}

}  // namespace

std::vector<Input> ListInputs(const std::vector<std::string>& names) {
  std::vector<Input> inputs;
  inputs.reserve(names.size());
  for (const std::string& name : names) inputs.push_back({name, name == "-", {}});
  return inputs;
}

std::vector<std::string> SplitNames(std::string_view list) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  const bool lines = SeparatedByLines(list);
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

std::vector<Input> ReadInputList(const std::string& path, uint64_t most, bool titles) {
  try {
    const PipeRules rules{most, "--max-input"};
    const ImageSource list = path == "-" ? ImageSource::Read(STDIN_FILENO, rules)
                                         : ImageSource::Open(path, false, rules);
    const std::string_view text(reinterpret_cast<const char*>(list.View().data()),
                                list.View().size());
    std::vector<Input> inputs = ListInputs(SplitNames(text));
    if (titles && SeparatedByLines(text))
      std::for_each(inputs.begin(), inputs.end(), [](Input& input) { TakeTitle(&input); });
    return inputs;
  } catch (const IsEmpty&) {
    return {};
  } catch (const IsFolder&) {
    throw ImageError(
        "is a folder, not a list of names; to take its pictures, name it without --from-file");
  }
}

}  // namespace pictures::tool
