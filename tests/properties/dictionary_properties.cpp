// Dictionaries: key paths rendered as nested dictionaries.

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "generators.h"
#include "models.h"
#include "objects/dict.h"

namespace {

using Entries = std::map<std::string, std::string>;

JTPDFDict Dict(const Entries& entries) {
  JTPDFDict dict;
  for (const auto& [key, value] : entries) dict[key] = value;
  return dict;
}

// Few pieces, so that paths meet, part, meet again and are one another's prefixes.
rc::Gen<std::string> PathText() {
  const auto piece = rc::gen::elementOf(std::vector<std::string>{
      "/", "/", "/", "/A", "/B", "/AB", "A", "B", "/Length", "/Stream", "\r\n", "\n", " "});
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece),
                      [](const std::vector<std::string>& pieces) {
                        std::string path;
                        for (const std::string& part : pieces) path += part;
                        return path;
                      });
}

rc::Gen<std::string> ValueText() {
  return rc::gen::container<std::string>(
      rc::gen::elementOf(std::string("a1 \r\n\t/<>()\x00\x01\x80\xFF", 15)));
}

// A path of whole names: /A, /B/A, /A/AB/B ...
rc::Gen<std::string> CleanPath() {
  const auto name = rc::gen::elementOf(std::vector<std::string>{"/A", "/B", "/AB", "/a", "/A.b"});
  return rc::gen::map(
      rc::gen::resize(4, rc::gen::nonEmpty(rc::gen::container<std::vector<std::string>>(name))),
      [](const std::vector<std::string>& names) {
        std::string path;
        for (const std::string& part : names) path += part;
        return path;
      });
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end = 0; end != std::string::npos; start = end + 2) {
    end = text.find("\r\n", start);
    lines.push_back(text.substr(start, end == std::string::npos ? end : end - start));
  }
  return lines;
}

RC_GTEST_PROP(DictionaryProperties, AnyEntriesAreRenderedAsTheModelRendersThem, ()) {
  const auto entries = *rc::gen::container<Entries>(PathText(), ValueText());
  RC_ASSERT(Dict(entries).AsString() == model::Body(entries));
}

RC_GTEST_PROP(DictionaryProperties, AnyEntryIsRenderedAsTheModelRendersIt, ()) {
  const std::string key = *PathText();
  const std::string value = *ValueText();
  const std::string previous = *PathText();
  RC_ASSERT(ItemsAsString(key, value, previous) == model::Item(key, value, previous));
}

RC_GTEST_PROP(DictionaryProperties, ComponentsAreTakenAsTheModelTakesThem, ()) {
  const std::string path = *PathText();
  RC_ASSERT(CopyPart(path) == model::FirstComponent(path));
  std::string rest = path;
  std::string_view view = path;
  RC_ASSERT(MovePart(view) == model::TakeFirstComponent(rest));
  RC_ASSERT(view == rest);
}

RC_GTEST_PROP(DictionaryProperties, EveryOpeningOfAPathIsClosed, ()) {
  const auto entries = *rc::gen::container<Entries>(CleanPath(), rc::gen::just<std::string>("1"));
  int depth = 0;
  std::size_t leaves = 0;
  std::string name;
  if (entries.empty()) return;
  for (const std::string& line : SplitLines(Dict(entries).AsString())) {
    if (line == "<<") {
      RC_ASSERT(name.starts_with('/') && name.find(' ') == std::string::npos);
      ++depth;
    } else if (line == ">>") {
      --depth;
      RC_ASSERT(depth >= 0);
    } else {
      leaves += line.ends_with(" 1") ? 1u : 0u;
    }
    name = line;
  }
  RC_ASSERT(depth == 0);
  RC_ASSERT(leaves == entries.size());
}

// Read back line by line, a rendering gives the entries again. Names differ from level to level
// here, because a path that parts from the one before it and then meets one of its names again is
// taken to be still in that dictionary.
RC_GTEST_PROP(DictionaryProperties, ReadBackItIsTheSameEntries, ()) {
  const auto codes = *rc::gen::container<std::set<std::string>>(rc::gen::resize(
      3, rc::gen::nonEmpty(rc::gen::container<std::string>(rc::gen::inRange('a', 'e')))));
  Entries entries;
  for (const std::string& code : codes) {
    std::string path;
    for (std::size_t level = 0; level < code.size(); ++level) {
      path += "/" + std::to_string(level) + code[level];
    }
    entries[path] = code;
  }

  Entries read;
  std::string path;
  std::vector<std::size_t> parents;
  for (const std::string& line : SplitLines(Dict(entries).AsString())) {
    const std::size_t blank = line.find(' ');
    if (line == "<<") {
      continue;
    } else if (line == ">>") {
      RC_ASSERT(!parents.empty());
      path.resize(parents.back());
      parents.pop_back();
    } else if (blank == std::string::npos) {
      parents.push_back(path.size());
      path += line;
    } else {
      read[path + line.substr(0, blank)] = line.substr(blank + 1);
    }
  }
  if (entries.empty()) read.clear();
  RC_ASSERT(read == entries);
}

}  // namespace
