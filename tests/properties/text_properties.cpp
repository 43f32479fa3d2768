// Text strings and key names.

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "generators.h"
#include "models.h"
#include "objects/dict.h"
#include "objects/platform_text.h"
#include "objects/text_string.h"

namespace {

// The code points that a literal stands for, read as a reader reads it (ISO 32000-1, 7.3.4.2).
std::wstring Read(const std::string& literal) {
  RC_ASSERT(literal.size() >= 2u && literal.front() == '(' && literal.back() == ')');
  std::vector<unsigned> bytes;
  for (std::size_t i = 1; i + 1 < literal.size(); ++i) {
    if (literal[i] != '\\') {
      RC_ASSERT(literal[i] != '(' && literal[i] != ')');
      bytes.push_back(static_cast<unsigned char>(literal[i]));
    } else if (literal[i + 1] >= '0' && literal[i + 1] <= '7') {
      bytes.push_back(static_cast<unsigned>(std::stoul(literal.substr(i + 1, 3), nullptr, 8)));
      i += 3;
    } else {
      bytes.push_back(static_cast<unsigned char>(literal[++i]));
    }
  }
  if (bytes.empty()) return L"";
  RC_ASSERT(bytes.size() >= 4u && bytes.size() % 2 == 0u && bytes[0] == 0xFEu && bytes[1] == 0xFFu);
  std::wstring text;
  for (std::size_t i = 2; i < bytes.size(); i += 2) {
    unsigned unit = bytes[i] * 256 + bytes[i + 1];
    if (unit >= 0xD800 && unit < 0xDC00) {
      i += 2;
      unit = 0x10000 + (unit - 0xD800) * 0x400 + (bytes[i] * 256 + bytes[i + 1] - 0xDC00);
    }
    text += static_cast<wchar_t>(unit);
  }
  return text;
}

RC_GTEST_PROP(TextProperties, AnyTextIsWrittenAsTheModelWritesIt, ()) {
  const std::wstring text = *generators::WideText();
  RC_ASSERT(PsString(text) == model::TextString(text));
}

RC_GTEST_PROP(TextProperties, TextWithNulsInsideEndsAtTheFirst, ()) {
  const std::wstring text = *generators::WideText() +
                            std::wstring(*rc::gen::inRange<std::size_t>(1, 4), L'\0') +
                            *generators::WideText();
  RC_ASSERT(PsString(text) == model::TextString(text));
}

RC_GTEST_PROP(TextProperties, ReadBackItIsTheTextOrItsBeginning, ()) {
  std::wstring text = *generators::WideText();
  std::erase_if(text, [](wchar_t c) {
    const auto unit = static_cast<unsigned>(c);
    return unit > 0x10FFFF || (unit >= 0xD800 && unit <= 0xDFFF);
  });
  const std::wstring read = Read(PsString(text));
  RC_ASSERT(text.substr(0, read.size()) == read);
  std::size_t pairs = 0;
  for (const wchar_t c : text) pairs += c > 0xFFFF ? 1u : 0u;
  RC_ASSERT(read.size() + pairs >= text.size());  // a pair takes the room of one unit more
  if (pairs == 0) RC_ASSERT(read == text);
}

RC_GTEST_PROP(TextProperties, FileNamesAreUtf8OnDisk, ()) {
  const std::wstring edges = L"\x7F\x80\x7FF\x800\xD7FF\xE000\xFFFF\x10000\x10FFFF";
  std::wstring name = *rc::gen::container<std::wstring>(
      rc::gen::oneOf(generators::WideUnit(), rc::gen::elementOf(edges)));
  std::erase_if(name, [](wchar_t c) {
    const auto unit = static_cast<unsigned>(c);
    return c == L'/' || unit > 0x10FFFF || (unit >= 0xD800 && unit <= 0xDFFF);
  });
  name = L"x" + name.substr(0, 60);

  const std::filesystem::path folder =
      std::filesystem::path(testing::TempDir()) / ("file_names_" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  std::ofstream stream;
  OpenWithUnicodePath(stream, (folder.wstring() + L"/" + name).c_str(), std::ios_base::out);
  RC_ASSERT(stream.is_open());
  stream.close();
  std::string found;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    found += entry.path().filename().string();
  }
  std::filesystem::remove_all(folder);
  RC_ASSERT(found == model::Utf8(name));
}

RC_GTEST_PROP(TextProperties, KeysKeepTheirPrintableBytes, ()) {
  const std::string raw = *generators::Bytes();
  const std::string key = JTPDFDict::ValidKey(raw);
  RC_ASSERT(key == model::Key(raw));
  RC_ASSERT(JTPDFDict::ValidKey(key) == key);
}

RC_GTEST_PROP(TextProperties, TablesBecomeEntriesAndLaterRowsWin, ()) {
  const auto key = rc::gen::oneOf(generators::CText(), rc::gen::elementOf(std::vector<std::string>{
                                                           "A", "/A", " A", "B", "", "\x80"}));
  const auto rows = *rc::gen::container<std::vector<std::pair<std::string, std::wstring>>>(
      rc::gen::pair(key, generators::WideText()));
  std::vector<JTPDFDictionaryItem> items;
  std::map<std::string, std::string> expected;
  for (const auto& [name, value] : rows) {
    items.push_back({name.c_str(), value.empty() ? nullptr : value.c_str()});
    expected[model::Key(name)] = model::TextString(value);
  }
  const JTPDFDict dict(static_cast<unsigned>(items.size()), items.data());
  RC_ASSERT((std::map<std::string, std::string>(dict)) == expected);
}

}  // namespace
