// Every allocation fails once, at every place of a document that uses every export. The exception
// reaches the host, nothing leaks, and the document can be destroyed.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <new>
#include <vector>

#include "allocation_faults.h"
#include "pdf_structure.h"
#include "reference_document.h"
#include "support/cases.h"
#include "support/temp_dir.h"

namespace faults {

namespace {

struct Row {
  const char* name;
  bool inMemory;
  After after;
  bool codes = false;  // and not exceptions
  bool openObjects = false;
};

long OpenDescriptors() {
#if defined(_WIN32)
  return 0;  // Windows does not tell, and Wine shows its own
#endif
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::distance(begin(descriptors), end(descriptors));
}

// A host that carries on uses numbers that it was not given.
constexpr golden::StructureOptions kUncheckedNumbers = {.unchecked_numbers = true};

// The number of an object that does not begin where the table says, or -1.
int FirstWrongPosition(const std::string& bytes) {
  const std::size_t table = bytes.rfind("\r\nxref\r\n0 ") + 8;
  const int size = std::stoi(bytes.substr(table + 2));
  const std::size_t entries = bytes.find("\r\n", table) + 2;
  for (int i = 1; i < size; ++i) {
    const std::size_t position = std::stoul(bytes.substr(entries + 20 * i, 10));
    const std::string line = std::to_string(i) + " 0 obj\r\n";
    if (bytes.compare(position, line.size(), line) != 0) return i;
  }
  return -1;
}

class AllocationFaults : public testing::TestWithParam<Row> {
 protected:
  AllocationFaults() : path_(dir_.File("document.pdf")) {}

  Outcome RunWith(bool inMemory, After after, bool codes = false, bool openObjects = false) {
    Options options;
    options.memoryErrors = codes;
    options.openObjects = openObjects;
    if (!inMemory) options.path = path_;
    options.after = after;
    return RunReference(options);
  }

  std::string Bytes(const Outcome& outcome, bool inMemory) {
    return inMemory ? outcome.memory : ReadFile(path_);
  }

