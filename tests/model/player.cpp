// player.cpp - plays call sequences from standard input against the library and prints for each the
// transcript that sequence.py predicts: results, out-parameters, errno behind every call, the bytes
// of memory documents and of closed files, and what the library said on standard error.
//
//     sequence 17                        ->  sequence 17
//     CreateMemoryPdfDoc d0 0x1p+0           0 CreateMemoryPdfDoc errno=0
//     InitPdfDoc d0                          1 InitPdfDoc code=0 errno=0
//     end                                    end DestroyPdfDoc errno=0
//                                            end
//
// README.md describes the tokens. A host like any other: it includes the public headers only.
#include <fcntl.h>
#include <locale.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <locale>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jtpdf/jtpdf.h"

namespace {

constexpr int kSentinel = -559038737;  // what an out-parameter holds before the call
constexpr size_t kSlots = 8;

int savedStandardError = STDERR_FILENO;  // the real one, behind the capture

[[noreturn]] void Die(const std::string& message) {
  const std::string line = "player: " + message + "\n";
  if (write(savedStandardError, line.data(), line.size()) < 0) std::abort();
  std::exit(2);
}

// ---- Tokens -------------------------------------------------------------------------------------

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (;;) {
    const size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

template <typename Int>
Int ReadInt(std::string_view token, int base = 10) {
  Int value{};
  const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), value, base);
  if (error != std::errc() || end != token.data() + token.size()) {
    Die("not a number: " + std::string(token));
  }
  return value;
}

// Whatever locale is in force: sequences always have points.
double ReadDouble(const std::string& token) {
  static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
  char* end = nullptr;
  const double value = strtod_l(token.c_str(), &end, classic);
  if (*end != '\0' || token.empty()) Die("not a double: " + token);
  return value;
}

std::string ReadHex(std::string_view hex) {
  std::string bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(ReadInt<unsigned>(hex.substr(i, 2), 16));
  }
  return bytes;
}

// Arguments live in heap blocks of exactly their size, which are gone when the call has returned:
// reading behind them or keeping them shows under the sanitizers and valgrind.
using Wide = std::unique_ptr<wchar_t[]>;
using Text = std::unique_ptr<char[]>;

// Behind the two characters that tell the kind of a token: "text" or "text*times".
struct Pattern {
  std::string text;
  size_t times = 1;
};

Pattern ReadPattern(std::string_view token) {
  const std::vector<std::string> parts = Split(token.substr(2), '*');
  return {parts[0], parts.size() > 1 ? ReadInt<size_t>(parts[1]) : 1};
}

Wide ReadWide(std::string_view token) {
  if (token == "-") return nullptr;
  const Pattern pattern = ReadPattern(token);
  std::vector<wchar_t> units;
  if (!pattern.text.empty()) {
    for (const std::string& unit : Split(pattern.text, ',')) {
      units.push_back(static_cast<wchar_t>(ReadInt<uint32_t>(unit, 16)));
    }
  }
  Wide text(new wchar_t[units.size() * pattern.times + 1]);
  wchar_t* end = text.get();
  for (size_t i = 0; i < pattern.times; ++i) end = std::copy(units.begin(), units.end(), end);
  *end = L'\0';
  return text;
}

Text CopyText(const std::string& bytes) {
  Text text(new char[bytes.size() + 1]);
  std::memcpy(text.get(), bytes.c_str(), bytes.size() + 1);
  return text;
}

std::string ReadBytes(std::string_view token) {
  const Pattern pattern = ReadPattern(token);
  const std::string once = ReadHex(pattern.text);
  std::string bytes;
  for (size_t i = 0; i < pattern.times; ++i) bytes += once;
  return bytes;
}

Text ReadText(std::string_view token) {
  return token == "-" ? nullptr : CopyText(ReadBytes(token));
}

struct Data {
  Text bytes;
  unsigned size = 0;
};

Data ReadData(std::string_view token) {
  if (token == "-") return {};
  const std::string bytes = ReadBytes(token);
  Data data{Text(new char[bytes.size()]), static_cast<unsigned>(bytes.size())};
  std::copy(bytes.begin(), bytes.end(), data.bytes.get());
  return data;
}

