// Fuzz target: objects, entries and operators of a host's, with any text for a value. Then
//
//   - a call takes its text or refuses it with EINVAL, and writes in the first case only,
//   - what is taken is exactly one object, or one path of names, for the reader of the structure
//     checker, which was written without a look at the library,
//   - white space around a value and an array around it change nothing about that,
//   - the finished document passes the structure checker, which finds in it what was written.

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <string>
#include <vector>

#include <jtpdf/objects.h>

#include "byte_source.h"
#include "free_reader.h"
#include "objects/syntax.h"
#include "pdf_structure.h"
#include "require.h"

namespace {

constexpr JTPDFRect kSheet = {0, 0, 100, 100, 0};

// The library's own kinds of objects are told by these.
bool LooksLikeOurs(const std::string& text) {
  constexpr const char* kMarks[] = {"/Page",    "/Catalog",    "/Outlines", "/Form",   "/Image",
                                    "/MGmk",    "/Alternate",  "/GS0",      "/Parent", "/Filter",
                                    "/XObject", "#",           "/Subtype",  "/Type",   "/Contents",
                                    "/SMask",   "/ColorSpace", "/Kids",     "/Count"};
  return std::any_of(std::begin(kMarks), std::end(kMarks),
                     [&](const char* mark) { return text.find(mark) != std::string::npos; });
}

std::string Value(ByteSource& source) {
  constexpr const char* kTokens[] = {
      "1",   "-2.5", "true", "null", "/A",  "/B#20c", "(",   ")",      "(a\\)b)", "<",     ">",
      "<0a", "<<",   ">>",   "[",    "]",   " ",      "\n",  "0",      "R",       "7 0 R", "endobj",
      "%",   "{",    "}",    "\\",   "/K ", "stream", "/L ", "\r\n>>", "[[[[[[",  "]]]]]]"};
  if (source.Byte() % 8 == 0) return source.CText(200);
  std::string value;
  for (int tokens = source.Byte() % 24; tokens > 0 && !source.Empty(); --tokens) {
    value += kTokens[source.Byte() % std::size(kTokens)];
  }
  return value;
}

std::string Key(ByteSource& source) {
  constexpr const char* kNames[] = {"/A", "/B", "/AB", "/C#20", "/Length", "/", "A", "/Resources"};
  std::string key;
  for (int names = 1 + source.Byte() % 4; names > 0; --names) {
    key += kNames[source.Byte() % std::size(kNames)];
  }
  return source.Byte() % 16 == 0 ? source.CText(30) : key;
}

bool ReadsAsOneObject(const std::string& text) {
  std::istringstream in(text + "\r\nendobj");
  golden::ByteReader reader(in);
  try {
    return golden::ReadFreeObject(reader).keyword == "endobj" && reader.Peek() < 0;
  } catch (const golden::StructureError&) {
    return false;
  }
}

void RequireSyntax(const std::string& value) {
  const bool isOne = IsOneObject(value);
  Require(!isOne || ReadsAsOneObject(value), "what is taken is one object", value);
  Require(!IsDirectObject(value) || isOne, "a direct object is an object", value);
  Require(IsOneObject("\t" + value + "\r\n ") == isOne, "white space changes nothing", value);
  Require(!IsOneObject("[" + value + "]") || !isOne || ReadsAsOneObject("[" + value + "]"),
          "an array around an object is one", value);
  if (IsNamePath(value)) {
    Require(IsOneObject("<<" + value.substr(value.rfind('/')) + " 1>>"), "a name is a key", value);
  }
}

class Host {
 public:
  explicit Host(ByteSource source) : source_(source), doc_(CreateMemoryPdfDoc(1)) {
    Require(InitPdfDoc(doc_) == 0, "a document begins");
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  ~Host() { DestroyPdfDoc(doc_); }

  void Play() {
    for (int calls = 0; calls < 300 && !source_.Empty(); ++calls) Call();
    Finish();
  }

 private:
  std::string Text() {
    std::string value = Value(source_);
    RequireSyntax(value);
    plain_ = plain_ && !LooksLikeOurs(value);
    return value;
  }
  std::string Path() {
    std::string key = Key(source_);
    RequireSyntax(key);
    plain_ = plain_ && !LooksLikeOurs(key);
    return key;
  }

  // Whether the call took what it was given.
  static bool Taken(std::int32_t code, bool right, const std::string& what) {
    Require(code == 0 || code == EINVAL, "a code is 0 or EINVAL", std::to_string(code));
    Require(code != 0 || right, "what is not right is refused", what);
    return code == 0;
  }

  void Number(bool taken, int number) {
    Require(number == (taken ? next_ : 0), "numbers are given in the order of the calls",
            std::to_string(number));
    if (taken) ++next_;
  }

  void Object() {
    const std::string value = Text();
    int number = 0;
    const std::int32_t code = WritePdfObject(doc_, value.c_str(), &number);
    Require((code == 0) == IsDirectObject(value), "a direct object is taken", value);
    Number(Taken(code, true, value), number);
    written_ += code == 0 ? 1 : 0;
  }

  void Stream() {
    std::vector<std::string> texts;
    std::vector<JTPDFEntry> entries;
    for (int i = source_.Byte() % 5; i >= 0; --i) {
      texts.push_back(Path());
      texts.push_back(Text());
    }
    bool right = true;
    for (std::size_t i = 0; i < texts.size(); i += 2) {
      entries.push_back({texts[i].c_str(), texts[i + 1].c_str()});
      right = right && IsNamePath(texts[i]) && IsOneObject(texts[i + 1]) && texts[i] != "/Length";
    }
    const std::string data = source_.Bytes(100);
    int number = 0;
    const std::int32_t code = WritePdfStream(doc_, static_cast<unsigned>(entries.size()),
                                             entries.data(), data.data(), data.size(), &number);
    Number(Taken(code, right, texts[0]), number);
    written_ += code == 0 ? 1 : 0;
  }

  void Reserve() {
    int number = 0;
    const bool taken = Taken(ReservePdfObject(doc_, &number), true, "");
    Number(taken, number);
    reserved_.push_back(number);
  }

  void WriteReserved() {
    const std::string value = Text();
    const std::size_t at = source_.Byte() % (reserved_.size() + 1);
    const int number = at < reserved_.size() ? reserved_[at] : source_.Integer();
    const auto known = std::find(reserved_.begin(), reserved_.end(), number);
    const bool right = known != reserved_.end() && IsDirectObject(value);
    const std::int32_t code = WriteReservedPdfObject(doc_, number, value.c_str());
    Require((code == 0) == right, "a reserved number is written once", value);
    if (code != 0) return;
    reserved_.erase(known);
    ++written_;
  }

  void Entry() {
    const std::string key = Path();
    const std::string value = Text();
    const bool right = IsNamePath(key) && IsOneObject(value);
    using Set = std::int32_t (*)(JTPDFDocument*, const char*, const char*);
    constexpr Set kSetters[] = {SetPdfCatalogEntry, SetPdfPageEntry, SetPdfCanvasEntry};
    Taken(kSetters[source_.Byte() % 3](doc_, key.c_str(), value.c_str()), right, key + " " + value);
  }

  void Bookmark() {
    const int level = source_.Byte() % 8;
    const int page = source_.Byte() % 4;
    if (Taken(AddPdfBookmark(doc_, level, source_.WideText(20).c_str(), page), true, "")) {
      ++bookmarks_;
      lastPage_ = std::max(lastPage_, page);
    }
  }

  void Page() {
    int form = 0;
    Require(WritePdfCanvas(doc_, &form) == 0, "a form is written");
    Require(WritePdfPage(doc_, form, kSheet, kSheet) == 0, "a page is written");
    Require(form == next_, "a form has the next number");
    next_ += 2;
    ++pages_;
  }

  void Call() {
    switch (source_.Byte() % 8) {
      case 0:
        return Object();
      case 1:
        return Stream();
      case 2:
        return Reserve();
      case 3:
        return WriteReserved();
      case 4:
        return Bookmark();
      case 5:
        return Page();
      case 6:
        return DrawPdfContent(doc_, source_.CText(60).c_str());
      default:
        return Entry();
    }
  }

  void Finish() {
    if (!reserved_.empty()) {
      Require(FinalizePdfDoc(doc_, nullptr) == EINVAL, "a reserved number has to be used");
    }
    for (const int number : reserved_) {
      Require(WriteReservedPdfObject(doc_, number, "null") == 0, "a reserved number can be used");
      ++written_;
    }
    while (pages_ == 0 || pages_ <= lastPage_) Page();
    Require(FinalizePdfDoc(doc_, nullptr) == 0, "the document ends");
    if (!plain_) return;
    golden::StructureOptions options;
    options.open_objects = true;
    options.unchecked_numbers = true;
    const golden::StructureReport report =
        golden::CheckStructure(std::string_view(GetPdfData(doc_), GetPdfDataSize(doc_)), options);
    Require(report.ok(), "the structure is right",
            report.error + " at " + std::to_string(report.offset));
    Require(report.open_objects == written_, "every object is there");
    Require(report.bookmarks == bookmarks_, "every bookmark is there");
    Require(report.pages == static_cast<std::uint64_t>(pages_), "every page is there");
  }

  ByteSource source_;
  JTPDFDocument* doc_;
  int next_ = 2;
  int pages_ = 0;
  int lastPage_ = -1;
  std::uint64_t written_ = 0;
  std::uint64_t bookmarks_ = 0;
  std::vector<int> reserved_;
  bool plain_ = true;  // nothing of the host's can be taken for an object of the library's
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Host(ByteSource(data, size)).Play();
  return 0;
}
