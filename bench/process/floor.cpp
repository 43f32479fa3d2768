// The floor: writes exactly the library's bytes with nothing in between. Every text stands here as
// it comes out; only numbers and offsets are made. It shows what the machine can do, and is no way
// to write a library: it knows each workload by heart.

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

#include "workload.h"

namespace bench {

namespace {

constexpr char kDigitPairs[] =
    "0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546"
    "4748495051525354555657585960616263646566676869707172737475767778798081828384858687888990919293"
    "949596979899";

// Appending to a block that is large enough: every caller counts its room.
inline char* Put(char* p, std::string_view text) {
  std::memcpy(p, text.data(), text.size());
  return p + text.size();
}

inline char* PutPair(char* p, std::uint64_t value) {
  std::memcpy(p, kDigitPairs + 2 * value, 2);
  return p + 2;
}

inline char* PutInteger(char* p, std::uint64_t value) {
  if (value < 10) {
    *p = static_cast<char>('0' + value);
    return p + 1;
  }
  if (value < 100) return PutPair(p, value);
  if (value < 1000) {
    *p = static_cast<char>('0' + value / 100);
    return PutPair(p + 1, value % 100);
  }
  if (value < 10000) return PutPair(PutPair(p, value / 100), value % 100);
  char digits[20];
  char* start = std::end(digits);
  for (; value >= 100; value /= 100) PutPair(start -= 2, value % 100);
  p = PutInteger(p, value);
  return Put(p, {start, static_cast<std::size_t>(std::end(digits) - start)});
}

// "%.4f". The product's error is below a millionth for these magnitudes, so only a number that
// lies as close as that to a half needs the exact way.
inline char* PutReal(char* p, double value) {
  *p = '-';
  p += std::signbit(value);
  const double scaled = std::fabs(value) * 10000;
  if (!(scaled < 4294967295.0)) return p + std::snprintf(p, 330, "%.4f", std::fabs(value));
  std::uint64_t whole = static_cast<std::uint64_t>(static_cast<std::int64_t>(scaled));
  const double rest = scaled - static_cast<double>(static_cast<std::int64_t>(whole));
  if (std::fabs(rest - 0.5) < 1e-6) {
    return p + std::snprintf(p, 32, "%.4f", std::fabs(value));
  }
  whole += rest > 0.5;
  p = PutInteger(p, whole / 10000);
  const std::uint64_t decimals = whole % 10000;
  *p = '.';
  return PutPair(PutPair(p + 1, decimals / 100), decimals % 100);
}

// The 256 values of a colour component as text: "0.5020" and a blank.
struct Components {
  Components() {
    for (int i = 0; i < 256; ++i) {
      char number[16];
      std::snprintf(number, sizeof number, "%.4f ", i / 255.0);
      std::memcpy(text[i], number, 7);
    }
  }
  char text[256][8];
};
const Components kComponents;

inline char* PutColor(char* p, Rgb color) {
  std::memcpy(p, kComponents.text[color.red], 8);
  std::memcpy(p + 7, kComponents.text[color.green], 8);
  std::memcpy(p + 14, kComponents.text[color.blue], 8);
  return p + 21;
}

constexpr std::size_t kShapeRoom = 800;
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kCircleHandle = 0.551784;

char* PutRectangle(char* p, const Shape& s, bool rotated) {
  p = Put(p, "\r\n%rectangle\r\nq\r\n");
  p = Put(PutColor(p, s.fill), "rg\r\n");
  p = Put(PutColor(p, s.stroke), "RG\r\n");
  p = Put(PutReal(p, s.lineWidth), " w 1 0 0 1 ");
  *(p = PutReal(p, s.width * 0.5 + s.left)) = ' ';
  p = PutReal(p + 1, s.height * 0.5 + s.bottom);
  if (rotated) {
    const double cosine = std::cos(s.angle * kRadiansPerDegree);
    const double sine = std::sin(s.angle * kRadiansPerDegree);
    p = Put(p, " cm ");
    char* const first = p;
    *(p = PutReal(p, cosine)) = ' ';
    const auto size = static_cast<std::size_t>(p - first);
    char* const second = ++p;
    *(p = PutReal(p, sine)) = ' ';
    // The other two are the same digits again.
    const bool negative = *second == '-';
    const char* const digits = second + (negative ? 1 : 0);
    const auto digitCount = static_cast<std::size_t>(p - digits);
    ++p;
    if (!negative) *p++ = '-';
    std::memcpy(p, digits, digitCount);
    p += digitCount;
    *p++ = ' ';
    std::memcpy(p, first, size);
    p = Put(p + size, " 0 0 cm 1 0 0 1 ");
  } else {
    p = Put(p, " cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm 1 0 0 1 ");
  }
  *(p = PutReal(p, s.width * -0.5)) = ' ';
  p = Put(PutReal(p + 1, s.height * -0.5), " cm 0 0 ");
  *(p = PutReal(p, s.width)) = ' ';
  return Put(PutReal(p + 1, s.height), " re\r\nB Q");
}

// A number that is written with and without its minus sign.
struct Signed {
  explicit Signed(double value) {
    text[0] = '-';
    size = static_cast<std::size_t>(PutReal(text + 1, value) - (text + 1));
  }
  char* Plus(char* p) const {
    std::memcpy(p, text + 1, 16);
    p[size] = ' ';
    return p + size + 1;
  }
  char* Minus(char* p) const {
    std::memcpy(p, text, 16);
    p[size + 1] = ' ';
    return p + size + 2;
  }
  char text[32];
  std::size_t size;
};

// For radii above zero, which ShapeSource's are.
char* PutEllipse(char* p, const Shape& s) {
  const double a = s.width * 0.5 - s.lineWidth * 0.5;
  const double b = s.height * 0.5 - s.lineWidth * 0.5;
  const Signed textA(a), textB(b), textKa(kCircleHandle * a), textKb(b * kCircleHandle);
  p = Put(p, "\r\n");
  p = Put(PutReal(p, s.lineWidth), " w\r\n");
  p = Put(PutColor(p, s.fill), "rg ");
  p = Put(PutColor(p, s.stroke), "RG\r\nq 1 0 0 1  ");
  *(p = PutReal(p, s.width * 0.5 + s.left)) = ' ';
  p = Put(PutReal(p + 1, s.height * 0.5 + s.bottom), "  cm\r\n");
  p = Put(textA.Minus(p), "0  m\r\n");
  p = Put(textB.Plus(textKa.Minus(textKb.Plus(textA.Minus(p)))), "0 ");
  p = Put(textB.Plus(p), "c\r\n");
  p = Put(textA.Plus(textKb.Plus(textA.Plus(textB.Plus(textKa.Plus(p))))), "0 c\r\n");
  p = Put(textB.Minus(textKa.Plus(textKb.Minus(textA.Plus(p)))), "0 ");
  p = Put(textB.Minus(p), "c\r\n");
  p = Put(textA.Minus(textKb.Minus(textA.Minus(textB.Minus(textKa.Minus(p))))), "0 c\r\n");
  return Put(p, "b Q");
}

// Memory that is not touched before it is written.
struct Block {
  explicit Block(std::size_t size) : start(static_cast<char*>(std::malloc(size))) {
    if (start == nullptr) throw std::bad_alloc();
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { std::free(start); }
  char* const start;
};

// The output, as a block that is written to the file whenever it is full, or as the whole result.
class Sink {
 public:
  static constexpr std::size_t kFileBlock = std::size_t{1} << 20;

