// write_large CASE FILE [DIVISOR]: writes a document beyond the sizes that numbers are too short
// for: offsets above 2^32 and of eleven digits, a million pages, the largest image that there can
// be. DIVISOR makes it smaller, to try the program.

#include <jtpdf/jtpdf.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr JTPDFRect kSheet = {0, 0, 210, 297, 0};
// No /Filter is written: the data is the samples themselves.
constexpr auto kNotCompressed = static_cast<TPdfCompression>(-1);

void Check(std::int32_t code, const char* call) {
  if (code != 0) {
    throw std::runtime_error(std::string(call) +
                             " failed: " + (code == -1 ? "refused" : std::strerror(code)));
  }
}

class Document {
 public:
  explicit Document(JTPDFDocument* doc) : doc_(doc) {
    SetPdfCanvasBoundingBox(doc_, kSheet);
    Check(InitPdfDoc(doc_), "InitPdfDoc");
  }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  ~Document() { DestroyPdfDoc(doc_); }

  // A grey image of one byte a pixel.
  int Image(const char* data, int width, int height) {
    const auto size = static_cast<std::uint32_t>(std::int64_t{width} * height);
    const TPdfImageDescriptor image = {data,   size, kNotCompressed,     width,
                                       height, 8,    kPdfColorSpaceGray, 0};
    int number = 0;
    Check(WritePdfImage(doc_, &image, false, kPdfImageRolePhoto, L"", 0, nullptr, &number),
          "WritePdfImage");
    return number;
  }

  void Draw(int image, JTPDFRect box) { DrawPdfImageInRect(doc_, image, box); }

  int Form() {
    int form = 0;
    Check(WritePdfCanvas(doc_, &form), "WritePdfCanvas");
    return form;
  }

  void Page(int form) { Check(WritePdfPage(doc_, form, kSheet, kSheet), "WritePdfPage"); }
  void Finish() { Check(FinalizePdfDoc(doc_, nullptr), "FinalizePdfDoc"); }
  JTPDFDocument* Handle() { return doc_; }

 private:
  JTPDFDocument* doc_;
};

std::vector<char> Noise(std::size_t size) {
  std::vector<char> bytes(size);
  std::uint64_t state = 88172645463325252u;
  for (char& byte : bytes) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    byte = static_cast<char>(state);
  }
  return bytes;
}

// Pages of one image each, of 64 MiB before the division.
void WriteImagePages(Document& doc, int count, int divisor) {
  const int height = std::max(1, 8192 / divisor);
  const std::vector<char> noise = Noise(std::size_t{8192} * static_cast<std::size_t>(height));
  for (int i = 0; i < count; ++i) {
    doc.Draw(doc.Image(noise.data(), 8192, height), kSheet);
    doc.Page(doc.Form());
  }
}

void WritePages(Document& doc, int divisor) {
  const int form = doc.Form();
  for (int i = 0; i < 1000000 / divisor; ++i) doc.Page(form);
}

// A contact sheet of a thousand stamps to a page.
void WriteStamps(Document& doc, int divisor) {
  const std::vector<char> noise = Noise(100000 + 64);
  const int count = 100000 / divisor;
  for (int i = 0; i < count; ++i) {
    const int stamp = doc.Image(noise.data() + i, 8, 8);
    const JTPDFRect box = {10.0 + i % 25 * 7.6, 10.0 + i / 25 % 40 * 6.9, 7, 6, 0};
    doc.Draw(stamp, box);
    if (i % 1000 == 999 || i == count - 1) doc.Page(doc.Form());
  }
}

// The most that an image's size can say, 2^32 - 1 bytes: 65535 columns, 65537 rows. Pages of memory
// that nobody wrote are all the same one.
void WriteLargestImage(Document& doc, int divisor) {
  const int height = std::max(1, 65537 / divisor);
  const std::size_t size = std::size_t{65535} * static_cast<std::size_t>(height);
  void* const zeros =
      mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (zeros == MAP_FAILED) throw std::runtime_error(std::string("mmap: ") + std::strerror(errno));
  doc.Draw(doc.Image(static_cast<const char*>(zeros), 65535, height), kSheet);
  doc.Page(doc.Form());
  munmap(zeros, size);
}

void Draw(Document& doc, const std::string& what, int divisor) {
  if (what == "5gib") {
    WriteImagePages(doc, 80, divisor);
  } else if (what == "12gib") {
    WriteImagePages(doc, 192, divisor);
  } else if (what == "memory") {
    WriteImagePages(doc, 36, divisor);  // 2.25 GiB
  } else if (what == "pages") {
    WritePages(doc, divisor);
  } else if (what == "images") {
    WriteStamps(doc, divisor);
  } else if (what == "largest-image") {
    WriteLargestImage(doc, divisor);
  } else {
    throw std::runtime_error("unknown case " + what +
                             ": 5gib, 12gib, memory, pages, images or largest-image");
  }
  doc.Finish();
}

void Save(JTPDFDocument* doc, const std::string& file) {
  std::FILE* const out = std::fopen(file.c_str(), "wb");
  const std::size_t size = GetPdfDataSize(doc);
  const bool written = out != nullptr && std::fwrite(GetPdfData(doc), 1, size, out) == size;
  if ((out != nullptr && std::fclose(out) != 0) || !written) {
    throw std::runtime_error(file + ": " + std::strerror(errno));
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::fprintf(stderr, "usage: write_large CASE FILE [DIVISOR]\n");
    return 2;
  }
  const std::string what = argv[1];
  const std::string file = argv[2];
  const int divisor = argc == 4 ? std::max(1, std::atoi(argv[3])) : 1;
  try {
    const double unit = PDFCoordinateUnitMillimeter;
    const std::wstring name = std::filesystem::path(file).wstring();
    if (what == "memory") {
      Document doc(CreateMemoryPdfDoc(unit));
      Draw(doc, what, divisor);
      Save(doc.Handle(), file);
    } else {
      Document doc(CreateFilePdfDoc(unit, name.c_str(), nullptr, nullptr));
      Draw(doc, what, divisor);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "write_large %s: %s: %s\n", what.c_str(), file.c_str(), error.what());
    return 1;
  }
  return 0;
}
