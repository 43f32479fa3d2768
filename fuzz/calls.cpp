// Fuzz target: any sequence of calls through the exports, with any values in them. It is played
// three times: into memory, into memory in diagnostic mode, and into a file. Then
//
//   - all three have the same result codes, the same object numbers and the same bytes,
//   - a success leaves errno alone, a failure leaves the out-parameter alone,
//   - numbers are given in the order of the calls, and none is lost,
//   - what was finalised with well-formed keys passes the structure checker, which finds in it just
//     what was written,
//   - and nothing that happens after the end changes the bytes.

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include <jtpdf/jtpdf.h>

#include "byte_source.h"
#include "loud.h"
#include "models.h"
#include "pdf_structure.h"
#include "require.h"

namespace {

constexpr int kUntouched = -77;

// A key that names one entry, whose dictionary stays a dictionary: whole names of regular
// characters, and none of the two keys that are never rendered.
bool IsWellFormed(const std::string& raw) {
  const std::string key = model::Key(raw);
  return key.find("//") == std::string::npos && key.back() != '/' && key != "/Length" &&
         key != "/Stream" && key.find_first_of("()<>[]{}%") == std::string::npos;
}

const std::string& FilePath() {
  static const std::string path =
      (std::filesystem::temp_directory_path() / ("jtpdf-fuzz-" + std::to_string(getpid())))
          .string();
  return path;
}

// What came out of one playing of the calls.
struct Outcome {
  std::vector<int> results;  // codes and numbers, up to the end of the document
  std::string bytes;
  bool finished = false;
  bool wellFormed = true;
  std::uint64_t images = 0;
  std::uint64_t profiles = 0;
  std::uint64_t forms = 0;
  std::uint64_t pages = 0;
};

struct ImageArguments {
  explicit ImageArguments(ByteSource& source) : data(source.Bytes(5000)) {
    descriptor.compression = static_cast<TPdfCompression>(source.Integer());
    descriptor.width = source.Integer();
    descriptor.height = source.Integer();
    descriptor.bitsPerComponent = source.Integer();
    descriptor.colorSpace = static_cast<TPdfColorSpace>(source.Integer());
    descriptor.colorSpaceObject = source.Integer();
    descriptor.data = data.empty() ? nullptr : data.data();
    descriptor.size = static_cast<std::uint32_t>(data.size());
  }
  ImageArguments(const ImageArguments&) = delete;
  ImageArguments& operator=(const ImageArguments&) = delete;

  std::string data;
  TPdfImageDescriptor descriptor;
};

struct ItemArguments {
  explicit ItemArguments(ByteSource& source) {
    const unsigned count = source.Byte() % 8;
    for (unsigned i = 0; i < count; ++i) keys.push_back(source.Key());
    for (unsigned i = 0; i < count; ++i) values.push_back(source.WideText(60));
    for (unsigned i = 0; i < count; ++i) {
      items.push_back({keys[i].c_str(), values[i].empty() ? nullptr : values[i].c_str()});
    }
  }
  ItemArguments(const ItemArguments&) = delete;
  ItemArguments& operator=(const ItemArguments&) = delete;

  std::vector<std::string> keys;
  std::vector<std::wstring> values;
  std::vector<JTPDFDictionaryItem> items;
};

class Player {
 public:
  Player(ByteSource source, bool file) : source_(source), file_(file) {
    unit_ = source_.Double();
    creator_ = source_.WideText(40);
    author_ = source_.WideText(40);
    const std::string& path = FilePath();
    doc_ = file_ ? CreateFilePdfDoc(unit_, std::wstring(path.begin(), path.end()).c_str(),
                                    creator_.c_str(), author_.empty() ? nullptr : author_.c_str())
                 : CreateMemoryPdfDoc(unit_);
  }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;
  ~Player() { DestroyPdfDoc(doc_); }

  Outcome Play() {
    if (source_.Flag()) Init();
    for (int calls = 0; calls < 500 && !source_.Empty(); ++calls) Call();
    if (source_.Flag() || !outcome_.finished) {
      Init();
      Finalize(nullptr);
    }
    Read();
    return outcome_;
  }

 private:
  // Runs a writer: its code counts until the document is finished, after which a file refuses
  // what memory takes. objects is how many it writes.
  template <typename Call>
  bool Run(int objects, const Call& call, std::uint64_t* counter) {
    int number = kUntouched;
    errno = 0;
    const int code = call(&number);
    if (code == 0) {
      Require(errno == 0, "a call that succeeds leaves errno alone");
    } else {
      Require(number == kUntouched, "a call that fails leaves its out-parameter alone");
    }
    if (outcome_.finished) return false;
    outcome_.results.push_back(code);
    outcome_.results.push_back(number);
    if (code != 0) return false;
    next_ += objects;
    if (number != kUntouched) Require(number == next_ - 1, "numbers follow the order of writing");
    if (counter != nullptr) ++*counter;
    return true;
  }