  explicit Sink(const char* name)
      : descriptor(open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)),
        block(kFileBlock),
        size(kFileBlock) {
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), name);
  }
  // In memory: size bounds the whole result.
  explicit Sink(std::size_t size) : descriptor(-1), block(size), size(size) {}
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;
  ~Sink() {
    if (descriptor >= 0) close(descriptor);
  }

  // The place for the next bytes, of which there may be room; Take tells where they end.
  char* Room(std::size_t room) {
    if (static_cast<std::size_t>(block.start + size - end) < room) Flush({});
    return end;
  }
  void Take(char* newEnd) { end = newEnd; }

  // Bytes in whatever number, not copied on their way into a file unless they are few.
  void Raw(std::string_view data) {
    if (descriptor < 0 || data.size() < 65536) {
      Take(Put(Room(data.size()), data));
    } else {
      Flush(data);
    }
  }

  std::uint64_t Position() const { return flushed + static_cast<std::uint64_t>(end - block.start); }
  std::uint64_t PositionOf(const char* p) const {
    return flushed + static_cast<std::uint64_t>(p - block.start);
  }

  void Close() {
    if (descriptor >= 0) Flush({});
  }
  std::string_view Result() const {
    return {block.start, static_cast<std::size_t>(end - block.start)};
  }