JTPDFRect ReadRect(std::string_view token) {
  const std::vector<std::string> numbers = Split(token.substr(1, token.size() - 2), ',');
  return {ReadDouble(numbers.at(0)), ReadDouble(numbers.at(1)), ReadDouble(numbers.at(2)),
          ReadDouble(numbers.at(3)), ReadDouble(numbers.at(4))};
}

JTPDFRGBColor ReadColor(std::string_view token) {
  const std::string bytes = ReadHex(token);
  const auto channel = [&](size_t i) { return static_cast<uint8_t>(bytes.at(i)); };
  return {channel(0), channel(1), channel(2), channel(3)};
}

struct Image {
  Data data;
  std::unique_ptr<TPdfImageDescriptor> descriptor;
};

Image ReadImage(std::string_view token) {
  Image image;
  if (token == "-") return image;
  const std::vector<std::string> fields = Split(token.substr(1, token.size() - 2), ',');
  image.data = ReadData(fields.at(0));
  const auto number = [&](size_t i) { return ReadInt<int32_t>(fields.at(i)); };
  image.descriptor = std::make_unique<TPdfImageDescriptor>(TPdfImageDescriptor{
      image.data.bytes.get(), image.data.size, static_cast<TPdfCompression>(number(1)), number(2),
      number(3), number(4), static_cast<TPdfColorSpace>(number(5)), number(6)});
  return image;
}

struct Items {
  std::vector<std::pair<Text, Wide>> rows;
  std::unique_ptr<JTPDFDictionaryItem[]> table;
  unsigned count = 0;
};

Items ReadItems(std::string_view token) {
  Items items;
  if (token == "-") return items;
  if (token != "()") {
    for (const std::string& row : Split(token.substr(1, token.size() - 2), ';')) {
      const std::vector<std::string> sides = Split(row, '=');
      items.rows.emplace_back(CopyText(ReadHex(sides.at(0))), ReadWide(sides.at(1)));
    }
  }
  items.count = static_cast<unsigned>(items.rows.size());
  items.table.reset(new JTPDFDictionaryItem[items.rows.size()]);
  for (size_t i = 0; i < items.rows.size(); ++i) {
    items.table[i] = {items.rows[i].first.get(), items.rows[i].second.get()};
  }
  return items;
}