  void Init() {
    const bool ok = Run(
        1, [&](int*) { return InitPdfDoc(doc_); }, nullptr);
    Require(!ok || !initialized_, "a document is initialised once");
    initialized_ = initialized_ || ok;
  }

  void Finalize(const char* closing) {
    if (!outcome_.finished && !file_) {
      // A memory document takes both as items; a file document's own texts win over items.
      if (!creator_.empty()) SetPdfInfoItem(doc_, "/Creator", creator_.c_str());
      if (!author_.empty()) SetPdfInfoItem(doc_, "/Author", author_.c_str());
    }
    errno = 0;
    const int code = FinalizePdfDoc(doc_, closing);
    Require(!outcome_.finished || code == 0, "a second FinalizePdfDoc is ignored");
    if (outcome_.finished) return;
    Require(code != 0 || errno == 0, "a call that succeeds leaves errno alone");
    Require((code == 0) == initialized_, "what was initialised can be finalised");
    outcome_.results.push_back(code);
    outcome_.finished = code == 0;
    Read();
  }

  // Takes the bytes at the end and looks again later: nothing may change them.
  void Read() {
    std::string bytes;
    if (file_) {
      Require(GetPdfData(doc_) == nullptr && GetPdfDataSize(doc_) == 0, "a file gives no data");
      if (!outcome_.finished) return;
      std::ifstream in(FilePath(), std::ios::binary);
      bytes.assign(std::istreambuf_iterator<char>(in), {});
    } else {
      const char* const data = GetPdfData(doc_);
      Require((data != nullptr) == outcome_.finished,
              "data is there when the document is finished");
      Require(data != nullptr || GetPdfDataSize(doc_) == 0, "no data has no size");
      if (data == nullptr) return;
      bytes.assign(data, GetPdfDataSize(doc_));
      Require(data[bytes.size()] == '\0', "a NUL follows the data");
    }
    if (!outcome_.bytes.empty()) RequireEqual(bytes, outcome_.bytes, "finished bytes stay");
    outcome_.bytes = bytes;
  }

  void Call();
  void Draw(std::uint8_t call);
  void WriteImages(std::uint8_t call);