 private:
  void Flush(std::string_view behind) {
    if (descriptor < 0) throw std::bad_alloc();
    const auto buffered = static_cast<std::size_t>(end - block.start);
    flushed += buffered + behind.size();
    iovec parts[2] = {{block.start, buffered}, {const_cast<char*>(behind.data()), behind.size()}};
    while (parts[0].iov_len + parts[1].iov_len > 0) {
      const ssize_t got = writev(descriptor, parts, 2);
      if (got < 0) throw std::system_error(errno, std::generic_category(), "write");
      auto written = static_cast<std::size_t>(got);
      for (iovec& part : parts) {
        const std::size_t step = std::min(written, part.iov_len);
        part.iov_base = static_cast<char*>(part.iov_base) + step;
        part.iov_len -= step;
        written -= step;
      }
    }
    end = block.start;
  }

  const int descriptor;
  Block block;
  const std::size_t size;
  char* end = block.start;
  std::uint64_t flushed = 0;
};

constexpr std::string_view kHead =
    "%PDF-1.5\r\n%\xE2\xE3\xCD\xD3\r\n1 0 obj\r\n<<\r\n/AIS false\r\n/BM /Normal\r\n/ca 1.0\r\n"
    "/CA 1.0\r\n/OP false\r\n/op false\r\n/OPM 1\r\n/SA true\r\n/SMask /None\r\n/Type "
    "/ExtGState\r\n"
    ">>\r\nendobj\r\n";
constexpr std::string_view kFirstLine = "/GS0 gs";

// A PDF string of ASCII text in UTF-16, as a literal.
std::string Utf16Literal(std::string_view text) {
  std::string literal = "(\xFE\xFF";
  for (const char c : text) literal += std::string("\\000") + c;
  return literal + ")";
}

// The tail of every file between the catalog's reference and the cross-reference table.
std::string InfoBody() {
  return " 0 obj\r\n<<\r\n/MGmk " + Utf16Literal("false") + "\r\n/Producer " +
         Utf16Literal("JTPDF 2.1.6") + "\r\n>>\r\nendobj\r\n";
}

// Pages that all have the same size, each of one form, and the file around them.
class Floor {
 public:
  Floor(Sink& sink, std::size_t pages, double width, double height) : sink(sink) {
    xref.reserve(16 + 4 * pages + pages / 8);
    contents.reserve(pages);
    char* p = PutReal(Put(boxText, "[0.0000 0.0000 "), width);
    *p++ = ' ';
    p = Put(PutReal(p, height), "]\r\n");
    box = {boxText, static_cast<std::size_t>(p - boxText)};
    sink.Take(Put(sink.Room(1024), kHead));
    xref.push_back(0);
    xref.push_back(17);
  }

  int NextObject() const { return static_cast<int>(xref.size()); }

  char* BeginObject(char* p, std::string_view body) {
    const int number = NextObject();
    xref.push_back(sink.PositionOf(p));
    return Put(PutInteger(p, static_cast<unsigned>(number)), body);
  }

