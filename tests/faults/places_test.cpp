// Documents for places that take no more, or never took anything: full disks, limits, pipes that
// nobody reads, paths that lead nowhere. Real ones, where file_fault_test has faults of its own.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "pdf_structure.h"
#include "reference_document.h"
#include "support/temp_dir.h"

namespace faults {

namespace {

constexpr int kVolume = 16;  // some 300 kB

class Places : public testing::Test {
 protected:
  Outcome RunOn(const std::filesystem::path& path, After after = After::kCarryOn) {
    options_.path = path;
    options_.volume = kVolume;
    options_.after = after;
    return RunReference(options_);
  }

  // No host is told that the document is whole, and the first code is the reason.
  void ExpectFailure(const std::filesystem::path& path, int error) {
    for (const After after : {After::kStop, After::kCarryOn, After::kRetry}) {
      const Outcome outcome = RunOn(path, after);
      EXPECT_EQ(outcome.misbehavior, "");
      EXPECT_FALSE(outcome.finalized) << "success for a file that is not whole";
      ASSERT_FALSE(outcome.failures.empty());
      EXPECT_EQ(outcome.failures[0].code, error) << std::strerror(outcome.failures[0].code);
    }
  }

  // The file that an undisturbed document makes.
  std::string Whole() {
    const std::filesystem::path path = dir_.File("whole.pdf");
    EXPECT_TRUE(RunOn(path).finalized);
    return ReadFile(path);
  }

  TempDir dir_;
  Options options_;
};

class Ignoring {
 public:
  explicit Ignoring(int signal) : signal_(signal), before_(std::signal(signal, SIG_IGN)) {}
  ~Ignoring() { std::signal(signal_, before_); }

 private:
  int signal_;
  void (*before_)(int);
};

class Limit {
 public:
  Limit(decltype(RLIMIT_FSIZE) resource, rlim_t soft) : resource_(resource) {
    getrlimit(resource, &before_);
    const rlimit limit = {soft, before_.rlim_max};
    setrlimit(resource, &limit);
  }
  ~Limit() { setrlimit(resource_, &before_); }

 private:
  decltype(RLIMIT_FSIZE) resource_;
  rlimit before_;
};

TEST_F(Places, FullDevice) {
  ExpectFailure("/dev/full", ENOSPC);
}

TEST_F(Places, LimitOfTheFileSize) {
  const Ignoring signal(SIGXFSZ);
  for (const rlim_t bytes : {0, 1, 17, 4096, 100000, 200001}) {
    SCOPED_TRACE(bytes);
    const std::filesystem::path path = dir_.File("limited.pdf");
    {
      const Limit limit(RLIMIT_FSIZE, bytes);
      ExpectFailure(path, EFBIG);
    }
    EXPECT_LE(std::filesystem::file_size(path), bytes);
  }
}

// One byte less than the document has is too little, and exactly as many are enough.
TEST_F(Places, LimitThatTheDocumentJustMeets) {
  const Ignoring signal(SIGXFSZ);
  const std::string whole = Whole();
  const std::filesystem::path path = dir_.File("limited.pdf");
  {
    const Limit limit(RLIMIT_FSIZE, whole.size());
    EXPECT_TRUE(RunOn(path).finalized);
  }
  EXPECT_EQ(ReadFile(path), whole);
  const Limit limit(RLIMIT_FSIZE, whole.size() - 1);
  ExpectFailure(path, EFBIG);
}

// A file system of 64 KiB, which this process alone sees.
TEST_F(Places, SmallFileSystem) {
  const uid_t user = getuid();
  const gid_t group = getgid();
  if (unshare(CLONE_NEWNS) != 0) {
    // A user who is not root may have one as the root of a user namespace.
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
      GTEST_SKIP() << "NOT TESTED: a file system of 64 KiB needs root or user namespaces: "
                   << std::strerror(errno);
    }
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
  }
  const std::filesystem::path disk = dir_.File("disk");
  std::filesystem::create_directory(disk);
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("jtpdf-test", disk.c_str(), "tmpfs", 0, "size=64k") != 0) {
    GTEST_SKIP() << "NOT TESTED: a file system of 64 KiB cannot be mounted: "
                 << std::strerror(errno);
  }
  ExpectFailure(disk / "document.pdf", ENOSPC);
  EXPECT_LE(std::filesystem::file_size(disk / "document.pdf"), 65536u);

