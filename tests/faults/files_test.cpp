// Every call of the system on a document's file fails once, at every place of the reference
// document where it is made, under hosts of every temper. A document may fail, but it may not say
// that it succeeded when its file is not whole.

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>

#include <jtpdf/jtpdf.h>

#include "allocation_faults.h"
#include "file_faults.h"
#include "pdf_structure.h"
#include "reference_document.h"
#include "support/cases.h"
#include "support/temp_dir.h"

namespace faults {

namespace {

// Enough that writes fail in every kind of object, on both sides of the stream's buffer.
constexpr int kVolume = 10;

struct Row {
  const char* name;
  FileFault fault;
  bool survived;  // the file comes out whole all the same
};

class FileFaults : public testing::TestWithParam<Row> {
 protected:
  FileFaults() : path_(dir_.File("document.pdf")) {
    options_.path = path_;
    options_.volume = kVolume;
  }

  Outcome RunWith(After after) {
    options_.after = after;
    return RunReference(options_);
  }

  TempDir dir_;
  std::filesystem::path path_;
  Options options_;
};

int CallsOf(Operation operation, const FileTraffic& traffic) {
  switch (operation) {
    case Operation::kOpen:
      return traffic.opens;
    case Operation::kWrite:
      return traffic.writes;
    case Operation::kSeek:
      return traffic.seeks;
    case Operation::kClose:
      return traffic.closes;
  }
  return 0;
}

TEST_F(FileFaults, EveryByteOfTheFileIsSeenOnItsWay) {
  WatchFile(path_);
  const Outcome outcome = RunWith(After::kStop);
  const FileTraffic traffic = UnwatchFile();
  ASSERT_TRUE(outcome.finalized);
  EXPECT_EQ(outcome.misbehavior, "");
  EXPECT_EQ(traffic.opens, 1);
  EXPECT_EQ(traffic.closes, 1);
  EXPECT_GT(traffic.writes, 20);
  EXPECT_EQ(traffic.seeks, 0) << "a file document never seeks: it also writes to pipes";
  const std::string file = ReadFile(path_);
  EXPECT_EQ(traffic.bytes, static_cast<std::int64_t>(file.size()));
  const golden::StructureReport report = golden::CheckStructure(file);
  EXPECT_EQ(report.error, "") << "at " << report.offset;
}

// A file that fits the stream's buffer is written when it is closed. Closing writes again what a
// failed write left in the buffer: without a look at that first write, half of the file could stand
// there twice under a success.
TEST_F(FileFaults, TheOnlyWriteOfASmallFileIsReported) {
  for (const Effect effect : {Effect::kError, Effect::kShortThenError}) {
    WatchFile(path_, {Operation::kWrite, effect, ENOSPC}, 0);
    JTPDFDocument* const doc = CreateFilePdfDoc(1.0, path_.wstring().c_str(), nullptr, nullptr);
    EXPECT_EQ(InitPdfDoc(doc), 0);
    EXPECT_EQ(FinalizePdfDoc(doc, nullptr), ENOSPC);
    DestroyPdfDoc(doc);
    EXPECT_EQ(UnwatchFile().faults, 1);
  }
}

// Closing may fail as well, and changes errno then; what was lost was lost by the write.
TEST_F(FileFaults, AFailedWriteIsTheReasonAlsoWhereClosingFailsToo) {
  WatchFile(path_, {Operation::kWrite, Effect::kError, ENOSPC, EIO}, 0);
  JTPDFDocument* const doc = CreateFilePdfDoc(1.0, path_.wstring().c_str(), nullptr, nullptr);
  EXPECT_EQ(InitPdfDoc(doc), 0);
  EXPECT_EQ(FinalizePdfDoc(doc, nullptr), ENOSPC);
  DestroyPdfDoc(doc);
  EXPECT_EQ(UnwatchFile().faults, 1);
}

TEST_P(FileFaults, FailOnceAtEveryPlace) {
  const FileFault& fault = GetParam().fault;
  WatchFile(path_);
  ASSERT_TRUE(RunWith(After::kStop).finalized);
  const int calls = CallsOf(fault.operation, UnwatchFile());
  const std::string whole = ReadFile(path_);
  int injected = 0;
  int survived = 0;

  for (const After after : {After::kStop, After::kCarryOn, After::kRetry, After::kAbandon}) {
    for (int at = 0; at < calls; ++at) {
      SCOPED_TRACE("call " + std::to_string(at) + ", host " +
                   std::to_string(static_cast<int>(after)));
      const long blocks = LiveBlocks();
      {
        WatchFile(path_, fault, at);
        const Outcome outcome = RunWith(after);
        const FileTraffic traffic = UnwatchFile();
        // A document that is not finalised ends before the last calls.
        if (after == After::kAbandon && traffic.faults == 0) continue;
        ASSERT_EQ(traffic.faults, 1);
        ++injected;
        ASSERT_EQ(outcome.misbehavior, "");
        ASSERT_EQ(traffic.opens, traffic.closes) << "the file was not closed";

        // A second InitPdfDoc makes up for a failed open.
        const bool mended = fault.operation == Operation::kOpen && after == After::kRetry;
        if (after == After::kAbandon) {
          ASSERT_FALSE(outcome.finalized);
        } else if (GetParam().survived || mended) {
          ASSERT_TRUE(outcome.finalized);
          ASSERT_EQ(ReadFile(path_), whole);
          ++survived;
        } else {
          ASSERT_FALSE(outcome.finalized) << "success for a file that is not whole";
        }
        // An abandoned document may meet its fault when it is destroyed, where nobody is told.
        if (GetParam().survived) {
          ASSERT_TRUE(outcome.failures.empty());
        } else if (after != After::kAbandon) {
          ASSERT_FALSE(outcome.failures.empty());
        }
        if (!outcome.failures.empty()) {
          ASSERT_EQ(outcome.failures[0].code, fault.error);
        }
      }
      ASSERT_EQ(LiveBlocks(), blocks) << "memory leaked";
    }
  }
  ASSERT_GT(injected, 0);
  std::cout << "faults: " << GetParam().name << ": " << injected << " injected, " << survived
            << " mended, no false success\n";
}

constexpr auto kOpen = Operation::kOpen;
constexpr auto kWrite = Operation::kWrite;
constexpr auto kClose = Operation::kClose;
constexpr auto kError = Effect::kError;
constexpr auto kShort = Effect::kShort;
constexpr auto kShortThenError = Effect::kShortThenError;

INSTANTIATE_TEST_SUITE_P(Open, FileFaults,
                         testing::Values(Row{"OpenEIO", {kOpen, kError, EIO}, false},
                                         Row{"OpenENOSPC", {kOpen, kError, ENOSPC}, false},
                                         Row{"OpenEDQUOT", {kOpen, kError, EDQUOT}, false},
                                         Row{"OpenEINTR", {kOpen, kError, EINTR}, false},
                                         Row{"OpenEMFILE", {kOpen, kError, EMFILE}, false},
                                         Row{"OpenEACCES", {kOpen, kError, EACCES}, false}),
                         NameOf<Row>);

INSTANTIATE_TEST_SUITE_P(
    Write, FileFaults,
    testing::Values(Row{"WriteENOSPC", {kWrite, kError, ENOSPC}, false},
                    Row{"WriteEIO", {kWrite, kError, EIO}, false},
                    Row{"WriteEDQUOT", {kWrite, kError, EDQUOT}, false},
                    Row{"WriteEBADF", {kWrite, kError, EBADF}, false},
                    Row{"WriteEFBIG", {kWrite, kError, EFBIG}, false},
                    Row{"WriteEINTR", {kWrite, kError, EINTR}, true},
                    Row{"WriteShort", {kWrite, kShort, 0}, true},
                    Row{"WriteShortThenENOSPC", {kWrite, kShortThenError, ENOSPC}, false},
                    Row{"WriteShortThenEIO", {kWrite, kShortThenError, EIO}, false},
                    Row{"WriteShortThenEINTR", {kWrite, kShortThenError, EINTR}, true}),
    NameOf<Row>);

INSTANTIATE_TEST_SUITE_P(Close, FileFaults,
                         testing::Values(Row{"CloseENOSPC", {kClose, kError, ENOSPC}, false},
                                         Row{"CloseEIO", {kClose, kError, EIO}, false},
                                         Row{"CloseEDQUOT", {kClose, kError, EDQUOT}, false},
                                         Row{"CloseEINTR", {kClose, kError, EINTR}, false},
                                         Row{"CloseEBADF", {kClose, kError, EBADF}, false}),
                         NameOf<Row>);

}  // namespace

}  // namespace faults