std::string Hex(std::string_view bytes) {
  static const char kDigits[] = "0123456789abcdef";
  std::string hex;
  hex.reserve(2 * bytes.size());
  for (const char c : bytes) {
    hex += kDigits[static_cast<unsigned char>(c) >> 4];
    hex += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return hex;
}

// Like printf("%a") in the C locale.
std::string ShownDouble(double value) {
  uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  const uint64_t mantissa = bits & 0xFFFFFFFFFFFFF;
  const int exponent = static_cast<int>(bits >> 52 & 0x7FF);
  const std::string sign = bits >> 63 != 0 ? "-" : "";
  if (exponent == 0x7FF) return sign + (mantissa != 0 ? "nan" : "inf");
  std::array<char, 32> digits{};
  std::snprintf(digits.data(), digits.size(), "%013llx", static_cast<unsigned long long>(mantissa));
  std::string fraction = digits.data();
  fraction.erase(fraction.find_last_not_of('0') + 1);
  if (!fraction.empty()) fraction.insert(0, ".");
  const int power = exponent != 0 ? exponent - 1023 : mantissa != 0 ? -1022 : 0;
  return sign + (exponent != 0 ? "0x1" : "0x0") + fraction + (power < 0 ? "p-" : "p+") +
         std::to_string(std::abs(power));
}

std::string ShownRect(const JTPDFRect& rect) {
  return "[" + ShownDouble(rect.left) + "," + ShownDouble(rect.bottom) + "," +
         ShownDouble(rect.width) + "," + ShownDouble(rect.height) + "," + ShownDouble(rect.angle) +
         "]";
}

// The bytes that a file name stands for on disk; "" if it is not valid wide text.
std::string FileSystemForm(const wchar_t* text) {
  std::string path;
  for (; *text != L'\0'; ++text) {
    const auto unit = static_cast<uint32_t>(*text);
    const auto continued = [&](int shift) {
      return static_cast<char>(0x80 | (unit >> shift & 0x3F));
    };
    if (unit > 0x10FFFF || (unit >= 0xD800 && unit <= 0xDFFF)) return "";
    if (unit < 0x80) {
      path += static_cast<char>(unit);
    } else if (unit < 0x800) {
      path += static_cast<char>(0xC0 | unit >> 6);
      path += continued(0);
    } else if (unit < 0x10000) {
      path += static_cast<char>(0xE0 | unit >> 12);
      path += continued(6);
      path += continued(0);
    } else {
      path += static_cast<char>(0xF0 | unit >> 18);
      path += continued(12);
      path += continued(6);
      path += continued(0);
    }
  }
  return path;
}

const char kFullDevice[] = "/dev/full";

// ---- Standard error -----------------------------------------------------------------------------

// Everything that reaches file descriptor 2, call by call.
class ErrorCapture {
 public:
  ErrorCapture() : file_(memfd_create("standard error", MFD_CLOEXEC)) {
    if (file_ < 0) Die("memfd_create failed");
    savedStandardError = dup(STDERR_FILENO);
    if (dup2(file_, STDERR_FILENO) < 0) Die("dup2 failed");
  }

  // What a checker of memory has to say at the very end is to be seen again.
  ~ErrorCapture() { dup2(savedStandardError, STDERR_FILENO); }
  ErrorCapture(const ErrorCapture&) = delete;
  ErrorCapture& operator=(const ErrorCapture&) = delete;

  // The lines since the last call, addresses made alike.
  std::vector<std::string> TakeLines() {
    std::string text;
    std::array<char, 4096> buffer;
    ssize_t got = 0;
    while ((got = pread(file_, buffer.data(), buffer.size(), taken_)) > 0) {
      text.append(buffer.data(), static_cast<size_t>(got));
      taken_ += got;
    }
    if (text.empty()) return {};
    std::vector<std::string> lines = Split(text, '\n');
    if (lines.back().empty()) {
      lines.pop_back();
    } else {
      lines.back() += " (without a line end)";
    }
    for (std::string& line : lines) HideAddress(line);
    return lines;
  }

 private:
  static void HideAddress(std::string& line) {
    static const std::string kBefore = "UTF-16 BE:0x";
    const size_t at = line.find(kBefore);
    if (at == std::string::npos) return;
    const size_t digits = at + kBefore.size();
    const size_t end = std::min(line.find_first_not_of("0123456789abcdef", digits), line.size());
    if (end > digits) line.replace(digits, end - digits, "ADDR");
  }

  int file_;
  off_t taken_ = 0;
};

// ---- Playing ------------------------------------------------------------------------------------

struct Slot {
  JTPDFDocument* document = nullptr;
  bool isFile = false;
  std::string path;  // of a file document
  bool wasInitialized = false;
  bool isOpen = false;         // initialised and not yet closed
  const char* data = nullptr;  // what GetPdfData gave first
};

class Player {
 public:
  void Play(const std::string& name, const std::vector<std::string>& sequence) {
    Reset();
    Emit("sequence " + name);
    for (size_t i = 0; i < sequence.size(); ++i) {
      index_ = std::to_string(i);
      PlayLine(sequence[i]);
    }
    index_ = "end";
    for (size_t slot = 0; slot < kSlots; ++slot) {
      if (slots_[slot].document != nullptr) PlayLine("DestroyPdfDoc d" + std::to_string(slot));
    }
    ListFiles();
    Emit("end");
    std::fwrite(transcript_.data(), 1, transcript_.size(), stdout);
    std::fflush(stdout);
    transcript_.clear();
  }

 private:
  using Words = std::vector<std::string>;

  void Emit(const std::string& line) {
    transcript_ += line;
    transcript_ += '\n';
  }

  // An empty directory with a directory and a symbolic link to itself; the switch off; errno 0.
  void Reset() {
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
      std::filesystem::remove_all(entry.path());
    }
    if (mkdir("isdir", 0777) != 0 || symlink("loop", "loop") != 0) Die("cannot fill the directory");
    for (const auto& [path, pipe] : pipes_) close(pipe);
    pipes_.clear();
    JTPDFSetDiagnosticMode(false);
    errno_ = 0;
  }

  // Runs one library call with errno as the sequence has it and says what came of it.
  template <typename Call>
  void Run(const std::string& name, Call&& call) {
    std::string result;
    errno = errno_;
    try {
      result = call();
    } catch (const std::exception& exception) {
      errno_ = errno;
      result = std::string(" exception ") + exception.what();
    }
    Emit(index_ + " " + name + result + " errno=" + std::to_string(errno_));
    for (const std::string& line : errors_.TakeLines()) Emit("  err " + line);
  }

  // The library call itself: nothing may run between it and the reading of errno.
  template <typename Call>
  auto Library(Call&& call) {
    if constexpr (std::is_void_v<decltype(call())>) {
      call();
      errno_ = errno;
    } else {
      const auto result = call();
      errno_ = errno;
      return result;
    }
  }

  void PlayLine(const std::string& line) {
    Words words = Split(line, ' ');
    size_t times = 1;
    if (words[0] == "repeat") {
      times = ReadInt<size_t>(words.at(1));
      words.erase(words.begin(), words.begin() + 2);
    }
    for (size_t i = 0; i < times; ++i) PlayCall(words);
  }

  void PlayCall(const Words& words) {
    const std::string& name = words[0];
    if (name == "errno") {
      errno_ = ReadInt<int>(words.at(1));
    } else if (name == "mkfifo") {
      MakePipe(FileSystemForm(ReadWide(words.at(1)).get()));
    } else if (name == "mkdir") {
      std::filesystem::create_directory(FileSystemForm(ReadWide(words.at(1)).get()));
    } else if (name == "JTPDFGetDiagnosticMode") {
      Run(name, [&] { return Shown(Library([] { return JTPDFGetDiagnosticMode(); })); });
    } else if (name == "JTPDFSetDiagnosticMode") {
      const bool on = words.at(1) == "1";
      RunVoid(name, [&] { JTPDFSetDiagnosticMode(on); });
    } else if (name == "InsetPdfRect") {
      auto rect = std::make_unique<JTPDFRect>(ReadRect(words.at(1)));
      const double dx = ReadDouble(words.at(2));
      const double dy = ReadDouble(words.at(3));
      Run(name, [&] {
        Library([&] { InsetPdfRect(rect.get(), dx, dy); });
        return " " + ShownRect(*rect);
      });
    } else if (name == "DestroyPdfDoc" && words.at(1) == "-") {
      RunVoid(name, [] { DestroyPdfDoc(nullptr); });
    } else {
      PlayDocumentCall(name, slots_.at(ReadInt<size_t>(words.at(1).substr(1))), words);
    }
  }

  static std::string Shown(bool value) { return value ? " 1" : " 0"; }

  template <typename Call>
  void RunVoid(const std::string& name, Call&& call) {
    Run(name, [&] {
      Library(call);
      return std::string();
    });
  }

  template <typename Call>
  int32_t RunCode(const std::string& name, Call&& call) {
    int32_t code = kSentinel;
    Run(name, [&] {
      code = Library(call);
      return " code=" + std::to_string(code);
    });
    return code;
  }

  // For writers whose last argument is the out-parameter: "out", or "null" to pass null.
  template <typename Call>
  void RunOut(const std::string& name, const std::string& wanted, Call&& call) {
    const auto out = std::make_unique<int>(kSentinel);
    int* const passed = wanted == "out" ? out.get() : nullptr;
    Run(name, [&] {
      const int32_t code = Library([&] { return call(passed); });
      return " code=" + std::to_string(code) +
             (passed != nullptr ? " out=" + std::to_string(*passed) : "");
    });
  }

  void PlayDocumentCall(const std::string& name, Slot& slot, const Words& words) {
    const bool creates = name.compare(0, 6, "Create") == 0;
    if (creates != (slot.document == nullptr)) {
      Emit(index_ + " " + name + " skipped");
    } else if (creates) {
      Create(name, slot, words);
    } else if (name.compare(0, 8, "WritePdf") == 0) {
      Write(name, slot.document, words);
    } else if (name.find("Canvas") != std::string::npos || name.compare(0, 4, "Draw") == 0 ||
               name.compare(0, 4, "Fill") == 0 || name.compare(0, 6, "Stroke") == 0) {
      Draw(name, slot.document, words);
    } else {
      Live(name, slot, words);
    }
  }

  void Create(const std::string& name, Slot& slot, const Words& words) {
    slot = Slot();
    const double unit = ReadDouble(words.at(2));
    if (name == "CreateMemoryPdfDoc") {
      RunVoid(name, [&] { slot.document = CreateMemoryPdfDoc(unit); });
      return;
    }
    const Wide file = ReadWide(words.at(3));
    const Wide creator = ReadWide(words.at(4));
    const Wide author = ReadWide(words.at(5));
    slot.isFile = true;
    slot.path = FileSystemForm(file.get());
    if (slot.path != kFullDevice &&
        (slot.path.compare(0, 1, "/") == 0 || slot.path.find("..") != std::string::npos)) {
      Die("the file name leaves the directory: " + slot.path);
    }
    RunVoid(name, [&] {
      slot.document = CreateFilePdfDoc(unit, file.get(), creator.get(), author.get());
    });
  }

  void Live(const std::string& name, Slot& slot, const Words& words) {
    JTPDFDocument* const doc = slot.document;
    if (name == "InitPdfDoc") {
      if (slot.isFile && !slot.wasInitialized && IsBusy(slot.path)) {
        Emit(index_ + " " + name + " skipped");
        return;
      }
      if (RunCode(name, [&] { return InitPdfDoc(doc); }) == 0) {
        slot.wasInitialized = true;
        slot.isOpen = slot.isFile;
      }
    } else if (name == "FinalizePdfDoc") {
      const Text closing = ReadText(words.at(2));
      if (RunCode(name, [&] { return FinalizePdfDoc(doc, closing.get()); }) == 0) ShowFile(slot);
    } else if (name == "GetPdfData") {
      Run(name, [&] { return ShownData(slot, Library([&] { return GetPdfData(doc); })); });
    } else if (name == "GetPdfDataSize") {
      Run(name, [&] { return " " + std::to_string(Library([&] { return GetPdfDataSize(doc); })); });
    } else if (name == "SetPdfInfoItem") {
      const Text key = ReadText(words.at(2));
      const Wide value = ReadWide(words.at(3));
      RunVoid(name, [&] { SetPdfInfoItem(doc, key.get(), value.get()); });
    } else if (name == "GetPdfMgMk") {
      Run(name, [&] { return Shown(Library([&] { return GetPdfMgMk(doc); })); });
    } else if (name == "SetPdfMgMk") {
      const bool mark = words.at(2) == "1";
      RunVoid(name, [&] { SetPdfMgMk(doc, mark); });
    } else if (name == "DestroyPdfDoc") {
      RunVoid(name, [&] { DestroyPdfDoc(doc); });
      ShowFile(slot);
      slot = Slot();
    } else {
      Die("unknown call: " + name);
    }
  }

  void Draw(const std::string& name, JTPDFDocument* doc, const Words& words) {
    const auto rect = [&](size_t i) { return ReadRect(words.at(i)); };
    const auto color = [&](size_t i) { return ReadColor(words.at(i)); };
    if (name == "ClearPdfCanvas") {
      RunVoid(name, [&] { ClearPdfCanvas(doc); });
    } else if (name == "GetPdfCanvasBoundingBox") {
      Run(name,
          [&] { return " " + ShownRect(Library([&] { return GetPdfCanvasBoundingBox(doc); })); });
    } else if (name == "SetPdfCanvasBoundingBox") {
      const JTPDFRect box = rect(2);
      RunVoid(name, [&] { SetPdfCanvasBoundingBox(doc, box); });
    } else if (name == "DrawPdfImage" || name == "DrawPdfImageInRect") {
      const int image = ReadInt<int>(words.at(2));
      if (name == "DrawPdfImage") {
        RunVoid(name, [&] { DrawPdfImage(doc, image); });
      } else {
        const JTPDFRect box = rect(3);
        RunVoid(name, [&] { DrawPdfImageInRect(doc, image, box); });
      }
    } else if (name == "FillPdfRectangle") {
      const JTPDFRect box = rect(2);
      const JTPDFRGBColor fill = color(3);
      RunVoid(name, [&] { FillPdfRectangle(doc, box, fill); });
    } else if (name == "StrokePdfRectangle") {
      const JTPDFRect box = rect(2);
      const JTPDFRGBColor stroke = color(3);
      const double width = ReadDouble(words.at(4));
      RunVoid(name, [&] { StrokePdfRectangle(doc, box, stroke, width); });
    } else {
      const bool circle = name == "FillAndStrokePdfCircle";
      if (!circle && name != "FillAndStrokePdfRectangle") Die("unknown call: " + name);
      const JTPDFRect box = rect(2);
      const JTPDFRGBColor fill = color(3);
      const JTPDFRGBColor stroke = color(4);
      const double width = ReadDouble(words.at(5));
      RunVoid(name, [&] {
        (circle ? FillAndStrokePdfCircle : FillAndStrokePdfRectangle)(doc, box, fill, stroke,
                                                                      width);
      });
    }
  }

  void Write(const std::string& name, JTPDFDocument* doc, const Words& words) {
    if (name == "WritePdfCanvas") {
      RunOut(name, words.at(2), [&](int* out) { return WritePdfCanvas(doc, out); });
    } else if (name == "WritePdfPage") {
      const int form = ReadInt<int>(words.at(2));
      const JTPDFRect crop = ReadRect(words.at(3));
      const JTPDFRect media = ReadRect(words.at(4));
      RunCode(name, [&] { return WritePdfPage(doc, form, crop, media); });
    } else if (name == "WritePdfICCProfile") {
      const Data data = ReadData(words.at(2));
      const auto compression = static_cast<TPdfCompression>(ReadInt<int32_t>(words.at(3)));
      RunOut(name, words.at(4), [&](int* out) {
        return WritePdfICCProfile(doc, data.bytes.get(), data.size, compression, out);
      });
    } else {
      WriteImage(name, doc, words);
    }
  }

  // The three image writers share the tail of their arguments: role, name, items and out.
  void WriteImage(const std::string& call, JTPDFDocument* doc, const Words& words) {
    const Image image = ReadImage(words.at(2));
    const bool hasSecond = call != "WritePdfImageJPEG2000";
    const size_t tail = hasSecond ? 4 : 3;
    const auto role = static_cast<TPdfImageRole>(ReadInt<int32_t>(words.at(tail)));
    const Wide name = ReadWide(words.at(tail + 1));
    const Items items = ReadItems(words.at(tail + 2));
    const std::string& wanted = words.at(tail + 3);
    const TPdfImageDescriptor* const main = image.descriptor.get();
    if (call == "WritePdfImage") {
      const bool maskWhite = words.at(3) == "1";
      RunOut(call, wanted, [&](int* out) {
        return WritePdfImage(doc, main, maskWhite, role, name.get(), items.count, items.table.get(),
                             out);
      });
    } else if (call == "WritePdfImageWithAlpha") {
      const Image alpha = ReadImage(words.at(3));
      RunOut(call, wanted, [&](int* out) {
        return WritePdfImageWithAlpha(doc, main, alpha.descriptor.get(), role, name.get(),
                                      items.count, items.table.get(), out);
      });
    } else if (call == "WritePdfImageJPEG2000") {
      RunOut(call, wanted, [&](int* out) {
        return WritePdfImageJPEG2000(doc, main, role, name.get(), items.count, items.table.get(),
                                     out);
      });
    } else {
      Die("unknown call: " + call);
    }
  }

  // GetPdfData's bytes, with a word for a promise that was broken.
  std::string ShownData(Slot& slot, const char* data) {
    if (data == nullptr) return " null";
    const size_t size = GetPdfDataSize(slot.document);
    std::string result = " " + Hex({data, size});
    if (data[size] != '\0') result += " UNTERMINATED";
    if (slot.data != nullptr && slot.data != data) result += " MOVED";
    slot.data = data;
    return result;
  }

  bool IsBusy(const std::string& path) const {
    return path != kFullDevice && std::any_of(slots_.begin(), slots_.end(), [&](const Slot& slot) {
             return slot.isOpen && slot.path == path;
           });
  }

  // Shows the file that the document in the slot has just closed.
  void ShowFile(Slot& slot) {
    if (!slot.isOpen) return;
    slot.isOpen = false;
    if (slot.path == kFullDevice) return;
    std::string content;
    const auto pipe = pipes_.find(slot.path);
    if (pipe != pipes_.end()) {
      std::array<char, 4096> buffer;
      ssize_t got = 0;
      while ((got = read(pipe->second, buffer.data(), buffer.size())) > 0) {
        content.append(buffer.data(), static_cast<size_t>(got));
      }
    } else {
      std::ifstream file(slot.path, std::ios::binary);
      content.assign(std::istreambuf_iterator<char>(file), {});
    }
    Emit("  file " + Hex(slot.path) + " " + Hex(content));
  }

  // A pipe with room for a whole document, so that nobody has to read while it is written.
  void MakePipe(const std::string& path) {
    const int reader =
        mkfifo(path.c_str(), 0666) == 0 ? open(path.c_str(), O_RDWR | O_NONBLOCK) : -1;
    if (reader < 0 || fcntl(reader, F_SETPIPE_SZ, 1 << 20) < 0) Die("cannot make the pipe " + path);
    pipes_[path] = reader;
  }

  void ListFiles() {
    std::map<std::string, uintmax_t> sizes;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) {
      if (entry.symlink_status().type() != std::filesystem::file_type::regular) continue;
      sizes[entry.path().string().substr(2)] = entry.file_size();
    }
    for (const auto& [path, size] : sizes) {
      Emit("left " + Hex(path) + " " + std::to_string(size));
    }
  }

  ErrorCapture errors_;
  std::array<Slot, kSlots> slots_;
  std::map<std::string, int> pipes_;
  std::string transcript_;
  std::string index_;
  int errno_ = 0;
};