  ByteSource source_;
  bool file_;
  double unit_;
  std::wstring creator_;
  std::wstring author_;
  JTPDFDocument* doc_;
  Outcome outcome_;
  bool initialized_ = false;
  int next_ = 1;  // the number that the next object gets
};

void Player::Call() {
  const std::uint8_t call = source_.Byte() % 24;
  switch (call) {
    case 0:
      Init();
      break;
    case 1: {
      const bool closes = source_.Byte() < 40;  // rarely: most calls behind the end are dull
      const std::string closing = source_.CText(50);
      if (closes) Finalize(source_.Flag() ? nullptr : closing.c_str());
      break;
    }
    case 2: {
      const std::string key = source_.Key();
      const std::wstring value = source_.WideText(60);
      if (!outcome_.finished) outcome_.wellFormed = outcome_.wellFormed && IsWellFormed(key);
      SetPdfInfoItem(doc_, key.c_str(), value.empty() ? nullptr : value.c_str());
      break;
    }
    case 3: {
      const bool mark = source_.Flag();
      SetPdfMgMk(doc_, mark);
      Require(GetPdfMgMk(doc_) == mark, "the mark flag is what was set");
      break;
    }
    case 4:
    case 5:
      Run(
          1, [&](int* out) { return WritePdfCanvas(doc_, out); }, &outcome_.forms);
      break;
    case 6:
    case 7: {
      const int form = source_.Integer();
      const JTPDFRect crop = source_.Box();
      const JTPDFRect media = source_.Box();
      const int copies = call == 6 ? 1 : source_.Byte() % 64;
      for (int i = 0; i < copies; ++i) {
        Run(
            1, [&](int*) { return WritePdfPage(doc_, form, crop, media); }, &outcome_.pages);
      }
      break;
    }
    case 8: {
      const std::string profile = source_.Bytes(5000);
      const auto compression = static_cast<TPdfCompression>(source_.Integer());
      Run(
          2,
          [&](int* out) {
            return WritePdfICCProfile(doc_, profile.empty() ? nullptr : profile.data(),
                                      static_cast<unsigned>(profile.size()), compression, out);
          },
          &outcome_.profiles);
      break;
    }
    case 9:
    case 10:
    case 11:
      WriteImages(call);
      break;
    default:
      Draw(call);
  }
}

void Player::WriteImages(std::uint8_t call) {
  const ImageArguments image(source_);
  const ItemArguments items(source_);
  const std::wstring name = source_.WideText(60);
  const wchar_t* const nameOrNull = source_.Flag() ? name.c_str() : nullptr;
  const auto role = static_cast<TPdfImageRole>(source_.Integer());
  const auto count = static_cast<unsigned>(items.items.size());
  const bool flag = source_.Flag();
  if (!outcome_.finished) {
    for (const std::string& key : items.keys) {
      outcome_.wellFormed = outcome_.wellFormed && IsWellFormed(key);
    }
  }
  if (call == 9) {
    Run(
        1,
        [&](int* out) {
          return WritePdfImage(doc_, &image.descriptor, flag, role, nameOrNull, count,
                               items.items.data(), out);
        },
        &outcome_.images);
  } else if (call == 10) {
    Run(
        1,
        [&](int* out) {
          return WritePdfImageJPEG2000(doc_, &image.descriptor, role, nameOrNull, count,
                                       items.items.data(), out);
        },
        &outcome_.images);
  } else {
    std::optional<ImageArguments> alpha;
    if (flag) alpha.emplace(source_);
    const bool written = Run(
        flag ? 2 : 1,
        [&](int* out) {
          return WritePdfImageWithAlpha(doc_, &image.descriptor,
                                        flag ? &alpha->descriptor : nullptr, role, nameOrNull,
                                        count, items.items.data(), out);
        },
        &outcome_.images);
    // A mask goes first, and stays when the image behind it is refused (JPEG 2000).
    const bool maskOnly = !written && initialized_ && !outcome_.finished;
    if (maskOnly) {
      Require(flag && image.descriptor.compression == kPdfCompressionJPEG2000, "a mask is refused");
      ++next_;
    }
    if (flag && (written || maskOnly)) ++outcome_.images;
  }
}

void Player::Draw(std::uint8_t call) {
  const JTPDFRect box = source_.Box();
  const JTPDFRGBColor fill = source_.Color();
  switch (call) {
    case 12:
      ClearPdfCanvas(doc_);
      break;
    case 13: {
      SetPdfCanvasBoundingBox(doc_, box);
      const JTPDFRect kept = GetPdfCanvasBoundingBox(doc_);
      Require(std::memcmp(&kept, &box, sizeof box) == 0, "the bounding box is what was set");
      break;
    }
    case 14:
      DrawPdfImage(doc_, source_.Integer());
      break;
    case 15:
    case 16:
      DrawPdfImageInRect(doc_, source_.Integer(), box);
      break;
    case 17:
    case 18:
      FillPdfRectangle(doc_, box, fill);
      break;
    case 19:
      StrokePdfRectangle(doc_, box, fill, source_.Double());
      break;
    case 20:
      FillAndStrokePdfRectangle(doc_, box, fill, source_.Color(), source_.Double());
      break;
    case 21:
      FillAndStrokePdfCircle(doc_, box, fill, source_.Color(), source_.Double());
      break;
    default: {
      JTPDFRect inset = box;
      const double dx = source_.Double();
      InsetPdfRect(&inset, dx, source_.Double());
      Require(std::memcmp(&inset.angle, &box.angle, sizeof box.angle) == 0, "an angle stays");
    }
  }
}

void RequireStructure(const Outcome& outcome) {
  golden::StructureOptions options;
  options.closing_text = true;
  options.unchecked_numbers = true;
  const golden::StructureReport report = golden::CheckStructure(outcome.bytes, options);
  if (!report.ok()) {
    RequireEqual(outcome.bytes, report.error + " at " + std::to_string(report.offset),
                 "a finished document has the structure of one");
  }
  Require(report.images == outcome.images, "every image is there");
  Require(report.profiles == outcome.profiles, "every profile is there");
  Require(report.forms == outcome.forms, "every form is there");
  Require(report.pages == outcome.pages, "every page is there");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteSource source(data, size);
  const Outcome memory = Player(source, false).Play();
  if (memory.finished && memory.wellFormed) RequireStructure(memory);

  const auto requireSame = [&memory](const Outcome& other, const char* property) {
    Require(other.results == memory.results, property);
    RequireEqual(other.bytes, memory.bytes, property);
  };
  {
    const Loud loud;
    requireSame(Player(source, false).Play(), "diagnostic mode changes nothing");
  }
  requireSame(Player(source, true).Play(), "file and memory agree");
  std::filesystem::remove(FilePath());
  return 0;
}