  // The form whose content is given and the page that shows it. image is drawn by it unless 0.
  void Page(std::string_view content, int image) {
    char* p = FormHead(image, content.size());
    if (content.size() < 4096) {
      p = Put(p, content);
    } else {
      sink.Take(p);
      sink.Raw(content);
      p = sink.Room(1024);
    }
    PageContents(p);
  }

  // The same for content of at most room bytes that put(p) writes at p: it is made in place, behind
  // a length of three digits.
  template <typename PutContent>
  void PageInPlace(const PutContent& put) {
    char* const p = FormHead(0, 100);
    char* const end = put(p);
    const auto size = static_cast<std::size_t>(end - p);
    if (size < 100 || size > 999) throw std::logic_error("content without three digits of length");
    char* const digits = p - std::string_view("100\r\n>>\r\nstream\r\n").size();
    *digits = static_cast<char>('0' + size / 100);
    PutPair(digits + 1, size % 100);
    PageContents(end);
  }

  void Image(std::string_view jpeg, int width, int height) {
    char* p = BeginObject(sink.Room(2048),
                          " 0 obj\r\n<<\r\n/BitsPerComponent 8\r\n/ColorSpace /DeviceRGB\r\n"
                          "/Filter /DCTDecode\r\n/Height ");
    p = PutInteger(p, static_cast<unsigned>(height));
    p = Put(p,
            "\r\n/Intent /RelativeColorimetric\r\n/JTImageName (\xFE\xFF"
            "\\000p\\000h\\000o\\000t\\000o)\r\n/JTImageType /Photo\r\n"
            "/Subtype /Image\r\n/Type /XObject\r\n/Width ");
    p = PutInteger(p, static_cast<unsigned>(width));
    p = Put(PutInteger(Put(p, "\r\n/Length "), jpeg.size()), "\r\n>>\r\nstream\r\n");
    sink.Take(p);
    sink.Raw(jpeg);
    sink.Take(Put(sink.Room(64), "endstream\r\nendobj\r\n"));
  }

  void Finish() {
    PageTree();
    char* p = BeginObject(sink.Room(1024), " 0 obj\r\n<<\r\n/Pages ");
    p = PutInteger(p, static_cast<unsigned>(NextObject() - 2));
    p = Put(p, " 0 R\r\n/Type /Catalog\r\n>>\r\nendobj\r\n");
    static const std::string kInfoBody = InfoBody();
    sink.Take(BeginObject(p, kInfoBody));
    CrossReferences();
  }

 private:
  char* FormHead(int image, std::size_t contentSize) {
    char* p = BeginObject(sink.Room(4096 + 2048), " 0 obj\r\n<<\r\n/BBox ");
    p = Put(p, box);
    p = Put(p, "/FormType 1\r\n/Resources\r\n<<\r\n/ExtGState\r\n<<\r\n/GS0 1 0 R\r\n>>\r\n");
    if (image != 0) {
      p = PutInteger(Put(p, "/XObject\r\n<<\r\n/Im"), static_cast<unsigned>(image));
      *p++ = ' ';
      p = Put(PutInteger(p, static_cast<unsigned>(image)), " 0 R\r\n>>\r\n");
    }
    p = Put(p, ">>\r\n/Subtype /Form\r\n/Type /XObject\r\n/Length ");
    return Put(PutInteger(p, contentSize), "\r\n>>\r\nstream\r\n");
  }

  void PageContents(char* p) {
    p = Put(p, "\r\nendstream\r\nendobj\r\n");
    const auto form = static_cast<unsigned>(NextObject() - 1);
    contents.push_back(NextObject());
    char number[16];
    const std::string_view digits(number,
                                  static_cast<std::size_t>(PutInteger(number, form) - number));
    p = PutInteger(BeginObject(p, " 0 obj\r\n<<\r\n/Length "), 25 + digits.size());
    p = Put(Put(p, "\r\n>>\r\nstream\r\nq 1 0 0 1 0 0 cm /Fm"), digits);
    sink.Take(Put(p, " Do Q\r\nendstream\r\nendobj\r\n"));
  }

