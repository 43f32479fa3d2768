// One document per thread, many threads at once, with every export: each gets the bytes that it
// would have got alone. The thread sanitizer watches the same test for data that they share.

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "pdf_structure.h"
#include "reference_document.h"
#include "support/temp_dir.h"

namespace faults {

namespace {

constexpr int kThreads = 16;
constexpr int kRounds = 4;

// Runs work(thread) in all threads, which start together.
void InThreads(const std::function<void(int)>& work) {
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

Outcome RunIn(const std::optional<std::filesystem::path>& path, int volume,
              bool diagnostics = false) {
  Options options;
  options.path = path;
  options.volume = volume;
  options.diagnostics = diagnostics;
  return RunReference(options);
}

// A different document for each of three threads.
int VolumeOf(int thread) {
  return 1 + thread % 3;
}

TEST(Threads, MemoryDocumentsDoNotMeet) {
  std::vector<std::string> alone;
  for (int i = 0; i < 3; ++i) alone.push_back(RunIn(std::nullopt, VolumeOf(i)).memory);
  ASSERT_TRUE(golden::CheckStructure(alone[0]).ok());
  ASSERT_NE(alone[0], alone[1]);
  std::atomic<int> same = 0;
  InThreads([&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      const Outcome outcome = RunIn(std::nullopt, VolumeOf(thread + round));
      same += outcome.finalized && outcome.memory == alone[(thread + round) % 3];
    }
  });
  EXPECT_EQ(same, kThreads * kRounds);
}

TEST(Threads, FileDocumentsDoNotMeet) {
  const TempDir dir;
  std::vector<std::string> alone;
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(RunIn(dir.File("alone.pdf"), VolumeOf(i)).finalized);
    alone.push_back(ReadFile(dir.File("alone.pdf")));
  }
  std::atomic<int> same = 0;
  InThreads([&](int thread) {
    const std::filesystem::path path = dir.File(std::to_string(thread) + ".pdf");
    for (int round = 0; round < kRounds; ++round) {
      const Outcome outcome = RunIn(path, VolumeOf(thread + round));
      same += outcome.finalized && ReadFile(path) == alone[(thread + round) % 3];
    }
  });
  EXPECT_EQ(same, kThreads * kRounds);
}

// A document may go from thread to thread, one at a time.
TEST(Threads, DocumentIsHandedOn) {
  const std::string alone = RunIn(std::nullopt, 1).memory;
  Session session;
  session.doc = CreateMemoryPdfDoc(PDFCoordinateUnitMillimeter);
  int failed = 0;
  for (const Step& step : ReferenceSteps(1)) {
    for (int i = 0; i < step.times; ++i) {
      std::thread([&] { failed += step.call(session) != 0; }).join();
    }
  }
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(std::string(GetPdfData(session.doc), GetPdfDataSize(session.doc)), alone);
  std::thread([&] { DestroyPdfDoc(session.doc); }).join();
}

// Standard error goes to a file while this lives.
class StandardErrorInFile {
 public:
  explicit StandardErrorInFile(const std::filesystem::path& path) : before_(dup(STDERR_FILENO)) {
    std::FILE* const file = std::fopen(path.string().c_str(), "w");
    dup2(fileno(file), STDERR_FILENO);
    std::fclose(file);
  }
  ~StandardErrorInFile() {
    dup2(before_, STDERR_FILENO);
    close(before_);
  }

 private:
  int before_;
};

constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

// errno, which the codes are taken from, is each thread's own; and so are the lines of the report.
TEST(Threads, FailuresDoNotMeet) {
  const TempDir dir;
  const std::filesystem::path notes = dir.File("notes");
  std::atomic<int> right = 0;
  {
    const StandardErrorInFile redirected(notes);
    JTPDFSetDiagnosticMode(true);
    InThreads([&](int thread) {
      for (int round = 0; round < kRounds; ++round) {
        const bool full = (thread + round) % 2 == 0;
        const Outcome outcome =
            RunIn(full ? std::filesystem::path("/dev/full") : dir.File("missing/out.pdf"), 1, true);
        right += !outcome.finalized && outcome.misbehavior.empty() &&
                 outcome.failures.at(0).code == (full ? ENOSPC : ENOENT);
      }
    });
    JTPDFSetDiagnosticMode(false);
  }
  EXPECT_EQ(right, kThreads * kRounds);
  std::ifstream lines(notes);
  int reports = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line == "Warning: JTPDFDocument destroyed without being finalized.") continue;
    const std::size_t colon = line.find(": JTPDF error: ");
    ASSERT_NE(colon, std::string::npos) << line;
    EXPECT_EQ(line.find_first_not_of(kLetters), colon) << line;
    EXPECT_EQ(line.find(": JTPDF", colon + 1), std::string::npos) << line;
    EXPECT_EQ(line.find("Warning"), std::string::npos) << line;
    ++reports;
  }
  EXPECT_GE(reports, kThreads * kRounds);
}

// Half of the threads set the switch while the others make calls that report.
TEST(Threads, TheDiagnosticSwitchMayBeSetAtAnyTime) {
  const TempDir dir;
  std::atomic<int> refused = 0;
  {
    const StandardErrorInFile redirected(dir.File("notes"));
    InThreads([&](int thread) {
      for (int i = 0; i < 200; ++i) {
        if (thread % 2 == 0) {
          JTPDFSetDiagnosticMode(i % 2 == 0);
        } else {
          JTPDFDocument* const doc = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
          refused += WritePdfCanvas(doc, nullptr) != 0;
          DestroyPdfDoc(doc);
        }
      }
    });
    JTPDFSetDiagnosticMode(false);
  }
  EXPECT_EQ(refused, kThreads / 2 * 200);
}

}  // namespace

}  // namespace faults
