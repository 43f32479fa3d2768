// The reference document: calls of every export, in an order that a host would choose, as a table
// of steps. The tests run it while writes, allocations and disks fail, and in many threads at once.
#ifndef JTPDF_TESTS_FAULTS_REFERENCE_DOCUMENT_H
#define JTPDF_TESTS_FAULTS_REFERENCE_DOCUMENT_H

#include <jtpdf/objects.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace faults {

// What an out-parameter holds until a call succeeds.
constexpr int kUntouched = -20021;

// One host's document and the numbers that it was given.
struct Session {
  JTPDFDocument* doc = nullptr;
  int image = kUntouched;
  int masked = kUntouched;
  int translucent = kUntouched;
  int jpeg2000 = kUntouched;
  int colorSpace = kUntouched;
  int calibrated = kUntouched;
  int form = kUntouched;
  int secondForm = kUntouched;
  int object = kUntouched;
  int reserved = kUntouched;
  int secondReserved = kUntouched;
};

// Calls of one export. The code is 0 for an export that returns none.
struct Step {
  const char* name;
  std::int32_t (*call)(Session& session);
  int Session::*out = nullptr;
  int times = 1;
};

// What a host does when a call has failed.
enum class After {
  kStop,     // writes nothing more
  kCarryOn,  // never looks at a code, and finalises
  kRetry,    // makes the failed call a second time, and goes on
  kAbandon,  // does not even finalise when nothing fails
};

struct Options {
  std::optional<std::filesystem::path> path = {};  // none: a document in memory
  // How often the calls that write are made: 1 gives some 30 objects and 10 kB.
  int volume = 1;
  After after = After::kStop;
  bool diagnostics = false;
  bool openObjects = false;   // with the calls of objects.h
  bool memoryErrors = false;  // memory that runs out is a code
  // A document that is handed to write, or one that create makes, instead of what path says.
  JTPDFWriteFunction write = nullptr;
  void* context = nullptr;
  std::function<JTPDFDocument*()> create;
  std::function<void(const Step&)> beforeStep;
};

struct Failure {
  std::string name;
  std::int32_t code;  // 0 when an exception came instead
  std::string exception;
};

struct Outcome {
  std::vector<Failure> failures;  // in the order of the calls
  bool created = false;
  bool finalized = false;   // FinalizePdfDoc returned 0, the first time or later
  std::string misbehavior;  // an out-parameter that a failed call touched, and the like
  std::string memory;       // the bytes of a finalised memory document
};

// Runs the reference document from its creation to its destruction.
Outcome RunReference(const Options& options);

// The steps between creation and destruction.
std::vector<Step> ReferenceSteps(int volume, bool openObjects = false);

// Whether this thread is inside a call of the library by RunReference.
bool InsideCall();

}  // namespace faults

#endif  // JTPDF_TESTS_FAULTS_REFERENCE_DOCUMENT_H