  // Room that is found later does not make the file whole: a part of it is missing.
  options_.beforeStep = [&](const Step& step) {
    if (std::strcmp(step.name, "FinalizePdfDoc") == 0) {
      EXPECT_EQ(mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT, "size=4m"), 0);
    }
  };
  const Outcome outcome = RunOn(disk / "document.pdf");
  EXPECT_FALSE(outcome.finalized);
  ASSERT_FALSE(outcome.failures.empty());
  EXPECT_EQ(outcome.failures[0].code, ENOSPC);
  EXPECT_EQ(umount(disk.c_str()), 0);
}

std::string DescriptorPath(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

TEST_F(Places, PipeThatNobodyReads) {
  const Ignoring signal(SIGPIPE);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  bool open = true;
  options_.beforeStep = [&](const Step& step) {
    if (!open || std::strncmp(step.name, "Write", 5) != 0) return;
    close(ends[0]);  // the document has opened the other end by now
    close(ends[1]);
    open = false;
  };
  const Outcome outcome = RunOn(DescriptorPath(ends[1]));
  EXPECT_FALSE(open);
  EXPECT_EQ(outcome.misbehavior, "");
  EXPECT_FALSE(outcome.finalized);
  ASSERT_FALSE(outcome.failures.empty());
  EXPECT_EQ(outcome.failures[0].code, EPIPE);
}

TEST_F(Places, PipeThatIsReadTakesTheWholeDocument) {
  const std::string whole = Whole();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  std::string read;
  std::thread reader([&] {
    char bytes[1000];  // less than the document writes at a time
    for (ssize_t size; (size = ::read(ends[0], bytes, sizeof bytes)) > 0;) {
      read.append(bytes, static_cast<std::size_t>(size));
    }
  });
  const Outcome outcome = RunOn(DescriptorPath(ends[1]));
  close(ends[1]);
  reader.join();
  close(ends[0]);
  EXPECT_TRUE(outcome.finalized);
  EXPECT_EQ(read, whole);
}

// The document has no name any more, but is whole: whoever has it open can read it.
TEST_F(Places, FileThatIsRemovedWhileItIsWritten) {
  const std::string whole = Whole();
  const std::filesystem::path path = dir_.File("removed.pdf");
  int descriptor = -1;
  options_.beforeStep = [&](const Step& step) {
    if (descriptor >= 0 || std::strcmp(step.name, "WritePdfPage") != 0) return;
    descriptor = open(path.c_str(), O_RDONLY);
    EXPECT_EQ(unlink(path.c_str()), 0);
  };
  const Outcome outcome = RunOn(path);
  EXPECT_TRUE(outcome.finalized);
  EXPECT_TRUE(outcome.failures.empty());
  EXPECT_FALSE(std::filesystem::exists(path)) << "the file came back";
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(ReadFile(DescriptorPath(descriptor)), whole);
  close(descriptor);
}

TEST_F(Places, LongerFileIsCutOffFirst) {
  const std::string whole = Whole();
  const std::filesystem::path path = dir_.File("longer.pdf");
  std::ofstream(path) << std::string(2 * whole.size(), 'x');
  EXPECT_TRUE(RunOn(path).finalized);
  EXPECT_EQ(ReadFile(path), whole);
}

TEST_F(Places, PathsThatCannotBeOpened) {
  const std::filesystem::path file = dir_.File("file");
  std::ofstream(file) << "no folder";
  const std::filesystem::path loop = dir_.File("loop");
  ASSERT_EQ(symlink(loop.c_str(), loop.c_str()), 0);
  std::string longPath = dir_.File("").string();
  while (longPath.size() <= PATH_MAX) longPath += "a/../../";
  const struct {
    const char* what;
    std::filesystem::path path;
    int error;
  } rows[] = {
      {"a folder", dir_.File(""), EISDIR},
      {"a folder that is missing", dir_.File("missing/document.pdf"), ENOENT},
      {"an empty path", "", ENOENT},
      {"a file as a folder", file / "document.pdf", ENOTDIR},
      {"a loop of links", loop, ELOOP},
      {"a name longer than NAME_MAX", dir_.File(std::string(NAME_MAX + 1, 'n')), ENAMETOOLONG},
      {"a path longer than PATH_MAX", longPath, ENAMETOOLONG},
  };
  for (const auto& [what, path, error] : rows) {
    SCOPED_TRACE(what);
    ExpectFailure(path, error);
  }
}

}  // namespace

}  // namespace faults
