// Fuzz target: any entries are rendered as the model renders them, and where keys are paths,
// every dictionary that is opened is closed.

#include <vector>

#include "byte_source.h"
#include "models.h"
#include "objects/dict.h"
#include "require.h"

namespace {

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

// "/Length" and "/Stream" are not rendered, and a dictionary that is open in front of them is not
// closed; a key without a solidus opens one that is not closed either.
bool IsBalanced(const std::string& key) {
  return key.find('/') != std::string::npos && key != "/Length" && key != "/Stream" &&
         key.find_first_of("<>") == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ByteSource source(data, size);
  std::map<std::string, std::string> entries;
  std::map<std::string, std::string> paths;
  JTPDFDict dict;
  std::string previous;
  while (!source.Empty() && entries.size() < 200) {
    const std::string key = source.Flag() ? source.Key() : source.Bytes(30);
    const std::string value = source.Bytes(100);
    entries[key] = dict[key] = value;
    if (IsBalanced(key)) paths[key] = "1";

    RequireEqual(ItemsAsString(key, value, previous), model::Item(key, value, previous),
                 "an entry is the model's");
    RequireEqual(CopyPart(key), model::FirstComponent(key), "the first component");
    std::string rest = key;
    std::string_view view = key;
    RequireEqual(MovePart(view), model::TakeFirstComponent(rest), "the component taken");
    RequireEqual(std::string(view), rest, "what is left of the path");
    previous = key;
  }
  RequireEqual(dict.AsString(), model::Body(entries), "a dictionary is the model's");

  JTPDFDict balanced;
  for (const auto& [key, value] : paths) balanced[key] = value;
  const std::string body = balanced.AsString();
  Require(Count(body, "<<") == Count(body, ">>"), "openings and closings balance", body);

  std::vector<JTPDFDictionaryItem> items;
  std::map<std::string, std::string> table;
  std::vector<std::string> keys;
  for (const auto& entry : entries) keys.push_back(entry.first.c_str());
  for (const std::string& key : keys) {
    items.push_back({key.c_str(), L"x"});
    table[model::Key(key)] = model::TextString(L"x");
  }
  const JTPDFDict fromTable(static_cast<unsigned>(items.size()), items.data());
  RequireEqual(fromTable.AsString(), model::Body(table), "a table's dictionary is the model's");
  return 0;
}