// An empty directory that is the working directory and gone at the end.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    path_ = (std::filesystem::temp_directory_path() / "jtpdf_player_XXXXXX").string();
    if (mkdtemp(path_.data()) == nullptr || chdir(path_.c_str()) != 0) Die("no scratch directory");
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

 private:
  std::string path_;
};

// Puts the host's locale in force everywhere that a host can.
void UseLocale(const char* name) {
  if (setlocale(LC_ALL, name) == nullptr) Die(std::string("no such locale: ") + name);
  const std::locale locale(name);
  std::locale::global(locale);
  std::cerr.imbue(locale);
}

}  // namespace

int main(int argc, char** argv) {
  if (JTPDFGetDiagnosticMode()) Die("diagnostic mode is on before anybody switched it on");
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--locale") == 0 && i + 1 < argc) {
      UseLocale(argv[++i]);
    } else if (std::strcmp(argv[i], "--stream-flags") == 0) {
      // What a host may have left on the stream that it shares with the library.
      std::cerr << std::hex << std::showbase << std::uppercase << std::showpos;
    } else {
      Die("usage: model_player [--locale NAME] [--stream-flags] < SEQUENCES");
    }
  }
  const ScratchDirectory scratch;
  Player player;
  std::string line;
  std::string name;
  std::vector<std::string> sequence;
  while (std::getline(std::cin, line)) {
    if (line.compare(0, 9, "sequence ") == 0) {
      name = line.substr(9);
      sequence.clear();
    } else if (line == "end") {
      player.Play(name, sequence);
    } else if (!line.empty()) {
      sequence.push_back(line);
    }
  }
  return 0;
}