  void PageTree() {
    const int pageCount = static_cast<int>(contents.size());
    const int firstParent = NextObject() + pageCount;
    int parent = firstParent;
    char parentNumber[16];
    std::string_view parentDigits;
    int i = 0;
    for (const int content : contents) {
      if (i % 10 == 0) {
        parent = firstParent + i / 10;
        char* const end = PutInteger(parentNumber, static_cast<unsigned>(parent));
        parentDigits = {parentNumber, static_cast<std::size_t>(end - parentNumber)};
      }
      ++i;
      char* p = BeginObject(sink.Room(1024), " 0 obj\r\n<<\r\n/Contents ");
      p = PutInteger(p, static_cast<unsigned>(content));
      p = Put(Put(p, " 0 R\r\n/CropBox "), box);
      p = Put(Put(Put(p, "/MediaBox "), box), "/Parent ");
      p = Put(p, parentDigits);
      p = Put(
          p,
          " 0 R\r\n/Resources\r\n<<\r\n/ProcSet [/PDF /ImageB /ImageC]\r\n/XObject\r\n<<\r\n/Fm");
      char* const digits = p;
      p = PutInteger(p, static_cast<unsigned>(content - 1));
      const auto size = static_cast<std::size_t>(p - digits);
      *p++ = ' ';
      std::memcpy(p, digits, size);
      p += size;
      sink.Take(Put(p,
                    " 0 R\r\n>>\r\n>>\r\n/Type /Page\r\n/Group\r\n<<\r\n"
                    "/CS /DeviceRGB /I false /K false /S /Transparency\r\n>>\r\n>>\r\nendobj\r\n"));
    }

    int count = pageCount;
    for (int perNode = 10; count > 10; perNode *= 10) {
      const int base = NextObject();
      const int nodes = (count + 9) / 10;
      for (int j = 0; j < nodes; ++j) {
        const bool full = 10 * j + 10 <= count;
        Node(full ? perNode : pageCount % perNode, base - count + 10 * j, full ? 10 : count % 10,
             base + nodes + j / 10);
      }
      count = nodes;
    }
    Node(pageCount, NextObject() - count, count, 0);
  }

  void Node(int pages, int firstKid, int kids, int parent) {
    char* p = BeginObject(sink.Room(1024), " 0 obj\r\n<<\r\n/Count ");
    p = Put(PutInteger(p, static_cast<unsigned>(pages)), "\r\n/Kids [");
    for (int kid = firstKid; kid < firstKid + kids; ++kid) {
      p = Put(PutInteger(p, static_cast<unsigned>(kid)), " 0 R ");
    }
    p[-1] = ']';
    if (parent != 0) {
      p = Put(PutInteger(Put(p, "\r\n/Parent "), static_cast<unsigned>(parent)), " 0 R");
    }
    sink.Take(Put(p, "\r\n/Type /Pages\r\n>>\r\nendobj\r\n"));
  }

  void CrossReferences() {
    char* p = sink.Room(256);
    const std::uint64_t start = sink.Position();
    p = Put(PutInteger(Put(p, "xref\r\n0 "), xref.size()), "\r\n0000000000 65535 f\r\n");
    sink.Take(p);
    for (std::size_t i = 1; i < xref.size(); ++i) {
      p = sink.Room(64);
      std::uint64_t offset = xref[i];
      for (int pair = 8; pair >= 0; pair -= 2) {
        PutPair(p + pair, offset % 100);
        offset /= 100;
      }
      sink.Take(Put(p + 10, " 00000 n\r\n"));
    }
    p = Put(PutInteger(Put(sink.Room(256), "trailer\r\n<<\r\n/Size "), xref.size()), "\r\n/Root ");
    p = PutInteger(p, xref.size() - 2);
    p = PutInteger(Put(p, " 0 R\r\n/Info "), xref.size() - 1);
    p = PutInteger(Put(p, " 0 R\r\n>>\r\nstartxref\r\n"), start);
    sink.Take(Put(p, "\r\n%%EOF\r\n"));
  }

