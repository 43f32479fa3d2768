// workload - what every program of the process benchmark has in common: the work and its inputs.
//
//     PROGRAM WORKLOAD COUNT OUT INPUTS
//
// Each program does the same work through another library: the same shapes from ShapeSource, the
// same JPEG files from InputFiles. OUT "-" keeps a memory workload's result in memory.
#ifndef JTPDF_BENCH_PROCESS_WORKLOAD_H
#define JTPDF_BENCH_PROCESS_WORKLOAD_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

enum class Workload {
  kRectangles,    // COUNT filled and stroked upright rectangles on one page
  kRotated,       // the same, each rotated by an angle of its own
  kEllipses,      // COUNT filled and stroked ellipses on one page
  kJpegFile,      // COUNT pages, a large JPEG over each, to a file
  kJpegMemory,    // the same, to memory
  kSmallJpegs,    // COUNT pages, a small JPEG over each, embedded anew each
  kPages,         // COUNT pages, a rectangle on each
  kDocuments,     // COUNT documents in memory, one page and rectangle each, created to destroyed
  kImages,        // COUNT tiny images, all drawn on one page (growth only)
  kKeys,          // one image with COUNT entries of its own, keys ascending (growth only)
  kShuffledKeys,  // the same, keys in no order (growth only)
};

struct Job {
  Workload workload;
  std::size_t count;
  const char* out;     // file name, or "-"
  const char* inputs;  // folder of make_inputs
};

// Does the job. Returns false where the library has no way to do it. Exceptions are failures.
// Every program defines this one function; main is in workload.cpp.
bool Run(const Job& job);

// A4 in points, the page of everything but JPEGs, whose page is one point per pixel.
inline constexpr double kPageWidth = 595;
inline constexpr double kPageHeight = 842;

struct Rgb {
  std::uint8_t red;
  std::uint8_t green;
  std::uint8_t blue;
};

struct Shape {
  double left;
  double bottom;
  double width;
  double height;
  double angle;  // degrees, counter-clockwise about the centre
  double lineWidth;
  Rgb fill;
  Rgb stroke;
};

// An endless row of shapes, the same in every program: doubles with 24 random bits, so that every
// decimal counts.
class ShapeSource {
 public:
  Shape Next() {
    const std::uint64_t a = Draw();
    const std::uint64_t b = Draw();
    const std::uint64_t c = Draw();
    Shape shape;
    shape.left = 10 + Scaled(a, 450);
    shape.bottom = 10 + Scaled(a >> 24, 700);
    shape.width = 5 + Scaled(b, 100);
    shape.height = 5 + Scaled(b >> 24, 100);
    shape.angle = Scaled(c, 360);
    shape.lineWidth = 0.25 + static_cast<double>(a >> 56) / 64;
    shape.fill = {Byte(b >> 48), Byte(b >> 56), Byte(c >> 24)};
    shape.stroke = {Byte(c >> 32), Byte(c >> 40), Byte(c >> 48)};
    return shape;
  }

 private:
  // xorshift64*, by Marsaglia and Vigna.
  std::uint64_t Draw() {
    state ^= state >> 12;
    state ^= state << 25;
    state ^= state >> 27;
    return state * 0x2545F4914F6CDD1DULL;
  }
  static double Scaled(std::uint64_t bits, double range) {
    return static_cast<double>(static_cast<std::int32_t>(bits & 0xFFFFFF)) * (range / 16777216.0);
  }
  static std::uint8_t Byte(std::uint64_t bits) { return static_cast<std::uint8_t>(bits & 0xFF); }

  std::uint64_t state = 0x9E3779B97F4A7C15ULL;
};

// The JPEG files that make_inputs made: big-000.jpg to big-199.jpg, small-000.jpg to small-199.jpg.
inline constexpr std::size_t kInputFiles = 200;
inline constexpr int kBigWidth = 2000;
inline constexpr int kBigHeight = 1500;
inline constexpr int kSmallWidth = 96;
inline constexpr int kSmallHeight = 72;

// A file mapped into memory.
class Mapping {
 public:
  explicit Mapping(const std::string& name);
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;
  ~Mapping();

  const char* Data() const { return data; }
  std::size_t Size() const { return size; }

 private:
  char* data = nullptr;
  std::size_t size = 0;
};

// The JPEG of each page of a job in turn, page after page, round and round the files.
class InputFiles {
 public:
  explicit InputFiles(const Job& job);
  InputFiles(const InputFiles&) = delete;
  InputFiles& operator=(const InputFiles&) = delete;

  int Width() const { return big ? kBigWidth : kSmallWidth; }
  int Height() const { return big ? kBigHeight : kSmallHeight; }
  std::string Name(std::size_t page) const;
  std::size_t Size(std::size_t page) const;

  // The bytes of that page's file, read anew on every call into a buffer that is reused: it stays
  // warm in the processor's cache, which mapping the file would not.
  std::string_view Read(std::size_t page);

 private:
  std::string folder;
  bool big;
  std::vector<char> buffer;
};

// Ends a memory workload: the bytes go to job.out unless that is "-".
void KeepResult(const Job& job, const char* data, std::size_t size);

// Whether the job is the last of kDocuments, whose result is kept.
inline bool IsLast(const Job& job, std::size_t index) {
  return index + 1 == job.count;
}

}  // namespace bench

#endif  // JTPDF_BENCH_PROCESS_WORKLOAD_H
