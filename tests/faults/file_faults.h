// Faults of the system's calls on one file. The program that links this defines write, fopen and
// their like itself, in front of the C library, so that every such call of the library and of the
// C++ runtime passes through here; the fault is raised instead of, or after part of, the real call.
#ifndef JTPDF_TESTS_FAULTS_FILE_FAULTS_H
#define JTPDF_TESTS_FAULTS_FILE_FAULTS_H

#include <cstdint>
#include <string>

namespace faults {

enum class Operation { kOpen, kWrite, kSeek, kClose };

enum class Effect {
  kError,           // the call fails and does nothing; a close closes all the same
  kShort,           // half of the bytes are written and counted
  kShortThenError,  // half of them, and the next write fails
};

struct FileFault {
  Operation operation;
  Effect effect;
  int error;
  int closeError = 0;  // of the closing behind the fault; 0: it succeeds
};

// What happened on the watched file since WatchFile.
struct FileTraffic {
  int opens = 0;  // that succeeded
  int writes = 0;
  int seeks = 0;
  int closes = 0;
  std::int64_t bytes = 0;  // written
  int faults = 0;          // raised
};

// Watches the file of that name, which need not exist, until UnwatchFile, and raises no fault.
void WatchFile(const std::string& path);
// The same, and raises the fault in the call number `at` of its operation, counted from 0.
void WatchFile(const std::string& path, const FileFault& fault, int at);
FileTraffic UnwatchFile();

}  // namespace faults

#endif  // JTPDF_TESTS_FAULTS_FILE_FAULTS_H
