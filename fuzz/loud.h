// loud - diagnostic mode on for a scope, its messages swallowed.
#ifndef JTPDF_FUZZ_LOUD_H
#define JTPDF_FUZZ_LOUD_H

#include <jtpdf/diagnostics.h>

#include <iostream>
#include <sstream>

class Loud {
 public:
  Loud() : saved_(std::cerr.rdbuf(&messages_)) { JTPDFSetDiagnosticMode(true); }
  Loud(const Loud&) = delete;
  Loud& operator=(const Loud&) = delete;
  ~Loud() {
    JTPDFSetDiagnosticMode(false);
    std::cerr.rdbuf(saved_);
  }

 private:
  std::stringbuf messages_;
  std::streambuf* saved_;
};

#endif  // JTPDF_FUZZ_LOUD_H
