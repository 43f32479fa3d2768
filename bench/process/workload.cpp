// The main function and the inputs of every program of the process benchmark.

#include "workload.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <system_error>

namespace bench {

namespace {

constexpr int kNotAvailable = 3;

struct Name {
  std::string_view text;
  Workload workload;
};
constexpr Name kNames[] = {
    {"rectangles", Workload::kRectangles},
    {"rotated", Workload::kRotated},
    {"ellipses", Workload::kEllipses},
    {"jpeg-file", Workload::kJpegFile},
    {"jpeg-memory", Workload::kJpegMemory},
    {"small-jpegs", Workload::kSmallJpegs},
    {"pages", Workload::kPages},
    {"documents", Workload::kDocuments},
    {"images", Workload::kImages},
    {"keys", Workload::kKeys},
    {"shuffled-keys", Workload::kShuffledKeys},
};

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// An open file and its size.
class File {
 public:
  explicit File(const std::string& name) : descriptor(open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct stat status;
    if (descriptor < 0 || fstat(descriptor, &status) != 0) Fail(name);
    size = static_cast<std::size_t>(status.st_size);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { close(descriptor); }

  const int descriptor;
  std::size_t size = 0;
};

}  // namespace

Mapping::Mapping(const std::string& name) {
  const File file(name);
  size = file.size;
  void* const address = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.descriptor, 0);
  if (address == MAP_FAILED) Fail(name);
  data = static_cast<char*>(address);
}

Mapping::~Mapping() {
  munmap(data, size);
}

InputFiles::InputFiles(const Job& job)
    : folder(job.inputs), big(job.workload != Workload::kSmallJpegs) {}

std::string InputFiles::Name(std::size_t page) const {
  char name[32];
  std::snprintf(name, sizeof name, "/%s-%03zu.jpg", big ? "big" : "small", page % kInputFiles);
  return folder + name;
}

std::size_t InputFiles::Size(std::size_t page) const {
  return File(Name(page)).size;
}

std::string_view InputFiles::Read(std::size_t page) {
  const std::string name = Name(page);
  const File file(name);
  if (buffer.size() < file.size) buffer.resize(file.size);
  for (std::size_t done = 0; done < file.size;) {
    const ssize_t got = read(file.descriptor, buffer.data() + done, file.size - done);
    if (got <= 0) Fail(name);
    done += static_cast<std::size_t>(got);
  }
  return {buffer.data(), file.size};
}

void KeepResult(const Job& job, const char* data, std::size_t size) {
  if (size < 5 || std::memcmp(data, "%PDF-", 5) != 0) throw std::runtime_error("no PDF was made");
  if (std::string_view(job.out) == "-") return;
  std::FILE* const file = std::fopen(job.out, "wb");
  if (file == nullptr) Fail(job.out);
  const bool written = std::fwrite(data, 1, size, file) == size;
  if (std::fclose(file) != 0 || !written) Fail(job.out);
}

}  // namespace bench

int main(int argc, char** argv) {
  if (argc == 5) {
    for (const bench::Name& name : bench::kNames) {
      if (name.text != argv[1]) continue;
      try {
        const bench::Job job = {name.workload, std::strtoull(argv[2], nullptr, 10), argv[3],
                                argv[4]};
        if (bench::Run(job)) return 0;
        std::fprintf(stderr, "%s: n/a with this library\n", argv[1]);
        return bench::kNotAvailable;
      } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s: %s\n", argv[0], argv[1], failure.what());
        return 1;
      }
    }
  }
  std::fprintf(stderr, "usage: %s WORKLOAD COUNT OUT INPUTS\nworkloads:", argv[0]);
  for (const bench::Name& name : bench::kNames) std::fprintf(stderr, " %s", name.text.data());
  std::fprintf(stderr, "\n");
  return 2;
}