  TempDir dir_;
  std::filesystem::path path_;
};

// What a failed call leaves is as it was before: once there is memory again, the call can be made
// again, and nobody can tell from the file. Not so where a call writes more than one object.
bool IsAllOrNothing(const std::string& name) {
  return name != "Create...PdfDoc" && name != "InitPdfDoc" && name != "FinalizePdfDoc" &&
         name != "WritePdfImageWithAlpha";
}

// Nobody need be told of a failure that did no harm: a memory document asks for more memory than it
// needs and makes do with less. Any other failure is told, and none is made up.
void ExpectToldOrWhole(const Outcome& outcome, const Outcome& undisturbed, bool failed) {
  if (!failed) {
    ASSERT_TRUE(outcome.failures.empty());
  } else if (outcome.failures.empty()) {
    ASSERT_EQ(outcome.finalized, undisturbed.finalized);
    ASSERT_EQ(outcome.memory, undisturbed.memory) << "an allocation failed and nobody was told";
  }
}

// In the first document of a process even constants are set up. Blocks that those keep are no leak,
// so only what the calls say is looked at.
TEST_F(AllocationFaults, FirstDocumentOfAProcess) {
  std::vector<Outcome> outcomes;
  long failed = 0;
  for (bool inside = true; inside; failed += inside) {
    FailAllocation(failed, InsideCall);
    const Outcome outcome = RunWith(true, After::kStop);
    inside = StopFailingAllocations().failed;
    ASSERT_EQ(outcome.misbehavior, "");
    outcomes.push_back(outcome);
  }
  EXPECT_GT(failed, 60);
  for (const Outcome& outcome : outcomes) {
    ExpectToldOrWhole(outcome, outcomes.back(), &outcome != &outcomes.back());
  }
}

TEST_P(AllocationFaults, FailOnceAtEveryPlace) {
  const auto [name, inMemory, after, codes, openObjects] = GetParam();
  const Outcome undisturbed = RunWith(inMemory, after, codes, openObjects);
  const std::string whole = Bytes(undisturbed, inMemory);
  ASSERT_EQ(undisturbed.finalized, after != After::kAbandon);
  const long descriptors = OpenDescriptors();
  long failed = 0;
  long finalized = 0;
  long madeUp = 0;

  for (bool inside = true; inside; failed += inside) {
    SCOPED_TRACE("allocation " + std::to_string(failed));
    const long blocks = LiveBlocks();
    {
      FailAllocation(failed, InsideCall);
      const Outcome outcome = RunWith(inMemory, after, codes, openObjects);
      inside = StopFailingAllocations().failed;
      ASSERT_EQ(outcome.misbehavior, "");
      ExpectToldOrWhole(outcome, undisturbed, inside);
      ASSERT_TRUE(inMemory || outcome.failures.empty() != inside);
      if (!outcome.failures.empty()) {
        const std::string& call = outcome.failures[0].name;
        SCOPED_TRACE(call);
        ASSERT_EQ(outcome.failures[0].exception, codes ? "" : "std::bad_alloc");
        ASSERT_EQ(outcome.failures[0].code, codes ? ENOMEM : 0);
        const bool again = after == After::kRetry && IsAllOrNothing(call);
        if (outcome.finalized) {
          const std::string bytes = Bytes(outcome, inMemory);
          if (openObjects) {  // whose shapes the checker of ours does not know
            ASSERT_EQ(FirstWrongPosition(bytes), -1);
          } else {
            const golden::StructureReport report = golden::CheckStructure(bytes, kUncheckedNumbers);
            ASSERT_EQ(report.error, "") << "at " << report.offset;
          }
          ++finalized;
          madeUp += bytes == whole;
          ASSERT_TRUE(!again || bytes == whole);
        } else {
          // A memory document whose own buffer did not grow takes nothing more.
          ASSERT_TRUE(!again || inMemory);
        }
      }
    }
    ASSERT_EQ(LiveBlocks(), blocks) << "memory leaked";
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
  ASSERT_GT(failed, 60);
  std::cout << "faults: " << name << ": " << failed << " allocations failed, no leak; " << finalized
            << " documents finalised all the same, " << madeUp << " as if nothing had happened\n";
}

INSTANTIATE_TEST_SUITE_P(
    Memory, AllocationFaults,
    testing::Values(Row{"MemoryHostStops", true, After::kStop},
                    Row{"MemoryHostCarriesOn", true, After::kCarryOn},
                    Row{"MemoryHostRetries", true, After::kRetry},
                    Row{"MemoryHostAbandons", true, After::kAbandon},
                    Row{"MemoryHostStopsAtCodes", true, After::kStop, true},
                    Row{"OpenObjectsHostStops", true, After::kStop, false, true},
                    Row{"OpenObjectsHostCarriesOn", true, After::kCarryOn, false, true},
                    Row{"OpenObjectsHostRetries", true, After::kRetry, false, true},
                    Row{"MemoryHostIgnoresCodes", true, After::kCarryOn, true}),
    NameOf<Row>);

INSTANTIATE_TEST_SUITE_P(File, AllocationFaults,
                         testing::Values(Row{"FileHostStops", false, After::kStop},
                                         Row{"FileHostCarriesOn", false, After::kCarryOn},
                                         Row{"FileHostRetries", false, After::kRetry},
                                         Row{"FileHostAbandons", false, After::kAbandon},
                                         Row{"FileHostStopsAtCodes", false, After::kStop, true}),
                         NameOf<Row>);

// The report of a failure needs memory too. Without it the host gets the exception, and not a code
// of 0.
TEST_F(AllocationFaults, ReportOfARefusedCall) {
  std::cerr.flush();
  const int standardError = dup(STDERR_FILENO);
  const int nowhere = open("/dev/null", O_WRONLY);
  ASSERT_GE(dup2(nowhere, STDERR_FILENO), 0);
  JTPDFSetDiagnosticMode(true);
  JTPDFDocument* const doc = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
  long failed = 0;
  for (bool inside = true; inside; failed += inside) {
    const long blocks = LiveBlocks();
    int form = kUntouched;
    std::int32_t code = 0;
    bool thrown = false;
    errno = EDOM;
    FailAllocation(failed);
    try {
      code = WritePdfCanvas(doc, &form);
    } catch (const std::bad_alloc&) {
      thrown = true;
    }
    inside = StopFailingAllocations().failed;
    EXPECT_TRUE(thrown || code == EDOM);
    EXPECT_EQ(thrown, inside);
    EXPECT_EQ(form, kUntouched);
    EXPECT_LE(LiveBlocks(), blocks);
  }
  EXPECT_GT(failed, 1);
  DestroyPdfDoc(doc);
  JTPDFSetDiagnosticMode(false);
  dup2(standardError, STDERR_FILENO);
  close(standardError);
  close(nowhere);
}

}  // namespace

}  // namespace faults
