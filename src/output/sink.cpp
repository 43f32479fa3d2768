// The failure that all kinds of sinks throw.

#include "output/sink.h"

#include <ios>

void ThrowSinkFailure() {
  // The words of the standard streams, which reports in diagnostic mode have always shown (kept).
  throw std::ios_base::failure("basic_ios::clear", std::io_errc::stream);
}
