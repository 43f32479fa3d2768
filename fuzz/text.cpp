// Fuzz target: wide text becomes a PDF string that holds it and nothing else, in either
// diagnostic mode.

#include "byte_source.h"
#include "loud.h"
#include "models.h"
#include "objects/dict.h"
#include "objects/text_string.h"
#include "require.h"

namespace {

// A string ends at its last byte and not before (ISO 32000-1, 7.3.4.2).
void RequireOneString(const std::string& literal) {
  Require(literal.size() >= 2 && literal.front() == '(', "a string begins with a parenthesis");
  for (std::size_t i = 1; i < literal.size(); ++i) {
    if (literal[i] == '\\') {
      ++i;
    } else {
      Require((literal[i] == ')') == (i + 1 == literal.size()) && literal[i] != '(',
              "parentheses are escaped");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ByteSource source(data, size);
  while (!source.Empty()) {
    std::wstring text = source.WideText(300);
    if (source.Byte() == 0) text += std::wstring(1, L'\0') + source.WideText(20);
    const std::string literal = PsString(text);
    RequireEqual(literal, model::TextString(text), "a text string is the model's");
    RequireOneString(literal);

    {
      const Loud loud;
      RequireEqual(PsString(text), literal, "diagnostic mode changes nothing");
    }
    const std::string key = source.Bytes(100);
    RequireEqual(JTPDFDict::ValidKey(key), model::Key(key), "a key is the model's");
    Require(DebugRepOfWideStr(text.c_str()).size() >= 10 * text.substr(0, text.find(L'\0')).size(),
            "every unit is shown");
  }
  return 0;
}