  Sink& sink;
  char boxText[64];
  std::string_view box;
  std::vector<std::uint64_t> xref;
  std::vector<int> contents;  // of each page, behind its form
};

void DrawShapes(const Job& job) {
  Sink sink(job.out);
  Floor floor(sink, 1, kPageWidth, kPageHeight);
  const Block content(job.count * kShapeRoom + 64);
  char* p = Put(content.start, kFirstLine);
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    const Shape shape = source.Next();
    p = job.workload == Workload::kEllipses
            ? PutEllipse(p, shape)
            : PutRectangle(p, shape, job.workload == Workload::kRotated);
  }
  floor.Page({content.start, static_cast<std::size_t>(p - content.start)}, 0);
  floor.Finish();
  sink.Close();
}

void WriteJpegs(const Job& job, Sink& sink) {
  InputFiles files(job);
  const double width = files.Width();
  const double height = files.Height();
  Floor floor(sink, job.count, width, height);
  // The matrix is the same on every page.
  char matrix[400];
  char* p = Put(matrix, "\r\nq 1 0 0 1 ");
  *(p = PutReal(p, width * 0.5)) = ' ';
  p = Put(PutReal(p + 1, height * 0.5), " cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm ");
  p = PutReal(Put(PutReal(p, width), " 0 0 "), height);
  *p++ = ' ';
  *(p = PutReal(p, width * -0.5)) = ' ';
  p = Put(PutReal(p + 1, height * -0.5), " cm  /Im");
  const std::string_view matrixText(matrix, static_cast<std::size_t>(p - matrix));
  for (std::size_t i = 0; i < job.count; ++i) {
    const std::string_view jpeg = files.Read(i);
    const int image = floor.NextObject();
    floor.Image(jpeg, files.Width(), files.Height());
    char content[4096];
    char* end = Put(Put(content, kFirstLine), matrixText);
    end = Put(PutInteger(end, static_cast<unsigned>(image)), " Do Q");
    floor.Page({content, static_cast<std::size_t>(end - content)}, image);
  }
  floor.Finish();
  sink.Close();
}

// Bounds what WriteJpegs writes.
std::size_t JpegsRoom(const Job& job) {
  const InputFiles files(job);
  std::size_t room = 16384;
  for (std::size_t i = 0; i < job.count; ++i) room += files.Size(i) + 4096;
  return room;
}

void WriteRectanglePage(Floor& floor, ShapeSource& source) {
  floor.PageInPlace(
      [&source](char* p) { return PutRectangle(Put(p, kFirstLine), source.Next(), false); });
}

void WritePages(const Job& job) {
  Sink sink(job.out);
  Floor floor(sink, job.count, kPageWidth, kPageHeight);
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) WriteRectanglePage(floor, source);
  floor.Finish();
  sink.Close();
}

void WriteDocuments(const Job& job) {
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    Sink sink(std::size_t{12288});
    Floor floor(sink, 1, kPageWidth, kPageHeight);
    WriteRectanglePage(floor, source);
    floor.Finish();
    if (IsLast(job, i)) KeepResult(job, sink.Result().data(), sink.Result().size());
  }
}

}  // namespace

bool Run(const Job& job) {
  switch (job.workload) {
    case Workload::kRectangles:
    case Workload::kRotated:
    case Workload::kEllipses:
      DrawShapes(job);
      return true;
    case Workload::kJpegFile:
    case Workload::kSmallJpegs: {
      Sink sink(job.out);
      WriteJpegs(job, sink);
      return true;
    }
    case Workload::kJpegMemory: {
      Sink sink(JpegsRoom(job));
      WriteJpegs(job, sink);
      KeepResult(job, sink.Result().data(), sink.Result().size());
      return true;
    }
    case Workload::kPages:
      WritePages(job);
      return true;
    case Workload::kDocuments:
      WriteDocuments(job);
      return true;
    default:
      return false;
  }
}

}  // namespace bench
